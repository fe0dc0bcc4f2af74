// The layout engine on a 300-page manuscript (about 90,000 words of 12 pt serif, double-spaced as
// manuscripts are, on letter paper inside one-inch margins): a full layout into pages against Qt's
// own document pagination of the same text at the same width in the same program; bringing the
// layout up to date after a one-character edit in the middle (median and 90th percentile per edit as
// counters median_us and p90_us); and measuring a 50-word card text.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QAbstractTextDocumentLayout>
#include <QRandomGenerator>
#include <QTextCursor>
#include <QTextDocument>
#include <chrono>

#include <qlyappkit/geometry/XQTextMeasuring.h>
#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int ManuscriptWords = 90000;
const QSizeF TextArea(468, 648); // letter paper less one-inch margins
constexpr double Padding = TextContainer::DefaultLineFragmentPadding;

AttributedString g_manuscript;

AttributedString manuscript(int words, quint32 seed)
{
    return AttributedString(qly::bench::manuscriptText(words, seed), qly::bench::manuscriptBodyAttributes());
}

struct Pages : LayoutManagerDelegate {
    void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& manager, TextContainer* c, bool atEnd) override
    {
        if (!atEnd && c == manager.textContainers().back())
            manager.addTextContainer(std::make_unique<TextContainer>(TextArea));
    }
};

void BM_LayoutManuscriptIntoPages(benchmark::State& state)
{
    size_t pages = 0;
    qsizetype shaped = 0;
    for (auto _ : state) {
        TextStorage storage(g_manuscript);
        LayoutManager manager;
        Pages adder;
        manager.setDelegate(&adder);
        manager.addTextContainer(std::make_unique<TextContainer>(TextArea));
        manager.setTextStorage(&storage);
        manager.ensureLayoutForAllText();
        pages = manager.textContainers().size();
        shaped = manager.statistics().paragraphsShaped;
        manager.setDelegate(nullptr);
    }
    state.counters["pages"] = double(pages);
    // Each paragraph is shaped once: a page break inside it only moves its lines.
    state.counters["shaped"] = double(shaped);
    state.counters["paragraphs"] = double(g_manuscript.string().count(QLatin1Char('\n')) + 1);
}

// The same text, width and fonts (pixel size = point size) as one QTextDocument, paginated by Qt.
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
        document->setPageSize(QSizeF(TextArea.width() - 2 * Padding, TextArea.height()));
        pages = document->pageCount();
        state.PauseTiming();
        document.reset();
        state.ResumeTiming();
    }
    state.counters["pages"] = pages;
}

void BM_OneCharacterEditInTheMiddle(benchmark::State& state)
{
    TextStorage storage(g_manuscript);
    LayoutManager manager;
    Pages adder;
    manager.setDelegate(&adder);
    manager.addTextContainer(std::make_unique<TextContainer>(TextArea));
    manager.setTextStorage(&storage);
    manager.ensureLayoutForAllText();
    QRandomGenerator rng(17);
    const qsizetype middle = storage.length() / 2;
    std::vector<double> ns;
    int step = 0;
    for (auto _ : state) {
        // Typing and deleting around the middle keeps the text the same size.
        const qsizetype at = middle + qsizetype(rng.bounded(2000));
        const auto start = Clock::now();
        if (step++ % 2 == 0)
            storage.replaceCharacters(Range{at, 0}, QStringLiteral("e"));
        else
            storage.deleteCharacters(Range{at, 1});
        manager.ensureLayoutForAllText();
        ns.push_back(double(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count()));
    }
    manager.setDelegate(nullptr);
    state.counters["median_us"] = bench::median(ns) / 1000.0;
    state.counters["p90_us"] = bench::quantile(ns, 0.9) / 1000.0;
    state.counters["pages"] = double(manager.textContainers().size());
}

void BM_HeightForStringDrawingFiftyWords(benchmark::State& state)
{
    const QString card = QStringLiteral("The detective arrives at the house after midnight and finds the door open; "
                                        "inside, the writer's desk is bare except for one card with a list of names, "
                                        "two of them crossed out, and a train timetable folded to the morning "
                                        "service out of the city.");
    const Attributes attributes{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Helvetica"), 12))}};
    double height = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(height = XQHeightForStringDrawing(card, 180, attributes));
    state.counters["height"] = height;
}

} // namespace

BENCHMARK(BM_LayoutManuscriptIntoPages)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QTextDocumentPaginate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_OneCharacterEditInTheMiddle)->Unit(benchmark::kMicrosecond)->Iterations(400);
BENCHMARK(BM_HeightForStringDrawingFiftyWords)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    return bench::runBenchmarks(argc, argv, [] { g_manuscript = manuscript(ManuscriptWords, 2026); });
}
