// qly fits: whether a document fits on one page, or how many pages it takes, as the layout engine
// sets it.
#include <qlyappkit/text/fitting/XQPageFittingHelper.h>

#include <cmath>
#include <vector>

#include "CommandLine.h"
#include "Commands.h"
#include "convert/ConvertFormats.h"

namespace qly::tool {

namespace {

const QString FromOption = QStringLiteral("from");
const QString PaperOption = QStringLiteral("paper");
const QString MarginsOption = QStringLiteral("margins");
const QString PagesOption = QStringLiteral("pages");
const QString Yes = QStringLiteral("yes");
const QString No = QStringLiteral("no");

// US letter with one-inch margins.
constexpr double DefaultPaperWidth = 612, DefaultPaperHeight = 792, DefaultMargin = 72;

} // namespace

int runFits(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("fits"), QStringLiteral("IN [--paper WxH] [--margins L,R,T,B] [--pages] [--from FORMAT]"),
        QStringLiteral("Lays the document out on pages of the given size (points; US letter by default) inside\n"
                       "the margins (points; one inch by default) and prints \"yes\" when it fits on one page,\n"
                       "\"no\" otherwise. A form feed inside the text starts a new page, so such a text does not\n"
                       "fit. With --pages it prints the number of pages the text takes instead, a form feed\n"
                       "starting a page and paragraphs marked keep-with-next kept with the next."));
    line.addOption(
        {FromOption, QStringLiteral("The input format (by default from the file name)."), QStringLiteral("FORMAT")});
    line.addOption({PaperOption, QStringLiteral("Paper size in points (default 612x792)."), QStringLiteral("WxH")});
    line.addOption({MarginsOption,
                    QStringLiteral("Left, right, top and bottom margins in points (default 72,72,72,72)."),
                    QStringLiteral("L,R,T,B")});
    line.addOption({PagesOption, QStringLiteral("Print the number of pages instead of yes or no.")});
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;

    QSizeF paper(DefaultPaperWidth, DefaultPaperHeight);
    XQMargins margins = XQMakeMargins(DefaultMargin, DefaultMargin, DefaultMargin, DefaultMargin);
    std::vector<double> n;
    if (line.isSet(PaperOption)) {
        const QString value = line.value(PaperOption);
        if (!parseNumberList(value.toLower(), QLatin1Char('x'), 2, n) || n[0] <= 0 || n[1] <= 0)
            return line.usageError(QStringLiteral("--paper takes WIDTHxHEIGHT in points, not '%1'").arg(value));
        paper = QSizeF(n[0], n[1]);
    }
    if (line.isSet(MarginsOption)) {
        const QString value = line.value(MarginsOption);
        if (!parseNumberList(value, QLatin1Char(','), 4, n))
            return line.usageError(
                QStringLiteral("--margins takes LEFT,RIGHT,TOP,BOTTOM in points, not '%1'").arg(value));
        margins = XQMakeMargins(n[0], n[1], n[2], n[3]);
    }
    if (paper.width() - margins.left - margins.right <= 0 || paper.height() - margins.top - margins.bottom <= 0)
        return line.usageError(QStringLiteral("the margins leave no room on the page"));

    const QString input = line.arguments().constFirst();
    const std::optional<ConvertDocument> document = readDocument(line, input, &exitCode);
    if (!document)
        return exitCode;

    XQPageFittingHelper helper(paper, margins);
    if (line.isSet(PagesOption)) {
        printOut(QStringLiteral("%1\n").arg(helper.numberOfPagesForText(document->text)));
        return ExitSuccess;
    }
    helper.layoutWithText(document->text);
    printOut((helper.textFitsOnOnePage() ? Yes : No) + QLatin1Char('\n'));
    return ExitSuccess;
}

} // namespace qly::tool
