#pragma once
// Shared by the benchmark programs: a headless Qt application around Google Benchmark's runner, and
// order statistics of per-operation timings.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <algorithm>
#include <functional>
#include <vector>

namespace qly::bench {

/// The value below which the given fraction of the samples lie (0.5: the median); 0 with no samples.
inline double quantile(std::vector<double> samples, double fraction)
{
    if (samples.empty())
        return 0;
    const auto k = std::min(samples.size() - 1, size_t(double(samples.size()) * fraction));
    std::nth_element(samples.begin(), samples.begin() + qsizetype(k), samples.end());
    return samples[k];
}

inline double median(const std::vector<double>& samples) { return quantile(samples, 0.5); }

/// Runs the registered benchmarks inside an off-screen QApplication (fonts, images and text layout
/// need one); prepare() builds shared inputs before timing starts.
inline int runBenchmarks(int argc, char** argv, const std::function<void()>& prepare = {})
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (prepare)
        prepare();
    ::benchmark::Initialize(&argc, argv);
    if (::benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    ::benchmark::RunSpecifiedBenchmarks();
    ::benchmark::Shutdown();
    return 0;
}

} // namespace qly::bench
