#include <qlyappkit/text/attributes/AttributeQueries.h>

#include <QFile>
#include <QTemporaryDir>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>

using namespace qly;

namespace {

const QString kMark = QStringLiteral("Mark");

QVariant styleWith(TextAlignment alignment)
{
    ParagraphStyle style;
    style.setAlignment(alignment);
    return QVariant::fromValue(style);
}

QVariant attachmentValue(const TextAttachment& attachment) { return QVariant::fromValue(attachment); }

// The text with an attachment attribute on the character at index.
void attach(AttributedString& text, qsizetype index, const TextAttachment& attachment)
{
    text.addAttribute(AttachmentAttributeName, attachmentValue(attachment), Range{index, 1});
}

} // namespace

TEST(AttributeQueries, AttributesWithoutAttachments)
{
    AttributedString text(QStringLiteral("ab\uFFFCcd"), {{kMark, 1}});
    const TextAttachment picture(QStringLiteral("p.png"), QByteArray("x"));
    attach(text, 2, picture);

    Range effective;
    const Attributes at2 = attributesWithoutAttachmentsAtIndex(text, 2, &effective);
    EXPECT_EQ(at2, (Attributes{{kMark, 1}}));
    EXPECT_EQ(effective, (Range{2, 1}));
    EXPECT_TRUE(text.attributes(2).contains(AttachmentAttributeName)); // the text is left alone

    const std::optional<Attributes> guarded = attributesAtIndexWithoutAttachments(text, 2, &effective);
    ASSERT_TRUE(guarded);
    EXPECT_EQ(*guarded, at2);
    EXPECT_EQ(attributesAtIndexWithoutAttachments(text, 0), (Attributes{{kMark, 1}}));
    EXPECT_FALSE(attributesAtIndexWithoutAttachments(text, text.length()));
    EXPECT_FALSE(attributesAtIndexWithoutAttachments(text, -1));
    EXPECT_FALSE(attributesAtIndexWithoutAttachments(AttributedString(), 0));
}

TEST(AttributeQueries, ExistsFirstLastAndValues)
{
    // "abcdefghij": Mark "A" on [1,3), "B" on [5,7), "A" on [8,9).
    AttributedString text(QStringLiteral("abcdefghij"));
    text.addAttribute(kMark, QStringLiteral("A"), Range{1, 2});
    text.addAttribute(kMark, QStringLiteral("B"), Range{5, 2});
    text.addAttribute(kMark, QStringLiteral("A"), Range{8, 1});

    EXPECT_TRUE(attributeExistsInRange(text, kMark, Range{0, 2}));
    EXPECT_FALSE(attributeExistsInRange(text, kMark, Range{3, 2}));
    EXPECT_FALSE(attributeExistsInRange(text, kMark, Range{1, 0})); // empty, though the mark is there
    EXPECT_TRUE(attributeExistsInRange(text, kMark, Range{9 - 1, 100}));
    EXPECT_FALSE(attributeExistsInRange(text, kMark, Range{9, 100}));

    Range found{1, 1};
    EXPECT_EQ(firstAttribute(text, kMark, Range{0, 10}, &found).toString(), QStringLiteral("A"));
    EXPECT_EQ(found, (Range{1, 2}));
    // The run is clipped to the range.
    EXPECT_EQ(firstAttribute(text, kMark, Range{2, 5}, &found).toString(), QStringLiteral("A"));
    EXPECT_EQ(found, (Range{2, 1}));
    // A range running past the end searches up to the end only.
    EXPECT_EQ(firstAttribute(text, kMark, Range{3, 1000}, &found).toString(), QStringLiteral("B"));
    EXPECT_EQ(found, (Range{5, 2}));
    // Nothing in range, and a start at or past the end: nothing, with the range set to not found.
    EXPECT_FALSE(firstAttribute(text, kMark, Range{3, 2}, &found).isValid());
    EXPECT_EQ(found, Range::notFound());
    found = Range{1, 1};
    EXPECT_FALSE(firstAttribute(text, kMark, Range{10, 5}, &found).isValid());
    EXPECT_EQ(found, Range::notFound());
    EXPECT_EQ(Range::notFound().location, 0x7FFFFFFF);

    EXPECT_EQ(lastAttribute(text, kMark, Range{0, 10}, &found).toString(), QStringLiteral("A"));
    EXPECT_EQ(found, (Range{8, 1}));
    EXPECT_EQ(lastAttribute(text, kMark, Range{0, 8}, &found).toString(), QStringLiteral("B"));
    EXPECT_EQ(found, (Range{5, 2}));
    EXPECT_EQ(lastAttribute(text, kMark, Range{0, 6}, &found).toString(), QStringLiteral("B"));
    EXPECT_EQ(found, (Range{5, 1}));
    EXPECT_EQ(lastAttribute(text, kMark, Range{2, 1000}, &found).toString(), QStringLiteral("A"));
    EXPECT_EQ(found, (Range{8, 1}));
    found = Range{1, 1};
    EXPECT_FALSE(lastAttribute(text, kMark, Range{3, 2}, &found).isValid());
    EXPECT_EQ(found, Range::notFound());
    EXPECT_FALSE(lastAttribute(text, kMark, Range{0, 1}, &found).isValid());
    EXPECT_FALSE(lastAttribute(text, kMark, Range{12, 1}, &found).isValid());
    EXPECT_EQ(found, Range::notFound());

    EXPECT_EQ(valuesForAttribute(text, kMark, Range{0, 10}),
              (QVariantList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("A")}));
    EXPECT_EQ(valuesForAttribute(text, kMark, Range{6, 100}), (QVariantList{QStringLiteral("B"), QStringLiteral("A")}));
    EXPECT_TRUE(valuesForAttribute(text, kMark, Range{3, 2}).isEmpty());
}

TEST(AttributeQueries, MostCommonTextAlignment)
{
    EXPECT_EQ(mostCommonTextAlignment(AttributedString()), NaturalTextAlignment);
    EXPECT_EQ(mostCommonTextAlignment(AttributedString(QStringLiteral("plain"))), LeftTextAlignment);

    // Centre 5, then right 5: a tie keeps the earlier leader, whichever comes first.
    AttributedString tie(QStringLiteral("aaaaabbbbb"));
    tie.addAttribute(ParagraphStyleAttributeName, styleWith(CenterTextAlignment), Range{0, 5});
    tie.addAttribute(ParagraphStyleAttributeName, styleWith(RightTextAlignment), Range{5, 5});
    EXPECT_EQ(mostCommonTextAlignment(tie), CenterTextAlignment);
    tie.addAttribute(ParagraphStyleAttributeName, styleWith(RightTextAlignment), Range{0, 5});
    tie.addAttribute(ParagraphStyleAttributeName, styleWith(CenterTextAlignment), Range{5, 5});
    EXPECT_EQ(mostCommonTextAlignment(tie), RightTextAlignment);

    // Unstyled 3 (left), centre 5, explicit left 2: left reaches 5 but only ties the leader.
    AttributedString mixed(QStringLiteral("aaabbbbbcc"));
    mixed.addAttribute(ParagraphStyleAttributeName, styleWith(CenterTextAlignment), Range{3, 5});
    mixed.addAttribute(ParagraphStyleAttributeName, styleWith(LeftTextAlignment), Range{8, 2});
    EXPECT_EQ(mostCommonTextAlignment(mixed), CenterTextAlignment);
    // One more left character and left wins.
    mixed.append(QStringLiteral("d"), {});
    EXPECT_EQ(mostCommonTextAlignment(mixed), LeftTextAlignment);

    AttributedString justified(QStringLiteral("abcdef"));
    justified.addAttribute(ParagraphStyleAttributeName, styleWith(JustifiedTextAlignment), Range{0, 4});
    justified.addAttribute(ParagraphStyleAttributeName, styleWith(NaturalTextAlignment), Range{4, 2});
    EXPECT_EQ(mostCommonTextAlignment(justified), JustifiedTextAlignment);
}

TEST(AttributeQueries, RangeContainsTextBlocks)
{
    ParagraphStyle cellStyle;
    TextBlock cell;
    cell.table = std::make_shared<TextTable>(TextTable{2});
    cellStyle.setTextBlocks({cell});
    AttributedString text(QStringLiteral("first\ncell\nlast"));
    text.addAttribute(ParagraphStyleAttributeName, QVariant::fromValue(ParagraphStyle()), Range{0, 6});
    text.addAttribute(ParagraphStyleAttributeName, QVariant::fromValue(cellStyle), Range{6, 5});

    EXPECT_FALSE(rangeContainsTextBlocks(text, Range{0, 6}));
    EXPECT_TRUE(rangeContainsTextBlocks(text, Range{0, 7}));
    EXPECT_TRUE(rangeContainsTextBlocks(text, Range{8, 1000}));
    EXPECT_FALSE(rangeContainsTextBlocks(text, Range{7, 0}));
    EXPECT_FALSE(rangeContainsTextBlocks(text, Range{11, 4}));
}

TEST(AttributeQueries, RemovingAttachments)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString csvPath = dir.filePath(QStringLiteral("data.csv"));
    {
        QFile csv(csvPath);
        ASSERT_TRUE(csv.open(QIODevice::WriteOnly));
        csv.write("1,2\n");
    }
    const QString jpgPath = dir.filePath(QStringLiteral("shot.jpg"));
    ASSERT_TRUE(QFile::copy(csvPath, jpgPath));

    // 0 p(png) 1 t(txt) 2 P(PDF) 3 c(linked csv) 4 m(linked missing txt) 5 n(null) 6 j(linked jpg)
    // 7 U+FFFC without attachment, 8 'x' carrying an attachment.
    AttributedString text(QStringLiteral("\uFFFC\uFFFC\uFFFC\uFFFC\uFFFC\uFFFC\uFFFC\uFFFCx!"), {{kMark, 1}});
    attach(text, 0, TextAttachment(QStringLiteral("photo.png"), QByteArray("png")));
    attach(text, 1, TextAttachment(QStringLiteral("notes.txt"), QByteArray("text")));
    attach(text, 2, TextAttachment(QStringLiteral("scan.PDF"), QByteArray("%PDF")));
    attach(text, 3, TextAttachment::linkedToFile(csvPath));
    attach(text, 4, TextAttachment::linkedToFile(dir.filePath(QStringLiteral("gone.txt"))));
    attach(text, 5, TextAttachment());
    attach(text, 6, TextAttachment::linkedToFile(jpgPath));
    attach(text, 8, TextAttachment(QStringLiteral("notes.txt"), QByteArray("text")));

    const AttributedString withoutAll = attributedStringWithoutAttachments(text);
    EXPECT_EQ(withoutAll.string(), QStringLiteral("\uFFFCx!"));
    EXPECT_EQ(withoutAll.attributes(2), (Attributes{{kMark, 1}}));
    EXPECT_TRUE(withoutAll.checkInvariants());

    const AttributedString imagesOnly = attributedStringByRemovingNonImageAttachments(text);
    ASSERT_EQ(imagesOnly.length(), 8);
    const auto fileAt = [&](qsizetype i) {
        return imagesOnly.attribute(AttachmentAttributeName, i).value<TextAttachment>().fileName();
    };
    EXPECT_EQ(fileAt(0), QStringLiteral("photo.png"));
    EXPECT_EQ(fileAt(1), QStringLiteral("scan.PDF"));
    EXPECT_EQ(fileAt(2), QStringLiteral("gone.txt")); // not a file on disk: kept
    EXPECT_TRUE(imagesOnly.attribute(AttachmentAttributeName, 3).value<TextAttachment>().isNull());
    EXPECT_EQ(fileAt(4), QStringLiteral("shot.jpg"));
    EXPECT_FALSE(imagesOnly.attribute(AttachmentAttributeName, 5).isValid());
    EXPECT_EQ(imagesOnly.substring(Range{5, 3}), QStringLiteral("\uFFFCx!"));
    EXPECT_EQ(text.length(), 10); // the receiver is left alone

    EXPECT_TRUE(isImageFileExtension(QStringLiteral("PNG")));
    EXPECT_TRUE(isImageFileExtension(QStringLiteral("jpeg")));
    EXPECT_FALSE(isImageFileExtension(QStringLiteral("txt")));
    EXPECT_FALSE(isImageFileExtension(QString()));
}
