// qly convert: documents from one format into another, and stored texts into RTF for word processors.
#include <qlyappkit/interchange/export/StoredText.h>
#include <qlyappkit/interchange/export/WordRTFExport.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include <QDir>
#include <QFileInfo>
#include <QSizeF>

#include <vector>

#include "CommandLine.h"
#include "Commands.h"

namespace qly::tool {

namespace {

const QString OutputOption = QStringLiteral("output");
const QString FromOption = QStringLiteral("from");
const QString ToOption = QStringLiteral("to");
const QString CommentsOption = QStringLiteral("comments");
const QString RTFOptionOption = QStringLiteral("option");
const QString PaperOption = QStringLiteral("paper");
const QString MarginsOption = QStringLiteral("margins");
const QString AuthorOption = QStringLiteral("author");
const QString AnnotationsAsFootnotesOption = QStringLiteral("annotations-as-footnotes");

// Options that only the export for word processors reads.
const QStringList WordRTFOnlyOptions{CommentsOption, RTFOptionOption, PaperOption, MarginsOption, AuthorOption,
                                     AnnotationsAsFootnotesOption};

bool parseNumbers(const QString& text, QChar separator, int count, std::vector<double>& numbers)
{
    const QStringList parts = text.split(separator);
    if (parts.size() != count)
        return false;
    numbers.clear();
    for (const QString& part : parts) {
        bool ok = false;
        const double n = part.trimmed().toDouble(&ok);
        if (!ok || n < 0)
            return false;
        numbers.push_back(n);
    }
    return true;
}

// The word-processor settings from the command line; 0 to go on, otherwise the exit code.
int wordRTFSettings(const CommandLine& line, WordRTFExportSettings& settings)
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
        if (!parseNumbers(value.toLower(), QLatin1Char('x'), 2, n) || n[0] <= 0 || n[1] <= 0)
            return line.usageError(QStringLiteral("--paper takes WIDTHxHEIGHT in points, not '%1'").arg(value));
        settings.documentAttributes.insert(PaperSizeDocumentAttribute, QSizeF(n[0], n[1]));
    }
    if (line.isSet(MarginsOption)) {
        std::vector<double> n;
        const QString value = line.value(MarginsOption);
        if (!parseNumbers(value, QLatin1Char(','), 4, n))
            return line.usageError(
                QStringLiteral("--margins takes LEFT,RIGHT,TOP,BOTTOM in points, not '%1'").arg(value));
        settings.documentAttributes.insert(LeftMarginDocumentAttribute, n[0]);
        settings.documentAttributes.insert(RightMarginDocumentAttribute, n[1]);
        settings.documentAttributes.insert(TopMarginDocumentAttribute, n[2]);
        settings.documentAttributes.insert(BottomMarginDocumentAttribute, n[3]);
    }
    return 0;
}

// The format named by an option, or else the file name's; Unknown after a message when neither tells.
DocumentFormat chosenFormat(const CommandLine& line, const QString& option, const QString& path, bool* failed)
{
    *failed = false;
    if (line.isSet(option)) {
        const DocumentFormat format = documentFormatNamed(line.value(option));
        if (format == DocumentFormat::Unknown) {
            *failed = true;
            line.usageError(QStringLiteral("unknown format '%1' (known: %2)")
                                .arg(line.value(option), documentFormatNames().join(QStringLiteral(", "))));
        }
        return format;
    }
    const DocumentFormat format = path == StandardStreamName ? DocumentFormat::Unknown : documentFormatOfPath(path);
    if (format == DocumentFormat::Unknown) {
        *failed = true;
        line.usageError(path == StandardStreamName
                            ? QStringLiteral("standard %1 needs --%2")
                                  .arg(option == FromOption ? QStringLiteral("input") : QStringLiteral("output"), option)
                            : QStringLiteral("%1: unknown format (use .rtf or .txt, or --%2)").arg(path, option));
    }
    return format;
}

} // namespace

int runConvert(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("convert"), QStringLiteral("IN -o OUT [-f FORMAT] [-t FORMAT] [word-rtf options]"),
        QStringLiteral(
            "Converts a document between plain UTF-8 text and RTF, or exports a stored text (RTF with note\n"
            "tags, comments in IN.comments.xml beside it) as RTF for word processors with -t word-rtf: real\n"
            "footnotes, endnotes, comments, bookmarks, sections, headers and footers, pictures. Formats come\n"
            "from the file names' extensions unless -f/-t name them; \"-\" reads standard input or writes\n"
            "standard output. The stored text's links qlybookmark:NAME, qlypageref:NAME and qlypicture:FILE\n"
            "(FILE inside the input's folder) become bookmarks, page references and pictures; the text and\n"
            "each page break start a section."));
    line.addOption({{QStringLiteral("o"), OutputOption}, QStringLiteral("The output file (\"-\": standard output)."),
                    QStringLiteral("OUT")});
    line.addOption({{QStringLiteral("f"), FromOption}, QStringLiteral("The input format: rtf or txt."),
                    QStringLiteral("FORMAT")});
    line.addOption({{QStringLiteral("t"), ToOption}, QStringLiteral("The output format: rtf, txt or word-rtf."),
                    QStringLiteral("FORMAT")});
    line.addOption({CommentsOption,
                    QStringLiteral("word-rtf: the comments side file (default: IN.comments.xml when it exists)."),
                    QStringLiteral("FILE")});
    line.addOption({RTFOptionOption,
                    QStringLiteral("word-rtf: sets an XQRTF... option (yes/no, numbers, texts); repeatable."),
                    QStringLiteral("NAME=VALUE")});
    line.addOption({PaperOption, QStringLiteral("word-rtf: the paper size in points."), QStringLiteral("WxH")});
    line.addOption(
        {MarginsOption, QStringLiteral("word-rtf: the page margins in points."), QStringLiteral("L,R,T,B")});
    line.addOption({AuthorOption, QStringLiteral("word-rtf: the author of the comments."), QStringLiteral("NAME")});
    line.addOption({AnnotationsAsFootnotesOption, QStringLiteral("word-rtf: writes inline annotations as footnotes.")});
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;
    const QString input = line.arguments().constFirst();
    const QString output = line.value(OutputOption);
    if (output.isEmpty())
        return line.usageError(QStringLiteral("missing -o OUT"));

    bool failed = false;
    const DocumentFormat source = chosenFormat(line, FromOption, input, &failed);
    if (failed)
        return ExitUsage;
    const DocumentFormat target = chosenFormat(line, ToOption, output, &failed);
    if (failed)
        return ExitUsage;
    if (!canReadDocumentFormat(source))
        return line.usageError(QStringLiteral("%1 can be written but not read").arg(line.value(FromOption)));
    WordRTFExportSettings settings;
    if (target == DocumentFormat::WordRTF) {
        if (const int code = wordRTFSettings(line, settings))
            return code;
    } else {
        for (const QString& option : WordRTFOnlyOptions) {
            if (line.isSet(option))
                return line.usageError(QStringLiteral("--%1 applies only to -t word-rtf").arg(option));
        }
    }

    QByteArray bytes;
    if (!readInput(input, bytes))
        return ExitFailure;
    QVariantMap documentAttributes;
    Error error;
    QStringList warnings;
    std::optional<AttributedString> text;
    if (target == DocumentFormat::WordRTF) {
        QString commentsPath = line.value(CommentsOption);
        if (commentsPath.isEmpty() && input != StandardStreamName) {
            const QString beside = commentsSideFilePathForDocument(input);
            if (QFileInfo::exists(beside))
                commentsPath = beside;
        }
        text = storedTextFromDocumentData(bytes, source, commentsPath, &documentAttributes, &error, &warnings);
    } else {
        text = attributedStringFromDocumentData(bytes, source, &documentAttributes, &error, &warnings);
    }
    for (const QString& warning : warnings)
        printError(QStringLiteral("%1: warning: %2").arg(input, warning));
    if (!text) {
        printError(QStringLiteral("%1: %2").arg(input, error.localizedDescription));
        return ExitFailure;
    }

    QByteArray result;
    switch (target) {
    case DocumentFormat::PlainText:
        result = plainTextDocumentData(*text);
        break;
    case DocumentFormat::RTF:
        result = RTFFromRange(*text, Range{0, text->length()}, documentAttributes);
        break;
    case DocumentFormat::WordRTF: {
        // Pictures are read from the input's folder (the working folder for standard input).
        settings.resourceFolder =
            input == StandardStreamName ? QDir::currentPath() : QFileInfo(input).absolutePath();
        QStringList exportWarnings;
        result = wordRTFFromStoredText(*text, documentAttributes, settings, &exportWarnings);
        for (const QString& warning : exportWarnings)
            printError(QStringLiteral("warning: %1").arg(warning));
        break;
    }
    case DocumentFormat::Unknown:
        break;
    }
    return writeOutput(output, result) ? ExitSuccess : ExitFailure;
}

} // namespace qly::tool
