#include <gtest/gtest.h>

#include <QRandomGenerator>
#include <cmath>

#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/notes/NoteTags.h>

#include "NoteTestSupport.h"

using namespace qly;
using namespace notetest;

namespace {

const QString Open1 = QStringLiteral("{\\Qlry_annot \\color={\\R=1.000000\\G=0.000000\\B=0.000000} \\text=");
const QString Close = QStringLiteral("\\end_Qlry_annot}");

AttributedString read(const QString& tagged)
{
    return attributedStringByConvertingTagsToAttributes(AttributedString(tagged));
}

// The note attributes a round trip must keep, compared character by character.
void expectSameNotes(const AttributedString& expected, const AttributedString& actual)
{
    ASSERT_EQ(expected.string(), actual.string());
    for (qsizetype i = 0; i < expected.length(); ++i) {
        const auto a = colourAt(expected, XQAnnotationAttributeName, i);
        const auto b = colourAt(actual, XQAnnotationAttributeName, i);
        ASSERT_EQ(a.has_value(), b.has_value()) << "annotation at " << i;
        if (a) {
            EXPECT_NEAR(a->redComponent(), b->redComponent(), 1e-6) << i;
            EXPECT_NEAR(a->greenComponent(), b->greenComponent(), 1e-6) << i;
            EXPECT_NEAR(a->blueComponent(), b->blueComponent(), 1e-6) << i;
        }
        for (const QString& name :
             {XQFootnoteAttributeName, XQPreserveFormattingAttributeName, XQKeepWithNextAttributeName})
            ASSERT_EQ(expected.attribute(name, i).toBool(), actual.attribute(name, i).toBool())
                << name.toStdString() << " at " << i;
    }
}

} // namespace

TEST(NoteTags, WritesMixedCaseMarkersAroundEachKindOfNote)
{
    const Attributes body = withFont(QStringLiteral("Times"), 14);
    const AttributedString text = build({{QStringLiteral("Hello "), body},
                                         {QStringLiteral("world"), annotation(0.5, 0.25, 1.0 / 3.0, body)},
                                         {QStringLiteral(" and "), body},
                                         {QStringLiteral("note"), footnote(body)},
                                         {QStringLiteral("."), body}});
    const AttributedString tagged = attributedStringByConvertingAttributesToTags(text);
    EXPECT_EQ(tagged.string(),
              "Hello {\\Qlry_annot \\color={\\R=0.500000\\G=0.250000\\B=0.333333} \\text=world\\end_Qlry_annot}"
              " and {\\Qlry_fn=note\\end_Qlry_fn}.");
    // The markers are in Helvetica 12; the notes keep their attributes and their font.
    const qsizetype open = tagged.string().indexOf(u'{');
    EXPECT_EQ(fontAt(tagged, open)->familyName(), "Helvetica");
    EXPECT_EQ(fontAt(tagged, open)->pointSize(), 12.0);
    EXPECT_EQ(fontAt(tagged, tagged.string().indexOf(QStringLiteral("world")))->familyName(), "Times");
    // The opening marker takes the attributes of the note's first character (so it lies in the
    // annotation); the closing marker those of the character after the note.
    EXPECT_TRUE(tagged.attribute(XQAnnotationAttributeName, open).isValid());
    EXPECT_FALSE(
        tagged.attribute(XQAnnotationAttributeName, tagged.string().indexOf(QStringLiteral("\\end_Qlry_annot")))
            .isValid());

    const AttributedString blocks = attributedStringByConvertingAttributesToTags(
        build({{QStringLiteral("Keep "), {}}, {QStringLiteral("this"), {{XQPreserveFormattingAttributeName, true}}}}));
    EXPECT_EQ(blocks.string(), "Keep {\\Qlry_ps=this\\end_Qlry_ps}");
    // A closing marker at the very end takes the last character's attributes.
    EXPECT_TRUE(blocks.attribute(XQPreserveFormattingAttributeName, blocks.length() - 1).isValid());
}

TEST(NoteTags, AnnotationValuesThatAreNotColoursAreNotTagged)
{
    // Out-of-range components still make a whole tag.
    const QString huge = annotationOpeningTag(Color(1e40, -0.5, 0));
    EXPECT_TRUE(huge.startsWith(QStringLiteral("{\\Qlry_annot \\color={\\R=10000000000000000")));
    EXPECT_TRUE(huge.endsWith(QStringLiteral(".000000\\G=-0.500000\\B=0.000000} \\text=")));

    const AttributedString text =
        build({{QStringLiteral("a"), {}}, {QStringLiteral("b"), {{XQAnnotationAttributeName, QStringLiteral("red")}}}});
    EXPECT_EQ(attributedStringByConvertingAttributesToTags(text).string(), "ab");
}

TEST(NoteTags, MarkersDropAttachmentsOfTheCharacterTheyCopy)
{
    const TextAttachment picture = TextAttachment::fromImage(QImage(4, 4, QImage::Format_ARGB32));
    Attributes pictureAttributes = footnote();
    pictureAttributes.insert(AttachmentAttributeName, QVariant::fromValue(picture));
    const AttributedString text = build({{QString(QChar(AttachmentCharacter)), pictureAttributes}});
    const AttributedString tagged = attributedStringByConvertingAttributesToTags(text);
    ASSERT_EQ(tagged.string(), "{\\Qlry_fn=" + QString(QChar(AttachmentCharacter)) + "\\end_Qlry_fn}");
    for (qsizetype i = 0; i < tagged.length(); ++i)
        EXPECT_EQ(tagged.attribute(AttachmentAttributeName, i).isValid(),
                  tagged.characterAt(i) == QChar(AttachmentCharacter))
            << i;
}

TEST(NoteTags, KeepWithNextMarkersGoAtParagraphStartsOnly)
{
    const Attributes keep{{XQKeepWithNextAttributeName, true}};
    const AttributedString text = build({{QStringLiteral("One\n"), {}},
                                         {QStringLiteral("Two\r\nThree"), keep},
                                         {QStringLiteral("\nFour\n"), {}},
                                         {QStringLiteral("Five"), {{XQKeepWithNextAttributeName, false}}}});
    EXPECT_EQ(attributedStringByConvertingAttributesToTags(text).string(),
              "One\n<$QlyKeepWithNext>Two\r\n<$QlyKeepWithNext>Three\nFour\nFive");
    // Keep-with-next in the middle of a paragraph does not count.
    const AttributedString mid = build({{QStringLiteral("ab"), {}}, {QStringLiteral("cd\nef"), keep}});
    EXPECT_EQ(attributedStringByConvertingAttributesToTags(mid).string(), "abcd\n<$QlyKeepWithNext>ef");
}

TEST(NoteTags, ReadsEachKindBackAndIgnoresLetterCase)
{
    const AttributedString text = read("A" + Open1 + "red note" + Close
                                       + " {\\qlry_fn=foot\\END_qlry_FN} {\\QLRY_PS=kept\\End_Qlry_Ps}\n"
                                         "<$QlyKeepWithNext>Next para\n<$qlykeepwithnext>lower");
    ASSERT_EQ(text.string(), "Ared note foot kept\nNext para\n<$qlykeepwithnext>lower");
    EXPECT_EQ(coverage(text, XQAnnotationAttributeName), "-########" + QString(text.length() - 9, u'-'));
    EXPECT_EQ(*colourAt(text, XQAnnotationAttributeName, 1), Color(1, 0, 0, 1));
    EXPECT_EQ(text.substring(Range{10, 4}), "foot");
    EXPECT_EQ(coverage(text, XQFootnoteAttributeName).indexOf(u'#'), 10);
    EXPECT_EQ(coverage(text, XQFootnoteAttributeName).count(u'#'), 4);
    EXPECT_EQ(text.attribute(XQFootnoteAttributeName, 10).toBool(), true);
    EXPECT_EQ(coverage(text, XQPreserveFormattingAttributeName).count(u'#'), 4);
    EXPECT_TRUE(text.attribute(XQPreserveFormattingAttributeName, 15).toBool());
    // Keep-with-next covers the paragraph's contents, not its line feed; the lower-case marker is text.
    EXPECT_EQ(coverage(text, XQKeepWithNextAttributeName).count(u'#'), 9);
    EXPECT_TRUE(text.attribute(XQKeepWithNextAttributeName, 20).toBool());
    EXPECT_FALSE(text.attribute(XQKeepWithNextAttributeName, 29).isValid());
}

TEST(NoteTags, ReadsHexadecimalColoursWithTheStandardRedAsFallback)
{
    AttributedString text = read(QStringLiteral("x{\\QLRY_ANNOT \\COLOR={#FF8000} \\TEXT=hex\\END_QLRY_ANNOT}"));
    ASSERT_EQ(text.string(), "xhex");
    auto colour = colourAt(text, XQAnnotationAttributeName, 1);
    ASSERT_TRUE(colour);
    EXPECT_NEAR(colour->redComponent(), 1.0, 1e-12);
    EXPECT_NEAR(colour->greenComponent(), 128 / 255.0, 1e-12);
    EXPECT_NEAR(colour->blueComponent(), 0.0, 1e-12);

    text = read(QStringLiteral("{\\qlry_annot \\color={#nothex} \\text=bad\\end_qlry_annot}"));
    ASSERT_EQ(text.string(), "bad");
    EXPECT_EQ(*colourAt(text, XQAnnotationAttributeName, 0), Color::standardAnnotationColor());
}

TEST(NoteTags, MalformedTagsStayAsText)
{
    // No "} \TEXT=": the tag is left alone, and reading goes on after it.
    const QString broken = QStringLiteral("{\\Qlry_annot \\color={\\R=1\\G=0\\B=0 \\text=x\\end_Qlry_annot}");
    AttributedString text = read(broken + " then " + Open1 + "ok" + Close);
    EXPECT_EQ(text.string(), broken + " then ok");
    EXPECT_EQ(coverage(text, XQAnnotationAttributeName), QString(broken.size() + 6, u'-') + "##");

    // Missing green part, unclosed tags: all text stays, nothing is marked.
    for (const QString& tagged :
         {QStringLiteral("{\\Qlry_annot \\color={\\R=1\\B=0} \\text=x\\end_Qlry_annot}"),
          QStringLiteral("a {\\Qlry_fn=unclosed footnote"), QStringLiteral("a {\\Qlry_ps=unclosed"),
          QStringLiteral("\\end_Qlry_fn} closing before {\\Qlry_fn="), Open1 + QStringLiteral("no closing"),
          QStringLiteral("{\\Qlry_annot \\color={# } \\text=")}) {
        text = read(tagged);
        EXPECT_EQ(text.string(), tagged);
        for (const QString& name :
             {XQAnnotationAttributeName, XQFootnoteAttributeName, XQPreserveFormattingAttributeName})
            EXPECT_FALSE(coverage(text, name).contains(u'#')) << tagged.toStdString();
    }
}

TEST(NoteTags, ManyMalformedTagsStayAsTextAndTheNextTagIsRead)
{
    // Tags without their colour parts, in both colour forms, many times over: each is searched for its
    // parts only up to its own closing marker, and all of them stay as text.
    const QString decimal = QStringLiteral("{\\QLRY_ANNOT \\COLOR={\\R=1 x\\END_QLRY_ANNOT}");
    const QString hexadecimal = QStringLiteral("{\\QLRY_ANNOT \\COLOR={#FF0000 x\\END_QLRY_ANNOT}");
    for (const QString& malformed : {decimal, hexadecimal}) {
        for (bool newlines : {false, true}) {
            const QString repeated = (newlines ? u'\n' + malformed + u'\n' : malformed).repeated(20'000);
            const QString good = newlines ? u'\n' + Open1 + "ok" + Close + u'\n' : Open1 + "ok" + Close;
            const AttributedString text =
                attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(
                    AttributedString(repeated + good), newlines);
            SCOPED_TRACE(malformed.toStdString() + (newlines ? " with line feeds" : ""));
            ASSERT_EQ(text.string(), repeated + "ok");
            const QString marked = coverage(text, XQAnnotationAttributeName);
            EXPECT_EQ(marked.indexOf(u'#'), repeated.size());
            EXPECT_EQ(marked.count(u'#'), 2);
        }
    }
}

TEST(NoteTags, DeeplyNestedTagsPairAsWhenReadOneByOne)
{
    // n openings, then n closings: the k-th tag runs from its opening to the k-th closing marker, and
    // where tags overlap the later one wins.
    constexpr int n = 2'000;
    QString annotations, footnotes;
    for (int k = 1; k <= n; ++k) {
        annotations += QStringLiteral("{\\Qlry_annot \\color={\\R=1\\G=%1\\B=0} \\text=a").arg(k / double(n));
        footnotes += QStringLiteral("{\\Qlry_fn=a");
    }
    for (int k = 1; k <= n; ++k) {
        annotations += QStringLiteral("b\\end_Qlry_annot}");
        footnotes += QStringLiteral("b\\end_Qlry_fn}");
    }
    const QString expected = QString(n, u'a') + QString(n, u'b');

    const AttributedString readFootnotes = read(footnotes);
    ASSERT_EQ(readFootnotes.string(), expected);
    EXPECT_EQ(coverage(readFootnotes, XQFootnoteAttributeName), QString(2 * n, u'#'));

    const AttributedString readAnnotations = read(annotations);
    ASSERT_EQ(readAnnotations.string(), expected);
    for (int k = 1; k <= n; ++k) {
        const std::optional<Color> a = colourAt(readAnnotations, XQAnnotationAttributeName, k - 1);
        const std::optional<Color> b = colourAt(readAnnotations, XQAnnotationAttributeName, n + k - 1);
        ASSERT_TRUE(a && b) << k;
        EXPECT_NEAR(a->greenComponent(), k / double(n), 1e-6) << k; // the k-th tag is the last over it
        EXPECT_NEAR(b->greenComponent(), 1.0, 1e-6) << k; // the n-th tag runs over every closing
    }
}

TEST(NoteTags, AnnotationColoursReadWithinZeroToOne)
{
    // Components outside 0–1, overflowing or not numbers are clamped, so the tags written for the
    // colour read back as the same colour.
    const AttributedString text =
        read(QStringLiteral("{\\Qlry_annot \\color={\\R=1e39\\G=-2\\B=nan} \\text=x\\end_Qlry_annot}"
                            "{\\Qlry_annot \\color={\\R=-0\\G=0.25\\B=7} \\text=y\\end_Qlry_annot}"));
    ASSERT_EQ(text.string(), "xy");
    EXPECT_EQ(*colourAt(text, XQAnnotationAttributeName, 0), Color(1, 0, 0));
    EXPECT_EQ(*colourAt(text, XQAnnotationAttributeName, 1), Color(0, 0.25, 1));
    const AttributedString again = read(attributedStringByConvertingAttributesToTags(text).string());
    EXPECT_EQ(*colourAt(again, XQAnnotationAttributeName, 0), Color(1, 0, 0));
    EXPECT_EQ(*colourAt(again, XQAnnotationAttributeName, 1), Color(0, 0.25, 1));
}

TEST(NoteTags, TagsAreReadOneAfterAnotherAsIfEachWereRemovedAtOnce)
{
    // The first closing marker belongs to the first annotation; the second annotation then runs to the
    // second closing marker and, read later, wins where the two overlap.
    const QString open2 = QStringLiteral("{\\Qlry_annot \\color={\\R=0\\G=0\\B=1} \\text=");
    const AttributedString text = read(Open1 + "x" + open2 + "y" + Close + "z" + Close + "w");
    ASSERT_EQ(text.string(), "xyzw");
    EXPECT_EQ(*colourAt(text, XQAnnotationAttributeName, 0), Color(1, 0, 0));
    EXPECT_EQ(*colourAt(text, XQAnnotationAttributeName, 1), Color(0, 0, 1));
    EXPECT_EQ(*colourAt(text, XQAnnotationAttributeName, 2), Color(0, 0, 1));
    EXPECT_FALSE(colourAt(text, XQAnnotationAttributeName, 3));

    // Footnotes pair the same way.
    const AttributedString nested = read(QStringLiteral("{\\Qlry_fn=a{\\Qlry_fn=b\\end_Qlry_fn}c\\end_Qlry_fn}d"));
    EXPECT_EQ(nested.string(), "abcd");
    EXPECT_EQ(coverage(nested, XQFootnoteAttributeName), "###-");
}

TEST(NoteTags, NewlineFormsAreRemovedWithTheMarkersOnlyWhenAsked)
{
    const QString tagged = "Line\n{\\QLRY_ANNOT \\COLOR={\\R=0\\G=1\\B=0} \\TEXT=note\\END_QLRY_ANNOT}\nNext";
    AttributedString text = attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(
        AttributedString(tagged), true);
    EXPECT_EQ(text.string(), "LinenoteNext");
    EXPECT_EQ(coverage(text, XQAnnotationAttributeName), "----####----");

    text = read(tagged);
    EXPECT_EQ(text.string(), "Line\nnote\nNext");

    // Asked to remove the line feeds, annotations without them are not recognised.
    const QString inlineTag = "a" + Open1 + "b" + Close + "c";
    text = attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(AttributedString(inlineTag),
                                                                                            true);
    EXPECT_EQ(text.string(), inlineTag);
    // The hexadecimal form has its newline form too; footnotes are read as usual.
    text = attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(
        AttributedString("p\n{\\QLRY_ANNOT \\COLOR={#0000FF} \\TEXT=h\\END_QLRY_ANNOT}\n{\\Qlry_fn=f\\end_Qlry_fn}"),
        true);
    EXPECT_EQ(text.string(), "phf");
    EXPECT_EQ(*colourAt(text, XQAnnotationAttributeName, 1), Color(0, 0, 1));
    EXPECT_TRUE(text.attribute(XQFootnoteAttributeName, 2).toBool());
}

TEST(NoteTags, RoundTripRestoresEveryNote)
{
    // Random texts with overlapping, nested and adjacent notes, in small leaves so that edits cross them.
    AttributedString::setLeafCapacityForTesting(16);
    QRandomGenerator rng(20261122);
    static const char* words[] = {"lamp", "tide", "keeper", "log", "stair", "harbour", "ferry", "glass"};
    for (int round = 0; round < 40; ++round) {
        QString plain;
        const int wordCount = 20 + int(rng.bounded(60));
        for (int w = 0; w < wordCount; ++w) {
            plain += QLatin1String(words[rng.bounded(8)]);
            plain += rng.bounded(7) == 0 ? QStringLiteral("\n") : QStringLiteral(" ");
        }
        AttributedString text(plain, withFont(QStringLiteral("Times"), 12));
        auto randomRange = [&]() {
            const qsizetype start = rng.bounded(int(plain.size() - 1));
            return Range{start, 1 + qsizetype(rng.bounded(int(std::min<qsizetype>(25, plain.size() - start))))};
        };
        for (int k = 0; k < 4; ++k) {
            const double r = rng.bounded(1000) / 999.0, g = rng.bounded(7) / 7.0, b = rng.generateDouble();
            text.addAttribute(XQAnnotationAttributeName, colourValue(r, g, b), randomRange());
        }
        for (int k = 0; k < 3; ++k)
            text.addAttribute(XQFootnoteAttributeName, true, randomRange());
        for (int k = 0; k < 2; ++k)
            text.addAttribute(XQPreserveFormattingAttributeName, true, randomRange());
        // Keep-with-next over the contents of a few non-empty paragraphs.
        qsizetype start = 0;
        while (start < plain.size()) {
            qsizetype end = plain.indexOf(u'\n', start);
            if (end < 0)
                end = plain.size();
            if (end > start && rng.bounded(3) == 0)
                text.addAttribute(XQKeepWithNextAttributeName, true, Range::fromBounds(start, end));
            start = end + 1;
        }
        const AttributedString tagged = attributedStringByConvertingAttributesToTags(text);
        ASSERT_TRUE(tagged.checkInvariants());
        const AttributedString back = attributedStringByConvertingTagsToAttributes(tagged);
        ASSERT_TRUE(back.checkInvariants());
        SCOPED_TRACE(round);
        expectSameNotes(text, back);
    }
    AttributedString::setLeafCapacityForTesting(0);
}

TEST(NoteTags, GarbageNeverCrashesAndNeverInventsText)
{
    static const char* pieces[] = {"{\\Qlry_annot \\color={\\R=",
                                   "\\G=",
                                   "\\B=",
                                   "} \\text=",
                                   "\\end_Qlry_annot}",
                                   "{\\QLRY_ANNOT \\COLOR={#",
                                   "{\\Qlry_fn=",
                                   "\\end_Qlry_fn}",
                                   "{\\Qlry_ps=",
                                   "\\end_Qlry_ps}",
                                   "<$QlyKeepWithNext>",
                                   "\n",
                                   "0.5",
                                   "abc",
                                   "}",
                                   "{"};
    QRandomGenerator rng(7);
    for (int round = 0; round < 300; ++round) {
        QString input;
        for (int k = int(rng.bounded(30)); k > 0; --k)
            input += QLatin1String(pieces[rng.bounded(16)]);
        for (bool newlines : {false, true}) {
            const AttributedString out =
                attributedStringByConvertingTagsToAttributesAndRemovingNewlinesAroundAnnotations(
                    AttributedString(input), newlines);
            ASSERT_TRUE(out.checkInvariants());
            // The output is the input with some characters (the markers) taken out.
            const QString s = out.string();
            qsizetype j = 0;
            for (qsizetype i = 0; i < input.size() && j < s.size(); ++i) {
                if (input.at(i) == s.at(j))
                    ++j;
            }
            ASSERT_EQ(j, s.size()) << input.toStdString();
        }
    }
}
