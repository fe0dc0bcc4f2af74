// The package RTF writer's own output: the exact picture groups, the platform's RTF when nothing more is
// needed, notes only in main text, and ranges.
#include "PackageTestSupport.h"

#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/interchange/package/PackageRTFWriter.h>
#include <qlyappkit/interchange/pictures/PictureData.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/attributes/LinkValues.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/CommentedText.h>

using namespace qly;
using namespace qly::packagetest;

namespace {

QByteArray hex(const QByteArray& bytes) { return bytes.toHex(); }

QByteArray packageRTF(const AttributedString& text, bool isMainText = true)
{
    return quilleryPackageRTFFromRange(text, Range{0, text.length()}, {}, isMainText);
}

AttributedString withPicture(const TextAttachment& attachment)
{
    AttributedString text(QStringLiteral("See "));
    text.append(QString(QChar(AttachmentCharacter)), withAttachment({}, attachment));
    text.append(QStringLiteral(" here."), {});
    return text;
}

// The bytes of the first "\pngblip" data after `from`.
QByteArray firstPNGData(const QByteArray& rtf, qsizetype from = 0)
{
    const qsizetype start = rtf.indexOf("\\pngblip ", from) + 9;
    return QByteArray::fromHex(rtf.mid(start, rtf.indexOf('}', start) - start));
}

} // namespace

TEST(PackageRTFWriter, PictureGroupsAreWrittenExactly)
{
    const QByteArray png = encodedImage(patternImage(7, 5), "PNG");
    TextAttachment figure(QStringLiteral("figure.png"), png);
    figure.setBounds(QSizeF(10.57, 20.02)); // 211.4 and 400.4 twips: truncated
    EXPECT_TRUE(packageRTF(withPicture(figure))
                    .contains("See {\\*\\shppict {\\pict {\\*\\nisusfilename figure} \\picw7 \\pich5 \\picwgoal211 "
                              "\\pichgoal400 \\pngblip "
                              + hex(png) + "}} here."));

    // Without a name there is no name group; without a size set the goal is one point a pixel.
    const QByteArray jpeg = encodedImage(patternImage(16, 8), "JPEG");
    EXPECT_TRUE(packageRTF(withPicture(TextAttachment(QString(), jpeg)))
                    .contains("{\\*\\shppict {\\pict \\picw16 \\pich8 \\picwgoal320 \\pichgoal160 \\jpegblip "
                              + hex(jpeg) + "}}"));

    // Names are escaped as RTF text.
    EXPECT_TRUE(packageRTF(withPicture(TextAttachment(QStringLiteral("caf\u00e9 {1}.x.png"), png)))
                    .contains("{\\*\\nisusfilename caf\\uc0\\u233  \\{1\\}.x}"));

    // A PDF keeps its bytes in its own group, inside the picture group of its rendering.
    const QByteArray pdf = pdfBytes(QSizeF(100, 50));
    const QByteArray withPDF = packageRTF(withPicture(TextAttachment(QStringLiteral("chart.pdf"), pdf)));
    EXPECT_TRUE(
        withPDF.contains("{\\*\\shppict {\\pict {\\*\\nisusfilename chart} {\\*\\quillerypdf {{\\*\\pdffilename "
                         "chart} "
                         + hex(pdf) + "}} \\picw200 \\pich100 \\picwgoal2000 \\pichgoal1000 \\pngblip "));
    EXPECT_EQ(QImage::fromData(firstPNGData(withPDF)).size(), QSize(200, 100)); // rendered at 144 dots an inch
    // One that cannot be rendered is written alone.
    const QByteArray broken = QByteArrayLiteral("%PDF-1.4 not really");
    EXPECT_TRUE(packageRTF(withPicture(TextAttachment(QStringLiteral("broken.pdf"), broken)))
                    .contains("See {\\*\\quillerypdf {{\\*\\pdffilename broken} " + hex(broken) + "}} here."));
    EXPECT_TRUE(packageRTF(withPicture(TextAttachment(QString(), broken)))
                    .contains("See {\\*\\quillerypdf {" + hex(broken) + "}} here."));
}

TEST(PackageRTFWriter, OtherBitmapsAreWrittenAsPNG)
{
    const QImage image = patternImage(5, 6, 3);
    for (const char* format : {"TIFF", "BMP"}) {
        SCOPED_TRACE(format);
        const QByteArray rtf = packageRTF(withPicture(TextAttachment(
            QStringLiteral("scan.") + QString::fromLatin1(format).toLower(), encodedImage(image, format))));
        EXPECT_TRUE(rtf.contains("{\\*\\nisusfilename scan} \\picw5 \\pich6 \\picwgoal100 \\pichgoal120 \\pngblip "));
        const QByteArray data = firstPNGData(rtf);
        EXPECT_EQ(pictureFormatOfData(data), PictureFormat::PNG);
        EXPECT_TRUE(samePixels(QImage::fromData(data), image));
    }
    // Bytes that do not match their name are written as what they are.
    const QByteArray jpeg = encodedImage(patternImage(4, 4), "JPEG");
    EXPECT_TRUE(packageRTF(withPicture(TextAttachment(QStringLiteral("wrong.png"), jpeg)))
                    .contains("\\jpegblip " + hex(jpeg) + "}}"));
    // An attachment that is no picture is left to the platform writer, which leaves it out.
    const QByteArray notes = packageRTF(withPicture(TextAttachment(QStringLiteral("notes.txt"), "plain words")));
    EXPECT_FALSE(notes.contains("\\pict"));
    EXPECT_EQ(initWithQuilleryPackageRTF(notes, nullptr, true)->string(), QStringLiteral("See  here."));
}

TEST(PackageRTFWriter, NothingButThePlatformRTFWhenNothingMoreIsNeeded)
{
    const Attributes font{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 12))}};
    AttributedString text(QStringLiteral("Plain "), font);
    text.append(QStringLiteral("linked"), {{LinkAttributeName, QStringLiteral("https://example.com/")}});
    EXPECT_EQ(packageRTF(text), RTFFromRange(text, Range{0, text.length()}));

    // Comment anchors and document links are flattened into links on the way.
    const XQCommentPtr comment = XQComment::create(AttributedString(QStringLiteral("note")));
    text.addAttribute(XQCommentAttributeName, variantFromComment(comment), Range{0, 5});
    text.addAttribute(LinkAttributeName, documentLinkDictionary(QStringLiteral("Scene-7")), Range{6, 6});
    const QByteArray rtf = packageRTF(text);
    EXPECT_EQ(rtf,
              RTFFromRange(attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(text, true),
                           Range{0, text.length()}));
    EXPECT_TRUE(rtf.contains(commentLinkString(comment->uniqueID()).toLatin1()));
    EXPECT_TRUE(rtf.contains("quilllnk://Scene-7"));
    const AttributedString read = *initWithQuilleryPackageRTF(rtf, nullptr, true);
    EXPECT_EQ(read.attribute(LinkAttributeName, 7), QVariant(documentLinkDictionary(QStringLiteral("Scene-7"))));
    EXPECT_EQ(read.attribute(LinkAttributeName, 1).toString(), commentLinkString(comment->uniqueID()));
}

TEST(PackageRTFWriter, NotesAreTaggedOnlyInMainText)
{
    AttributedString text(QStringLiteral("Body"));
    text.append(QStringLiteral(" a note"), {{XQFootnoteAttributeName, true}});
    text.append(QStringLiteral("\n"), {});
    text.append(QStringLiteral("A pinned paragraph"), {{XQKeepWithNextAttributeName, true}});
    const QByteArray main = packageRTF(text, true);
    EXPECT_TRUE(main.contains("\\Qlry_fn="));
    EXPECT_TRUE(main.contains("<$QlyKeepWithNext>"));
    EXPECT_EQ(initWithQuilleryPackageRTF(main, nullptr, true)->attribute(XQFootnoteAttributeName, 5), QVariant(true));

    // A synopsis or a note's own text is stored without that step: the notes are not kept.
    const QByteArray other = packageRTF(text, false);
    EXPECT_FALSE(other.contains("Qlry_fn"));
    EXPECT_EQ(other, RTFFromRange(text, Range{0, text.length()}));
    const AttributedString read = *initWithQuilleryPackageRTF(other, nullptr, false);
    EXPECT_EQ(read.string(), text.string());
    EXPECT_FALSE(read.attribute(XQFootnoteAttributeName, 5).isValid());
    // Tags that a text other than main text holds are its characters.
    EXPECT_EQ(initWithQuilleryPackageRTF(main, nullptr, false)->string().count(QStringLiteral("Qlry_fn")), 2);
}

TEST(PackageRTFWriter, RangesAreClippedToTheText)
{
    const QByteArray png = encodedImage(patternImage(3, 3), "PNG");
    AttributedString text = withPicture(TextAttachment(QStringLiteral("a.png"), png));
    text.addAttribute(XQParagraphStyleIDAttributeName, QStringLiteral("Quote"), Range{0, text.length()});
    const struct {
        Range range;
        QString expected;
    } cases[] = {
        {{2, 5}, QStringLiteral("e \uFFFC h")},
        {{4, 100}, QStringLiteral("\uFFFC here.")},
        {{0, 4}, QStringLiteral("See ")},
        {{50, 3}, QString()},
    };
    for (const auto& c : cases) {
        const AttributedString read =
            *initWithQuilleryPackageRTF(quilleryPackageRTFFromRange(text, c.range, {}, true), nullptr, true);
        EXPECT_EQ(read.string(), c.expected) << c.range.location;
        if (!c.expected.isEmpty()) {
            EXPECT_EQ(read.attribute(XQParagraphStyleIDAttributeName, 0), QVariant(QStringLiteral("Quote")));
        }
    }
}

TEST(PackageRTFWriter, TextThatLooksLikeAMarkerIsLeftAlone)
{
    const QByteArray png = encodedImage(patternImage(3, 3), "PNG");
    const QString literal =
        QStringLiteral("<<**JVT_IMG_TAG0**>> <<**JVT_IMG_TAG7**>> <<**QLY_STYLE_ID_TAG0**>> <IMG0_QLRY_TAG> ");
    AttributedString text(literal);
    text.append(QString(QChar(AttachmentCharacter)), withAttachment({}, TextAttachment(QStringLiteral("a.png"), png)));
    text.append(QStringLiteral(" <STYLE1_QLRY_TAG>"), {{XQCharacterStyleIDAttributeName, QStringLiteral("Em")}});
    const QByteArray rtf = packageRTF(text);
    EXPECT_EQ(rtf.count("\\pngblip"), 1);
    const AttributedString read = *initWithQuilleryPackageRTF(rtf, nullptr, true);
    EXPECT_EQ(read.string(), text.string());
    EXPECT_EQ(read.attribute(AttachmentAttributeName, literal.size()).value<TextAttachment>().contents(), png);
    EXPECT_EQ(read.attribute(XQCharacterStyleIDAttributeName, literal.size() + 2), QVariant(QStringLiteral("Em")));
    EXPECT_FALSE(read.attribute(XQCharacterStyleIDAttributeName, literal.size()).isValid());
}
