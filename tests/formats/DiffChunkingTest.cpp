// Cutting texts into clauses, words and paragraphs, and preparing one side against the other.
#include "formats/DiffTestSupport.h"

#include <qlyappkit/formats/comparison/DiffChunking.h>
#include <qlyappkit/formats/comparison/DiffPreparation.h>
#include <qlyappkit/formats/comparison/DiffPreparation_p.h>

using namespace qly;
using namespace qly::difftest;

namespace {

// The chunks of a separated text, as a list (an empty last piece after the final separator dropped).
QStringList chunksOf(const QString& separated)
{
    QStringList chunks = separated.split(XQDiffChunkSeparatorString);
    if (!chunks.isEmpty() && chunks.constLast().isEmpty())
        chunks.removeLast();
    return chunks;
}

// The segments of a walk by double-click selection, the definition the word chunks must follow.
QStringList doubleClickWalk(const QString& text)
{
    const AttributedString s(text);
    QStringList segments;
    for (qsizetype i = 0; i < s.length();) {
        const Range r = s.doubleClickAtIndex(i);
        EXPECT_EQ(r.location, i) << "double click did not start at " << i;
        if (r.length <= 0)
            break;
        segments += s.substring(r);
        i = r.end();
    }
    return segments;
}

} // namespace

TEST(DiffChunking, ClausesEndJustAfterEachPunctuationCharacter)
{
    struct Case {
        QString text;
        QStringList clauses;
    };
    const Case cases[] = {
        {QString(), {}},
        {QStringLiteral("no punctuation here"), {QStringLiteral("no punctuation here")}},
        {QStringLiteral("Hello, world. Bye"),
         {QStringLiteral("Hello,"), QStringLiteral(" world."), QStringLiteral(" Bye")}},
        {QStringLiteral("Ends."), {QStringLiteral("Ends.")}},
        {QStringLiteral("..!"), {QStringLiteral("."), QStringLiteral("."), QStringLiteral("!")}},
        // Dashes, quotes and connector punctuation are punctuation; a symbol is not.
        {QStringLiteral("a\u2014b x_y 1+2"),
         {QStringLiteral("a\u2014"), QStringLiteral("b x_"), QStringLiteral("y 1+2")}},
        // A punctuation character outside the basic plane ends its clause after both halves.
        {QStringLiteral("x\U00010100y"), {QStringLiteral("x\U00010100"), QStringLiteral("y")}},
        {QStringLiteral("line one\nline, two\n"), {QStringLiteral("line one\nline,"), QStringLiteral(" two\n")}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        EXPECT_EQ(clausesForDiff(c.text), c.clauses);
        QString separated;
        for (const QString& clause : c.clauses)
            separated += clause + XQDiffChunkSeparatorString;
        EXPECT_EQ(stringWithClausesSeparatedForDiff(c.text), separated);
    }
}

TEST(DiffChunking, ParagraphsKeepTheirOwnLineBreaks)
{
    EXPECT_EQ(paragraphsForDiff(QString()), QStringList());
    EXPECT_EQ(paragraphsForDiff(QStringLiteral("one\ntwo\r\nthree\rfour\u2029five")),
              (QStringList{QStringLiteral("one\n"), QStringLiteral("two\r\n"), QStringLiteral("three\r"),
                           QStringLiteral("four\u2029"), QStringLiteral("five")}));
    EXPECT_EQ(paragraphsForDiff(QStringLiteral("\n\nlast\n")),
              (QStringList{QStringLiteral("\n"), QStringLiteral("\n"), QStringLiteral("last\n")}));
}

TEST(DiffChunking, WordsAreTheSegmentsADoubleClickSelects)
{
    // Fixed expectations for the cases that matter most to a reader of the comparison.
    EXPECT_EQ(chunksOf(stringWithWordsSeparatedForDiff(QStringLiteral("Don't stop, 3.14 now\r\n"))),
              (QStringList{QStringLiteral("Don't"), QStringLiteral(" "), QStringLiteral("stop"), QStringLiteral(","),
                           QStringLiteral(" "), QStringLiteral("3.14"), QStringLiteral(" "), QStringLiteral("now"),
                           QStringLiteral("\r\n")}));
    EXPECT_EQ(stringWithWordsSeparatedForDiff(QString()), QString());

    // And over random texts, the very segments a walk by double clicks gives.
    RandomProse prose(7);
    for (int i = 0; i < 300; ++i) {
        const QString text = prose.tokens(80).join(QString());
        SCOPED_TRACE(text.toStdString());
        ASSERT_EQ(chunksOf(stringWithWordsSeparatedForDiff(text)), doubleClickWalk(text));
    }
}

TEST(DiffPreparation, EachTypeCutsTheTextIntoItsUnits)
{
    const QString sep = XQDiffChunkSeparatorString;
    const QString text = QStringLiteral("Kept paragraph.\nShared clause, new words.\n");
    const QString other = QStringLiteral("Kept paragraph.\nShared clause, old words.\n");
    struct Case {
        XQDiffType type;
        QString expected;
    };
    const QString words1 = QStringLiteral("Kept") + sep + QStringLiteral(" ") + sep + QStringLiteral("paragraph") + sep
        + QStringLiteral(".") + sep + QStringLiteral("\n") + sep;
    const QString words2 = QStringLiteral("Shared") + sep + QStringLiteral(" ") + sep + QStringLiteral("clause") + sep
        + QStringLiteral(",") + sep + QStringLiteral(" ") + sep + QStringLiteral("new") + sep + QStringLiteral(" ")
        + sep + QStringLiteral("words") + sep + QStringLiteral(".") + sep + QStringLiteral("\n") + sep;
    const QString clauseWords2 = QStringLiteral("Shared clause,") + sep + QStringLiteral(" ") + sep
        + QStringLiteral("new") + sep + QStringLiteral(" ") + sep + QStringLiteral("words") + sep + QStringLiteral(".")
        + sep + QStringLiteral("\n") + sep;
    const QString clauses1 = QStringLiteral("Kept paragraph.") + sep + QStringLiteral("\n") + sep;
    const QString clauses2 =
        QStringLiteral("Shared clause,") + sep + QStringLiteral(" new words.") + sep + QStringLiteral("\n") + sep;
    const QString kept = QStringLiteral("Kept paragraph.\n");
    const Case cases[] = {
        {0, text},
        {XQDiffTypeParagraphs, text},
        {XQDiffTypeWords, words1 + words2},
        // Clauses alone cut the whole text: the line break opens the next clause.
        {XQDiffTypeClauses,
         QStringLiteral("Kept paragraph.") + sep + QStringLiteral("\nShared clause,") + sep
             + QStringLiteral(" new words.") + sep + QStringLiteral("\n") + sep},
        // The shared paragraph stays whole; the changed one is cut.
        {XQDiffTypeParagraphs | XQDiffTypeWords, kept + words2},
        {XQDiffTypeParagraphs | XQDiffTypeClauses, kept + clauses2},
        // A clause the other text has stays whole; the rest is cut into words.
        {XQDiffTypeParagraphs | XQDiffTypeClauses | XQDiffTypeWords, kept + clauseWords2},
        // Without the paragraphs bit even the shared paragraph is cut; its clause is shared too.
        {XQDiffTypeClauses | XQDiffTypeWords, clauses1 + clauseWords2},
        // Unknown bits are ignored rather than losing the text.
        {8, text},
        {8 | XQDiffTypeWords, words1 + words2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.type);
        EXPECT_EQ(stringSeparatedForDiffByComparisonToString(text, other, c.type), c.expected);
    }
    // No cutting at all when either side is empty.
    EXPECT_EQ(stringSeparatedForDiffByComparisonToString(text, QString(), XQDiffTypeWords), text);
    EXPECT_EQ(stringSeparatedForDiffByComparisonToString(QString(), other, XQDiffTypeWords), QString());
}

TEST(DiffPreparation, SeparatorsRejoinToTheTextAndTheFileFormIsItsUTF8)
{
    RandomProse prose(11);
    for (int i = 0; i < 200; ++i) {
        const auto [older, newer] = prose.pair();
        for (XQDiffType type = 0; type < 8; ++type) {
            SCOPED_TRACE(type);
            const QString prepared = stringSeparatedForDiffByComparisonToString(newer, older, type);
            ASSERT_EQ(QString(prepared).remove(XQDiffChunkSeparatorString), newer);
            ASSERT_EQ(diffprep::utf8SeparatedForDiff(newer, older, type), prepared.toUtf8());
        }
    }
}
