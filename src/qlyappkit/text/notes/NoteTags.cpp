#include <qlyappkit/text/notes/NoteTags.h>

#include <QByteArray>
#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include <qlyappkit/platform/strings/NumberParsing.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/ReplacedPositions.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

#include "NoteEdits_p.h"

namespace qly {

using notes::TextEdit;

namespace {

// ---------------------------------------------------------------- attributes to tags

const QString TagFontFamily = QStringLiteral("Helvetica");
constexpr double TagFontSize = 12.0;

QVariant tagFont()
{
    return QVariant::fromValue(Font::fontWithName(TagFontFamily, TagFontSize).value_or(Font::userFont(TagFontSize)));
}

Attributes tagAttributes(const AttributedString& text, qsizetype index, const QVariant& font)
{
    Attributes attributes = attributesWithoutAttachmentsAtIndex(text, index);
    attributes.insert(FontAttributeName, font);
    return attributes;
}

// Wraps every run of the attribute (for which openingFor gives a tag) in its opening and closing tag.
// The tags go in from the last run backwards, so every run keeps its place while the edits are made;
// their attributes come from the text as it was, as if the runs were tagged front to back.
template <typename OpeningFor> AttributedString wrapRuns(const AttributedString& text, const QString& name,
                                                         OpeningFor openingFor, const QString& closing,
                                                         const QVariant& font)
{
    struct Run {
        Range range;
        QString opening;
    };
    std::vector<Run> runs;
    text.enumerateAttribute(name, Range{0, text.length()}, [&](const QVariant& value, Range range) {
        if (value.isValid()) {
            if (std::optional<QString> opening = openingFor(value))
                runs.push_back(Run{range, *opening});
        }
        return true;
    });
    std::vector<TextEdit> edits;
    edits.reserve(runs.size() * 2);
    for (const Run& run : runs) {
        const qsizetype closingSource = run.range.end() < text.length() ? run.range.end() : text.length() - 1;
        edits.push_back(
            TextEdit::plain(Range{run.range.location, 0}, run.opening, tagAttributes(text, run.range.location, font)));
        edits.push_back(TextEdit::plain(Range{run.range.end(), 0}, closing, tagAttributes(text, closingSource, font)));
    }
    return notes::applyingEdits(text, std::move(edits));
}

bool startsParagraph(const QString& s, qsizetype i)
{
    if (i == 0)
        return true;
    const QChar before = s.at(i - 1);
    // Between CR and LF lies no paragraph start.
    if (before == u'\r' && i < s.size() && s.at(i) == u'\n')
        return false;
    return notes::isParagraphTerminator(before);
}

AttributedString markKeepWithNextParagraphs(const AttributedString& text)
{
    if (!attributeExistsInRange(text, XQKeepWithNextAttributeName, Range{0, text.length()}))
        return text;
    std::vector<TextEdit> edits;
    text.enumerateAttribute(
        XQKeepWithNextAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range range) {
            if (!value.toBool())
                return true;
            // Paragraph starts inside the run: its first character (when it starts a paragraph) and every
            // character after a terminator. The characters before the run are needed for the first test.
            const qsizetype from = std::max<qsizetype>(range.location - 1, 0);
            const QString s = text.substring(Range::fromBounds(from, range.end() + 1));
            for (qsizetype i = range.location; i < range.end(); ++i) {
                if (startsParagraph(s, i - from)) {
                    edits.push_back(TextEdit::plain(Range{i, 0}, XQKeepWithNextMarker,
                                                    attributesWithoutAttachmentsAtIndex(text, i)));
                }
            }
            return true;
        });
    return notes::applyingEdits(text, std::move(edits));
}

// ---------------------------------------------------------------- tags to attributes

// Finds the markers of one pass in the text as it stood before the pass, front to back, as if each
// tag were removed as soon as it is read: a closing marker already removed is no longer found.
//
// Every search is bounded so that a pass costs time in proportion to the text, however many tags it
// holds, nested or malformed: the openings are found in increasing order and a tag's parts only
// between its opening and its closing marker (the next tag's search starts beyond both). The closing
// markers are found once, up front; those still unread are kept in order, so that finding the one
// after an opening skips the removed ones in one step.
class TagScanner {
public:
    TagScanner(const QString& s, const QString& closing) : m_s(s), m_closingSize(closing.size())
    {
        for (qsizetype at = 0;;) {
            const qsizetype i = s.indexOf(closing, at, Qt::CaseInsensitive);
            if (i < 0)
                break;
            m_closings.insert(m_closings.end(), i);
            at = i + 1;
        }
    }

    /// The first occurrence of the marker at or after from that overlaps nothing removed.
    Range find(const QString& marker, qsizetype from) const { return findWithin(marker, from, m_s.size()); }
    /// As find, but only a marker that ends by end.
    Range findWithin(const QString& marker, qsizetype from, qsizetype end) const
    {
        const QStringView bounded = QStringView(m_s).first(end);
        for (qsizetype at = from;;) {
            const qsizetype i = bounded.indexOf(marker, at, Qt::CaseInsensitive);
            if (i < 0)
                return Range::notFound();
            const Range match{i, marker.size()};
            if (!overlapsRemoved(match))
                return match;
            at = i + 1;
        }
    }
    /// The first closing marker at or after from that overlaps nothing removed.
    Range findClosing(qsizetype from) const
    {
        const auto it = m_closings.lower_bound(from);
        return it == m_closings.end() ? Range::notFound() : Range{*it, m_closingSize};
    }
    void remove(Range range)
    {
        m_removedAfterCursor.emplace(range.location, range.end());
        m_edits.push_back(TextEdit::deletion(range));
        // Closing markers overlapping what goes can no longer be found.
        auto it = m_closings.lower_bound(range.location - m_closingSize + 1);
        while (it != m_closings.end() && *it < range.end())
            it = m_closings.erase(it);
    }
    std::vector<TextEdit>& edits() { return m_edits; }

private:
    bool overlapsRemoved(Range match) const
    {
        // Only closing markers lie ahead of the scan once removed; they never overlap each other.
        auto it = m_removedAfterCursor.upper_bound(match.location);
        if (it != m_removedAfterCursor.end() && it->first < match.end())
            return true;
        if (it != m_removedAfterCursor.begin() && std::prev(it)->second > match.location)
            return true;
        return false;
    }

    const QString& m_s;
    const qsizetype m_closingSize;
    std::set<qsizetype> m_closings; // starts of the closing markers not yet removed or overlapped
    std::map<qsizetype, qsizetype> m_removedAfterCursor; // start → end
    std::vector<TextEdit> m_edits;
};

struct Marked {
    Range range;
    QVariant value;
};

/// What one pass found in the text's string: the runs to mark and the markers to remove.
struct Found {
    std::vector<Marked> marked;
    std::vector<TextEdit> removals;
};

// A text handed over that nothing else holds is edited where it lies.
AttributedString applyPass(AttributedString text, const QString& name, Found found)
{
    const std::vector<Marked>& marked = found.marked;
    std::vector<TextEdit>& removals = found.removals;
    if (marked.empty() && removals.empty())
        return text;
    // The markers go first, in one pass over the text; the runs are then marked where they landed, so
    // no leaf is edited twice.
    std::vector<AttributedString::Replacement> made;
    const qsizetype length = text.length();
    AttributedString out = notes::applyingEdits(std::move(text), std::move(removals), &made);
    const ReplacedPositions landed(made, length);
    std::vector<AttributedString::Mark> marks;
    const auto mark = [&](const QVariant& value, qsizetype from, qsizetype to) {
        marks.push_back({landed.map(Range::fromBounds(from, to)), value});
    };
    // A later tag wins where two overlap (as when they are read one by one). Going from the last tag
    // back, each sets only what no later one covers, so nested tags cost no more than their length.
    std::map<qsizetype, qsizetype> covered; // disjoint, start → end
    for (auto m = marked.rbegin(); m != marked.rend(); ++m) {
        qsizetype start = m->range.location;
        const qsizetype end = m->range.end();
        if (start >= end)
            continue;
        auto it = covered.upper_bound(start);
        if (it != covered.begin() && std::prev(it)->second >= start) {
            --it; // joins the interval that reaches the start
            start = it->first;
        }
        qsizetype gap = start;
        while (it != covered.end() && it->first <= end) {
            if (gap < it->first)
                mark(m->value, std::max(gap, m->range.location), it->first);
            gap = std::max(gap, it->second);
            it = covered.erase(it);
        }
        if (gap < end)
            mark(m->value, std::max(gap, m->range.location), end);
        covered.emplace(start, std::max(gap, end));
    }
    // Disjoint, so the order they go on in changes nothing but the walk: front to back.
    std::sort(marks.begin(), marks.end(), [](const AttributedString::Mark& a, const AttributedString::Mark& b) {
        return a.range.location < b.range.location;
    });
    out.addAttributeInRanges(name, marks);
    return out;
}

enum class ColourForm { Decimal, Hexadecimal };

Found findAnnotations(const QString& s, ColourForm form, bool withNewlines)
{
    const QString& opening = form == ColourForm::Decimal
        ? (withNewlines ? XQAnnotationOpeningWithNewlineReadForm : XQAnnotationOpeningReadForm)
        : (withNewlines ? XQAnnotationHexOpeningWithNewlineReadForm : XQAnnotationHexOpeningReadForm);
    const QString& closing = withNewlines ? XQAnnotationClosingWithNewlineReadForm : XQAnnotationClosingReadForm;
    TagScanner scanner(s, closing);
    std::vector<Marked> marked;
    qsizetype from = 0;
    for (;;) {
        const Range open = scanner.find(opening, from);
        if (open.isNotFound())
            break;
        const Range close = scanner.findClosing(open.end());
        if (close.isNotFound())
            break;
        std::optional<Color> colour;
        Range textMarker = Range::notFound();
        if (form == ColourForm::Decimal) {
            const Range green = scanner.findWithin(XQAnnotationGreenReadForm, open.end(), close.location);
            const Range blue =
                green.isNotFound() ? green : scanner.findWithin(XQAnnotationBlueReadForm, green.end(), close.location);
            textMarker =
                blue.isNotFound() ? blue : scanner.findWithin(XQAnnotationTextReadForm, blue.end(), close.location);
            if (!textMarker.isNotFound()) {
                auto component = [&](qsizetype start, qsizetype end) {
                    return double(stringFloatValue(QStringView(s).mid(start, end - start)));
                };
                colour =
                    Color::calibratedRGB(component(open.end(), green.location), component(green.end(), blue.location),
                                         component(blue.end(), textMarker.location));
            }
        } else {
            textMarker = scanner.findWithin(XQAnnotationTextReadForm, open.end(), close.location);
            if (!textMarker.isNotFound()) {
                colour = Color::fromHexString(s.mid(open.end(), textMarker.location - open.end()))
                             .value_or(Color::standardAnnotationColor());
            }
        }
        if (!colour) {
            // Not a whole tag: it stays as text, and reading goes on from its closing marker.
            from = close.location;
            continue;
        }
        marked.push_back(Marked{Range::fromBounds(textMarker.end(), close.location), QVariant::fromValue(*colour)});
        scanner.remove(Range::fromBounds(open.location, textMarker.end()));
        scanner.remove(close);
        from = textMarker.end();
    }
    return Found{std::move(marked), std::move(scanner.edits())};
}

Found findBlocks(const QString& s, const QString& opening, const QString& closing)
{
    TagScanner scanner(s, closing);
    std::vector<Marked> marked;
    qsizetype from = 0;
    for (;;) {
        const Range open = scanner.find(opening, from);
        if (open.isNotFound())
            break;
        const Range close = scanner.findClosing(open.end());
        if (close.isNotFound())
            break;
        marked.push_back(Marked{Range::fromBounds(open.end(), close.location), QVariant(true)});
        scanner.remove(close);
        scanner.remove(open);
        from = open.end();
    }
    return Found{std::move(marked), std::move(scanner.edits())};
}

Found findKeepWithNextMarkers(const QString& s)
{
    std::vector<Marked> marked;
    std::vector<TextEdit> removals;
    for (qsizetype at = 0;;) {
        const qsizetype i = s.indexOf(XQKeepWithNextMarker, at, Qt::CaseSensitive);
        if (i < 0)
            break;
        at = i + XQKeepWithNextMarker.size();
        if (!startsParagraph(s, i))
            continue;
        qsizetype contentsEnd = i;
        while (contentsEnd < s.size() && !notes::isParagraphTerminator(s.at(contentsEnd)))
            ++contentsEnd;
        marked.push_back(Marked{Range::fromBounds(i, contentsEnd), QVariant(true)});
        removals.push_back(TextEdit::deletion(Range{i, XQKeepWithNextMarker.size()}));
        at = contentsEnd;
    }
    return Found{std::move(marked), std::move(removals)};
}

} // namespace

QString annotationOpeningTag(const Color& color)
{
    // "%f" as C prints it (six decimals, C rounding), whatever the locale's decimal point.
    const double r = color.redComponent(), g = color.greenComponent(), b = color.blueComponent();
    const int size = std::snprintf(nullptr, 0, XQAnnotationOpeningTagFormat, r, g, b);
    if (size <= 0)
        return QString();
    QByteArray buffer(size + 1, '\0');
    std::snprintf(buffer.data(), size_t(buffer.size()), XQAnnotationOpeningTagFormat, r, g, b);
    buffer.truncate(size);
    return QString::fromLatin1(buffer);
}

AttributedString attributedStringByConvertingAttributesToTags(const AttributedString& text)
{
    if (text.isEmpty())
        return text;
    const QVariant font = tagFont();
    AttributedString out = wrapRuns(
        text, XQAnnotationAttributeName,
        [](const QVariant& value) -> std::optional<QString> {
            if (value.metaType() != QMetaType::fromType<Color>())
                return std::nullopt;
            return annotationOpeningTag(value.value<Color>());
        },
        XQAnnotationClosingTag, font);
    out = wrapRuns(
        out, XQFootnoteAttributeName, [](const QVariant&) -> std::optional<QString> { return XQFootnoteOpeningTag; },
        XQFootnoteClosingTag, font);
    out = wrapRuns(
        out, XQPreserveFormattingAttributeName,
        [](const QVariant&) -> std::optional<QString> { return XQPreserveFormattingOpeningTag; },
        XQPreserveFormattingClosingTag, font);
    return markKeepWithNextParagraphs(out);
}

AttributedString attributedStringByConvertingTagsToAttributes(AttributedString text)
{
    return attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(std::move(text), false);
}

AttributedString attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(AttributedString text,
                                                                                                  bool removeNewlines)
{
    // Each pass reads the text as the one before left it. The string it reads is a temporary, let go
    // before the text is handed on to be edited.
    Found found = findAnnotations(text.string(), ColourForm::Decimal, removeNewlines);
    text = applyPass(std::move(text), XQAnnotationAttributeName, std::move(found));
    found = findAnnotations(text.string(), ColourForm::Hexadecimal, removeNewlines);
    text = applyPass(std::move(text), XQAnnotationAttributeName, std::move(found));
    found = findBlocks(text.string(), XQFootnoteOpeningReadForm, XQFootnoteClosingReadForm);
    text = applyPass(std::move(text), XQFootnoteAttributeName, std::move(found));
    found = findBlocks(text.string(), XQPreserveFormattingOpeningReadForm, XQPreserveFormattingClosingReadForm);
    text = applyPass(std::move(text), XQPreserveFormattingAttributeName, std::move(found));
    found = findKeepWithNextMarkers(text.string());
    return applyPass(std::move(text), XQKeepWithNextAttributeName, std::move(found));
}

} // namespace qly
