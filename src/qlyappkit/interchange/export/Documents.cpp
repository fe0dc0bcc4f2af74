#include <qlyappkit/interchange/export/Documents.h>

#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/services/Localization.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include <QFileInfo>

namespace qly {

namespace {

const struct {
    const char* name;
    DocumentFormat format;
} FormatNames[] = {
    {"txt", DocumentFormat::PlainText},
    {"text", DocumentFormat::PlainText},
    {"rtf", DocumentFormat::RTF},
    {"word-rtf", DocumentFormat::WordRTF},
};

} // namespace

DocumentFormat documentFormatNamed(const QString& name)
{
    for (const auto& entry : FormatNames) {
        if (name.compare(QLatin1String(entry.name), Qt::CaseInsensitive) == 0)
            return entry.format;
    }
    return DocumentFormat::Unknown;
}

DocumentFormat documentFormatOfPath(const QString& path)
{
    const DocumentFormat format = documentFormatNamed(QFileInfo(path).suffix());
    // "word-rtf" names a way of writing RTF, not an extension.
    return format == DocumentFormat::WordRTF ? DocumentFormat::Unknown : format;
}

QStringList documentFormatNames()
{
    QStringList names;
    for (const auto& entry : FormatNames)
        names.append(QLatin1String(entry.name));
    return names;
}

bool canReadDocumentFormat(DocumentFormat format)
{
    return format == DocumentFormat::PlainText || format == DocumentFormat::RTF;
}

std::optional<AttributedString> attributedStringFromDocumentData(const QByteArray& data, DocumentFormat format,
                                                                 QVariantMap* documentAttributes, Error* error,
                                                                 QStringList* warnings)
{
    switch (format) {
    case DocumentFormat::PlainText: {
        QString text = QString::fromUtf8(data);
        if (text.startsWith(QChar(0xFEFF)))
            text.remove(0, 1);
        return AttributedString(text);
    }
    case DocumentFormat::RTF: {
        RTFParseResult result;
        std::optional<AttributedString> text = attributedStringFromRTF(data, documentAttributes, &result);
        if (!text) {
            setError(error, XQDocumentErrorDomain, XQDocumentNotRTFError, result.description());
            return std::nullopt;
        }
        if (!result && warnings)
            warnings->append(localized("%1 at byte %2; the text read up to there is used")
                                 .arg(result.description())
                                 .arg(result.offset));
        return text;
    }
    case DocumentFormat::WordRTF:
    case DocumentFormat::Unknown:
        break;
    }
    setError(error, XQDocumentErrorDomain, XQDocumentUnknownFormatError,
             localized("This format can be written but not read."));
    return std::nullopt;
}

QByteArray plainTextDocumentData(const AttributedString& text)
{
    QString plain = text.string();
    plain.replace(QChar(0x2028), QLatin1Char('\n'));
    plain.replace(QChar(0x2029), QLatin1Char('\n'));
    plain.remove(QChar(AttachmentCharacter));
    return plain.toUtf8();
}

} // namespace qly
