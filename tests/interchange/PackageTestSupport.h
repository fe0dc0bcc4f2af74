#pragma once
// Pictures and texts for the package RTF tests, and a comparison of stored texts that looks into
// attachments (by their bytes or pixels, their names and sizes) and comments (by their fields) instead of
// their identity.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>

#include "platform/rtf/RTFTestSupport.h"

#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

namespace qly::packagetest {

/// A picture whose every pixel differs from its neighbours, so that a lost or moved pixel shows.
inline QImage patternImage(int width, int height, int seed = 0)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb((x * 37 + seed) % 256, (y * 53 + seed * 7) % 256, (x * y + seed * 13) % 256));
    }
    return image;
}

inline QByteArray encodedImage(const QImage& image, const char* format, int quality = -1)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format, quality)) << format;
    return bytes;
}

/// A one-page PDF of the given size in points with a filled rectangle on it.
inline QByteArray pdfBytes(QSizeF points, const QColor& color = Qt::darkBlue)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setPageSize(QPageSize(points, QPageSize::Point));
        writer.setPageMargins(QMarginsF());
        writer.setResolution(72);
        QPainter painter(&writer);
        painter.fillRect(QRectF(QPointF(5, 5), points - QSizeF(10, 10)), color);
    }
    return bytes;
}

inline Attributes withAttachment(Attributes attributes, const TextAttachment& attachment)
{
    attributes.insert(AttachmentAttributeName, QVariant::fromValue(attachment));
    return attributes;
}

/// Pixels compared as opaque RGB.
inline bool samePixels(const QImage& a, const QImage& b)
{
    return !a.isNull() && a.size() == b.size()
        && a.convertToFormat(QImage::Format_RGB32) == b.convertToFormat(QImage::Format_RGB32);
}

/// Why two attachments differ (empty when they are alike): linked ones by path and size; embedded PNG,
/// JPEG and PDF by name and bytes, others (converted to PNG on the way) by base name and pixels; both by
/// their explicit size.
inline QString attachmentDifference(const TextAttachment& expected, const TextAttachment& actual)
{
    if (expected.isLinkedFile() != actual.isLinkedFile())
        return QStringLiteral("linked %1 instead of %2").arg(actual.isLinkedFile()).arg(expected.isLinkedFile());
    if (expected.hasExplicitBounds() != actual.hasExplicitBounds()
        || (expected.hasExplicitBounds() && expected.bounds() != actual.bounds()))
        return QStringLiteral("bounds %1x%2 (explicit %3) instead of %4x%5 (explicit %6)")
            .arg(actual.bounds().width())
            .arg(actual.bounds().height())
            .arg(actual.hasExplicitBounds())
            .arg(expected.bounds().width())
            .arg(expected.bounds().height())
            .arg(expected.hasExplicitBounds());
    if (expected.isLinkedFile())
        return expected.linkedFilePath() == actual.linkedFilePath()
            ? QString()
            : QStringLiteral("path %1 instead of %2").arg(actual.linkedFilePath(), expected.linkedFilePath());
    const QString extension = QFileInfo(expected.fileName()).suffix().toLower();
    const bool keptAsIs = extension == QLatin1String("png") || extension == QLatin1String("jpg")
        || extension == QLatin1String("jpeg") || extension == QLatin1String("pdf");
    if (keptAsIs) {
        // The stored extension is the kind's own: "photo.JPEG" comes back as "photo.jpg".
        const QString kind = extension == QLatin1String("jpeg") ? QStringLiteral("jpg") : extension;
        if (QFileInfo(expected.fileName()).completeBaseName() + QLatin1Char('.') + kind != actual.fileName())
            return QStringLiteral("name %1 instead of %2").arg(actual.fileName(), expected.fileName());
        if (expected.contents() != actual.contents())
            return QStringLiteral("bytes of %1 differ").arg(expected.fileName());
        return {};
    }
    if (QFileInfo(expected.fileName()).completeBaseName() != QFileInfo(actual.fileName()).completeBaseName())
        return QStringLiteral("name %1 instead of %2").arg(actual.fileName(), expected.fileName());
    if (!samePixels(expected.image(), actual.image()))
        return QStringLiteral("pixels of %1 differ").arg(expected.fileName());
    return {};
}

/// Why two comments differ; empty when alike.
inline QString commentDifference(const XQCommentPtr& expected, const XQCommentPtr& actual)
{
    if (!expected || !actual)
        return QStringLiteral("a comment is missing");
    if (expected->uniqueID() != actual->uniqueID() || expected->isFootnote() != actual->isFootnote()
        || expected->footnoteNumber() != actual->footnoteNumber() || expected->isCollapsed() != actual->isCollapsed()
        || expected->color() != actual->color())
        return QStringLiteral("comment %1 fields differ").arg(expected->uniqueID());
    const ::testing::AssertionResult text = rtftest::sameText(expected->text(), actual->text());
    return text ? QString() : QStringLiteral("comment text: ") + QString::fromStdString(text.message());
}

/// Equal characters and attributes, attachments and comments compared by what they hold.
inline ::testing::AssertionResult sameStoredText(const AttributedString& expected, const AttributedString& actual)
{
    auto withoutObjects = [](const AttributedString& text) {
        AttributedString copy = text;
        copy.removeAttribute(AttachmentAttributeName, Range{0, copy.length()});
        copy.removeAttribute(XQCommentAttributeName, Range{0, copy.length()});
        return copy;
    };
    ::testing::AssertionResult plain = rtftest::sameText(withoutObjects(expected), withoutObjects(actual));
    if (!plain)
        return plain;
    for (qsizetype i = 0; i < expected.length(); ++i) {
        for (const QString* name : {&AttachmentAttributeName, &XQCommentAttributeName}) {
            const QVariant e = expected.attribute(*name, i), a = actual.attribute(*name, i);
            if (e.isValid() != a.isValid())
                return ::testing::AssertionFailure() << name->toStdString() << " missing or extra at " << i;
            if (!e.isValid())
                continue;
            const QString why = *name == AttachmentAttributeName
                ? attachmentDifference(e.value<TextAttachment>(), a.value<TextAttachment>())
                : commentDifference(commentFromVariant(e), commentFromVariant(a));
            if (!why.isEmpty())
                return ::testing::AssertionFailure() << "at " << i << ": " << why.toStdString();
        }
    }
    return ::testing::AssertionSuccess();
}

} // namespace qly::packagetest
