// Comments, annotations, footnotes and endnotes: their runs are enclosed in tags that survive the
// plain writer, and the tags become annotation and footnote groups, numbered and styled.
#include <algorithm>

#include <qlyappkit/interchange/rtf/ExtendedRTFExport_p.h>
#include <qlyappkit/interchange/rtf/RTFAttributeEnclosing.h>
#include <qlyappkit/interchange/rtf/RTFFootnoteStyles.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/strings/EscapeParsing.h>
#include <qlyappkit/platform/strings/NumberParsing.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

namespace qly::extendedrtf {

namespace {

// Tag names for the runs of each note attribute ("%@" in the footnote names is the kind).
const QString CommentLinkStartTag = QStringLiteral("JVT_CMMTLNK_START_TAG");
const QString CommentLinkEndTag = QStringLiteral("JVT_CMMTLNK_END_TAG");
const QString CommentTextStartTag = QStringLiteral("JVT_CMMTTXT_START_TAG");
const QString CommentTextEndTag = QStringLiteral("JVT_CMMTTXT_END_TAG");
const QString AnnotationStartTag = QStringLiteral("JVT_ANNOT_START_TAG");
const QString AnnotationEndTag = QStringLiteral("JVT_ANNOT_END_TAG");
const QString FootnoteStartTag = QStringLiteral("JVT_FN%@_START_TAG");
const QString FootnoteEndTag = QStringLiteral("JVT_FN%@_END_TAG");
const QString TagKindPlaceholder = QStringLiteral("%@");

// What the inline form of a linked note puts between the anchor and the note text.
const QChar InlineNoteSeparator(QLatin1Char(' '));

// Where the document's footnote numbering controls go.
const QString FootnoteControlsMarker = QStringLiteral("<<**XQ_FN_OR_ENDN_TAG**>>");

// Stand-ins for the number that ties an annotation to its range, until the pairs are counted.
const QString NumberMarkerPrefix = QStringLiteral("<<**JVT_at");
const QString AtrfStartNumber = QStringLiteral("<<**JVT_atrfstart**>>");
const QString AtrfEndNumber = QStringLiteral("<<**JVT_atrfend**>>");
const QString AtnRefNumber = QStringLiteral("<<**JVT_atnref**>>");

const QString CommentRangeStart = QStringLiteral("{\\*\\atrfstart %1}");
const QString CommentRangeEnd = QStringLiteral("{\\*\\atrfend %1}");
const QString AnnotationAuthor = QStringLiteral("{\\*\\atnid %1}{\\*\\atnauthor %1}");
const QString CommentAnnotationStart = QStringLiteral("{%1\\chatn{\\*\\annotation{\\*\\atnref %2}\\pard\\plain");
const QString InlineAnnotationStart = QStringLiteral("{%1\\chatn{\\*\\annotation\\pard\\plain");
const QString AnnotationEnd = QStringLiteral("}}");

const QString DocumentFootnoteControls = QStringLiteral("\\fet2 \\ftnbj ");
const QString SectionDefaults = QStringLiteral("\n\\sectd ");
const QString FirstParagraphDefaults = QStringLiteral("\\pard");
const QString RestartEachPage = QStringLiteral("\\ftnrestart\\ftnrstpg ");
const QString SectionRestartEachPage = QStringLiteral("\\sftnrestart\\sftnrstpg ");
const QString FootnoteOpening = QStringLiteral("{\\super\\chftn{\\*\\footnote\\pard\\plain");
const QString EndnoteOpening = QStringLiteral("{\\super\\chftn{\\*\\footnote\\ftnalt\\pard\\plain");
const QString SuperscriptMark = QStringLiteral("{\\fs%1\\up0\\super\\chftn} ");
const QString PeriodMark = QStringLiteral("{\\fs%1\\up0\\nosupersub\\chftn .} ");
const QString FootnoteIndent = QStringLiteral("\\fi%1");
const QString FootnoteEnd = QStringLiteral("}\\nosupersub}");
const QString RightAligned = QStringLiteral("\\qr "), Centered = QStringLiteral("\\qc "),
              Justified = QStringLiteral("\\qj ");

// The footnote kind a value stands for (a boolean yes is an ordinary inline footnote).
int footnoteKind(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return XQInlineFootnoteKind;
    const int kind = value.typeId() == QMetaType::QString ? stringIntValue(value.toString()) : value.toInt();
    return kind >= 1 && kind <= 3 ? kind : XQInlineFootnoteKind;
}

QString withBlank(const QString& s) { return s.isEmpty() ? s : s + QLatin1Char(' '); }

QString footnoteControls(const Context& c, bool section)
{
    const QString footnote =
        withBlank(RTFFootnoteStyleControlForFootnoteStyle(c.options.footnoteStyle, false, section));
    const QString endnote = withBlank(RTFFootnoteStyleControlForFootnoteStyle(c.options.endnoteStyle, true, section));
    if (section)
        return (c.options.restartEachPage ? SectionRestartEachPage : QString()) + footnote + endnote;
    return DocumentFootnoteControls + (c.options.restartEachPage ? RestartEachPage : QString()) + footnote + endnote
        + SectionDefaults + footnoteControls(c, true);
}

QString tagNameForKind(QString name, int kind) { return name.replace(TagKindPlaceholder, QString::number(kind)); }

} // namespace

QString sectionFootnoteControls(const Context& c) { return footnoteControls(c, true); }

void encloseNotes(Context& c)
{
    // Footnote values become their kind, so that the tag names carry 1, 2 or 3.
    std::vector<std::pair<Range, int>> footnotes;
    c.text.enumerateAttribute(XQFootnoteAttributeName, Range{0, c.text.length()}, [&](const QVariant& v, Range r) {
        if (v.isValid())
            footnotes.push_back({r, footnoteKind(v)});
        return true;
    });
    for (const auto& [range, kind] : footnotes) {
        c.text.addAttribute(XQFootnoteAttributeName, kind, range);
        c.footnoteKinds.insert(kind);
    }
    // A linked note made inline starts with one blank that parts it from its anchor. As a real note it
    // has a mark instead: the blank goes, or it would stand before the mark or double the one after.
    // A note that is nothing but the blank keeps it: deleting it would delete the note.
    if (!footnotes.empty()) {
        const QVariant font = c.text.attribute(FontAttributeName, footnotes.front().first.location);
        const double size = font.metaType() == QMetaType::fromType<Font>() ? font.value<Font>().pointSize() : 12.0;
        c.footnoteMarkSize = int(size * 2);
    }
    std::vector<qsizetype> separators;
    for (const auto& [range, kind] : footnotes) {
        if (kind != XQInlineFootnoteKind && range.length > 1
            && c.text.characterAt(range.location) == InlineNoteSeparator)
            separators.push_back(range.location);
    }
    c.text.enumerateAttribute(XQLinkedCommentAttributeName, Range{0, c.text.length()}, [&](const QVariant& v, Range r) {
        if (v.isValid() && r.length > 1 && c.text.characterAt(r.location) == InlineNoteSeparator)
            separators.push_back(r.location);
        return true;
    });
    std::sort(separators.begin(), separators.end());
    for (auto it = separators.rbegin(); it != separators.rend(); ++it)
        c.text.deleteCharacters(Range{*it, 1});
    encloseAttribute(c.text, XQCommentAttributeName, CommentLinkStartTag, CommentLinkEndTag, true);
    encloseAttribute(c.text, XQLinkedCommentAttributeName, CommentTextStartTag, CommentTextEndTag, true);
    encloseAttribute(c.text, XQAnnotationAttributeName, AnnotationStartTag, AnnotationEndTag, true);
    c.hasFootnotes = encloseAttribute(c.text, XQFootnoteAttributeName, FootnoteStartTag, FootnoteEndTag, true, true);
}

void markFootnoteControls(Context& c)
{
    if (c.hasFootnotes)
        insertLeadingMarker(c.text, FootnoteControlsMarker + QLatin1Char('\n'));
}

void writeComments(Context& c)
{
    replacePlaceholderTagsWithRTF(c.rtf, CommentLinkStartTag, CommentLinkEndTag, CommentRangeStart.arg(AtrfStartNumber),
                                  CommentRangeEnd.arg(AtrfEndNumber));
    const QString author = c.documentAttributes.value(AuthorDocumentAttribute).toString();
    const QString prefix = author.isEmpty() ? QString() : AnnotationAuthor.arg(RTFEscapedText(author));
    replacePlaceholderTagsWithRTF(c.rtf, CommentTextStartTag, CommentTextEndTag,
                                  CommentAnnotationStart.arg(prefix, AtnRefNumber), AnnotationEnd);
    // The n-th range start, range end and annotation reference all get n.
    std::vector<Edit> edits;
    int starts = 0, ends = 0, refs = 0;
    for (qsizetype at = c.rtf.indexOf(NumberMarkerPrefix); at >= 0; at = c.rtf.indexOf(NumberMarkerPrefix, at + 1)) {
        const QStringView rest = QStringView(c.rtf).mid(at);
        if (rest.startsWith(AtrfStartNumber))
            edits.push_back({at, AtrfStartNumber.size(), QString::number(++starts)});
        else if (rest.startsWith(AtrfEndNumber))
            edits.push_back({at, AtrfEndNumber.size(), QString::number(++ends)});
        else if (rest.startsWith(AtnRefNumber))
            edits.push_back({at, AtnRefNumber.size(), QString::number(++refs)});
    }
    c.rtf = applyEdits(c.rtf, edits);
    replacePlaceholderTagsWithRTF(c.rtf, AnnotationStartTag, AnnotationEndTag, InlineAnnotationStart.arg(prefix),
                                  AnnotationEnd);
}

void writeFootnoteControls(Context& c)
{
    if (!c.hasFootnotes)
        return;
    // Document formatting belongs in front of the first paragraph: word processors ignore it inside one.
    replaceMarkerParagraph(c.rtf, FootnoteControlsMarker, QString());
    Range first = rangeOfUnescapedString(c.rtf, FirstParagraphDefaults);
    while (!first.isNotFound() && first.end() < c.rtf.size() && c.rtf.at(first.end()).isLetter())
        first = rangeOfUnescapedString(c.rtf, FirstParagraphDefaults, 0, Range::fromBounds(first.end(), c.rtf.size()));
    if (!first.isNotFound())
        c.rtf.insert(first.location, footnoteControls(c, false) + QLatin1Char('\n'));
}

void writeFootnotes(Context& c)
{
    const QString indent =
        c.options.indentFootnotes && c.footnoteIndent > 0 ? FootnoteIndent.arg(int(c.footnoteIndent * 20)) : QString();
    QString alignment;
    if (c.alignment == RightTextAlignment)
        alignment = RightAligned;
    else if (c.alignment == CenterTextAlignment)
        alignment = Centered;
    else if (c.alignment == JustifiedTextAlignment)
        alignment = Justified;
    const QString mark = (c.options.periodStyle ? PeriodMark : SuperscriptMark).arg(c.footnoteMarkSize);
    for (int kind = 1; kind <= 3; ++kind) {
        const QString start =
            (c.options.asEndnote[kind] ? EndnoteOpening : FootnoteOpening) + indent + mark + alignment;
        replacePlaceholderTagsWithRTF(c.rtf, tagNameForKind(FootnoteStartTag, kind),
                                      tagNameForKind(FootnoteEndTag, kind), start, FootnoteEnd);
    }
}

} // namespace qly::extendedrtf
