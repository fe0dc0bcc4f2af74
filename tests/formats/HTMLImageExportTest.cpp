// Pages with images: each image written once into the images folder under the name its document gave
// it (made safe), shown by an image tag of the right size, and nothing a document holds able to make
// markup or files of its own.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <qlyappkit/formats/html/HTMLExport.h>
#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/formats/html/ImageAttachments.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>

using namespace qly;

namespace {

QByteArray encoded(const QImage& image, const char* format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format)) << format;
    return bytes;
}

QImage picture(int width, int height, QColor color)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

TextAttachment attachment(const QString& name, const QByteArray& bytes) { return TextAttachment(name, bytes); }

AttributedString imageText(const TextAttachment& image)
{
    return AttributedString(QString(QChar(AttachmentCharacter)),
                            {{AttachmentAttributeName, QVariant::fromValue(image)}});
}

struct Export {
    QString html;
    QStringList written;
    QStringList files; // what the images folder holds, sorted
};

Export exportText(const QTemporaryDir& dir, const AttributedString& text, QVariantMap attributes = {})
{
    const QString images = dir.filePath(QStringLiteral("Images"));
    QDir().mkpath(images);
    attributes.insert(XQHTMLImagesFolderDocumentAttribute, images);
    attributes.insert(XQHTMLImagesFolderSubpathDocumentAttribute, QStringLiteral("Images"));
    Export e;
    e.html = QString::fromUtf8(HTMLDataFromRange(text, Range{0, text.length()}, attributes, &e.written));
    e.files = QDir(images).entryList(QDir::Files | QDir::NoDotAndDotDot | QDir::System | QDir::Hidden, QDir::Name);
    return e;
}

QStringList imageTags(const QString& html)
{
    QStringList tags;
    static const QRegularExpression tag(QStringLiteral("<img [^>]*>"));
    for (const QRegularExpressionMatch& m : tag.globalMatch(html))
        tags.append(m.captured(0));
    return tags;
}

} // namespace

TEST(HTMLImageExport, NamesReuseAndNumbering)
{
    QTemporaryDir dir;
    const QByteArray red = encoded(picture(20, 10, Qt::red), "PNG");
    const QByteArray blue = encoded(picture(20, 10, Qt::blue), "PNG");
    AttributedString text(QStringLiteral("a "));
    text.append(imageText(attachment(QStringLiteral("photo.png"), red)));
    text.append(imageText(attachment(QStringLiteral("photo.png"), red))); // the same again: one file
    text.append(imageText(attachment(QStringLiteral("photo.png"), blue))); // different: photo1.png
    text.append(imageText(attachment(QStringLiteral("photo.png"), blue))); // like photo1.png: reused
    text.append(imageText(attachment(QString(), red))); // no name
    text.append(imageText(attachment(QStringLiteral("scan.tiff"), encoded(picture(8, 8, Qt::green), "TIFF"))));
    text.append(imageText(attachment(QStringLiteral("Shot.JPG"), encoded(picture(30, 20, Qt::gray), "JPEG"))));
    text.append(imageText(attachment(QStringLiteral("archive.tar.bmp"), encoded(picture(4, 4, Qt::black), "BMP"))));
    text.append(AttributedString(QStringLiteral(" b")));
    const Export e = exportText(dir, text);
    EXPECT_EQ(e.files,
              (QStringList{QStringLiteral("Shot.JPG"), QStringLiteral("archive.tar.png"), QStringLiteral("img.png"),
                           QStringLiteral("photo.png"), QStringLiteral("photo1.png"), QStringLiteral("scan.png")}));
    EXPECT_EQ(e.written,
              (QStringList{QStringLiteral("Images/photo.png"), QStringLiteral("Images/photo1.png"),
                           QStringLiteral("Images/img.png"), QStringLiteral("Images/scan.png"),
                           QStringLiteral("Images/Shot.JPG"), QStringLiteral("Images/archive.tar.png")}));
    const QStringList tags = imageTags(e.html);
    ASSERT_EQ(tags.size(), 8) << e.html.toStdString();
    EXPECT_EQ(tags[0], QStringLiteral("<img src=\"Images/photo.png\" width=\"20\" height=\"10\" alt=\"Image\">"));
    EXPECT_TRUE(tags[1].contains(QLatin1String("\"Images/photo.png\"")));
    EXPECT_TRUE(tags[2].contains(QLatin1String("\"Images/photo1.png\"")));
    EXPECT_TRUE(tags[3].contains(QLatin1String("\"Images/photo1.png\"")));
    // The PNG bytes are written as they were; JPEG stays JPEG; anything else becomes PNG.
    QFile photo(QDir(dir.filePath(QStringLiteral("Images"))).filePath(QStringLiteral("photo.png")));
    ASSERT_TRUE(photo.open(QIODevice::ReadOnly));
    EXPECT_EQ(photo.readAll(), red);
    for (const auto& [file, format] : std::vector<std::pair<const char*, const char*>>{
             {"scan.png", "png"}, {"Shot.JPG", "jpeg"}, {"archive.tar.png", "png"}}) {
        QImageReader reader(QDir(dir.filePath(QStringLiteral("Images"))).filePath(QLatin1String(file)));
        EXPECT_EQ(reader.format(), QByteArray(format)) << file;
        EXPECT_FALSE(reader.read().isNull()) << file;
    }
    EXPECT_TRUE(e.html.contains(QLatin1String(">a <img")));
    EXPECT_FALSE(e.html.contains(QLatin1String("XQIMG_REF")));

    // Exported again into the same folder: the same bytes reuse their files; nothing new is written.
    const Export again = exportText(dir, text);
    EXPECT_TRUE(again.written.isEmpty());
    EXPECT_EQ(again.files, e.files);
    EXPECT_EQ(imageTags(again.html), tags);
}

TEST(HTMLImageExport, EquationImagesAndWhiteSpace)
{
    QTemporaryDir dir;
    AttributedString text;
    int shade = 0;
    auto add = [&](const QString& name) {
        text.append(imageText(attachment(name, encoded(picture(5, 5, QColor(shade, shade, shade)), "PNG"))));
        shade += 10;
    };
    add(XQMathTypeImageNamePrefix + QStringLiteral("a1.png"));
    add(QStringLiteral("my photo\u00A01.png"));
    add(XQMathTypeImageNamePrefix + QStringLiteral("b2.png"));
    add(XQMathTypeImageNamePrefix + QStringLiteral("c 3.jpeg"));
    const Export kept = exportText(dir, text);
    EXPECT_EQ(
        kept.written,
        (QStringList{QStringLiteral("Images/MathTypeEquation(null).png"), QStringLiteral("Images/my photo\u00A01.png"),
                     QStringLiteral("Images/MathTypeEquation1.png"), QStringLiteral("Images/MathTypeEquation2.jpeg")}));
    // The src is a URL: white space and the like are percent-encoded.
    EXPECT_TRUE(kept.html.contains(QLatin1String("src=\"Images/my%20photo%C2%A01.png\""))) << kept.html.toStdString();
    EXPECT_TRUE(kept.html.contains(QLatin1String("src=\"Images/MathTypeEquation(null).png\"")));

    QTemporaryDir stripped;
    const Export e = exportText(stripped, text, {{XQHTMLStripWhitespaceFromImageFilenamesAttribute, true}});
    EXPECT_EQ(e.written[1], QStringLiteral("Images/myphoto1.png"));
    // Equation images are named by the rule, not stripped.
    EXPECT_EQ(e.written[3], QStringLiteral("Images/MathTypeEquation2.jpeg"));
}

TEST(HTMLImageExport, SizesFollowTheColumn)
{
    QTemporaryDir dir;
    AttributedString text;
    text.append(imageText(attachment(QStringLiteral("big.png"), encoded(picture(800, 600, Qt::red), "PNG"))));
    text.append(imageText(attachment(QStringLiteral("small.png"), encoded(picture(200, 100, Qt::red), "PNG"))));
    text.append(imageText(attachment(QStringLiteral("odd.png"), encoded(picture(1000, 333, Qt::red), "PNG"))));
    TextAttachment sized = attachment(QStringLiteral("sized.png"), encoded(picture(10, 10, Qt::blue), "PNG"));
    sized.setBounds(QSizeF(72.9, 36.6)); // a display size set on the attachment wins
    text.append(imageText(sized));
    const Export e = exportText(dir, text, {{XQHTMLCenteredBodyTableWidthAttribute, 400}});
    const QStringList tags = imageTags(e.html);
    ASSERT_EQ(tags.size(), 4);
    EXPECT_TRUE(tags[0].contains(QLatin1String("width=\"400\" height=\"300\""))) << tags[0].toStdString();
    EXPECT_TRUE(tags[1].contains(QLatin1String("width=\"200\" height=\"100\"")));
    EXPECT_TRUE(tags[2].contains(QLatin1String("width=\"400\" height=\"133\"")));
    EXPECT_TRUE(tags[3].contains(QLatin1String("width=\"72\" height=\"36\"")));
    // The column wraps the body; without a width the images keep their size.
    EXPECT_TRUE(e.html.contains(QLatin1String("<body>\n<div style=\"width: 400px; margin: 0 auto\">\n")));
    QTemporaryDir free;
    const Export wide = exportText(free, text);
    EXPECT_TRUE(imageTags(wide.html)[0].contains(QLatin1String("width=\"800\" height=\"600\"")));
    EXPECT_FALSE(wide.html.contains(QLatin1String("<div")));
    // With an excluded-elements list lacking "XML" the tag closes itself.
    QTemporaryDir xml;
    const Export xhtml = exportText(xml, text, {{ExcludedElementsDocumentAttribute, QStringList()}});
    EXPECT_TRUE(imageTags(xhtml.html)[1].endsWith(QLatin1String(" alt=\"Image\" />")));
}

TEST(HTMLImageExport, NamesFromDocumentsStayInsideTheImagesFolder)
{
    QTemporaryDir dir;
    const QString outside = dir.filePath(QStringLiteral("outside"));
    QDir().mkpath(outside);
    QDir().mkpath(dir.filePath(QStringLiteral("Images")));
    // A symbolic link already in the folder under an image's name is never written through.
    ASSERT_TRUE(QFile::link(outside + QStringLiteral("/trap.png"), dir.filePath(QStringLiteral("Images/trap.png"))));
    struct Case {
        const char* name;
        const char* file;
    };
    const std::vector<Case> cases{
        {"../../escape.png", "escape.png"},
        {"/etc/absolute.png", "absolute.png"},
        {"..\\..\\windows.png", "windows.png"},
        {"..", "img.png"},
        {".hidden.png", "hidden.png"},
        {"trap.png", "trap1.png"},
        {"x\" onerror=\"alert(1).png", "x\" onerror=\"alert(1).png"},
        {"line\nbreak.png", "linebreak.png"},
    };
    AttributedString text;
    int shade = 0;
    for (const Case& c : cases)
        text.append(
            imageText(attachment(QString::fromUtf8(c.name), encoded(picture(3, 3, QColor(shade += 20, 0, 0)), "PNG"))));
    const Export e = exportText(dir, text);
    QStringList expected;
    for (const Case& c : cases)
        expected.append(QStringLiteral("Images/") + QString::fromUtf8(c.file));
    EXPECT_EQ(e.written, expected);
    EXPECT_TRUE(QDir(outside).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).isEmpty());
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("escape.png"))));
    // A quotation mark in a name cannot end the src attribute.
    EXPECT_TRUE(e.html.contains(QLatin1String("src=\"Images/x%22%20onerror=%22alert(1).png\"")))
        << e.html.toStdString();
    EXPECT_FALSE(e.html.contains(QLatin1String("onerror=\"")));
}

TEST(HTMLImageExport, PlaceholdersTypedInTheTextStayText)
{
    QTemporaryDir dir;
    const QString typed =
        QStringLiteral("{\\XQIMG_REF::\"x\" onerror=\"alert(1)\" width=\"1\" height=\"1\"\\END_XQIMG_REF} "
                       "{\\XQIMG_REF::\"Images/p.png\" width=\"9\" height=\"9\"\\END_XQIMG_REF} "
                       "\uE000\uE001\uE000");
    AttributedString text(typed);
    text.append(imageText(attachment(QStringLiteral("p.png"), encoded(picture(4, 2, Qt::red), "PNG"))));
    const Export e = exportText(dir, text);
    const QStringList tags = imageTags(e.html);
    ASSERT_EQ(tags.size(), 1) << e.html.toStdString();
    EXPECT_TRUE(tags[0].contains(QLatin1String("width=\"4\" height=\"2\"")));
    // Even the exact form naming a file of this export: what was typed is shown as typed.
    EXPECT_TRUE(e.html.contains(typed)) << e.html.toStdString();
}

TEST(HTMLImageExport, WhatCannotBeWrittenIsLeftOut)
{
    QTemporaryDir dir;
    AttributedString text(QStringLiteral("before "));
    text.append(imageText(attachment(QStringLiteral("broken.png"), QByteArray("\x89PNG\r\n\x1a\n not really"))));
    text.append(imageText(attachment(QStringLiteral("notes.txt"), QByteArray("just text"))));
    text.append(AttributedString(QStringLiteral(" after")));
    const Export e = exportText(dir, text);
    EXPECT_TRUE(imageTags(e.html).isEmpty());
    EXPECT_TRUE(e.written.isEmpty());
    EXPECT_TRUE(e.html.contains(QLatin1String(">before  after<"))) << e.html.toStdString();
    EXPECT_FALSE(e.html.contains(QChar(AttachmentCharacter)));

    // Into a folder that cannot be written the images are dropped; the page is still made.
    AttributedString picture1 = imageText(attachment(QStringLiteral("p.png"), encoded(picture(2, 2, Qt::red), "PNG")));
    const QVariantMap attributes{{XQHTMLImagesFolderDocumentAttribute, dir.filePath(QStringLiteral("missing/deeper"))},
                                 {XQHTMLImagesFolderSubpathDocumentAttribute, QStringLiteral("deeper")}};
    QStringList written{QStringLiteral("stale")};
    const QString page =
        QString::fromUtf8(HTMLDataFromRange(picture1, Range{0, picture1.length()}, attributes, &written));
    EXPECT_TRUE(page.contains(QLatin1String("<body>")));
    EXPECT_TRUE(imageTags(page).isEmpty());
    EXPECT_TRUE(written.isEmpty());
    // Without a folder and a subpath, images are not written at all.
    EXPECT_TRUE(imageTags(QString::fromUtf8(HTMLDataFromRange(picture1, Range{0, 1}, {}))).isEmpty());
}

TEST(HTMLImageExport, ImageSearchAndRepresentation)
{
    const QByteArray png = encoded(picture(6, 4, Qt::red), "PNG");
    AttributedString text(QStringLiteral("ab"));
    text.append(imageText(attachment(QStringLiteral("notes.txt"), QByteArray("text"))));
    text.append(AttributedString(QStringLiteral("c")));
    text.append(imageText(attachment(QStringLiteral("p.png"), png)));
    Range found;
    QString name;
    EXPECT_FALSE(firstImageInRange(text, Range{0, text.length()}, &found, &name).isNull());
    EXPECT_EQ(found, (Range{4, 1}));
    EXPECT_EQ(name, QStringLiteral("p.png"));
    EXPECT_TRUE(firstImageInRange(text, Range{0, 4}, &found).isNull());
    EXPECT_TRUE(found.isNotFound());
    EXPECT_TRUE(firstImageInRange(text, Range{5, 99}).isNull());

    // PNG asked as PNG keeps its bytes; as JPEG it is encoded, transparency on white.
    const std::optional<ImageRepresentation> same =
        imageRepresentation(attachment(QStringLiteral("p.png"), png), false);
    ASSERT_TRUE(same);
    EXPECT_EQ(same->bytes, png);
    EXPECT_EQ(same->pointSize, QSizeF(6, 4));
    QImage clear(4, 4, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    const std::optional<ImageRepresentation> jpeg =
        imageRepresentation(attachment(QStringLiteral("c.png"), encoded(clear, "PNG")), true);
    ASSERT_TRUE(jpeg);
    const QImage decoded = QImage::fromData(jpeg->bytes, "JPEG");
    ASSERT_FALSE(decoded.isNull());
    EXPECT_GT(qGray(decoded.pixel(1, 1)), 240);
    EXPECT_FALSE(imageRepresentation(attachment(QStringLiteral("e.png"), QByteArray()), false));
    EXPECT_FALSE(imageRepresentation(TextAttachment(), false));
}

TEST(HTMLImageExport, ManyPicturesEncodeAsEachAlone)
{
    // Pictures encoded together, on several threads, come out as each does alone and in their order:
    // kept, re-encoded, asked as JPEG, the same attachment twice, unreadable, empty and null ones.
    const TextAttachment shared =
        attachment(QStringLiteral("shared.bmp"), encoded(picture(9, 5, Qt::darkGreen), "BMP"));
    std::vector<TextAttachment> pictures;
    std::vector<bool> asJPEG;
    for (int i = 0; i < 24; ++i) {
        const QImage image = picture(10 + i, 6 + i % 5, QColor::fromHsv(i * 15, 200, 200));
        switch (i % 6) {
        case 0:
            pictures.push_back(attachment(QStringLiteral("a.png"), encoded(image, "PNG")));
            break;
        case 1:
            pictures.push_back(attachment(QStringLiteral("b.bmp"), encoded(image, "BMP")));
            break;
        case 2:
            pictures.push_back(attachment(QStringLiteral("c.tiff"), encoded(image, "TIFF")));
            break;
        case 3:
            pictures.push_back(shared);
            break;
        case 4:
            pictures.push_back(attachment(QStringLiteral("d.png"), QByteArray("not a picture")));
            break;
        default:
            pictures.push_back(i % 12 == 5 ? TextAttachment() : attachment(QStringLiteral("e.png"), QByteArray()));
            break;
        }
        asJPEG.push_back(i % 4 == 1);
    }
    pictures[7].setBounds(QSizeF(33, 21));
    const std::vector<std::optional<ImageRepresentation>> together = imageRepresentations(pictures, asJPEG);
    ASSERT_EQ(together.size(), pictures.size());
    int made = 0;
    for (size_t i = 0; i < pictures.size(); ++i) {
        SCOPED_TRACE(i);
        const std::optional<ImageRepresentation> alone = imageRepresentation(pictures[i], asJPEG[i]);
        ASSERT_EQ(together[i].has_value(), alone.has_value());
        if (!alone)
            continue;
        ++made;
        EXPECT_EQ(together[i]->pointSize, alone->pointSize);
        // Encoding is deterministic: the same bytes, whichever thread made them.
        EXPECT_EQ(together[i]->bytes, alone->bytes);
        EXPECT_FALSE(QImage::fromData(together[i]->bytes).isNull());
    }
    EXPECT_EQ(made, 16);
    EXPECT_EQ(together[7]->pointSize, QSizeF(33, 21));
    EXPECT_TRUE(imageRepresentations({}, {}).empty());
}
