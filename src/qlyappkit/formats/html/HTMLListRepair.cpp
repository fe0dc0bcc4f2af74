#include <qlyappkit/formats/html/HTMLListRepair.h>

#include <algorithm>
#include <functional>
#include <queue>
#include <vector>

#include <qlyappkit/platform/strings/CharacterSets.h>

namespace qly {

namespace {

const QString OrderedListStart = QStringLiteral("<ol");
const QString OrderedListEnd = QStringLiteral("</ol>");
const QString UnorderedListStart = QStringLiteral("<ul");
const QString UnorderedListEnd = QStringLiteral("</ul>");
const QString ItemEnd = QStringLiteral("</li>");

char16_t asciiLower(char16_t c) { return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c; }

bool matchesAt(QStringView text, qsizetype at, QStringView tag)
{
    if (at < 0 || at + tag.size() > text.size())
        return false;
    for (qsizetype i = 0; i < tag.size(); ++i) {
        if (asciiLower(text[at + i].unicode()) != asciiLower(tag[i].unicode()))
            return false;
    }
    return true;
}

// The first occurrence of tag at or after from that ends by `limit`; -1 when none.
qsizetype indexOfTag(QStringView text, QStringView tag, qsizetype from, qsizetype limit)
{
    if (tag.isEmpty())
        return -1;
    const char16_t first = asciiLower(tag[0].unicode());
    for (qsizetype i = std::max<qsizetype>(from, 0); i + tag.size() <= limit; ++i) {
        if (asciiLower(text[i].unicode()) == first && matchesAt(text, i, tag))
            return i;
    }
    return -1;
}

struct Token {
    qsizetype position;
    bool isStart;
};

// Start and end tags left to right, never overlapping.
std::vector<Token> tagsOf(QStringView text, QStringView startTag, QStringView endTag)
{
    std::vector<Token> tokens;
    for (qsizetype i = 0; i < text.size();) {
        if (matchesAt(text, i, startTag)) {
            tokens.push_back({i, true});
            i += startTag.size();
        } else if (matchesAt(text, i, endTag)) {
            tokens.push_back({i, false});
            i += endTag.size();
        } else {
            ++i;
        }
    }
    return tokens;
}

} // namespace

void fixUpNestedHTMLLists(QString& html)
{
    fixUpNestedHTMLListsWithStartTag(html, OrderedListStart, OrderedListEnd);
    fixUpNestedHTMLListsWithStartTag(html, UnorderedListStart, UnorderedListEnd);
}

// One pass: every start tag's list end is known from a stack of open lists, and the output is built
// left to right, so each move costs the white space it crosses and nothing is searched twice. The
// moved "</li>" lands after an end tag further on; those insertions wait in a queue until the copy
// reaches them. The edits never make or break a tag, so the tags found first stay valid.
void fixUpNestedHTMLListsWithStartTag(QString& html, const QString& startTag, const QString& endTag)
{
    if (startTag.isEmpty() || endTag.isEmpty())
        return;
    const std::vector<Token> tokens = tagsOf(html, startTag, endTag);
    std::vector<qsizetype> listEnd(tokens.size(), -1);
    std::vector<size_t> open;
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (tokens[i].isStart) {
            open.push_back(i);
        } else if (!open.empty()) {
            listEnd[open.back()] = tokens[i].position + endTag.size();
            open.pop_back();
        }
    }

    const QStringView source(html);
    QString out;
    out.reserve(html.size() + 64);
    qsizetype copied = 0;
    std::priority_queue<qsizetype, std::vector<qsizetype>, std::greater<>> insertions;
    auto copyUpTo = [&](qsizetype position) {
        while (!insertions.empty() && insertions.top() <= position) {
            out.append(source.mid(copied, insertions.top() - copied));
            out.append(ItemEnd);
            copied = insertions.top();
            insertions.pop();
        }
        out.append(source.mid(copied, position - copied));
        copied = position;
    };
    bool changed = false;
    for (size_t i = 0; i < tokens.size(); ++i) {
        if (!tokens[i].isStart)
            continue;
        copyUpTo(tokens[i].position);
        qsizetype p = out.size() - 1;
        while (p >= 0 && isWhitespaceOrNewline(out.at(p).unicode()))
            --p;
        if (p - 4 > 0 && matchesAt(out, p - 4, ItemEnd)) {
            if (listEnd[i] < 0)
                break; // a list that is never closed: the rest stays as it is
            out.remove(p - 4, ItemEnd.size());
            insertions.push(listEnd[i]);
            changed = true;
        }
    }
    if (!changed)
        return;
    copyUpTo(html.size());
    html = std::move(out);
}

qsizetype endOfHTMLListForStartTag(const QString& html, const QString& startTag, const QString& endTag,
                                   Range startTagRange)
{
    if (startTag.isEmpty() || endTag.isEmpty() || startTagRange.location < 0 || startTagRange.length < 0
        || startTagRange.end() > html.size())
        return NotFound;
    qsizetype depth = 1, closed = 0;
    qsizetype scan = startTagRange.end();
    for (;;) {
        const qsizetype end = indexOfTag(html, endTag, scan, html.size());
        if (end < 0)
            return NotFound;
        for (qsizetype s = indexOfTag(html, startTag, scan, end); s >= 0;
             s = indexOfTag(html, startTag, s + startTag.size(), end))
            ++depth;
        ++closed;
        scan = end + endTag.size();
        if (closed == depth)
            return scan;
    }
}

} // namespace qly
