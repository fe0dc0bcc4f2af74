// HTML pages (write only): a stored text with its notes shown inline, written as one page, or as a
// folder holding the page and an images folder when the text has pictures.
#include <qlyappkit/formats/html/HTMLExport.h>
#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/formats/html/HTMLPageText.h>
#include <qlyappkit/interchange/export/StoredText.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include <QDir>
#include <QFileInfo>

#include "ConvertFormats.h"

namespace qly::tool {

namespace {

const QString CenterWidthOption = QStringLiteral("center-width");
const QString StripImageSpacesOption = QStringLiteral("strip-image-spaces");
const QString XHTMLOption = QStringLiteral("xhtml");
constexpr int MaxColumnWidth = 100000;

int checkHTMLOptions(const CommandLine& line)
{
    if (!line.isSet(CenterWidthOption))
        return ExitSuccess;
    bool ok = false;
    const int width = line.value(CenterWidthOption).toInt(&ok);
    if (!ok || width <= 0 || width > MaxColumnWidth)
        return line.usageError(QStringLiteral("--center-width takes a width in pixels from 1 to %1, not '%2'")
                                   .arg(QString::number(MaxColumnWidth), line.value(CenterWidthOption)));
    return ExitSuccess;
}

QVariantMap pageAttributes(const ConvertDocument& document, const QString& outputPath, const CommandLine& line)
{
    QVariantMap attributes = document.documentAttributes;
    if (attributes.value(TitleDocumentAttribute).toString().trimmed().isEmpty()) {
        const QString named = outputPath == StandardStreamName ? document.inputPath : outputPath;
        if (named != StandardStreamName)
            attributes.insert(TitleDocumentAttribute, QFileInfo(named).completeBaseName());
    }
    if (line.isSet(CenterWidthOption))
        attributes.insert(XQHTMLCenteredBodyTableWidthAttribute, line.value(CenterWidthOption).toInt());
    if (line.isSet(StripImageSpacesOption))
        attributes.insert(XQHTMLStripWhitespaceFromImageFilenamesAttribute, true);
    // An excluded-elements list without "XML" asks for "<br />" and its kind.
    if (line.isSet(XHTMLOption))
        attributes.insert(ExcludedElementsDocumentAttribute, QStringList());
    return attributes;
}

} // namespace

DocumentFormatHandler htmlFormatHandler()
{
    DocumentFormatHandler handler;
    handler.names = {QStringLiteral("html"), QStringLiteral("htm")};
    handler.extensions = {QStringLiteral("html"), QStringLiteral("htm")};
    handler.writesFolderAtPath = true;
    handler.options = {
        {CenterWidthOption, QStringLiteral("html: centres the page in a column this wide; no picture is wider."),
         QStringLiteral("PX")},
        {StripImageSpacesOption, QStringLiteral("html: removes white space from the pictures' file names.")},
        {XHTMLOption, QStringLiteral("html: writes empty elements the XML way (<br />).")},
    };
    handler.checkOptions = checkHTMLOptions;
    handler.write = [](const ConvertDocument& document, const QString& outputPath, const CommandLine& line) {
        const bool standardInput = document.inputPath == StandardStreamName;
        QString commentsPath;
        if (!standardInput) {
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
        const QString resourceFolder =
            standardInput ? QDir::currentPath() : QFileInfo(document.inputPath).absolutePath();
        QStringList warnings;
        const AttributedString page = attributedStringForHTMLPage(*stored, resourceFolder, &warnings);
        printWarnings(document.inputPath, warnings);
        const QVariantMap attributes = pageAttributes(document, outputPath, line);
        if (outputPath == StandardStreamName) {
            if (textNeedsImagesFolder(page)) {
                printError(QStringLiteral("the text has pictures, which are written into a folder beside the page: "
                                          "name an output file (-o OUT.html)"));
                return int(ExitFailure);
            }
            const QByteArray html = HTMLDataFromRange(page, Range{0, page.length()}, attributes);
            return writeOutput(outputPath, html) ? int(ExitSuccess) : int(ExitFailure);
        }
        if (!writeHTMLToFileAsDirectoryIfNecessary(page, outputPath, attributes, &error)) {
            printError(error.localizedDescription.isEmpty() ? QStringLiteral("cannot write %1").arg(outputPath)
                                                            : error.localizedDescription);
            return int(ExitFailure);
        }
        // When the folder could not be made the page is written alone: say what it lacks.
        if (textNeedsImagesFolder(page) && !QFileInfo(outputPath).isDir())
            printWarnings(document.inputPath,
                          {QStringLiteral("the pictures could not be written beside %1; the "
                                          "page was written without them")
                               .arg(outputPath)});
        return int(ExitSuccess);
    };
    return handler;
}

} // namespace qly::tool
