#include <qlyappkit/text/storages/XQTextStorage.h>

#include <QUrl>
#include <iostream>

#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/text/storages/XQWordCountingTextStorage.h>

#include "StorageTestSupport.h"

using namespace qly;
using namespace qly::testing;

namespace {

QVariant commentValue(const XQCommentPtr& c) { return variantFromComment(c); }

const Attributes kBold{
    {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Helvetica"), 12, BoldFontMask))}};

} // namespace

TEST(XQWordCountingTextStorage, CountsAsTheTextIsTyped)
{
    XQWordCountingTextStorage storage(QStringLiteral("The cat sat"));
    EXPECT_EQ(storage.wordCount(), 3);
    StatisticsRecorder stats(static_cast<const TextStorage*>(&storage));

    // A letter at the end of a word: same count, one more character.
    storage.replaceCharacters(Range{7, 0}, QStringLiteral("s"));
    EXPECT_EQ(storage.string(), QStringLiteral("The cats sat"));
    EXPECT_EQ(stats.lastInfo.value(QStringLiteral("ChangedWordsCount")).toLongLong(), 0);
    EXPECT_EQ(stats.lastInfo.value(QStringLiteral("ChangedCharactersCount")).toLongLong(), 1);
    // A space inside a word splits it.
    storage.replaceCharacters(Range{2, 0}, QStringLiteral(" "));
    EXPECT_EQ(storage.wordCount(), 4);
    EXPECT_EQ(stats.lastInfo.value(QStringLiteral("ChangedWordsCount")).toLongLong(), 1);
    // Deleting the space joins them again; deleting a word gives negative changes.
    storage.replaceCharacters(Range{2, 1}, QString());
    EXPECT_EQ(stats.lastInfo.value(QStringLiteral("ChangedWordsCount")).toLongLong(), -1);
    EXPECT_EQ(stats.lastInfo.value(QStringLiteral("ChangedCharactersCount")).toLongLong(), -1);
    storage.replaceCharacters(Range{0, 4}, QString());
    EXPECT_EQ(storage.string(), QStringLiteral("cats sat"));
    EXPECT_EQ(stats.lastInfo.value(QStringLiteral("ChangedWordsCount")).toLongLong(), -1);
    EXPECT_EQ(stats.lastInfo.value(QStringLiteral("ChangedCharactersCount")).toLongLong(), -4);
    EXPECT_EQ(storage.wordCount(), 2);
    EXPECT_EQ(stats.posts, 4);
    EXPECT_EQ(stats.words, 2 - 3);
    EXPECT_EQ(stats.characters, storage.length() - 11);

    // Pure attribute changes post no statistics.
    storage.setAttributes(kBold, Range{0, 4});
    EXPECT_EQ(stats.posts, 4);
}

TEST(XQWordCountingTextStorage, WhatCountsAsAWord)
{
    XQWordCountingTextStorage storage(QStringLiteral("--- ... well-known 3.5 -- a---b, x"));
    // Hyphen and full-stop runs are no words; "well", "known", "3.5", "a", "b" and "x" are.
    EXPECT_EQ(storage.wordCount(), 6);
    EXPECT_EQ(storage.wordCountForRange(Range{0, 7}), 0);
    EXPECT_EQ(storage.wordCountForRange(Range{8, 4}), 1); // "well"
    EXPECT_EQ(storage.wordCountForRange(Range{9, 2}), 1); // a piece of a word counts once
    EXPECT_EQ(storage.wordCountForRange(Range{0, 0}), 0);
    EXPECT_EQ(storage.wordCountForRange(Range{30, 10}), 0); // runs past the end

    EXPECT_EQ(storage.wordRangeForCharRange(Range{10, 1}), (Range{8, 4}));
    EXPECT_EQ(storage.wordRangeForCharRange(Range{10, 0}), (Range{8, 4}));
    XQWordCountingTextStorage empty;
    EXPECT_EQ(empty.wordRangeForCharRange(Range{0, 0}), (Range{0, 0}));
    empty.replaceCharacters(Range{0, 0}, QStringLiteral("first words"));
    EXPECT_EQ(empty.wordCount(), 2);
}

TEST(XQWordCountingTextStorage, InitialisersAndRecountOnNegativeTotal)
{
    const AttributedString text(QStringLiteral("one two three four"));
    EXPECT_EQ(XQWordCountingTextStorage(text).wordCount(), 4);
    EXPECT_EQ(XQWordCountingTextStorage(QStringLiteral("a b"), kBold).wordCount(), 2);
    EXPECT_EQ(XQTextStorage(QStringLiteral("a b"), kBold).wordCount(), 2);
    EXPECT_EQ(XQTextStorage(text).wordCount(), 4);
    EXPECT_EQ(XQWordCountingTextStorage().wordCount(), 0);

    // A trusted count is kept as given...
    XQWordCountingTextStorage trusted(text, 100);
    EXPECT_EQ(trusted.wordCount(), 100);
    trusted.replaceCharacters(Range{0, 0}, QStringLiteral("zero "));
    EXPECT_EQ(trusted.wordCount(), 101);
    // ...and one that goes below zero is counted again.
    XQTextStorage low(text, 1);
    StatisticsRecorder stats(static_cast<const TextStorage*>(&low));
    low.replaceCharacters(Range{0, 8}, QString());
    EXPECT_EQ(low.wordCount(), 2);
    EXPECT_EQ(stats.lastInfo.value(QStringLiteral("ChangedWordsCount")).toLongLong(), 1);
}

TEST(XQWordCountingTextStorage, BothNotificationNamesReachEitherObserver)
{
    XQWordCountingTextStorage counting(QStringLiteral("a"));
    XQTextStorage full(QStringLiteral("a"));
    StatisticsRecorder byCountingName(nullptr, XQWordCountingTextStorageStatisticsDidChangeNotification);
    StatisticsRecorder byStorageName(nullptr, XQTextStorageStatisticsDidChangeNotification);
    counting.replaceCharacters(Range{1, 0}, QStringLiteral(" b"));
    full.replaceCharacters(Range{1, 0}, QStringLiteral(" b c"));
    EXPECT_EQ(byCountingName.posts, 2);
    EXPECT_EQ(byStorageName.posts, 2);
    EXPECT_EQ(byCountingName.words, 3);
    EXPECT_EQ(byStorageName.characters, 6);
}

TEST(XQTextStorage, CommentAttributesBringLinkAndToolTip)
{
    XQTextStorage storage(QStringLiteral("A long sentence with a comment."));
    storage.addAttribute(LinkAttributeName, QUrl(QStringLiteral("https://example.com")), Range{0, 1});
    const XQCommentPtr comment = storage.addComment(AttributedString(QStringLiteral("note")), Range{7, 8});
    ASSERT_TRUE(comment);
    EXPECT_EQ(storage.comments(), std::vector<XQCommentPtr>{comment});
    EXPECT_EQ(commentFromVariant(storage.attribute(LinkAttributeName, 10)), comment);
    EXPECT_EQ(storage.attribute(ToolTipAttributeName, 10).toString(), QStringLiteral("Comment: note"));
    EXPECT_EQ(storage.rangeOfComment(comment), (Range{7, 8}));
    EXPECT_TRUE(commentLinksConsistent(storage.attributedString()));

    const XQCommentPtr footnote = storage.addFootnoteComment(AttributedString(QStringLiteral("fn")), Range{23, 7});
    EXPECT_TRUE(footnote->isFootnote());
    EXPECT_EQ(storage.attribute(ToolTipAttributeName, 25).toString(), QStringLiteral("Footnote: fn"));
    EXPECT_EQ(storage.comments(), (std::vector<XQCommentPtr>{comment, footnote}));

    // Removing the comment attribute takes the comment's link and tool tip, not the other link.
    storage.removeAttribute(XQCommentAttributeName, Range{0, storage.length()});
    EXPECT_FALSE(storage.attribute(LinkAttributeName, 10).isValid());
    EXPECT_FALSE(storage.attribute(ToolTipAttributeName, 10).isValid());
    EXPECT_EQ(storage.attribute(LinkAttributeName, 0), QVariant(QUrl(QStringLiteral("https://example.com"))));
    EXPECT_TRUE(storage.comments().empty());
    EXPECT_EQ(storage.rangeOfComment(comment), Range::notFound());

    // A stale comment link set without its comment is cleaned up when the edit is processed.
    storage.setAttributes({{LinkAttributeName, commentValue(comment)}, {ToolTipAttributeName, QStringLiteral("x")}},
                          Range{2, 4});
    EXPECT_TRUE(commentLinksConsistent(storage.attributedString()));
}

TEST(XQTextStorage, UniqueCommentRangesDecideTheRebuild)
{
    //                      0123456789012345678901234
    XQTextStorage storage(QStringLiteral("aaaaa bbbbb ccccc ddddd"));
    const XQCommentPtr b = storage.addComment(AttributedString(QStringLiteral("b")), Range{6, 5});
    const XQCommentPtr c = storage.addComment(AttributedString(QStringLiteral("c")), Range{12, 5});
    EXPECT_FALSE(storage.rangeContainsUniqueCommentAttributes(Range{6, 0}));
    EXPECT_FALSE(storage.rangeContainsUniqueCommentAttributes(Range{0, 5})); // no comment at all
    EXPECT_TRUE(storage.rangeContainsUniqueCommentAttributes(Range{5, 7})); // all of b, inside
    EXPECT_TRUE(storage.rangeContainsUniqueCommentAttributes(Range{6, 5})); // exactly b
    EXPECT_FALSE(storage.rangeContainsUniqueCommentAttributes(Range{7, 3})); // inside b, b around it
    EXPECT_FALSE(storage.rangeContainsUniqueCommentAttributes(Range{6, 3})); // b's start, b continues after
    EXPECT_FALSE(storage.rangeContainsUniqueCommentAttributes(Range{8, 3})); // b's end, b before
    EXPECT_FALSE(storage.rangeContainsUniqueCommentAttributes(Range{8, 4})); // b continues before
    EXPECT_FALSE(storage.rangeContainsUniqueCommentAttributes(Range{3, 5})); // b continues after
    EXPECT_FALSE(storage.rangeContainsUniqueCommentAttributes(Range{9, 5})); // b's tail and c's head: both go on
    EXPECT_TRUE(storage.rangeContainsUniqueCommentAttributes(Range{11, 6})); // all of c up to its end
    EXPECT_TRUE(storage.rangeContainsUniqueCommentAttributes(Range{6, 6})); // b from its start, then a space

    // Deleting a whole anchor asks for a rebuild, which happens when the batch is processed.
    storage.beginEditing();
    storage.replaceCharacters(Range{12, 6}, QString());
    EXPECT_TRUE(storage.commentsNeedRebuilding());
    storage.endEditing();
    EXPECT_FALSE(storage.commentsNeedRebuilding());
    EXPECT_EQ(storage.comments(), std::vector<XQCommentPtr>{b});

    // Deleting part of an anchor that goes on does not.
    storage.beginEditing();
    storage.replaceCharacters(Range{7, 2}, QString());
    EXPECT_FALSE(storage.commentsNeedRebuilding());
    storage.endEditing();
    EXPECT_EQ(storage.comments(), std::vector<XQCommentPtr>{b});
    EXPECT_EQ(storage.rangeOfComment(b), (Range{6, 3}));
}

TEST(XQTextStorage, PastedCopyOfACommentedPassageBecomesASecondComment)
{
    XQTextStorage storage(QStringLiteral("Before the marked words after."));
    int listChanges = 0;
    ScopedObserver observer(XQTextStorageCommentsDidChangeNotification, static_cast<const TextStorage*>(&storage),
                            [&](const Notification&) { ++listChanges; });
    const XQCommentPtr original = storage.addComment(AttributedString(QStringLiteral("why?")), Range{11, 12});
    EXPECT_EQ(listChanges, 1);
    const AttributedString passage = storage.attributedSubstring(Range{7, 17});
    storage.replaceCharacters(Range{storage.length(), 0}, passage);
    ASSERT_EQ(storage.comments().size(), 2u);
    EXPECT_EQ(storage.comments()[0], original);
    const XQCommentPtr second = storage.comments()[1];
    EXPECT_NE(second, original);
    EXPECT_NE(second->uniqueID(), original->uniqueID());
    EXPECT_EQ(second->string(), QStringLiteral("why?"));
    EXPECT_EQ(storage.rangeOfComment(second), (Range{30 + 4, 12}));
    EXPECT_TRUE(commentLinksConsistent(storage.attributedString()));
    EXPECT_EQ(scanComments(storage.attributedString()), storage.comments());

    // A copy passed in at creation is split the same way.
    AttributedString twice = storage.attributedSubstring(Range{0, 23});
    twice.append(passage);
    XQTextStorage fromText(twice);
    ASSERT_EQ(fromText.comments().size(), 2u);
    EXPECT_EQ(fromText.comments()[0], original);
    EXPECT_NE(fromText.comments()[1], original);
}

TEST(XQTextStorage, CommentOperations)
{
    XQTextStorage storage(QStringLiteral("one two three four five"));
    const XQCommentPtr two = storage.addComment(AttributedString(QStringLiteral("2")), Range{4, 3});
    const XQCommentPtr four = storage.addComment(AttributedString(QStringLiteral("4")), Range{14, 4});
    EXPECT_EQ(storage.comments(), (std::vector<XQCommentPtr>{two, four}));

    // New text: a copy (new ID) over the given range.
    storage.setCommentText(AttributedString(QStringLiteral("two!")), Range{4, 3});
    ASSERT_EQ(storage.comments().size(), 2u);
    const XQCommentPtr renamed = storage.comments()[0];
    EXPECT_NE(renamed, two);
    EXPECT_NE(renamed->uniqueID(), two->uniqueID());
    EXPECT_EQ(renamed->string(), QStringLiteral("two!"));
    EXPECT_EQ(storage.attribute(ToolTipAttributeName, 5).toString(), QStringLiteral("Comment: two!"));
    storage.setCommentText(AttributedString(QStringLiteral("none")), Range{0, 3}); // no comment there
    storage.setCommentText(AttributedString(QStringLiteral("none")), Range{4, 0}); // empty range
    EXPECT_EQ(storage.comments()[0], renamed);

    // Removing meets whole runs, also beyond the range.
    storage.removeCommentsAtRange(Range{16, 1});
    EXPECT_EQ(storage.comments(), std::vector<XQCommentPtr>{renamed});
    EXPECT_FALSE(storage.attribute(XQCommentAttributeName, 14).isValid());
    EXPECT_FALSE(storage.attribute(LinkAttributeName, 17).isValid());
    storage.removeCommentsAtRange(Range{5, 0});
    EXPECT_TRUE(storage.comments().empty());
    EXPECT_TRUE(commentLinksConsistent(storage.attributedString()));
}

TEST(XQTextStorage, ParagraphAttributesCoverWholeParagraphs)
{
    XQTextStorage storage(QStringLiteral("first paragraph\nsecond one\nthird"));
    storage.addAttribute(XQKeepWithNextAttributeName, true, Range{16, 3});
    EXPECT_EQ(storage.attribute(XQKeepWithNextAttributeName, 26), QVariant(true)); // spread to the break
    EXPECT_FALSE(storage.attribute(XQKeepWithNextAttributeName, 15).isValid());
    EXPECT_FALSE(storage.attribute(XQKeepWithNextAttributeName, 27).isValid());
    // Set on a later character only: the first character decides, so it goes.
    storage.addAttribute(XQKeepWithNextAttributeName, true, Range{30, 2});
    EXPECT_FALSE(storage.attribute(XQKeepWithNextAttributeName, 30).isValid());

    storage.addAttribute(XQParagraphStyleIDAttributeName, QStringLiteral("Body"), Range{0, 1});
    EXPECT_EQ(storage.attribute(XQParagraphStyleIDAttributeName, 14).toString(), QStringLiteral("Body"));
    // Joining two paragraphs: the first one's values take over the joined paragraph.
    storage.replaceCharacters(Range{15, 1}, QString());
    const AttributedString text = storage.attributedString();
    EXPECT_TRUE(paragraphUniform(text, XQKeepWithNextAttributeName));
    EXPECT_TRUE(paragraphUniform(text, XQParagraphStyleIDAttributeName));
    EXPECT_EQ(text.attribute(XQParagraphStyleIDAttributeName, 20).toString(), QStringLiteral("Body"));
    EXPECT_FALSE(text.attribute(XQKeepWithNextAttributeName, 20).isValid());
}

TEST(XQTextStorage, AggregateMembershipIsACounter)
{
    XQTextStorage storage;
    EXPECT_FALSE(storage.isAggregateTextStorageComponent());
    storage.addToAggregateTextStorage();
    storage.addToAggregateTextStorage();
    storage.removeFromAggregateTextStorage();
    EXPECT_TRUE(storage.isAggregateTextStorageComponent());
    storage.removeFromAggregateTextStorage();
    EXPECT_FALSE(storage.isAggregateTextStorageComponent());
}

// Random edits against full recounts and fresh scans, with tiny leaves so chunk edges are crossed.
TEST(XQTextStorage, RandomEditingKeepsCountsAndCommentsRight)
{
    LeafCapacityGuard tinyLeaves(16);
    QRandomGenerator rng(20240611);
    XQTextStorage storage(proseText(rng, 300));
    StatisticsRecorder stats(static_cast<const TextStorage*>(&storage));
    const qsizetype initialWords = storage.wordCount();
    const qsizetype initialLength = storage.length();
    ASSERT_EQ(initialWords, fullWordCount(storage.attributedString()));
    for (int step = 0; step < 1500; ++step) {
        const qsizetype n = storage.length();
        const qsizetype a = n ? qsizetype(rng.bounded(int(n + 1))) : 0;
        const qsizetype len = std::min<qsizetype>(n - a, rng.bounded(12));
        const Range range{a, len};
        const bool batched = rng.bounded(8) == 0;
        if (batched)
            storage.beginEditing();
        switch (rng.bounded(10)) {
        case 0:
        case 1:
        case 2:
            storage.replaceCharacters(Range{a, 0}, randomSnippet(rng, 6));
            break;
        case 3:
            storage.replaceCharacters(range, QString());
            break;
        case 4:
            storage.replaceCharacters(range, randomSnippet(rng, 4));
            break;
        case 5:
            if (len)
                storage.addComment(AttributedString(randomSnippet(rng, 5)), range);
            break;
        case 6: {
            // Paste a copy of another passage.
            const qsizetype from = n ? qsizetype(rng.bounded(int(n))) : 0;
            const AttributedString copy = storage.attributedSubstring(Range{from, std::min<qsizetype>(n - from, 30)});
            storage.replaceCharacters(range, copy);
            break;
        }
        case 7:
            storage.setAttributes(rng.bounded(2) ? kBold : Attributes{}, range);
            break;
        case 8:
            if (rng.bounded(2))
                storage.addAttribute(XQKeepWithNextAttributeName, true, range);
            else
                storage.addAttribute(XQParagraphStyleIDAttributeName, QStringLiteral("S%1").arg(rng.bounded(3)), range);
            break;
        case 9:
            if (rng.bounded(2))
                storage.removeCommentsAtRange(range);
            else
                storage.removeAttribute(XQCommentAttributeName, range);
            break;
        }
        if (batched)
            storage.endEditing();
        const AttributedString text = storage.attributedString();
        ASSERT_EQ(storage.wordCount(), fullWordCount(text)) << "step " << step << ": " << qPrintable(text.string());
        ASSERT_EQ(storage.comments(), scanComments(text)) << "step " << step;
        ASSERT_TRUE(commentLinksConsistent(text)) << "step " << step;
        ASSERT_TRUE(paragraphUniform(text, XQKeepWithNextAttributeName)) << "step " << step;
        ASSERT_TRUE(paragraphUniform(text, XQParagraphStyleIDAttributeName)) << "step " << step;
        ASSERT_TRUE(text.checkInvariants());
    }
    EXPECT_EQ(initialWords + stats.words, storage.wordCount());
    EXPECT_EQ(initialLength + stats.characters, storage.length());
}

TEST(XQWordCountingTextStorage, AnEditJustOutsideAWordStillCountsRight)
{
    XQWordCountingTextStorage storage(QStringLiteral("\u0301\u0629"));
    EXPECT_EQ(storage.wordCount(), 2);
    // "Z" takes the combining mark, and the mark no longer stands apart from the letter after it.
    storage.replaceCharacters(Range{0, 0}, QStringLiteral("Z"));
    EXPECT_EQ(fullWordCount(storage.attributedString()), 1);
    EXPECT_EQ(storage.wordCount(), 1);
}

namespace {

/// Text that exercises word boundaries at an edit's edges: combining marks, surrogate pairs (regional
/// indicators, emoji with modifiers and ZWJ, mathematical letters), CR LF, numbers with full stops.
QString trickySnippet(QRandomGenerator& rng, int maxPieces)
{
    static const QStringList pieces{
        QStringLiteral("a"),          QStringLiteral("word"),       QStringLiteral(" "),
        QStringLiteral("\u0301"),     QStringLiteral("\u0629"),     QStringLiteral("\U0001F1EB"),
        QStringLiteral("\U0001F1F7"), QStringLiteral("\u200D"),     QStringLiteral("\U0001F469"),
        QStringLiteral("\U0001F3FD"), QStringLiteral("\U0001D400"), QStringLiteral("\r\n"),
        QStringLiteral("\r"),         QStringLiteral("\n"),         QStringLiteral("."),
        QStringLiteral("3"),          QStringLiteral("'"),          QStringLiteral("-"),
        QStringLiteral("\u30AB"),     QStringLiteral("Z")};
    QString s;
    const int n = 1 + int(rng.bounded(maxPieces));
    for (int i = 0; i < n; ++i)
        s += pieces.at(int(rng.bounded(int(pieces.size()))));
    return s;
}

} // namespace

TEST(XQWordCountingTextStorage, RunningCountEqualsFullRecountAfterEveryEdit)
{
    LeafCapacityGuard tinyLeaves(16);
    QRandomGenerator rng(909);
    XQTextStorage storage(trickySnippet(rng, 40));
    int checks = 0;
    for (int step = 0; step < 4000; ++step) {
        const qsizetype n = storage.length();
        if (n > 400)
            storage.replaceCharacters(Range{0, n / 2}, QString());
        const qsizetype at = qsizetype(rng.bounded(int(storage.length() + 1)));
        const qsizetype len = std::min<qsizetype>(storage.length() - at, rng.bounded(rng.bounded(4) ? 3 : 12));
        // Surrogate pairs are usually kept whole, as an editor does, but not always.
        Range r{at, len};
        const QString s = storage.string();
        if (rng.bounded(8)) {
            if (r.location > 0 && r.location < s.size() && s[r.location].isLowSurrogate())
                --r.location, ++r.length;
            if (r.end() > 0 && r.end() < s.size() && s[r.end()].isLowSurrogate())
                ++r.length;
        }
        storage.replaceCharacters(r, rng.bounded(4) ? trickySnippet(rng, 3) : QString());
        ++checks;
        ASSERT_EQ(storage.wordCount(), fullWordCount(storage.attributedString()))
            << "step " << step << " after replacing " << r.location << "+" << r.length << ": \""
            << storage.string().toStdString() << "\"";
    }
    std::cout << "[ CHECKS   ] " << checks << " running counts checked" << std::endl;
}
