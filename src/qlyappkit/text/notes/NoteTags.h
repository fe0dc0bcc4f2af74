#pragma once
// The tagged plain-text form of notes: literal markers around inline annotations, inline footnotes
// and preserve-formatting blocks, and a marker at the start of keep-with-next paragraphs, so that the
// notes survive formats that know nothing of the attributes.
//
// The writer spells the markers in mixed case; the reader matches them whatever their letter case,
// except the keep-with-next marker, which is matched exactly and only at a paragraph's very start.
#include <QString>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/Color.h>

namespace qly {

// ---- what the writer puts around a note

/// Before an annotation, filled with its red, green and blue ("%f": six decimals).
inline const char* const XQAnnotationOpeningTagFormat = "{\\Qlry_annot \\color={\\R=%f\\G=%f\\B=%f} \\text=";
inline const QString XQAnnotationClosingTag = QStringLiteral("\\end_Qlry_annot}");
inline const QString XQFootnoteOpeningTag = QStringLiteral("{\\Qlry_fn=");
inline const QString XQFootnoteClosingTag = QStringLiteral("\\end_Qlry_fn}");
inline const QString XQPreserveFormattingOpeningTag = QStringLiteral("{\\Qlry_ps=");
inline const QString XQPreserveFormattingClosingTag = QStringLiteral("\\end_Qlry_ps}");
/// At the very start of a keep-with-next paragraph (also what the reader matches, case-sensitively).
inline const QString XQKeepWithNextMarker = QStringLiteral("<$QlyKeepWithNext>");

// ---- what the reader looks for (letter case ignored)

inline const QString XQAnnotationOpeningReadForm = QStringLiteral("{\\QLRY_ANNOT \\COLOR={\\R=");
inline const QString XQAnnotationGreenReadForm = QStringLiteral("\\G=");
inline const QString XQAnnotationBlueReadForm = QStringLiteral("\\B=");
inline const QString XQAnnotationTextReadForm = QStringLiteral("} \\TEXT=");
inline const QString XQAnnotationClosingReadForm = QStringLiteral("\\END_QLRY_ANNOT}");
/// The opening of the hexadecimal colour form: "#" and RGB digits follow, up to "} \TEXT=".
inline const QString XQAnnotationHexOpeningReadForm = QStringLiteral("{\\QLRY_ANNOT \\COLOR={#");
inline const QString XQFootnoteOpeningReadForm = QStringLiteral("{\\QLRY_FN=");
inline const QString XQFootnoteClosingReadForm = QStringLiteral("\\END_QLRY_FN}");
inline const QString XQPreserveFormattingOpeningReadForm = QStringLiteral("{\\QLRY_PS=");
inline const QString XQPreserveFormattingClosingReadForm = QStringLiteral("\\END_QLRY_PS}");
// The forms with the line feeds that RTF import removes along with the annotation markers.
inline const QString XQAnnotationOpeningWithNewlineReadForm = QStringLiteral("\n{\\QLRY_ANNOT \\COLOR={\\R=");
inline const QString XQAnnotationHexOpeningWithNewlineReadForm = QStringLiteral("\n{\\QLRY_ANNOT \\COLOR={#");
inline const QString XQAnnotationClosingWithNewlineReadForm = QStringLiteral("\\END_QLRY_ANNOT}\n");

/// The opening annotation tag for a colour.
QString annotationOpeningTag(const Color& color);

/// A copy with the markers written around every annotation (whose value is a colour), footnote and
/// preserve-formatting run, in that order, and before every keep-with-next paragraph. The attributes
/// stay; each marker takes the attributes of the character it stands next to, in Helvetica 12 pt.
AttributedString attributedStringByConvertingAttributesToTags(const AttributedString& text);

/// A copy with the markers read back into attributes and removed: annotations (decimal, then
/// hexadecimal colours), footnotes, preserve-formatting blocks, keep-with-next paragraphs. A tag
/// without its closing marker, or an annotation tag missing one of its colour parts, stays as text.
/// Colour components are read as calibrated colours hold them, within 0–1. Runs in time linear in
/// the text, however its tags are nested or broken. A text handed over (moved in) is read where it
/// lies instead of being copied.
AttributedString attributedStringByConvertingTagsToAttributes(AttributedString text);
/// As above; with removeNewlines, annotations are recognised only in the forms with a line feed before
/// the opening and after the closing marker, and those line feeds go with the markers.
AttributedString attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(AttributedString text,
                                                                                                  bool removeNewlines);

} // namespace qly
