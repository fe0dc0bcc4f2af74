// Text comparison on two versions of a 100k-word text with 1% of the words changed: the whole `qly diff`
// process by words and by paragraphs, the same comparisons as library calls, and, as references on
// the same files, wdiff and `git diff --no-index --word-diff` (skipped with a message when missing).
// Preparing the chunks is also timed at 10k, 100k and 1M words to show it grows linearly.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <qlyappkit/formats/comparison/DiffPreparation.h>
#include <qlyappkit/formats/comparison/TextComparison.h>

using namespace qly;

namespace {

const QString Qly = QStringLiteral(QLY_BINARY_DIR "/tools/qly/qly");

struct Inputs {
    QString older, newer;
    QTemporaryDir dir;
    QString oldPath, newPath;
};
Inputs* g_inputs = nullptr;

// Prose of `words` words: sentences of a dozen words, paragraphs of about eighty; in the newer version
// one word in a hundred is replaced.
std::pair<QString, QString> makeVersions(int words)
{
    static const char* vocabulary[] = {"the",    "harbour", "ship",   "sailed", "before", "dawn",    "while",  "town",
                                       "was",    "still",   "asleep", "only",   "baker",  "saw",     "it",     "go",
                                       "Mara",   "stood",   "at",     "rail",   "and",    "watched", "lights", "fall",
                                       "behind", "captain", "quiet",  "man",    "spoke",  "crew",    "short",  "words"};
    QRandomGenerator random(42);
    QString older, newer;
    older.reserve(words * 7);
    newer.reserve(words * 7);
    for (int w = 0; w < words; ++w) {
        const QLatin1String word(vocabulary[random.bounded(32)]);
        const QString separator = w % 80 == 79 ? QStringLiteral(".\n")
            : w % 12 == 11                     ? QStringLiteral(", ")
                                               : QStringLiteral(" ");
        older += word;
        newer += random.bounded(100) == 0 ? QStringLiteral("changed") : QString(word);
        older += separator;
        newer += separator;
    }
    return {older, newer};
}

void prepare()
{
    g_inputs = new Inputs;
    std::tie(g_inputs->older, g_inputs->newer) = makeVersions(100'000);
    g_inputs->oldPath = g_inputs->dir.filePath(QStringLiteral("old.txt"));
    g_inputs->newPath = g_inputs->dir.filePath(QStringLiteral("new.txt"));
    for (const auto& [path, text] :
         {std::pair{g_inputs->oldPath, g_inputs->older}, {g_inputs->newPath, g_inputs->newer}}) {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write(text.toUtf8());
    }
}

// Runs a program to its end per iteration, its output discarded; skips when it is not there.
void runProgram(benchmark::State& state, const QString& program, const QStringList& arguments)
{
    if (program.isEmpty() || !QFile::exists(program)) {
        state.SkipWithError("not installed (scripts/bootstrap installs it): reference skipped");
        return;
    }
    for (auto _ : state) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.start(program, arguments);
        if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() > 1) {
            state.SkipWithError("the program failed");
            return;
        }
    }
}

void BM_QlyDiffProcessWords(benchmark::State& state)
{
    runProgram(state, Qly,
               {QStringLiteral("diff"), g_inputs->oldPath, g_inputs->newPath, QStringLiteral("--by"),
                QStringLiteral("words"), QStringLiteral("-o"), QStringLiteral("-")});
}

void BM_QlyDiffProcessParagraphs(benchmark::State& state)
{
    runProgram(state, Qly,
               {QStringLiteral("diff"), g_inputs->oldPath, g_inputs->newPath, QStringLiteral("--by"),
                QStringLiteral("paragraphs"), QStringLiteral("-o"), QStringLiteral("-")});
}

void BM_QlyDiffProcessWordsToRTF(benchmark::State& state)
{
    runProgram(state, Qly,
               {QStringLiteral("diff"), g_inputs->oldPath, g_inputs->newPath, QStringLiteral("--by"),
                QStringLiteral("words"), QStringLiteral("-o"), QStringLiteral("-"), QStringLiteral("-t"),
                QStringLiteral("rtf")});
}

void BM_ReferenceWdiff(benchmark::State& state)
{
    runProgram(state, QStandardPaths::findExecutable(QStringLiteral("wdiff")), {g_inputs->oldPath, g_inputs->newPath});
}

void BM_ReferenceGitWordDiff(benchmark::State& state)
{
    runProgram(state, QStandardPaths::findExecutable(QStringLiteral("git")),
               {QStringLiteral("diff"), QStringLiteral("--no-index"), QStringLiteral("--word-diff"), g_inputs->oldPath,
                g_inputs->newPath});
}

void BM_CompareInProcess(benchmark::State& state)
{
    const AttributedString older(g_inputs->older), newer(g_inputs->newer);
    const XQDiffType type = XQDiffType(state.range(0));
    for (auto _ : state) {
        std::optional<AttributedString> merged = attributedStringShowingDifferencesFrom(newer, older, type);
        if (!merged) {
            state.SkipWithError("the comparison failed");
            return;
        }
        benchmark::DoNotOptimize(merged->length());
    }
}

void BM_PrepareWords(benchmark::State& state)
{
    const auto [older, newer] = makeVersions(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(stringSeparatedForDiffByComparisonToString(newer, older, XQDiffTypeWords).size());
    state.SetComplexityN(state.range(0));
}

void BM_PrepareParagraphsClausesWords(benchmark::State& state)
{
    const auto [older, newer] = makeVersions(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(stringSeparatedForDiffByComparisonToString(newer, older, 7).size());
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(BM_QlyDiffProcessWords)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_QlyDiffProcessParagraphs)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_QlyDiffProcessWordsToRTF)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ReferenceWdiff)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ReferenceGitWordDiff)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_CompareInProcess)
    ->Arg(XQDiffTypeWords)
    ->Arg(XQDiffTypeParagraphs)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_PrepareWords)
    ->RangeMultiplier(10)
    ->Range(10'000, 1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(BM_PrepareParagraphsClausesWords)
    ->RangeMultiplier(10)
    ->Range(10'000, 1'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

int main(int argc, char** argv)
{
    const int status = qly::bench::runBenchmarks(argc, argv, prepare);
    delete g_inputs;
    return status;
}
