#include <qlyappkit/interchange/rtf/RTFHeadersFooters.h>

#include <QSizeF>

#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/strings/EscapeParsing.h>
#include <qlyappkit/platform/strings/NumberParsing.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

namespace qly {

namespace {

constexpr int MissingPageTwipsToRightMargin = 7200;
const QString DefaultFontTag = QStringLiteral("\\f0 ");
const QString PageNumberField = QStringLiteral("{\\chpgn}");
const QString PageCountField = QStringLiteral("{\\field {\\*\\fldinst {NUMPAGES}}{\\fldrslt 1}}");

// Replaces the occurrences of target that no backslash escapes, in one scan.
QString replaceUnescaped(const QString& s, const QString& target, const QString& replacement, unsigned options)
{
    QString out;
    qsizetype copied = 0;
    while (copied < s.size()) {
        const Range r = rangeOfUnescapedString(s, target, options, Range::fromBounds(copied, s.size()));
        if (r.isNotFound())
            break;
        out.append(QStringView(s).mid(copied, r.location - copied)).append(replacement);
        copied = r.end();
    }
    if (copied == 0)
        return s;
    out.append(QStringView(s).mid(copied));
    return out;
}

qsizetype tabCount(const QString& s)
{
    qsizetype n = s.count(QLatin1Char('\t'));
    for (qsizetype at = s.indexOf(QLatin1String("\\tab")); at >= 0; at = s.indexOf(QLatin1String("\\tab"), at + 4)) {
        const qsizetype after = at + 4;
        if (after >= s.size() || !s.at(after).isLetter())
            ++n;
    }
    return n;
}

std::optional<Font> fontOption(const QVariantMap& options, const QString& key)
{
    const QVariant v = options.value(key);
    if (v.metaType() == QMetaType::fromType<Font>())
        return v.value<Font>();
    return std::nullopt;
}

} // namespace

int twipsToRightMarginWithDocumentAttributes(const QVariantMap& documentAttributes)
{
    if (!documentAttributes.contains(PaperSizeDocumentAttribute)
        || !documentAttributes.contains(LeftMarginDocumentAttribute)
        || !documentAttributes.contains(RightMarginDocumentAttribute))
        return MissingPageTwipsToRightMargin;
    const QSizeF paper = documentAttributes.value(PaperSizeDocumentAttribute).toSizeF();
    const double left = documentAttributes.value(LeftMarginDocumentAttribute).toDouble();
    const double right = documentAttributes.value(RightMarginDocumentAttribute).toDouble();
    return int((paper.width() - left - right) * 20.0);
}

QString headerOrFooterRTFForControl(const QString& control, const QString& string, const QString& fontRTF,
                                    double fontSize, int alignment, int twipsToRightMargin)
{
    if (string.isEmpty())
        return QString();
    const qsizetype tabs = tabCount(string);
    QString tabStops;
    if (tabs == 1)
        tabStops = QStringLiteral("\\tqr\\tx%1").arg(twipsToRightMargin);
    else if (tabs >= 2)
        tabStops = QStringLiteral("\\tqc\\tx%1\\tqr\\tx%2").arg(twipsToRightMargin / 2).arg(twipsToRightMargin);
    const QString alignmentTag = RTFAlignmentTagForTextAlignment(tabs > 0 ? 0 : alignment);
    const QString size = fontSize > 0 ? QStringLiteral("\\fs%1").arg(int(fontSize * 2)) : QString();
    // The font tag ends with its delimiter; one more blank would be the text's first character.
    QString font = fontRTF;
    while (font.endsWith(QLatin1Char(' ')))
        font.chop(1);
    const QString formatting = font + size;
    const QString text = formatting.isEmpty() ? string : formatting + QLatin1Char(' ') + string;
    return QStringLiteral("{\\%1 {\\pard%2%3 {%4\\par}}}\n").arg(control, tabStops, alignmentTag, text);
}

QString RTFFontTagForFont(const QString& rtf, const std::optional<Font>& font)
{
    if (!font)
        return DefaultFontTag;
    const AttributedString letter(QStringLiteral("a"), Attributes{{FontAttributeName, QVariant::fromValue(*font)}});
    const QList<RTFFontTableEntry> own = RTFFontTableInfo(QString::fromLatin1(RTFFromRange(letter, Range{0, 1})));
    if (own.size() != 1)
        return DefaultFontTag;
    for (const RTFFontTableEntry& entry : RTFFontTableInfo(rtf)) {
        if (entry.fontInfo == own.first().fontInfo)
            return QLatin1Char('\\') + entry.fontID + QLatin1Char(' ');
    }
    return DefaultFontTag;
}

QString RTFFontTagForFont(const AttributedString& text, const std::optional<Font>& font)
{
    return RTFFontTagForFont(QString::fromLatin1(RTFFromRange(text, Range{0, text.length()})), font);
}

QString replaceHeaderFooterPlaceholders(const QString& rtf, const QString& sectionTitle)
{
    QString s = replaceUnescaped(rtf, XQUpperCaseSectionTitlePlaceholder, RTFEscapedText(sectionTitle.toUpper()), 0);
    s = replaceUnescaped(s, XQSectionTitlePlaceholder, RTFEscapedText(sectionTitle), CaseInsensitiveSearch);
    s = replaceUnescaped(s, XQLowerRomanPageNumberPlaceholder, PageNumberField, CaseInsensitiveSearch);
    s = replaceUnescaped(s, XQPageCountPlaceholder, PageCountField, CaseInsensitiveSearch);
    return replaceUnescaped(s, XQPageNumberPlaceholder, PageNumberField, CaseInsensitiveSearch);
}

HeaderFooterSettings HeaderFooterSettings::fromOptions(const QVariantMap& o)
{
    HeaderFooterSettings s;
    s.header = o.value(XQRTFHeaderString).toString();
    s.footer = o.value(XQRTFFooterString).toString();
    s.firstHeader = o.value(XQRTFFirstPageHeaderString).toString();
    s.firstFooter = o.value(XQRTFFirstPageFooterString).toString();
    s.alternateHeader = o.value(XQRTFAlternateHeaderString).toString();
    s.alternateFooter = o.value(XQRTFAlternateFooterString).toString();
    s.headerAlignment = intForRTFOption(o, XQRTFHeaderAlignment);
    s.footerAlignment = intForRTFOption(o, XQRTFFooterAlignment);
    s.firstHeaderAlignment = intForRTFOption(o, XQRTFFirstPageHeaderAlignment);
    s.firstFooterAlignment = intForRTFOption(o, XQRTFFirstPageFooterAlignment);
    s.alternateHeaderAlignment = intForRTFOption(o, XQRTFAlternateHeaderAlignment);
    s.alternateFooterAlignment = intForRTFOption(o, XQRTFAlternateFooterAlignment);
    s.headerFont = fontOption(o, XQRTFHeaderFont);
    s.footerFont = fontOption(o, XQRTFFooterFont);
    s.differentFirstPages = boolForRTFOption(o, XQRTFDifferentFirstPages);
    s.startAfterFrontMatter = boolForRTFOption(o, XQRTFStartRegularHeaderAndFooterAfterFrontMatter);
    s.countFirstPages = boolForRTFOption(o, XQRTFCountFirstPages);
    s.facingPages = boolForRTFOption(o, XQRTFHasFacingPages);
    s.noHeaderOnNewPages = boolForRTFOption(o, XQRTFNoHeaderOnNewPages);
    s.noHeaderOrFooterOnSinglePages = boolForRTFOption(o, XQRTFNoHeaderOrFooterOnSinglePages);
    s.columns = intForRTFOption(o, XQRTFNumberOfColumns);
    s.columnSpacing = intForRTFOption(o, XQRTFColumnSpacingInTwips);
    return s;
}

bool HeaderFooterSettings::hasAnyText() const
{
    return !(header.isEmpty() && footer.isEmpty() && firstHeader.isEmpty() && firstFooter.isEmpty()
             && alternateHeader.isEmpty() && alternateFooter.isEmpty());
}

bool HeaderFooterSettings::usesSectionTitles() const
{
    for (const QString* s : {&header, &footer, &firstHeader, &firstFooter, &alternateHeader, &alternateFooter}) {
        if (s->contains(XQSectionTitlePlaceholder, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

QString HeaderFooterSettings::pageNumberFormatControl() const
{
    bool lower = false, upper = false;
    for (const QString* s : {&header, &footer, &firstHeader, &firstFooter, &alternateHeader, &alternateFooter}) {
        upper = upper || s->contains(XQUpperRomanPageNumberPlaceholder);
        lower = lower || s->contains(XQLowerRomanPageNumberPlaceholder, Qt::CaseInsensitive);
    }
    if (upper)
        return QStringLiteral("\n\\pgnucrm");
    if (lower)
        return QStringLiteral("\n\\pgnlcrm");
    return QStringLiteral("\n\\pgndec");
}

HeaderFooterWriter::HeaderFooterWriter(const HeaderFooterSettings& settings, const QString& rtf, int twipsToRightMargin)
    : m_settings(settings),
      m_headerFontTag(settings.headerFont ? RTFFontTagForFont(rtf, settings.headerFont) : DefaultFontTag),
      m_footerFontTag(settings.footerFont ? RTFFontTagForFont(rtf, settings.footerFont) : DefaultFontTag),
      m_twips(twipsToRightMargin)
{
}

QString HeaderFooterWriter::group(const QString& control, const QString& text, bool header, int alignment,
                                  const QString& title) const
{
    if (text.isEmpty())
        return QString();
    const QString rtf = replaceHeaderFooterPlaceholders(RTFStringByConvertingMarkup(text), title);
    const std::optional<Font>& font = header ? m_settings.headerFont : m_settings.footerFont;
    return headerOrFooterRTFForControl(control, rtf, header ? m_headerFontTag : m_footerFontTag,
                                       font ? font->pointSize() : 0, alignment, m_twips);
}

QString HeaderFooterWriter::groups(const QString& title, bool blankAll, bool blankFirstHeader) const
{
    const HeaderFooterSettings& s = m_settings;
    if (blankAll) {
        QString out;
        for (const char* c : {"header", "footer", "headerr", "footerr", "headerl", "footerl", "headerf", "footerf"})
            out.append(QStringLiteral("{\\%1 {}}").arg(QLatin1String(c)));
        return out + QLatin1Char('\n');
    }
    QString out;
    out.append(group(s.facingPages ? QStringLiteral("headerr") : QStringLiteral("header"), s.header, true,
                     s.headerAlignment, title));
    out.append(group(s.facingPages ? QStringLiteral("footerr") : QStringLiteral("footer"), s.footer, false,
                     s.footerAlignment, title));
    out.append(group(QStringLiteral("headerl"), s.alternateHeader, true, s.alternateHeaderAlignment, title));
    out.append(group(QStringLiteral("footerl"), s.alternateFooter, false, s.alternateFooterAlignment, title));
    if (blankFirstHeader) {
        out.append(QStringLiteral("{\\headerf {}}"));
        // The first page of a new-page section keeps its footer.
        if (s.differentFirstPages)
            out.append(group(QStringLiteral("footerf"), s.firstFooter, false, s.firstFooterAlignment, title));
        else
            out.append(group(QStringLiteral("footerf"), s.footer, false, s.footerAlignment, title));
    } else {
        out.append(group(QStringLiteral("headerf"), s.firstHeader, true, s.firstHeaderAlignment, title));
        out.append(group(QStringLiteral("footerf"), s.firstFooter, false, s.firstFooterAlignment, title));
    }
    return out;
}

QString HeaderFooterWriter::documentBlock() const
{
    const HeaderFooterSettings& s = m_settings;
    QString out;
    if (s.differentFirstPages)
        out = s.countFirstPages ? QStringLiteral("\n\\titlepg\\pgnrestart\\pgnstarts1")
                                : QStringLiteral("\n\\titlepg\\pgnrestart\\pgnstarts0");
    else
        out = QStringLiteral("\n\\pgnrestart\\pgnstarts1");
    if (s.facingPages)
        out.append(QStringLiteral("\\facingp\\margmirror"));
    out.append(s.pageNumberFormatControl());
    out.append(QLatin1Char('\n'));
    out.append(groups(QString(), false, false));
    return out;
}

QString HeaderFooterWriter::nextSection(const QString& title, const SectionFlags& flags,
                                        const QString& sectionFootnoteControls)
{
    const HeaderFooterSettings& s = m_settings;
    const bool first = m_sectionIndex++ == 0;
    const bool blankFirstHeader = s.noHeaderOnNewPages && flags.startsNewPage;
    const bool titlePage = s.differentFirstPages || blankFirstHeader;
    const bool frontMatterApart = s.startAfterFrontMatter && flags.frontMatter;

    QString out = first ? QString() : QStringLiteral("\\sect\\sectd\n");
    // A section that does not start at a page break runs on: a bare section break starts a page.
    if (!first && !flags.startsNewPage)
        out.append(QStringLiteral("\\sbknone"));
    if (first) {
        if (titlePage)
            out.append(s.differentFirstPages && !s.countFirstPages
                           ? QStringLiteral("\n\\titlepg\\pgnrestart\\pgnstarts0")
                           : QStringLiteral("\\titlepg\\pgnrestart\\pgnstarts1"));
        else
            out.append(QStringLiteral("\\pgnrestart\\pgnstarts1"));
    } else if (s.startAfterFrontMatter && !flags.frontMatter && !m_bodyStarted) {
        // The body's first section after front matter numbers its pages from 1 again.
        out.append(titlePage ? QStringLiteral("\\titlepg\\pgrestart\\pgnstarts1")
                             : QStringLiteral("\\pgrestart\\pgnstarts1"));
    } else {
        out.append(titlePage ? QStringLiteral("\\titlepg\\pgncont") : QStringLiteral("\\pgncont"));
    }
    if (!flags.frontMatter)
        m_bodyStarted = true;
    if (s.facingPages)
        out.append(QStringLiteral("\\facingp\\margmirror"));
    out.append(frontMatterApart ? QStringLiteral("\n\\pgnlcrm") : s.pageNumberFormatControl());
    if (s.columns >= 2)
        out.append(QStringLiteral("\\cols%1\\colsx%2").arg(s.columns).arg(s.columnSpacing));
    if (!sectionFootnoteControls.isEmpty())
        out.append(QLatin1Char(' ') + sectionFootnoteControls);
    out.append(QLatin1Char('\n'));
    out.append(groups(title, flags.singlePage || frontMatterApart, blankFirstHeader));
    return out;
}

} // namespace qly
