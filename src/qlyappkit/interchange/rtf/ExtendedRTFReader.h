#pragma once
// The extended RTF reader: RTF from word processors (and from the extended writer) into attributed
// text, keeping what the platform reader drops: footnotes and endnotes, comments with the range they
// cover, and pictures at the size they are shown.
//
// Before the platform reads it, the RTF is rewritten so that each footnote and annotation reads as an
// inline note tag, each comment range as a pair of markers and each picture as a placeholder; the
// tags then become note attributes, the markers comment ranges and the placeholders attachments.
#include <QByteArray>
#include <QVariantMap>
#include <optional>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/text/AttributedString.h>

namespace qly {

/// How notes arrive. By default annotations become margin comments and footnotes margin footnotes.
struct ExtendedRTFImportOptions {
    bool commentsInline = false;
    bool footnotesInline = false;
    /// The options of the user defaults XQRTFImportCommentsInline and XQRTFImportFootnotesInline.
    static ExtendedRTFImportOptions fromUserDefaults();
};

/// What an import found.
struct ExtendedRTFImportReport {
    int footnotes = 0;
    int endnotes = 0;
    int annotations = 0;
    int pictures = 0;
    /// Ok, or where the RTF ended early (what could be read was kept).
    RTFParseResult parse;
};

/// Reads RTF with the options of the user defaults; XQRTFFootnoteMarker in RTFAttributes is the marker
/// put where each footnote stood. Nothing when the data is not RTF.
std::optional<AttributedString> initWithExtendedRTF(const QByteArray& data, QVariantMap* documentAttributes,
                                                    const QVariantMap& RTFAttributes);
/// As above with explicit options. When every note of the RTF is an endnote, documentAttributes gets
/// the options that export notes as endnotes, so that writing the text again keeps them endnotes.
std::optional<AttributedString> attributedStringFromExtendedRTF(const QByteArray& data, QVariantMap* documentAttributes,
                                                                const QVariantMap& RTFAttributes,
                                                                const ExtendedRTFImportOptions& options,
                                                                ExtendedRTFImportReport* report = nullptr);

} // namespace qly
