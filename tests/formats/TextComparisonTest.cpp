// Comparing two texts with the system's comparison tool, end to end.
#include "formats/DiffTestSupport.h"

#include <QFile>
#include <QThread>
#include <atomic>
#include <thread>

#include <qlyappkit/formats/comparison/TextComparison.h>
#include <qlyappkit/platform/services/AtomicFile.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;
using namespace qly::difftest;

namespace {

AttributedString compare(const QString& older, const QString& newer, XQDiffType type,
                         const QVariantMap& diffAttributes = {})
{
    Error error;
    const std::optional<AttributedString> merged = attributedStringShowingDifferencesFrom(
        AttributedString(newer), AttributedString(older), type, diffAttributes, &error);
    EXPECT_TRUE(merged) << error.localizedDescription.toStdString() << " "
                        << error.localizedRecoverySuggestion.toStdString();
    return merged.value_or(AttributedString());
}

// Both ways back: deleting what was added gives the older text, deleting what was removed the newer.
::testing::AssertionResult givesBothVersions(const AttributedString& merged, const QString& older, const QString& newer)
{
    const QString back = withoutChanges(merged, XQChangedTextNew);
    const QString forth = withoutChanges(merged, XQChangedTextOld);
    if (back != older)
        return ::testing::AssertionFailure() << "without the added text: \"" << back.toStdString() << "\"";
    if (forth != newer)
        return ::testing::AssertionFailure() << "without the removed text: \"" << forth.toStdString() << "\"";
    return ::testing::AssertionSuccess();
}

QVariant colorValue(const Color& color) { return QVariant::fromValue(color); }

} // namespace

TEST(TextComparison, AnEmptySideIsAllRemovedOrAllAdded)
{
    ScopedTemporaryFolder folder;
    const QString text = QStringLiteral("First line.\nSecond, and last");
    for (XQDiffType type : {XQDiffTypeParagraphs, XQDiffTypeWords, XQDiffType(7)}) {
        SCOPED_TRACE(type);
        AttributedString added = compare(QString(), text, type);
        EXPECT_EQ(changes(added, XQChangedTextNew), QStringList{text});
        EXPECT_EQ(changes(added, XQChangedTextOld), QStringList());
        AttributedString removed = compare(text, QString(), type);
        EXPECT_EQ(changes(removed, XQChangedTextOld), QStringList{text});
        EXPECT_EQ(changes(removed, XQChangedTextNew), QStringList());
    }
    EXPECT_EQ(compare(QString(), QString(), XQDiffTypeWords).length(), 0);
}

TEST(TextComparison, IdenticalTextsKeepOnlyTheBaseFontAndParagraphStyle)
{
    ScopedTemporaryFolder folder;
    const QString text = QStringLiteral("Same words.\nSame again.");
    AttributedString newer(text, {{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 14))}});
    ParagraphStyle centred;
    centred.setAlignment(TextAlignment(2));
    newer.addAttribute(ParagraphStyleAttributeName, QVariant::fromValue(centred), Range{0, 12});
    newer.addAttribute(ForegroundColorAttributeName, colorValue(Color(0, 1, 0)), Range{0, 4});
    newer.addAttribute(FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Courier"), 9)), Range{0, 3});
    const std::optional<AttributedString> merged =
        attributedStringShowingDifferencesFrom(newer, AttributedString(text), XQDiffTypeWords);
    ASSERT_TRUE(merged);
    EXPECT_EQ(merged->string(), text);
    // One run: the most used font and paragraph style, nothing else (not the colour, not the odd font).
    Range run;
    const Attributes attributes = merged->attributes(0, &run);
    EXPECT_EQ(run, (Range{0, text.size()}));
    EXPECT_EQ(attributes,
              (Attributes{{FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 14))},
                          {ParagraphStyleAttributeName, QVariant::fromValue(centred)}}));
    // A paragraph style on fewer characters than go without one is no base style.
    AttributedString mostlyPlain(text);
    mostlyPlain.addAttribute(ParagraphStyleAttributeName, QVariant::fromValue(centred), Range{0, 5});
    const std::optional<AttributedString> plain =
        attributedStringShowingDifferencesFrom(mostlyPlain, AttributedString(text), XQDiffTypeWords);
    ASSERT_TRUE(plain);
    EXPECT_TRUE(plain->attributes(0).isEmpty());
}

TEST(TextComparison, ByWordsOnlyTheChangedWordIsMarked)
{
    ScopedTemporaryFolder folder;
    const AttributedString merged = compare(QStringLiteral("The ship sailed at dawn, quietly."),
                                            QStringLiteral("The boat sailed at dawn, quietly."), XQDiffTypeWords);
    EXPECT_EQ(merged.string(), QStringLiteral("The shipboat sailed at dawn, quietly."));
    EXPECT_EQ(changes(merged, XQChangedTextOld), QStringList{QStringLiteral("ship")});
    EXPECT_EQ(changes(merged, XQChangedTextNew), QStringList{QStringLiteral("boat")});
    // Removed: struck through in the default red; added: underlined in the default blue.
    const Attributes removed = merged.attributes(4), added = merged.attributes(8), plain = merged.attributes(3);
    EXPECT_EQ(removed.value(StrikethroughStyleAttributeName).toInt(), 1);
    EXPECT_EQ(removed.value(ForegroundColorAttributeName).value<Color>(), XQDiffDefaultRemovedTextColor);
    EXPECT_EQ(removed.value(StrikethroughColorAttributeName).value<Color>(), XQDiffDefaultRemovedTextColor);
    EXPECT_FALSE(removed.contains(UnderlineStyleAttributeName));
    EXPECT_EQ(added.value(UnderlineStyleAttributeName).toInt(), 1);
    EXPECT_EQ(added.value(ForegroundColorAttributeName).value<Color>(), XQDiffDefaultAddedTextColor);
    EXPECT_EQ(added.value(UnderlineColorAttributeName).value<Color>(), XQDiffDefaultAddedTextColor);
    EXPECT_FALSE(added.contains(StrikethroughStyleAttributeName));
    EXPECT_FALSE(plain.contains(XQChangedTextAttributeName));
    EXPECT_FALSE(plain.contains(ForegroundColorAttributeName));
}

TEST(TextComparison, UnchangedParagraphsStayWholeWhenMoved)
{
    ScopedTemporaryFolder folder;
    const QString a = QStringLiteral("Alpha paragraph, first.\n"), b = QStringLiteral("Beta paragraph, second.\n"),
                  c = QStringLiteral("Gamma, with a change.\n"), c2 = QStringLiteral("Gamma, with one change.\n");
    const AttributedString merged = compare(a + b + c, b + a + c2, XQDiffTypeParagraphs | XQDiffTypeWords);
    EXPECT_TRUE(givesBothVersions(merged, a + b + c, b + a + c2));
    // The moved paragraph is removed and added whole, never in pieces; the changed one word by word.
    const QStringList removed = changes(merged, XQChangedTextOld), added = changes(merged, XQChangedTextNew);
    EXPECT_TRUE(removed.contains(a) || removed.contains(b)) << removed.join(u'|').toStdString();
    EXPECT_TRUE(added.contains(a) || added.contains(b)) << added.join(u'|').toStdString();
    EXPECT_TRUE(removed.contains(QStringLiteral("a"))) << removed.join(u'|').toStdString();
    EXPECT_TRUE(added.contains(QStringLiteral("one"))) << added.join(u'|').toStdString();
}

TEST(TextComparison, CallerColoursReplaceTheDefaultsSideBySide)
{
    ScopedTemporaryFolder folder;
    const Color yellow(1, 1, 0), grey(0.5, 0.5, 0.5), green(0, 0.6, 0);
    // Only an old background: removed text keeps its own colour, struck through on the background;
    // added text still gets the default blue and underline.
    AttributedString merged = compare(QStringLiteral("red cat"), QStringLiteral("red dog"), XQDiffTypeWords,
                                      {{XQOldTextBackgroundColor, colorValue(yellow)}});
    Attributes removed = merged.attributes(4), added = merged.attributes(7);
    ASSERT_EQ(removed.value(XQChangedTextAttributeName).toString(), XQChangedTextOld);
    EXPECT_EQ(removed.value(StrikethroughStyleAttributeName).toInt(), 1);
    EXPECT_EQ(removed.value(BackgroundColorAttributeName).value<Color>(), yellow);
    EXPECT_FALSE(removed.contains(ForegroundColorAttributeName));
    EXPECT_FALSE(removed.contains(StrikethroughColorAttributeName));
    ASSERT_EQ(added.value(XQChangedTextAttributeName).toString(), XQChangedTextNew);
    EXPECT_EQ(added.value(ForegroundColorAttributeName).value<Color>(), XQDiffDefaultAddedTextColor);
    EXPECT_EQ(added.value(UnderlineStyleAttributeName).toInt(), 1);

    // Only a new background: no foreground and so no underline on added text.
    merged = compare(QStringLiteral("red cat"), QStringLiteral("red dog"), XQDiffTypeWords,
                     {{XQNewTextBackgroundColor, colorValue(grey)}, {XQOldTextForegroundColor, colorValue(green)}});
    removed = merged.attributes(4);
    added = merged.attributes(7);
    EXPECT_EQ(removed.value(ForegroundColorAttributeName).value<Color>(), green);
    EXPECT_EQ(removed.value(StrikethroughColorAttributeName).value<Color>(), green);
    EXPECT_EQ(added.value(BackgroundColorAttributeName).value<Color>(), grey);
    EXPECT_FALSE(added.contains(UnderlineStyleAttributeName));
    EXPECT_FALSE(added.contains(ForegroundColorAttributeName));
    EXPECT_EQ(added.value(XQChangedTextAttributeName).toString(), XQChangedTextNew);
}

TEST(TextComparison, TextsTheToolOrTheMarkersWouldMisreadComeThroughIntact)
{
    ScopedTemporaryFolder folder;
    struct Case {
        const char* what;
        QString older, newer;
    };
    const Case cases[] = {
        // The tool prints a last line without line feed with one.
        {"no final line feed", QStringLiteral("same\nend"), QStringLiteral("same\nend")},
        {"final line feed added", QStringLiteral("one two"), QStringLiteral("one two\n")},
        // NUL makes the tool call the files binary.
        {"NUL", QString::fromUtf16(u"a\0b c", 5), QString::fromUtf16(u"a\0b d", 5)},
        // Texts that quote the markers keep them as text.
        {"markers quoted",
         QStringLiteral("see ") + XQDiffOldTextStartTag + QStringLiteral(" and ") + XQDiffChunkSeparatorString
             + QStringLiteral("end"),
         QStringLiteral("saw ") + XQDiffNewTextEndTag + XQDiffOldTextStartTag + QStringLiteral(" end\uFDD0")},
        {"CR LF", QStringLiteral("one\r\ntwo\r\n"), QStringLiteral("one\r\n2\r\n")},
    };
    for (const Case& c : cases) {
        for (XQDiffType type = 0; type < 8; ++type) {
            SCOPED_TRACE(std::string(c.what) + " type " + std::to_string(type));
            EXPECT_TRUE(givesBothVersions(compare(c.older, c.newer, type), c.older, c.newer));
        }
    }
    // A final line feed is a change of its own.
    EXPECT_EQ(
        changes(compare(QStringLiteral("one two"), QStringLiteral("one two\n"), XQDiffTypeWords), XQChangedTextNew),
        QStringList{QStringLiteral("\n")});
    // A lone surrogate cannot travel through UTF-8: it arrives as U+FFFD, and nothing else changes.
    const QString lone = QStringLiteral("x") + QChar(0xD800) + QStringLiteral(" y");
    EXPECT_EQ(compare(lone, lone, XQDiffTypeWords).string(), QStringLiteral("x\uFFFD y"));
}

TEST(TextComparison, TemporaryFilesAreUniqueAndAlwaysRemoved)
{
    ScopedTemporaryFolder folder;
    // A file already holding the first name is left alone; the comparison takes the next name.
    const QString existing = QDir(folder.path()).filePath(QStringLiteral("DiffTextOld.txt"));
    ASSERT_TRUE(writeFileAtomically(existing, "not ours"));
    EXPECT_TRUE(givesBothVersions(compare(QStringLiteral("a b"), QStringLiteral("a c"), XQDiffTypeWords),
                                  QStringLiteral("a b"), QStringLiteral("a c")));
    EXPECT_EQ(folder.entries(), QStringList{QStringLiteral("DiffTextOld.txt")});
    QFile file(existing);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("not ours"));
}

TEST(TextComparison, FailuresGiveTheirErrors)
{
    const AttributedString older(QStringLiteral("old")), newer(QStringLiteral("new"));
    {
        ScopedTemporaryFolder folder(QStringLiteral("/nonexistent/qly-no-such-folder"));
        Error error{QStringLiteral("unset"), 99, {}, {}};
        EXPECT_FALSE(attributedStringShowingDifferencesFrom(newer, older, XQDiffTypeWords, {}, &error));
        EXPECT_EQ(error.domain, QString());
        EXPECT_EQ(error.code, 0);
        EXPECT_EQ(error.localizedDescription, QStringLiteral("Temporary directory unavailable."));
        EXPECT_EQ(error.localizedRecoverySuggestion,
                  QStringLiteral("Could not access the temporary directory for the current user. In order to "
                                 "compare text, the temporary directory is required to store temporary .txt files."));
        // Without a place for the error the call still just fails.
        EXPECT_FALSE(attributedStringShowingDifferencesFrom(newer, older, XQDiffTypeWords));
    }
    {
        // A folder that exists but takes no files (even for the superuser): the write's own error.
        ScopedTemporaryFolder folder(QStringLiteral("/proc/self"));
        Error error;
        EXPECT_FALSE(attributedStringShowingDifferencesFrom(newer, older, XQDiffTypeWords, {}, &error));
        EXPECT_EQ(error.domain, XQFileErrorDomain);
        EXPECT_TRUE(error.localizedDescription.contains(QStringLiteral("DiffTextOld.txt")))
            << error.localizedDescription.toStdString();
    }
}

// Deleting the added stretches gives the older text and deleting the removed ones the newer, for
// random text pairs and every diff type.
class TextComparisonProperty : public ::testing::TestWithParam<XQDiffType> { };

TEST_P(TextComparisonProperty, DeletingEitherSideGivesTheOtherVersion)
{
    ScopedTemporaryFolder folder;
    RandomProse prose(1000 + GetParam());
    for (int i = 0; i < 400; ++i) {
        const auto [older, newer] = prose.pair();
        const AttributedString merged = compare(older, newer, GetParam());
        ASSERT_TRUE(givesBothVersions(merged, older, newer))
            << "older \"" << older.toStdString() << "\" newer \"" << newer.toStdString() << "\"";
    }
    EXPECT_EQ(folder.entries(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(EveryType, TextComparisonProperty, ::testing::Range(XQDiffType(0), XQDiffType(8)));

TEST(TextComparison, ComparisonsOnEightThreadsNeverMixTheirFiles)
{
    ScopedTemporaryFolder folder;
    constexpr int Threads = 8, Rounds = 12;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t) {
        threads.emplace_back([t, &failures] {
            RandomProse prose(500 + t);
            for (int round = 0; round < Rounds; ++round) {
                // Each thread's texts carry its own number, so a file of another thread would show.
                auto [older, newer] = prose.pair();
                older += QStringLiteral(" thread%1 round%2").arg(t).arg(round);
                newer += QStringLiteral(" thread%1 round%2 new").arg(t).arg(round);
                const std::optional<AttributedString> merged = attributedStringShowingDifferencesFrom(
                    AttributedString(newer), AttributedString(older), XQDiffTypeParagraphs | XQDiffTypeWords);
                if (!merged || withoutChanges(*merged, XQChangedTextNew) != older
                    || withoutChanges(*merged, XQChangedTextOld) != newer)
                    ++failures;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(folder.entries(), QStringList());
}
