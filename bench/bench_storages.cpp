// Typing into the framework's text storages: one character at a time at random places, each keystroke
// timed as a whole (the edit, the word count, the statistics notification and attribute fixing,
// routed to the component and mirrored for the aggregate). Per-keystroke medians and 90th
// percentiles are reported as counters (median_us, p90_us).
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QRandomGenerator>
#include <algorithm>
#include <chrono>
#include <map>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/storages/XQAggregateTextStorage.h>
#include <qlyappkit/text/storages/XQTextStorage.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int Keystrokes = 10000;

/// Prose of the given number of words: paragraphs of 40 to 160 words, an italic phrase now and then,
/// `comments` comments anchored on single words spread evenly.
AttributedString manuscript(int words, int comments, quint32 seed)
{
    static const char* vocabulary[] = {"the",     "manuscript", "of",      "a",       "long",   "novel",
                                       "written", "over",       "years",   "chapter", "and",    "scene",
                                       "she",     "said",       "quietly", "before",  "morning"};
    QRandomGenerator rng(seed);
    const Attributes body{{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12))}};
    const Attributes italic{
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12, ItalicFontMask))}};
    AttributedString text;
    QString pending;
    int paragraphLeft = 40 + int(rng.bounded(120));
    const int commentEvery = comments > 0 ? words / comments : words + 1;
    std::vector<Range> anchors;
    for (int w = 0; w < words; ++w) {
        const QString word = QLatin1String(vocabulary[rng.bounded(int(std::size(vocabulary)))]);
        if (rng.bounded(50) == 0 || w % commentEvery == commentEvery / 2) {
            text.append(pending, body);
            pending.clear();
            if (w % commentEvery == commentEvery / 2)
                anchors.push_back(Range{text.length(), word.size()});
            text.append(word, rng.bounded(2) ? italic : body);
        } else {
            pending += word;
        }
        if (--paragraphLeft == 0) {
            pending += QStringLiteral(".\n");
            paragraphLeft = 40 + int(rng.bounded(120));
        } else {
            pending += QLatin1Char(' ');
        }
    }
    text.append(pending, body);
    for (const Range& anchor : anchors) {
        const XQCommentPtr comment = XQComment::create(AttributedString(QStringLiteral("A note on this word")));
        text.addAttribute(XQCommentAttributeName, variantFromComment(comment), anchor);
        text.addAttribute(LinkAttributeName, variantFromComment(comment), anchor);
        text.addAttribute(ToolTipAttributeName, comment->tooltipString(), anchor);
    }
    return text;
}

struct Figures {
    double median = 0, p90 = 0;
};

Figures figures(std::vector<double>& ns)
{
    return Figures{qly::bench::median(ns) / 1000.0, qly::bench::quantile(ns, 0.9) / 1000.0};
}

QChar typedCharacter(QRandomGenerator& rng)
{
    return rng.bounded(6) == 0 ? QLatin1Char(' ') : QChar(u'a' + char16_t(rng.bounded(26)));
}

template <typename Fn> double timeNs(Fn&& fn)
{
    const auto t0 = Clock::now();
    fn();
    return double(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - t0).count());
}

void report(benchmark::State& state, std::vector<double>& ns)
{
    const Figures f = figures(ns);
    state.counters["median_us"] = f.median;
    state.counters["p90_us"] = f.p90;
}

void BM_TextStorageTyping(benchmark::State& state)
{
    const int words = int(state.range(0));
    XQTextStorage storage(manuscript(words, 1000, 7));
    QRandomGenerator rng(11);
    std::vector<double> ns;
    ns.reserve(Keystrokes);
    qsizetype words0 = storage.wordCount();
    for (auto _ : state) {
        for (int k = 0; k < Keystrokes; ++k) {
            const qsizetype pos = qsizetype(rng.bounded(int(storage.length())));
            const QString typed(typedCharacter(rng));
            ns.push_back(timeNs([&] { storage.replaceCharacters(Range{pos, 0}, typed); }));
        }
    }
    report(state, ns);
    state.counters["words"] = double(words0);
    state.counters["comments"] = double(storage.comments().size());
}

void BM_AggregateTyping(benchmark::State& state)
{
    const int words = int(state.range(0));
    constexpr int Components = 200;
    std::vector<XQTextComponent> components;
    for (int i = 0; i < Components; ++i) {
        auto storage = std::make_shared<XQTextStorage>(manuscript(words / Components, 5, quint32(100 + i)));
        components.push_back(XQTextComponent{QStringLiteral("Chapter %1").arg(i + 1), storage, i % 10 == 0});
    }
    XQAggregateTextStorage aggregate;
    aggregate.setComponents(components);
    QRandomGenerator rng(12);
    std::vector<double> ns;
    ns.reserve(Keystrokes);
    for (auto _ : state) {
        for (int k = 0; k < Keystrokes;) {
            const Range at{qsizetype(rng.bounded(int(aggregate.length()))), 0};
            const QString typed(typedCharacter(rng));
            if (!aggregate.rangeIsEditable(at, typed))
                continue;
            ns.push_back(timeNs([&] { aggregate.replaceCharacters(at, typed); }));
            ++k;
        }
    }
    report(state, ns);
    state.counters["words"] = double(aggregate.wordCount());
}

} // namespace

BENCHMARK(BM_TextStorageTyping)->Arg(200'000)->Arg(1'000'000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AggregateTyping)->Arg(200'000)->Arg(1'000'000)->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return qly::bench::runBenchmarks(argc, argv); }
