// Fuzz target for the Markdown, Fountain and MultiMarkdown emphasis imports: any text must import
// without a crash, a hang or undefined behaviour, never grow, keep the model's invariants, and export
// again. The first byte chooses the options, the rest is UTF-8 text.
#include <cstdint>
#include <cstdlib>

#include <QGuiApplication>

#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/formats/markdown/MarkdownExport.h>
#include <qlyappkit/formats/markdown/MarkdownImport.h>
#include <qlyappkit/formats/markdown/MultiMarkdownImport.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

// Fonts need the GUI application: without it no face exists and no trait would ever be added.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const unsigned options = data[0] & (qly::XQMarkdownUseUnderlinesOption | qly::XQMarkdownEscapeAllCharactersOption);
    const QString input = QString::fromUtf8(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1));
    const qly::Attributes base{{qly::FontAttributeName, QVariant::fromValue(qly::Font::userFont())}};

    const qly::AttributedString text = qly::initWithMarkdownString(input, base, options);
    if (!text.checkInvariants() || text.length() > input.size())
        std::abort();
    const QString markdown = qly::markdownStringWithOptions(text, options);
    // Export only adds markers and escapes.
    if (markdown.size() < text.length())
        std::abort();
    if (!qly::initWithMarkdownString(markdown, base, options).checkInvariants())
        std::abort();

    const qly::AttributedString older =
        qly::attributedStringByConvertingMultiMarkdown(qly::AttributedString(input, base));
    if (!older.checkInvariants() || older.length() > input.size())
        std::abort();
    return 0;
}
