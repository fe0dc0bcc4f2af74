// Line-break normalisation for plain-text syncing.
#include <qlyappkit/formats/screenplay/PlainTextSyncing.h>

#include <gtest/gtest.h>

using namespace qly;

TEST(PlainTextSyncing, EmptyLinesGoAndTheRestAreJoined)
{
    const struct {
        const char16_t* input;
        const char16_t* removing;
        const char16_t* spaces;
        const char16_t* inserting;
    } cases[] = {
        {u"a\n\n\nb\n", u"a\nb", u"a b", u"a\n\nb"},
        {u"", u"", u"", u""},
        {u"\n\n", u"", u"", u""},
        // A line of spaces is kept; every kind of break counts and LF comes out.
        {u"a\r\n \r\rb\u2028c\u2029d", u"a\n \nb\nc\nd", u"a   b c d", u"a\n\n \n\nb\n\nc\n\nd"},
        {u"single", u"single", u"single", u"single"},
    };
    for (const auto& c : cases) {
        const QString input = QString::fromUtf16(c.input);
        EXPECT_EQ(stringByRemovingExtraNewlines(input), QString::fromUtf16(c.removing)) << input.toStdString();
        EXPECT_EQ(stringByReplacingNewlinesWithSpaces(input), QString::fromUtf16(c.spaces)) << input.toStdString();
        EXPECT_EQ(stringByInsertingExtraNewlines(input), QString::fromUtf16(c.inserting)) << input.toStdString();
    }
}
