// RTF for word processors: written from a stored text (notes as tags, comments in a side file), and
// imported into one.
#include <qlyappkit/interchange/export/StoredText.h>
#include <qlyappkit/interchange/export/WordRTFExport.h>
#include <qlyappkit/interchange/export/WordRTFImport.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include <QDir>
#include <QFileInfo>
#include <QSizeF>

#include "ConvertFormats.h"

namespace qly::tool {

namespace {

const QString CommentsOption = QStringLiteral("comments");
const QString RTFOptionOption = QStringLiteral("option");
const QString PaperOption = QStringLiteral("paper");
const QString MarginsOption = QStringLiteral("margins");
const QString AuthorOption = QStringLiteral("author");
const QString AnnotationsAsFootnotesOption = QStringLiteral("annotations-as-footnotes");
const QString CommentsInlineOption = QStringLiteral("comments-inline");
const QString FootnotesInlineOption = QStringLiteral("footnotes-inline");

// The settings from the command line; 0 to go on, otherwise the exit code.
int settingsFromCommandLine(const CommandLine& line, WordRTFExportSettings& settings)
{
    for (const QString& assignment : line.values(RTFOptionOption)) {
        QString problem;
        if (!setRTFOptionFromString(settings.options, assignment, &problem))
            return line.usageError(QStringLiteral("--option: %1").arg(problem));
    }
    settings.annotationsAsFootnotes = line.isSet(AnnotationsAsFootnotesOption);
    if (line.isSet(AuthorOption))
        settings.documentAttributes.insert(AuthorDocumentAttribute, line.value(AuthorOption));
    if (line.isSet(PaperOption)) {
        std::vector<double> n;
        const QString value = line.value(PaperOption);
        if (!parseNumberList(value.toLower(), QLatin1Char('x'), 2, n) || n[0] <= 0 || n[1] <= 0)
            return line.usageError(QStringLiteral("--paper takes WIDTHxHEIGHT in points, not '%1'").arg(value));
        settings.documentAttributes.insert(PaperSizeDocumentAttribute, QSizeF(n[0], n[1]));
    }
    if (line.isSet(MarginsOption)) {
        std::vector<double> n;
        const QString value = line.value(MarginsOption);
        if (!parseNumberList(value, QLatin1Char(','), 4, n))
            return line.usageError(
                QStringLiteral("--margins takes LEFT,RIGHT,TOP,BOTTOM in points, not '%1'").arg(value));
        settings.documentAttributes.insert(LeftMarginDocumentAttribute, n[0]);
        settings.documentAttributes.insert(RightMarginDocumentAttribute, n[1]);
        settings.documentAttributes.insert(TopMarginDocumentAttribute, n[2]);
        settings.documentAttributes.insert(BottomMarginDocumentAttribute, n[3]);
    }
    return 0;
}

} // namespace

DocumentFormatHandler wordRTFFormatHandler()
{
    DocumentFormatHandler handler;
    handler.names = {QStringLiteral("word-rtf")};
    handler.options = {
        {CommentsOption, QStringLiteral("word-rtf: the comments side file (default: IN.comments.xml when it exists)."),
         QStringLiteral("FILE")},
        {RTFOptionOption, QStringLiteral("word-rtf: sets an XQRTF... option (yes/no, numbers, texts); repeatable."),
         QStringLiteral("NAME=VALUE")},
        {PaperOption, QStringLiteral("word-rtf: the paper size in points."), QStringLiteral("WxH")},
        {MarginsOption, QStringLiteral("word-rtf: the page margins in points."), QStringLiteral("L,R,T,B")},
        {AuthorOption, QStringLiteral("word-rtf: the author of the comments."), QStringLiteral("NAME")},
        {AnnotationsAsFootnotesOption, QStringLiteral("word-rtf: writes inline annotations as footnotes.")},
        {CommentsInlineOption, QStringLiteral("word-rtf input: keeps comments as inline annotations.")},
        {FootnotesInlineOption, QStringLiteral("word-rtf input: keeps footnotes inline.")},
    };
    handler.storedFormat = QStringLiteral("package-rtf");
    handler.read = [](const QByteArray& bytes, const QString& inputPath,
                      const CommandLine& line) -> std::optional<ConvertDocument> {
        ExtendedRTFImportOptions options;
        options.commentsInline = line.isSet(CommentsInlineOption);
        options.footnotesInline = line.isSet(FootnotesInlineOption);
        Error error;
        QStringList warnings;
        std::optional<WordRTFImport> imported = importWordRTF(bytes, options, &error, &warnings);
        printWarnings(inputPath, warnings);
        if (!imported) {
            printError(QStringLiteral("%1: %2").arg(inputPath, error.localizedDescription));
            return std::nullopt;
        }
        const ExtendedRTFImportReport& r = imported->report;
        // What arrived, on standard error: the output may be standard output.
        printError(QStringLiteral("%1: imported %2 footnotes, %3 endnotes, %4 comments, %5 pictures")
                       .arg(inputPath)
                       .arg(r.footnotes)
                       .arg(r.endnotes)
                       .arg(r.annotations)
                       .arg(r.pictures));
        return ConvertDocument{std::move(imported->text), std::move(imported->documentAttributes), inputPath};
    };
    handler.write = [](const ConvertDocument& document, const QString& outputPath, const CommandLine& line) {
        WordRTFExportSettings settings;
        if (const int code = settingsFromCommandLine(line, settings))
            return code;
        const bool standardInput = document.inputPath == StandardStreamName;
        QString commentsPath = line.value(CommentsOption);
        if (commentsPath.isEmpty() && !standardInput) {
            const QString beside = commentsSideFilePathForDocument(document.inputPath);
            if (QFileInfo::exists(beside))
                commentsPath = beside;
        }
        Error error;
        const std::optional<AttributedString> stored =
            storedTextFromAttributedString(document.text, commentsPath, &error);
        if (!stored) {
            printError(error.localizedDescription);
            return int(ExitFailure);
        }
        // Pictures are read from the input's folder (the working folder for standard input).
        settings.resourceFolder = standardInput ? QDir::currentPath() : QFileInfo(document.inputPath).absolutePath();
        QStringList warnings;
        const QByteArray rtf = wordRTFFromStoredText(*stored, document.documentAttributes, settings, &warnings);
        printWarnings(document.inputPath, warnings);
        return writeOutput(outputPath, rtf) ? int(ExitSuccess) : int(ExitFailure);
    };
    return handler;
}

} // namespace qly::tool
