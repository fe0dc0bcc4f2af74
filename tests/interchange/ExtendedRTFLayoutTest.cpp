// Sections, headers and footers, bookmarks, page references, keep-with-next and pictures in the
// writer's output, and the output opened by a real word processor where one is installed.
#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <qlyappkit/interchange/rtf/ExtendedRTFWriter.h>
#include <qlyappkit/interchange/rtf/RTFOptions.h>
#include <qlyappkit/platform/values/TextAttachment.h>

#include "interchange/ExportTestSupport.h"

using namespace qly;
using namespace exporttest;

namespace {

AttributedString layoutManuscript()
{
    AttributedString text;
    text.append(
        QStringLiteral("Front page\n"),
        with(XQRTFSectionInfoAttributeName,
             QVariantMap{{XQRTFSectionTitle, QStringLiteral("Front")}, {XQRTFSectionIsPartOfFrontMatter, true}}));
    text.append(QStringLiteral("\f"), plain());
    text.append(QStringLiteral("Chapter heading\n"),
                with(XQRTFSectionInfoAttributeName, QVariantMap{{XQRTFSectionTitle, QStringLiteral("Chapter One")}}));
    text.append(QStringLiteral("Subheading\n"), with(XQKeepWithNextAttributeName, true));
    text.append(QStringLiteral("See page "), plain());
    text.append(QStringLiteral("9"), with(XQRTFPageRefFieldAttributeName, QStringLiteral("Target_Mark")));
    text.append(QStringLiteral(" for the "), plain());
    text.append(QStringLiteral("target"), with(XQRTFBookmarkAttributeName, QStringLiteral("Target_Mark")));
    text.append(QStringLiteral(" line\u2028break.\n"), plain());
    QImage image(40, 20, QImage::Format_RGB32);
    image.fill(Qt::blue);
    TextAttachment picture = TextAttachment::fromImage(image, QStringLiteral("blue.bmp"));
    picture.setBounds(QSizeF(80, 40));
    text.append(QString(QChar(AttachmentCharacter)), with(AttachmentAttributeName, QVariant::fromValue(picture)));
    text.append(QStringLiteral("\n"), plain());
    return text;
}

QVariantMap layoutOptions()
{
    return {{XQRTFHeaderString, QStringLiteral("<$sectiontitle>\t<$p> of <$pagecount>")},
            {XQRTFFooterString, QStringLiteral("**Draft**")},
            {XQRTFStartRegularHeaderAndFooterAfterFrontMatter, true},
            {XQRTFNumberOfColumns, 2},
            {XQRTFColumnSpacingInTwips, 720}};
}

} // namespace

TEST(ExtendedRTFWriter, SectionsHeadersBookmarksKeepWithNextAndPictures)
{
    const AttributedString text = layoutManuscript();
    const QString rtf = QString::fromLatin1(extendedRTFFromRange(text, Range{0, text.length()}, {}, layoutOptions()));
    // Two sections: the first without a break, the second after "\sect\sectd", numbering restarted
    // after the front matter, whose headers are blank.
    EXPECT_EQ(rtf.count(QStringLiteral("\\sect\\sectd\n")), 1);
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\pgnrestart\\pgnstarts1")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\pgrestart\\pgnstarts1")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\header {}}{\\footer {}}")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\cols2\\colsx720")));
    const qsizetype chapterHeader = rtf.indexOf(QStringLiteral("{\\header {\\pard\\tqr\\tx7200\\ql {\\f0 Chapter One"));
    ASSERT_GE(chapterHeader, 0) << rtf.toStdString();
    EXPECT_TRUE(rtf.mid(chapterHeader)
                    .startsWith(QStringLiteral("{\\header {\\pard\\tqr\\tx7200\\ql {\\f0 Chapter One\\tab {\\chpgn} of "
                                               "{\\field {\\*\\fldinst {NUMPAGES}}{\\fldrslt 1}}")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("\\b1 Draft\\b0 ")));
    // Bookmark and page reference.
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\*\\bkmkstart Target_Mark}target{\\*\\bkmkend Target_Mark}")));
    EXPECT_TRUE(rtf.contains(QStringLiteral("{\\field {\\*\\fldinst {PAGEREF Target_Mark \\\\h}}{\\fldrslt 9}}")));
    // The heading is kept with the next paragraph, and its group closes before that paragraph.
    const QRegularExpression keep(QStringLiteral("\\{[^{}]*\\\\keepn Subheading\\\\\n\\}See page"));
    EXPECT_TRUE(keep.match(rtf).hasMatch()) << rtf.toStdString();
    EXPECT_TRUE(rtf.contains(QStringLiteral("line\\line break")));
    // The BMP picture is written as PNG at its intended size.
    const QRegularExpression pict(QStringLiteral("\\{\\\\\\*\\\\shppict\\{\\\\pict\\\\picw40\\\\pich20\\\\picwgoal1600"
                                                 "\\\\pichgoal800\\\\pngblip ([0-9a-f]+)\\}\\}"));
    const QRegularExpressionMatch match = pict.match(rtf);
    ASSERT_TRUE(match.hasMatch());
    const QImage decoded = QImage::fromData(QByteArray::fromHex(match.captured(1).toLatin1()), "PNG");
    EXPECT_EQ(decoded.size(), QSize(40, 20));
    EXPECT_FALSE(rtf.contains(QStringLiteral("<<**")));
    EXPECT_FALSE(rtf.contains(QStringLiteral("QLY_KEEP")));
}

// Converts the export with a real word processor and counts what arrived. The office suite is part
// of the toolchain (scripts/bootstrap installs it), so its absence fails the test.
TEST(ExtendedRTFWriter, OpensInAWordProcessor)
{
    const QString soffice = QStandardPaths::findExecutable(QStringLiteral("soffice"));
    ASSERT_FALSE(soffice.isEmpty()) << "soffice is missing: run scripts/bootstrap";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    dir.setAutoRemove(!qEnvironmentVariableIsSet("QLY_KEEP_EXPORT"));
    AttributedString text = notesManuscript();
    text.append(layoutManuscript());
    QFile file(dir.filePath(QStringLiteral("export.rtf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(extendedRTFFromRange(text, Range{0, text.length()}, {{AuthorDocumentAttribute, QStringLiteral("Ann")}},
                                    layoutOptions()));
    file.close();
    QProcess process;
    process.setWorkingDirectory(dir.path());
    process.start(soffice,
                  {QStringLiteral("-env:UserInstallation=file://") + dir.filePath(QStringLiteral("profile")),
                   QStringLiteral("--headless"), QStringLiteral("--convert-to"), QStringLiteral("docx"),
                   QStringLiteral("export.rtf")});
    ASSERT_TRUE(process.waitForFinished(180000));
    QProcess unzip;
    unzip.setWorkingDirectory(dir.path());
    unzip.start(QStringLiteral("unzip"),
                {QStringLiteral("-o"), QStringLiteral("-q"), QStringLiteral("export.docx"), QStringLiteral("-d"),
                 QStringLiteral("x")});
    ASSERT_TRUE(unzip.waitForFinished(60000));
    auto read = [&](const QString& name) {
        QFile f(dir.filePath(QStringLiteral("x/word/") + name));
        return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
    };
    const QString document = read(QStringLiteral("document.xml"));
    ASSERT_FALSE(document.isEmpty()) << "the conversion produced no document";
    EXPECT_EQ(document.count(QStringLiteral("<w:footnoteReference")), 3);
    EXPECT_EQ(document.count(QStringLiteral("<w:commentRangeStart")), 2);
    EXPECT_EQ(read(QStringLiteral("comments.xml")).count(QStringLiteral("w:author=\"Ann\"")), 3);
    EXPECT_TRUE(document.contains(QStringLiteral("w:name=\"Target_Mark\"")));
    EXPECT_TRUE(document.contains(QStringLiteral("PAGEREF Target_Mark")));
    EXPECT_TRUE(document.contains(QStringLiteral("<w:keepNext")));
    EXPECT_TRUE(document.contains(QStringLiteral("<w:drawing>")) || document.contains(QStringLiteral("<w:pict>")));
    EXPECT_TRUE(document.contains(QStringLiteral("w:num=\"2\"")));
}
