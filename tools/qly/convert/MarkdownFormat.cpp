// Markdown and Fountain emphasis (both use the same markers), and the older MultiMarkdown rules.
#include <qlyappkit/formats/markdown/MarkdownConstants.h>
#include <qlyappkit/formats/markdown/MarkdownExport.h>
#include <qlyappkit/formats/markdown/MarkdownImport.h>
#include <qlyappkit/formats/markdown/MultiMarkdownImport.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

#include "ConvertFormats.h"

namespace qly::tool {

namespace {

const QString UnderlinesOption = QStringLiteral("underlines");
const QString EscapeAllOption = QStringLiteral("escape-all");

unsigned markdownOptions(const CommandLine& line)
{
    unsigned options = 0;
    if (line.isSet(UnderlinesOption))
        options |= XQMarkdownUseUnderlinesOption;
    if (line.isSet(EscapeAllOption))
        options |= XQMarkdownEscapeAllCharactersOption;
    return options;
}

} // namespace

QString textFromUTF8(const QByteArray& bytes)
{
    QString text = QString::fromUtf8(bytes);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    return text;
}

DocumentFormatHandler markdownFormatHandler()
{
    DocumentFormatHandler handler;
    handler.names = {QStringLiteral("markdown"), QStringLiteral("md"), QStringLiteral("fountain")};
    handler.extensions = {QStringLiteral("md"), QStringLiteral("markdown"), QStringLiteral("fountain")};
    handler.options = {
        {UnderlinesOption,
         QStringLiteral("markdown: \"__\" is a double underline and \"_\" no emphasis; underlines "
                        "are written with underscores.")},
        {EscapeAllOption, QStringLiteral("markdown: a backslash escapes any of \\`*_{}[]()#+-.! on reading.")},
    };
    handler.read = [](const QByteArray& bytes, const QString& inputPath, const CommandLine& line) {
        const Attributes base{{FontAttributeName, QVariant::fromValue(Font::userFont())}};
        return std::optional<ConvertDocument>(
            ConvertDocument{initWithMarkdownString(textFromUTF8(bytes), base, markdownOptions(line)), {}, inputPath});
    };
    handler.write = [](const ConvertDocument& document, const QString& outputPath, const CommandLine& line) {
        return writeOutput(outputPath, markdownStringWithOptions(document.text, markdownOptions(line)).toUtf8())
            ? ExitSuccess
            : ExitFailure;
    };
    return handler;
}

DocumentFormatHandler multiMarkdownFormatHandler()
{
    DocumentFormatHandler handler;
    handler.names = {QStringLiteral("multimarkdown"), QStringLiteral("mmd")};
    handler.extensions = {QStringLiteral("mmd")};
    handler.read = [](const QByteArray& bytes, const QString& inputPath, const CommandLine&) {
        AttributedString text(textFromUTF8(bytes), {{FontAttributeName, QVariant::fromValue(Font::userFont())}});
        return std::optional<ConvertDocument>(
            ConvertDocument{attributedStringByConvertingMultiMarkdown(text), {}, inputPath});
    };
    return handler;
}

} // namespace qly::tool
