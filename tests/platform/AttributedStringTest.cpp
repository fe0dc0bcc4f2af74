// The text model against a trivially correct reference: a QString plus one attribute dictionary per
// character. Tiny leaves make splits and merges happen in small texts.
#include <gtest/gtest.h>
#include <optional>

#include <QRandomGenerator>
#include <algorithm>
#include <tuple>
#include <vector>

#include <qlyappkit/platform/strings/CharacterSets.h>
#include <qlyappkit/platform/text/AttributedString.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/text/ReplacedPositions.h>
#include <qlyappkit/platform/text/WordCounting.h>

using namespace qly;

namespace {

struct Reference {
    QString text;
    std::vector<Attributes> attrs; // one per character

    Attributes forReplacing(Range r) const
    {
        if (text.isEmpty())
            return {};
        qsizetype at = r.length > 0 ? r.location : (r.location > 0 ? r.location - 1 : 0);
        return attrs[size_t(std::min<qsizetype>(at, text.size() - 1))];
    }
    void replace(Range r, const QString& s, const std::vector<Attributes>& a)
    {
        text.replace(r.location, r.length, s);
        attrs.erase(attrs.begin() + r.location, attrs.begin() + r.end());
        attrs.insert(attrs.begin() + r.location, a.begin(), a.end());
    }
};

class LeafCapacity {
public:
    explicit LeafCapacity(int units) { AttributedString::setLeafCapacityForTesting(units); }
    ~LeafCapacity() { AttributedString::setLeafCapacityForTesting(0); }
};

void expectSame(const AttributedString& s, const Reference& ref, const char* step)
{
    ASSERT_TRUE(s.checkInvariants()) << step;
    ASSERT_EQ(s.length(), ref.text.size()) << step;
    ASSERT_EQ(s.string(), ref.text) << step;
    for (qsizetype i = 0; i < ref.text.size();) {
        Range eff;
        const Attributes a = s.attributes(i, &eff);
        ASSERT_EQ(a, ref.attrs[size_t(i)]) << step << " at " << i;
        ASSERT_TRUE(eff.contains(i)) << step;
        // The effective range is exactly the maximal stretch of equal attributes.
        ASSERT_TRUE(eff.location == 0 || ref.attrs[size_t(eff.location - 1)] != a) << step << " at " << i;
        ASSERT_TRUE(eff.end() == ref.text.size() || ref.attrs[size_t(eff.end())] != a) << step << " at " << i;
        for (qsizetype j = eff.location; j < eff.end(); ++j)
            ASSERT_EQ(ref.attrs[size_t(j)], a) << step << " at " << j;
        i = eff.end();
    }
}

QString randomText(QRandomGenerator& rng, int maxLen)
{
    static const QString alphabet = QStringLiteral("abc de\nfgh. \r\x2029xyz,\x00E9");
    QString s;
    const int n = rng.bounded(maxLen + 1);
    for (int i = 0; i < n; ++i)
        s.append(alphabet.at(rng.bounded(int(alphabet.size()))));
    return s;
}

Attributes randomAttributes(QRandomGenerator& rng)
{
    Attributes a;
    if (rng.bounded(3) == 0)
        a.insert(UnderlineStyleAttributeName, rng.bounded(2));
    if (rng.bounded(2) == 0)
        a.insert(ToolTipAttributeName, QString(QChar(u'p' + rng.bounded(3))));
    return a;
}

} // namespace

namespace {

void randomEditsMatchReference(int capacity)
{
    SCOPED_TRACE(capacity);
    LeafCapacity leaves(capacity);
    QRandomGenerator rng(20261122 + capacity);
    AttributedString s;
    Reference ref;
    qsizetype maxLength = 0;
    for (int step = 0; step < 6000; ++step) {
        const qsizetype n = ref.text.size();
        const qsizetype a = n ? rng.bounded(int(n + 1)) : 0;
        // Mostly short ranges, so the text grows to many leaves; sometimes long ones.
        const qsizetype b =
            rng.bounded(5) == 0 ? (n ? rng.bounded(int(n + 1)) : 0) : std::min<qsizetype>(n, a + rng.bounded(6));
        const Range r = Range::fromBounds(std::min(a, b), std::max(a, b));
        const int op = rng.bounded(11);
        std::optional<AttributedString> before = s; // copies must not see later edits
        const QString beforeText = ref.text;
        if (op <= 2) {
            const QString t = randomText(rng, op == 0 ? 40 : 3);
            const Attributes attrs = ref.forReplacing(r);
            s.replaceCharacters(r, t);
            ref.replace(r, t, std::vector<Attributes>(size_t(t.size()), attrs));
        } else if (op == 3) {
            s.deleteCharacters(r);
            ref.replace(r, QString(), {});
        } else if (op == 4) {
            const Attributes attrs = randomAttributes(rng);
            s.setAttributes(attrs, r);
            for (qsizetype i = r.location; i < r.end(); ++i)
                ref.attrs[size_t(i)] = attrs;
        } else if (op == 5 && rng.bounded(2) == 0) {
            s.addAttribute(KernAttributeName, 1.5, r);
            for (qsizetype i = r.location; i < r.end(); ++i)
                ref.attrs[size_t(i)].insert(KernAttributeName, 1.5);
        } else if (op == 5) {
            // Several marks at once, overlapping or not, some past the end: the later one wins.
            std::vector<AttributedString::Mark> marks;
            for (qsizetype count = rng.bounded(6); count > 0; --count) {
                const qsizetype from = n ? rng.bounded(int(n + 1)) : 0;
                marks.push_back({Range{from, rng.bounded(12)}, rng.bounded(3) * 0.5});
            }
            s.addAttributeInRanges(KernAttributeName, marks);
            for (const AttributedString::Mark& m : marks) {
                for (qsizetype i = m.range.location; i < std::min(m.range.end(), n); ++i)
                    ref.attrs[size_t(i)].insert(KernAttributeName, m.value);
            }
        } else if (op == 6) {
            s.removeAttribute(ToolTipAttributeName, r);
            for (qsizetype i = r.location; i < r.end(); ++i)
                ref.attrs[size_t(i)].remove(ToolTipAttributeName);
        } else if (op == 7) {
            // Insert an attributed piece of the text itself (exercises shared leaves and copies).
            const qsizetype at = n ? rng.bounded(int(n + 1)) : 0;
            const AttributedString piece = s.attributedSubstring(r);
            std::vector<Attributes> pieceAttrs(ref.attrs.begin() + r.location, ref.attrs.begin() + r.end());
            const QString pieceText = ref.text.mid(r.location, r.length);
            s.insert(piece, at);
            ref.replace(Range{at, 0}, pieceText, pieceAttrs);
        } else if (op == 9) {
            // A batch: a few ranges in order, some touching, some insertions, replaced at once.
            std::vector<AttributedString::Replacement> batch;
            std::vector<std::tuple<Range, QString, Attributes>> made;
            // From the start or from anywhere, so that the text's first and last leaves both see edits.
            // Deletions alone half the time, some long enough to empty a leaf or most of one.
            const qsizetype first = rng.bounded(2) == 0 ? 0 : rng.bounded(int(n + 1));
            const bool deletionsOnly = rng.bounded(2) == 0;
            for (qsizetype from = first, count = rng.bounded(5); count > 0 && from <= n; --count) {
                const qsizetype start = from + rng.bounded(int(std::min<qsizetype>(n - from, 12) + 1));
                const qsizetype end = std::min(n, start + rng.bounded(rng.bounded(4) == 0 ? 80 : 4));
                const QString t = deletionsOnly ? QString() : randomText(rng, 4);
                const Attributes attrs = randomAttributes(rng);
                batch.push_back({Range::fromBounds(start, end), AttributedString(t, attrs)});
                made.emplace_back(Range::fromBounds(start, end), t, attrs);
                from = end;
            }
            const QString oldText = ref.text;
            const int how = rng.bounded(3);
            if (how == 0) {
                s = s.replacingRanges(batch);
            } else if (how == 1) {
                s.replaceRanges(batch); // beside a copy, which keeps its text
            } else {
                // Alone, with its string assembled: edited where it lies.
                before.reset();
                (void)s.string();
                s.replaceRanges(batch);
            }
            // Every character outside the replaced ranges is found where its position lands; a
            // position inside one lands where the text after it does.
            const ReplacedPositions landed(batch, oldText.size());
            const QString newText = s.string();
            for (qsizetype p = 0; p < oldText.size(); ++p) {
                const auto holder =
                    std::find_if(made.begin(), made.end(), [&](const auto& m) { return std::get<0>(m).contains(p); });
                if (holder == made.end())
                    ASSERT_EQ(newText.at(landed.map(p)), oldText.at(p)) << "step " << step << " at " << p;
                else
                    ASSERT_EQ(landed.map(p), landed.mapBoundary(std::get<0>(*holder).end())) << "step " << step;
            }
            for (auto it = made.rbegin(); it != made.rend(); ++it) {
                const auto& [range, t, attrs] = *it;
                ref.replace(range, t, std::vector<Attributes>(size_t(t.size()), attrs));
            }
        } else if (op == 10) {
            // Both walks report the maximal stretches the reference has, clipped to the range.
            std::vector<Range> runs, toolTipRuns;
            s.enumerateAttributes(r, [&](const Attributes& attrs, Range run) {
                EXPECT_EQ(attrs, ref.attrs[size_t(run.location)]);
                runs.push_back(run);
                return true;
            });
            s.enumerateAttribute(ToolTipAttributeName, r, [&](const QVariant& value, Range run) {
                EXPECT_EQ(value, ref.attrs[size_t(run.location)].value(ToolTipAttributeName));
                toolTipRuns.push_back(run);
                return true;
            });
            std::vector<Range> expected, expectedToolTips;
            for (qsizetype i = r.location; i < r.end(); ++i) {
                if (i == r.location || ref.attrs[size_t(i)] != ref.attrs[size_t(i - 1)])
                    expected.push_back(Range{i, 0});
                ++expected.back().length;
                if (i == r.location
                    || ref.attrs[size_t(i)].value(ToolTipAttributeName)
                        != ref.attrs[size_t(i - 1)].value(ToolTipAttributeName))
                    expectedToolTips.push_back(Range{i, 0});
                ++expectedToolTips.back().length;
            }
            ASSERT_EQ(runs, expected) << "step " << step;
            ASSERT_EQ(toolTipRuns, expectedToolTips) << "step " << step;
        } else {
            const AttributedString sub = s.attributedSubstring(r);
            Reference subRef{ref.text.mid(r.location, r.length),
                             std::vector<Attributes>(ref.attrs.begin() + r.location, ref.attrs.begin() + r.end())};
            expectSame(sub, subRef, "substring");
        }
        expectSame(s, ref, "edit");
        if (before) {
            ASSERT_EQ(before->string(), beforeText) << "a copy changed with the original at step " << step;
        }
        maxLength = std::max(maxLength, ref.text.size());
        if (::testing::Test::HasFatalFailure())
            return;
    }
    EXPECT_GT(maxLength, 200) << "the edits never grew the text past a few leaves";
}

} // namespace

TEST(AttributedString, RandomEditsMatchReference)
{
    // Tiny leaves split and merge all the time; larger ones leave room for short leaves to be joined.
    for (const int capacity : {8, 64}) {
        randomEditsMatchReference(capacity);
        if (HasFatalFailure())
            return;
    }
}

TEST(AttributedString, MarksShareTheDictionariesTheyMake)
{
    // Notes in a body text: marking each must not give each its own dictionary.
    const Attributes body{{ToolTipAttributeName, QStringLiteral("body")}};
    const Attributes note{{ToolTipAttributeName, QStringLiteral("note")}};
    AttributedString text;
    std::vector<AttributedString::Mark> marks;
    for (int i = 0; i < 50; ++i) {
        text.append(QStringLiteral("Some words of the body "), body);
        marks.push_back({Range{text.length(), 4}, i % 2 == 0 ? QVariant(true) : QVariant(false)});
        text.append(QStringLiteral("note"), note);
    }
    text.addAttributeInRanges(UnderlineStyleAttributeName, marks);
    ASSERT_TRUE(text.checkInvariants());
    const Attributes first = text.attributes(marks[0].range.location);
    EXPECT_EQ(first.value(UnderlineStyleAttributeName), QVariant(true));
    EXPECT_EQ(first.value(ToolTipAttributeName), QStringLiteral("note"));
    for (size_t i = 0; i < marks.size(); ++i) {
        const Attributes a = text.attributes(marks[i].range.location);
        EXPECT_EQ(a.value(UnderlineStyleAttributeName), marks[i].value) << i;
        // Equal values on a shared dictionary make one dictionary again.
        EXPECT_TRUE(a.isSharedWith(text.attributes(marks[i % 2].range.location))) << i;
        EXPECT_FALSE(text.attributes(marks[i].range.location - 1).contains(UnderlineStyleAttributeName)) << i;
    }
}

TEST(AttributedString, InsertionTakesAttributesOfNeighbour)
{
    const Attributes bold{{FontAttributeName, QStringLiteral("bold")}};
    const Attributes plain{{KernAttributeName, 0.0}};
    AttributedString s(QStringLiteral("ab"), bold);
    s.append(QStringLiteral("cd"), plain);
    s.replaceCharacters(Range{2, 0}, QStringLiteral("X")); // after 'b': bold
    EXPECT_EQ(s.attributes(2), bold);
    s.replaceCharacters(Range{0, 0}, QStringLiteral("Y")); // at 0: the following char
    EXPECT_EQ(s.attributes(0), bold);
    s.replaceCharacters(Range{4, 2}, QStringLiteral("ZZZ")); // replacing "cd": first replaced char
    EXPECT_EQ(s.substring(Range{4, 3}), QStringLiteral("ZZZ"));
    EXPECT_EQ(s.attributes(5), plain);
    AttributedString empty;
    empty.replaceCharacters(Range{0, 0}, QStringLiteral("q"));
    EXPECT_TRUE(empty.attributes(0).isEmpty());
    EXPECT_EQ(s.runCount(), 2);
}

TEST(AttributedString, LongestRangesAndAttributeWalk)
{
    LeafCapacity tiny(6);
    AttributedString s;
    // "aaaa" link+u, "bbbb" link, "cccc" none: the link runs over 8 characters across leaves.
    s.append(QStringLiteral("aaaa"), {{LinkAttributeName, QStringLiteral("x")}, {UnderlineStyleAttributeName, 1}});
    s.append(QStringLiteral("bbbb"), {{LinkAttributeName, QStringLiteral("x")}});
    s.append(QStringLiteral("cccc"), {});
    Range longest;
    EXPECT_EQ(s.attribute(LinkAttributeName, 5, &longest, Range{0, 12}).toString(), QStringLiteral("x"));
    EXPECT_EQ(longest, (Range{0, 8}));
    s.attribute(LinkAttributeName, 5, &longest, Range{2, 4});
    EXPECT_EQ(longest, (Range{2, 4}));
    std::vector<std::pair<QString, Range>> walk;
    s.enumerateAttribute(LinkAttributeName, Range{1, 10}, [&](const QVariant& v, Range r) {
        walk.emplace_back(v.toString(), r);
        return true;
    });
    ASSERT_EQ(walk.size(), 2u);
    EXPECT_EQ(walk[0], (std::pair<QString, Range>{QStringLiteral("x"), Range{1, 7}}));
    EXPECT_EQ(walk[1], (std::pair<QString, Range>{QString(), Range{8, 3}}));
}

TEST(AttributedString, EqualityComparesCharactersAndRuns)
{
    AttributedString a(QStringLiteral("hello"), {{KernAttributeName, 1.0}});
    AttributedString b(QStringLiteral("hel"), {{KernAttributeName, 1.0}});
    b.append(QStringLiteral("lo"), {{KernAttributeName, 1.0}});
    EXPECT_TRUE(a == b);
    b.addAttribute(ToolTipAttributeName, QStringLiteral("t"), Range{4, 1});
    EXPECT_FALSE(a == b);
    EXPECT_FALSE(a == AttributedString(QStringLiteral("hellO"), {{KernAttributeName, 1.0}}));
}

TEST(AttributedString, ParagraphAndLineRanges)
{
    // Paragraphs: "a\n", "b\r\n", "c\r", "d\u2029", "e\u2028f"
    AttributedString s(QStringLiteral("a\nb\r\nc\rd\u2029e\u2028f"));
    EXPECT_EQ(s.paragraphRange(Range{0, 0}), (Range{0, 2}));
    EXPECT_EQ(s.paragraphRange(Range{1, 0}), (Range{0, 2}));
    EXPECT_EQ(s.paragraphRange(Range{3, 0}), (Range{2, 3}));
    EXPECT_EQ(s.paragraphRange(Range{4, 0}), (Range{2, 3})); // the LF of CR LF
    EXPECT_EQ(s.paragraphRange(Range{5, 0}), (Range{5, 2}));
    EXPECT_EQ(s.paragraphRange(Range{7, 0}), (Range{7, 2}));
    EXPECT_EQ(s.paragraphRange(Range{10, 0}), (Range{9, 3})); // U+2028 does not end a paragraph
    EXPECT_EQ(s.paragraphRange(Range{12, 0}), (Range{9, 3})); // at the end: the last paragraph
    EXPECT_EQ(s.paragraphRange(Range{1, 4}), (Range{0, 5})); // spans two paragraphs
    EXPECT_EQ(s.lineRange(Range{10, 0}), (Range{9, 2}));
    EXPECT_EQ(s.lineRange(Range{11, 0}), (Range{11, 1}));
    EXPECT_EQ(AttributedString().paragraphRange(Range{0, 0}), (Range{0, 0}));
}

TEST(AttributedString, WordBoundaries)
{
    AttributedString s(QStringLiteral("Hello,  world's end. 3.5"));
    EXPECT_EQ(s.doubleClickAtIndex(1), (Range{0, 5}));
    EXPECT_EQ(s.doubleClickAtIndex(5), (Range{5, 1})); // the comma alone
    EXPECT_EQ(s.doubleClickAtIndex(6), (Range{6, 2})); // a run of spaces
    EXPECT_EQ(s.doubleClickAtIndex(9), (Range{8, 7})); // "world's" is one word
    EXPECT_EQ(s.doubleClickAtIndex(22), (Range{21, 3})); // "3.5"
    EXPECT_EQ(s.nextWordFromIndex(0, true), 5);
    EXPECT_EQ(s.nextWordFromIndex(5, true), 15); // from the comma: end of "world's"
    EXPECT_EQ(s.nextWordFromIndex(15, true), 19);
    EXPECT_EQ(s.nextWordFromIndex(24, true), 24);
    EXPECT_EQ(s.nextWordFromIndex(15, false), 8); // start of the word before
    EXPECT_EQ(s.nextWordFromIndex(8, false), 0);
    EXPECT_EQ(s.nextWordFromIndex(10, false), 8);
    EXPECT_EQ(s.nextWordFromIndex(0, false), 0);
    EXPECT_EQ(AttributedString(QStringLiteral(" ... ")).nextWordFromIndex(0, true), 5);

    // Words far longer than the search window still come out whole.
    const QString longWord(3000, u'x');
    AttributedString big(QStringLiteral("ab ") + longWord + QStringLiteral(" cd"));
    EXPECT_EQ(big.doubleClickAtIndex(1500), (Range{3, 3000}));
    EXPECT_EQ(big.nextWordFromIndex(2, true), 3003);
    EXPECT_EQ(big.nextWordFromIndex(3004, false), 3);
}

TEST(AttributedString, WordCountMatchesSteppingThroughWords)
{
    QRandomGenerator rng(7);
    static const QStringList pieces{QStringLiteral("word"),         QStringLiteral(" "),
                                    QStringLiteral("--"),           QStringLiteral("can't"),
                                    QStringLiteral("\n"),           QStringLiteral("3.14"),
                                    QStringLiteral("..."),          QStringLiteral("\u00E9t\u00E9"),
                                    QStringLiteral("\u4E2D\u6587"), QStringLiteral("\t"),
                                    QStringLiteral("e-mail")};
    for (int round = 0; round < 40; ++round) {
        QString t;
        const int n = rng.bounded(200);
        for (int i = 0; i < n; ++i)
            t += pieces.at(rng.bounded(int(pieces.size())));
        AttributedString s(t);
        qsizetype stepped = 0;
        for (qsizetype i = 0; i < s.length();) {
            const qsizetype next = s.nextWordFromIndex(i, true);
            ASSERT_GT(next, i);
            if (containsAlphanumeric(QStringView(t).mid(i, next - i)))
                ++stepped;
            i = next;
        }
        EXPECT_EQ(wordCount(s, Range{0, s.length()}), stepped) << t.toStdString();
        EXPECT_EQ(wordCount(QStringView(t)), stepped);
    }
    EXPECT_EQ(wordCount(AttributedString(QStringLiteral("one two")), Range{0, 99}), 0); // past the end
}

TEST(AttributedString, WalksSeeTheTextAsItWasWhenTheCallbackEditsIt)
{
    LeafCapacity tiny(6);
    AttributedString s;
    s.append(QStringLiteral("aaaa"), {{LinkAttributeName, QStringLiteral("x")}});
    s.append(QStringLiteral("bbbbbb"), {});
    s.append(QStringLiteral("cc"), {{LinkAttributeName, QStringLiteral("y")}});
    const QString before = s.string();
    std::vector<Range> seen;
    s.enumerateAttribute(LinkAttributeName, Range{0, s.length()}, [&](const QVariant&, Range run) {
        seen.push_back(run);
        // Deleting and marking ahead of the walk moves nothing it reports.
        s.deleteCharacters(Range{0, 1});
        s.addAttribute(KernAttributeName, 2.0, Range{0, s.length()});
        return true;
    });
    EXPECT_EQ(seen, (std::vector<Range>{{0, 4}, {4, 6}, {10, 2}}));
    EXPECT_EQ(s.string(), before.mid(3));
    EXPECT_TRUE(s.checkInvariants());

    // A walk that stops is not called again.
    int calls = 0;
    s.enumerateAttributes(Range{0, s.length()}, [&](const Attributes&, Range) { return ++calls < 1; });
    EXPECT_EQ(calls, 1);
}

TEST(AttributedString, ARangeLandsWithoutTextInsertedAtItsEnds)
{
    const AttributedString s(QStringLiteral("abcdef"));
    const std::vector<AttributedString::Replacement> batch{{Range{2, 0}, AttributedString(QStringLiteral("XY"))},
                                                           {Range{3, 1}, AttributedString()},
                                                           {Range{6, 0}, AttributedString(QStringLiteral("Z"))}};
    const AttributedString out = s.replacingRanges(batch);
    ASSERT_EQ(out.string(), QStringLiteral("abXYcefZ"));
    const ReplacedPositions landed(batch, s.length());
    EXPECT_EQ(out.substring(landed.map(Range{2, 4})), QStringLiteral("cef"));
    EXPECT_EQ(landed.map(2), 4); // the 'c' comes after the text inserted before it
    EXPECT_EQ(landed.mapBoundary(2), 2); // a boundary there stays before that text
    EXPECT_EQ(landed.map(3), 5); // the deleted 'd': where the text after it went
    EXPECT_EQ(landed.map(Range{6, 0}), (Range{7, 0}));
}
