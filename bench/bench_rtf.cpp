// The platform RTF writer and reader on a long manuscript: 200,000 words with a change of character
// formatting every 8 words and a paragraph every 60. Targets: writing within 200 ms, reading within
// 300 ms, and reading with a peak memory of at most 10 times the RTF's size. Reported counters:
// median_ms per operation, rtf_bytes, and for reading peak_bytes (rise of the peak resident set)
// and peak_ratio (peak_bytes / rtf_bytes).
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QFile>
#include <QRandomGenerator>
#include <algorithm>
#include <chrono>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int Words = 200'000;
constexpr int WordsPerRun = 8;
constexpr int WordsPerParagraph = 60;

const AttributedString& manuscript()
{
    static const AttributedString text = [] {
        static const char* words[] = {"the",  "manuscript", "of",      "a",   "long",  "novel",     "written",
                                      "over", "years",      "chapter", "and", "scene", "caf\u00e9", "{brace}"};
        const Font body = Font::fromFamily(QStringLiteral("Times"), 12);
        Attributes kinds[4];
        ParagraphStyle style;
        style.setFirstLineHeadIndent(36);
        style.setLineHeightMultiple(1.5);
        for (Attributes& a : kinds)
            a.insert(ParagraphStyleAttributeName, QVariant::fromValue(style));
        kinds[0].insert(FontAttributeName, QVariant::fromValue(body));
        kinds[1].insert(FontAttributeName,
                        QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12, ItalicFontMask)));
        kinds[2].insert(FontAttributeName, QVariant::fromValue(body));
        kinds[2].insert(UnderlineStyleAttributeName, 1);
        kinds[3].insert(FontAttributeName,
                        QVariant::fromValue(Font::fromFamily(QStringLiteral("Helvetica"), 14, BoldFontMask)));
        kinds[3].insert(ForegroundColorAttributeName, QVariant::fromValue(Color(0.5, 0, 0)));
        QRandomGenerator rng(42);
        AttributedString s;
        QString run;
        for (int w = 1; w <= Words; ++w) {
            run += QString::fromUtf8(words[rng.bounded(14)]);
            run += w % WordsPerParagraph == 0 ? QLatin1Char('\n') : QLatin1Char(' ');
            if (w % WordsPerRun == 0) {
                s.append(run, kinds[(w / WordsPerRun) % 4]);
                run.clear();
            }
        }
        s.append(run, kinds[0]);
        return s;
    }();
    return text;
}

const QByteArray& manuscriptRTF()
{
    static const QByteArray rtf = RTFFromRange(manuscript(), Range{0, manuscript().length()});
    return rtf;
}

long long statusKilobytes(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(qsizetype(strlen(field))).trimmed().split(' ').value(0).toLongLong();
    }
    return 0;
}

void resetPeakResidentSet()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

void BM_WriteRTF(benchmark::State& state)
{
    const AttributedString& text = manuscript();
    std::vector<double> ms;
    qsizetype bytes = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        const QByteArray rtf = RTFFromRange(text, Range{0, text.length()});
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - t0).count());
        bytes = rtf.size();
    }
    state.counters["median_ms"] = qly::bench::median(ms);
    state.counters["rtf_bytes"] = double(bytes);
    state.counters["runs"] = double(text.runCount());
}

void BM_ReadRTF(benchmark::State& state)
{
    const QByteArray& rtf = manuscriptRTF();
    std::vector<double> ms;
    long long peakBytes = 0;
    for (auto _ : state) {
        resetPeakResidentSet();
        const long long before = statusKilobytes("VmRSS:");
        const auto t0 = Clock::now();
        std::optional<AttributedString> text = attributedStringFromRTF(rtf);
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - t0).count());
        peakBytes = std::max(peakBytes, (statusKilobytes("VmHWM:") - before) * 1024);
        if (!text || text->length() != manuscript().length())
            state.SkipWithError("the RTF did not read back");
        benchmark::DoNotOptimize(text);
    }
    state.counters["median_ms"] = qly::bench::median(ms);
    state.counters["rtf_bytes"] = double(rtf.size());
    state.counters["peak_bytes"] = double(peakBytes);
    state.counters["peak_ratio"] = double(peakBytes) / double(rtf.size());
}

} // namespace

BENCHMARK(BM_WriteRTF)->Iterations(15)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadRTF)->Iterations(15)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    return qly::bench::runBenchmarks(argc, argv, [] {
        manuscript();
        manuscriptRTF();
    });
}
