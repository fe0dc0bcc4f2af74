#pragma once
// The inline output of notes: annotations written in the text between markers and in their colour,
// footnotes replaced by numbered reference marks and collected after the text (or after each group of
// it) below a separator, each with its label.
#include <QString>
#include <QVariantMap>

#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

// ---- option keys (values equal their names)

/// int: the footnote number style (FootnoteNumberStyle); default 0, decimal.
inline const QString XQInlineFootnotesStyle = QStringLiteral("XQInlineFootnotesStyle");
/// int: a set of InlineFootnoteMarkerStyle bits; default 6 (superscript, reduced).
inline const QString XQInlineFootnotesMarkerStyle = QStringLiteral("XQInlineFootnotesMarkerStyle");
/// int: a FootnoteSeparatorType; default 1, the drawn rule.
inline const QString XQInlineFootnotesSeparatorType = QStringLiteral("XQInlineFootnotesSeparatorType");
/// bool: the notes take the indents of the text's most used paragraph style; default no (indents 0).
inline const QString XQInlineFootnotesIndentToMatchText = QStringLiteral("XQInlineFootnotesIndentToMatchText");
/// bool: note labels are the plain number followed by "." and neither superscript nor reduced.
inline const QString XQInlineFootnotesUsePeriodMarkerStyle = QStringLiteral("XQInlineFootnotesUsePeriodMarkerStyle");
/// QString: put before an inline annotation; default "[".
inline const QString XQInlineAnnotationOpeningMarker = QStringLiteral("XQInlineAnnotationOpeningMarker");
/// QString: put after an inline annotation; default "]".
inline const QString XQInlineAnnotationClosingMarker = QStringLiteral("XQInlineAnnotationClosingMarker");
// Read by the RTF writer.
inline const QString XQFootnoteMarkersBeforePunctuation = QStringLiteral("XQFootnoteMarkersBeforePunctuation");
inline const QString XQRTFFootnoteMarker = QStringLiteral("XQRTFFootnoteMarker");

/// Where the user wants the notes of the text before it collected (group type 3); escaped with a
/// backslash it is plain text.
inline const QString XQEndnotesPlacementMarker = QStringLiteral("<$--ENDNOTES-->");

/// Bits of XQInlineFootnotesMarkerStyle.
enum InlineFootnoteMarkerStyle : int {
    SuperscriptFootnoteMarkers = 2, ///< superscript, unbracketed reference marks
    ReducedFootnoteMarkers = 4, ///< reference marks at two thirds of the text size
};

/// Values of XQInlineFootnotesSeparatorType.
enum FootnoteSeparatorType : int {
    LineFeedFootnoteSeparator = 0, ///< one line feed
    RuleFootnoteSeparator = 1, ///< two line feeds and a drawn rule
    DashesFootnoteSeparator = 2, ///< two line feeds and "----------"
};

/// How footnotes are grouped (footnotesGroupType).
enum FootnotesGroupType : int {
    SingleFootnoteGroup = 0, ///< all notes at the end
    FootnoteGroupPerSection = 1, ///< sections end at a line feed followed by a page break
    FootnoteGroupsAroundLastPageBreak = 2,
    FootnoteGroupsAroundEndnotesMarker = 3,
};

/// The inline output of one group (numbering from 1), on a copy. Notes not to be written inline are
/// deleted with deleteNoneInlineAttributes and otherwise left as they are.
AttributedString attributedStringWithAnnotationsInline(const AttributedString& text, bool annotationsInline,
                                                       bool footnotesInline, bool deleteNoneInlineAttributes,
                                                       const QVariantMap& inlineOptions);
/// The inline output with the footnotes grouped as footnotesGroupType says: each group is converted
/// by itself (numbering restarts) and the groups are joined again. A text without inline footnotes or
/// linked comments, group type 0, or a missing page break or endnotes marker gives one group.
AttributedString attributedStringWithAnnotationsInline(const AttributedString& text, bool annotationsInline,
                                                       bool footnotesInline, bool deleteNoneInlineAttributes,
                                                       const QVariantMap& inlineOptions, int footnotesGroupType);
/// The older form: decimal numbers, the given marker style and the drawn rule, one group.
AttributedString attributedStringWithAnnotationsInline(const AttributedString& text, bool annotationsInline,
                                                       bool footnotesInline, bool deleteNoneInlineAttributes,
                                                       int footnoteMarkerStyle);

} // namespace qly
