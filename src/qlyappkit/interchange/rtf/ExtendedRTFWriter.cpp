#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>

#include <QSet>
#include <QSizeF>
#include <algorithm>
#include <vector>

#include <qlyappkit/interchange/rtf/ExtendedRTFMarkers_p.h>
#include <qlyappkit/interchange/rtf/RTFAttributeEnclosing.h>
#include <qlyappkit/interchange/rtf/RTFExportRepairs.h>
#include <qlyappkit/interchange/rtf/RTFFootnoteStyles.h>
#include <qlyappkit/interchange/rtf/RTFHeadersFooters.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/interchange/rtf/RTFPictures.h>
#include <qlyappkit/interchange/rtf/RTFTextToolkit.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/services/UserDefaults.h>
#include <qlyappkit/platform/strings/EscapeParsing.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/attributes/AttributeQueries.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/fitting/XQPageFittingHelper.h>
#include <qlyappkit/text/notes/NoteConversions.h>
#include <qlyappkit/text/notes/TaggedFootnotes.h>

namespace qly {

namespace m = rtfmarkers;

namespace {

constexpr double DefaultPaperWidth = 612, DefaultPaperHeight = 792;
constexpr double DefaultSideMargin = 90, DefaultTopBottomMargin = 72;
constexpr qsizetype SinglePageSectionLimit = 3001;

struct Section {
    QString title;
    SectionFlags flags;
};

// One edit of a single-scan rewrite: at pos, delete length characters and insert text.
struct Edit {
    qsizetype pos = 0;
    qsizetype length = 0;
    QString text;
};

// Applies edits (in order of position; equal positions keep their order) in one pass.
QString applyEdits(const QString& s, std::vector<Edit>& edits)
{
    if (edits.empty())
        return s;
    std::stable_sort(edits.begin(), edits.end(), [](const Edit& a, const Edit& b) { return a.pos < b.pos; });
    QString out;
    out.reserve(s.size() + qsizetype(edits.size()) * 16);
    qsizetype copied = 0;
    for (const Edit& e : edits) {
        if (e.pos < copied)
            continue; // overlaps an earlier deletion
        out.append(QStringView(s).mid(copied, e.pos - copied));
        out.append(e.text);
        copied = e.pos + e.length;
    }
    out.append(QStringView(s).mid(std::min(copied, s.size())));
    return out;
}

// Replaces every occurrence of needle (and, when present, the backslash right after it) in one scan,
// asking replacement for each text in turn.
template <typename Fn> void replaceMarker(QString& rtf, const QString& needle, bool withBackslash, Fn replacement)
{
    std::vector<Edit> edits;
    for (qsizetype at = rtf.indexOf(needle); at >= 0; at = rtf.indexOf(needle, at + needle.size())) {
        qsizetype length = needle.size();
        if (withBackslash && at + length < rtf.size() && rtf.at(at + length) == QLatin1Char('\\'))
            ++length;
        edits.push_back({at, length, replacement()});
    }
    rtf = applyEdits(rtf, edits);
}

Attributes attributesForInsertion(const AttributedString& text, qsizetype index)
{
    if (text.isEmpty())
        return {};
    return attributesWithoutAttachmentsAtIndex(text, std::clamp<qsizetype>(index, 0, text.length() - 1));
}

// The footnote kind a value stands for (a boolean yes is an ordinary inline footnote).
int footnoteKind(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return XQInlineFootnoteKind;
    const int kind = value.typeId() == QMetaType::QString ? stringIntValue(value.toString()) : value.toInt();
    return kind >= 1 && kind <= 3 ? kind : XQInlineFootnoteKind;
}

struct Options {
    QVariantMap raw;
    bool msWord = false, cocoaListIndents = false, ensureLinkColors = false;
    bool restartEachPage = false, periodStyle = false, widowControl = false, indentFootnotes = false;
    int footnoteStyle = 0, endnoteStyle = 0, pdfResolution = DefaultPDFToPNGResolution;
    bool asEndnote[4] = {false, false, false, false};
    HeaderFooterSettings headers;
    bool sectionTitles = false;
    QString columnsControl; // without the "\sect\sbknone" prefix
};

class Writer {
public:
    Writer(const AttributedString& text, Range range, const QVariantMap& documentAttributes, const QVariantMap& options)
        : m_documentAttributes(documentAttributes)
    {
        range = intersectionRange(range, Range{0, text.length()});
        m_text = text.attributedSubstring(range);
        m_options.raw = options;
    }

    QByteArray run();

private:
    // attributed-text stages
    void prepareText();
    void readOptions();
    void listsAndLinks();
    void markSections();
    void markBookmarksAndPageReferences();
    void markKeepWithNext();
    void insertLeadingMarker(const QString& marker);
    void markPictures();
    void encloseNotes();
    // RTF stages
    void supplyPageSetup();
    void fixFontTableAndStylesheet();
    void writePictures();
    void writeComments();
    QString footnoteControls(bool section) const;
    void writeFootnotes();
    void writeBookmarks();
    void writeHeadersFootersAndSections();
    void writeKeepWithNext();
    QByteArray asciiBytes() const;

    double documentValue(const QString& key, double fallback) const
    {
        const QVariant v = m_documentAttributes.value(key);
        return v.isValid() ? v.toDouble() : fallback;
    }

    AttributedString m_text;
    QVariantMap m_documentAttributes;
    Options m_options;
    QStringList m_links;
    std::vector<Section> m_sections;
    std::vector<RTFImageRecord> m_images;
    bool m_hasFootnotes = false, m_columnsMarkerInText = false;
    QSet<int> m_footnoteKinds;
    int m_footnoteMarkSize = 24;
    double m_footnoteIndent = 0;
    TextAlignment m_alignment = NaturalTextAlignment;
    QString m_rtf;
};

QByteArray Writer::run()
{
    prepareText(); // 1
    readOptions(); // 2, 4, 5
    listsAndLinks(); // 3
    if (m_options.sectionTitles)
        markSections(); // 6
    markBookmarksAndPageReferences(); // 7
    markKeepWithNext(); // 8
    if (!m_options.columnsControl.isEmpty() && !m_columnsMarkerInText) // 9
        insertLeadingMarker(XQRTFColumnsMarker);
    if (m_options.headers.hasAnyText())
        insertLeadingMarker(m::HeaderFooterMarker + QLatin1Char('\n'));
    markPictures(); // 10
    encloseNotes(); // 11
    m_rtf = QString::fromLatin1(RTFFromRange(m_text, Range{0, m_text.length()}, m_documentAttributes)); // 12
    supplyPageSetup(); // 13
    fixUpRTFLists(m_rtf); // 14 (acts only for old toolkits)
    fixFontTableAndStylesheet(); // 15
    replaceMarker(m_rtf, m::WidowOrphanMarker, true, [] { return QStringLiteral("\\widowctrl "); }); // 16
    writePictures(); // 17
    writeComments(); // 18
    const QString controls = footnoteControls(false);
    replaceMarker(m_rtf, m::FootnoteControlsMarker, true, [&] { return controls; }); // 19
    writeFootnotes(); // 20
    writeBookmarks(); // 21
    writeHeadersFootersAndSections(); // 22
    writeKeepWithNext(); // 23
    updateInternalRTFHyperlinks(m_rtf); // 24
    m_rtf.replace(QLatin1String("\\uc0\\u8232"), QLatin1String("\\line")); // 25
    m_rtf.replace(QLatin1String("\\u8232"), QLatin1String("\\line"));
    return asciiBytes(); // 26
}

void Writer::prepareText()
{
    m_text = attributedStringByRemovingTextBlocksFromNotes(m_text);
    m_text = attributedStringByConvertingTaggedFootnotesToStandardFootnotes(m_text);
    m_text = attributedStringByConvertingLinkedImagesToRegularAttachments(m_text);
}

void Writer::readOptions()
{
    Options& o = m_options;
    const QVariantMap& r = o.raw;
    o.msWord = boolForRTFOption(r, XQRTFUseMSWordOptions);
    o.cocoaListIndents = boolForRTFOption(r, XQRTFUseCocoaStyleListIndents);
    o.ensureLinkColors = boolForRTFOption(r, XQRTFEnsureHyperlinksHaveColorAndUnderline);
    o.indentFootnotes = boolForRTFOption(r, XQRTFIndentFootnotesToMatchText);
    m_footnoteIndent = mostUsedParagraphStyle(m_text).firstLineHeadIndent();
    o.headers = HeaderFooterSettings::fromOptions(r);
    o.sectionTitles = o.headers.usesSectionTitles();
    o.footnoteStyle = intForRTFOption(r, XQRTFFootnoteStyle);
    o.endnoteStyle = intForRTFOption(r, XQRTFEndnoteStyle);
    m_alignment = mostCommonTextAlignment(m_text);
    o.restartEachPage = boolForRTFOption(r, XQRTFRestartFootnoteNumberingEachPage);
    o.periodStyle = boolForRTFOption(r, XQRTFFootnotesUsePeriodMarkerStyle);
    o.widowControl = boolForRTFOption(r, XQRTFAvoidWidowsAndOrphans);
    const UserDefaults& defaults = UserDefaults::standard();
    if (defaults.contains(XQRTFConvertPDFToPNGResolution) || defaults.value(XQRTFConvertPDFToPNGResolution).isValid())
        o.pdfResolution = int(defaults.integerForKey(XQRTFConvertPDFToPNGResolution));
    if (o.pdfResolution <= 0)
        o.pdfResolution = DefaultPDFToPNGResolution;
    // Columns (step 4) and the endnote flags of the three footnote kinds (step 5).
    if (o.headers.columns >= 2)
        o.columnsControl = QStringLiteral("\\cols%1\\colsx%2 ").arg(o.headers.columns).arg(o.headers.columnSpacing);
    o.asEndnote[XQInlineFootnoteKind] = boolForRTFOption(r, XQRTFInlineFootnotesAsEndnotes);
    o.asEndnote[XQLinkedFootnoteMadeInlineKind] = boolForRTFOption(r, XQRTFLinkedFootnotesAsEndnotes);
    o.asEndnote[XQLinkedCommentAsFootnoteKind] = boolForRTFOption(r, XQRTFLinkedCommentsFootnotesAsEndnotes);
}

void Writer::listsAndLinks()
{
    const Options& o = m_options;
    if (o.msWord || !o.cocoaListIndents)
        fixUpListIndents(m_text);
    if (o.msWord || o.ensureLinkColors)
        m_links = addColorAndUnderlineToAllHyperlinks(m_text);
    m_columnsMarkerInText = m_text.string().contains(XQRTFColumnsMarker);
}

void Writer::markSections()
{
    struct Found {
        Range run;
        QVariantMap info;
    };
    std::vector<Found> found;
    m_text.enumerateAttribute(XQRTFSectionInfoAttributeName, Range{0, m_text.length()},
                              [&](const QVariant& v, Range r) {
                                  if (v.metaType() == QMetaType::fromType<QVariantMap>())
                                      found.push_back({r, v.toMap()});
                                  return true;
                              });
    const QSizeF paper = m_documentAttributes.contains(PaperSizeDocumentAttribute)
        ? m_documentAttributes.value(PaperSizeDocumentAttribute).toSizeF()
        : QSizeF(DefaultPaperWidth, DefaultPaperHeight);
    const bool singleOption = m_options.headers.noHeaderOrFooterOnSinglePages;
    std::vector<std::pair<qsizetype, QString>> inserts;
    for (const Found& f : found) {
        Section section;
        section.title = f.info.value(XQRTFSectionTitle).toString();
        if (!f.info.contains(XQRTFSectionTitle))
            section.title = localized("Untitled Section");
        qsizetype at = f.run.location;
        if (at > 0 && m_text.characterAt(at - 1) == QChar(0x0C)) {
            section.flags.startsNewPage = true;
            --at;
        }
        const QVariant front = f.info.value(XQRTFSectionIsPartOfFrontMatter);
        section.flags.frontMatter =
            front.typeId() == QMetaType::QString ? stringBoolValue(front.toString()) : front.toBool();
        section.flags.singlePage = singleOption && f.run.length < SinglePageSectionLimit
            && fitsOnOnePageWithPageSize(m_text.attributedSubstring(f.run), paper,
                                         documentValue(LeftMarginDocumentAttribute, DefaultSideMargin),
                                         documentValue(RightMarginDocumentAttribute, DefaultSideMargin),
                                         documentValue(TopMarginDocumentAttribute, DefaultTopBottomMargin),
                                         documentValue(BottomMarginDocumentAttribute, DefaultTopBottomMargin));
        const QString marker = m::SectionTitleStart + (section.flags.startsNewPage ? m::SectionPageFlag : QString())
            + (section.flags.frontMatter ? m::SectionFrontFlag : QString())
            + (section.flags.singlePage ? m::SectionSingleFlag : QString()) + section.title + m::SectionTitleEnd;
        inserts.push_back({at, marker});
        m_sections.push_back(section);
    }
    for (auto it = inserts.rbegin(); it != inserts.rend(); ++it)
        m_text.insert(AttributedString(it->second, attributesForInsertion(m_text, it->first)), it->first);
    m_text.removeAttribute(XQRTFSectionInfoAttributeName, Range{0, m_text.length()});
}

void Writer::markBookmarksAndPageReferences()
{
    auto runsOf = [this](const QString& name) {
        std::vector<std::pair<Range, QString>> runs;
        m_text.enumerateAttribute(name, Range{0, m_text.length()}, [&](const QVariant& v, Range r) {
            if (v.isValid() && !v.toString().isEmpty())
                runs.push_back({r, v.toString()});
            return true;
        });
        return runs;
    };
    const auto bookmarks = runsOf(XQRTFBookmarkAttributeName);
    for (auto it = bookmarks.rbegin(); it != bookmarks.rend(); ++it) {
        const Attributes attributes = attributesForInsertion(m_text, it->first.location);
        m_text.insert(AttributedString(m::BookmarkEndOpen + it->second + m::BookmarkEndClose, attributes),
                      it->first.end());
        m_text.insert(AttributedString(m::BookmarkStartOpen + it->second + m::BookmarkStartClose, attributes),
                      it->first.location);
    }
    m_text.removeAttribute(XQRTFBookmarkAttributeName, Range{0, m_text.length()});
    const auto references = runsOf(XQRTFPageRefFieldAttributeName);
    for (auto it = references.rbegin(); it != references.rend(); ++it) {
        const Attributes attributes = attributesForInsertion(m_text, it->first.location);
        m_text.insert(AttributedString(m::PageRefEnd, attributes), it->first.end());
        m_text.insert(AttributedString(m::PageRefStartOpen + it->second + m::PageRefStartClose, attributes),
                      it->first.location);
    }
    m_text.removeAttribute(XQRTFPageRefFieldAttributeName, Range{0, m_text.length()});
}

void Writer::markKeepWithNext()
{
    std::vector<Range> paragraphs;
    const QString s = m_text.string();
    qsizetype start = 0;
    while (start < s.size()) {
        const Range paragraph = m_text.paragraphRange(Range{start, 0});
        const qsizetype end = std::max(paragraph.end(), start + 1);
        const QVariant keep = m_text.attribute(XQKeepWithNextAttributeName, start);
        const QChar last = s.at(end - 1);
        const bool terminated = last == QLatin1Char('\n') || last == QLatin1Char('\r') || last == QChar(0x2029);
        if (terminated && keep.isValid()
            && (keep.typeId() == QMetaType::QString ? stringBoolValue(keep.toString()) : keep.toBool())) {
            const QVariant styleValue = m_text.attribute(ParagraphStyleAttributeName, start);
            const ParagraphStyle style = styleValue.metaType() == QMetaType::fromType<ParagraphStyle>()
                ? styleValue.value<ParagraphStyle>()
                : ParagraphStyle::defaultParagraphStyle();
            if (style.textLists().isEmpty() && style.textBlocks().isEmpty())
                paragraphs.push_back(Range::fromBounds(start, end));
        }
        start = end;
    }
    for (auto it = paragraphs.rbegin(); it != paragraphs.rend(); ++it) {
        m_text.insert(
            AttributedString(m::KeepWithNextEnds + QLatin1Char('\n'), attributesForInsertion(m_text, it->end() - 1)),
            it->end());
        Attributes first = m_text.attributes(it->location);
        first.remove(AttachmentAttributeName);
        m_text.insert(AttributedString(m::KeepWithNextStart, first), it->location);
    }
}

void Writer::insertLeadingMarker(const QString& marker)
{
    Attributes attributes = attributesForInsertion(m_text, 0);
    const QVariant font = attributes.value(FontAttributeName);
    if (font.metaType() != QMetaType::fromType<Font>())
        attributes.insert(FontAttributeName, QVariant::fromValue(Font::userFont()));
    m_text.insert(AttributedString(marker, attributes), 0);
}

void Writer::markPictures()
{
    std::vector<std::pair<qsizetype, TextAttachment>> attachments;
    m_text.enumerateAttribute(AttachmentAttributeName, Range{0, m_text.length()}, [&](const QVariant& v, Range r) {
        if (v.metaType() != QMetaType::fromType<TextAttachment>())
            return true;
        for (qsizetype i = r.location; i < r.end(); ++i) {
            if (m_text.characterAt(i) == QChar(AttachmentCharacter))
                attachments.push_back({i, v.value<TextAttachment>()});
        }
        return true;
    });
    std::vector<std::pair<qsizetype, QString>> replacements;
    for (const auto& [at, attachment] : attachments) {
        std::optional<RTFImageRecord> record = RTFImageRecordForAttachment(attachment, m_options.pdfResolution);
        if (!record)
            continue;
        m_images.push_back(*record);
        replacements.push_back({at, m::ImageMarkerStart + QString::number(m_images.size()) + m::ImageMarkerEnd});
    }
    for (auto it = replacements.rbegin(); it != replacements.rend(); ++it) {
        const Attributes attributes = attributesForInsertion(m_text, it->first);
        m_text.replaceCharacters(Range{it->first, 1}, AttributedString(it->second, attributes));
    }
}

void Writer::encloseNotes()
{
    // Footnote values become their kind, so that the tag names carry 1, 2 or 3.
    std::vector<std::pair<Range, int>> footnotes;
    m_text.enumerateAttribute(XQFootnoteAttributeName, Range{0, m_text.length()}, [&](const QVariant& v, Range r) {
        if (v.isValid())
            footnotes.push_back({r, footnoteKind(v)});
        return true;
    });
    for (const auto& [range, kind] : footnotes) {
        m_text.addAttribute(XQFootnoteAttributeName, kind, range);
        m_footnoteKinds.insert(kind);
    }
    if (!footnotes.empty()) {
        const QVariant font = m_text.attribute(FontAttributeName, footnotes.front().first.location);
        const double size = font.metaType() == QMetaType::fromType<Font>() ? font.value<Font>().pointSize() : 12.0;
        m_footnoteMarkSize = int(size * 2);
    }
    encloseAttribute(m_text, XQCommentAttributeName, m::CommentLinkStartTag, m::CommentLinkEndTag, true);
    encloseAttribute(m_text, XQLinkedCommentAttributeName, m::CommentTextStartTag, m::CommentTextEndTag, true);
    encloseAttribute(m_text, XQAnnotationAttributeName, m::AnnotationStartTag, m::AnnotationEndTag, true);
    m_hasFootnotes =
        encloseAttribute(m_text, XQFootnoteAttributeName, m::FootnoteStartTag, m::FootnoteEndTag, true, true);
    if (m_hasFootnotes)
        insertLeadingMarker(m::FootnoteControlsMarker + QLatin1Char('\n'));
    if (m_options.widowControl)
        insertLeadingMarker(m::WidowOrphanMarker + QLatin1Char('\n'));
}

void Writer::supplyPageSetup()
{
    static const std::pair<const char*, const char*> controls[] = {
        {"\\paperw", "\\paperw12240"}, {"\\paperh", "\\paperh15840"}, {"\\margl", "\\margl1800"},
        {"\\margr", "\\margr1800"},    {"\\margt", "\\margt1440"},    {"\\margb", "\\margb1440"}};
    QString missing;
    qsizetype insertAt = -1;
    for (const auto& [word, fallback] : controls) {
        const Range found = rangeOfUnescapedString(m_rtf, QLatin1String(word));
        if (found.isNotFound()) {
            missing.append(QLatin1String(fallback));
        } else {
            qsizetype end = found.end();
            while (end < m_rtf.size() && (m_rtf.at(end).isDigit() || m_rtf.at(end) == QLatin1Char('-')))
                ++end;
            insertAt = std::max(insertAt, end);
        }
    }
    if (missing.isEmpty())
        return;
    if (insertAt < 0) {
        Range r = rangeOfUnescapedString(m_rtf, QStringLiteral("\\viewkind"));
        if (r.isNotFound())
            r = rangeOfUnescapedString(m_rtf, QStringLiteral("\\pard"));
        if (r.isNotFound())
            return;
        insertAt = r.location;
    }
    m_rtf.insert(insertAt, missing);
}

void Writer::fixFontTableAndStylesheet()
{
    const Range fontTable = rangeOfString(m_rtf, QStringLiteral("{\\fonttbl"), CaseInsensitiveSearch);
    if (!fontTable.isNotFound())
        m_rtf.insert(fontTable.location, QStringLiteral("\\stshfdbch0"));
    QString footnoteEntries;
    if (m_hasFootnotes) {
        bool asFootnote = false, asEndnote = false;
        for (const int kind : m_footnoteKinds)
            (m_options.asEndnote[kind] ? asEndnote : asFootnote) = true;
        if (asFootnote)
            footnoteEntries.append(QStringLiteral("{\\s99 Footnote;}"));
        if (asEndnote)
            footnoteEntries.append(QStringLiteral("{\\s100 Endnote;}"));
    }
    const QString linkStyles = stylesheetCharacterStylesByInsertingCharacterStylesForColoredHyperlinks(m_rtf, m_links);
    const QString stylesheet = QStringLiteral("\n{\\stylesheet {\\s0 Normal;}%1%2}").arg(footnoteEntries, linkStyles);
    const Range existing = rangeOfString(m_rtf, QStringLiteral("{\\stylesheet"));
    if (!existing.isNotFound()) {
        const Range group = expandedRangeToIncludeCurlyBracketsAroundRange(m_rtf, Range{existing.location + 1, 1});
        m_rtf.replace(group.location, group.length, stylesheet);
    } else {
        const Range colors = rangeOfString(m_rtf, QStringLiteral("{\\colortbl"));
        if (!colors.isNotFound()) {
            const Range group = expandedRangeToIncludeCurlyBracketsAroundRange(m_rtf, Range{colors.location + 1, 1});
            m_rtf.insert(group.end(), stylesheet);
        }
    }
    changeRTFBackgroundColorsToRTFHighlightsForMSWord(m_rtf, m_options.msWord);
}

void Writer::writePictures()
{
    const bool names = UserDefaults::standard().boolForKey(XQRTFExportNisusImageFilenames);
    std::vector<Edit> edits;
    for (qsizetype at = m_rtf.indexOf(m::ImageMarkerStart); at >= 0; at = m_rtf.indexOf(m::ImageMarkerStart, at + 1)) {
        const qsizetype numberStart = at + m::ImageMarkerStart.size();
        const qsizetype close = m_rtf.indexOf(m::ImageMarkerEnd, numberStart);
        if (close < 0)
            break;
        bool ok = false;
        const int number = QStringView(m_rtf).mid(numberStart, close - numberStart).toInt(&ok);
        if (!ok || number < 1 || number > int(m_images.size()))
            continue;
        edits.push_back(
            {at, close + m::ImageMarkerEnd.size() - at, RTFPictureGroup(m_images[size_t(number - 1)], names)});
    }
    m_rtf = applyEdits(m_rtf, edits);
}

void Writer::writeComments()
{
    replacePlaceholderTagsWithRTF(m_rtf, m::CommentLinkStartTag, m::CommentLinkEndTag,
                                  QStringLiteral("{\\*\\atrfstart %1}").arg(m::AtrfStartNumber),
                                  QStringLiteral("{\\*\\atrfend %1}").arg(m::AtrfEndNumber));
    const QString author = m_documentAttributes.value(AuthorDocumentAttribute).toString();
    const QString prefix =
        author.isEmpty() ? QString() : QStringLiteral("{\\*\\atnid %1}{\\*\\atnauthor %1}").arg(RTFEscapedText(author));
    replacePlaceholderTagsWithRTF(
        m_rtf, m::CommentTextStartTag, m::CommentTextEndTag,
        QStringLiteral("{%1\\chatn{\\*\\annotation{\\*\\atnref %2}\\pard\\plain").arg(prefix, m::AtnRefNumber),
        QStringLiteral("}}"));
    // The n-th range start, range end and annotation reference all get n.
    std::vector<Edit> edits;
    int starts = 0, ends = 0, refs = 0;
    const QString common = QStringLiteral("<<**JVT_at");
    for (qsizetype at = m_rtf.indexOf(common); at >= 0; at = m_rtf.indexOf(common, at + 1)) {
        const QStringView rest = QStringView(m_rtf).mid(at);
        if (rest.startsWith(m::AtrfStartNumber))
            edits.push_back({at, m::AtrfStartNumber.size(), QString::number(++starts)});
        else if (rest.startsWith(m::AtrfEndNumber))
            edits.push_back({at, m::AtrfEndNumber.size(), QString::number(++ends)});
        else if (rest.startsWith(m::AtnRefNumber))
            edits.push_back({at, m::AtnRefNumber.size(), QString::number(++refs)});
    }
    m_rtf = applyEdits(m_rtf, edits);
    replacePlaceholderTagsWithRTF(m_rtf, m::AnnotationStartTag, m::AnnotationEndTag,
                                  QStringLiteral("{%1\\chatn{\\*\\annotation\\pard\\plain").arg(prefix),
                                  QStringLiteral("}}"));
}

QString Writer::footnoteControls(bool section) const
{
    auto withBlank = [](const QString& s) { return s.isEmpty() ? s : s + QLatin1Char(' '); };
    const QString footnote =
        withBlank(RTFFootnoteStyleControlForFootnoteStyle(m_options.footnoteStyle, false, section));
    const QString endnote = withBlank(RTFFootnoteStyleControlForFootnoteStyle(m_options.endnoteStyle, true, section));
    if (section)
        return (m_options.restartEachPage ? QStringLiteral("\\sftnrestart\\sftnrstpg ") : QString()) + footnote
            + endnote;
    return QStringLiteral("\\fet2 \\ftnbj ")
        + (m_options.restartEachPage ? QStringLiteral("\\ftnrestart\\ftnrstpg ") : QString()) + footnote + endnote
        + QStringLiteral("\n\\sectd ") + footnoteControls(true);
}

void Writer::writeFootnotes()
{
    const QString indent = m_options.indentFootnotes && m_footnoteIndent > 0
        ? QStringLiteral("\\fi%1").arg(int(m_footnoteIndent * 20))
        : QString();
    QString alignment;
    if (m_alignment == RightTextAlignment)
        alignment = QStringLiteral("\\qr ");
    else if (m_alignment == CenterTextAlignment)
        alignment = QStringLiteral("\\qc ");
    else if (m_alignment == JustifiedTextAlignment)
        alignment = QStringLiteral("\\qj ");
    for (int kind = 1; kind <= 3; ++kind) {
        const bool endnote = m_options.asEndnote[kind];
        const QString opening = endnote ? QStringLiteral("{\\super\\chftn{\\*\\footnote\\ftnalt\\pard\\plain")
                                        : QStringLiteral("{\\super\\chftn{\\*\\footnote\\pard\\plain");
        const QString mark = m_options.periodStyle ? QStringLiteral("{\\fs%1\\up0\\nosupersub\\chftn .} ")
                                                   : QStringLiteral("{\\fs%1\\up0\\super\\chftn} ");
        const QString start = opening + indent + mark.arg(m_footnoteMarkSize) + alignment;
        QString startName = m::FootnoteStartTag, endName = m::FootnoteEndTag;
        startName.replace(QLatin1String("%@"), QString::number(kind));
        endName.replace(QLatin1String("%@"), QString::number(kind));
        replacePlaceholderTagsWithRTF(m_rtf, startName, endName, start, QStringLiteral("}\\nosupersub}"));
    }
}

void Writer::writeBookmarks()
{
    static const std::pair<const QString*, const char*> replacements[] = {
        {&m::BookmarkStartOpen, "{\\*\\bkmkstart "},
        {&m::BookmarkStartClose, "}"},
        {&m::BookmarkEndOpen, "{\\*\\bkmkend "},
        {&m::BookmarkEndClose, "}"},
        {&m::PageRefStartOpen, "{\\field {\\*\\fldinst {PAGEREF "},
        {&m::PageRefStartClose, " \\\\h}}{\\fldrslt "},
        {&m::PageRefEnd, "}}"}};
    for (const auto& [marker, rtf] : replacements) {
        if (m_rtf.contains(*marker))
            m_rtf.replace(*marker, QLatin1String(rtf));
    }
}

void Writer::writeHeadersFootersAndSections()
{
    const HeaderFooterSettings& settings = m_options.headers;
    HeaderFooterWriter headers(settings, m_rtf, twipsToRightMarginWithDocumentAttributes(m_documentAttributes));
    if (m_options.sectionTitles) {
        replaceMarker(m_rtf, m::HeaderFooterMarker, true, [] { return QString(); });
        const QString sectionFootnotes = m_hasFootnotes ? footnoteControls(true) : QString();
        std::vector<Edit> edits;
        size_t index = 0;
        for (qsizetype at = m_rtf.indexOf(m::SectionTitleStart); at >= 0;
             at = m_rtf.indexOf(m::SectionTitleStart, at + 1)) {
            const qsizetype close = m_rtf.indexOf(m::SectionTitleEnd, at + m::SectionTitleStart.size());
            if (close < 0 || index >= m_sections.size())
                break;
            const Section& section = m_sections[index++];
            edits.push_back({at, close + m::SectionTitleEnd.size() - at,
                             headers.nextSection(section.title, section.flags, sectionFootnotes)});
        }
        m_rtf = applyEdits(m_rtf, edits);
        replaceMarker(m_rtf, m::ColumnsMarkerText, true, [] { return QString(); });
    } else {
        if (settings.hasAnyText()) {
            const QString block = headers.documentBlock();
            replaceMarker(m_rtf, m::HeaderFooterMarker, true, [&] { return block; });
        }
        if (!m_options.columnsControl.isEmpty()) {
            const QString control =
                (m_columnsMarkerInText ? QStringLiteral("\\sect\\sbknone") : QString()) + m_options.columnsControl;
            replaceMarker(m_rtf, m::ColumnsMarkerText, true, [&] { return control; });
        }
    }
}

void Writer::writeKeepWithNext()
{
    std::vector<Edit> edits;
    qsizetype searchFrom = 0;
    for (qsizetype at = m_rtf.indexOf(m::KeepWithNextStart); at >= 0;
         at = m_rtf.indexOf(m::KeepWithNextStart, searchFrom)) {
        const Range paragraph = RTFParagraphRangeForRange(m_rtf, Range{at, m::KeepWithNextStart.size()});
        // The group opens at the line start; "\keepn" goes where the marker was, after any "\pard".
        edits.push_back({paragraph.location, 0, QStringLiteral("{")});
        edits.push_back({at, m::KeepWithNextStart.size(), QStringLiteral("\\keepn ")});
        edits.push_back({paragraph.end(), 0, QStringLiteral("}")});
        searchFrom = paragraph.end();
        const qsizetype ends = m_rtf.indexOf(m::KeepWithNextEnds, searchFrom);
        if (ends >= 0) {
            const Range line = RTFParagraphRangeForRange(m_rtf, Range{ends, m::KeepWithNextEnds.size()});
            const qsizetype from = std::max(line.location, paragraph.end());
            edits.push_back({from, line.end() - from, QString()});
            searchFrom = std::max(searchFrom, line.end());
        }
    }
    m_rtf = applyEdits(m_rtf, edits);
}

QByteArray Writer::asciiBytes() const
{
    QByteArray bytes;
    bytes.resize(m_rtf.size());
    char* out = bytes.data();
    for (const QChar c : m_rtf)
        *out++ = c.unicode() < 0x80 ? char(c.unicode()) : '?';
    return bytes;
}

} // namespace

QByteArray extendedRTFFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes,
                                const QVariantMap& RTFAttributes)
{
    return Writer(text, range, documentAttributes, RTFAttributes).run();
}

} // namespace qly
