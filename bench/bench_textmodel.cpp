// The text model on large texts, with Qt's QTextDocument run on the same edits as the reference.
// Texts hold one attribute run per 60 UTF-16 units. Per-operation medians are reported as counters
// (model_median_us, qt_median_us, ratio = model / qt).
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QRandomGenerator>
#include <QTextCursor>
#include <QTextDocument>
#include <algorithm>
#include <chrono>
#include <map>

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/TextStorage.h>
#include <qlyappkit/platform/text/WordCounting.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

constexpr qsizetype RunLength = 60;

QString makeText(qsizetype units)
{
    static const char* words[] = {"the",     "manuscript", "of",    "a",       "long", "novel",
                                  "written", "over",       "years", "chapter", "and",  "scene"};
    QRandomGenerator rng(42);
    QString s;
    s.reserve(units + 16);
    while (s.size() < units) {
        s += QLatin1String(words[rng.bounded(12)]);
        s += rng.bounded(15) == 0 ? QLatin1Char('\n') : QLatin1Char(' ');
    }
    s.truncate(units);
    return s;
}

Attributes runAttributes(qsizetype i)
{
    // Alternate a few dictionaries so neighbouring runs differ.
    static const Attributes a[3] = {
        {{FontAttributeName, QStringLiteral("Times 12")}},
        {{FontAttributeName, QStringLiteral("Times 12 Italic")}},
        {{FontAttributeName, QStringLiteral("Times 12")}, {UnderlineStyleAttributeName, 1}}};
    return a[i % 3];
}

const AttributedString& modelText(qsizetype units)
{
    static std::map<qsizetype, AttributedString> cache;
    auto it = cache.find(units);
    if (it != cache.end())
        return it->second;
    const QString text = makeText(units);
    AttributedString s;
    for (qsizetype i = 0; i * RunLength < units; ++i)
        s.append(text.mid(i * RunLength, RunLength), runAttributes(i));
    return cache.emplace(units, s).first->second;
}

QTextDocument* qtDocument(qsizetype units)
{
    static std::map<qsizetype, QTextDocument*> cache;
    auto it = cache.find(units);
    if (it != cache.end())
        return it->second;
    const QString text = makeText(units);
    auto* doc = new QTextDocument;
    doc->setUndoRedoEnabled(false);
    QTextCursor cursor(doc);
    QTextCharFormat formats[3];
    formats[1].setFontItalic(true);
    formats[2].setFontUnderline(true);
    for (qsizetype i = 0; i * RunLength < units; ++i)
        cursor.insertText(text.mid(i * RunLength, RunLength), formats[i % 3]);
    return cache.emplace(units, doc).first->second;
}

template <typename Fn> double timeNs(Fn&& fn)
{
    const auto t0 = Clock::now();
    fn();
    return double(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - t0).count());
}

// One-character insert then delete at random positions, on the model and on QTextDocument alike.
void BM_InsertDelete(benchmark::State& state, bool deleting)
{
    const qsizetype units = state.range(0);
    AttributedString model = modelText(units);
    QTextDocument* doc = qtDocument(units);
    QTextCursor cursor(doc);
    QRandomGenerator rng(1);
    std::vector<double> modelNs, qtNs;
    const QString x = QStringLiteral("x");
    for (auto _ : state) {
        const qsizetype pos = rng.bounded(int(units - 2)) + 1;
        if (deleting) {
            modelNs.push_back(timeNs([&] { model.deleteCharacters(Range{pos, 1}); }));
            qtNs.push_back(timeNs([&] {
                cursor.setPosition(int(pos));
                cursor.deleteChar();
            }));
            model.replaceCharacters(Range{pos, 0}, x); // keep the size steady, untimed
            cursor.insertText(x);
        } else {
            modelNs.push_back(timeNs([&] { model.replaceCharacters(Range{pos, 0}, x); }));
            qtNs.push_back(timeNs([&] {
                cursor.setPosition(int(pos));
                cursor.insertText(x);
            }));
            model.deleteCharacters(Range{pos, 1});
            cursor.setPosition(int(pos));
            cursor.deleteChar();
        }
    }
    const double m = qly::bench::median(modelNs) / 1000.0, q = qly::bench::median(qtNs) / 1000.0;
    state.counters["model_median_us"] = m;
    state.counters["qt_median_us"] = q;
    state.counters["ratio"] = q > 0 ? m / q : 0;
}

void BM_Insert(benchmark::State& state) { BM_InsertDelete(state, false); }
void BM_Delete(benchmark::State& state) { BM_InsertDelete(state, true); }

// The same keystroke through a TextStorage: edit, fixing and the did-process-editing notification.
void BM_TextStorageInsert(benchmark::State& state)
{
    const qsizetype units = state.range(0);
    TextStorage storage(modelText(units));
    QRandomGenerator rng(2);
    std::vector<double> ns;
    for (auto _ : state) {
        const qsizetype pos = rng.bounded(int(units - 2)) + 1;
        ns.push_back(timeNs([&] { storage.replaceCharacters(Range{pos, 0}, QStringLiteral("x")); }));
    }
    state.counters["median_us"] = qly::bench::median(ns) / 1000.0;
}

void BM_AttributesAtIndex(benchmark::State& state)
{
    const qsizetype units = state.range(0);
    const AttributedString& model = modelText(units);
    QRandomGenerator rng(3);
    std::vector<double> ns;
    for (auto _ : state) {
        const qsizetype pos = rng.bounded(int(units));
        Range effective;
        ns.push_back(timeNs([&] { benchmark::DoNotOptimize(model.attributes(pos, &effective)); }));
        benchmark::DoNotOptimize(effective);
    }
    state.counters["median_us"] = qly::bench::median(ns) / 1000.0;
}

void BM_WordCountWholeText(benchmark::State& state)
{
    const AttributedString& model = modelText(state.range(0));
    qsizetype words = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(words = wordCount(model, Range{0, model.length()}));
    state.counters["words"] = double(words);
}

} // namespace

BENCHMARK(BM_Insert)->Arg(1'000'000)->Arg(10'000'000)->Iterations(20000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Delete)->Arg(1'000'000)->Arg(10'000'000)->Iterations(20000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TextStorageInsert)->Arg(1'000'000)->Arg(10'000'000)->Iterations(20000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_AttributesAtIndex)->Arg(1'000'000)->Arg(10'000'000)->Iterations(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_WordCountWholeText)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return qly::bench::runBenchmarks(argc, argv); }
