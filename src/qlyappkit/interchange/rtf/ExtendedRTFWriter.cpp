#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>

#include <QLoggingCategory>

#include <qlyappkit/interchange/rtf/ExtendedRTFExport_p.h>
#include <qlyappkit/interchange/rtf/RTFExportRepairs.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/services/UserDefaults.h>
#include <qlyappkit/platform/strings/EscapeParsing.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/notes/NoteConversions.h>
#include <qlyappkit/text/notes/TaggedFootnotes.h>

namespace qly {

namespace extendedrtf {

namespace {

Q_LOGGING_CATEGORY(passLog, "qly.rtf.writer", QtWarningMsg)

struct Pass {
    const char* name;
    void (*run)(Context&);
};

// The whole writer, in order. Text passes first (features become text markers), then the plain RTF,
// then the RTF passes (markers become RTF, and repairs).
const Pass Pipeline[] = {
    {"prepare text", prepareText},
    {"read options", readOptions},
    {"fix lists and links", fixListsAndLinks},
    {"mark sections", markSections},
    {"mark bookmarks and page references", markBookmarksAndPageReferences},
    {"mark keep-with-next paragraphs", markKeepWithNext},
    {"mark columns and header/footer", markColumnsAndHeaderFooter},
    {"mark pictures", markPictures},
    {"enclose notes", encloseNotes},
    {"mark footnote controls", markFootnoteControls},
    {"mark widow control", markWidowControl},
    {"write base RTF", writeBaseRTF},
    {"supply page setup", supplyPageSetup},
    {"repair old lists", repairOldLists},
    {"fix font table and stylesheet", fixFontTableAndStylesheet},
    {"write widow control", writeWidowControl},
    {"write pictures", writePictures},
    {"write comments and annotations", writeComments},
    {"write footnote controls", writeFootnoteControls},
    {"write footnotes", writeFootnotes},
    {"write bookmarks and page references", writeBookmarksAndPageReferences},
    {"write headers, footers, sections and columns", writeHeadersFootersSectionsAndColumns},
    {"write keep-with-next", writeKeepWithNext},
    {"link to bookmarks", linkInternalHyperlinks},
    {"write line separators", writeLineSeparators},
};

const QString WidowOrphanMarker = QStringLiteral("<<**XQ_WIDOW_ORPHAN_TAG**>>");
const QString WidowControl = QStringLiteral("\\widowctrl ");

const QString FontTableStart = QStringLiteral("{\\fonttbl");
const QString DefaultDoubleByteFont = QStringLiteral("\\stshfdbch0");
const QString StylesheetStart = QStringLiteral("{\\stylesheet");
const QString ColorTableStart = QStringLiteral("{\\colortbl");
const QString StylesheetTemplate = QStringLiteral("\n{\\stylesheet {\\s0 Normal;}%1%2}");
const QString FootnoteStyleEntry = QStringLiteral("{\\s99 Footnote;}");
const QString EndnoteStyleEntry = QStringLiteral("{\\s100 Endnote;}");

// Each page control the plain writer may leave out, and what it defaults to.
const std::pair<QString, QString> PageSetupControls[] = {
    {QStringLiteral("\\paperw"), QStringLiteral("\\paperw12240")},
    {QStringLiteral("\\paperh"), QStringLiteral("\\paperh15840")},
    {QStringLiteral("\\margl"), QStringLiteral("\\margl1800")},
    {QStringLiteral("\\margr"), QStringLiteral("\\margr1800")},
    {QStringLiteral("\\margt"), QStringLiteral("\\margt1440")},
    {QStringLiteral("\\margb"), QStringLiteral("\\margb1440")},
};
const QString ViewKindControl = QStringLiteral("\\viewkind");
const QString ParagraphDefaults = QStringLiteral("\\pard");

const QString LineSeparatorWithSkip = QStringLiteral("\\uc0\\u8232");
const QString LineSeparator = QStringLiteral("\\u8232");
const QString LineBreak = QStringLiteral("\\line");

QByteArray asciiBytes(const QString& rtf)
{
    QByteArray bytes;
    bytes.resize(rtf.size());
    char* out = bytes.data();
    for (const QChar c : rtf)
        *out++ = c.unicode() < 0x80 ? char(c.unicode()) : '?';
    return bytes;
}

} // namespace

void prepareText(Context& c)
{
    c.text = attributedStringByRemovingTextBlocksFromNotes(c.text);
    c.text = attributedStringByConvertingTaggedFootnotesToStandardFootnotes(c.text);
    c.text = attributedStringByConvertingLinkedImagesToRegularAttachments(c.text);
    c.columnsMarkerInText = c.text.string().contains(XQRTFColumnsMarker);
}

void readOptions(Context& c)
{
    Options& o = c.options;
    const QVariantMap& r = c.optionsDictionary;
    o.msWord = boolForRTFOption(r, XQRTFUseMSWordOptions);
    o.cocoaListIndents = boolForRTFOption(r, XQRTFUseCocoaStyleListIndents);
    o.ensureLinkColors = boolForRTFOption(r, XQRTFEnsureHyperlinksHaveColorAndUnderline);
    o.indentFootnotes = boolForRTFOption(r, XQRTFIndentFootnotesToMatchText);
    o.headers = HeaderFooterSettings::fromOptions(r);
    o.sectionTitles = o.headers.usesSectionTitles();
    o.footnoteStyle = intForRTFOption(r, XQRTFFootnoteStyle);
    o.endnoteStyle = intForRTFOption(r, XQRTFEndnoteStyle);
    o.restartEachPage = boolForRTFOption(r, XQRTFRestartFootnoteNumberingEachPage);
    o.periodStyle = boolForRTFOption(r, XQRTFFootnotesUsePeriodMarkerStyle);
    o.widowControl = boolForRTFOption(r, XQRTFAvoidWidowsAndOrphans);
    const UserDefaults& defaults = UserDefaults::standard();
    if (defaults.contains(XQRTFConvertPDFToPNGResolution) || defaults.value(XQRTFConvertPDFToPNGResolution).isValid())
        o.pdfResolution = int(defaults.integerForKey(XQRTFConvertPDFToPNGResolution));
    if (o.pdfResolution <= 0)
        o.pdfResolution = DefaultPDFToPNGResolution;
    if (o.headers.columns >= 2)
        o.columnsControl = QStringLiteral("\\cols%1\\colsx%2 ").arg(o.headers.columns).arg(o.headers.columnSpacing);
    o.asEndnote[XQInlineFootnoteKind] = boolForRTFOption(r, XQRTFInlineFootnotesAsEndnotes);
    o.asEndnote[XQLinkedFootnoteMadeInlineKind] = boolForRTFOption(r, XQRTFLinkedFootnotesAsEndnotes);
    o.asEndnote[XQLinkedCommentAsFootnoteKind] = boolForRTFOption(r, XQRTFLinkedCommentsFootnotesAsEndnotes);
    // Read from the text as the caller gave it: fixing list indents changes paragraph styles.
    c.footnoteIndent = mostUsedParagraphStyle(c.text).firstLineHeadIndent();
    c.alignment = mostCommonTextAlignment(c.text);
}

void fixListsAndLinks(Context& c)
{
    const Options& o = c.options;
    if (o.msWord || !o.cocoaListIndents)
        fixUpListIndents(c.text);
    if (o.msWord || o.ensureLinkColors)
        c.coloredLinks = addColorAndUnderlineToAllHyperlinks(c.text);
}

void markWidowControl(Context& c)
{
    if (c.options.widowControl)
        insertLeadingMarker(c.text, WidowOrphanMarker + QLatin1Char('\n'));
}

void writeBaseRTF(Context& c)
{
    c.rtf = QString::fromLatin1(RTFFromRange(c.text, Range{0, c.text.length()}, c.documentAttributes));
}

void supplyPageSetup(Context& c)
{
    QString missing;
    qsizetype insertAt = -1;
    for (const auto& [control, fallback] : PageSetupControls) {
        const Range found = rangeOfUnescapedString(c.rtf, control);
        if (found.isNotFound()) {
            missing.append(fallback);
        } else {
            qsizetype end = found.end();
            while (end < c.rtf.size() && (c.rtf.at(end).isDigit() || c.rtf.at(end) == QLatin1Char('-')))
                ++end;
            insertAt = std::max(insertAt, end);
        }
    }
    if (missing.isEmpty())
        return;
    if (insertAt < 0) {
        Range r = rangeOfUnescapedString(c.rtf, ViewKindControl);
        if (r.isNotFound())
            r = rangeOfUnescapedString(c.rtf, ParagraphDefaults);
        if (r.isNotFound())
            return;
        insertAt = r.location;
    }
    c.rtf.insert(insertAt, missing);
}

void repairOldLists(Context& c) { fixUpRTFLists(c.rtf); }

void fixFontTableAndStylesheet(Context& c)
{
    const Range fontTable = rangeOfString(c.rtf, FontTableStart, CaseInsensitiveSearch);
    if (!fontTable.isNotFound())
        c.rtf.insert(fontTable.location, DefaultDoubleByteFont);
    QString footnoteEntries;
    if (c.hasFootnotes) {
        bool asFootnote = false, asEndnote = false;
        for (const int kind : c.footnoteKinds)
            (c.options.asEndnote[kind] ? asEndnote : asFootnote) = true;
        if (asFootnote)
            footnoteEntries.append(FootnoteStyleEntry);
        if (asEndnote)
            footnoteEntries.append(EndnoteStyleEntry);
    }
    const QString linkStyles =
        stylesheetCharacterStylesByInsertingCharacterStylesForColoredHyperlinks(c.rtf, c.coloredLinks);
    const QString stylesheet = StylesheetTemplate.arg(footnoteEntries, linkStyles);
    const Range existing = rangeOfString(c.rtf, StylesheetStart);
    if (!existing.isNotFound()) {
        const Range group = expandedRangeToIncludeCurlyBracketsAroundRange(c.rtf, Range{existing.location + 1, 1});
        c.rtf.replace(group.location, group.length, stylesheet);
    } else {
        const Range colors = rangeOfString(c.rtf, ColorTableStart);
        if (!colors.isNotFound()) {
            const Range group = expandedRangeToIncludeCurlyBracketsAroundRange(c.rtf, Range{colors.location + 1, 1});
            c.rtf.insert(group.end(), stylesheet);
        }
    }
    changeRTFBackgroundColorsToRTFHighlightsForMSWord(c.rtf, c.options.msWord);
}

void writeWidowControl(Context& c) { replaceMarkerParagraph(c.rtf, WidowOrphanMarker, WidowControl); }

void linkInternalHyperlinks(Context& c) { updateInternalRTFHyperlinks(c.rtf); }

void writeLineSeparators(Context& c)
{
    c.rtf.replace(LineSeparatorWithSkip, LineBreak);
    c.rtf.replace(LineSeparator, LineBreak);
}

} // namespace extendedrtf

QByteArray extendedRTFFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes,
                                const QVariantMap& RTFAttributes)
{
    extendedrtf::Context context;
    context.text = text.attributedSubstring(intersectionRange(range, Range{0, text.length()}));
    context.documentAttributes = documentAttributes;
    context.optionsDictionary = RTFAttributes;
    for (const extendedrtf::Pass& pass : extendedrtf::Pipeline) {
        qCDebug(extendedrtf::passLog) << pass.name;
        pass.run(context);
    }
    return extendedrtf::asciiBytes(context.rtf);
}

} // namespace qly
