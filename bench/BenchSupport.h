#pragma once
// Shared by the benchmark programs: a headless Qt application around Google Benchmark's runner, and
// order statistics of per-operation timings.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QBuffer>
#include <QImage>
#include <QRandomGenerator>
#include <algorithm>
#include <functional>
#include <iterator>
#include <vector>

#include <qlyappkit/platform/text/AttributedString.h>
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

/// A picture of random pixels, so that PNG cannot shrink it (as it cannot shrink photographs).
inline QByteArray noisyPNG(QRandomGenerator& rng, int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, rng.generate() | 0xff000000u);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

/// Prose of `words` words in the body attributes (about one line break in 40 words) with `features`
/// features spread evenly through it: after each stretch of words, addFeature(text, index) appends
/// feature number index (from 0). The words are drawn from rng, which features may draw from too.
inline AttributedString manuscriptWithFeatures(int words, int features, QRandomGenerator& rng,
                                               const Attributes& body,
                                               const std::function<void(AttributedString&, int)>& addFeature)
{
    static const char* vocabulary[] = {"the",     "manuscript", "of",    "a",       "long", "novel",
                                       "written", "over",       "years", "chapter", "and",  "scene"};
    const int wordsPerFeature = words / features;
    AttributedString text;
    QString chunk;
    int feature = 0;
    for (int w = 0; w < words; ++w) {
        chunk += QLatin1String(vocabulary[rng.bounded(int(std::size(vocabulary)))]);
        chunk += rng.bounded(40) == 0 ? QLatin1Char('\n') : QLatin1Char(' ');
        if (w % wordsPerFeature != wordsPerFeature - 1 || feature >= features)
            continue;
        text.append(chunk, body);
        chunk.clear();
        addFeature(text, feature++);
    }
    text.append(chunk, body);
    return text;
}

} // namespace qly::bench
