// Package RTF: the stored form of a text, with notes as tags, pictures embedded and comments in the
// side file beside it (IN.comments.xml).
#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/export/StoredText.h>
#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/interchange/package/PackageRTFWriter.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>

#include <QFileInfo>

#include "ConvertFormats.h"

namespace qly::tool {

namespace {

const QString IgnoreImagesOption = QStringLiteral("ignore-images");

} // namespace

DocumentFormatHandler packageRTFFormatHandler()
{
    DocumentFormatHandler handler;
    handler.names = {QStringLiteral("package-rtf")};
    handler.options = {
        {IgnoreImagesOption, QStringLiteral("package-rtf: reads each picture as the character \"?\".")},
    };
    handler.read = [](const QByteArray& bytes, const QString& inputPath,
                      const CommandLine& line) -> std::optional<ConvertDocument> {
        ConvertDocument document{{}, {}, inputPath};
        const std::optional<AttributedString> text =
            initWithQuilleryPackageRTF(bytes, &document.documentAttributes, true, line.isSet(IgnoreImagesOption));
        MutableAttributedString stored(text.value_or(AttributedString()));
        if (inputPath != StandardStreamName) {
            const QString beside = commentsSideFilePathForDocument(inputPath);
            if (QFileInfo::exists(beside))
                loadCommentsFromURL(stored, beside);
        }
        document.text = stored.attributedString();
        return document;
    };
    handler.write = [](const ConvertDocument& document, const QString& outputPath, const CommandLine&) {
        if (outputPath == StandardStreamName) {
            const QByteArray rtf = quilleryPackageRTFFromRange(document.text, Range{0, document.text.length()},
                                                               document.documentAttributes, true);
            return writeOutput(outputPath, rtf) ? int(ExitSuccess) : int(ExitFailure);
        }
        Error error;
        if (!writeStoredText(document.text, outputPath, document.documentAttributes, &error)) {
            printError(QStringLiteral("%1: %2").arg(outputPath, error.localizedDescription));
            return int(ExitFailure);
        }
        return int(ExitSuccess);
    };
    return handler;
}

} // namespace qly::tool
