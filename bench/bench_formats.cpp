// Plain-text formats on long texts. Markdown: import and export of 200,000 words with emphasis every
// ten words (targets: 60 ms each); hostile Markdown (10 MB of markers in one paragraph, 100,000
// nested-looking markers) finishing in time proportional to its size. Screenplay: typing and
// formatting a 120-page screenplay (target: 20 ms). Manuscript: each conversion of 200,000 words
// (target: 100 ms). Reported counter: median_ms per operation.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QRandomGenerator>
#include <chrono>

#include <qlyappkit/formats/manuscript/ManuscriptEmphasis.h>
#include <qlyappkit/formats/manuscript/ManuscriptPunctuation.h>
#include <qlyappkit/formats/markdown/MarkdownExport.h>
#include <qlyappkit/formats/markdown/MarkdownImport.h>
#include <qlyappkit/formats/screenplay/ScreenplayText.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int Words = 200'000;
constexpr int WordsPerParagraph = 80;

const Attributes& baseAttributes()
{
    static const Attributes base{
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12))}};
    return base;
}

// 200,000 words; every tenth word bold, italic or bold italic in turn; now and then an em dash or an
// ellipsis.
const QString& markdownText()
{
    static const QString text = [] {
        static const char* words[] = {"the",  "manuscript", "of",      "a",   "long",  "novel", "written",
                                      "over", "years",      "chapter", "and", "scene", "quiet", "harbour"};
        static const char* markers[] = {"*", "**", "***", "_"};
        QRandomGenerator rng(7);
        QString s;
        s.reserve(Words * 8);
        for (int w = 1; w <= Words; ++w) {
            const QString word = QString::fromLatin1(words[rng.bounded(14)]);
            if (w % 10 == 0) {
                const QString marker = QString::fromLatin1(markers[(w / 10) % 4]);
                s += marker + word + marker;
            } else {
                s += word;
            }
            if (w % 97 == 0)
                s += QChar(0x2014);
            if (w % 211 == 0)
                s += QChar(0x2026);
            s += w % WordsPerParagraph == 0 ? QLatin1Char('\n') : QLatin1Char(' ');
        }
        return s;
    }();
    return text;
}

const AttributedString& richText()
{
    static const AttributedString text = initWithMarkdownString(markdownText(), baseAttributes(), 0);
    return text;
}

const AttributedString& underlinedText()
{
    static const AttributedString text = attributedStringByConvertingItalicsToUnderlines(richText());
    return text;
}

// The sample screenplay (three pages) repeated to 120 pages.
const QString& screenplay()
{
    static const QString text = [] {
        QFile file(QStringLiteral(QLY_SOURCE_DIR "/samples/screenplay.txt"));
        const QString page = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        QString s;
        for (int i = 0; i < 40; ++i)
            s += page + u'\n';
        return s;
    }();
    return text;
}

template <typename Operation> void timed(benchmark::State& state, Operation operation)
{
    std::vector<double> ms;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        operation();
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - t0).count());
    }
    state.counters["median_ms"] = qly::bench::median(ms);
}

void BM_MarkdownImport(benchmark::State& state)
{
    timed(state, [] { benchmark::DoNotOptimize(initWithMarkdownString(markdownText(), baseAttributes(), 0)); });
    state.counters["units"] = double(markdownText().size());
}

void BM_MarkdownExport(benchmark::State& state)
{
    timed(state, [] { benchmark::DoNotOptimize(markdownStringWithOptions(richText(), 0)); });
}

// One paragraph of 10 MB of asterisks and underscores, and 100,000 opening markers around a word
// and as many closing ones: linear passes finish these in well under a second.
void BM_MarkdownHostile(benchmark::State& state)
{
    static const QString markers = [] {
        QRandomGenerator rng(3);
        QString s(5 * 1024 * 1024, u'*'); // 5 M units = 10 MB of UTF-16
        for (QChar& c : s)
            c = rng.bounded(2) ? u'*' : u'_';
        return s;
    }();
    static const QString nested = QString(100000, u'*') + QStringLiteral("word") + QString(100000, u'*');
    timed(state, [] {
        benchmark::DoNotOptimize(initWithMarkdownString(markers, baseAttributes(), 0));
        benchmark::DoNotOptimize(initWithMarkdownString(nested, baseAttributes(), 0));
    });
}

void BM_ScreenplayTypeAndFormat(benchmark::State& state)
{
    const ScriptElementAttributes attributes = defaultPlainTextScreenplayElementAttributes();
    timed(state,
          [&] { benchmark::DoNotOptimize(attributedStringWithPlainTextScreenplayString(screenplay(), attributes)); });
    state.counters["lines"] = double(screenplay().count(u'\n'));
}

void BM_ItalicsToUnderlines(benchmark::State& state)
{
    timed(state, [] { benchmark::DoNotOptimize(attributedStringByConvertingItalicsToUnderlines(richText())); });
}

void BM_UnderlinesToItalics(benchmark::State& state)
{
    timed(state, [] { benchmark::DoNotOptimize(attributedStringByConvertingUnderlinesToItalics(underlinedText())); });
}

void BM_DashesAndEllipses(benchmark::State& state)
{
    timed(state, [] { benchmark::DoNotOptimize(attributedStringByConvertingEmDashesToHyphens(richText(), 2, true)); });
}

} // namespace

BENCHMARK(BM_MarkdownImport)->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MarkdownExport)->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MarkdownHostile)->Iterations(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScreenplayTypeAndFormat)->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ItalicsToUnderlines)->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_UnderlinesToItalics)->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DashesAndEllipses)->Iterations(15)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    return qly::bench::runBenchmarks(argc, argv, [] {
        richText();
        underlinedText();
        screenplay();
    });
}
