// Writing a page at a path: one file without images, a folder with its images otherwise; an earlier
// export is replaced whole, anything else at the path is either replaced without being followed or
// refused and left exactly as it was.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <qlyappkit/formats/html/HTMLExport.h>
#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>

#include "support/TestFiles.h"

using namespace qly;
using namespace qly::testfiles;

namespace {

AttributedString textWithPicture(const QString& words, QColor color = Qt::red)
{
    QImage image(40, 20, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    AttributedString text(words + QStringLiteral("\n"));
    text.append(AttributedString(
        QString(QChar(AttachmentCharacter)),
        {{AttachmentAttributeName, QVariant::fromValue(TextAttachment(QStringLiteral("fig.png"), bytes))}}));
    return text;
}

// Every path under folder (relative, sorted), links marked with "@".
QStringList tree(const QString& folder)
{
    QStringList entries;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        entries.append(QDir(folder).relativeFilePath(it.filePath()) + (it.fileInfo().isSymLink() ? "@" : ""));
    }
    entries.sort();
    return entries;
}

} // namespace

TEST(HTMLFolderExport, OneFileWithoutImagesAFolderWithThem)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Book.html"));
    Error error;
    ASSERT_TRUE(writeHTMLToFileAsDirectoryIfNecessary(AttributedString(QStringLiteral("Plain words")), path,
                                                      {{XQHTMLCenteredBodyTableWidthAttribute, 300}}, &error))
        << error.localizedDescription.toStdString();
    EXPECT_TRUE(QFileInfo(path).isFile());
    const QString plain = QString::fromUtf8(readFileBytes(path));
    EXPECT_TRUE(plain.contains(QLatin1String("Plain words")));
    EXPECT_TRUE(plain.contains(QLatin1String("width: 300px")));

    // With a picture the same path becomes a folder holding the page and its images; the file before
    // it is replaced.
    ASSERT_TRUE(writeHTMLToFileAsDirectoryIfNecessary(textWithPicture(QStringLiteral("Pictured")), path,
                                                      {{XQHTMLCenteredBodyTableWidthAttribute, 30}}, &error))
        << error.localizedDescription.toStdString();
    EXPECT_EQ(tree(dir.path()),
              (QStringList{QStringLiteral("Book.html"), QStringLiteral("Book.html/Book.html"),
                           QStringLiteral("Book.html/Images"), QStringLiteral("Book.html/Images/fig.png")}));
    const QString page = QString::fromUtf8(readFileBytes(path + QStringLiteral("/Book.html")));
    EXPECT_TRUE(page.contains(QLatin1String("<img src=\"Images/fig.png\" width=\"30\" height=\"15\" alt=\"Image\">")))
        << page.toStdString();

    // Exported again (another picture): the earlier export is replaced whole, not merged.
    ASSERT_TRUE(
        writeHTMLToFileAsDirectoryIfNecessary(textWithPicture(QStringLiteral("Again"), Qt::blue), path, {}, &error));
    EXPECT_EQ(tree(dir.path()).size(), 4);
    const QImage written(path + QStringLiteral("/Images/fig.png"));
    EXPECT_EQ(written.pixelColor(1, 1), QColor(Qt::blue));
    EXPECT_TRUE(readFileBytes(path + QStringLiteral("/Book.html")).contains("Again"));

    // And back to a single file when the pictures are gone.
    ASSERT_TRUE(
        writeHTMLToFileAsDirectoryIfNecessary(AttributedString(QStringLiteral("Only words")), path, {}, &error));
    EXPECT_EQ(tree(dir.path()), QStringList{QStringLiteral("Book.html")});
    EXPECT_TRUE(readFileBytes(path).contains("Only words"));
}

TEST(HTMLFolderExport, AUsersFolderIsNeverRemoved)
{
    struct Case {
        const char* name;
        std::function<void(const QString& path)> make;
    };
    const std::vector<Case> cases{
        {"a file of the user's",
         [](const QString& path) {
             QDir().mkpath(path);
             writeFileBytes(path + "/notes.txt", "mine");
         }},
        {"a sub-folder in the images folder",
         [](const QString& path) {
             QDir().mkpath(path + "/Images/album");
             writeFileBytes(path + "/Book.html", "old page");
         }},
        {"a link in the images folder",
         [](const QString& path) {
             QDir().mkpath(path + "/Images");
             QFile::link(QDir::homePath(), path + "/Images/home");
         }},
        {"a folder named like the page", [](const QString& path) { QDir().mkpath(path + "/Book.html/inner"); }},
        {"a hidden file",
         [](const QString& path) {
             QDir().mkpath(path);
             writeFileBytes(path + "/.keep", "");
         }},
    };
    for (const Case& c : cases) {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("Book.html"));
        c.make(path);
        const QStringList before = tree(dir.path());
        for (const AttributedString& text :
             {textWithPicture(QStringLiteral("x")), AttributedString(QStringLiteral("y"))}) {
            Error error;
            EXPECT_FALSE(writeHTMLToFileAsDirectoryIfNecessary(text, path, {}, &error)) << c.name;
            EXPECT_EQ(error.domain, XQHTMLExportErrorDomain) << c.name;
            EXPECT_EQ(error.code, XQHTMLExportTargetInUseError) << c.name;
            EXPECT_TRUE(error.localizedDescription.contains(QLatin1String("nothing was removed"))) << c.name;
            EXPECT_EQ(tree(dir.path()), before) << c.name;
        }
    }
}

TEST(HTMLFolderExport, LinksAtThePathAreReplacedNotFollowed)
{
    QTemporaryDir dir;
    // A link to a folder elsewhere, and a link to a file elsewhere.
    const QString elsewhere = dir.filePath(QStringLiteral("elsewhere"));
    QDir().mkpath(elsewhere);
    writeFileBytes(elsewhere + QStringLiteral("/precious.txt"), "keep me");
    const QString folderLink = dir.filePath(QStringLiteral("Folder.html"));
    const QString fileLink = dir.filePath(QStringLiteral("File.html"));
    ASSERT_TRUE(QFile::link(elsewhere, folderLink));
    ASSERT_TRUE(QFile::link(elsewhere + QStringLiteral("/precious.txt"), fileLink));
    Error error;
    ASSERT_TRUE(writeHTMLToFileAsDirectoryIfNecessary(textWithPicture(QStringLiteral("x")), folderLink, {}, &error))
        << error.localizedDescription.toStdString();
    ASSERT_TRUE(writeHTMLToFileAsDirectoryIfNecessary(AttributedString(QStringLiteral("y")), fileLink, {}, &error))
        << error.localizedDescription.toStdString();
    EXPECT_EQ(tree(elsewhere), QStringList{QStringLiteral("precious.txt")});
    EXPECT_EQ(readFileBytes(elsewhere + QStringLiteral("/precious.txt")), QByteArray("keep me"));
    EXPECT_FALSE(QFileInfo(folderLink).isSymLink());
    EXPECT_TRUE(QFileInfo(folderLink + QStringLiteral("/Folder.html")).isFile());
    EXPECT_FALSE(QFileInfo(fileLink).isSymLink());
    EXPECT_TRUE(readFileBytes(fileLink).contains(">y<"));
    // Nothing of the work is left beside the pages.
    EXPECT_EQ(tree(dir.path()).filter(QLatin1String(".export-")).size(), 0);
    EXPECT_EQ(tree(dir.path()).filter(QLatin1String(".earlier-")).size(), 0);
}

TEST(HTMLFolderExport, PathsThatCannotHoldAPage)
{
    QTemporaryDir dir;
    Error error;
    EXPECT_FALSE(writeHTMLToFileAsDirectoryIfNecessary(textWithPicture(QStringLiteral("x")),
                                                       dir.filePath(QStringLiteral("missing/Book.html")), {}, &error));
    EXPECT_FALSE(error.localizedDescription.isEmpty());
    EXPECT_FALSE(
        writeHTMLToFileAsDirectoryIfNecessary(AttributedString(QStringLiteral("x")), dir.path() + "/", {}, &error));
    EXPECT_TRUE(tree(dir.path()).isEmpty());
}
