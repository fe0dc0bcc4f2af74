// Linked pictures as text tags and back: the two conversions are inverse for any path and size, and
// what only looks like a tag stays text.
#include "PackageTestSupport.h"

#include <qlyappkit/interchange/package/LinkedImageTags.h>

using namespace qly;
using namespace qly::packagetest;

TEST(LinkedImageTags, TagsAndLinksAreInverse)
{
    const QString paths[] = {
        QStringLiteral("figure.png"),
        QStringLiteral("images/sub folder/plan.pdf"),
        QStringLiteral("../shared/cover.jpg"),
        QStringLiteral("/Users/writer/Pictures/caf\u00e9 \u4e2d\u6587 \U0001F600.tiff"),
        QStringLiteral("odd|name>with<marks%20and%25.png"),
        QStringLiteral("C:\\Pictures\\scan.gif"),
        QStringLiteral("notes.txt"),
    };
    const std::optional<QSizeF> sizes[] = {std::nullopt, QSizeF(144, 96.5), QSizeF(0.1 + 0.2, 1e-3)};
    const Attributes font{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Courier"), 14))}};
    for (const QString& path : paths) {
        for (const std::optional<QSizeF>& size : sizes) {
            SCOPED_TRACE(path.toStdString());
            TextAttachment link = TextAttachment::linkedToFile(path);
            if (size)
                link.setBounds(*size);
            AttributedString text(QStringLiteral("before "), font);
            text.append(QString(QChar(AttachmentCharacter)), withAttachment(font, link));
            text.append(QStringLiteral(" after"), {});

            const AttributedString tagged =
                attributedStringByConvertingSymbolicLinkImageAttachmentsToLinkedImageTags(text);
            EXPECT_EQ(tagged.string(),
                      QStringLiteral("before ") + linkedImageTag(path, size) + QStringLiteral(" after"));
            EXPECT_FALSE(tagged.string().contains(QChar(AttachmentCharacter)));
            for (const QChar c : linkedImageTag(path, size))
                ASSERT_TRUE(c.unicode() > 0x20 && c.unicode() < 0x7F) << "the tag is printable ASCII";
            EXPECT_EQ(tagged.attributes(8), font) << "the tag has the character's attributes, less the attachment";

            const AttributedString back =
                attributedStringByConvertingLinkedImageTagsToSymbolicLinkImageAttachments(tagged);
            EXPECT_TRUE(sameStoredText(text, back));
        }
    }
    // Embedded attachments are not links and stay.
    AttributedString embedded(
        QString(QChar(AttachmentCharacter)),
        withAttachment({}, TextAttachment(QStringLiteral("a.png"), encodedImage(patternImage(2, 2), "PNG"))));
    EXPECT_EQ(attributedStringByConvertingSymbolicLinkImageAttachmentsToLinkedImageTags(embedded), embedded);
}

TEST(LinkedImageTags, WhatOnlyLooksLikeATagStaysText)
{
    const QString texts[] = {
        QStringLiteral("<$QlyLinkedImage:>"),
        QStringLiteral("<$QlyLinkedImage:never closed"),
        QStringLiteral("<$QlyLinkedImage:a.png|12>"),
        QStringLiteral("<$QlyLinkedImage:a.png|12,x>"),
        QStringLiteral("<$QlyLinkedImage:a.png|-1,2>"),
        QStringLiteral("<$QlyLinkedImage:a.png|1,2,3>"),
        QStringLiteral("<$QlyLinkedImage:two words.png>"),
        QStringLiteral("<$QlyLinkedImage:caf\u00e9.png>"),
        QStringLiteral("<$QlyLinkedImage:<b>.png>"),
        QStringLiteral("<$QlyLinkedImage:") + QString(70000, u'a') + QStringLiteral(">"),
    };
    for (const QString& t : texts) {
        SCOPED_TRACE(t.left(60).toStdString());
        const AttributedString text(t);
        EXPECT_EQ(attributedStringByConvertingLinkedImageTagsToSymbolicLinkImageAttachments(text), text);
    }
    // A broken tag does not hide a good one after it; many openings with one closing cost one search each.
    const AttributedString mixed(QStringLiteral("<$QlyLinkedImage:x y> <$QlyLinkedImage:a.png>")
                                 + QStringLiteral("<$QlyLinkedImage:").repeated(50000) + QStringLiteral(">"));
    const AttributedString converted = attributedStringByConvertingLinkedImageTagsToSymbolicLinkImageAttachments(mixed);
    EXPECT_EQ(converted.string().left(23), QStringLiteral("<$QlyLinkedImage:x y> \uFFFC"));
    EXPECT_EQ(converted.string().count(QChar(AttachmentCharacter)), 1);
    EXPECT_EQ(converted.attribute(AttachmentAttributeName, 22).value<TextAttachment>().linkedFilePath(),
              QStringLiteral("a.png"));
}
