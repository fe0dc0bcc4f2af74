// The corkboard: tiling 10,000 cards in the grid and in columns (five sections of 2,000 cards), hit
// testing a point (median and 90th percentile per look-up as counters median_ns and p90_ns), and painting
// a screenful of 60 cards with titles, text, pins, shadows, label chips, stamps and numbers offscreen.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <chrono>

#include <qlyappkit/corkboard/XQCorkboardView.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

/// Sections of cards with a title, a few sentences of text, a label colour and now and then a stamp.
class BenchSource : public XQCorkboardViewDataSource {
public:
    BenchSource(int sections, int cardsPerSection) : m_sections(sections), m_perSection(cardsPerSection) { }
    Methods implementedMethods() const override
    {
        return NumberOfSectionsInCorkboardView | NumberOfCardsInSectionAtIndex | TextForCardAtIndex
            | TitleForCardAtIndex | LabelColorForCardAtIndex | StampForCardAtIndex;
    }
    int numberOfSectionsInCorkboardView(XQCorkboardView*) override { return m_sections; }
    int numberOfCardsInSectionAtIndex(XQCorkboardView*, int) override { return m_perSection; }
    QString titleForCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        return QStringLiteral("Scene %1: the keeper climbs the stair").arg(index + 1);
    }
    QString textForCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        return QStringLiteral("The glass has been falling since noon. She counts the steps again, %1 of "
                              "them, and writes the number in the log beside the wind's direction.")
            .arg(100 + index % 50);
    }
    QColor labelColorForCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        static const QColor colors[] = {QColor(200, 60, 50), QColor(60, 140, 70), QColor(60, 90, 190)};
        return colors[index % 3];
    }
    QString stampForCardAtIndex(XQCorkboardView*, qsizetype index) override
    {
        return index % 4 == 0 ? QStringLiteral("First Draft") : QString();
    }

private:
    int m_sections;
    int m_perSection;
};

void BM_TileGrid10000(benchmark::State& state)
{
    BenchSource source(1, 10000);
    XQCorkboardView view;
    view.resize(1200, 800);
    view.setCardsAcross(5);
    view.setDataSource(&source);
    for (auto _ : state) {
        view.tile();
        benchmark::DoNotOptimize(view.cardRects().rects.data());
    }
    state.counters["cards"] = double(view.cardRects().rects.size());
}
BENCHMARK(BM_TileGrid10000)->Unit(benchmark::kMillisecond);

void BM_TileColumns10000(benchmark::State& state)
{
    BenchSource source(5, 2000);
    XQCorkboardView view;
    view.resize(1200, 800);
    view.setMultipleSectionsMode(2);
    view.setDataSource(&source);
    for (auto _ : state) {
        view.tileColumns();
        benchmark::DoNotOptimize(view.cardRects().rects.data());
    }
    state.counters["cards"] = double(view.cardRects().rects.size());
}
BENCHMARK(BM_TileColumns10000)->Unit(benchmark::kMillisecond);

void BM_HitTestPoint(benchmark::State& state)
{
    BenchSource source(1, 10000);
    XQCorkboardView view;
    view.resize(1200, 800);
    view.setCardsAcross(5);
    view.setDataSource(&source);
    const QSize size = view.size();
    QRandomGenerator rng(7);
    std::vector<QPointF> points(4096);
    for (QPointF& p : points)
        p = QPointF(rng.bounded(double(size.width())), rng.bounded(double(size.height())));
    std::vector<double> samples;
    size_t i = 0;
    qsizetype hits = 0;
    for (auto _ : state) {
        const QPointF p = points[i++ % points.size()];
        const auto start = Clock::now();
        const qsizetype index = view.indexOfCardAtPoint(p);
        const auto end = Clock::now();
        benchmark::DoNotOptimize(index);
        hits += index >= 0;
        if (samples.size() < 200000)
            samples.push_back(std::chrono::duration<double, std::nano>(end - start).count());
    }
    state.counters["median_ns"] = bench::median(samples);
    state.counters["p90_ns"] = bench::quantile(samples, 0.9);
    state.counters["hit_fraction"] = double(hits) / double(std::max<size_t>(1, i));
}
BENCHMARK(BM_HitTestPoint);

void BM_PaintScreenful60(benchmark::State& state)
{
    // Six across and ten down at 1200 points wide: 60 cards on a 1200 x 1400 screen.
    BenchSource source(1, 60);
    XQCorkboardView view;
    view.resize(1200, 800);
    view.setCardsAcross(6);
    view.setShowsCardNumbers(true);
    view.setDataSource(&source);
    const QSize size = view.size();
    QImage canvas(size, QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        QPainter painter(&canvas);
        view.paintBoard(painter, QRectF(QPointF(0, 0), QSizeF(size)));
        painter.end();
        benchmark::DoNotOptimize(canvas.constBits());
    }
    state.counters["width"] = size.width();
    state.counters["height"] = size.height();
}
BENCHMARK(BM_PaintScreenful60)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) { return bench::runBenchmarks(argc, argv); }
