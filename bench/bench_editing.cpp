// Replacing all occurrences in a large attributed text. The cost should grow with the number of
// matches, not with matches × text length: time_per_match must stay flat as the text grows.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QApplication>

#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/text/editing/AttributedStringEditing.h>

using namespace qly;

namespace {

// One "cat" every 24 units, and an attribute run every few words so that edits cross runs.
AttributedString makeText(qsizetype units)
{
    AttributedString text;
    for (int i = 0; text.length() < units; ++i)
        text.append(QStringLiteral("lorem ipsum cat dolor "), Attributes{{QStringLiteral("n"), i % 3}});
    return text;
}

template <typename Replace> void runReplace(benchmark::State& state, Replace replace)
{
    const AttributedString source = makeText(state.range(0));
    qsizetype matches = 0;
    for (auto _ : state) {
        state.PauseTiming();
        MutableAttributedString text(source);
        state.ResumeTiming();
        matches = replace(text, Range{0, source.length()});
        benchmark::DoNotOptimize(matches);
    }
    state.counters["matches"] = double(matches);
    state.counters["time_per_match"] = benchmark::Counter(double(matches) * double(state.iterations()),
                                                          benchmark::Counter::kIsRate | benchmark::Counter::kInvert,
                                                          benchmark::Counter::OneK::kIs1000);
}

void BM_ReplaceAllForwards(benchmark::State& state)
{
    runReplace(state, [](MutableAttributedString& text, Range range) {
        return replaceOccurrencesOfString(text, QStringLiteral("cat"), QStringLiteral("tiger"), 0, range);
    });
}

void BM_ReplaceAllBackwards(benchmark::State& state)
{
    runReplace(state, [](MutableAttributedString& text, Range range) {
        return replaceOccurrencesOfString(text, QStringLiteral("cat"), QStringLiteral("tiger"), BackwardsSearch, range);
    });
}

void BM_ReplaceWholeWords(benchmark::State& state)
{
    runReplace(state, [](MutableAttributedString& text, Range range) {
        return replaceWholeWordOccurrencesOfString(text, QStringLiteral("cat"), QStringLiteral("tiger"), 0, range);
    });
}

} // namespace

BENCHMARK(BM_ReplaceAllForwards)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReplaceAllBackwards)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReplaceWholeWords)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return qly::bench::runBenchmarks(argc, argv); }
