// Atomic file writes and the containment of names that come from documents.
#include "support/TestFiles.h"

#include <qlyappkit/platform/services/AtomicFile.h>
#include <qlyappkit/platform/services/ContainedPaths.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

using namespace qly;
using namespace qly::testfiles;

namespace {

QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

} // namespace

TEST(AtomicFile, ReplacesWholeOrLeavesTheOldFile)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("doc.rtf"));
    writeFileBytes(path, "old");

    Error error;
    ASSERT_TRUE(writeFileAtomically(path, "new contents", &error)) << error.localizedRecoverySuggestion.toStdString();
    EXPECT_EQ(readFileBytes(path), "new contents");
    EXPECT_EQ(filesIn(dir.path()), QStringList{QStringLiteral("doc.rtf")});

    // Abandoned half way: the old file stays whole and the temporary file goes.
    {
        AtomicFileWriter writer(path);
        ASSERT_TRUE(writer.open());
        writer.write("partial");
    }
    EXPECT_EQ(readFileBytes(path), "new contents");
    EXPECT_EQ(filesIn(dir.path()), QStringList{QStringLiteral("doc.rtf")});

    // A folder that does not exist: an error in the file domain, nothing created.
    const QString missing = dir.filePath(QStringLiteral("no such folder/x.rtf"));
    EXPECT_FALSE(writeFileAtomically(missing, "x", &error));
    EXPECT_EQ(error.domain, XQFileErrorDomain);
    EXPECT_EQ(error.code, XQFileCannotOpenError);
    EXPECT_TRUE(error.localizedDescription.contains(QStringLiteral("x.rtf")));
    EXPECT_FALSE(QFile::exists(missing));

    // Committing what was never opened is refused rather than reported as done.
    AtomicFileWriter never(dir.filePath(QStringLiteral("never.rtf")));
    EXPECT_FALSE(never.commit(&error));
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("never.rtf"))));
}

TEST(ContainedPaths, NamesFromDocumentsStayInTheirFolder)
{
    QTemporaryDir outer;
    const QString folder = outer.filePath(QStringLiteral("doc"));
    ASSERT_TRUE(QDir().mkpath(folder + QStringLiteral("/images")));
    writeFileBytes(folder + QStringLiteral("/images/pic.png"), "png");
    writeFileBytes(outer.filePath(QStringLiteral("secret.txt")), "secret");
    // Links: one leading out of the folder, one staying inside, one dangling, and a folder link out.
    ASSERT_TRUE(QFile::link(outer.filePath(QStringLiteral("secret.txt")), folder + QStringLiteral("/out.png")));
    ASSERT_TRUE(QFile::link(folder + QStringLiteral("/images/pic.png"), folder + QStringLiteral("/in.png")));
    ASSERT_TRUE(QFile::link(outer.filePath(QStringLiteral("gone")), folder + QStringLiteral("/dangling.png")));
    ASSERT_TRUE(QFile::link(outer.path(), folder + QStringLiteral("/up")));

    const QString base = QDir(folder).absolutePath();
    EXPECT_EQ(pathInsideFolder(folder, QStringLiteral("images/pic.png")), base + QStringLiteral("/images/pic.png"));
    EXPECT_EQ(pathInsideFolder(folder, QStringLiteral("images/../images/./pic.png")),
              base + QStringLiteral("/images/pic.png"));
    EXPECT_EQ(pathInsideFolder(folder, QStringLiteral("in.png")), base + QStringLiteral("/in.png"));
    // A file about to be written, in a folder about to be made.
    EXPECT_EQ(pathInsideFolder(folder, QStringLiteral("new/a.png")), base + QStringLiteral("/new/a.png"));

    for (const QString& name :
         {QStringLiteral(""), QStringLiteral("/etc/passwd"), QStringLiteral("../secret.txt"), QStringLiteral("../../x"),
          QStringLiteral("images/../../secret.txt"), QStringLiteral(".."), QStringLiteral("."), QStringLiteral("~/x"),
          QStringLiteral("C:/x"), QStringLiteral("out.png"), QStringLiteral("dangling.png"),
          QStringLiteral("up/secret.txt"), QStringLiteral("up/new.png")}) {
        QString problem;
        EXPECT_EQ(pathInsideFolder(folder, name, &problem), std::nullopt) << name.toStdString();
        EXPECT_FALSE(problem.isEmpty()) << name.toStdString();
    }
}

TEST(AtomicFile, StagedFolderFilesAreCreatedNewAndFlushedTogether)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("picture.png"));
    ASSERT_TRUE(writeNewFileInStagedFolder(path, "first bytes"));
    EXPECT_EQ(readFileBytes(path), QByteArray("first bytes"));
    // An existing file is never overwritten: the name was expected to be free.
    Error error;
    EXPECT_FALSE(writeNewFileInStagedFolder(path, "other bytes", &error));
    EXPECT_EQ(error.code, XQFileCannotOpenError);
    EXPECT_EQ(readFileBytes(path), QByteArray("first bytes"));
    // Nor is a file made in a folder that does not exist.
    EXPECT_FALSE(writeNewFileInStagedFolder(dir.filePath(QStringLiteral("missing/x.png")), "x"));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("missing"))));

    EXPECT_TRUE(flushStagedFolder(dir.path()));
    EXPECT_FALSE(flushStagedFolder(dir.filePath(QStringLiteral("missing"))));
    EXPECT_FALSE(flushStagedFolder(path)); // a file is not a folder
}
