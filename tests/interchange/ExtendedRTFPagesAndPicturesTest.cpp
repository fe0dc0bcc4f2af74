// Header and footer variants (first pages, facing pages, new-page and single-page sections, no
// sections at all) and the JPEG and PDF picture paths of the writer.
#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>

#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/values/TextAttachment.h>

#include "interchange/ExportTestSupport.h"

using namespace qly;
using namespace exporttest;

namespace {

QVariantMap section(const QString& title) { return QVariantMap{{XQRTFSectionTitle, title}}; }

// Three sections, each attribute run covering its section: "Opening" at the top, "Short" after a
// page break with one line, "Long" straight after it (no page break) with text for several pages,
// then "Tall" with short lines for two pages.
AttributedString threeSections()
{
    AttributedString text;
    text.append(QStringLiteral("Opening line\n"),
                with(XQRTFSectionInfoAttributeName, section(QStringLiteral("Opening"))));
    text.append(QStringLiteral("\f"), plain());
    text.append(QStringLiteral("Short line\n"), with(XQRTFSectionInfoAttributeName, section(QStringLiteral("Short"))));
    QString body;
    for (int i = 0; i < 60; ++i)
        body += QStringLiteral("A paragraph long enough to fill a good part of a line on the page.\n");
    text.append(QStringLiteral("Long start\n") + body,
                with(XQRTFSectionInfoAttributeName, section(QStringLiteral("Long"))));
    // Few characters, but too many lines for one page: only layout can tell.
    text.append(QStringLiteral("Tall start\n") + QStringLiteral("Line\n").repeated(90),
                with(XQRTFSectionInfoAttributeName, section(QStringLiteral("Tall"))));
    return text;
}

// Whether a block has a regular header group showing the title.
bool headerShows(const QString& block, const QString& title)
{
    return QRegularExpression(QStringLiteral("\\{\\\\header \\{[^}]*") + title).match(block).hasMatch();
}

QString exportRTF(const AttributedString& text, const QVariantMap& options)
{
    return QString::fromLatin1(extendedRTFFromRange(text, Range{0, text.length()}, {}, options));
}

// The header/footer groups written for the section whose marker precedes `title`'s text.
QString sectionBlock(const QString& rtf, int index)
{
    const QStringList parts = rtf.split(QStringLiteral("\\sect\\sectd\n"));
    return index < parts.size() ? parts.at(index) : QString();
}

QString pictureHex(const QString& rtf, const QString& blip, QRegularExpressionMatch* match = nullptr)
{
    const QRegularExpression pict(QStringLiteral("\\{\\\\\\*\\\\shppict\\{\\\\pict\\\\picw(\\d+)\\\\pich(\\d+)"
                                                 "\\\\picwgoal(\\d+)\\\\pichgoal(\\d+)\\\\%1 ([0-9a-f]+)\\}\\}")
                                      .arg(blip));
    QRegularExpressionMatch m = pict.match(rtf);
    if (match)
        *match = m;
    return m.hasMatch() ? m.captured(5) : QString();
}

} // namespace

TEST(ExtendedRTFWriter, NewPageAndSinglePageSectionsBlankTheirHeaders)
{
    const AttributedString text = threeSections();
    const QVariantMap base{{XQRTFHeaderString, QStringLiteral("<$sectiontitle>")},
                           {XQRTFFooterString, QStringLiteral("<$p>")}};

    // Without the options every section has its own header and footer and no title page.
    const QString plainRTF = exportRTF(text, base);
    ASSERT_EQ(plainRTF.count(QStringLiteral("\\sect\\sectd\n")), 3);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_FALSE(sectionBlock(plainRTF, i).contains(QStringLiteral("\\titlepg"))) << i;
        EXPECT_FALSE(sectionBlock(plainRTF, i).contains(QStringLiteral("{\\header {}}"))) << i;
    }
    EXPECT_TRUE(headerShows(sectionBlock(plainRTF, 1), QStringLiteral("Short")));
    EXPECT_TRUE(headerShows(sectionBlock(plainRTF, 2), QStringLiteral("Long")));

    // No header on new pages: only the section after the page break gets a title page with a blank
    // first header, and keeps its footer there.
    QVariantMap options = base;
    options.insert(XQRTFNoHeaderOnNewPages, true);
    const QString newPages = exportRTF(text, options);
    const QString shortBlock = sectionBlock(newPages, 1);
    EXPECT_TRUE(shortBlock.startsWith(QStringLiteral("\\titlepg\\pgncont"))) << shortBlock.left(80).toStdString();
    EXPECT_TRUE(shortBlock.contains(QStringLiteral("{\\headerf {}}{\\footerf {")));
    EXPECT_TRUE(shortBlock.contains(QStringLiteral("{\\chpgn}")));
    EXPECT_FALSE(sectionBlock(newPages, 2).contains(QStringLiteral("\\titlepg")));
    EXPECT_FALSE(sectionBlock(newPages, 2).contains(QStringLiteral("{\\headerf {}}")));

    // No header or footer on single pages: the one-line sections go blank, the long one keeps them.
    options = base;
    options.insert(XQRTFNoHeaderOrFooterOnSinglePages, true);
    const QString single = exportRTF(text, options);
    const QString blank = QStringLiteral("{\\header {}}{\\footer {}}{\\headerr {}}{\\footerr {}}");
    EXPECT_TRUE(sectionBlock(single, 1).contains(blank));
    EXPECT_FALSE(headerShows(sectionBlock(single, 1), QStringLiteral("Short")));
    EXPECT_FALSE(sectionBlock(single, 2).contains(blank));
    EXPECT_TRUE(headerShows(sectionBlock(single, 2), QStringLiteral("Long")));
    EXPECT_FALSE(sectionBlock(single, 3).contains(blank));
    EXPECT_TRUE(headerShows(sectionBlock(single, 3), QStringLiteral("Tall")));
}

TEST(ExtendedRTFWriter, HeadersAndFootersWithoutSectionsAndFacingPages)
{
    AttributedString text(QStringLiteral("Just one body paragraph.\n"), plain());
    text.append(QStringLiteral("\f"), plain());
    text.append(QStringLiteral("A second page.\n"), plain());
    QVariantMap options{{XQRTFHeaderString, QStringLiteral("Running head")},
                        {XQRTFFooterString, QStringLiteral("<$p> of <$pagecount>")},
                        {XQRTFFirstPageHeaderString, QStringLiteral("Title page head")},
                        {XQRTFDifferentFirstPages, true}};
    QString rtf = exportRTF(text, options);
    // One document-wide block: no section breaks, first pages titled and not counted.
    EXPECT_FALSE(rtf.contains(QStringLiteral("\\sect")));
    EXPECT_EQ(rtf.count(QStringLiteral("\\titlepg\\pgnrestart\\pgnstarts0")), 1);
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\header {")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("Running head")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\headerf {")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("Title page head")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\chpgn} of {\\field {\\*\\fldinst {NUMPAGES}}{\\fldrslt 1}}")));
    EXPECT_FALSE(rtf.contains(QStringLiteral("\\facingp")));
    EXPECT_FALSE(rtf.contains(QStringLiteral("<$p>")));
    EXPECT_FALSE(rtf.contains(QStringLiteral("<<**")));

    options.insert(XQRTFCountFirstPages, true);
    EXPECT_TRUE(exportRTF(text, options).contains(QStringLiteral("\\titlepg\\pgnrestart\\pgnstarts1")));

    // Facing pages: mirrored margins, the regular header on right pages and the alternate on left.
    options = {{XQRTFHeaderString, QStringLiteral("Right head")},
               {XQRTFAlternateHeaderString, QStringLiteral("Left head")},
               {XQRTFFooterString, QStringLiteral("<$P-R>")},
               {XQRTFHasFacingPages, true}};
    rtf = exportRTF(text, options);
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\facingp\\margmirror")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\pgnucrm")));
    EXPECT_FALSE(rtf.contains(QStringLiteral("{\\header {")));
    const qsizetype right = rtf.indexOf(QStringLiteral("{\\headerr {"));
    const qsizetype left = rtf.indexOf(QStringLiteral("{\\headerl {"));
    ASSERT_GE(right, 0);
    ASSERT_GE(left, 0);
    EXPECT_TRUE(rtf.indexOf(QStringLiteral("Right head"), right) < left);
    EXPECT_GT(rtf.indexOf(QStringLiteral("Left head")), left);
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\footerr {")));
}

TEST(ExtendedRTFWriter, JPEGPicturesKeepTheirBytes)
{
    QImage image(64, 32, QImage::Format_RGB32);
    image.fill(QColor(200, 40, 40));
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
    ASSERT_TRUE(image.save(&buffer, "JPEG"));
    TextAttachment picture(QStringLiteral("photo.JPG"), jpeg);
    picture.setBounds(QSizeF(32, 16));
    AttributedString text(QStringLiteral("Before\n"), plain());
    text.append(QString(QChar(AttachmentCharacter)), with(AttachmentAttributeName, QVariant::fromValue(picture)));
    text.append(QStringLiteral("\n"), plain());

    const QString rtf = exportRTF(text, {});
    QRegularExpressionMatch m;
    const QString hex = pictureHex(rtf, QStringLiteral("jpegblip"), &m);
    ASSERT_FALSE(hex.isEmpty()) << rtf.toStdString();
    EXPECT_EQ(QByteArray::fromHex(hex.toLatin1()), jpeg); // not re-encoded
    EXPECT_EQ(m.captured(1).toInt(), 64);
    EXPECT_EQ(m.captured(2).toInt(), 32);
    EXPECT_EQ(m.captured(3).toInt(), 640); // 32 pt
    EXPECT_EQ(m.captured(4).toInt(), 320);
    EXPECT_FALSE(rtf.contains(QStringLiteral("\\pngblip")));
}

TEST(ExtendedRTFWriter, PDFPicturesAreRenderedToPNG)
{
    // A one-page PDF, 72 × 36 pt, left half black, right half white.
    QByteArray pdf;
    {
        QBuffer buffer(&pdf);
        ASSERT_TRUE(buffer.open(QIODevice::WriteOnly));
        QPdfWriter writer(&buffer);
        writer.setPageSize(QPageSize(QSizeF(72, 36), QPageSize::Point));
        writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        writer.setResolution(72);
        QPainter painter(&writer);
        painter.fillRect(QRectF(0, 0, 36, 36), Qt::black);
    }
    ASSERT_TRUE(pdf.startsWith("%PDF"));
    AttributedString text(QStringLiteral("Figure:\n"), plain());
    text.append(QString(QChar(AttachmentCharacter)),
                with(AttachmentAttributeName, QVariant::fromValue(TextAttachment(QStringLiteral("chart.pdf"), pdf))));
    text.append(QStringLiteral("\n"), plain());

    const QString rtf = exportRTF(text, {});
    QRegularExpressionMatch m;
    const QString hex = pictureHex(rtf, QStringLiteral("pngblip"), &m);
    ASSERT_FALSE(hex.isEmpty()) << "no PNG picture in the export";
    // Rendered at 600 dpi; shown at the page's size in points.
    EXPECT_EQ(m.captured(1).toInt(), 600);
    EXPECT_EQ(m.captured(2).toInt(), 300);
    EXPECT_EQ(m.captured(3).toInt(), 1440);
    EXPECT_EQ(m.captured(4).toInt(), 720);
    const QImage decoded = QImage::fromData(QByteArray::fromHex(hex.toLatin1()), "PNG");
    ASSERT_EQ(decoded.size(), QSize(600, 300));
    // Painted half opaque and dark; the unpainted half light or transparent.
    const QRgb painted = decoded.pixel(100, 150), unpainted = decoded.pixel(500, 150);
    EXPECT_EQ(qAlpha(painted), 255);
    EXPECT_LT(qGray(painted), 60);
    EXPECT_TRUE(qAlpha(unpainted) == 0 || qGray(unpainted) > 200) << std::hex << unpainted;
    EXPECT_FALSE(rtf.contains(QStringLiteral("JVT_IMG")));
}
