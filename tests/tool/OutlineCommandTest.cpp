#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "QlyRunner.h"

using namespace qly::tooltest;

namespace {

const QByteArray SmallOutline = "<?xml version=\"1.0\"?>\n<opml version=\"2.0\"><head><title>Book &amp; Notes</title>"
                                "<ownerName>A. Writer</ownerName></head><body>"
                                "<outline text=\"Part\" type=\"part\">"
                                "<outline text=\"Scene 10\" _note=\"two&#10;lines\"/>"
                                "<outline text=\"scene\"/><outline text=\"Scene 2\" b=\"1\" a=\"&lt;x&gt;\"/>"
                                "<outline text=\"Scene\"/></outline>"
                                "<outline text=\"Appendix\"/></body></opml>\n";

} // namespace

TEST(OutlineCommand, PrintsTheHeadThenTheItemsIndented)
{
    const QlyRun run = runQly({QStringLiteral("outline"), QStringLiteral("-")}, SmallOutline);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_EQ(run.out,
              QStringLiteral("title\tBook & Notes\n"
                             "ownerName\tA. Writer\n"
                             "\n"
                             "Part\ttype=part\n"
                             "  Scene 10\t_note=two\\nlines\n"
                             "  scene\n"
                             "  Scene 2\ta=<x>\tb=1\n"
                             "  Scene\n"
                             "Appendix\n"));
    EXPECT_TRUE(run.err.isEmpty());
}

TEST(OutlineCommand, SortsNumericallyAndMakesSiblingTitlesUnique)
{
    const QlyRun sorted =
        runQly({QStringLiteral("outline"), QStringLiteral("--sort"), QStringLiteral("-")}, SmallOutline);
    ASSERT_EQ(sorted.exitCode, 0) << sorted.err.toStdString();
    const QStringList lines = sorted.out.split(u'\n');
    EXPECT_EQ(lines.mid(3, 6),
              (QStringList{"Appendix", "Part\ttype=part", "  scene", "  Scene", "  Scene 2\ta=<x>\tb=1",
                           "  Scene 10\t_note=two\\nlines"}));

    const QlyRun unique = runQly(
        {QStringLiteral("outline"), QStringLiteral("--unique-titles"), QStringLiteral("--sort"), QStringLiteral("-")},
        SmallOutline);
    ASSERT_EQ(unique.exitCode, 0) << unique.err.toStdString();
    // "scene" comes first in the file, meets "Scene" and is renamed; the later "Scene" is then unique.
    EXPECT_EQ(unique.out.split(u'\n').mid(5, 4),
              (QStringList{"  Scene", "  Scene 2\ta=<x>\tb=1", "  Scene 10\t_note=two\\nlines", "  scene-1"}));
}

TEST(OutlineCommand, WritesTheSameAsJSON)
{
    const QlyRun run = runQly({QStringLiteral("outline"), QStringLiteral("--json"), QStringLiteral("-")}, SmallOutline);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    QJsonParseError error;
    const QJsonObject json = QJsonDocument::fromJson(run.out.toUtf8(), &error).object();
    ASSERT_EQ(error.error, QJsonParseError::NoError) << run.out.toStdString();
    EXPECT_EQ(json.value(QStringLiteral("head")).toObject().value(QStringLiteral("title")).toString(),
              QStringLiteral("Book & Notes"));
    const QJsonArray items = json.value(QStringLiteral("items")).toArray();
    ASSERT_EQ(items.size(), 2);
    const QJsonObject part = items[0].toObject();
    EXPECT_EQ(part.value(QStringLiteral("text")).toString(), QStringLiteral("Part"));
    EXPECT_EQ(part.value(QStringLiteral("attributes")).toObject().value(QStringLiteral("type")).toString(),
              QStringLiteral("part"));
    const QJsonArray scenes = part.value(QStringLiteral("children")).toArray();
    ASSERT_EQ(scenes.size(), 4);
    EXPECT_EQ(
        scenes[0].toObject().value(QStringLiteral("attributes")).toObject().value(QStringLiteral("_note")).toString(),
        QStringLiteral("two\nlines"));
    EXPECT_FALSE(scenes[0].toObject().contains(QStringLiteral("children"))) << "leaves have no children entry";
    EXPECT_FALSE(items[1].toObject().contains(QStringLiteral("children")));
}

TEST(OutlineCommand, MalformedFilesFailWithTheReason)
{
    struct Case {
        QByteArray input;
        const char* message;
    };
    const Case cases[] = {
        {"<opml><body/></opml>", "Couldn't find the <head> tree."},
        {"<opml><head/></opml>", "Couldn't find the outline items."},
        {"<opml><head></opml>", "at offset 14"},
        {"", "at offset 0"},
    };
    for (const Case& c : cases) {
        const QlyRun run = runQly({QStringLiteral("outline"), QStringLiteral("-")}, c.input);
        EXPECT_EQ(run.exitCode, 1) << c.message;
        EXPECT_TRUE(run.out.isEmpty());
        EXPECT_TRUE(run.err.startsWith(QStringLiteral("qly: -: "))) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(QString::fromUtf8(c.message))) << run.err.toStdString();
    }
    EXPECT_EQ(runQly({QStringLiteral("outline"), QStringLiteral("/nonexistent/file.opml")}).exitCode, 1);
    EXPECT_EQ(runQly({QStringLiteral("outline"), QStringLiteral("--bogus"), QStringLiteral("-")}).exitCode, 2);
    EXPECT_EQ(runQly({QStringLiteral("outline")}).exitCode, 2);
}

TEST(OutlineCommand, DeepNestingPrintsWithBoundedIndentation)
{
    constexpr int Depth = 100'000;
    QByteArray deep = "<opml><head/><body>";
    for (int i = 0; i < Depth; ++i)
        deep += "<outline text=\"n\">";
    for (int i = 0; i < Depth; ++i)
        deep += "</outline>";
    deep += "</body></opml>";
    const QlyRun run = runQly(
        {QStringLiteral("outline"), QStringLiteral("--sort"), QStringLiteral("--unique-titles"), QStringLiteral("-")},
        deep);
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), Depth);
    EXPECT_EQ(lines[10], QString(20, u' ') + u'n');
    EXPECT_EQ(lines.last(), QString(128, u' ') + QStringLiteral("[level %1] n").arg(Depth - 1));
    EXPECT_LT(run.out.size(), 20 * 1024 * 1024) << "output stays linear in the depth";
}

TEST(OutlineCommand, PrintsTheSample)
{
    const QlyRun run = runQly({QStringLiteral("outline"), QStringLiteral(QLY_SOURCE_DIR "/samples/outline.opml")});
    ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
    EXPECT_TRUE(run.out.startsWith(QStringLiteral("title\tThe Lighthouse Keeper's Daughter\n")));
    EXPECT_TRUE(
        run.out.contains(QStringLiteral("\n    Scene 1\t_note=Mara climbs the 114 steps & counts them aloud.\\n")));
}
