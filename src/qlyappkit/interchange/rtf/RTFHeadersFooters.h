#pragma once
// Headers, footers, page numbering and sections of exported RTF.
//
// Header and footer strings use light markup (see RTFStringByConvertingMarkup) and the placeholders
// "<$p>" (page number), "<$pagecount>", "<$p-r>"/"<$P-R>" (page number in lower/upper-case roman),
// "<$sectiontitle>" and "<$SECTIONTITLE>" (the section's title, as written or in upper case).
#include <QString>
#include <QVariantMap>
#include <optional>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/values/Font.h>

namespace qly {

// Placeholders in header and footer strings.
inline const QString XQPageNumberPlaceholder = QStringLiteral("<$p>");
inline const QString XQPageCountPlaceholder = QStringLiteral("<$pagecount>");
inline const QString XQLowerRomanPageNumberPlaceholder = QStringLiteral("<$p-r>");
inline const QString XQUpperRomanPageNumberPlaceholder = QStringLiteral("<$P-R>");
inline const QString XQSectionTitlePlaceholder = QStringLiteral("<$sectiontitle>");
inline const QString XQUpperCaseSectionTitlePlaceholder = QStringLiteral("<$SECTIONTITLE>");

/// Twips from the left to the right margin: (paper width − left − right margin) × 20, truncated;
/// 7200 when the paper size or a horizontal margin is missing.
int twipsToRightMarginWithDocumentAttributes(const QVariantMap& documentAttributes);

/// One header or footer group: "{\control {\pard<tabs><alignment> {<font><size> <text>\par}}}\n".
/// One tab gives a right stop at the right margin; two or more a centre stop at half of it and a
/// right stop at it (and then the paragraph is left-aligned). Empty string → empty result.
QString headerOrFooterRTFForControl(const QString& control, const QString& string, const QString& fontRTF,
                                    double fontSize, int alignment, int twipsToRightMargin);

/// The control of the font in this RTF's font table ("\f3 "): the entry whose description equals that
/// of a one-letter text in the font. "\f0 " for no font, no table or no match.
QString RTFFontTagForFont(const QString& rtf, const std::optional<Font>& font);
/// The same for the RTF the platform writes for text.
QString RTFFontTagForFont(const AttributedString& text, const std::optional<Font>& font);

/// Header/footer text (already RTF) with its placeholders replaced: page number and count fields and
/// the section title (RTF-escaped). Roman placeholders become page numbers too.
QString replaceHeaderFooterPlaceholders(const QString& rtf, const QString& sectionTitle);

/// The header, footer and section settings of an export, read from the options dictionary.
struct HeaderFooterSettings {
    QString header, footer, firstHeader, firstFooter, alternateHeader, alternateFooter; ///< as given
    int headerAlignment = 0, footerAlignment = 0, firstHeaderAlignment = 0, firstFooterAlignment = 0;
    int alternateHeaderAlignment = 0, alternateFooterAlignment = 0;
    std::optional<Font> headerFont, footerFont;
    bool differentFirstPages = false, startAfterFrontMatter = false, countFirstPages = false;
    bool facingPages = false, noHeaderOnNewPages = false, noHeaderOrFooterOnSinglePages = false;
    int columns = 0, columnSpacing = 0;

    static HeaderFooterSettings fromOptions(const QVariantMap& options);
    bool hasAnyText() const;
    /// Some string uses a section-title placeholder (any letter case).
    bool usesSectionTitles() const;
    /// "\n\pgnlcrm" when a string asks for lower-case roman numbers, "\n\pgnucrm" for upper case,
    /// else "\n\pgndec".
    QString pageNumberFormatControl() const;
};

/// The flags carried by a section marker.
struct SectionFlags {
    bool startsNewPage = false, frontMatter = false, singlePage = false;
};

/// Writes the header/footer block or the section breaks, given the RTF whose font table names the
/// header and footer fonts.
class HeaderFooterWriter {
public:
    HeaderFooterWriter(const HeaderFooterSettings& settings, const QString& rtf, int twipsToRightMargin);

    /// The block that stands for the header/footer marker when there are no sections.
    QString documentBlock() const;
    /// What replaces the marker of the next section (call once per section, in order).
    /// sectionFootnoteControls are repeated after "\sectd" so later sections keep them.
    QString nextSection(const QString& title, const SectionFlags& flags, const QString& sectionFootnoteControls);

private:
    QString groups(const QString& title, bool blankAll, bool blankFirstHeader) const;
    QString group(const QString& control, const QString& text, bool header, int alignment, const QString& title) const;

    HeaderFooterSettings m_settings;
    QString m_headerFontTag, m_footerFontTag;
    int m_twips = 0;
    int m_sectionIndex = 0;
    bool m_bodyStarted = false;
};

} // namespace qly
