#include <qlyappkit/interchange/package/LinkedImageTags.h>

#include <QUrl>
#include <cmath>
#include <vector>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>

namespace qly {

namespace {

// Characters a path keeps unescaped besides letters, digits and "-._~".
const QByteArray PathCharactersKept = QByteArrayLiteral("/:");
// A tag longer than this is not one of ours: the search for its closing stops there.
constexpr qsizetype MaximumTagLength = 64 * 1024;
constexpr QChar SizeComponentSeparator = u',';

QString numberText(double value) { return QString::number(value, 'g', 17); }

std::optional<double> sizeComponent(const QString& text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value) || value < 0)
        return std::nullopt;
    return value;
}

struct ParsedTag {
    QString path;
    std::optional<QSizeF> size;
};

// The characters of a percent-encoded path: what else a tag holds was not written by this code.
bool isPathCharacter(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || u == '-' || u == '.'
        || u == '_' || u == '~' || u == '%' || PathCharactersKept.contains(char(u));
}

std::optional<ParsedTag> parseTagBody(const QString& body)
{
    const qsizetype bar = body.indexOf(XQLinkedImageTagSizeSeparator);
    for (qsizetype i = 0, end = bar < 0 ? body.size() : bar; i < end; ++i) {
        if (!isPathCharacter(body.at(i)))
            return std::nullopt;
    }
    ParsedTag tag;
    tag.path = QString::fromUtf8(QByteArray::fromPercentEncoding(body.left(bar).toLatin1()));
    if (tag.path.isEmpty())
        return std::nullopt;
    if (bar >= 0) {
        const QStringList parts = body.mid(bar + 1).split(SizeComponentSeparator);
        if (parts.size() != 2)
            return std::nullopt;
        const std::optional<double> width = sizeComponent(parts[0]);
        const std::optional<double> height = sizeComponent(parts[1]);
        if (!width || !height)
            return std::nullopt;
        tag.size = QSizeF(*width, *height);
    }
    return tag;
}

} // namespace

QString linkedImageTag(const QString& path, const std::optional<QSizeF>& size)
{
    QString tag = XQLinkedImageTagOpening + QString::fromLatin1(QUrl::toPercentEncoding(path, PathCharactersKept));
    if (size)
        tag += XQLinkedImageTagSizeSeparator + numberText(size->width()) + SizeComponentSeparator
            + numberText(size->height());
    return tag + XQLinkedImageTagClosing;
}

AttributedString attributedStringByConvertingSymbolicLinkImageAttachmentsToLinkedImageTags(const AttributedString& text)
{
    struct Change {
        qsizetype at;
        QString tag;
    };
    std::vector<Change> changes;
    text.enumerateAttribute(AttachmentAttributeName, Range{0, text.length()}, [&](const QVariant& value, Range run) {
        if (value.metaType() != QMetaType::fromType<TextAttachment>())
            return true;
        const TextAttachment attachment = value.value<TextAttachment>();
        if (!attachment.isLinkedFile())
            return true;
        const std::optional<QSizeF> size =
            attachment.hasExplicitBounds() ? std::optional<QSizeF>(attachment.bounds()) : std::nullopt;
        const QString tag = linkedImageTag(attachment.linkedFilePath(), size);
        for (qsizetype i = run.location; i < run.end(); ++i) {
            if (text.characterAt(i).unicode() == AttachmentCharacter)
                changes.push_back({i, tag});
        }
        return true;
    });
    if (changes.empty())
        return text;
    AttributedString result = text;
    for (auto it = changes.rbegin(); it != changes.rend(); ++it) {
        Attributes attributes = text.attributes(it->at);
        attributes.remove(AttachmentAttributeName);
        result.replaceCharacters(Range{it->at, 1}, AttributedString(it->tag, attributes));
    }
    return result;
}

AttributedString attributedStringByConvertingLinkedImageTagsToSymbolicLinkImageAttachments(const AttributedString& text)
{
    const QString string = text.string();
    struct Change {
        Range range;
        ParsedTag tag;
    };
    std::vector<Change> changes;
    qsizetype from = 0;
    qsizetype close = -1; // the first closing after the current opening; openings that share it search once
    while (true) {
        const qsizetype start = string.indexOf(XQLinkedImageTagOpening, from);
        if (start < 0)
            break;
        const qsizetype bodyStart = start + XQLinkedImageTagOpening.size();
        if (close < bodyStart)
            close = string.indexOf(XQLinkedImageTagClosing, bodyStart);
        if (close < 0)
            break; // no tag can close after this one either
        from = bodyStart;
        if (close - start > MaximumTagLength)
            continue;
        std::optional<ParsedTag> tag = parseTagBody(string.mid(bodyStart, close - bodyStart));
        if (!tag)
            continue;
        changes.push_back({Range::fromBounds(start, close + XQLinkedImageTagClosing.size()), std::move(*tag)});
        from = close + XQLinkedImageTagClosing.size();
    }
    if (changes.empty())
        return text;
    AttributedString result = text;
    for (auto it = changes.rbegin(); it != changes.rend(); ++it) {
        TextAttachment attachment = TextAttachment::linkedToFile(it->tag.path);
        if (it->tag.size)
            attachment.setBounds(*it->tag.size);
        Attributes attributes = text.attributes(it->range.location);
        attributes.insert(AttachmentAttributeName, QVariant::fromValue(attachment));
        result.replaceCharacters(it->range, AttributedString(QString(QChar(AttachmentCharacter)), attributes));
    }
    return result;
}

} // namespace qly
