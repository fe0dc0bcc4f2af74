// Importing a word processor's RTF: 200k words with 2,000 footnotes, 500 comments with ranges and 20
// pictures (Arg 1), and the same document four times over (Arg 4), to show that the tag rewrites stay
// linear; BM_ExtendedRTFImportScaling fits the growth from 1 to 8 times. The RTF is our own export of a
// generated manuscript, which writes notes, comment ranges and pictures the way word processors do.
// BM_QlyImportProcess runs `qly convert --from word-rtf` on the Arg 1 file and reports the whole
// process's time and peak memory (measured by time(1)).
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <chrono>
#include <map>
#include <vector>

#include <qlyappkit/interchange/export/WordRTFExport.h>
#include <qlyappkit/interchange/rtf/ExtendedRTFReader.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

// About 8 KB of PNG each.
TextAttachment picture(QRandomGenerator& rng, int number)
{
    TextAttachment attachment(QStringLiteral("figure%1.png").arg(number), qly::bench::noisyPNG(rng, 60, 45));
    attachment.setBounds(QSizeF(240, 180));
    return attachment;
}

// A stored manuscript of scale × 200k words with its notes spread evenly through it.
AttributedString storedManuscript(int scale)
{
    QRandomGenerator rng(23);
    const Attributes body{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}};
    const int footnotes = 2000 * scale, comments = 500 * scale, pictures = 20 * scale;
    int made = 0;
    return qly::bench::manuscriptWithFeatures(
        200'000 * scale, footnotes + comments + pictures, rng, body, [&](AttributedString& text, int feature) {
            // Of every 126 features: 100 footnotes, 25 comments, 1 picture.
            const int k = feature % 126;
            Attributes a = body;
            if (k < 100) {
                auto note = XQComment::create(AttributedString(QStringLiteral("A footnote with some words in it."), body),
                                              true);
                a.insert(XQCommentAttributeName, variantFromComment(note));
                text.append(QStringLiteral("noted"), a);
            } else if (k < 125) {
                auto comment = XQComment::create(AttributedString(QStringLiteral("A comment on these words."), body));
                a.insert(XQCommentAttributeName, variantFromComment(comment));
                text.append(QStringLiteral("a commented phrase"), a);
            } else {
                a.insert(AttachmentAttributeName, QVariant::fromValue(picture(rng, ++made)));
                text.append(QString(QChar(AttachmentCharacter)), a);
            }
            text.append(QStringLiteral(" "), body);
        });
}

const QByteArray& wordProcessorRTF(int scale)
{
    static std::map<int, QByteArray> made;
    auto it = made.find(scale);
    if (it == made.end())
        it = made.emplace(scale, wordRTFFromStoredText(storedManuscript(scale), {}, {})).first;
    return it->second;
}

void BM_ExtendedRTFImport(benchmark::State& state)
{
    const QByteArray& rtf = wordProcessorRTF(int(state.range(0)));
    std::vector<double> ms;
    ExtendedRTFImportReport report;
    for (auto _ : state) {
        const auto start = Clock::now();
        std::optional<AttributedString> text = attributedStringFromExtendedRTF(rtf, nullptr, {}, {}, &report);
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        benchmark::DoNotOptimize(text);
    }
    state.counters["median_ms"] = qly::bench::median(ms);
    state.counters["rtf_bytes"] = double(rtf.size());
    state.SetComplexityN(state.range(0));
    state.counters["footnotes"] = report.footnotes;
    state.counters["comments"] = report.annotations;
    state.counters["pictures"] = report.pictures;
}

void BM_QlyImportProcess(benchmark::State& state)
{
    QTemporaryDir dir;
    const QString in = dir.filePath(QStringLiteral("manuscript.rtf"));
    QFile file(in);
    if (!file.open(QIODevice::WriteOnly) || file.write(wordProcessorRTF(1)) < 0) {
        state.SkipWithError("cannot write the input");
        return;
    }
    file.close();
    // The peak is measured by time(1): a child forked from this (large) process would count its
    // parent's pages in its own peak.
    std::vector<double> ms;
    double peakKB = 0;
    for (auto _ : state) {
        QProcess qly;
        const auto start = Clock::now();
        qly.start(QStringLiteral("/usr/bin/time"),
                  {QStringLiteral("-f"), QStringLiteral("%M"), QStringLiteral(QLY_BINARY_DIR "/tools/qly/qly"),
                   QStringLiteral("convert"), in, QStringLiteral("-o"), dir.filePath(QStringLiteral("stored.rtf")),
                   QStringLiteral("--from"), QStringLiteral("word-rtf")});
        if (!qly.waitForFinished(120000) || qly.exitCode() != 0) {
            state.SkipWithError("time qly convert --from word-rtf failed (is time(1) installed?)");
            return;
        }
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        const QList<QByteArray> lines = qly.readAllStandardError().trimmed().split('\n');
        peakKB = std::max(peakKB, lines.constLast().toDouble());
    }
    state.counters["median_ms"] = qly::bench::median(ms);
    state.counters["peak_rss_mb"] = peakKB / 1024.0;
}

} // namespace

BENCHMARK(BM_ExtendedRTFImport)->Arg(1)->Arg(4)->Iterations(5)->Unit(benchmark::kMillisecond);
// The same at 1, 2, 4 and 8 times the size, with the least-squares fit of time against size: a linear
// import fits O(N) with a small RMS.
BENCHMARK(BM_ExtendedRTFImport)
    ->Name("BM_ExtendedRTFImportScaling")
    ->RangeMultiplier(2)
    ->Range(1, 8)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(BM_QlyImportProcess)->Iterations(3)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return qly::bench::runBenchmarks(argc, argv); }
