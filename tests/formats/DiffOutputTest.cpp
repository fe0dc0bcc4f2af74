// Reading the comparison tool's output back into text and changed stretches.
#include "formats/DiffTestSupport.h"

#include <qlyappkit/formats/comparison/DiffOutput_p.h>

using namespace qly;
using namespace qly::diffoutput;

namespace {

const QString Sep = XQDiffChunkSeparatorString;
const QString OS = XQDiffOldTextStartTag, OE = XQDiffOldTextEndTag;
const QString NS = XQDiffNewTextStartTag, NE = XQDiffNewTextEndTag;

QStringList stretches(const MergedText& merged, const std::vector<Range>& ranges)
{
    QStringList out;
    for (const Range& r : ranges)
        out += merged.text.mid(r.location, r.length);
    return out;
}

} // namespace

TEST(DiffOutput, TagsBecomeRemovedAndAddedStretches)
{
    struct Case {
        const char* what;
        QString output;
        QString text;
        QStringList removed, added;
    };
    const Case cases[] = {
        {"unchanged", QStringLiteral("a") + Sep + QStringLiteral(" b") + Sep, QStringLiteral("a b"), {}, {}},
        {"changed group: removed first, then added",
         QStringLiteral("The") + Sep + OS + QStringLiteral("old") + Sep + OE + NS + QStringLiteral("new") + Sep + NE
             + QStringLiteral(" day") + Sep,
         QStringLiteral("Theoldnew day"),
         {QStringLiteral("old")},
         {QStringLiteral("new")}},
        // A removed stretch after added ones keeps its place once the new tags are gone.
        {"positions after deleted new tags",
         NS + QStringLiteral("x") + NE + QStringLiteral("-") + OS + QStringLiteral("yy") + OE + NS + QStringLiteral("z")
             + NE,
         QStringLiteral("x-yyz"),
         {QStringLiteral("yy")},
         {QStringLiteral("x"), QStringLiteral("z")}},
        // Separators go first, so a tag cut by one is still a tag.
        {"tag across a separator",
         OS.left(10) + Sep + OS.mid(10) + QStringLiteral("gone") + OE,
         QStringLiteral("gone"),
         {QStringLiteral("gone")},
         {}},
        // A start tag without an end ends its pass: it goes, and later old tags stay as text.
        {"stray start tag",
         QStringLiteral("a") + OS + QStringLiteral("b") + NS + QStringLiteral("c") + NE,
         QStringLiteral("abc"),
         {},
         {QStringLiteral("c")}},
        {"stray start tag leaves later tags",
         OS + QStringLiteral("a") + NS + QStringLiteral("b") + NE + OS,
         QStringLiteral("ab") + OS,
         {},
         {QStringLiteral("b")}},
        // A separator without its line feed is text.
        {"separator without line feed",
         QStringLiteral("a") + Sep.chopped(1),
         QStringLiteral("a") + Sep.chopped(1),
         {},
         {}},
        {"empty", QString(), QString(), {}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::optional<MergedText> merged = mergedTextFromDiffOutput(c.output.toUtf8());
        ASSERT_TRUE(merged);
        EXPECT_EQ(merged->text, c.text);
        EXPECT_EQ(stretches(*merged, merged->removed), c.removed);
        EXPECT_EQ(stretches(*merged, merged->added), c.added);
    }
}

TEST(DiffOutput, OutputThatIsNotUTF8GivesNothing)
{
    EXPECT_FALSE(mergedTextFromDiffOutput(QByteArray("ok\xff") + Sep.toUtf8()));
    // Not even when deleting a separator would join the halves of a character.
    EXPECT_FALSE(mergedTextFromDiffOutput(QByteArray("\xc3") + Sep.toUtf8() + QByteArray("\xa9")));
    EXPECT_TRUE(mergedTextFromDiffOutput(QByteArray("\xc3\xa9") + Sep.toUtf8()));
}

// The tool's output arrives in blocks of any size: a separator or a character cut between two blocks
// must come out as from the whole output.
TEST(DiffOutput, BlocksOfAnySizeStripLikeTheWhole)
{
    const QByteArray output = (QStringLiteral("na\u00efve") + Sep + OS + QStringLiteral("\u6771") + Sep + OE + NS
                               + QStringLiteral("\U0001F600 x") + Sep + NE + QStringLiteral("tail") + Sep.chopped(1))
                                  .toUtf8();
    const std::optional<MergedText> whole = mergedTextFromDiffOutput(output);
    ASSERT_TRUE(whole);
    for (qsizetype block = 1; block <= 40; ++block) {
        SCOPED_TRACE(block);
        SeparatorStripper stripper;
        for (qsizetype at = 0; at < output.size(); at += block)
            stripper.feed(output.mid(at, block));
        const std::optional<QByteArray> stripped = stripper.finish();
        ASSERT_TRUE(stripped);
        const MergedText merged = mergedTextFromStrippedOutput(*stripped);
        EXPECT_EQ(merged.text, whole->text);
        EXPECT_EQ(stretches(merged, merged.removed), stretches(*whole, whole->removed));
        EXPECT_EQ(stretches(merged, merged.added), stretches(*whole, whole->added));
    }
    // A character cut by a separator is found even when the separator ends a block.
    const QByteArray cut = QByteArray("\xc3") + Sep.toUtf8();
    SeparatorStripper stripper;
    stripper.feed(cut);
    stripper.feed(QByteArray("\xa9"));
    EXPECT_FALSE(stripper.finish());
}
