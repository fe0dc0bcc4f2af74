// The note conversions on a long manuscript: a generated 200,000-word text holding 2,000 notes of
// each kind (annotations, inline footnotes, preserve-formatting runs, keep-with-next paragraphs,
// linked comments and inline comments). Reading tags is also timed on hostile texts: 200,000
// annotation tags without their colour parts, in either colour form, and 200,000 nested tags.
// Reported per run as counters: median_ms over the runs, and the text's size.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QRandomGenerator>
#include <algorithm>
#include <chrono>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/notes/InlineNotes.h>
#include <qlyappkit/text/notes/NoteTags.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int Words = 200'000;
constexpr int NotesPerKind = 2'000;

// Words in paragraphs of about 40; every note kind is spread evenly over the text.
const AttributedString& manuscript()
{
    static const AttributedString text = [] {
        static const char* words[] = {"the",     "manuscript", "of",    "a",       "long", "novel",
                                      "written", "over",       "years", "chapter", "and",  "scene"};
        QRandomGenerator rng(42);
        const Attributes body{{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12))}};
        const int stride = Words / NotesPerKind; // one note of each kind per 100 words
        AttributedString out;
        QString pending;
        auto flush = [&]() {
            out.append(pending, body);
            pending.clear();
        };
        auto note = [&](const QString& s, const QString& name, const QVariant& value) {
            flush();
            Attributes a = body;
            a.insert(name, value);
            out.append(s, a);
        };
        for (int w = 0; w < Words; ++w) {
            pending += QLatin1String(words[rng.bounded(12)]);
            pending += w % 40 == 39 ? QLatin1Char('\n') : QLatin1Char(' ');
            switch (w % stride) {
            case 10:
                note(QStringLiteral("an annotation to check "), XQAnnotationAttributeName,
                     QVariant::fromValue(Color(0.8, 0.1, 0.1)));
                break;
            case 30:
                note(QStringLiteral("A footnote with its source."), XQFootnoteAttributeName, 1);
                pending += QLatin1Char(' ');
                break;
            case 50:
                note(QStringLiteral("kept as typed "), XQPreserveFormattingAttributeName, true);
                break;
            case 70:
                note(QStringLiteral("anchor "), XQCommentAttributeName,
                     variantFromComment(XQComment::create(AttributedString(QStringLiteral("margin remark")))));
                break;
            case 90:
                note(QStringLiteral(" inline comment "), XQLinkedCommentAttributeName,
                     QVariant::fromValue(Color(1, 1, 0)));
                break;
            default:
                break;
            }
        }
        flush();
        // Keep-with-next over 2,000 of the 5,000 paragraphs.
        const QString s = out.string();
        qsizetype start = 0;
        int paragraph = 0, kept = 0;
        while (start < s.size() && kept < NotesPerKind) {
            qsizetype end = s.indexOf(u'\n', start);
            if (end < 0)
                end = s.size();
            if (paragraph++ % 5 < 2) {
                out.addAttribute(XQKeepWithNextAttributeName, true, Range::fromBounds(start, end));
                ++kept;
            }
            start = end + 1;
        }
        return out;
    }();
    return text;
}

template <typename Fn> double timeMs(Fn&& fn)
{
    const auto t0 = Clock::now();
    fn();
    return std::chrono::duration<double, std::milli>(Clock::now() - t0).count();
}

// Attributes to tags and back again, as an export followed by an import does.
void BM_AttributesToTagsToAttributes(benchmark::State& state)
{
    const AttributedString& text = manuscript();
    std::vector<double> total, toTags, toAttributes;
    for (auto _ : state) {
        AttributedString tagged, back;
        toTags.push_back(timeMs([&] { tagged = attributedStringByConvertingAttributesToTags(text); }));
        toAttributes.push_back(timeMs([&] { back = attributedStringByConvertingTagsToAttributes(tagged); }));
        total.push_back(toTags.back() + toAttributes.back());
        benchmark::DoNotOptimize(back);
        if (back.length() != text.length())
            state.SkipWithError("the round trip changed the text");
    }
    state.counters["median_ms"] = qly::bench::median(total);
    state.counters["to_tags_ms"] = qly::bench::median(toTags);
    state.counters["to_attributes_ms"] = qly::bench::median(toAttributes);
    state.counters["units"] = double(text.length());
}

void BM_InlineOutput(benchmark::State& state)
{
    const AttributedString& text = manuscript();
    std::vector<double> ms;
    for (auto _ : state) {
        AttributedString out;
        ms.push_back(
            timeMs([&] { out = attributedStringWithAnnotationsInline(text, true, true, false, QVariantMap()); }));
        benchmark::DoNotOptimize(out);
    }
    state.counters["median_ms"] = qly::bench::median(ms);
    state.counters["units"] = double(text.length());
}

// Texts whose tags a reader must not search beyond their own closing marker.
enum HostileText { MalformedDecimal, MalformedHexadecimal, NestedAnnotations };
constexpr int HostileTags = 200'000;

QString hostileText(HostileText kind, bool newlines)
{
    const QString lineFeed = newlines ? QStringLiteral("\n") : QString();
    switch (kind) {
    case MalformedDecimal:
        return (lineFeed + QStringLiteral("{\\QLRY_ANNOT \\COLOR={\\R=1 x\\END_QLRY_ANNOT}") + lineFeed)
            .repeated(HostileTags);
    case MalformedHexadecimal:
        return (lineFeed + QStringLiteral("{\\QLRY_ANNOT \\COLOR={#FF0000 x\\END_QLRY_ANNOT}") + lineFeed)
            .repeated(HostileTags);
    case NestedAnnotations:
        return (lineFeed + QStringLiteral("{\\QLRY_ANNOT \\COLOR={\\R=1\\G=0\\B=0} \\TEXT=a")).repeated(HostileTags)
            + (QStringLiteral("b\\END_QLRY_ANNOT}") + lineFeed).repeated(HostileTags);
    }
    return {};
}

// Arguments: the hostile text, and whether the reader removes the line feeds around annotations (the
// text then has them).
void BM_ReadHostileTags(benchmark::State& state)
{
    const auto kind = HostileText(state.range(0));
    const bool newlines = state.range(1) != 0;
    const AttributedString text(hostileText(kind, newlines));
    std::vector<double> ms;
    for (auto _ : state) {
        AttributedString out;
        ms.push_back(timeMs([&] {
            out = attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(text, newlines);
        }));
        benchmark::DoNotOptimize(out);
        if (kind != NestedAnnotations && out.length() != text.length())
            state.SkipWithError("a malformed tag was read");
    }
    state.counters["median_ms"] = qly::bench::median(ms);
    state.counters["units"] = double(text.length());
}

} // namespace

BENCHMARK(BM_ReadHostileTags)
    ->ArgNames({"text", "newlines"})
    ->ArgsProduct({{MalformedDecimal, MalformedHexadecimal, NestedAnnotations}, {0, 1}})
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AttributesToTagsToAttributes)->Iterations(9)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InlineOutput)->Iterations(9)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return qly::bench::runBenchmarks(argc, argv); }
