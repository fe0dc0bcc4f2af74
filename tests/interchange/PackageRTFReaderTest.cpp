// The package RTF reader on what other writers and damaged files give it: plain text, leading blank
// lines, pictures in the shapes word processors write them, ignored pictures, equation names, and every
// fallback for broken picture groups.
#include "PackageTestSupport.h"

#include <QRegularExpression>

#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/interchange/package/PackageRTFWriter.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

using namespace qly;
using namespace qly::packagetest;

namespace {

const QByteArray& pngData()
{
    static const QByteArray png = encodedImage(patternImage(4, 2), "PNG");
    return png;
}

QByteArray pngHex() { return pngData().toHex(); }

// A picture group as word processors write it.
QByteArray pictGroup(const QByteArray& words, const QByteArray& data)
{
    return "{\\*\\shppict{\\pict" + words + "\\pngblip\n" + data + "}}";
}

std::optional<AttributedString> readPackage(const QByteArray& rtf, bool ignoreImages = false)
{
    return initWithQuilleryPackageRTF(rtf, nullptr, true, ignoreImages);
}

// The text with each attachment shown as "[NAME]" and "{WxH}" after it when its size was set.
QString described(const AttributedString& text)
{
    QString out;
    for (qsizetype i = 0; i < text.length(); ++i) {
        const QVariant value = text.attribute(AttachmentAttributeName, i);
        if (!value.isValid()) {
            out += text.characterAt(i);
            continue;
        }
        const TextAttachment attachment = value.value<TextAttachment>();
        out += QLatin1Char('[') + attachment.fileName() + QLatin1Char(']');
        if (attachment.hasExplicitBounds())
            out += QStringLiteral("{%1x%2}").arg(attachment.bounds().width()).arg(attachment.bounds().height());
    }
    return out;
}

} // namespace

TEST(PackageRTFReader, PlainTextAndWhatComesBeforeTheRTF)
{
    EXPECT_FALSE(readPackage(QByteArray()));
    const struct {
        QByteArray data;
        QString text;
        bool attributed;
    } cases[] = {
        {"Just words, {\\rtf1 inside}", QStringLiteral("Just words, {\\rtf1 inside}"), false},
        {"caf\xc3\xa9 \xe2\x80\x94 UTF-8", QStringLiteral("caf\u00e9 \u2014 UTF-8"), false},
        {"\xef\xbb\xbfmarked", QStringLiteral("marked"), false},
        {"caf\xe9 Latin-1", QStringLiteral("caf\u00e9 Latin-1"), false},
        {"{\\Qlry_fn=not RTF\\end_Qlry_fn}", QStringLiteral("{\\Qlry_fn=not RTF\\end_Qlry_fn}"), false},
        {"\n\r\n  \t{\\rtf1\\ansi {\\b bold} text}", QStringLiteral("bold text"), true},
        {"{\\rtf1 cut sh", QStringLiteral("cut sh"), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.data.constData());
        const std::optional<AttributedString> text = readPackage(c.data);
        ASSERT_TRUE(text);
        EXPECT_EQ(text->string(), c.text);
        EXPECT_EQ(!text->attributes(0).isEmpty(), c.attributed);
    }
}

TEST(PackageRTFReader, PictureGroupsBecomeAttachments)
{
    const QByteArray jpeg = encodedImage(patternImage(6, 3), "JPEG");
    const QByteArray gif = encodedImage(patternImage(3, 3), "BMP");
    const QByteArray tiny = "{\\*\\shppict{\\pict\\pngblip " + pngHex() + "}}";
    const struct {
        const char* what;
        QByteArray body;
        QString expected;
    } cases[] = {
        {"unnamed, numbered in order", tiny + " and " + tiny, QStringLiteral("[Image0.png] and [Image1.png]")},
        {"named", pictGroup("{\\*\\nisusfilename  cover \\{1\\} }", pngHex()), QStringLiteral("[cover {1}.png]")},
        {"name with escapes", pictGroup("{\\*\\nisusfilename caf\\uc0\\u233 }", pngHex()),
         QStringLiteral("[caf\u00e9.png]")},
        {"JPEG", "{\\*\\shppict{\\pict\\jpegblip " + jpeg.toHex() + "}}", QStringLiteral("[Image0.jpg]")},
        {"a bitmap of another kind comes as PNG", pictGroup("", gif.toHex()), QStringLiteral("[Image0.png]")},
        {"data broken over lines", pictGroup("", pngHex().insert(10, "\r\n").insert(30, "\n  ")),
         QStringLiteral("[Image0.png]")},
        {"binary data", "{\\pict\\pngblip\\bin" + QByteArray::number(pngData().size()) + " " + pngData() + "}",
         QStringLiteral("[Image0.png]")},
        {"the intended size", pictGroup("\\picw4\\pich2\\picwgoal1000\\pichgoal400", pngHex()),
         QStringLiteral("[Image0.png]{50x20}")},
        {"the natural size is not kept as set", pictGroup("\\picwgoal80\\pichgoal40", pngHex()),
         QStringLiteral("[Image0.png]")},
        {"only a width: the height follows", pictGroup("\\picwgoal400", pngHex()),
         QStringLiteral("[Image0.png]{20x10}")},
        {"reductions by scale", pictGroup("\\picscalex50\\picscaley150", pngHex()),
         QStringLiteral("[Image0.png]{2x2}")},
        {"absurd sizes are ignored", pictGroup("\\picwgoal2147483647\\pichgoal-5", pngHex()),
         QStringLiteral("[Image0.png]")},
        {"fallback pictures go", "{\\nonshppict{\\pict\\wmetafile8 0102}}" + tiny + "{\\*\\nonshppict{\\pict 00}}",
         QStringLiteral("[Image0.png]")},
        {"an object group goes with its picture",
         "{\\object\\objemb{\\*\\objclass Paint}{\\*\\objdata 0102}{\\result " + tiny + "}}",
         QStringLiteral("[Image0.png]")},
        {"escaped words are text", "\\\\pict \\{\\\\pict\\}", QStringLiteral("\\pict {\\pict}")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::optional<AttributedString> text = readPackage("{\\rtf1\\ansi A" + c.body + "B}");
        ASSERT_TRUE(text);
        EXPECT_EQ(described(*text), QLatin1Char('A') + c.expected + QLatin1Char('B'));
    }
    const AttributedString read = *readPackage("{\\rtf1 " + pictGroup("\\picwgoal400", pngHex()) + "}");
    EXPECT_EQ(read.attribute(AttachmentAttributeName, 0).value<TextAttachment>().contents(), pngData());
}

TEST(PackageRTFReader, BrokenPictureGroupsFallBack)
{
    const QByteArray good = pictGroup("", pngHex());
    const struct {
        const char* what;
        QByteArray body;
        QString expected;
    } cases[] = {
        {"odd number of digits", pictGroup("", pngHex() + "a"), QStringLiteral("A B C")},
        {"not hexadecimal", pictGroup("", pngHex().replace(8, 1, "g")), QStringLiteral("A B C")},
        {"no data", pictGroup("", ""), QStringLiteral("A B C")},
        {"not a picture", pictGroup("", "0123456789abcdef"), QStringLiteral("A B C")},
        {"a truncated picture", pictGroup("", pngHex().left(40)), QStringLiteral("A B C")},
        {"a kind no reader knows", "{\\pict\\emfblip 0100000000000000}", QStringLiteral("A B C")},
        {"a good one after a bad one", pictGroup("", "zz") + good, QStringLiteral("A B [Image1.png]C")},
        {"a PDF that does not decode", "{\\*\\quillerypdf {{\\*\\pdffilename x} 25504}}", QStringLiteral("A B C")},
        {"a PDF group holding no PDF", "{\\*\\quillerypdf {{\\*\\pdffilename x} " + pngHex() + "}}",
         QStringLiteral("A B C")},
        // A group that runs past the end takes the rest of the text with it, and the pass ends.
        {"a picture group past the end", good + " B " + "{\\pict\\pngblip " + pngHex(),
         QStringLiteral("A B [Image0.png] B ")},
        {"a PDF group past the end", "{\\*\\quillerypdf {2550", QStringLiteral("A B ")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const std::optional<AttributedString> text = readPackage("{\\rtf1\\ansi A B " + c.body + "C}");
        ASSERT_TRUE(text);
        EXPECT_EQ(described(*text), c.expected);
    }
}

TEST(PackageRTFReader, IgnoredPicturesBecomeQuestionMarks)
{
    const QByteArray pdf = pdfBytes(QSizeF(30, 20));
    AttributedString text(QStringLiteral("a"));
    text.append(QString(QChar(AttachmentCharacter)),
                withAttachment({}, TextAttachment(QStringLiteral("p.png"), pngData())));
    text.append(QStringLiteral("b"), {});
    text.append(QString(QChar(AttachmentCharacter)), withAttachment({}, TextAttachment(QStringLiteral("c.pdf"), pdf)));
    text.append(QString(QChar(AttachmentCharacter)),
                withAttachment({}, TextAttachment(QStringLiteral("bad.pdf"), QByteArrayLiteral("%PDF-no"))));
    const QByteArray rtf = quilleryPackageRTFFromRange(text, Range{0, text.length()}, {}, true) + "";
    const QByteArray withBroken = QByteArray(rtf).insert(rtf.lastIndexOf('}'), pictGroup("", "zz"));
    EXPECT_EQ(readPackage(withBroken, true)->string(), QStringLiteral("a?b???"));
    EXPECT_EQ(described(*readPackage(withBroken, false)), QStringLiteral("a[p.png]b[c.pdf][bad.pdf]"));
}

TEST(PackageRTFReader, EquationNamesNeverCollide)
{
    const QByteArray pdf = pdfBytes(QSizeF(40, 12)).toHex();
    const QByteArray equation = "{\\*\\quillerypdf {{\\*\\pdffilename MathTypeEdEq24373-stored} " + pdf + "}}";
    const QByteArray other = "{\\*\\quillerypdf {" + pdf + "}}";
    const AttributedString text = *readPackage("{\\rtf1 " + equation + equation + other + "}");
    ASSERT_EQ(text.length(), 3);
    QStringList names;
    for (qsizetype i = 0; i < 3; ++i)
        names << text.attribute(AttachmentAttributeName, i).value<TextAttachment>().fileName();
    const QRegularExpression fresh(QStringLiteral("^MathTypeEdEq24373-[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-"
                                                  "[0-9A-F]{12}\\.pdf$"));
    EXPECT_TRUE(fresh.match(names[0]).hasMatch()) << names[0].toStdString();
    EXPECT_TRUE(fresh.match(names[1]).hasMatch()) << names[1].toStdString();
    EXPECT_NE(names[0], names[1]);
    EXPECT_EQ(names[2], QStringLiteral("Image2.pdf"));
    EXPECT_EQ(text.attribute(AttachmentAttributeName, 2).value<TextAttachment>().contents(), QByteArray::fromHex(pdf));
}

TEST(PackageRTFReader, ManyPicturesAndDeepGroups)
{
    // Ten thousand pictures read in one pass (each search from the start would take minutes here).
    const QByteArray group = "{\\*\\shppict {\\pict \\pngblip " + pngHex() + "}}x";
    QByteArray many = "{\\rtf1 ";
    for (int i = 0; i < 10000; ++i)
        many += group;
    many += "}";
    const AttributedString pictures = *readPackage(many);
    EXPECT_EQ(pictures.length(), 20000);
    EXPECT_EQ(pictures.attribute(AttachmentAttributeName, 19998).value<TextAttachment>().fileName(),
              QStringLiteral("Image9999.png"));
    EXPECT_EQ(readPackage(many, true)->string(), QString(QStringLiteral("?x")).repeated(10000));

    // A picture under a hundred thousand open groups, some never closed.
    const QByteArray deep =
        "{\\rtf1 a" + QByteArray(100000, '{') + group + QByteArray(99990, '}') + "b" + QByteArray(20, '}');
    const std::optional<AttributedString> text = readPackage(deep);
    ASSERT_TRUE(text);
    EXPECT_TRUE(text->string().startsWith(QStringLiteral("a\uFFFCx")));
}
