// Sections, headers and footers, and page columns: the text is marked where each section starts, and
// at its start when there are headers, footers or columns; the markers become section breaks, the
// header/footer block and the column controls.
#include <QSizeF>

#include <qlyappkit/interchange/rtf/ExtendedRTFExport_p.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/strings/NumberParsing.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/fitting/XQPageFittingHelper.h>

namespace qly::extendedrtf {

namespace {

// A section marker: start, the flags that apply (in this order), the title, end.
const QString SectionTitleStart = QStringLiteral("<<**XQ_SECTION_TITLE::");
const QString SectionTitleEnd = QStringLiteral("::**>>");
const QString SectionPageFlag = QStringLiteral("<<$page>>::");
const QString SectionFrontFlag = QStringLiteral("<<$front>>::");
const QString SectionSingleFlag = QStringLiteral("<<$single>>::");
// The paragraph where the header/footer block goes when there are no sections.
const QString HeaderFooterMarker = QStringLiteral("<<**JVT_HEADERFOOTER_TAG**>>");
// Columns that start where the caller put the marker start a section of their own.
const QString ColumnsSectionBreak = QStringLiteral("\\sect\\sbknone");

constexpr double DefaultPaperWidth = 612, DefaultPaperHeight = 792;
constexpr double DefaultSideMargin = 90, DefaultTopBottomMargin = 72;
// Longer sections are never measured: they cannot be a single page.
constexpr qsizetype SinglePageSectionLimit = 3001;
const QChar PageBreak(0x000C);

// The columns marker as the plain writer writes it: its line feed becomes a backslash and a line
// feed, and the backslash goes with the marker.
QString columnsMarkerInRTF() { return XQRTFColumnsMarker.chopped(1); }

double documentValue(const Context& c, const QString& key, double fallback)
{
    const QVariant v = c.documentAttributes.value(key);
    return v.isValid() ? v.toDouble() : fallback;
}

} // namespace

void markSections(Context& c)
{
    if (!c.options.sectionTitles)
        return;
    struct Found {
        Range run;
        QVariantMap info;
    };
    std::vector<Found> found;
    c.text.enumerateAttribute(XQRTFSectionInfoAttributeName, Range{0, c.text.length()},
                              [&](const QVariant& v, Range r) {
                                  if (v.metaType() == QMetaType::fromType<QVariantMap>())
                                      found.push_back({r, v.toMap()});
                                  return true;
                              });
    const QSizeF paper = c.documentAttributes.contains(PaperSizeDocumentAttribute)
        ? c.documentAttributes.value(PaperSizeDocumentAttribute).toSizeF()
        : QSizeF(DefaultPaperWidth, DefaultPaperHeight);
    const bool singleOption = c.options.headers.noHeaderOrFooterOnSinglePages;
    struct Insert {
        qsizetype at;
        bool replacesPageBreak;
        QString marker;
    };
    std::vector<Insert> inserts;
    for (const Found& f : found) {
        Section section;
        section.title = f.info.value(XQRTFSectionTitle).toString();
        if (!f.info.contains(XQRTFSectionTitle))
            section.title = localized("Untitled Section");
        qsizetype at = f.run.location;
        if (at > 0 && c.text.characterAt(at - 1) == PageBreak) {
            section.flags.startsNewPage = true;
            --at;
        }
        const QVariant front = f.info.value(XQRTFSectionIsPartOfFrontMatter);
        section.flags.frontMatter =
            front.typeId() == QMetaType::QString ? stringBoolValue(front.toString()) : front.toBool();
        section.flags.singlePage = singleOption && f.run.length < SinglePageSectionLimit
            && fitsOnOnePageWithPageSize(c.text.attributedSubstring(f.run), paper,
                                         documentValue(c, LeftMarginDocumentAttribute, DefaultSideMargin),
                                         documentValue(c, RightMarginDocumentAttribute, DefaultSideMargin),
                                         documentValue(c, TopMarginDocumentAttribute, DefaultTopBottomMargin),
                                         documentValue(c, BottomMarginDocumentAttribute, DefaultTopBottomMargin));
        const QString marker = SectionTitleStart + (section.flags.startsNewPage ? SectionPageFlag : QString())
            + (section.flags.frontMatter ? SectionFrontFlag : QString())
            + (section.flags.singlePage ? SectionSingleFlag : QString()) + section.title + SectionTitleEnd;
        inserts.push_back({at, section.flags.startsNewPage, marker});
        c.sections.push_back(section);
    }
    // The section break takes the place of the page break before it: it starts a page of its own,
    // and a page break kept after it would leave a blank page (with the first-page header on it).
    for (auto it = inserts.rbegin(); it != inserts.rend(); ++it) {
        const AttributedString marker(it->marker, attributesForInsertion(c.text, it->at));
        c.text.replaceCharacters(Range{it->at, it->replacesPageBreak ? 1 : 0}, marker);
    }
    c.text.removeAttribute(XQRTFSectionInfoAttributeName, Range{0, c.text.length()});
}

void markColumnsAndHeaderFooter(Context& c)
{
    if (!c.options.columnsControl.isEmpty() && !c.columnsMarkerInText)
        insertLeadingMarker(c.text, XQRTFColumnsMarker);
    if (c.options.headers.hasAnyText())
        insertLeadingMarker(c.text, HeaderFooterMarker + QLatin1Char('\n'));
}

void writeHeadersFootersSectionsAndColumns(Context& c)
{
    const HeaderFooterSettings& settings = c.options.headers;
    HeaderFooterWriter headers(settings, c.rtf, twipsToRightMarginWithDocumentAttributes(c.documentAttributes));
    if (c.options.sectionTitles) {
        // Each section carries its own headers, footers and columns.
        replaceMarkerParagraph(c.rtf, HeaderFooterMarker, QString());
        const QString footnoteControls = c.hasFootnotes ? sectionFootnoteControls(c) : QString();
        std::vector<Edit> edits;
        size_t index = 0;
        for (qsizetype at = c.rtf.indexOf(SectionTitleStart); at >= 0; at = c.rtf.indexOf(SectionTitleStart, at + 1)) {
            const qsizetype close = c.rtf.indexOf(SectionTitleEnd, at + SectionTitleStart.size());
            if (close < 0 || index >= c.sections.size())
                break;
            const Section& section = c.sections[index++];
            edits.push_back({at, close + SectionTitleEnd.size() - at,
                             headers.nextSection(section.title, section.flags, footnoteControls)});
        }
        c.rtf = applyEdits(c.rtf, edits);
        replaceMarkerParagraph(c.rtf, columnsMarkerInRTF(), QString());
        return;
    }
    if (settings.hasAnyText())
        replaceMarkerParagraph(c.rtf, HeaderFooterMarker, headers.documentBlock());
    // A marker the caller put in goes even when no columns were asked for.
    const QString columns = c.options.columnsControl.isEmpty()
        ? QString()
        : (c.columnsMarkerInText ? ColumnsSectionBreak : QString()) + c.options.columnsControl;
    replaceMarkerParagraph(c.rtf, columnsMarkerInRTF(), columns);
}

} // namespace qly::extendedrtf
