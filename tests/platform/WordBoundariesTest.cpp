// Word selection and word stepping (doubleClickAtIndex, nextWordFromIndex) against
// QTextBoundaryFinder over the whole text: the answers must not depend on where the look-up window
// around the index starts, also inside long runs of regional indicators, combining sequences and ZWJ
// emoji sequences.
#include <gtest/gtest.h>

#include <QRandomGenerator>
#include <QTextBoundaryFinder>
#include <iostream>
#include <vector>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/AttributedString.h>

using namespace qly;

namespace {

/// The whole text's segments, for reference.
struct Segments {
    QString text;
    std::vector<qsizetype> b{0};

    explicit Segments(const QString& t) : text(t)
    {
        if (t.isEmpty())
            return;
        QTextBoundaryFinder finder(QTextBoundaryFinder::Word, t);
        for (qsizetype x = finder.toNextBoundary(); x > 0; x = finder.toNextBoundary())
            b.push_back(x);
        if (b.back() != t.size())
            b.push_back(t.size());
    }
    size_t at(qsizetype i) const { return size_t(std::upper_bound(b.begin(), b.end(), i) - b.begin()) - 1; }
    bool isWord(size_t s) const { return containsAlphanumeric(QStringView(text).mid(b[s], b[s + 1] - b[s])); }

    Range doubleClick(qsizetype i) const
    {
        if (text.isEmpty())
            return Range{0, 0};
        const size_t s = at(std::clamp<qsizetype>(i, 0, text.size() - 1));
        return Range{b[s], b[s + 1] - b[s]};
    }
    qsizetype next(qsizetype i, bool forward) const
    {
        const qsizetype n = text.size();
        if (forward) {
            if (i >= n)
                return n;
            for (size_t s = at(std::max<qsizetype>(i, 0)); s + 1 < b.size(); ++s)
                if (isWord(s))
                    return b[s + 1];
            return n;
        }
        if (i <= 0)
            return 0;
        for (size_t s = at(std::min(i, n) - 1) + 1; s-- > 0;)
            if (isWord(s))
                return b[s];
        return 0;
    }
};

int g_indexesChecked = 0;

::testing::AssertionResult sameEverywhere(const QString& t)
{
    const AttributedString s(t);
    const Segments ref(t);
    for (qsizetype i = -1; i <= t.size() + 1; ++i) {
        ++g_indexesChecked;
        if (s.doubleClickAtIndex(i) != ref.doubleClick(i))
            return ::testing::AssertionFailure()
                << "doubleClickAtIndex(" << i << ") = " << s.doubleClickAtIndex(i).location << "+"
                << s.doubleClickAtIndex(i).length << ", whole text says " << ref.doubleClick(i).location << "+"
                << ref.doubleClick(i).length;
        for (bool forward : {true, false}) {
            if (s.nextWordFromIndex(i, forward) != ref.next(i, forward))
                return ::testing::AssertionFailure()
                    << "nextWordFromIndex(" << i << ", " << forward << ") = " << s.nextWordFromIndex(i, forward)
                    << ", whole text says " << ref.next(i, forward);
        }
    }
    return ::testing::AssertionSuccess();
}

QString repeated(const QString& piece, int times)
{
    QString out;
    for (int i = 0; i < times; ++i)
        out += piece;
    return out;
}

} // namespace

TEST(WordBoundaries, DoubleClickInALongRunOfFlagsSelectsWholeFlags)
{
    const QString flag = QStringLiteral("\U0001F1EB\U0001F1F7"); // one flag: two regional indicators
    const AttributedString flags(repeated(flag, 40));
    EXPECT_EQ(flags.doubleClickAtIndex(81), (Range{80, 4}));
    for (qsizetype i = 0; i < flags.length(); ++i)
        EXPECT_EQ(flags.doubleClickAtIndex(i), (Range{i / 4 * 4, 4})) << "at " << i;
    EXPECT_TRUE(sameEverywhere(QStringLiteral("x ") + repeated(flag, 40) + QStringLiteral(" y")));
    EXPECT_TRUE(sameEverywhere(QStringLiteral("\U0001F1EB") + repeated(flag, 60))); // odd run
}

TEST(WordBoundaries, LongCombiningAndZwjSequencesAtWindowEdges)
{
    // Sequences longer than any first window, so the window edges fall inside them.
    const QString family = QStringLiteral("\U0001F469\u200D\U0001F469\u200D\U0001F467"); // one ZWJ sequence
    EXPECT_TRUE(sameEverywhere(QStringLiteral("ab ") + QStringLiteral("e") + repeated(QStringLiteral("\u0301"), 150)
                               + QStringLiteral(" cd")));
    EXPECT_TRUE(sameEverywhere(QStringLiteral("go ") + repeated(QStringLiteral("\u0301"), 130) + QStringLiteral("x")));
    EXPECT_TRUE(sameEverywhere(QStringLiteral("hi ") + repeated(family, 30) + QStringLiteral(" there")));
    EXPECT_TRUE(sameEverywhere(repeated(QStringLiteral("\U0001F44B\U0001F3FD"), 50) + QStringLiteral(" end")));
    EXPECT_TRUE(sameEverywhere(repeated(QStringLiteral("3.5"), 60)));
    EXPECT_TRUE(sameEverywhere(repeated(QStringLiteral("\r\n"), 70) + QStringLiteral("word")));
}

TEST(WordBoundaries, RandomTextsAgreeWithTheWholeText)
{
    static const QStringList pieces{
        QStringLiteral("word"),       QStringLiteral("a"),          QStringLiteral(" "),
        QStringLiteral("\u0301"),     QStringLiteral("\u0629"),     QStringLiteral("\U0001F1EB"),
        QStringLiteral("\U0001F1F7"), QStringLiteral("\u200D"),     QStringLiteral("\U0001F469"),
        QStringLiteral("\U0001F3FD"), QStringLiteral("\U0001D400"), QStringLiteral("\r\n"),
        QStringLiteral("\n"),         QStringLiteral("."),          QStringLiteral("3"),
        QStringLiteral("'"),          QStringLiteral("-"),          QStringLiteral("\u30AB"),
        QStringLiteral(","),          QStringLiteral("(")};
    QRandomGenerator rng(5150);
    for (int round = 0; round < 150; ++round) {
        QString t;
        // Long runs of one piece now and then, so that runs straddle any window edge.
        const int n = int(rng.bounded(120));
        for (int i = 0; i < n; ++i) {
            const QString& piece = pieces.at(int(rng.bounded(int(pieces.size()))));
            t += rng.bounded(10) == 0 ? repeated(piece, 20 + int(rng.bounded(60))) : piece;
        }
        ASSERT_TRUE(sameEverywhere(t)) << "round " << round;
    }
    std::cout << "[ CHECKS   ] " << g_indexesChecked << " indexes checked so far (selection and both steps)"
              << std::endl;
}
