// The page layout view on a 300-page manuscript (about 95,000 words of 12 pt serif, double-spaced, on
// letter paper inside one-inch margins): opening it in the view, every page laid out and made, against
// Qt's own document pagination of the same text at the same width in the same program; a keystroke on
// page 150 typed into its text view until the view is up to date (median and 90th percentile per
// keystroke as counters median_us and p90_us); and `qly pages` printing it to PDF as a whole process.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextCursor>
#include <QTextDocument>
#include <chrono>

#include <qlyappkit/pagelayout/XQPageLayoutView.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int ManuscriptWords = 95000;
const QSizeF Paper(612, 792);
constexpr double Margin = 72;

AttributedString g_manuscript;

// The view as a writer opens it: letter paper, one-inch margins.
struct OpenManuscript {
    TextStorage storage;
    LayoutManager manager;
    std::unique_ptr<XQPageLayoutView> view;

    OpenManuscript() : storage(g_manuscript)
    {
        manager.setTextStorage(&storage);
        view = std::make_unique<XQPageLayoutView>(QRectF(QPointF(0, 0), Paper), &manager);
        view->setPageInset(QSizeF(Margin, Margin));
        manager.ensureLayoutForAllText();
    }
};

void BM_OpenManuscriptInPageLayoutView(benchmark::State& state)
{
    int pages = 0;
    for (auto _ : state) {
        OpenManuscript open;
        pages = open.view->pageCount();
        state.PauseTiming();
        open.view.reset();
        state.ResumeTiming();
    }
    state.counters["pages"] = pages;
}

// The same text, width and fonts as one QTextDocument, paginated by Qt.
void BM_QTextDocumentPaginate(benchmark::State& state)
{
    const QString string = g_manuscript.string();
    QTextCharFormat format;
    format.setFont(Font(QStringLiteral("Times"), 12).toQFont(), QTextCharFormat::FontPropertiesAll);
    QTextBlockFormat block;
    block.setLineHeight(200, QTextBlockFormat::ProportionalHeight);
    block.setTextIndent(36);
    int pages = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto document = std::make_unique<QTextDocument>();
        document->setDocumentMargin(0);
        document->setUndoRedoEnabled(false);
        QTextCursor cursor(document.get());
        cursor.setBlockFormat(block);
        cursor.insertText(string, format);
        state.ResumeTiming();
        // The view's text width (less the padding either side of a line) and height.
        document->setPageSize(QSizeF(Paper.width() - 2 * Margin, Paper.height() - 2 * Margin + 2));
        pages = document->pageCount();
        state.PauseTiming();
        document.reset();
        state.ResumeTiming();
    }
    state.counters["pages"] = pages;
}

void BM_KeystrokeOnPage150(benchmark::State& state)
{
    OpenManuscript open;
    XQPageLayoutView& view = *open.view;
    const Range page = view.characterRangeForPage(150);
    if (page.location == NotFound || page.length < 10) {
        state.SkipWithError("the manuscript has fewer than 150 pages");
        return;
    }
    TextView* textView = view.textViews()[149];
    textView->setSelectedRange(Range{page.location + page.length / 2, 0});
    std::vector<double> ns;
    int step = 0;
    for (auto _ : state) {
        // Typing and deleting again keeps the text the same size.
        const auto start = Clock::now();
        if (step++ % 2 == 0)
            textView->insertText(QStringLiteral("e"));
        else
            textView->deleteBackward();
        open.manager.ensureLayoutForAllText();
        ns.push_back(double(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count()));
    }
    state.counters["median_us"] = bench::median(ns) / 1000.0;
    state.counters["p90_us"] = bench::quantile(ns, 0.9) / 1000.0;
    state.counters["pages"] = view.pageCount();
}

void BM_QlyPagesWholeProcess(benchmark::State& state)
{
    QTemporaryDir dir;
    // RTF, so that the whole process reads the same fonts and double spacing.
    const QString input = dir.filePath(QStringLiteral("manuscript.rtf"));
    const QString output = dir.filePath(QStringLiteral("manuscript.pdf"));
    {
        QFile file(input);
        if (!file.open(QIODevice::WriteOnly)) {
            state.SkipWithError("cannot write the manuscript");
            return;
        }
        file.write(RTFFromRange(g_manuscript, Range{0, g_manuscript.length()}));
    }
    for (auto _ : state) {
        QProcess process;
        process.start(QStringLiteral(QLY_BINARY_DIR "/tools/qly/qly"),
                      {QStringLiteral("pages"), input, QStringLiteral("-o"), output});
        if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit
            || process.exitCode() != 0) {
            state.SkipWithError("qly pages failed");
            return;
        }
    }
    state.counters["pdf_kb"] = double(QFile(output).size()) / 1024.0;
    QProcess info;
    info.start(QStringLiteral("pdfinfo"), {output});
    if (info.waitForFinished(60000)) {
        const QString out = QString::fromUtf8(info.readAllStandardOutput());
        const qsizetype at = out.indexOf(QStringLiteral("Pages:"));
        if (at >= 0)
            state.counters["pages"] = out.mid(at + 6).section(QLatin1Char('\n'), 0, 0).trimmed().toDouble();
    }
}

} // namespace

BENCHMARK(BM_OpenManuscriptInPageLayoutView)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QTextDocumentPaginate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KeystrokeOnPage150)->Unit(benchmark::kMicrosecond)->Iterations(200);
BENCHMARK(BM_QlyPagesWholeProcess)->Unit(benchmark::kMillisecond)->Iterations(3);

int main(int argc, char** argv)
{
    return bench::runBenchmarks(argc, argv, [] {
        g_manuscript =
            AttributedString(qly::bench::manuscriptText(ManuscriptWords, 2026), qly::bench::manuscriptBodyAttributes());
    });
}
