#include <gtest/gtest.h>

#include <QUrl>
#include <functional>
#include <initializer_list>
#include <limits>
#include <random>
#include <utility>

#include <qlyappkit/platform/strings/EscapeParsing.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/text/editing/AttributedStringEditing.h>

using namespace qly;

namespace {

const QString Tag = QStringLiteral("tag");
const QString Marker = QStringLiteral("<$x>");

QString s(const char16_t* text) { return QString::fromUtf16(text); }

Attributes tag(int n) { return Attributes{{Tag, n}}; }

AttributedString build(std::initializer_list<std::pair<QString, Attributes>> runs)
{
    AttributedString out;
    for (const auto& [text, attributes] : runs)
        out.append(text, attributes);
    return out;
}

/// One character per text unit: the unit's tag number, or '-' when it has none.
QString tags(const AttributedString& text)
{
    QString out;
    for (qsizetype i = 0; i < text.length(); ++i) {
        const QVariant value = text.attribute(Tag, i);
        out += value.isValid() ? QString::number(value.toInt()) : QStringLiteral("-");
    }
    return out;
}

QString tags(const MutableAttributedString& text) { return tags(text.attributedString()); }

/// Records how it is edited: batches, edits outside a batch, and how often the whole text is asked for.
class RecordingText : public MutableAttributedString {
public:
    using MutableAttributedString::MutableAttributedString;
    using MutableAttributedString::replaceCharacters;

    QString string() const override
    {
        ++stringCalls;
        return MutableAttributedString::string();
    }
    void replaceCharacters(Range range, const QString& text) override
    {
        ++edits;
        editsOutsideBatch += depth == 0;
        MutableAttributedString::replaceCharacters(range, text);
    }
    void setAttributes(const Attributes& attributes, Range range) override
    {
        editsOutsideBatch += depth == 0;
        MutableAttributedString::setAttributes(attributes, range);
    }
    void beginEditing() override { batches += depth++ == 0; }
    void endEditing() override { --depth; }

    void resetCounts() { stringCalls = edits = editsOutsideBatch = batches = 0; }

    mutable int stringCalls = 0;
    int edits = 0;
    int editsOutsideBatch = 0;
    int batches = 0;
    int depth = 0;
};

// ---- a trivially correct model of the replace-all loop: edits one QString and searches it again
// after every edit, so the tracked offsets and neighbourhoods of the real code are checked against it.

enum class Action { Replace, Skip, RemoveEscape };
using Decide = std::function<Action(const QString& current, Range match)>;

qsizetype modelReplace(QString& text, const QString& target, const QString& replacement, unsigned options, Range range,
                       const Decide& decide)
{
    const bool backwards = options & BackwardsSearch;
    Range remaining = range;
    qsizetype count = 0;
    while (remaining.length > 0) {
        const Range m = rangeOfString(text, target, options, remaining);
        if (m.isNotFound())
            break;
        const Action action = decide ? decide(text, m) : Action::Replace;
        qsizetype end = remaining.end();
        qsizetype resume = m.end();
        qsizetype before = m.location;
        if (action == Action::Replace) {
            text.replace(m.location, m.length, replacement);
            end += replacement.size() - m.length;
            resume = m.location + replacement.size();
            ++count;
        } else if (action == Action::RemoveEscape) {
            text.remove(m.location - 1, 1);
            --end;
            --resume;
            --before;
        }
        remaining = backwards ? Range::fromBounds(remaining.location, std::max(remaining.location, before))
                              : Range::fromBounds(resume, end);
    }
    return count;
}

Action modelEscape(const QString& current, Range m, bool removeEscapes)
{
    if (m.location > 0 && current.at(m.location - 1) == u'\\')
        return removeEscapes ? Action::RemoveEscape : Action::Skip;
    return Action::Replace;
}

Action modelWholeWord(const QString& current, Range m)
{
    return AttributedString(current).doubleClickAtIndex(m.location) == m ? Action::Replace : Action::Skip;
}

QString randomText(std::mt19937& rng, const QStringList& pieces, int maxPieces)
{
    QString out;
    const int n = std::uniform_int_distribution<int>(0, maxPieces)(rng);
    for (int i = 0; i < n; ++i)
        out += pieces.at(std::uniform_int_distribution<int>(0, int(pieces.size()) - 1)(rng));
    return out;
}

} // namespace

TEST(AttributedStringEditing, TrimmingKeepsTheAttributesOfTheKeptCharacters)
{
    const AttributedString text = build({{s(u" \t"), tag(1)}, {s(u"ab c"), tag(2)}, {s(u"d \n\u2029"), tag(3)}});
    const AttributedString both = attributedStringByTrimmingWhitespace(text);
    EXPECT_EQ(both.string(), s(u"ab cd"));
    EXPECT_EQ(tags(both), s(u"22223"));
    const AttributedString trailing = attributedStringByTrimmingTrailingWhitespace(text);
    EXPECT_EQ(trailing.string(), s(u" \tab cd"));
    EXPECT_EQ(tags(trailing), s(u"1122223"));

    EXPECT_TRUE(attributedStringByTrimmingWhitespace(build({{s(u" \n\u00a0 "), tag(1)}})).isEmpty());
    EXPECT_TRUE(attributedStringByTrimmingTrailingWhitespace(build({{s(u"\t\r\n"), tag(1)}})).isEmpty());
    EXPECT_TRUE(attributedStringByTrimmingWhitespace(AttributedString()).isEmpty());
    EXPECT_EQ(attributedStringByTrimmingCharactersInSet(AttributedString(s(u"..a.b..")), isPunctuation).string(),
              s(u"a.b"));
    // Sets see whole code points, at both ends.
    const CharacterSet emoji = [](char32_t c) { return c == 0x1F600; };
    EXPECT_EQ(attributedStringByTrimmingCharactersInSet(AttributedString(s(u"\U0001F600a\U0001F600\U0001F600")), emoji)
                  .string(),
              s(u"a"));
    EXPECT_EQ(attributedStringByTrimmingCharactersInSet(AttributedString(s(u"\U0001F601a")), emoji).string(),
              s(u"\U0001F601a"));
}

TEST(AttributedStringEditing, SplittingKeepsEmptyPiecesButNoEmptyLastPiece)
{
    const AttributedString text = build({{s(u"ab"), tag(1)}, {s(u",c,,d,"), tag(2)}});
    const QList<AttributedString> pieces = componentsSeparatedByString(text, QStringLiteral(","));
    ASSERT_EQ(pieces.size(), 4);
    EXPECT_EQ(pieces[0].string(), s(u"ab"));
    EXPECT_EQ(tags(pieces[0]), s(u"11"));
    EXPECT_EQ(pieces[1].string(), s(u"c"));
    EXPECT_EQ(tags(pieces[1]), s(u"2"));
    EXPECT_TRUE(pieces[2].isEmpty());
    EXPECT_EQ(pieces[3].string(), s(u"d"));
    EXPECT_EQ(rangesSeparatedByString(text, QStringLiteral(",")), (QList<Range>{{0, 2}, {3, 1}, {5, 0}, {6, 1}}));

    EXPECT_TRUE(componentsSeparatedByString(AttributedString(), QStringLiteral(",")).isEmpty());
    EXPECT_EQ(rangesSeparatedByString(AttributedString(s(u",a")), QStringLiteral(",")), (QList<Range>{{0, 0}, {1, 1}}));
    EXPECT_EQ(rangesSeparatedByString(AttributedString(s(u",")), QStringLiteral(",")), (QList<Range>{{0, 0}}));
    EXPECT_EQ(rangesSeparatedByString(AttributedString(s(u"abc")), QStringLiteral("x")), (QList<Range>{{0, 3}}));
    EXPECT_EQ(rangesSeparatedByString(AttributedString(s(u"abc")), QString()), (QList<Range>{{0, 3}}));
    EXPECT_EQ(rangesSeparatedByString(AttributedString(s(u"a--b----c")), QStringLiteral("--")),
              (QList<Range>{{0, 1}, {3, 1}, {6, 0}, {8, 1}}));
    // The separator is matched literally, case included.
    EXPECT_EQ(rangesSeparatedByString(AttributedString(s(u"aXbxc")), QStringLiteral("x")),
              (QList<Range>{{0, 3}, {4, 1}}));
}

TEST(AttributedStringEditing, ReplacementTakesTheAttributesOfTheFirstReplacedCharacter)
{
    const AttributedString text = build({{s(u"one"), tag(1)}, {s(u" two "), tag(2)}, {s(u"one"), tag(3)}});
    const AttributedString copy =
        attributedStringByReplacingOccurrencesOfString(text, QStringLiteral("one"), QStringLiteral("three"));
    EXPECT_EQ(copy.string(), s(u"three two three"));
    EXPECT_EQ(tags(copy), s(u"111112222233333"));
    EXPECT_EQ(text.string(), s(u"one two one")); // the receiver of a copy is left alone

    MutableAttributedString mixed(build({{s(u"a"), tag(1)}, {s(u"b"), tag(2)}, {s(u"c"), tag(3)}}));
    EXPECT_EQ(replaceOccurrencesOfString(mixed, QStringLiteral("ab"), QStringLiteral("xyz"), 0, Range{0, 3}), 1);
    EXPECT_EQ(mixed.string(), s(u"xyzc"));
    EXPECT_EQ(tags(mixed), s(u"1113"));

    MutableAttributedString dashes(build({{s(u"a-"), tag(1)}, {s(u"b-"), tag(2)}, {s(u"c"), tag(3)}}));
    EXPECT_EQ(replaceOccurrencesOfString(dashes, QStringLiteral("-"), QString(), 0, Range{0, 5}), 2);
    EXPECT_EQ(dashes.string(), s(u"abc"));
    EXPECT_EQ(tags(dashes), s(u"123"));
}

TEST(AttributedStringEditing, ReplacingAllFollowsTheRangeAndTheDirection)
{
    const auto replaced = [](const QString& text, const QString& target, const QString& replacement, unsigned options,
                             Range range) {
        MutableAttributedString m(text);
        const qsizetype count = replaceOccurrencesOfString(m, target, replacement, options, range);
        return std::make_pair(m.string(), count);
    };
    using Result = std::pair<QString, qsizetype>;
    const QString a = QStringLiteral("a");

    // The range's end moves with the change in length, both ways.
    EXPECT_EQ(replaced(s(u"aaa aaa"), a, s(u"bb"), 0, Range{4, 3}), (Result{s(u"aaa bbbbbb"), 3}));
    EXPECT_EQ(replaced(s(u"aaaaXaaaa"), s(u"aa"), s(u"b"), 0, Range{0, 4}), (Result{s(u"bbXaaaa"), 2}));
    EXPECT_EQ(replaced(s(u"aaaaaaa"), a, s(u"b"), 0, Range{5, 100}), (Result{s(u"aaaaabb"), 2}));
    EXPECT_EQ(replaced(s(u"aaa"), a, s(u"b"), 0, Range::notFound()), (Result{s(u"aaa"), 0}));
    // Ranges with any values are clipped without overflowing.
    constexpr qsizetype max = std::numeric_limits<qsizetype>::max(), min = std::numeric_limits<qsizetype>::min();
    EXPECT_EQ(replaced(s(u"aaaaaaa"), a, s(u"b"), 0, Range{5, max}), (Result{s(u"aaaaabb"), 2}));
    EXPECT_EQ(replaced(s(u"aaaaaaa"), a, s(u"b"), BackwardsSearch, Range{5, max}), (Result{s(u"aaaaabb"), 2}));
    EXPECT_EQ(replaced(s(u"aaa"), a, s(u"b"), 0, Range{max, 5}), (Result{s(u"aaa"), 0}));
    EXPECT_EQ(replaced(s(u"aaa"), a, s(u"b"), 0, Range{min, max}), (Result{s(u"aaa"), 0}));
    EXPECT_EQ(replaced(s(u"aaa"), a, s(u"b"), 0, Range{-1, max}), (Result{s(u"bbb"), 3}));
    EXPECT_EQ(replaced(s(u"aaa"), a, s(u"b"), 0, Range{-1, 3}), (Result{s(u"bba"), 2}));
    EXPECT_EQ(replaced(s(u"aaa"), a, s(u"b"), 0, Range{2, -1}), (Result{s(u"aaa"), 0}));
    // A replacement holding the target is not searched again.
    EXPECT_EQ(replaced(s(u"aaa"), a, s(u"aa"), 0, Range{0, 3}), (Result{s(u"aaaaaa"), 3}));
    EXPECT_EQ(replaced(s(u"aaa"), a, s(u"aa"), BackwardsSearch, Range{0, 3}), (Result{s(u"aaaaaa"), 3}));
    EXPECT_EQ(replaced(s(u"abab"), s(u"ab"), s(u"x"), BackwardsSearch, Range{1, 3}), (Result{s(u"abx"), 1}));
    // Anchored: consecutive matches from the range's start (or end, backwards).
    EXPECT_EQ(replaced(s(u"aaba"), a, s(u"c"), AnchoredSearch, Range{0, 4}), (Result{s(u"ccba"), 2}));
    EXPECT_EQ(replaced(s(u"abaa"), a, s(u"c"), AnchoredSearch | BackwardsSearch, Range{0, 4}), (Result{s(u"abcc"), 2}));
    EXPECT_EQ(replaced(s(u"Cat cat CAT"), s(u"cat"), s(u"dog"), CaseInsensitiveSearch, Range{0, 11}),
              (Result{s(u"dog dog dog"), 3}));
    EXPECT_EQ(replaced(s(u"Cat cat CAT"), s(u"cat"), s(u"dog"), 0, Range{0, 11}), (Result{s(u"Cat dog CAT"), 1}));
    EXPECT_EQ(replaced(s(u"abc"), QString(), s(u"x"), 0, Range{0, 3}), (Result{s(u"abc"), 0}));
}

TEST(AttributedStringEditing, InPlaceOperationsEditInOneBatchAndReadTheTextOnce)
{
    QString plain;
    for (int i = 0; i < 200; ++i)
        plain += i % 4 == 0 ? s(u"w \\<$x> ") : s(u"w <$x> ");
    const int escaped = 50;
    const int live = 150;

    RecordingText text(plain);
    text.resetCounts();
    EXPECT_EQ(replaceOccurrencesOfString(text, Marker, s(u"<$y>"), 0, Range{0, plain.size()}), escaped + live);
    EXPECT_EQ(text.batches, 1);
    EXPECT_EQ(text.depth, 0);
    EXPECT_EQ(text.editsOutsideBatch, 0);
    EXPECT_EQ(text.edits, escaped + live);
    EXPECT_EQ(text.stringCalls, 1);

    RecordingText escapes(plain);
    escapes.resetCounts();
    EXPECT_EQ(replaceUnescapedOccurrencesOfString(escapes, Marker, s(u"Y"), 0, Range{0, plain.size()}, true), live);
    EXPECT_EQ(escapes.batches, 1);
    EXPECT_EQ(escapes.editsOutsideBatch, 0);
    EXPECT_EQ(escapes.edits, escaped + live);
    EXPECT_EQ(escapes.stringCalls, 1);

    RecordingText removing(plain);
    removing.resetCounts();
    EXPECT_EQ(removeEscapesForString(removing, Marker, true), escaped);
    EXPECT_EQ(removing.batches, 1);
    EXPECT_EQ(removing.editsOutsideBatch, 0);
    EXPECT_EQ(removing.stringCalls, 1);
    EXPECT_FALSE(removing.string().contains(u'\\'));

    RecordingText words(plain);
    words.resetCounts();
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(words, s(u"w"), s(u"word"), 0, Range{0, plain.size()}), 200);
    EXPECT_EQ(words.batches, 1);
    EXPECT_EQ(words.editsOutsideBatch, 0);
    // The search text plus the snapshot in which links are looked for; never once per match.
    EXPECT_LT(words.stringCalls, 10);
}

TEST(AttributedStringEditing, EscapeAwareReplacementLooksAtOneCharacterOnly)
{
    const QString y = QStringLiteral("Y");
    // One backslash escapes, and so do two: only the character before the match is looked at,
    // although the unescaped search treats two backslashes as no escape.
    const QString text = s(u"\\<$x> <$x> \\\\<$x>");
    EXPECT_EQ(rangeOfUnescapedString(text, Marker, 0, Range{10, 7}), (Range{13, 4}));
    {
        MutableAttributedString m(text);
        EXPECT_EQ(replaceUnescapedOccurrencesOfString(m, Marker, y, 0, Range{0, text.size()}), 1);
        EXPECT_EQ(m.string(), s(u"\\<$x> Y \\\\<$x>"));
    }
    {
        MutableAttributedString m(text);
        EXPECT_EQ(replaceUnescapedOccurrencesOfString(m, Marker, y, 0, Range{0, text.size()}, true), 1);
        EXPECT_EQ(m.string(), s(u"<$x> Y \\<$x>"));
    }
    {
        // The escaped marker keeps its own attributes when its backslash goes.
        MutableAttributedString m(build({{s(u"\\"), tag(1)}, {Marker, tag(2)}, {s(u" "), tag(3)}, {Marker, tag(4)}}));
        EXPECT_EQ(replaceUnescapedOccurrencesOfString(m, Marker, y, 0, Range{0, 10}, true), 1);
        EXPECT_EQ(m.string(), s(u"<$x> Y"));
        EXPECT_EQ(tags(m), s(u"222234"));
    }
    {
        // Backwards, escapes are removed on the way as well.
        MutableAttributedString m(s(u"<$x> \\<$x> <$x>"));
        EXPECT_EQ(replaceUnescapedOccurrencesOfString(m, Marker, y, BackwardsSearch, Range{0, 15}, true), 2);
        EXPECT_EQ(m.string(), s(u"Y <$x> Y"));
    }
    {
        // Without an escaped form inside the range every match is replaced, even one whose backslash
        // lies just before the range.
        MutableAttributedString m(s(u"\\<$x> <$x>"));
        EXPECT_EQ(replaceUnescapedOccurrencesOfString(m, Marker, y, 0, Range{1, 9}), 2);
        EXPECT_EQ(m.string(), s(u"\\Y Y"));
    }
    {
        // The character before a match is read in the text as edited: a replacement ending in a
        // backslash escapes the marker right after it.
        MutableAttributedString m(s(u"<$x><$x> \\<$x>"));
        EXPECT_EQ(replaceUnescapedOccurrencesOfString(m, Marker, s(u"\\"), 0, Range{0, 14}), 1);
        EXPECT_EQ(m.string(), s(u"\\<$x> \\<$x>"));
    }
}

TEST(AttributedStringEditing, RemovingEscapesDeletesOnlyTheBackslash)
{
    const QString text = s(u"a \\<$x> b \\<$X> \\\\<$x>");
    MutableAttributedString sensitive(text);
    EXPECT_EQ(removeEscapesForString(sensitive, Marker, true), 2);
    EXPECT_EQ(sensitive.string(), s(u"a <$x> b \\<$X> \\<$x>"));
    MutableAttributedString insensitive(text);
    EXPECT_EQ(removeEscapesForString(insensitive, Marker, false), 3);
    EXPECT_EQ(insensitive.string(), s(u"a <$x> b <$X> \\<$x>"));

    MutableAttributedString attributed(build({{s(u"\\"), tag(1)}, {Marker, tag(2)}}));
    EXPECT_EQ(removeEscapesForString(attributed, Marker, true), 1);
    EXPECT_EQ(tags(attributed), s(u"2222"));
    EXPECT_EQ(removeEscapesForString(attributed, QString(), true), 0);
}

TEST(AttributedStringEditing, WholeWordReplacementLeavesLongerWordsAlone)
{
    const QString text = s(u"cat concat cat's cats (cat), cat.");
    MutableAttributedString m(build({{s(u"cat"), tag(1)}, {text.mid(3), tag(2)}}));
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(m, s(u"cat"), s(u"dog"), 0, Range{0, text.size()}), 3);
    EXPECT_EQ(m.string(), s(u"dog concat cat's cats (dog), dog."));
    EXPECT_EQ(tags(m).left(4), s(u"1112"));

    MutableAttributedString cased(s(u"Cat CAT cAt"));
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(cased, s(u"cat"), s(u"dog"), CaseInsensitiveSearch, Range{0, 11}), 3);
    EXPECT_EQ(cased.string(), s(u"dog dog dog"));

    // The range limits the matches, but the word around a match is judged in the whole text.
    MutableAttributedString ranged(s(u"cat cat cat concat"));
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(ranged, s(u"cat"), s(u"dog"), 0, Range{4, 3}), 1);
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(ranged, s(u"cat"), s(u"dog"), 0, Range{15, 3}), 0);
    EXPECT_EQ(ranged.string(), s(u"cat dog cat concat"));

    // Each match is judged in the text as edited so far: once its neighbour became a letter, an
    // apostrophe joins the letters around it into one word.
    MutableAttributedString forwards(s(u"''a"));
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(forwards, s(u"'"), s(u"b"), 0, Range{0, 3}), 1);
    EXPECT_EQ(forwards.string(), s(u"b'a"));
    MutableAttributedString backwards(s(u"a''"));
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(backwards, s(u"'"), s(u"b"), BackwardsSearch, Range{0, 3}), 1);
    EXPECT_EQ(backwards.string(), s(u"a'b"));

    // A phrase is never one word.
    MutableAttributedString phrase(s(u"in New York now"));
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(phrase, s(u"New York"), s(u"Paris"), 0, Range{0, 15}), 0);

    // Plain strings follow the same rules and are left as they are when nothing matched.
    QString plain = s(u"cat concat cat.");
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(plain, s(u"cat"), s(u"dog"), 0, Range{0, plain.size()}), 2);
    EXPECT_EQ(plain, s(u"dog concat dog."));
    QString untouched = s(u"concat");
    const QChar* data = untouched.constData();
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(untouched, s(u"cat"), s(u"dog"), 0, Range{0, 6}), 0);
    EXPECT_EQ(untouched.constData(), data);
}

TEST(AttributedStringEditing, WholeWordReplacementRetargetsLinksThatNameTheWord)
{
    const Attributes bobUrl{{LinkAttributeName, QUrl(s(u"Bob"))}};
    const Attributes bobString{{LinkAttributeName, s(u"bob")}};
    const Attributes web{{LinkAttributeName, QUrl(s(u"http://bob.example"))}};
    const AttributedString text =
        build({{s(u"see "), {}}, {s(u"Bob"), bobUrl}, {s(u" and "), {}}, {s(u"him"), bobString}, {s(u" web"), web}});
    const auto linkAt = [](const MutableAttributedString& m, qsizetype i) { return m.attribute(LinkAttributeName, i); };

    MutableAttributedString insensitive(text);
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(insensitive, s(u"bob"), s(u"Robert"), CaseInsensitiveSearch,
                                                  Range{0, text.length()}),
              1);
    EXPECT_EQ(insensitive.string(), s(u"see Robert and him web"));
    EXPECT_EQ(linkAt(insensitive, 4), QVariant(QUrl(s(u"Robert"))));
    EXPECT_EQ(linkAt(insensitive, 15), QVariant(QUrl(s(u"Robert")))); // a string link naming the word
    EXPECT_EQ(linkAt(insensitive, 19), QVariant(QUrl(s(u"http://bob.example"))));

    // Case-sensitively the string link "bob" does not name "Bob"; links are renamed even where the
    // word itself was not found.
    MutableAttributedString sensitive(build({{s(u"click"), bobUrl}, {s(u" "), {}}, {s(u"here"), bobString}}));
    EXPECT_EQ(replaceWholeWordOccurrencesOfString(sensitive, s(u"Bob"), s(u"Robert"), 0, Range{0, 10}), 0);
    EXPECT_EQ(linkAt(sensitive, 0), QVariant(QUrl(s(u"Robert"))));
    EXPECT_EQ(linkAt(sensitive, 6), QVariant(s(u"bob")));

    // Whitespace, a line break or "://" in either string leaves links alone.
    for (const QString& replacement : {s(u"Bob Smith"), s(u"Rob\nert"), s(u"x://y")}) {
        MutableAttributedString m(text);
        EXPECT_EQ(replaceWholeWordOccurrencesOfString(m, s(u"Bob"), replacement, 0, Range{0, text.length()}), 1);
        EXPECT_EQ(linkAt(m, 4), QVariant(QUrl(s(u"Bob")))) << replacement.toStdString();
    }
    MutableAttributedString scheme(text);
    EXPECT_EQ(
        replaceWholeWordOccurrencesOfString(scheme, s(u"http://bob.example"), s(u"bob"), 0, Range{0, text.length()}),
        0);
    EXPECT_EQ(linkAt(scheme, 16), QVariant(QUrl(s(u"http://bob.example"))));
}

TEST(AttributedStringEditing, ReplacingAgreesWithAModelThatSearchesTheEditedText)
{
    std::mt19937 rng(20240611);
    const QStringList pieces{s(u"a"), s(u"b"), s(u"ab"), s(u" "), s(u"."), s(u"\\"), s(u"'"), s(u"\n")};
    const QStringList targets{s(u"a"), s(u"ab"), s(u"ba"), s(u"a b"), s(u"."), s(u"'")};
    const QStringList replacements{QString(), s(u"a"), s(u"b"), s(u"ab"), s(u"\\"), s(u"b a"), s(u"xyz."), s(u"'")};
    const unsigned optionSets[] = {0, BackwardsSearch, CaseInsensitiveSearch, AnchoredSearch};
    const auto pick = [&rng](const QStringList& list) {
        return list.at(std::uniform_int_distribution<int>(0, int(list.size()) - 1)(rng));
    };

    for (int round = 0; round < 3000; ++round) {
        const QString text = randomText(rng, pieces, round % 10 == 0 ? 200 : 20);
        const QString target = pick(targets);
        const QString replacement = pick(replacements);
        const unsigned options = optionSets[std::uniform_int_distribution<int>(0, 3)(rng)];
        const qsizetype start = std::uniform_int_distribution<qsizetype>(0, text.size())(rng);
        const Range range{start, std::uniform_int_distribution<qsizetype>(0, text.size() - start)(rng)};
        const bool removeEscapes = round % 2;
        SCOPED_TRACE(QStringLiteral("text \"%1\" target \"%2\" replacement \"%3\" options %4 range %5+%6")
                         .arg(text, target, replacement)
                         .arg(options)
                         .arg(range.location)
                         .arg(range.length)
                         .toStdString());

        QString expected = text;
        MutableAttributedString plain(text);
        EXPECT_EQ(replaceOccurrencesOfString(plain, target, replacement, options, range),
                  modelReplace(expected, target, replacement, options, range, nullptr));
        EXPECT_EQ(plain.string(), expected);

        expected = text;
        const QString escaped = QChar(u'\\') + target;
        const bool hasEscape = !rangeOfString(text, escaped, options, range).isNotFound();
        MutableAttributedString unescaped(text);
        EXPECT_EQ(replaceUnescapedOccurrencesOfString(unescaped, target, replacement, options, range, removeEscapes),
                  modelReplace(expected, target, replacement, options, range,
                               hasEscape ? Decide([removeEscapes](const QString& current, Range m) {
                                   return modelEscape(current, m, removeEscapes);
                               })
                                         : Decide()));
        EXPECT_EQ(unescaped.string(), expected);

        expected = text;
        MutableAttributedString words(text);
        EXPECT_EQ(replaceWholeWordOccurrencesOfString(words, target, replacement, options, range),
                  modelReplace(expected, target, replacement, options, range, modelWholeWord));
        EXPECT_EQ(words.string(), expected);
        EXPECT_TRUE(words.attributedString().checkInvariants());
    }
}
