// Plain-text screenplays: reading lines, typing elements, building and splitting rich text.
#include <gtest/gtest.h>

#include "support/TestFiles.h"

#include <qlyappkit/formats/screenplay/ScreenplayLines.h>
#include <qlyappkit/formats/screenplay/ScreenplayPage.h>
#include <qlyappkit/formats/screenplay/ScreenplayText.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;

namespace {

// The typed elements as "Type<TAB>text" lines.
QString typedListing(const QString& screenplay)
{
    QString out;
    for (const QVariantMap& record : screenplayLinesAndElementTypesFromString(screenplay))
        out += record.value(XQScreenplayTypeKey).toString() + u'\t' + record.value(XQScreenplayStringKey).toString()
            + u'\n';
    return out;
}

} // namespace

TEST(Screenplay, LinesAreTypedByLevelAndCapitals)
{
    const struct {
        const char* screenplay;
        const char* expected;
    } cases[] = {
        {"INT. HOUSE - DAY\n\nBOOM!\n\nBob walks in.\n",
         "SceneHeading\tINT. HOUSE - DAY\nShot\tBOOM!\nAction\tBob walks in.\n"},
        {"X\n\n  CUT TO:\n\n  BOB\n\n  (quietly)\n\n  Hello there.\n",
         "Shot\tX\nTransition\tCUT TO:\nCharacter\tBOB\nParenthetical\t(quietly)\nDialogue\tHello there.\n"},
        // Every heading prefix and suffix, in capitals at the margin; lower case is action.
        {"EXT. A\n\nI/E CAR\n\nFADE IN:\n\nFULL SHOT OF IT\n\nP.O.V. HER\n\nTHE ROAD - MORNING\n\nA - AFTERNOON\n\n"
         "B - EVENING\n\nC - LATER\n\nD - THE NEXT DAY\n\nE - NIGHT\n\nint. house - day\n\nFADE OUT.\n\nX - DAWN\n",
         "SceneHeading\tEXT. A\nSceneHeading\tI/E CAR\nSceneHeading\tFADE IN:\nSceneHeading\tFULL SHOT OF IT\n"
         "SceneHeading\tP.O.V. HER\nSceneHeading\tTHE ROAD - MORNING\nSceneHeading\tA - AFTERNOON\nSceneHeading\tB - "
         "EVENING\n"
         "SceneHeading\tC - LATER\nSceneHeading\tD - THE NEXT DAY\nSceneHeading\tE - NIGHT\nAction\tint. house - day\n"
         "Shot\tFADE OUT.\nShot\tX - DAWN\n"},
        // Hard-wrapped lines at one level join with one space; a blank line or a new level splits.
        {"A\n    Hello\n    there.\n\n    Again.\n  BOB\n    Hi.\n",
         "Shot\tA\nDialogue\tHello there.\nDialogue\tAgain.\nCharacter\tBOB\nDialogue\tHi.\n"},
        // Lines of spaces and tabs are blank lines: they split and are not emitted.
        {"Walk\n \t \nWalk on\n", "Action\tWalk\nAction\tWalk on\n"},
        // All at one indentation: the margin is that indentation.
        {"    INT. A - DAY\n\n    She sits.\n    ALONE.\n", "SceneHeading\tINT. A - DAY\nAction\tShe sits. ALONE.\n"},
        // A tab counts as one; CR LF, CR and U+2029 end lines; text with no letters is capitals.
        {"A\r\n\tBOB\r\r  (beat)\u2029\u2029\t1, 2, 3.\n",
         "Shot\tA\nCharacter\tBOB\nParenthetical\t(beat)\nTransition\t1, 2, 3.\n"},
        {"", ""},
        {"\n \n\t\n", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(typedListing(QString::fromUtf8(c.screenplay)), QString::fromUtf8(c.expected)) << c.screenplay;
}

TEST(Screenplay, LineInfoKeepsLevelsAndTheirBounds)
{
    int left = -1, right = -1;
    const ScreenplayRecords lines =
        screenplayLinesInfoFromString(QStringLiteral("  A\n      B\n      c\n\n   D  \n"), &left, &right);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[1].value(XQScreenplayStringKey).toString(), QStringLiteral("B c"));
    EXPECT_EQ(lines[1].value(XQScreenplayLevelKey).toInt(), 6);
    EXPECT_EQ(lines[2].value(XQScreenplayStringKey).toString(), QStringLiteral("D"));
    EXPECT_EQ(lines[2].value(XQScreenplayLevelKey).toInt(), 3);
    EXPECT_EQ(left, 2);
    EXPECT_EQ(right, 6);

    screenplayLinesInfoFromString(QStringLiteral(" \n"), &left, &right);
    EXPECT_EQ(left, 1000);
    EXPECT_EQ(right, 0);
    // After a blank line the previous level is the smallest so far, so a following line at that
    // level would still not join: the blank line already split it.
    EXPECT_EQ(screenplayLinesInfoFromString(QStringLiteral("a\n\nb\n")).size(), 2);
}

TEST(Screenplay, TheSampleScreenplayIsTypedAsWritten)
{
    const QString screenplay =
        QString::fromUtf8(testfiles::readFileBytes(QStringLiteral(QLY_SOURCE_DIR "/samples/screenplay.txt")));
    const QString expected = QString::fromUtf8(
        testfiles::readFileBytes(QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/screenplay/screenplay.expected")));
    ASSERT_FALSE(screenplay.isEmpty());
    const QStringList got = typedListing(screenplay).split(u'\n');
    const QStringList want = expected.split(u'\n');
    ASSERT_EQ(got.size(), want.size());
    for (qsizetype i = 0; i < want.size(); ++i)
        EXPECT_EQ(got[i], want[i]) << "element " << i + 1;
}

TEST(Screenplay, DefaultElementAttributesFollowTheLayoutTable)
{
    const ScriptElementAttributes defaults = defaultPlainTextScreenplayElementAttributes();
    const struct {
        const QString& type;
        TextAlignment alignment;
        double before, indent, tail;
        bool tab;
    } table[] = {
        {XQPlainTextScreenplaySceneHeading, LeftTextAlignment, 24, 36, 468, false},
        {XQPlainTextScreenplayAction, LeftTextAlignment, 12, 36, 468, false},
        {XQPlainTextScreenplayCharacter, LeftTextAlignment, 12, 180, 450, false},
        {XQPlainTextScreenplayParenthetical, LeftTextAlignment, 0, 144, 324, false},
        {XQPlainTextScreenplayDialogue, LeftTextAlignment, 0, 108, 360, false},
        {XQPlainTextScreenplayTransition, RightTextAlignment, 12, 324, 440.64, false},
        {XQPlainTextScreenplayShot, LeftTextAlignment, 12, 36, 468, true},
    };
    ASSERT_EQ(defaults.size(), 7);
    for (const auto& row : table) {
        SCOPED_TRACE(row.type.toStdString());
        const Attributes attributes = defaults.value(row.type);
        const Font font = attributes.value(FontAttributeName).value<Font>();
        EXPECT_EQ(font.familyName(), QStringLiteral("Courier")) << "the fonts package provides a Courier stand-in";
        EXPECT_EQ(font.pointSize(), 12);
        EXPECT_EQ(font.traits(), 0u);
        const ParagraphStyle style = attributes.value(ParagraphStyleAttributeName).value<ParagraphStyle>();
        EXPECT_EQ(style.alignment(), row.alignment);
        EXPECT_EQ(style.paragraphSpacingBefore(), row.before);
        EXPECT_EQ(style.headIndent(), row.indent);
        EXPECT_EQ(style.firstLineHeadIndent(), row.indent);
        EXPECT_EQ(style.tailIndent(), row.tail);
        EXPECT_EQ(style.lineSpacing(), 1.0);
        EXPECT_EQ(style.minimumLineHeight(), 12);
        EXPECT_EQ(style.maximumLineHeight(), 12);
        const QVector<TextTab> tabs = row.tab ? QVector<TextTab>{TextTab{LeftTextAlignment, 72}} : QVector<TextTab>();
        EXPECT_EQ(style.tabStops(), tabs);
    }
}

TEST(Screenplay, RichTextJoinsElementsWithTheirAttributes)
{
    const Attributes dialogue{{ToolTipAttributeName, QStringLiteral("dialogue")}};
    const ScriptElementAttributes given{{XQPlainTextScreenplayDialogue, dialogue}};
    const ScreenplayRecords records{
        {{XQScreenplayStringKey, QStringLiteral("BOB")}, {XQScreenplayTypeKey, XQPlainTextScreenplayCharacter}},
        {{XQScreenplayTypeKey, XQPlainTextScreenplayAction}},
        {{XQScreenplayStringKey, QStringLiteral("Hi.")}, {XQScreenplayTypeKey, XQPlainTextScreenplayDialogue}},
    };
    const AttributedString text = attributedStringFromScreenplayLinesAndTypes(records, given);
    EXPECT_EQ(text.string(), QStringLiteral("BOB\nHi."));
    // The character is not in the given attributes: it takes the default; its line break goes with it.
    const Attributes character = defaultPlainTextScreenplayElementAttributes().value(XQPlainTextScreenplayCharacter);
    Range run;
    EXPECT_EQ(text.attributes(0, &run), character);
    EXPECT_EQ(run, (Range{0, 4}));
    EXPECT_EQ(text.attributes(4), dialogue);
    EXPECT_TRUE(attributedStringFromScreenplayLinesAndTypes({}, given).isEmpty());
}

TEST(Screenplay, SplittingStartsAPieceAtEverySeparator)
{
    const QString screenplay = QStringLiteral("Before it all.\n\nINT. A - DAY\n\nOne.\n\nEXT. B - NIGHT\n\nTwo.\n"
                                              "\n     BOB\n          Hi.\n");
    const QList<AttributedString> scenes = scriptComponentTextsFromPlainTextScreenplayString(
        screenplay, defaultPlainTextScreenplayElementAttributes(), XQPlainTextScreenplaySceneHeading);
    ASSERT_EQ(scenes.size(), 3);
    EXPECT_EQ(scenes[0].string(), QStringLiteral("Before it all."));
    EXPECT_EQ(scenes[1].string(), QStringLiteral("INT. A - DAY\nOne."));
    EXPECT_EQ(scenes[2].string(), QStringLiteral("EXT. B - NIGHT\nTwo.\nBOB\nHi."));

    // A separator on the first line leaves no empty piece before it; a type that never occurs keeps one piece.
    EXPECT_EQ(scriptComponentTextsFromPlainTextScreenplayString(QStringLiteral("INT. A - DAY\n\nx\n"), {},
                                                                XQPlainTextScreenplaySceneHeading)
                  .size(),
              1);
    EXPECT_EQ(scriptComponentTextsFromPlainTextScreenplayString(screenplay, {}, XQPlainTextScreenplayTransition).size(),
              1);
    EXPECT_TRUE(
        scriptComponentTextsFromPlainTextScreenplayString(QString(), {}, XQPlainTextScreenplayAction).isEmpty());
}

TEST(Screenplay, TailIndentsFromTheTrailingEdgeForRTF)
{
    const AttributedString text = attributedStringWithTailIndentsFromTrailingEdge(
        initWithPlainTextScreenplayString(QStringLiteral("A\n\n        CUT TO:\n"),
                                          defaultPlainTextScreenplayElementAttributes()),
        screenplayTextWidth());
    EXPECT_EQ(screenplayTextWidth(), 468);
    EXPECT_EQ(text.attribute(ParagraphStyleAttributeName, 0).value<ParagraphStyle>().tailIndent(), 0);
    EXPECT_NEAR(text.attribute(ParagraphStyleAttributeName, 2).value<ParagraphStyle>().tailIndent(), -27.36, 1e-9);
}

TEST(Screenplay, HostileTextsStayLinear)
{
    // A megabyte-long line, a megabyte of indentation, and 100,000 hard-wrapped lines of one block.
    const QString longLine(1 << 20, u'x');
    EXPECT_EQ(typedListing(longLine), QStringLiteral("Action\t") + longLine + u'\n');
    const QString deep = QString(1 << 20, u' ') + QStringLiteral("BOB\nx\n");
    EXPECT_EQ(typedListing(deep), QStringLiteral("Character\tBOB\nAction\tx\n"));
    QString block;
    for (int i = 0; i < 100000; ++i)
        block += QStringLiteral("    word\n");
    const ScreenplayRecords lines = screenplayLinesInfoFromString(block);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0].value(XQScreenplayStringKey).toString().size(), 100000 * 5 - 1);
}
