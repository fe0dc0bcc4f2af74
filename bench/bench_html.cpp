// HTML pages: a 200k-word manuscript with 2,000 styled runs and nested lists written as a page
// (target for the whole qly process: 150 ms, see bench/html_vs_pandoc.sh), and what each embedded
// image adds, by kind: PNG and JPEG written as they are, BMP and TIFF encoded as PNG (target 10 ms an
// image, encoding included). Reports medians in ms.
#include "BenchSupport.h"

#include <benchmark/benchmark.h>

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <chrono>
#include <vector>

#include <qlyappkit/formats/html/HTMLExport.h>
#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/platform/html/HTMLWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>

using namespace qly;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int ImagesPerPage = 10;

AttributedString makeManuscript(int words, int styledRuns)
{
    static const char* vocabulary[] = {"the",     "manuscript", "of",    "a",       "long", "novel",
                                       "written", "over",       "years", "chapter", "and",  "scene"};
    QRandomGenerator rng(7);
    const Font times = Font::fromFamily(QStringLiteral("Times"), 12);
    const Attributes body{{FontAttributeName, QVariant::fromValue(times)}};
    Attributes bold{
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12, BoldFontMask))}};
    Attributes italic{
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12, ItalicFontMask))}};
    ParagraphStyle listed;
    listed.setTextLists({TextList{QStringLiteral("{disc}")}});
    Attributes item = body;
    item.insert(ParagraphStyleAttributeName, QVariant::fromValue(listed));
    AttributedString text;
    QString chunk;
    const int every = words / styledRuns;
    for (int w = 1; w <= words; ++w) {
        const QString word = QLatin1String(vocabulary[rng.bounded(12)]);
        if (w % every == 0) {
            text.append(chunk, body);
            chunk.clear();
            text.append(word, (w / every) % 2 ? bold : italic);
            chunk += QLatin1Char(' ');
        } else {
            chunk += word + (w % 80 == 0 ? QLatin1Char('\n') : QLatin1Char(' '));
        }
        if (w % 8000 == 0) { // now and then a short list
            text.append(chunk, body);
            chunk.clear();
            text.append(QStringLiteral("\t\u2022\tan item of a list\n\t\u2022\tand another\n"), item);
        }
    }
    text.append(chunk, body);
    return text;
}

QByteArray imageBytes(const char* format, int seed)
{
    // A drawing with gradients and shapes, like a figure or a scan: not a flat colour.
    QImage image(640, 480, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, 640, 480);
    gradient.setColorAt(0, QColor::fromHsv(seed * 37 % 360, 120, 240));
    gradient.setColorAt(1, QColor::fromHsv(seed * 71 % 360, 200, 120));
    painter.fillRect(image.rect(), gradient);
    QRandomGenerator rng{quint32(seed)};
    for (int i = 0; i < 60; ++i) {
        painter.setBrush(QColor::fromRgb(rng.generate()));
        painter.drawEllipse(QPoint(int(rng.bounded(640)), int(rng.bounded(480))), 20 + int(rng.bounded(60)),
                            10 + int(rng.bounded(40)));
    }
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format);
    return bytes;
}

void BM_HTMLPage(benchmark::State& state)
{
    const AttributedString text = makeManuscript(200'000, 2'000);
    const QVariantMap attributes{{XQHTMLCenteredBodyTableWidthAttribute, 640}};
    std::vector<double> ms;
    qsizetype bytes = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        const QByteArray page = HTMLDataFromRange(text, Range{0, text.length()}, attributes);
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        bytes = page.size();
        benchmark::DoNotOptimize(page.data());
    }
    state.counters["median_ms"] = qly::bench::median(ms);
    state.counters["html_bytes"] = double(bytes);
}

// Arg: 0 PNG, 1 JPEG (both written as they are), 2 BMP, 3 TIFF (encoded as PNG).
void BM_HTMLImages(benchmark::State& state)
{
    static const char* formats[] = {"PNG", "JPEG", "BMP", "TIFF"};
    static const char* extensions[] = {"png", "jpg", "bmp", "tiff"};
    const int kind = int(state.range(0));
    const AttributedString words = makeManuscript(10'000, 100);
    AttributedString pictured = words;
    for (int i = 0; i < ImagesPerPage; ++i) {
        const TextAttachment picture(QStringLiteral("figure-%1.%2").arg(i).arg(QLatin1String(extensions[kind])),
                                     imageBytes(formats[kind], i));
        pictured.insert(AttributedString(QString(QChar(AttachmentCharacter)),
                                         {{AttachmentAttributeName, QVariant::fromValue(picture)}}),
                        pictured.length() * i / ImagesPerPage);
    }
    auto timed = [](const AttributedString& text) {
        QTemporaryDir dir; // a fresh folder: every image is written
        const QVariantMap attributes{{XQHTMLImagesFolderDocumentAttribute, dir.path()},
                                     {XQHTMLImagesFolderSubpathDocumentAttribute, QStringLiteral("Images")},
                                     {XQHTMLCenteredBodyTableWidthAttribute, 400}};
        const auto start = Clock::now();
        const QByteArray page = HTMLDataFromRange(text, Range{0, text.length()}, attributes);
        benchmark::DoNotOptimize(page.data());
        return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    };
    std::vector<double> with, without;
    for (auto _ : state) {
        with.push_back(timed(pictured));
        without.push_back(timed(words));
    }
    state.counters["ms_per_image"] = (qly::bench::median(with) - qly::bench::median(without)) / ImagesPerPage;
    state.counters["page_ms"] = qly::bench::median(without);
}

} // namespace

BENCHMARK(BM_HTMLPage)->Iterations(7)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HTMLImages)->DenseRange(0, 3)->Iterations(5)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) { return qly::bench::runBenchmarks(argc, argv); }
