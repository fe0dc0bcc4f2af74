// qly pages: a document printed as pages through the page layout view, to PDF (one PDF page per
// page, headers and footers substituted) or as a picture of one page or spread.
#include <qlyappkit/interchange/export/StoredText.h>
#include <qlyappkit/pagelayout/XQPageLayoutView.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/text/fitting/XQKeepWithNextTypesetter.h>
#include <qlyappkit/text/notes/InlineNotes.h>

#include <QBuffer>
#include <QFileInfo>
#include <cmath>
#include <vector>

#include "CommandLine.h"
#include "Commands.h"
#include "convert/ConvertFormats.h"

namespace qly::tool {

namespace {

const QString FromOption = QStringLiteral("from");
const QString ToOption = QStringLiteral("to");
const QString OutputOption = QStringLiteral("output");
const QString PaperOption = QStringLiteral("paper");
const QString MarginsOption = QStringLiteral("margins");
const QString FacingOption = QStringLiteral("facing");
const QString RightToLeftOption = QStringLiteral("rtl");
const QString HeaderOption = QStringLiteral("header");
const QString FooterOption = QStringLiteral("footer");
const QString FirstHeaderOption = QStringLiteral("first-page-header");
const QString FirstFooterOption = QStringLiteral("first-page-footer");
const QString NoCountFirstOption = QStringLiteral("no-count-first-pages");
const QString PageOption = QStringLiteral("page");
const QString ScaleOption = QStringLiteral("scale");
const QString PDFFormat = QStringLiteral("pdf");
const QString PNGFormat = QStringLiteral("png");

// US letter with one-inch margins, unless the document or the options say otherwise.
constexpr double DefaultPaperWidth = 612, DefaultPaperHeight = 792, DefaultMargin = 72;
constexpr double HeaderFontSize = 10;
// Paper sides and margins beyond this many points are refused (about 35 m).
constexpr double MaximumPageLength = 100000;

// A header or footer in the running-head face, aligned as given.
AttributedString headerText(const QString& text, TextAlignment alignment)
{
    if (text.isEmpty())
        return AttributedString();
    ParagraphStyle style = ParagraphStyle::defaultParagraphStyle();
    style.setAlignment(alignment);
    return AttributedString(
        text,
        Attributes{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Helvetica"), HeaderFontSize))},
                   {ParagraphStyleAttributeName, QVariant::fromValue(style)}});
}

// Notes are shown where they stand: footnotes and comments inline, as the inline output writes them.
std::optional<AttributedString> printedText(const ConvertDocument& document)
{
    QString commentsPath;
    if (document.inputPath != StandardStreamName) {
        const QString beside = commentsSideFilePathForDocument(document.inputPath);
        if (QFileInfo::exists(beside))
            commentsPath = beside;
    }
    Error error;
    const std::optional<AttributedString> stored = storedTextFromAttributedString(document.text, commentsPath, &error);
    if (!stored) {
        printError(error.localizedDescription);
        return std::nullopt;
    }
    return attributedStringWithAnnotationsInline(*stored, true, true, false, QVariantMap());
}

} // namespace

int runPages(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("pages"),
        QStringLiteral(
            "IN -o OUT.pdf|OUT.png [--paper WxH] [--margins L,R,T,B] [--facing] [--rtl]\n"
            "          [--header TEXT] [--footer TEXT] [--first-page-header TEXT] [--first-page-footer TEXT]\n"
            "          [--no-count-first-pages] [--page N] [--scale S] [--from FORMAT] [--to pdf|png]"),
        QStringLiteral(
            "Prints the document as pages through the page layout view: to PDF, one PDF page per page, or\n"
            "as a PNG picture of one page (a spread with --facing). Notes are shown inline, paragraphs\n"
            "marked keep-with-next stay with the next, and a form feed starts a new page.\n"
            "Headers and footers may hold <$p> (the page number), <$pagecount>, <$P-R> and <$p-r> (the page\n"
            "number in upper- and lower-case roman numerals); a backslash before one keeps it as text.\n"
            "--first-page-header and --first-page-footer replace them on the first page, and\n"
            "--no-count-first-pages numbers the pages from the second on. The paper and margins are the\n"
            "document's, else US letter with one-inch margins."));
    line.addOption({{QStringLiteral("o"), OutputOption},
                    QStringLiteral("The PDF or PNG file to write (- for standard output, with --to)."),
                    QStringLiteral("OUT")});
    line.addOption(
        {FromOption, QStringLiteral("The input format (by default from the file name)."), QStringLiteral("FORMAT")});
    line.addOption(
        {ToOption, QStringLiteral("pdf or png (by default from the output's name)."), QStringLiteral("FORMAT")});
    line.addOption({PaperOption, QStringLiteral("Paper size in points."), QStringLiteral("WxH")});
    line.addOption(
        {MarginsOption, QStringLiteral("Left, right, top and bottom margins in points."), QStringLiteral("L,R,T,B")});
    line.addOption({FacingOption, QStringLiteral("Facing pages: spreads of two pages.")});
    line.addOption({RightToLeftOption, QStringLiteral("Spreads run right to left.")});
    line.addOption({HeaderOption, QStringLiteral("The header of every page."), QStringLiteral("TEXT")});
    line.addOption({FooterOption, QStringLiteral("The footer of every page."), QStringLiteral("TEXT")});
    line.addOption({FirstHeaderOption, QStringLiteral("The header of the first page."), QStringLiteral("TEXT")});
    line.addOption({FirstFooterOption, QStringLiteral("The footer of the first page."), QStringLiteral("TEXT")});
    line.addOption({NoCountFirstOption, QStringLiteral("Do not count the first page in page numbers.")});
    line.addOption({PageOption, QStringLiteral("The page a picture shows (default 1)."), QStringLiteral("N")});
    line.addOption({ScaleOption, QStringLiteral("Pixels per point of a picture (default 1)."), QStringLiteral("S")});
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;

    const QString output = line.value(OutputOption);
    if (output.isEmpty())
        return line.usageError(QStringLiteral("name the output with -o OUT.pdf or -o OUT.png"));
    QString format = line.value(ToOption).toLower();
    if (format.isEmpty() && output != StandardStreamName)
        format = QFileInfo(output).suffix().toLower();
    if (format != PDFFormat && format != PNGFormat)
        return line.usageError(output == StandardStreamName && !line.isSet(ToOption)
                                   ? QStringLiteral("standard output needs --to pdf or --to png")
                                   : QStringLiteral("the output must be a .pdf or a .png file"));
    std::vector<double> n;
    std::optional<QSizeF> paper;
    if (line.isSet(PaperOption)) {
        const QString value = line.value(PaperOption);
        if (!parseNumberList(value.toLower(), QLatin1Char('x'), 2, n, MaximumPageLength) || n[0] < 36 || n[1] < 36)
            return line.usageError(
                QStringLiteral("--paper takes WIDTHxHEIGHT in points (36 or more), not '%1'").arg(value));
        paper = QSizeF(n[0], n[1]);
    }
    std::optional<std::vector<double>> margins;
    if (line.isSet(MarginsOption)) {
        const QString value = line.value(MarginsOption);
        if (!parseNumberList(value, QLatin1Char(','), 4, n, MaximumPageLength))
            return line.usageError(
                QStringLiteral("--margins takes LEFT,RIGHT,TOP,BOTTOM in points, not '%1'").arg(value));
        margins = n;
    }
    int page = 1;
    if (line.isSet(PageOption)) {
        bool ok = false;
        page = line.value(PageOption).toInt(&ok);
        if (!ok || page < 1)
            return line.usageError(
                QStringLiteral("--page takes a page number from 1, not '%1'").arg(line.value(PageOption)));
    }
    double scale = 1;
    if (line.isSet(ScaleOption)) {
        bool ok = false;
        scale = line.value(ScaleOption).toDouble(&ok);
        if (!ok || !(scale >= 0.1 && scale <= 8))
            return line.usageError(
                QStringLiteral("--scale takes a number from 0.1 to 8, not '%1'").arg(line.value(ScaleOption)));
    }

    const QString input = line.arguments().constFirst();
    const std::optional<ConvertDocument> document = readDocument(line, input, &exitCode);
    if (!document)
        return exitCode;
    const std::optional<AttributedString> text = printedText(*document);
    if (!text)
        return ExitFailure;

    // The document's own page, where the options leave it.
    const QVariantMap& attributes = document->documentAttributes;
    const auto documentValue = [&](const QString& key, double fallback) {
        bool ok = false;
        const double value = attributes.value(key).toDouble(&ok);
        return ok && value >= 0 && value < 100000 ? value : fallback;
    };
    QSizeF paperSize(DefaultPaperWidth, DefaultPaperHeight);
    const QSizeF documentPaper = attributes.value(PaperSizeDocumentAttribute).toSizeF();
    if (documentPaper.width() >= 36 && documentPaper.height() >= 36 && documentPaper.width() < 100000
        && documentPaper.height() < 100000)
        paperSize = documentPaper;
    if (paper)
        paperSize = *paper;
    std::vector<double> pageMargins = {documentValue(LeftMarginDocumentAttribute, DefaultMargin),
                                       documentValue(RightMarginDocumentAttribute, DefaultMargin),
                                       documentValue(TopMarginDocumentAttribute, DefaultMargin),
                                       documentValue(BottomMarginDocumentAttribute, DefaultMargin)};
    if (margins)
        pageMargins = *margins;
    // The text needs room for a line beside the padding, and the view reaches a point into the margins.
    if (paperSize.width() - pageMargins[0] - pageMargins[1] < 12
        || paperSize.height() - pageMargins[2] - pageMargins[3] < 12)
        return line.usageError(QStringLiteral("the margins leave no room on the page"));

    TextStorage storage(*text);
    LayoutManager layoutManager;
    auto typesetter = std::make_unique<XQKeepWithNextTypesetter>();
    typesetter->setAllowsKeepWithNext(true);
    layoutManager.setTypesetter(std::move(typesetter));
    layoutManager.setTextStorage(&storage);
    XQPageLayoutView view(QRectF(0, 0, paperSize.width(), paperSize.height()), &layoutManager);
    PrintInfo printInfo;
    printInfo.setPaperSize(paperSize);
    printInfo.setLeftMargin(pageMargins[0]);
    printInfo.setRightMargin(pageMargins[1]);
    printInfo.setTopMargin(pageMargins[2]);
    printInfo.setBottomMargin(pageMargins[3]);
    view.setPrintInfo(printInfo);
    view.setUsesFacingPages(line.isSet(FacingOption));
    view.setUsesRightToLeftLayout(line.isSet(RightToLeftOption));
    view.setHeaderText(headerText(line.value(HeaderOption), RightTextAlignment));
    view.setFooterText(headerText(line.value(FooterOption), CenterTextAlignment));
    if (line.isSet(FirstHeaderOption) || line.isSet(FirstFooterOption)) {
        view.setHasDifferentHeaderAndFooterForFirstPages(true);
        view.setFirstPagesHeaderText(headerText(line.value(FirstHeaderOption), RightTextAlignment));
        view.setFirstPagesFooterText(headerText(line.value(FirstFooterOption), CenterTextAlignment));
    }
    view.setCountsFirstPages(!line.isSet(NoCountFirstOption));
    layoutManager.ensureLayoutForAllText();

    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (format == PDFFormat) {
        if (!view.writePDF(&buffer)) {
            printError(QStringLiteral("%1: the PDF could not be made").arg(output));
            return ExitFailure;
        }
    } else {
        if (page > view.pageCount()) {
            printError(
                QStringLiteral("%1 has %2 pages: there is no page %3").arg(input).arg(view.pageCount()).arg(page));
            return ExitUsage;
        }
        if (!view.imageOfPage(page, scale).save(&buffer, "PNG")) {
            printError(QStringLiteral("%1: the picture could not be made").arg(output));
            return ExitFailure;
        }
    }
    buffer.close();
    return writeOutput(output, buffer.data()) ? ExitSuccess : ExitFailure;
}

} // namespace qly::tool
