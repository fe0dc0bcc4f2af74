#pragma once
// Passes over RTF text (as a QString holding 7-bit RTF): the font table, font controls, paragraph
// ranges, placeholder tags, highlight and stylesheet repairs, and plain text to and from RTF bodies.
// The extended writer and reader share them. Each mutating pass rewrites the whole text in one scan
// (never one insertion per match), so its cost is linear in the text.
#include <QList>
#include <QString>
#include <QStringList>

#include <qlyappkit/platform/text/Range.h>

namespace qly {

/// The toolkit version this framework reports where list repairs depend on it (newer than 949,
/// so the old list repair stays off by default).
inline constexpr double PlatformAppKitVersionNumber = 2299.0;

/// One entry of an RTF font table: the control word without its backslash ("f3") and the rest of
/// the entry up to its ";", trimmed ("\fswiss\fcharset0 Helvetica").
struct RTFFontTableEntry {
    QString fontID;
    QString fontInfo;
    friend bool operator==(const RTFFontTableEntry&, const RTFFontTableEntry&) = default;
};

/// The entries of the "\fonttbl" group in table order; empty when there is none.
QList<RTFFontTableEntry> RTFFontTableInfo(const QString& rtf);
/// The control of font number n ("\f3") outside escapes and as a whole control word ("\f1" does
/// not match "\f12" nor "\fs"); not found when absent. Options as for rangeOfUnescapedString.
Range rangeOfFontWithNumber(const QString& rtf, int n, unsigned options, Range range);
/// The last "\fN" and the last "\fsN" before index, joined ("\f1\fs24"); empty parts when absent.
QString RTFFontTagForIndex(const QString& rtf, qsizetype index);
/// The RTF paragraph around range: from the line start before it to just after the next paragraph
/// break (a backslash and a line feed); line feeds without a backslash are source layout only.
Range RTFParagraphRangeForRange(const QString& rtf, Range range);

/// Header and footer text to RTF: "{{…}}" is raw RTF (outer braces removed); otherwise "_" underlines,
/// "**" bolds and "*" italicises up to the next such mark.
QString RTFStringByConvertingMarkup(const QString& string);
/// The RTF body the platform writes for plain text (escapes, \uc0\uN forms), and back.
QString RTFFragmentFromString(const QString& string);
QString stringFromRTFFragment(const QString& fragment);
/// "\ql", "\qr", "\qc", "\qj" for alignments 0–3; "\ql" for any other.
QString RTFAlignmentTagForTextAlignment(int alignment);

/// Replaces each pair of "<<**start(payload)**>>" … "<<**end(payload)**>>" tags by
/// startRTF + font tag at the start + start payload + " " and endRTF + font tag at the end + end
/// payload + " " (payloads with "\\" turned back into "\"). Stops at the first incomplete pair.
/// Returns the number of pairs replaced.
qsizetype replacePlaceholderTagsWithRTF(QString& rtf, const QString& startTagName, const QString& endTagName,
                                        const QString& startRTF, const QString& endRTF);

/// "\cbN" becomes "\highlightN"; with forMSWord a resulting "\highlight1 " becomes "\highlight0 ".
void changeRTFBackgroundColorsToRTFHighlightsForMSWord(QString& rtf, bool forMSWord);
/// "\highlightN" becomes "\cbN", and "\cb0" a bare "\cb".
void changeRTFHighlightsToRTFBackgroundColors(QString& rtf);
/// Makes the "\deff" font font 0: fonts 0 and N swap numbers everywhere and "\deffN" becomes "\deff0".
void fixUpDefaultFont(QString& rtf);
/// For toolkits of version 949 or older: list level texts numbered "\'05." are rewritten "\'00.".
void fixUpRTFLists(QString& rtf, double appKitVersion = PlatformAppKitVersionNumber);
/// Deletes whole "\ri0" controls (with the blank in " \" after one).
void fixUpRightMargins(QString& rtf);
/// Gives the hyperlink fields for the targets a "\cs2" character style and drops their "\ulc"
/// control; returns the two stylesheet entries, or an empty string when links is empty.
QString stylesheetCharacterStylesByInsertingCharacterStylesForColoredHyperlinks(QString& rtf, const QStringList& links);
/// HYPERLINK "rtfbkmklink://NAME" instructions become HYPERLINK \\l NAME (links within the document).
void updateInternalRTFHyperlinks(QString& rtf);
/// Deletes every "\itapN" inside range; returns how many characters were deleted.
qsizetype removeItapTagsFromRange(QString& rtf, Range range);

/// Where an RTF document's group structure first goes wrong: text outside the outermost group, a "}"
/// that closes no group, or (at the text's length) a group still open at the end. -1 when the
/// document is one balanced group, white space around it allowed. Escaped braces are text.
qsizetype RTFGroupStructureProblemOffset(const QString& rtf);

/// Text escaped the way the platform writer escapes it ("\\", "\{", "\}", "\uc0\uN " for non-ASCII).
QString RTFEscapedText(const QString& text);

} // namespace qly
