#pragma once
// The formats qly convert reads and writes. Each format is one handler in a file of its own: the
// names and extensions that choose it, the options only it reads, and how it reads and writes a
// document through the library. ConvertFormats.cpp lists them.
#include <qlyappkit/platform/text/AttributedString.h>

#include <QByteArray>
#include <QCommandLineOption>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <optional>
#include <vector>

#include "../CommandLine.h"

namespace qly::tool {

/// A document on its way through qly convert.
struct ConvertDocument {
    ConvertDocument() = default;
    ConvertDocument(AttributedString text_, QVariantMap documentAttributes_, QString inputPath_)
        : text(std::move(text_)), documentAttributes(std::move(documentAttributes_)), inputPath(std::move(inputPath_))
    {
    }

    AttributedString text;
    QVariantMap documentAttributes;
    /// The input's path ("-" for standard input): where side files and relative links are found.
    QString inputPath;
    /// Set by a reader that cut the document into pieces (a screenplay by scenes): each piece is
    /// written as a document of its own into the output folder.
    QList<AttributedString> pieces;
    /// True when the reader was asked to cut the document (even if it found nothing to cut).
    bool splitInto = false;
};

struct DocumentFormatHandler {
    /// The name -f/-t take; the first is the one messages use.
    QStringList names;
    /// File name extensions (lower case, no dot) that choose this format.
    QStringList extensions;
    /// Options only this format reads; set with another format they are a usage error.
    QList<QCommandLineOption> options;
    /// Checks the values of those options before anything is read; returns ExitSuccess or, after
    /// printing why, ExitUsage. May be empty.
    std::function<int(const CommandLine& line)> checkOptions;
    /// Reads a document from the input's bytes; nothing (after printing why) when it cannot.
    /// Empty for a format that is only written.
    std::function<std::optional<ConvertDocument>(const QByteArray& bytes, const QString& inputPath,
                                                 const CommandLine& line)>
        read;
    /// Writes the document to outputPath ("-": standard output) and returns the exit code. Empty for a
    /// format that is only read.
    std::function<int(const ConvertDocument& document, const QString& outputPath, const CommandLine& line)> write;
    /// The writer may make a folder at the output path itself (a page with its pictures): a folder
    /// already there is its own earlier output, not a folder to write pieces into.
    bool writesFolderAtPath = false;
    /// A format read into the stored form: an output whose extension alone would choose plain RTF is
    /// written in this format instead (word-processor RTF imports as the application stores text).
    QString storedFormat;
};

/// Every format, in the order help lists them.
const std::vector<DocumentFormatHandler>& documentFormatHandlers();

DocumentFormatHandler plainTextFormatHandler();
DocumentFormatHandler rtfFormatHandler();
DocumentFormatHandler wordRTFFormatHandler();
DocumentFormatHandler packageRTFFormatHandler();
DocumentFormatHandler markdownFormatHandler();
DocumentFormatHandler multiMarkdownFormatHandler();
DocumentFormatHandler screenplayFormatHandler();
DocumentFormatHandler htmlFormatHandler();

/// UTF-8 text without a leading byte-order mark.
QString textFromUTF8(const QByteArray& bytes);

/// The handler a -f/-t name (any letter case) chooses; null when none has that name.
const DocumentFormatHandler* documentFormatHandlerNamed(const QString& name);
/// The handler a file name's extension chooses; null when none.
const DocumentFormatHandler* documentFormatHandlerForPath(const QString& path);
/// The first names of the formats that can be read (or, readable false, written), for messages.
QString documentFormatHandlerNames(bool readable);
/// The handler that reads path: the one --from names, else the one its extension chooses. Null, after
/// a usage message, when none can (standard input always needs --from).
const DocumentFormatHandler* readingFormatHandler(const CommandLine& line, const QString& path);
/// Reads path with the handler readingFormatHandler() chooses. Nothing, after printing why, with
/// *exitCode set to the status to exit with (usage or failure).
std::optional<ConvertDocument> readDocument(const CommandLine& line, const QString& path, int* exitCode);

/// Prints the warnings of a conversion step, each naming the input.
void printWarnings(const QString& inputPath, const QStringList& warnings);

} // namespace qly::tool
