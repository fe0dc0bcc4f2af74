// Plain-text screenplays: elements typed from indentation and capitals, formatted on a Letter page,
// and optionally cut into one document per scene (or per any element type).
#include <qlyappkit/formats/screenplay/ScreenplayElements.h>
#include <qlyappkit/formats/screenplay/ScreenplayPage.h>
#include <qlyappkit/formats/screenplay/ScreenplayText.h>

#include "ConvertFormats.h"

namespace qly::tool {

namespace {

const QString SplitByOption = QStringLiteral("split-by");

// Right indents reach RTF only as distances from the trailing margin.
AttributedString onScreenplayPage(const AttributedString& text)
{
    return attributedStringWithTailIndentsFromTrailingEdge(text, screenplayTextWidth());
}

} // namespace

DocumentFormatHandler screenplayFormatHandler()
{
    DocumentFormatHandler handler;
    handler.names = {QStringLiteral("screenplay")};
    handler.options = {
        {SplitByOption,
         QStringLiteral("screenplay: one document per piece, each starting at a line of TYPE (%1); -o names a folder.")
             .arg(XQPlainTextScreenplayElementTypes.join(QStringLiteral(", "))),
         QStringLiteral("TYPE")},
    };
    handler.checkOptions = [](const CommandLine& line) {
        if (line.isSet(SplitByOption) && !XQPlainTextScreenplayElementTypes.contains(line.value(SplitByOption)))
            return line.usageError(
                QStringLiteral("--split-by takes one of %1, not '%2'")
                    .arg(XQPlainTextScreenplayElementTypes.join(QStringLiteral(", ")), line.value(SplitByOption)));
        return int(ExitSuccess);
    };
    handler.read = [](const QByteArray& bytes, const QString& inputPath, const CommandLine& line) {
        const QString screenplay = textFromUTF8(bytes);
        const ScriptElementAttributes attributes = defaultPlainTextScreenplayElementAttributes();
        ConvertDocument document{
            onScreenplayPage(attributedStringWithPlainTextScreenplayString(screenplay, attributes)),
            screenplayDocumentAttributes(), inputPath};
        if (line.isSet(SplitByOption)) {
            document.splitInto = true;
            for (const AttributedString& piece :
                 scriptComponentTextsFromPlainTextScreenplayString(screenplay, attributes, line.value(SplitByOption)))
                document.pieces.append(onScreenplayPage(piece));
        }
        return std::optional<ConvertDocument>(document);
    };
    return handler;
}

} // namespace qly::tool
