// Outlines of a long novel: reading a 100,000-item OPML file (about 14 MB: parts, chapters and scenes
// whose notes hold entities and line breaks), and building, making unique and sorting the node tree
// made from it. Before the timed runs it measures the memory one read takes (peak and retained, as a
// multiple of the file's size), the same for a file with one 100 MB attribute, and runs pandoc once on
// the same file as a reference, with a time limit (skipped with a message when pandoc is missing;
// QLY_BENCH_NO_PANDOC=1 skips it, QLY_BENCH_PANDOC_SECONDS sets the limit, 90 s by default).
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <cstdio>
#include <malloc.h>
#include <sys/resource.h>

#include <qlyappkit/formats/opml/XQOPMLStorage.h>
#include <qlyappkit/formats/outline/OPMLOutline.h>
#include <qlyappkit/formats/outline/XQOutlineController.h>

using namespace qly;

namespace {

constexpr int Parts = 10;
constexpr int ChaptersPerPart = 100;
constexpr int ScenesPerChapter = 99; // 10 + 1,000 + 99,000 items
constexpr int DefaultPandocSeconds = 90; // QLY_BENCH_PANDOC_SECONDS changes it

QTemporaryDir& scratch()
{
    static QTemporaryDir dir;
    return dir;
}

QString outlinePath() { return scratch().filePath(QStringLiteral("novel.opml")); }

// Scene titles repeat within a chapter now and then ("Scene", "scene 12" next to "Scene 12"), so that
// making titles unique has work to do, and come in shuffled order, so that sorting has too.
QByteArray novelOutline()
{
    QRandomGenerator random(2026);
    QByteArray out =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<opml version=\"2.0\">\n<head>\n"
        "<title>The Long Novel &amp; Its Notes</title>\n<ownerName>A. Writer</ownerName>\n</head>\n<body>\n";
    out.reserve(15 * 1024 * 1024);
    for (int p = 1; p <= Parts; ++p) {
        out += "<outline text=\"Part " + QByteArray::number(p) + "\" type=\"part\">\n";
        for (int c = 1; c <= ChaptersPerPart; ++c) {
            out +=
                "  <outline text=\"Chapter " + QByteArray::number(c) + "\" type=\"chapter\" _status=\"First draft\">\n";
            for (int s = 0; s < ScenesPerChapter; ++s) {
                const int n = int(random.bounded(ScenesPerChapter)) + 1;
                const QByteArray title = s % 10 == 0 ? QByteArray("Scene")
                    : s % 10 == 1                    ? "scene " + QByteArray::number(n)
                                                     : "Scene " + QByteArray::number(n);
                out += "    <outline text=\"" + title + "\" type=\"scene\" _note=\"Mara climbs the steps &amp; counts "
                    + QByteArray::number(n * 7) + " of them.&#10;&quot;Keep it short,&quot; says the editor &lt;p. "
                    + QByteArray::number(s) + "&gt;.\"/>\n";
            }
            out += "  </outline>\n";
        }
        out += "</outline>\n";
    }
    out += "</body>\n</opml>\n";
    return out;
}

qint64 statusKilobytes(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

// Peak resident memory of one read above the resident memory before it, and the heap the storage
// keeps, in MB and as multiples of the file's size. The peak is reset first (Linux clear_refs).
void measureReadMemory(const QString& what, const QString& path)
{
    const double fileMB = double(QFileInfo(path).size()) / (1024 * 1024);
    malloc_trim(0);
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    const bool reset = clear.open(QIODevice::WriteOnly) && clear.write("5") == 1;
    clear.close();
    const qint64 before = statusKilobytes("VmRSS:");
    const size_t heapBefore = mallinfo2().uordblks + mallinfo2().hblkhd;
    std::optional<XQOPMLStorage> storage = XQOPMLStorage::initWithContentsOfFile(path);
    const size_t heapAfter = mallinfo2().uordblks + mallinfo2().hblkhd;
    const qint64 peak = statusKilobytes("VmHWM:");
    if (!storage) {
        std::printf("%s: not read\n", qPrintable(what));
        return;
    }
    const double peakMB = double(peak - before) / 1024, retainedMB = double(heapAfter - heapBefore) / (1024 * 1024);
    std::printf("%s: file %.1f MB, %zu items; peak %.1f MB (%.2fx the file)%s, retained %.1f MB (%.2fx)\n",
                qPrintable(what), fileMB, size_t(storage->itemCount()), peakMB, peakMB / fileMB,
                reset ? "" : " [peak not reset: includes earlier use]", retainedMB, retainedMB / fileMB);
}

void runPandocReference(const QString& path)
{
    const QString pandoc = QStandardPaths::findExecutable(QStringLiteral("pandoc"));
    if (pandoc.isEmpty()) {
        std::printf("pandoc reference: skipped, pandoc is not installed (scripts/bootstrap installs it)\n");
        return;
    }
    const int limit = qEnvironmentVariableIntValue("QLY_BENCH_PANDOC_SECONDS") > 0
        ? qEnvironmentVariableIntValue("QLY_BENCH_PANDOC_SECONDS")
        : DefaultPandocSeconds;
    QProcess process;
    QElapsedTimer timer;
    timer.start();
    process.start(pandoc,
                  {QStringLiteral("-f"), QStringLiteral("opml"), QStringLiteral("-t"), QStringLiteral("native"),
                   QStringLiteral("-o"), QStringLiteral("/dev/null"), path});
    if (!process.waitForFinished(limit * 1000)) {
        process.kill();
        process.waitForFinished();
        std::printf("pandoc reference: stopped after the %d s limit\n", limit);
        return;
    }
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    std::printf("pandoc reference (pandoc -f opml -t native): %.1f s, peak %.0f MB, exit %d\n",
                double(timer.elapsed()) / 1000, double(usage.ru_maxrss) / 1024, process.exitCode());
}

void prepare()
{
    const QByteArray bytes = novelOutline();
    QFile file(outlinePath());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write the outline");
    file.close();
    measureReadMemory(QStringLiteral("100,000-item outline"), outlinePath());
    {
        const QString hugePath = scratch().filePath(QStringLiteral("huge-attribute.opml"));
        QFile huge(hugePath);
        if (!huge.open(QIODevice::WriteOnly))
            qFatal("cannot write the outline");
        huge.write("<opml><head/><body><outline text=\"");
        const QByteArray chunk(1024 * 1024, 'x');
        for (int i = 0; i < 100; ++i)
            huge.write(chunk);
        huge.write("&amp;\"/></body></opml>");
        huge.close();
        measureReadMemory(QStringLiteral("one 100 MB attribute"), hugePath);
        QFile::remove(hugePath);
    }
    if (qEnvironmentVariableIsSet("QLY_BENCH_NO_PANDOC"))
        std::printf("pandoc reference: skipped (QLY_BENCH_NO_PANDOC)\n");
    else
        runPandocReference(outlinePath());
    std::fflush(stdout);
}

const XQOPMLStorage& storage()
{
    static const XQOPMLStorage read = *XQOPMLStorage::initWithContentsOfFile(outlinePath());
    return read;
}

void BM_ReadOutline(benchmark::State& state)
{
    std::vector<double> ms;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        std::optional<XQOPMLStorage> read = XQOPMLStorage::initWithContentsOfFile(outlinePath());
        ms.push_back(double(timer.nsecsElapsed()) / 1e6);
        if (!read || read->itemCount() != qsizetype(Parts * (1 + ChaptersPerPart * (1 + ScenesPerChapter))))
            state.SkipWithError("wrong item count");
        benchmark::DoNotOptimize(read);
    }
    state.counters["median_ms"] = bench::median(ms);
    state.counters["file_MB"] = double(QFileInfo(outlinePath()).size()) / (1024 * 1024);
}
BENCHMARK(BM_ReadOutline)->Unit(benchmark::kMillisecond)->Iterations(10);

// Builds the node tree, makes titles unique at every level and sorts every children list.
void BM_BuildUniqueSort(benchmark::State& state)
{
    const XQOPMLStorage& read = storage();
    std::vector<double> ms;
    for (auto _ : state) {
        QElapsedTimer timer;
        timer.start();
        XQBaseNodePtr root = XQBaseNode::init();
        root->setChildren(XQBaseNodesFromOPMLStorage(read));
        XQOutlineController controller;
        controller.setContents(root->children());
        controller.makeAllTitlesUnique();
        root->sortAllChildrenUsingSelector(&XQBaseNode::caseInsensitiveCompare);
        ms.push_back(double(timer.nsecsElapsed()) / 1e6);
        state.PauseTiming();
        root.reset(); // destroying the tree is not part of the figure
        state.ResumeTiming();
    }
    state.counters["median_ms"] = bench::median(ms);
}
BENCHMARK(BM_BuildUniqueSort)->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace

int main(int argc, char** argv) { return bench::runBenchmarks(argc, argv, prepare); }
