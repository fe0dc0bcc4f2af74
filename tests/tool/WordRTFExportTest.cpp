// qly convert --to word-rtf on the bundled manuscript: notes, comments, bookmarks and pictures arrive
// as word-processor RTF; options, paper and margins reach the writer; bad input writes nothing.
#include "support/TestFiles.h"
#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "QlyRunner.h"

using namespace qly::tooltest;

using namespace qly::testfiles;

namespace {

const QString Manuscript = QStringLiteral(QLY_SOURCE_DIR "/samples/manuscript.rtf");

// Runs the export of the sample with extra arguments; the RTF written, empty when none.
QByteArray exportSample(const QTemporaryDir& dir, const QStringList& extra, QlyRun* run = nullptr)
{
    const QString out = dir.filePath(QStringLiteral("out.rtf"));
    QFile::remove(out);
    QlyRun r = runQly(QStringList{QStringLiteral("convert"), Manuscript, QStringLiteral("-o"), out,
                                  QStringLiteral("--to"), QStringLiteral("word-rtf")}
                      + extra);
    if (run)
        *run = r;
    return readFileBytes(out);
}

} // namespace

TEST(WordRTFExport, SampleBecomesWordProcessorRTF)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    QlyRun run;
    const QByteArray rtf =
        exportSample(dir,
                     {QStringLiteral("--author"), QStringLiteral("Ann Example"), QStringLiteral("--option"),
                      QStringLiteral("XQRTFLinkedFootnotesAsEndnotes=yes")},
                     &run);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    ASSERT_TRUE(rtf.startsWith("{\\rtf1"));
    for (char c : rtf)
        ASSERT_LT(static_cast<unsigned char>(c), 0x80) << "the output must be 7-bit";

    // The sample holds three inline footnotes (tags) and two linked footnotes (side file), the latter
    // as endnotes here; no note tag may survive as text.
    const QString text = QString::fromLatin1(rtf);
    EXPECT_EQ(text.count(QStringLiteral("{\\*\\footnote")), 5);
    EXPECT_EQ(text.count(QStringLiteral("{\\*\\footnote\\ftnalt")), 2);
    EXPECT_FALSE(text.contains(QStringLiteral("Qlry"), Qt::CaseInsensitive));
    EXPECT_FALSE(text.contains(QStringLiteral("quillcmt")));

    // Two comments from the side file and one annotation, each with the author, anchored to a range.
    EXPECT_EQ(text.count(QStringLiteral("{\\*\\atnauthor Ann Example}")), 3);
    EXPECT_EQ(text.count(QStringLiteral("\\atrfstart")), text.count(QStringLiteral("\\atrfend")));
    EXPECT_GE(text.count(QStringLiteral("\\atrfstart")), 2);
    EXPECT_TRUE(text.contains(QStringLiteral("Is the lighthouse still working")));

    // The bookmark, the page reference to it, the picture; the link schemes are gone.
    EXPECT_TRUE(text.contains(QStringLiteral("{\\*\\bkmkstart Harbour_scene}")));
    EXPECT_TRUE(text.contains(QStringLiteral("{\\*\\bkmkend Harbour_scene}")));
    EXPECT_TRUE(text.contains(QStringLiteral("PAGEREF Harbour_scene")));
    EXPECT_EQ(text.count(QStringLiteral("\\pngblip")), 1);
    EXPECT_FALSE(text.contains(QStringLiteral("qlybookmark")) || text.contains(QStringLiteral("qlypicture")));
    EXPECT_TRUE(text.contains(QStringLiteral("The ferry left the harbour at dawn")));

    // Annotations as footnotes: the third footnote kind, here sent to the endnotes by its own option.
    const QByteArray third = exportSample(dir,
                                          {QStringLiteral("--annotations-as-footnotes"), QStringLiteral("--option"),
                                           QStringLiteral("XQRTFLinkedCommentsFootnotesAsEndnotes=yes")},
                                          &run);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QString thirdText = QString::fromLatin1(third);
    EXPECT_EQ(thirdText.count(QStringLiteral("{\\*\\footnote")), 6);
    EXPECT_EQ(thirdText.count(QStringLiteral("{\\*\\footnote\\ftnalt")), 1);
    EXPECT_EQ(thirdText.count(QStringLiteral("{\\*\\annotation")), 2);
}

TEST(WordRTFExport, OptionsPaperMarginsAndSections)
{
    QTemporaryDir dir;
    const QString plain = QString::fromLatin1(exportSample(dir, {}));
    ASSERT_FALSE(plain.isEmpty());
    EXPECT_FALSE(plain.contains(QStringLiteral("\\ftnalt"))); // linked footnotes stay footnotes by default
    EXPECT_FALSE(plain.contains(QStringLiteral("\\cols3")));

    // A boolean, an integer and texts by their names; the section titles come from the chapters.
    QlyRun run;
    const QString set = QString::fromLatin1(
        exportSample(dir,
                     {QStringLiteral("--option"), QStringLiteral("XQRTFInlineFootnotesAsEndnotes=YES"),
                      QStringLiteral("--option"), QStringLiteral("XQRTFNumberOfColumns=3"), QStringLiteral("--option"),
                      QStringLiteral("XQRTFHeaderString=<$sectiontitle>"), QStringLiteral("--paper"),
                      QStringLiteral("500x700"), QStringLiteral("--margins"), QStringLiteral("36,54,72,90")},
                     &run));
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(set.count(QStringLiteral("{\\*\\footnote\\ftnalt")), 3);
    EXPECT_TRUE(set.contains(QStringLiteral("\\cols3")));
    EXPECT_TRUE(set.contains(QStringLiteral("Chapter One")));
    EXPECT_TRUE(set.contains(QStringLiteral("\\sect\\sectd")));
    EXPECT_TRUE(QRegularExpression(QStringLiteral("\\\\header[r]? \\{[^\\n]*Chapter Two")).match(set).hasMatch());
    EXPECT_TRUE(set.contains(QStringLiteral("\\paperw10000")));
    EXPECT_TRUE(set.contains(QStringLiteral("\\paperh14000")));
    EXPECT_TRUE(set.contains(QStringLiteral("\\margl720")));
    EXPECT_TRUE(set.contains(QStringLiteral("\\margr1080")));
    EXPECT_TRUE(set.contains(QStringLiteral("\\margt1440")));
    EXPECT_TRUE(set.contains(QStringLiteral("\\margb1800")));

    // "no" really turns an option off.
    const QString off = QString::fromLatin1(
        exportSample(dir, {QStringLiteral("--option"), QStringLiteral("XQRTFInlineFootnotesAsEndnotes=no")}));
    EXPECT_FALSE(off.contains(QStringLiteral("\\ftnalt")));

    // Unknown names and malformed values are refused before anything is written.
    exportSample(dir, {QStringLiteral("--option"), QStringLiteral("XQRTFNoSuchThing=yes")}, &run);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.contains(QStringLiteral("unknown option \u201CXQRTFNoSuchThing\u201D")));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("out.rtf"))));
    exportSample(dir, {QStringLiteral("--paper"), QStringLiteral("wide")}, &run);
    EXPECT_EQ(run.exitCode, 2);
    exportSample(dir, {QStringLiteral("--margins"), QStringLiteral("1,2,3")}, &run);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("out.rtf"))));
}

TEST(WordRTFExport, CommentsFileAndUnreadableInput)
{
    QTemporaryDir dir;
    // Without its side file beside it the comments' links just go: no annotations but the tagged one.
    const QString copy = dir.filePath(QStringLiteral("copy.rtf"));
    ASSERT_TRUE(QFile::copy(Manuscript, copy));
    const QString out = dir.filePath(QStringLiteral("copy-out.rtf"));
    QlyRun run = runQly({QStringLiteral("convert"), copy, QStringLiteral("-o"), out, QStringLiteral("--to"),
                         QStringLiteral("word-rtf")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    QString text = QString::fromLatin1(readFileBytes(out));
    EXPECT_EQ(text.count(QStringLiteral("{\\*\\annotation")), 1);
    EXPECT_EQ(text.count(QStringLiteral("{\\*\\footnote")), 3);
    // --comments names it explicitly.
    run = runQly({QStringLiteral("convert"), copy, QStringLiteral("-o"), out, QStringLiteral("--to"),
                  QStringLiteral("word-rtf"), QStringLiteral("--comments"),
                  QStringLiteral(QLY_SOURCE_DIR "/samples/manuscript.comments.xml")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    text = QString::fromLatin1(readFileBytes(out));
    EXPECT_EQ(text.count(QStringLiteral("{\\*\\footnote")), 5);
    EXPECT_TRUE(text.contains(QStringLiteral("Describe the house earlier")));

    // Missing or non-RTF input: exit 1, a message, no output file.
    const QString none = dir.filePath(QStringLiteral("none.rtf"));
    run = runQly({QStringLiteral("convert"), dir.filePath(QStringLiteral("missing.rtf")), QStringLiteral("-o"), none,
                  QStringLiteral("--to"), QStringLiteral("word-rtf")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("missing.rtf")));
    EXPECT_FALSE(QFileInfo::exists(none));
    const QString junk = writeFile(dir, QStringLiteral("junk.rtf"), "this is not rtf");
    run = runQly({QStringLiteral("convert"), junk, QStringLiteral("-o"), none, QStringLiteral("--to"),
                  QStringLiteral("word-rtf")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_FALSE(QFileInfo::exists(none));
    // A named comments file that is not one is an error too, not a silent export without comments.
    run = runQly({QStringLiteral("convert"), copy, QStringLiteral("-o"), none, QStringLiteral("--to"),
                  QStringLiteral("word-rtf"), QStringLiteral("--comments"), junk});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("not a comments file")));
    EXPECT_FALSE(QFileInfo::exists(none));
}
