#include <qlyappkit/formats/html/HTMLExport.h>

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QStringDecoder>
#include <QUrl>
#include <algorithm>
#include <cmath>
#include <vector>

#include <qlyappkit/formats/html/HTMLBodyColumn.h>
#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/formats/html/HTMLExportTarget_p.h>
#include <qlyappkit/formats/html/HTMLImageFiles.h>
#include <qlyappkit/formats/html/HTMLListRepair.h>
#include <qlyappkit/formats/html/ImageAttachments.h>
#include <qlyappkit/platform/html/HTMLWriter.h>
#include <qlyappkit/platform/services/AtomicFile.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

namespace qly {

namespace {

// Set by the folder export on the attributes it passes down: the images folder is its staging folder,
// written without a flush per file and flushed once before it is moved into place.
const QString StagedImagesFolderAttribute = QStringLiteral("qly.HTMLStagedImagesFolder");

const QString XMLElementName = QStringLiteral("XML");
const QString XHTMLTagEnding = QStringLiteral(" /");
// Characters a relative URL may hold as they are besides letters, digits and "-._~".
const QByteArray URLSafeCharacters = QByteArrayLiteral("()!$*+,;=@");

std::optional<QString> decodedUTF8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

Range clipped(Range range, qsizetype length)
{
    const qsizetype start = std::clamp<qsizetype>(range.location, 0, length);
    const qsizetype end = std::clamp<qsizetype>(start + std::max<qsizetype>(range.length, 0), start, length);
    return Range{start, end - start};
}

// The page without images: the platform writer, the column when a width is given, the list repair.
QByteArray plainPageData(const AttributedString& text, Range range, const QVariantMap& attributes, int columnWidth)
{
    QByteArray data = HTMLFromRange(text, range, attributes);
    if (columnWidth > 0)
        data = HTMLDataWithBodyTableOfWidth(columnWidth, data);
    std::optional<QString> html = decodedUTF8(data);
    if (!html)
        return data;
    fixUpNestedHTMLLists(*html);
    return html->toUtf8();
}

// The src of a file in the images folder: each part of the path percent-encoded as a URL needs it.
QString relativeSource(const QString& subpath, const QString& fileName)
{
    QStringList parts;
    for (const QString& part : subpath.split(QLatin1Char('/'), Qt::SkipEmptyParts))
        parts.append(QString::fromLatin1(QUrl::toPercentEncoding(part, URLSafeCharacters)));
    parts.append(QString::fromLatin1(QUrl::toPercentEncoding(fileName, URLSafeCharacters)));
    return parts.join(QLatin1Char('/'));
}

struct ImageTag {
    QString source;
    int width = 0, height = 0;
};

// Turns the placeholders this export put in into image tags. Only a placeholder of the exact form
// naming a file written here becomes a tag; the same characters typed in the text stay text, so no
// text can make markup of its own.
QString replacingPlaceholders(const QString& html, const QSet<QString>& sources, const QString& tagEnd)
{
    static const QString widthPart = QStringLiteral("\" width=\"");
    static const QString heightPart = QStringLiteral("\" height=\"");
    static const QString closing = QLatin1Char('"') + XQHTMLImagePlaceholderEnd;
    QString out;
    out.reserve(html.size());
    qsizetype copied = 0;
    for (qsizetype at = html.indexOf(XQHTMLImagePlaceholderStart); at >= 0;
         at = html.indexOf(XQHTMLImagePlaceholderStart, at + 1)) {
        if (at < copied)
            continue;
        qsizetype i = at + XQHTMLImagePlaceholderStart.size();
        auto expect = [&](const QString& part) {
            if (!QStringView(html).mid(i).startsWith(part))
                return false;
            i += part.size();
            return true;
        };
        auto digits = [&](QString* number) {
            const qsizetype start = i;
            while (i < html.size() && i - start < 10 && html.at(i).isDigit() && html.at(i).unicode() < 0x80)
                ++i;
            *number = html.mid(start, i - start);
            return !number->isEmpty();
        };
        if (!expect(QStringLiteral("\"")))
            continue;
        const qsizetype sourceEnd = html.indexOf(u'"', i);
        if (sourceEnd < 0)
            continue;
        const QString source = html.mid(i, sourceEnd - i);
        i = sourceEnd;
        QString width, height;
        if (!sources.contains(source) || !expect(widthPart) || !digits(&width) || !expect(heightPart)
            || !digits(&height) || !expect(closing))
            continue;
        out.append(QStringView(html).mid(copied, at - copied));
        out += XQHTMLImageTagStart + QLatin1Char('"') + source + widthPart + width + heightPart + height
            + QLatin1Char('"') + tagEnd;
        copied = i;
    }
    out.append(QStringView(html).mid(copied));
    return out;
}

// Text typed in the document that reads like a placeholder keeps its characters but loses its form
// while the page is made: the backslash after its "{" stands in as U+E000 (and a U+E000 of the text as
// U+E000 U+E001), and both come back in the page's body once the real placeholders are replaced.
constexpr char16_t EscapeCharacter = 0xE000;
constexpr char16_t EscapedEscapeCharacter = 0xE001;

void escapeTypedPlaceholders(AttributedString& text)
{
    const QString s = text.string();
    std::vector<std::pair<qsizetype, QString>> edits; // a character and what it becomes
    for (qsizetype i = 0; i < s.size(); ++i) {
        if (s.at(i).unicode() == EscapeCharacter)
            edits.emplace_back(i, QString(QChar(EscapeCharacter)) + QChar(EscapedEscapeCharacter));
    }
    for (qsizetype at = s.indexOf(XQHTMLImagePlaceholderStart); at >= 0;
         at = s.indexOf(XQHTMLImagePlaceholderStart, at + 1))
        edits.emplace_back(at + 1, QString(QChar(EscapeCharacter)));
    std::sort(edits.begin(), edits.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    for (const auto& [at, replacement] : edits)
        text.replaceCharacters(Range{at, 1}, replacement);
}

void unescapeTypedPlaceholders(QString& html)
{
    const qsizetype body = html.indexOf(QLatin1String("<body"));
    if (body < 0 || html.indexOf(QChar(EscapeCharacter), body) < 0)
        return;
    QString out = html.left(body);
    out.reserve(html.size());
    for (qsizetype i = body; i < html.size(); ++i) {
        const QChar c = html.at(i);
        if (c.unicode() != EscapeCharacter) {
            out += c;
        } else if (i + 1 < html.size() && html.at(i + 1).unicode() == EscapedEscapeCharacter) {
            out += c;
            ++i;
        } else {
            out += QLatin1Char('\\');
        }
    }
    html = std::move(out);
}

QString escapedAttribute(const QString& text)
{
    QString escaped = text;
    escaped.replace(QLatin1Char('&'), QLatin1String("&amp;"));
    escaped.replace(QLatin1Char('"'), QLatin1String("&quot;"));
    escaped.replace(QLatin1Char('<'), QLatin1String("&lt;"));
    escaped.replace(QLatin1Char('>'), QLatin1String("&gt;"));
    return escaped;
}

// The tag's size: the image's, or with a largest width, that width at most with the same proportions.
std::optional<QSize> tagSize(const QSizeF& points, int maxWidth)
{
    if (!(points.width() > 0) || !(points.height() > 0) || !std::isfinite(points.width())
        || !std::isfinite(points.height()) || points.width() > 1e7 || points.height() > 1e7)
        return std::nullopt;
    if (maxWidth <= 0)
        return QSize(int(points.width()), int(points.height()));
    const int width = int(std::min(points.width(), double(maxWidth)));
    const int height = int(points.height() / points.width() * width);
    return QSize(width, height);
}

} // namespace

bool textNeedsImagesFolder(const AttributedString& text)
{
    return !firstImageInRange(text, Range{0, text.length()}).isNull();
}

QByteArray HTMLDataFromRange(const AttributedString& text, Range range, const QVariantMap& documentAttributes,
                             QStringList* imagesSubpaths)
{
    QVariantMap attributes = documentAttributes;
    attributes.insert(DocumentTypeDocumentAttribute, HTMLTextDocumentType);
    const int columnWidth = std::max(0, attributes.value(XQHTMLCenteredBodyTableWidthAttribute).toInt());
    const QString imagesFolder = attributes.value(XQHTMLImagesFolderDocumentAttribute).toString();
    const QString imagesSubpath = attributes.value(XQHTMLImagesFolderSubpathDocumentAttribute).toString();
    const QVariant excluded = attributes.value(ExcludedElementsDocumentAttribute);
    const QString tagEnding =
        excluded.isValid() && !excluded.toStringList().contains(XMLElementName, Qt::CaseInsensitive) ? XHTMLTagEnding
                                                                                                     : QString();
    const Range whole = clipped(range, text.length());
    if (imagesSubpaths)
        imagesSubpaths->clear();
    if (imagesFolder.isEmpty() || imagesSubpath.isEmpty())
        return plainPageData(text, whole, attributes, columnWidth);

    AttributedString copy = text.attributedSubstring(whole);
    escapeTypedPlaceholders(copy);
    HTMLImageNaming naming(attributes.value(XQHTMLStripWhitespaceFromImageFilenamesAttribute).toBool());
    HTMLImageFolder folder(imagesFolder, attributes.value(StagedImagesFolderAttribute).toBool());
    struct Replacement {
        Range range;
        QString text;
    };
    std::vector<Replacement> replacements;
    QSet<QString> sources;
    QStringList written;
    Range found;
    QString name;
    // The pictures are found and named in order, encoded all at once (on every core), then stored in order.
    std::vector<TextAttachment> images;
    std::vector<bool> asJPEG;
    std::vector<Range> places;
    QStringList fileNames;
    for (qsizetype from = 0;; from = found.end()) {
        const TextAttachment image = firstImageInRange(copy, Range{from, copy.length() - from}, &found, &name);
        if (image.isNull())
            break;
        bool isJPEG = false;
        fileNames.append(naming.fileNameForImage(name, &isJPEG));
        images.push_back(image);
        asJPEG.push_back(isJPEG);
        places.push_back(found);
    }
    const std::vector<std::optional<ImageRepresentation>> representations = imageRepresentations(images, asJPEG);
    for (size_t i = 0; i < images.size(); ++i) {
        found = places[i];
        const QString& fileName = fileNames.at(qsizetype(i));
        const std::optional<ImageRepresentation>& encoded = representations[i];
        const std::optional<QSize> size = encoded ? tagSize(encoded->pointSize, columnWidth) : std::nullopt;
        bool isNew = false;
        const std::optional<QString> stored = size ? folder.store(fileName, encoded->bytes, &isNew) : std::nullopt;
        if (!stored) {
            replacements.push_back({found, QString()}); // an image that cannot be written is left out
            continue;
        }
        const QString source = relativeSource(imagesSubpath, *stored);
        sources.insert(source);
        if (isNew)
            written.append(imagesSubpath + QLatin1Char('/') + *stored);
        replacements.push_back({found,
                                XQHTMLImagePlaceholderFormat.arg(source, QString::number(size->width()),
                                                                 QString::number(size->height()))});
    }
    if (imagesSubpaths)
        *imagesSubpaths = written;
    // Back to front, so that the earlier ranges stay where they were.
    for (auto it = replacements.rbegin(); it != replacements.rend(); ++it) {
        copy.replaceCharacters(it->range, it->text);
        copy.removeAttribute(AttachmentAttributeName, Range{it->range.location, it->text.size()});
    }

    const QByteArray data = HTMLFromRange(copy, Range{0, copy.length()}, attributes);
    if (data.isEmpty())
        return QByteArray();
    std::optional<QString> html = decodedUTF8(data);
    if (!html)
        return QByteArray();
    fixUpNestedHTMLLists(*html);
    const QString tagEnd =
        XQHTMLImageTagEndFormat.arg(escapedAttribute(localized(XQHTMLImageAlternativeText)), tagEnding);
    QString withImages = replacingPlaceholders(*html, sources, tagEnd);
    unescapeTypedPlaceholders(withImages);
    QByteArray page = withImages.toUtf8();
    if (columnWidth > 0)
        page = HTMLDataWithBodyTableOfWidth(columnWidth, page);
    return page;
}

bool writeHTMLToFile(const AttributedString& text, const QString& path, const QVariantMap& documentAttributes,
                     QStringList* imagesSubpaths, Error* error)
{
    const QByteArray data = HTMLDataFromRange(text, Range{0, text.length()}, documentAttributes, imagesSubpaths);
    if (data.isEmpty()) {
        setError(error, XQHTMLExportErrorDomain, XQHTMLExportNoDataError,
                 localized("The text could not be converted to HTML."));
        return false;
    }
    return writeFileAtomically(path, data, error);
}

bool writeHTMLToFileAsDirectoryIfNecessary(const AttributedString& text, const QString& path,
                                           const QVariantMap& documentAttributes, Error* error)
{
    QVariantMap attributes = documentAttributes;
    attributes.insert(DocumentTypeDocumentAttribute, HTMLTextDocumentType);
    const QString pageName = QFileInfo(path).fileName();
    const QString imagesName = localized(XQHTMLImagesFolderName);
    if (pageName.isEmpty() || pageName == QLatin1String(".") || pageName == QLatin1String("..")) {
        setError(error, XQHTMLExportErrorDomain, XQHTMLExportWriteError,
                 localized("\u201C%1\u201D does not name a file.").arg(path));
        return false;
    }
    QString reason;
    const htmlexport::TargetKind target = htmlexport::inspectTarget(path, pageName, imagesName, &reason);
    if (target == htmlexport::TargetKind::Refused) {
        setError(error, XQHTMLExportErrorDomain, XQHTMLExportTargetInUseError, reason);
        return false;
    }

    if (textNeedsImagesFolder(text)) {
        // Written aside, complete, then moved to the path in place of what was there.
        const QString staging = htmlexport::makeStagingFolder(path);
        const QString images = staging + QLatin1Char('/') + imagesName;
        if (!staging.isEmpty() && QDir().mkdir(images)) {
            attributes.insert(XQHTMLImagesFolderDocumentAttribute, images);
            attributes.insert(XQHTMLImagesFolderSubpathDocumentAttribute, imagesName);
            attributes.insert(StagedImagesFolderAttribute, true);
            Error replaceError;
            if (writeHTMLToFile(text, staging + QLatin1Char('/') + pageName, attributes, nullptr, nullptr)
                && flushStagedFolder(staging)) {
                if (htmlexport::replaceTarget(staging, path, pageName, imagesName, &replaceError))
                    return true;
                if (replaceError.code == XQHTMLExportTargetInUseError) {
                    htmlexport::removeExportFolder(staging, pageName, imagesName);
                    if (error)
                        *error = replaceError;
                    return false;
                }
            }
            attributes.remove(XQHTMLImagesFolderDocumentAttribute);
            attributes.remove(XQHTMLImagesFolderSubpathDocumentAttribute);
            attributes.remove(StagedImagesFolderAttribute);
        }
        if (!staging.isEmpty())
            htmlexport::removeExportFolder(staging, pageName, imagesName);
    }

    // A single page; the images, if any, are left out.
    const int columnWidth = std::max(0, attributes.value(XQHTMLCenteredBodyTableWidthAttribute).toInt());
    const QByteArray data = plainPageData(text, Range{0, text.length()}, attributes, columnWidth);
    if (target == htmlexport::TargetKind::Missing || target == htmlexport::TargetKind::File)
        return writeFileAtomically(path, data, error);
    // A link is replaced rather than written through; an earlier export's folder gives way to the file.
    const QString staged = htmlexport::stagingFileName(path);
    if (!writeFileAtomically(staged, data, error))
        return false;
    if (htmlexport::replaceTarget(staged, path, pageName, imagesName, error))
        return true;
    QFile::remove(staged);
    return false;
}

} // namespace qly
