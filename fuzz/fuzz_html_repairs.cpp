// Fuzz target for the repairs made to HTML pages: any bytes must pass the centred column and the
// nested-list repair without a crash, a hang or undefined behaviour. The repair keeps every "</li>"
// (it only moves them) and must do exactly what the step-by-step rule does, checked here against a
// literal (slow) version of the rule on inputs of modest size.
#include <cstdint>

#include <QString>
#include <QStringDecoder>

#include <qlyappkit/formats/html/HTMLBodyColumn.h>
#include <qlyappkit/formats/html/HTMLListRepair.h>

#include "FuzzSupport.h"

namespace {

constexpr qsizetype ReferenceLimit = 4096;

bool isBlank(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x09 && u <= 0x0D) || u == 0x20 || u == 0x85 || c.category() == QChar::Separator_Space
        || c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph;
}

char16_t lower(char16_t c) { return c >= u'A' && c <= u'Z' ? char16_t(c + 32) : c; }

qsizetype find(const QString& s, const QString& tag, qsizetype from)
{
    for (qsizetype i = from; i >= 0 && i + tag.size() <= s.size(); ++i) {
        qsizetype k = 0;
        while (k < tag.size() && lower(s[i + k].unicode()) == lower(tag[k].unicode()))
            ++k;
        if (k == tag.size())
            return i;
    }
    return -1;
}

void referenceRepair(QString& html, const QString& start, const QString& end)
{
    for (qsizetype at = find(html, start, 0); at >= 0; at = find(html, start, at + start.size())) {
        qsizetype p = at - 1;
        while (p >= 0 && isBlank(html[p]))
            --p;
        if (p - 4 <= 0 || find(html.mid(p - 4, 5), QStringLiteral("</li>"), 0) != 0)
            continue;
        qsizetype depth = 1, closed = 0, scan = at + start.size(), listEnd = -1;
        for (;;) {
            const qsizetype e = find(html, end, scan);
            if (e < 0)
                break;
            for (qsizetype s = find(html, start, scan); s >= 0 && s + start.size() <= e;
                 s = find(html, start, s + start.size()))
                ++depth;
            ++closed;
            scan = e + end.size();
            if (closed == depth) {
                listEnd = scan;
                break;
            }
        }
        if (listEnd < 0)
            return;
        html.insert(listEnd, QStringLiteral("</li>"));
        html.remove(p - 4, 5);
        at -= 5;
    }
}

qsizetype itemEnds(const QString& s)
{
    qsizetype n = 0;
    for (qsizetype at = find(s, QStringLiteral("</li>"), 0); at >= 0; at = find(s, QStringLiteral("</li>"), at + 5))
        ++n;
    return n;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qly::fuzz::prepareEnvironment();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QByteArray column = qly::HTMLDataWithBodyTableOfWidth(320, bytes);
    QLY_FUZZ_CHECK(column == bytes || column.contains("<div style=\"width: 320px; margin: 0 auto\">"));

    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString html = decoder.decode(bytes);
    QString repaired = html;
    qly::fixUpNestedHTMLLists(repaired);
    // "</li>" are moved, never made or lost.
    QLY_FUZZ_CHECK(repaired.size() == html.size() && itemEnds(repaired) == itemEnds(html));
    if (html.size() <= ReferenceLimit) {
        QString expected = html;
        referenceRepair(expected, QStringLiteral("<ol"), QStringLiteral("</ol>"));
        referenceRepair(expected, QStringLiteral("<ul"), QStringLiteral("</ul>"));
        QLY_FUZZ_CHECK(expected == repaired);
    }
    // The end of any list the text opens lies after it, or there is none.
    const qsizetype start = find(html, QStringLiteral("<ul"), 0);
    if (start >= 0) {
        const qsizetype end =
            qly::endOfHTMLListForStartTag(html, QStringLiteral("<ul"), QStringLiteral("</ul>"), qly::Range{start, 3});
        QLY_FUZZ_CHECK(end == qly::NotFound || (end > start + 3 && end <= html.size()));
    }
    return 0;
}
