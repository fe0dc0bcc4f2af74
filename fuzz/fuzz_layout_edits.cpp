// Fuzz target for the layout engine: the bytes are a text (with control characters, form feeds,
// right-to-left and CJK letters), container sizes and a list of edits. Layout must never crash or
// hang, and after every edit the incremental layout must equal a fresh layout of the same text.
#include <QGuiApplication>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include <qlyappkit/platform/layout/LayoutManager.h>
#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;

namespace {

// Pages are added as the text needs them, up to a bound: one character per page at worst.
constexpr size_t MaximumPages = 400;

struct Reader {
    const std::uint8_t* data;
    std::size_t size;
    std::size_t at = 0;
    bool done() const { return at >= size; }
    unsigned byte() { return at < size ? data[at++] : 0; }
};

QChar characterFor(unsigned b)
{
    static const char16_t alphabet[] = {u'a',   u'b',   u' ',   u' ',   u'\n',  u'\r', u'\f', u'\t',  0x2028,
                                        0x2029, 0x05D0, 0x0627, 0x6587, 0x5B57, u'W',  u'.',  0x0001, 0x0085};
    return QChar(alphabet[b % std::size(alphabet)]);
}

Attributes attributesFor(unsigned b)
{
    ParagraphStyle style;
    style.setAlignment(TextAlignment(b % 5));
    style.setFirstLineHeadIndent(double(b % 3) * 20);
    style.setParagraphSpacingBefore(double(b % 4) * 5);
    style.setLineHeightMultiple((b & 16) ? 1.5 : 0);
    style.setMaximumLineHeight((b & 32) ? 8 : 0);
    return Attributes{{FontAttributeName,
                       QVariant::fromValue(Font((b & 64) ? QStringLiteral("Helvetica") : QStringLiteral("Times"),
                                                8 + double(b % 7) * 3))},
                      {ParagraphStyleAttributeName, QVariant::fromValue(style)}};
}

struct PageAdder : LayoutManagerDelegate {
    QSizeF size;
    void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& m, TextContainer* c, bool atEnd) override
    {
        if (!atEnd && c == m.textContainers().back() && m.textContainers().size() < MaximumPages)
            m.addTextContainer(std::make_unique<TextContainer>(size));
    }
};

std::vector<std::tuple<qsizetype, qsizetype, int, double>> snapshot(LayoutManager& manager)
{
    std::vector<std::tuple<qsizetype, qsizetype, int, double>> lines;
    manager.ensureLayoutForAllText();
    for (TextContainer* c : manager.textContainers()) {
        for (const LineFragment& line : manager.lineFragmentsForTextContainer(c))
            lines.emplace_back(line.glyphRange.location, line.glyphRange.length, line.containerIndex, line.rect.y());
    }
    return lines;
}

} // namespace

// The font database of the process-wide application (fontconfig, FreeType, HarfBuzz caches under Qt)
// is still held at exit; that is not a leak of the engine.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libfreetype\nleak:libharfbuzz\nleak:libQt6Gui\nleak:libQt6Core\n";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size > 2048)
        return 0;
    Reader in{data, size};
    PageAdder adder;
    adder.size = QSizeF(double(in.byte() % 200) + 1, double(in.byte() % 200) + 1);
    AttributedString text;
    const unsigned length = in.byte() * 2;
    for (unsigned i = 0; i < length && !in.done(); ++i) {
        const unsigned b = in.byte();
        text.append(QString(characterFor(b)), attributesFor(b >> 3));
    }
    TextStorage storage(text);
    LayoutManager manager;
    manager.setDelegate(&adder);
    manager.addTextContainer(std::make_unique<TextContainer>(adder.size));
    manager.setTextStorage(&storage);
    manager.ensureLayoutForAllText();
    while (!in.done()) {
        const unsigned op = in.byte();
        const qsizetype at = storage.length() ? qsizetype(in.byte()) % (storage.length() + 1) : 0;
        if (op % 3 == 0 && at < storage.length())
            storage.deleteCharacters(Range{at, std::min<qsizetype>(qsizetype(op % 7) + 1, storage.length() - at)});
        else if (op % 3 == 1 && at < storage.length())
            storage.setAttributes(attributesFor(op), Range{at, 1});
        else
            storage.replaceCharacters(Range{at, 0}, QString(characterFor(op >> 2)));
        if (op & 1)
            continue; // let edits pile up before layout now and then
        TextStorage fresh(storage.attributedString());
        LayoutManager freshManager;
        PageAdder freshAdder;
        freshAdder.size = adder.size;
        freshManager.setDelegate(&freshAdder);
        freshManager.addTextContainer(std::make_unique<TextContainer>(adder.size));
        freshManager.setTextStorage(&fresh);
        if (snapshot(manager) != snapshot(freshManager))
            std::abort();
        freshManager.setDelegate(nullptr);
    }
    manager.setDelegate(nullptr);
    return 0;
}
