// Package RTF on a manuscript: 200,000 words with 2,000 notes and 50 pictures of about 100 KB each,
// written and read. Counters: the file's size, and the peak memory the operation added over what the
// process held before it (as a multiple of the file's size).
#include "BenchSupport.h"

#include <QFile>
#include <QRandomGenerator>
#include <malloc.h>

#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/interchange/package/PackageRTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

using namespace qly;

namespace {

AttributedString g_manuscript;
QByteArray g_stored;

// A noisy picture: about 100 KB of PNG.
QByteArray noisyPNG(quint32 seed)
{
    QRandomGenerator rng(seed);
    return qly::bench::noisyPNG(rng, 185, 185);
}

AttributedString manuscript()
{
    static const char* words[] = {"the", "manuscript", "keeps", "every", "word", "a", "writer", "puts", "in", "it"};
    const Attributes body{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}};
    Attributes note = body;
    note.insert(XQFootnoteAttributeName, true);
    AttributedString text;
    constexpr int Words = 200000, Notes = 2000, Pictures = 50, WordsPerParagraph = 200;
    QString paragraph;
    for (int w = 0; w < Words; ++w) {
        paragraph += QLatin1String(words[w % 10]) + QLatin1Char(' ');
        if ((w + 1) % WordsPerParagraph != 0)
            continue;
        text.append(paragraph, body);
        paragraph.clear();
        const int index = (w + 1) / WordsPerParagraph; // 1000 paragraphs
        for (int n = 0; n < Notes / (Words / WordsPerParagraph); ++n) {
            text.append(QStringLiteral("A note on this paragraph."), note);
            text.append(QStringLiteral(" "), body); // notes side by side would be one note
        }
        if (index % ((Words / WordsPerParagraph) / Pictures) == 0) {
            Attributes picture = body;
            picture.insert(AttachmentAttributeName,
                           QVariant::fromValue(
                               TextAttachment(QStringLiteral("figure %1.png").arg(index), noisyPNG(quint32(index)))));
            text.append(QString(QChar(AttachmentCharacter)), picture);
        }
        text.append(QStringLiteral("\n"), body);
    }
    return text;
}

qint64 procStatusKB(const char* field)
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

// Starts a measurement of peak memory: returns freed memory to the system and resets the process's
// high-water mark (Linux), so that the peak afterwards less the memory held now is what the operation
// added.
qint64 startPeak()
{
    malloc_trim(0);
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
    return procStatusKB("VmRSS:");
}

void setPeakCounter(benchmark::State& state, qint64 before)
{
    const double added = double(procStatusKB("VmHWM:") - before) * 1024;
    state.counters["file_MB"] = double(g_stored.size()) / 1e6;
    state.counters["peak_over_file"] = added / double(g_stored.size());
}

void BM_PackageRTFWrite(benchmark::State& state)
{
    qint64 before = 0;
    for (auto _ : state) {
        before = startPeak();
        QByteArray rtf = quilleryPackageRTFFromRange(g_manuscript, Range{0, g_manuscript.length()}, {}, true);
        benchmark::DoNotOptimize(rtf);
        state.PauseTiming();
        setPeakCounter(state, before);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_PackageRTFWrite)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_PackageRTFRead(benchmark::State& state)
{
    for (auto _ : state) {
        const qint64 before = startPeak();
        std::optional<AttributedString> text = initWithQuilleryPackageRTF(g_stored, nullptr, true);
        benchmark::DoNotOptimize(text);
        state.PauseTiming();
        setPeakCounter(state, before);
        if (!text || text->length() != g_manuscript.length())
            state.SkipWithError("the manuscript did not read back whole");
        state.ResumeTiming();
    }
}
BENCHMARK(BM_PackageRTFRead)->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace

int main(int argc, char** argv)
{
    // Large blocks always come from the system and go back to it, so that the resident size follows what
    // is in use (by default the allocator keeps freed large blocks and the peak would show nothing).
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
    return bench::runBenchmarks(argc, argv, [] {
        g_manuscript = manuscript();
        g_stored = quilleryPackageRTFFromRange(g_manuscript, Range{0, g_manuscript.length()}, {}, true);
    });
}
