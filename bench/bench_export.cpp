// The extended RTF export of a long manuscript: 200k words with 2,000 footnotes, 500 linked comments,
// 200 annotations, 100 bookmarks, 50 sections and headers and footers (Arg 1), and the same document
// twice over (Arg 2), to show that the passes grow linearly. Reports the median export in ms.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QRandomGenerator>
#include <algorithm>
#include <chrono>
#include <vector>

#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>
#include <qlyappkit/text/notes/NoteConversions.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

AttributedString makeManuscript(int scale)
{
    static const char* words[] = {"the",     "manuscript", "of",    "a",       "long", "novel",
                                  "written", "over",       "years", "chapter", "and",  "scene"};
    QRandomGenerator rng(7);
    const Attributes body{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}};
    const int totalWords = 200'000 * scale;
    const int footnotes = 2000 * scale, comments = 500 * scale, annotations = 200 * scale;
    const int bookmarks = 100 * scale, sections = 50 * scale;
    AttributedString text;
    QString chunk;
    int feature = 0;
    const int features = footnotes + comments + annotations + bookmarks + sections;
    const int wordsPerFeature = totalWords / features;
    for (int w = 0; w < totalWords; ++w) {
        chunk += QLatin1String(words[rng.bounded(12)]);
        chunk += rng.bounded(40) == 0 ? QLatin1Char('\n') : QLatin1Char(' ');
        if (w % wordsPerFeature != wordsPerFeature - 1 || feature >= features)
            continue;
        text.append(chunk, body);
        chunk.clear();
        const int k = feature++ % 29;
        Attributes a = body;
        if (k < 16) {
            a.insert(XQFootnoteAttributeName, 1);
            text.append(QStringLiteral("A footnote with some words in it."), a);
        } else if (k < 20) {
            auto c = XQComment::create(AttributedString(QStringLiteral("A comment on this."), body));
            a.insert(XQCommentAttributeName, variantFromComment(c));
            text.append(QStringLiteral("anchor words"), a);
        } else if (k < 22) {
            a.insert(XQAnnotationAttributeName, QVariant::fromValue(Color(1, 0, 0)));
            text.append(QStringLiteral("an annotation"), a);
        } else if (k < 23) {
            a.insert(XQRTFBookmarkAttributeName, QStringLiteral("Mark%1").arg(feature));
            text.append(QStringLiteral("marked"), a);
        } else if (k < 24) {
            text.append(QStringLiteral("\n"), body);
            a.insert(XQRTFSectionInfoAttributeName,
                     QVariantMap{{XQRTFSectionTitle, QStringLiteral("Section %1").arg(feature)}});
            text.append(QStringLiteral("Section heading\n"), a);
        } else {
            a.insert(XQFootnoteAttributeName, 2);
            text.append(QStringLiteral("Another note."), a);
        }
    }
    text.append(chunk, body);
    return attributedStringByConvertingLinkedCommentsToInlineAttributesWithCommentOption(text, InlineLinkedComments);
}

void BM_ExtendedRTFExport(benchmark::State& state)
{
    const AttributedString text = makeManuscript(int(state.range(0)));
    const QVariantMap options{{XQRTFHeaderString, QStringLiteral("<$sectiontitle>\t<$p>")},
                              {XQRTFFooterString, QStringLiteral("Draft")}};
    const QVariantMap documentAttributes{{AuthorDocumentAttribute, QStringLiteral("Bench")}};
    std::vector<double> ms;
    qsizetype bytes = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        const QByteArray rtf = extendedRTFFromRange(text, Range{0, text.length()}, documentAttributes, options);
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        bytes = rtf.size();
        benchmark::DoNotOptimize(rtf.data());
    }
    state.counters["median_ms"] = qly::bench::median(ms);
    state.counters["rtf_bytes"] = double(bytes);
    state.counters["text_units"] = double(text.length());
}

} // namespace

BENCHMARK(BM_ExtendedRTFExport)->Arg(1)->Arg(2)->Iterations(5)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return qly::bench::runBenchmarks(argc, argv); }
