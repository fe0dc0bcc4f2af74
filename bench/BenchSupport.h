#pragma once
// Shared by the benchmark programs: a headless Qt application around Google Benchmark's runner, and
// order statistics of per-operation timings.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QRandomGenerator>
#include <algorithm>
#include <functional>
#include <iterator>
#include <vector>

#include <qlyappkit/platform/text/Attributes.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

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

/// A manuscript's body: Times 12 pt, double-spaced, first lines indented half an inch.
inline Attributes manuscriptBodyAttributes()
{
    ParagraphStyle style;
    style.setLineHeightMultiple(2.0);
    style.setFirstLineHeadIndent(36);
    return Attributes{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))},
                      {ParagraphStyleAttributeName, QVariant::fromValue(style)}};
}

/// Prose of the given number of words from a fixed vocabulary, in paragraphs of 40 to 160 words.
inline QString manuscriptText(int words, quint32 seed)
{
    static const char* vocabulary[] = {"the",     "manuscript", "of",      "a",       "long",    "novel",
                                       "written", "over",       "years",   "chapter", "and",     "scene",
                                       "she",     "said",       "quietly", "before",  "morning", "extraordinary"};
    QRandomGenerator rng(seed);
    QString text;
    int paragraphLeft = 40 + int(rng.bounded(120));
    for (int w = 0; w < words; ++w) {
        text += QLatin1String(vocabulary[rng.bounded(int(std::size(vocabulary)))]);
        if (--paragraphLeft == 0) {
            text += QStringLiteral(".\n");
            paragraphLeft = 40 + int(rng.bounded(120));
        } else {
            text += QLatin1Char(' ');
        }
    }
    return text;
}

} // namespace qly::bench
