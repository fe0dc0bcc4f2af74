#include <qlyappkit/formats/markdown/MarkdownExport.h>

#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/formats/markdown/MarkdownQueries.h>
#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

#include <vector>

namespace qly {

namespace {

// What export reads of one attribute run of the paragraph.
struct RunInfo {
    int font = -1; ///< index into the paragraph's distinct fonts; -1 without a font
    bool bold = false, italic = false;
    int underline = 0;
};

// The scratch copy of a paragraph: its characters and, per character, the run whose attributes it
// has. A marker or backslash put into it takes the run of the character before it (of the one after
// at the start), as inserted text does, so later steps see the runs the insertions made.
struct Scratch {
    QString text;
    std::vector<int> runOf;

    void appendFrom(const Scratch& from, qsizetype start, qsizetype end)
    {
        text.append(QStringView(from.text).mid(start, end - start));
        runOf.insert(runOf.end(), from.runOf.begin() + start, from.runOf.begin() + end);
    }
    void appendInserted(const QString& marker, int run)
    {
        text.append(marker);
        runOf.insert(runOf.end(), size_t(marker.size()), run);
    }
    // The run an insertion at position takes.
    int runForInsertionAt(qsizetype position) const
    {
        return position > 0 ? runOf[size_t(position - 1)] : runOf[size_t(position)];
    }
};

bool isWhitespace(QChar c) { return isWhitespaceOrNewline(c.unicode()); }

// Puts a backslash before every marker character that is not escaped yet and not between two
// whitespace characters. The paragraph's edges count as not whitespace, so a marker there is escaped.
Scratch escaped(const Scratch& in, QChar marker)
{
    Scratch out;
    out.text.reserve(in.text.size() + 16);
    out.runOf.reserve(in.runOf.size() + 16);
    const QChar escape = XQMarkdownEscapeCharacter.at(0);
    qsizetype copied = 0;
    for (qsizetype i = 0; i < in.text.size(); ++i) {
        if (in.text.at(i) != marker)
            continue;
        const bool alreadyEscaped = i > 0 && in.text.at(i - 1) == escape;
        const bool spaceBefore = i > 0 && isWhitespace(in.text.at(i - 1));
        const bool spaceAfter = i + 1 < in.text.size() && isWhitespace(in.text.at(i + 1));
        if (alreadyEscaped || (spaceBefore && spaceAfter))
            continue;
        out.appendFrom(in, copied, i);
        out.appendInserted(XQMarkdownEscapeCharacter, in.runForInsertionAt(i));
        copied = i;
    }
    out.appendFrom(in, copied, in.text.size());
    return out;
}

// Walks the runs of one value (key gives it per run; 0 means "no marker") and puts the marker that
// markerFor gives around each run's text without its surrounding whitespace.
template <typename Key, typename MarkerFor> Scratch markedRuns(const Scratch& in, Key key, MarkerFor markerFor)
{
    Scratch out;
    out.text.reserve(in.text.size() + 64);
    out.runOf.reserve(in.runOf.size() + 64);
    const qsizetype n = in.text.size();
    qsizetype start = 0;
    while (start < n) {
        const auto value = key(in.runOf[size_t(start)]);
        qsizetype end = start + 1;
        while (end < n && key(in.runOf[size_t(end)]) == value)
            ++end;
        const QString marker = markerFor(in.runOf[size_t(start)]);
        const Range trimmed = marker.isEmpty()
            ? Range::notFound()
            : markdownRangeByTrimmingWhitespaceFromRange(in.text, Range::fromBounds(start, end));
        if (trimmed.isNotFound()) {
            out.appendFrom(in, start, end);
        } else {
            // The closing marker is inserted first (it takes the run's own attributes), then the
            // opening one (which takes those of the character before the run's trimmed start).
            const int closingRun = in.runOf[size_t(trimmed.end() - 1)];
            const int openingRun = in.runForInsertionAt(trimmed.location);
            out.appendFrom(in, start, trimmed.location);
            out.appendInserted(marker, openingRun);
            out.appendFrom(in, trimmed.location, trimmed.end());
            out.appendInserted(marker, closingRun);
            out.appendFrom(in, trimmed.end(), end);
        }
        start = end;
    }
    return out;
}

} // namespace

QString markdownStringWithOptions(const AttributedString& text, unsigned options)
{
    QString result;
    result.reserve(text.length() + text.length() / 8);
    qsizetype position = 0;
    while (position < text.length()) {
        const Range paragraph = text.paragraphRange(Range{position, 0});
        result += markdownStringForParagraphRange(text, paragraph, options);
        position = std::max(paragraph.end(), position + 1);
    }
    return result;
}

QString markdownStringForParagraphRange(const AttributedString& text, Range paragraphRange, unsigned options)
{
    const Range paragraph = intersectionRange(paragraphRange, Range{0, text.length()});
    if (paragraph.isEmpty())
        return {};

    Scratch scratch;
    scratch.text = text.substring(paragraph);
    scratch.runOf.reserve(size_t(paragraph.length));
    std::vector<RunInfo> runs;
    std::vector<Font> fonts;
    text.enumerateAttributes(paragraph, [&](const Attributes& attributes, Range range) {
        RunInfo run;
        const QVariant font = attributes.value(FontAttributeName);
        if (font.metaType() == QMetaType::fromType<Font>()) {
            const Font value = font.value<Font>();
            const auto known = std::find(fonts.begin(), fonts.end(), value);
            run.font = int(known - fonts.begin());
            if (known == fonts.end())
                fonts.push_back(value);
            run.bold = value.isBold();
            run.italic = value.isItalic();
        }
        run.underline = attributes.value(UnderlineStyleAttributeName).toInt();
        runs.push_back(run);
        scratch.runOf.insert(scratch.runOf.end(), size_t(range.length), int(runs.size() - 1));
        return true;
    });

    const bool useUnderlines = options & XQMarkdownUseUnderlinesOption;
    const bool hasTraits = containsBoldOrItalicsInParagraphRange(text, paragraph);
    const bool hasUnderlines = useUnderlines && containsUnderlineAttributeInParagraphRange(text, paragraph);
    // A paragraph that gets no markers keeps its literal asterisks and underscores unescaped.
    if (hasTraits)
        scratch = escaped(scratch, XQMarkdownItalicMarker.at(0));
    if (hasTraits || hasUnderlines)
        scratch = escaped(scratch, XQMarkdownUnderscoreMarker.at(0));

    if (hasTraits) {
        scratch = markedRuns(
            scratch, [&](int run) { return runs[size_t(run)].font; },
            [&](int run) {
                const RunInfo& info = runs[size_t(run)];
                if (info.bold && info.italic)
                    return XQMarkdownBoldItalicMarker;
                if (info.bold)
                    return XQMarkdownBoldMarker;
                if (info.italic)
                    return XQMarkdownItalicMarker;
                return QString();
            });
    }
    if (hasUnderlines) {
        scratch = markedRuns(
            scratch, [&](int run) { return runs[size_t(run)].underline; },
            [&](int run) {
                const int underline = runs[size_t(run)].underline;
                if (underline == UnderlineStyleNone)
                    return QString();
                return underline == UnderlineStyleDouble ? XQMarkdownDoubleUnderscoreMarker
                                                         : XQMarkdownUnderscoreMarker;
            });
    }
    return scratch.text;
}

} // namespace qly
