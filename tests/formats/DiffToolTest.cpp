// The comparison tool's command line and the comparison's temporary files.
#include "formats/DiffTestSupport.h"

#include <QFile>

#include <qlyappkit/formats/comparison/DiffTool_p.h>
#include <qlyappkit/platform/services/AtomicFile.h>

using namespace qly;
using namespace qly::difftest;
using namespace qly::difftool;

namespace {

SideWriter writing(const QByteArray& bytes)
{
    return [bytes](QIODevice& file) { return file.write(bytes) == bytes.size(); };
}

} // namespace

TEST(DiffTool, TheFourGroupFormatsThenThePaths)
{
    EXPECT_EQ(
        diffToolArguments(QStringLiteral("/t/old.txt"), QStringLiteral("/t/new.txt")),
        (QStringList{
            QStringLiteral("--old-group-format=[[-##-XQ_DiFf_OlDtXt_StArT-##-]]%<[[-##-XQ_DiFf_OlDtXt_EnD-##-]]"),
            QStringLiteral("--new-group-format=[[-##-XQ_DiFf_NeWtXt_StArT-##-]]%>[[-##-XQ_DiFf_NeWtXt_EnD-##-]]"),
            QStringLiteral("--unchanged-group-format=%="),
            QStringLiteral("--changed-group-format=[[-##-XQ_DiFf_OlDtXt_StArT-##-]]%<[[-##-XQ_DiFf_OlDtXt_EnD-##-]]"
                           "[[-##-XQ_DiFf_NeWtXt_StArT-##-]]%>[[-##-XQ_DiFf_NeWtXt_EnD-##-]]"),
            QStringLiteral("/t/old.txt"),
            QStringLiteral("/t/new.txt"),
        }));
}

TEST(DiffTool, UniqueFilesTakeTheNextFreeNumberAndNeverFollowALink)
{
    ScopedTemporaryFolder folder;
    const QDir dir(folder.path());
    ASSERT_TRUE(writeFileAtomically(dir.filePath(QStringLiteral("DiffTextOld.txt")), "first"));
    // A link to a file elsewhere must not be written through.
    const QString target = dir.filePath(QStringLiteral("elsewhere"));
    ASSERT_TRUE(QFile::link(target, dir.filePath(QStringLiteral("DiffTextOld-1.txt"))));
    Error error;
    const std::optional<QString> path = createUniqueFile(folder.path(), QStringLiteral("DiffTextOld"),
                                                         QStringLiteral(".txt"), writing("bytes"), &error);
    ASSERT_TRUE(path) << error.localizedRecoverySuggestion.toStdString();
    EXPECT_EQ(*path, dir.filePath(QStringLiteral("DiffTextOld-2.txt")));
    QFile file(*path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("bytes"));
    EXPECT_FALSE(QFile::exists(target));

    // A folder that takes no files gives the creation's error, naming the file.
    const std::optional<QString> refused = createUniqueFile(QStringLiteral("/proc/self"), QStringLiteral("DiffTextNew"),
                                                            QStringLiteral(".txt"), writing("x"), &error);
    EXPECT_FALSE(refused);
    EXPECT_EQ(error.domain, XQFileErrorDomain);
    EXPECT_EQ(error.code, XQFileCannotOpenError);
    EXPECT_TRUE(error.localizedDescription.contains(QStringLiteral("DiffTextNew.txt")));
}
