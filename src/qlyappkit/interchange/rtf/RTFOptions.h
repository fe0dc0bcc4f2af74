#pragma once
// Keys of the options dictionary that the extended RTF writer reads (values equal their names), the
// user-default keys of RTF export, and the attributes that carry bookmarks, page references and
// section starts into the writer.
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <qlyappkit/platform/strings/NumberParsing.h>

namespace qly {

// ---- options dictionary keys
inline const QString XQRTFUseMSWordOptions = QStringLiteral("XQRTFUseMSWordOptions");
inline const QString XQRTFForAsposeConversion = QStringLiteral("XQRTFForAsposeConversion");
inline const QString XQRTFHeaderString = QStringLiteral("XQRTFHeaderString");
inline const QString XQRTFFooterString = QStringLiteral("XQRTFFooterString");
inline const QString XQRTFHeaderAlignment = QStringLiteral("XQRTFHeaderAlignment");
inline const QString XQRTFFooterAlignment = QStringLiteral("XQRTFFooterAlignment");
inline const QString XQRTFFirstPageHeaderString = QStringLiteral("XQRTFFirstPageHeaderString");
inline const QString XQRTFFirstPageFooterString = QStringLiteral("XQRTFFirstPageFooterString");
inline const QString XQRTFFirstPageHeaderAlignment = QStringLiteral("XQRTFFirstPageHeaderAlignment");
inline const QString XQRTFFirstPageFooterAlignment = QStringLiteral("XQRTFFirstPageFooterAlignment");
inline const QString XQRTFAlternateHeaderString = QStringLiteral("XQRTFAlternateHeaderString");
inline const QString XQRTFAlternateFooterString = QStringLiteral("XQRTFAlternateFooterString");
inline const QString XQRTFAlternateHeaderAlignment = QStringLiteral("XQRTFAlternateHeaderAlignment");
inline const QString XQRTFAlternateFooterAlignment = QStringLiteral("XQRTFAlternateFooterAlignment");
inline const QString XQRTFHeaderFont = QStringLiteral("XQRTFHeaderFont");
inline const QString XQRTFFooterFont = QStringLiteral("XQRTFFooterFont");
inline const QString XQRTFDifferentFirstPages = QStringLiteral("XQRTFDifferentFirstPages");
inline const QString XQRTFStartRegularHeaderAndFooterAfterFrontMatter =
    QStringLiteral("XQRTFStartRegularHeaderAndFooterAfterFrontMatter");
inline const QString XQRTFCountFirstPages = QStringLiteral("XQRTFCountFirstPages");
inline const QString XQRTFHasFacingPages = QStringLiteral("XQRTFHasFacingPages");
inline const QString XQRTFNoHeaderOnNewPages = QStringLiteral("XQRTFNoHeaderOnNewPages");
inline const QString XQRTFNoHeaderOrFooterOnSinglePages = QStringLiteral("XQRTFNoHeaderOrFooterOnSinglePages");
inline const QString XQRTFIndentFootnotesToMatchText = QStringLiteral("XQRTFIndentFootnotesToMatchText");
inline const QString XQRTFNumberOfColumns = QStringLiteral("XQRTFNumberOfColumns");
inline const QString XQRTFColumnSpacingInTwips = QStringLiteral("XQRTFColumnSpacingInTwips");
inline const QString XQRTFFootnoteStyle = QStringLiteral("XQRTFFootnoteStyle");
inline const QString XQRTFEndnoteStyle = QStringLiteral("XQRTFEndnoteStyle");
inline const QString XQRTFRestartFootnoteNumberingEachPage = QStringLiteral("XQRTFRestartFootnoteNumberingEachPage");
inline const QString XQRTFFootnotesUsePeriodMarkerStyle = QStringLiteral("XQRTFFootnotesUsePeriodMarkerStyle");
inline const QString XQRTFAvoidWidowsAndOrphans = QStringLiteral("XQRTFAvoidWidowsAndOrphans");
inline const QString XQRTFInlineFootnotesAsEndnotes = QStringLiteral("XQRTFInlineFootnotesAsEndnotes");
inline const QString XQRTFLinkedFootnotesAsEndnotes = QStringLiteral("XQRTFLinkedFootnotesAsEndnotes");
inline const QString XQRTFLinkedCommentsFootnotesAsEndnotes = QStringLiteral("XQRTFLinkedCommentsFootnotesAsEndnotes");
inline const QString XQRTFUseCocoaStyleListIndents = QStringLiteral("XQRTFUseCocoaStyleListIndents");
inline const QString XQRTFEnsureHyperlinksHaveColorAndUnderline =
    QStringLiteral("XQRTFEnsureHyperlinksHaveColorAndUnderline");

/// Every option key above, for tools that set options by name.
inline const QStringList& allRTFOptionKeys()
{
    static const QStringList keys{XQRTFUseMSWordOptions,
                                  XQRTFForAsposeConversion,
                                  XQRTFHeaderString,
                                  XQRTFFooterString,
                                  XQRTFHeaderAlignment,
                                  XQRTFFooterAlignment,
                                  XQRTFFirstPageHeaderString,
                                  XQRTFFirstPageFooterString,
                                  XQRTFFirstPageHeaderAlignment,
                                  XQRTFFirstPageFooterAlignment,
                                  XQRTFAlternateHeaderString,
                                  XQRTFAlternateFooterString,
                                  XQRTFAlternateHeaderAlignment,
                                  XQRTFAlternateFooterAlignment,
                                  XQRTFHeaderFont,
                                  XQRTFFooterFont,
                                  XQRTFDifferentFirstPages,
                                  XQRTFStartRegularHeaderAndFooterAfterFrontMatter,
                                  XQRTFCountFirstPages,
                                  XQRTFHasFacingPages,
                                  XQRTFNoHeaderOnNewPages,
                                  XQRTFNoHeaderOrFooterOnSinglePages,
                                  XQRTFIndentFootnotesToMatchText,
                                  XQRTFNumberOfColumns,
                                  XQRTFColumnSpacingInTwips,
                                  XQRTFFootnoteStyle,
                                  XQRTFEndnoteStyle,
                                  XQRTFRestartFootnoteNumberingEachPage,
                                  XQRTFFootnotesUsePeriodMarkerStyle,
                                  XQRTFAvoidWidowsAndOrphans,
                                  XQRTFInlineFootnotesAsEndnotes,
                                  XQRTFLinkedFootnotesAsEndnotes,
                                  XQRTFLinkedCommentsFootnotesAsEndnotes,
                                  XQRTFUseCocoaStyleListIndents,
                                  XQRTFEnsureHyperlinksHaveColorAndUnderline};
    return keys;
}

// ---- user defaults read by the writer
/// int: resolution at which PDF pictures are rendered to PNG (600 when absent).
inline const QString XQRTFConvertPDFToPNGResolution = QStringLiteral("XQRTFConvertPDFToPNGResolution");
/// bool: write each picture's file name in a \nisusfilename group.
inline const QString XQRTFExportNisusImageFilenames = QStringLiteral("XQRTFExportNisusImageFilenames");
/// bool: bookmark names lose their underscores.
inline const QString RemoveUnderscoresInRTFBookmarksDefault = QStringLiteral("RemoveUnderscoresInRTFBookmarks");
inline constexpr int DefaultPDFToPNGResolution = 600;

// ---- attributes read by the writer
/// QString: the run is a bookmark of that name.
inline const QString XQRTFBookmarkAttributeName = QStringLiteral("XQRTFBookmarkAttribute");
/// QString: the run is the visible result of a page reference to that bookmark.
inline const QString XQRTFPageRefFieldAttributeName = QStringLiteral("XQRTFPageRefFieldAttribute");
/// QVariantMap: a section starts here (keys XQRTFSectionTitle, XQRTFSectionIsPartOfFrontMatter).
inline const QString XQRTFSectionInfoAttributeName = QStringLiteral("XQRTFSectionInfoAttributeName");
inline const QString XQRTFSectionTitle = QStringLiteral("SectionTitle");
inline const QString XQRTFSectionIsPartOfFrontMatter = QStringLiteral("SectionIsFrontMatter");

/// Where page columns begin; callers may put it in the text themselves.
inline const QString XQRTFColumnsMarker = QStringLiteral("<<**RTF_COLUMNS_START_HERE**>>\n");

// ---- keys of the conversion info of a picture
inline const QString XQConvertedImagePixelsWidth = QStringLiteral("PixelsWidth");
inline const QString XQConvertedImagePixelsHeight = QStringLiteral("PixelsHeight");
inline const QString XQConvertedImageTwipsWidth = QStringLiteral("TwipsWidth");
inline const QString XQConvertedImageTwipsHeight = QStringLiteral("TwipsHeight");
inline const QString XQConvertedImagePDFScalePercentage = QStringLiteral("PDFScalePercent");

/// An option read as a boolean ("boolValue": numbers, booleans and texts such as "YES"); no for a missing key.
inline bool boolForRTFOption(const QVariantMap& options, const QString& key)
{
    const QVariant v = options.value(key);
    if (v.typeId() == QMetaType::QString)
        return stringBoolValue(v.toString());
    return v.isValid() && v.toBool();
}
/// An option read as an integer ("intValue"); 0 for a missing key.
inline int intForRTFOption(const QVariantMap& options, const QString& key)
{
    const QVariant v = options.value(key);
    if (v.typeId() == QMetaType::QString)
        return stringIntValue(v.toString());
    return v.isValid() ? v.toInt() : 0;
}

} // namespace qly
