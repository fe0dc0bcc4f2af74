// Word counting and independent word boundaries, against QTextBoundaryFinder over the whole text.
#include <gtest/gtest.h>

#include <QRandomGenerator>
#include <QTextBoundaryFinder>
#include <iostream>
#include <vector>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/WordCounting.h>

using namespace qly;

namespace {

/// Pieces that exercise the word-boundary rules: combining marks, regional indicators, ZWJ emoji
/// sequences, emoji modifiers, surrogate pairs, CR LF, mid-word punctuation, numbers, Katakana,
/// Hebrew with quotes, format characters and separating punctuation.
const QStringList& trickyPieces()
{
    static const QStringList pieces{
        QStringLiteral("a"),          QStringLiteral("Z"),          QStringLiteral("word"),
        QStringLiteral(" "),          QStringLiteral("  "),         QStringLiteral("\u0301"),
        QStringLiteral("\u0308"),     QStringLiteral("\u0629"),     QStringLiteral("\U0001F1EB"),
        QStringLiteral("\U0001F1F7"), QStringLiteral("\u200D"),     QStringLiteral("\U0001F469"),
        QStringLiteral("\U0001F3FD"), QStringLiteral("\U0001D400"), QStringLiteral("\U00020000"),
        QStringLiteral("\r\n"),       QStringLiteral("\r"),         QStringLiteral("\n"),
        QStringLiteral("."),          QStringLiteral(","),          QStringLiteral("'"),
        QStringLiteral("\""),         QStringLiteral(":"),          QStringLiteral("3"),
        QStringLiteral("\u30AB"),     QStringLiteral("\u05D0"),     QStringLiteral("_"),
        QStringLiteral("\u00AD"),     QStringLiteral("-"),          QStringLiteral("("),
        QStringLiteral("/"),          QStringLiteral("!"),          QStringLiteral("\u4E2D"),
        QStringLiteral("\u6587"),     QStringLiteral("\u3002"),     QStringLiteral("\u3072"),
        QStringLiteral("\u00A0"),     QStringLiteral("\t"),         QStringLiteral("\u2029")};
    return pieces;
}

QString trickyText(QRandomGenerator& rng, int pieces)
{
    // Every character that may stand next to an independent boundary, now and then.
    static const QString separating = QStringLiteral(" !#$%&()*+-/<=>?@[\\]^`{|}~\u3001\u3002\u4E00\u9FFF\u3400");
    QString t;
    for (int i = 0; i < pieces; ++i) {
        if (rng.bounded(4) == 0)
            t += separating.at(int(rng.bounded(int(separating.size()))));
        else
            t += trickyPieces().at(int(rng.bounded(int(trickyPieces().size()))));
    }
    return t;
}

std::vector<qsizetype> boundaries(QStringView text)
{
    std::vector<qsizetype> out{0};
    if (text.isEmpty())
        return out;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Word, text.data(), text.size());
    for (qsizetype b = finder.toNextBoundary(); b > 0; b = finder.toNextBoundary())
        out.push_back(b);
    if (out.back() != text.size())
        out.push_back(text.size());
    return out;
}

} // namespace

// The claim the chunked and running counts rest on: the segments on either side of an independent
// boundary, each taken alone, are the segments of the whole text.
TEST(WordCounting, IndependentBoundariesSplitTheSegmentationExactly)
{
    QRandomGenerator rng(31);
    int checked = 0;
    for (int round = 0; round < 800; ++round) {
        const QString t = trickyText(rng, 1 + int(rng.bounded(40)));
        const std::vector<qsizetype> whole = boundaries(t);
        for (qsizetype p = 0; p <= t.size(); ++p) {
            if (!isIndependentWordBoundary(t, p))
                continue;
            ++checked;
            std::vector<qsizetype> split = boundaries(QStringView(t).first(p));
            for (qsizetype b : boundaries(QStringView(t).mid(p)))
                if (b > 0 || p == 0)
                    split.push_back(p + b);
            split.erase(std::unique(split.begin(), split.end()), split.end());
            ASSERT_EQ(split, whole) << "cut at " << p << " of " << t.toStdString();
        }
    }
    EXPECT_GT(checked, 2000);
    std::cout << "[ CHECKS   ] " << checked << " independent boundaries checked" << std::endl;
}

TEST(WordCounting, IndependentBoundariesAroundTrickyNeighbours)
{
    EXPECT_TRUE(isIndependentWordBoundary(u"ab cd", 3)); // after a space, before a letter
    EXPECT_TRUE(isIndependentWordBoundary(u"ab cd", 2)); // before a space, after a letter
    EXPECT_FALSE(isIndependentWordBoundary(u"ab \u0301d", 3)); // a combining mark joins the space
    EXPECT_FALSE(isIndependentWordBoundary(u"ab  d", 3)); // between two spaces
    EXPECT_FALSE(isIndependentWordBoundary(u"a\r\nb", 2)); // between CR and LF
    EXPECT_TRUE(isIndependentWordBoundary(u"a\r\nb", 3));
    EXPECT_FALSE(isIndependentWordBoundary(u"3.5", 1)); // a full stop looks across itself
    EXPECT_FALSE(isIndependentWordBoundary(u"ab", 1));
    EXPECT_TRUE(isIndependentWordBoundary(u"\u4E2D\u6587", 1)); // ideographs stand alone
    EXPECT_FALSE(isIndependentWordBoundary(u"\u4E2D\u0301", 1));
    EXPECT_TRUE(isIndependentWordBoundary(u"ab", 0));
    EXPECT_TRUE(isIndependentWordBoundary(u"ab", 2));
    const QString flags = QStringLiteral("\U0001F1EB\U0001F1F7\U0001F1EB\U0001F1F7");
    for (qsizetype p = 1; p < flags.size(); ++p)
        EXPECT_FALSE(isIndependentWordBoundary(flags, p)) << p;

    const AttributedString text(QStringLiteral("one (two) \u0301three"));
    EXPECT_EQ(independentWordBoundaryAtOrBefore(text, 7), 5); // after "("
    EXPECT_EQ(independentWordBoundaryAtOrAfter(text, 6), 8); // before ")"
    EXPECT_EQ(independentWordBoundaryAtOrAfter(text, 10), text.length()); // the mark holds on to the space
    EXPECT_EQ(independentWordBoundaryAtOrBefore(text, 0), 0);
}

// Counting a text in chunks (a long paragraph is cut somewhere) gives the count of one pass.
TEST(WordCounting, ChunkedCountsEqualOnePass)
{
    QRandomGenerator rng(32);
    QString t;
    // One paragraph of about 700,000 units: longer than a block, with no line break to cut at.
    while (t.size() < 700'000)
        t += rng.bounded(3) ? QStringLiteral("w\u0301rd ") : QStringLiteral("\U0001F1EB\U0001F1F7 \u0301x-y ");
    const qsizetype onePass = [&] {
        qsizetype words = 0;
        const std::vector<qsizetype> b = boundaries(t);
        for (size_t i = 0; i + 1 < b.size(); ++i)
            words += containsAlphanumeric(QStringView(t).mid(b[i], b[i + 1] - b[i])) ? 1 : 0;
        return words;
    }();
    EXPECT_EQ(wordCount(QStringView(t)), onePass);
    EXPECT_EQ(wordCount(AttributedString(t), Range{0, t.size()}), onePass);

    // One word longer than a block, with combining marks: no place to cut it, so it is read whole.
    QString word;
    while (word.size() < 600'001)
        word += QStringLiteral("a\u0301");
    const AttributedString longWord(QStringLiteral("x ") + word + QStringLiteral(" y"));
    EXPECT_EQ(wordCount(longWord, Range{0, longWord.length()}), 3);
    EXPECT_EQ(wordCount(longWord, Range{1, longWord.length() - 1}), 2);
}
