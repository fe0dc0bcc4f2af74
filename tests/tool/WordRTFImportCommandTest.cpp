// qly convert --from word-rtf: word-processor RTF imported into the stored form (package RTF and the
// comments side file beside it), the two import options, and input it refuses.
#include "support/TestFiles.h"
#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <set>

#include "QlyRunner.h"

#include <qlyappkit/interchange/comments/CommentsSideFile.h>
#include <qlyappkit/interchange/package/PackageRTFReader.h>
#include <qlyappkit/platform/text/MutableAttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/XQComment.h>

using namespace qly;
using namespace qly::tooltest;
using namespace qly::testfiles;

namespace {

const QString Manuscript = QStringLiteral(QLY_SOURCE_DIR "/samples/manuscript.rtf");

struct Stored {
    int comments = 0, footnotes = 0, pictures = 0, inlineFootnotes = 0, annotations = 0;
    QString text;
};

// What a stored text holds, read back as the application reads it.
Stored readStored(const QString& path)
{
    const std::optional<AttributedString> text = initWithQuilleryPackageRTF(readFileBytes(path), nullptr, true);
    EXPECT_TRUE(text.has_value());
    MutableAttributedString stored(text.value_or(AttributedString()));
    const QString side = path.chopped(4) + QStringLiteral(".comments.xml");
    if (QFileInfo::exists(side))
        loadCommentsFromURL(stored, side);
    const AttributedString all = stored.attributedString();
    Stored s;
    s.text = all.string();
    const Range everything{0, all.length()};
    // A note's text may run over several runs of formatting: count notes, not runs.
    std::set<const XQComment*> seen;
    all.enumerateAttribute(XQCommentAttributeName, everything, [&](const QVariant& v, Range) {
        if (XQCommentPtr c = commentFromVariant(v); c && seen.insert(c.get()).second)
            ++(c->isFootnote() ? s.footnotes : s.comments);
        return true;
    });
    const auto countNotes = [&](const QString& name) {
        int notes = 0;
        qsizetype end = -1;
        all.enumerateAttribute(name, everything, [&](const QVariant& v, Range run) {
            notes += v.isValid() && run.location != end ? 1 : 0;
            end = v.isValid() ? run.end() : -1;
            return true;
        });
        return notes;
    };
    all.enumerateAttribute(AttachmentAttributeName, everything, [&](const QVariant& v, Range) {
        s.pictures += v.isValid() ? 1 : 0;
        return true;
    });
    s.inlineFootnotes = countNotes(XQFootnoteAttributeName);
    s.annotations = countNotes(XQAnnotationAttributeName);
    return s;
}

} // namespace

TEST(WordRTFImportCommand, ImportsIntoTheStoredFormWithItsComments)
{
    QTemporaryDir dir;
    const QString exported = dir.filePath(QStringLiteral("for-word.rtf"));
    ASSERT_EQ(runQly({QStringLiteral("convert"), Manuscript, QStringLiteral("-o"), exported, QStringLiteral("-t"),
                      QStringLiteral("word-rtf")})
                  .exitCode,
              0);

    const QString stored = dir.filePath(QStringLiteral("back.rtf"));
    const QlyRun run = runQly({QStringLiteral("convert"), exported, QStringLiteral("-o"), stored,
                               QStringLiteral("--from"), QStringLiteral("word-rtf")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.err.contains(QStringLiteral("imported 5 footnotes, 0 endnotes, 3 comments, 1 pictures")))
        << run.err.toStdString();
    ASSERT_TRUE(QFileInfo::exists(dir.filePath(QStringLiteral("back.comments.xml"))));
    const Stored margin = readStored(stored);
    EXPECT_EQ(margin.comments, 3);
    EXPECT_EQ(margin.footnotes, 5);
    EXPECT_EQ(margin.pictures, 1);
    EXPECT_TRUE(margin.text.contains(QStringLiteral("She watched the lighthouse shrink behind them")));

    // Kept inline: no side file, the notes are in the text.
    const QString inlineStored = dir.filePath(QStringLiteral("inline.rtf"));
    ASSERT_EQ(
        runQly({QStringLiteral("convert"), exported, QStringLiteral("-o"), inlineStored, QStringLiteral("--from"),
                QStringLiteral("word-rtf"), QStringLiteral("--comments-inline"), QStringLiteral("--footnotes-inline")})
            .exitCode,
        0);
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("inline.comments.xml"))));
    const Stored inlineNotes = readStored(inlineStored);
    EXPECT_EQ(inlineNotes.comments + inlineNotes.footnotes, 0);
    EXPECT_EQ(inlineNotes.inlineFootnotes, 5);
    EXPECT_EQ(inlineNotes.annotations, 3);
}

TEST(WordRTFImportCommand, RefusesWhatIsNotRTFAndWritesNothing)
{
    QTemporaryDir dir;
    const QString notRTF = writeFile(dir, QStringLiteral("letter.rtf"), "Dear reader, this is plain text.");
    const QString out = dir.filePath(QStringLiteral("out.rtf"));
    const QlyRun run = runQly({QStringLiteral("convert"), notRTF, QStringLiteral("-o"), out, QStringLiteral("--from"),
                               QStringLiteral("word-rtf")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("not RTF"))) << run.err.toStdString();
    EXPECT_FALSE(QFileInfo::exists(out));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("out.comments.xml"))));

    // The import options belong to the word-rtf input.
    EXPECT_EQ(
        runQly({QStringLiteral("convert"), Manuscript, QStringLiteral("-o"), out, QStringLiteral("--comments-inline")})
            .exitCode,
        2);
}
