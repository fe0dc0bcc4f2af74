// qly diff: what changed between two versions of a document, as rich text or an HTML page (removed text
// struck through, added text underlined) or as plain text with markers. Exit status as comparison tools
// have it.
#include "CommandLine.h"
#include "Commands.h"
#include "convert/ConvertFormats.h"

#include <qlyappkit/formats/comparison/DiffMarkup.h>
#include <qlyappkit/formats/comparison/TextComparison.h>
#include <qlyappkit/formats/html/HTMLExport.h>
#include <qlyappkit/interchange/export/Documents.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include <QFileInfo>

namespace qly::tool {

namespace {

/// Exit codes of qly diff, as comparison tools have them.
enum DiffExitCode { DiffEqual = 0, DiffDifferent = 1, DiffTrouble = 2 };

const QString OutputOption = QStringLiteral("output");
const QString ByOption = QStringLiteral("by");
const QString FromOption = QStringLiteral("from");
const QString ToOption = QStringLiteral("to");
const QString ColorOption = QStringLiteral("color");
const QString OldColorOption = QStringLiteral("old-color");
const QString NewColorOption = QStringLiteral("new-color");
const QString OldBackgroundOption = QStringLiteral("old-background");
const QString NewBackgroundOption = QStringLiteral("new-background");

/// The units --by takes, each one bit of the diff type.
struct Unit {
    const char* name;
    XQDiffType bit;
};
const Unit Units[] = {
    {"paragraphs", XQDiffTypeParagraphs},
    {"clauses", XQDiffTypeClauses},
    {"words", XQDiffTypeWords},
};
const QString DefaultUnits = QStringLiteral("paragraphs,words");

/// The colour options and the diff attribute each sets.
struct ColorOptionKey {
    const QString& option;
    const QString& key;
};
const ColorOptionKey ColorOptions[] = {
    {OldColorOption, XQOldTextForegroundColor},
    {NewColorOption, XQNewTextForegroundColor},
    {OldBackgroundOption, XQOldTextBackgroundColor},
    {NewBackgroundOption, XQNewTextBackgroundColor},
};

struct Options {
    bool terminalColors = false;
    QString outputPath; // names an untitled page
};

/// A form the merged text can be written in.
struct DiffOutputFormat {
    QStringList names;
    QStringList extensions;
    /// The bytes to write; newer is the newer document (its page setup goes into RTF).
    std::function<QByteArray(const AttributedString& merged, const ConvertDocument& newer, const Options& options)>
        data;
};

// The page of the merged text: the newer document's attributes, titled after the output file when the
// document has no title. Pictures have no folder to go to from here: they are left out, with a warning.
QByteArray diffPage(const AttributedString& merged, const ConvertDocument& newer, const Options& options)
{
    if (textNeedsImagesFolder(merged))
        printWarnings(newer.inputPath, {QStringLiteral("the comparison page leaves the pictures out")});
    QVariantMap attributes = newer.documentAttributes;
    if (attributes.value(TitleDocumentAttribute).toString().trimmed().isEmpty()) {
        const QString named = options.outputPath == StandardStreamName ? newer.inputPath : options.outputPath;
        if (named != StandardStreamName)
            attributes.insert(TitleDocumentAttribute, QFileInfo(named).completeBaseName());
    }
    return HTMLDataFromRange(merged, Range{0, merged.length()}, attributes);
}

// The output formats.
const std::vector<DiffOutputFormat>& diffOutputFormats()
{
    static const std::vector<DiffOutputFormat> formats{
        {{QStringLiteral("txt"), QStringLiteral("text")},
         {QStringLiteral("txt"), QStringLiteral("text")},
         [](const AttributedString& merged, const ConvertDocument&, const Options& options) {
             const DiffTextMarkers markers =
                 options.terminalColors ? terminalDiffTextMarkers() : bracketDiffTextMarkers();
             return plainTextDocumentData(AttributedString(textMarkingDifferences(merged, markers)));
         }},
        {{QStringLiteral("rtf")},
         {QStringLiteral("rtf")},
         [](const AttributedString& merged, const ConvertDocument& newer, const Options&) {
             return RTFFromRange(merged, Range{0, merged.length()}, newer.documentAttributes);
         }},
        {{QStringLiteral("html"), QStringLiteral("htm")}, {QStringLiteral("html"), QStringLiteral("htm")}, diffPage},
    };
    return formats;
}

QString outputFormatNames()
{
    QStringList names;
    for (const DiffOutputFormat& format : diffOutputFormats())
        names.append(format.names.constFirst());
    return names.join(QStringLiteral(", "));
}

// The diff type --by names; nothing after a usage message when a unit is unknown.
std::optional<XQDiffType> diffTypeFrom(const CommandLine& line)
{
    const QString units = line.isSet(ByOption) ? line.value(ByOption) : DefaultUnits;
    XQDiffType type = 0;
    for (const QString& part : units.split(u',', Qt::SkipEmptyParts)) {
        const QString name = part.trimmed();
        const Unit* unit = nullptr;
        for (const Unit& candidate : Units) {
            if (name.compare(QLatin1String(candidate.name), Qt::CaseInsensitive) == 0)
                unit = &candidate;
        }
        if (!unit) {
            line.usageError(
                QStringLiteral("unknown unit '%1' for --by (paragraphs, clauses, words, or several joined by commas)")
                    .arg(name));
            return std::nullopt;
        }
        type |= unit->bit;
    }
    if (type == 0) {
        line.usageError(QStringLiteral("--by needs at least one of paragraphs, clauses, words"));
        return std::nullopt;
    }
    return type;
}

// The reader of an input: --from, else the file name's extension.
const DocumentFormatHandler* inputHandler(const CommandLine& line, const QString& path)
{
    if (!line.isSet(FromOption) && path == StandardStreamName) {
        line.usageError(QStringLiteral("standard input needs --from"));
        return nullptr;
    }
    const DocumentFormatHandler* handler = line.isSet(FromOption) ? documentFormatHandlerNamed(line.value(FromOption))
                                                                  : documentFormatHandlerForPath(path);
    if (!handler || !handler->read) {
        line.usageError(
            QStringLiteral("%1: cannot read this format (name it with --from; known: %2)")
                .arg(line.isSet(FromOption) ? line.value(FromOption) : path, documentFormatHandlerNames(true)));
        return nullptr;
    }
    return handler;
}

// The writer of the output: --to, else the file name's extension; text on standard output.
const DiffOutputFormat* outputFormat(const CommandLine& line, const QString& path)
{
    const QString name = line.isSet(ToOption) ? line.value(ToOption)
        : path == StandardStreamName          ? QStringLiteral("txt")
                                              : QFileInfo(path).suffix();
    for (const DiffOutputFormat& format : diffOutputFormats()) {
        if (line.isSet(ToOption) || path == StandardStreamName ? format.names.contains(name, Qt::CaseInsensitive)
                                                               : format.extensions.contains(name.toLower()))
            return &format;
    }
    line.usageError(QStringLiteral("%1: cannot write this format (name it with --to; known: %2)")
                        .arg(line.isSet(ToOption) ? name : path, outputFormatNames()));
    return nullptr;
}

std::optional<ConvertDocument> readDocument(const CommandLine& line, const QString& path,
                                            const DocumentFormatHandler& handler)
{
    QByteArray bytes;
    if (!readInput(path, bytes))
        return std::nullopt;
    return handler.read(bytes, path, line);
}

} // namespace

int runDiff(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("diff"),
        QStringLiteral("OLD NEW [-o OUT] [--by UNITS] [-f FORMAT] [-t FORMAT] [--color] [colour options]"),
        QStringLiteral(
            "Compares two versions of a document and writes one text that shows both: removed text struck\n"
            "through (plain text: [-removed-]), added text underlined ({+added+}). Inputs are any format qly\n"
            "reads, chosen by extension or --from; the output is RTF, an HTML page or plain text by extension\n"
            "or --to, and plain text on standard output without -o. --by chooses the units compared:\n"
            "paragraphs, clauses (ending at punctuation), words, or several joined by commas (default\n"
            "paragraphs,words: unchanged paragraphs stay whole, changed ones are compared word by word).\n"
            "Exit status: 0 the texts are equal, 1 they differ, 2 trouble."));
    line.addOption({{QStringLiteral("o"), OutputOption},
                    QStringLiteral("The output file (\"-\", the default: standard output)."),
                    QStringLiteral("OUT")});
    line.addOption(
        {ByOption, QStringLiteral("The units compared (default %1).").arg(DefaultUnits), QStringLiteral("UNITS")});
    line.addOption({{QStringLiteral("f"), FromOption},
                    QStringLiteral("The inputs' format: %1.").arg(documentFormatHandlerNames(true)),
                    QStringLiteral("FORMAT")});
    line.addOption({{QStringLiteral("t"), ToOption},
                    QStringLiteral("The output format: %1.").arg(outputFormatNames()),
                    QStringLiteral("FORMAT")});
    line.addOption({ColorOption, QStringLiteral("Plain text: terminal colours instead of [- -] and {+ +}.")});
    line.addOption({OldColorOption, QStringLiteral("Removed text's colour, RRGGBB."), QStringLiteral("HEX")});
    line.addOption({NewColorOption, QStringLiteral("Added text's colour, RRGGBB."), QStringLiteral("HEX")});
    line.addOption({OldBackgroundOption, QStringLiteral("Removed text's background, RRGGBB."), QStringLiteral("HEX")});
    line.addOption({NewBackgroundOption, QStringLiteral("Added text's background, RRGGBB."), QStringLiteral("HEX")});
    // Options of the formats that read: a reader may take its own.
    for (const DocumentFormatHandler& handler : documentFormatHandlers()) {
        if (handler.read) {
            for (const QCommandLineOption& option : handler.options)
                line.addOption(option);
        }
    }
    int exitCode = 0;
    if (!line.parse(args, 2, 2, &exitCode))
        return exitCode;

    const QString oldPath = line.arguments().at(0), newPath = line.arguments().at(1);
    const QString output = line.isSet(OutputOption) ? line.value(OutputOption) : StandardStreamName;
    if (oldPath == StandardStreamName && newPath == StandardStreamName)
        return line.usageError(QStringLiteral("only one input can be standard input"));
    const std::optional<XQDiffType> type = diffTypeFrom(line);
    if (!type)
        return DiffTrouble;
    const DocumentFormatHandler* oldHandler = inputHandler(line, oldPath);
    const DocumentFormatHandler* newHandler = oldHandler ? inputHandler(line, newPath) : nullptr;
    const DiffOutputFormat* format = newHandler ? outputFormat(line, output) : nullptr;
    if (!format)
        return DiffTrouble;
    // A reader's own options: refused for a format that takes no part, checked for those that do.
    for (const DocumentFormatHandler& handler : documentFormatHandlers()) {
        const bool reading = &handler == oldHandler || &handler == newHandler;
        if (!handler.read)
            continue;
        for (const QCommandLineOption& option : handler.options) {
            if (!reading && line.isSet(option.names().constFirst()))
                return line.usageError(QStringLiteral("--%1 applies only to %2")
                                           .arg(option.names().constFirst(), handler.names.constFirst()));
        }
        if (reading && handler.checkOptions) {
            if (handler.checkOptions(line) != ExitSuccess)
                return DiffTrouble;
        }
    }
    Options options;
    options.terminalColors = line.isSet(ColorOption);
    options.outputPath = output;
    if (options.terminalColors && !format->names.contains(QStringLiteral("txt")))
        return line.usageError(QStringLiteral("--color applies only to plain text output"));
    QVariantMap diffAttributes;
    for (const ColorOptionKey& colorOption : ColorOptions) {
        if (!line.isSet(colorOption.option))
            continue;
        const std::optional<Color> color = Color::fromHexString(line.value(colorOption.option));
        if (!color)
            return line.usageError(QStringLiteral("--%1 needs a colour as RRGGBB, not '%2'")
                                       .arg(colorOption.option, line.value(colorOption.option)));
        diffAttributes.insert(colorOption.key, QVariant::fromValue(*color));
    }

    const std::optional<ConvertDocument> older = readDocument(line, oldPath, *oldHandler);
    if (!older)
        return DiffTrouble;
    const std::optional<ConvertDocument> newer = readDocument(line, newPath, *newHandler);
    if (!newer)
        return DiffTrouble;
    if (older->splitInto || newer->splitInto)
        return line.usageError(QStringLiteral("qly diff compares whole documents: a split (--split-by) has no place"));
    Error error;
    const std::optional<AttributedString> merged =
        attributedStringShowingDifferencesFrom(newer->text, older->text, *type, diffAttributes, &error);
    if (!merged) {
        printError(QStringLiteral("cannot compare %1 with %2: %3 %4")
                       .arg(oldPath, newPath, error.localizedDescription, error.localizedRecoverySuggestion));
        return DiffTrouble;
    }
    if (!writeOutput(output, format->data(*merged, *newer, options)))
        return DiffTrouble;
    return hasDifferences(*merged) ? DiffDifferent : DiffEqual;
}

} // namespace qly::tool
