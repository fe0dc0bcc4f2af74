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
    QRandomGenerator rng(7);
    const Attributes body{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}};
    const int footnotes = 2000 * scale, comments = 500 * scale, annotations = 200 * scale;
    const int bookmarks = 100 * scale, sections = 50 * scale;
    const int features = footnotes + comments + annotations + bookmarks + sections;
    const AttributedString text = qly::bench::manuscriptWithFeatures(
        200'000 * scale, features, rng, body, [&](AttributedString& out, int index) {
            const int k = index % 29;
            const int number = index + 1;
            Attributes a = body;
            if (k < 16) {
                a.insert(XQFootnoteAttributeName, 1);
                out.append(QStringLiteral("A footnote with some words in it."), a);
            } else if (k < 20) {
                auto c = XQComment::create(AttributedString(QStringLiteral("A comment on this."), body));
                a.insert(XQCommentAttributeName, variantFromComment(c));
                out.append(QStringLiteral("anchor words"), a);
            } else if (k < 22) {
                a.insert(XQAnnotationAttributeName, QVariant::fromValue(Color(1, 0, 0)));
                out.append(QStringLiteral("an annotation"), a);
            } else if (k < 23) {
                a.insert(XQRTFBookmarkAttributeName, QStringLiteral("Mark%1").arg(number));
                out.append(QStringLiteral("marked"), a);
            } else if (k < 24) {
                out.append(QStringLiteral("\n"), body);
                a.insert(XQRTFSectionInfoAttributeName,
                         QVariantMap{{XQRTFSectionTitle, QStringLiteral("Section %1").arg(number)}});
                out.append(QStringLiteral("Section heading\n"), a);
            } else {
                a.insert(XQFootnoteAttributeName, 2);
                out.append(QStringLiteral("Another note."), a);
            }
        });
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
