// Reading RTF as other word processors write it.
#include "RTFTestSupport.h"

#include <QSizeF>

#include <qlyappkit/platform/text/PlatformAttributes.h>

using namespace qly;
using namespace qly::rtftest;

namespace {

AttributedString readBody(const char* body, const char* header = "")
{
    return read(QByteArray("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0\\froman Times New Roman;}}") + header + body + "}");
}

Font fontAt(const AttributedString& text, qsizetype index)
{
    return text.attribute(FontAttributeName, index).value<Font>();
}

ParagraphStyle styleAt(const AttributedString& text, qsizetype index)
{
    return text.attribute(ParagraphStyleAttributeName, index).value<ParagraphStyle>();
}

} // namespace

TEST(RTFReader, CodePagesHexBytesAndUnicode)
{
    // \'hh in the document's code page, in a font's charset, and in an explicit code page.
    EXPECT_EQ(readBody("caf\\'e9 \\'93q\\'94 \\'80").string(), QStringLiteral("caf\u00e9 \u201cq\u201d \u20ac"));
    const QByteArray cyrillic = "{\\rtf1\\ansi\\ansicpg1251{\\fonttbl{\\f0\\fnil\\fcharset204 Arial;}"
                                "{\\f1\\fnil\\fcharset0 Arial;}{\\f2\\fnil\\cpg1253 Greek;}}"
                                "\\f0 \\'cf\\'f0\\'e8\\'e2\\'e5\\'f2 \\f2 \\'e1 \\f1 \\'e9}";
    // Charset 0 takes the document's code page (1251 here).
    EXPECT_EQ(read(cyrillic).string(), QStringLiteral("\u041f\u0440\u0438\u0432\u0435\u0442 \u03b1 \u0439"));
    const QByteArray japanese =
        "{\\rtf1\\ansi{\\fonttbl{\\f0\\fnil\\fcharset128 MS Mincho;}}\\f0 \\'93\\'fa\\'96\\'7b}";
    EXPECT_EQ(read(japanese).string(), QStringLiteral("\u65e5\u672c"));
    // \u with the \uc count of fallback characters to skip: hex bytes, text and control words count one.
    EXPECT_EQ(readBody("\\uc1\\u8226\\'95 a\\u-3913 ?b{\\uc2\\u1044 xx}c\\u1044\\'3f\\uc0\\u8212 d").string(),
              QStringLiteral("\u2022 a\uf0b7b\u0414c\u0414\u2014d"));
    EXPECT_EQ(readBody("\\u55357\\'3f\\u56832\\'3f").string(), QStringLiteral("\U0001F600"));
    // The Unicode alternative of \upr is read, the 8-bit one not.
    EXPECT_EQ(readBody("{\\upr{caf\\'e9}{\\*\\ud{caf\\u233 e}}}!").string(),
              QStringLiteral("caf\u00e9!")); // the "e" is the fallback of \u233
}

TEST(RTFReader, UnicodeValuesOutsideSixteenBitsAreReplaced)
{
    // -32768…-1 wrap to U+8000…U+FFFF; 0…65535 are the code unit itself; anything else is U+FFFD.
    constexpr char16_t inRange[] = {0xFFFF, 0x8000, 0, 0xFFFF, 0x7FFF};
    EXPECT_EQ(readBody("\\uc0\\u-1 \\u-32768 \\u0 \\u65535 \\u32767 ").string(), QStringView(inRange, 5).toString());
    EXPECT_EQ(
        readBody("\\uc0\\u-32769 \\u65536 \\u-65536 \\u-65535 \\u131072 \\u99999999999 \\u-99999999999 ").string(),
        QString(7, QChar(0xFFFD)));
}

TEST(RTFReader, SpecialCharactersAndBreaks)
{
    EXPECT_EQ(readBody("a\\emdash b\\endash c\\lquote d\\rquote e\\ldblquote f\\rdblquote g\\bullet h").string(),
              QStringLiteral("a\u2014b\u2013c\u2018d\u2019e\u201cf\u201dg\u2022h"));
    EXPECT_EQ(readBody("a\\~b\\_c\\-d\\tab e\\line f\\page g\\par h\\sect i").string(),
              QStringLiteral("a\u00a0b\u2011c\u00add\te\u2028f\u000cg\nh\ni"));
    // A backslash before a line break is a paragraph mark; bare line breaks are nothing.
    EXPECT_EQ(readBody("a\\\nb\r\nc\\\r\nd").string(), QStringLiteral("a\nbc\nd"));
}

TEST(RTFReader, PlainTextTagsComeThroughExactly)
{
    const AttributedString text =
        readBody("{\\pard\\plain \\{\\\\QLRY_FN={footnote text}\\pard\\plain \\\\END_QLRY_FN\\}}"
                 " <<**JVT_FN1_START_TAG(\\\\b0\\\\i0\\\\ul0 )**>> \\{\\\\QLRY_ANNOT "
                 "\\\\COLOR=\\{\\\\R=1.0\\\\G=0.0\\\\B=0.0\\}");
    EXPECT_EQ(text.string(),
              QStringLiteral("{\\QLRY_FN=footnote text\\END_QLRY_FN} <<**JVT_FN1_START_TAG(\\b0\\i0\\ul0 )**>> "
                             "{\\QLRY_ANNOT \\COLOR={\\R=1.0\\G=0.0\\B=0.0}"));
}

TEST(RTFReader, CharacterFormattingAndResets)
{
    const AttributedString text = readBody(
        "{\\colortbl;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}"
        "\\fs20 a\\b b\\i c\\b0\\i0\\ul d\\uldb e\\ulnone\\strike f\\strike0\\cf1 g\\cf0\\highlight2 h\\highlight0"
        "\\super i\\nosupersub\\up6 j\\dn4 k\\up0\\expnd4 l\\expndtw-10 m\\plain n{\\b o}p");
    const QString s = text.string();
    ASSERT_EQ(s, QStringLiteral("abcdefghijklmnop"));
    EXPECT_EQ(fontAt(text, 0).pointSize(), 10.0);
    EXPECT_EQ(fontAt(text, 0).familyName(), QStringLiteral("Times New Roman"));
    EXPECT_TRUE(fontAt(text, 1).isBold());
    EXPECT_TRUE(fontAt(text, 2).isBold() && fontAt(text, 2).isItalic());
    EXPECT_FALSE(fontAt(text, 3).isBold() || fontAt(text, 3).isItalic());
    EXPECT_EQ(text.attribute(UnderlineStyleAttributeName, 3).toInt(), 1);
    EXPECT_EQ(text.attribute(UnderlineStyleAttributeName, 4).toInt(), 9);
    EXPECT_FALSE(text.attribute(UnderlineStyleAttributeName, 5).isValid());
    EXPECT_EQ(text.attribute(StrikethroughStyleAttributeName, 5).toInt(), 1);
    EXPECT_EQ(text.attribute(ForegroundColorAttributeName, 6).value<Color>(), Color(1, 0, 0));
    EXPECT_FALSE(text.attribute(ForegroundColorAttributeName, 7).isValid());
    EXPECT_EQ(text.attribute(BackgroundColorAttributeName, 7).value<Color>(), Color(0, 0, 1));
    EXPECT_FALSE(text.attribute(BackgroundColorAttributeName, 8).isValid());
    EXPECT_EQ(text.attribute(SuperscriptAttributeName, 8).toInt(), 1);
    EXPECT_EQ(text.attribute(BaselineOffsetAttributeName, 9).toDouble(), 3.0);
    EXPECT_EQ(text.attribute(BaselineOffsetAttributeName, 10).toDouble(), -2.0);
    EXPECT_EQ(text.attribute(KernAttributeName, 11).toDouble(), 1.0);
    EXPECT_EQ(text.attribute(KernAttributeName, 12).toDouble(), -0.5);
    // \plain resets everything; a group's formatting ends with it.
    EXPECT_EQ(text.attributes(13).size(), 2) << describe(text.attributes(13)).toStdString();
    EXPECT_EQ(fontAt(text, 13).pointSize(), 12.0);
    EXPECT_TRUE(fontAt(text, 14).isBold());
    EXPECT_FALSE(fontAt(text, 15).isBold());
}

TEST(RTFReader, ParagraphFormatting)
{
    const AttributedString text = readBody(
        "\\pard\\qc\\li720\\fi-360\\ri144\\sb120\\sa240\\sl-280\\slmult0\\tx1440\\tqr\\tx5000\\tqc\\tx3000 one\\par "
        "two\\par\\pard\\sl360\\slmult1\\qj three\\par\\pard\\sl300 four");
    const ParagraphStyle one = styleAt(text, 0), two = styleAt(text, 4), three = styleAt(text, 8),
                         four = styleAt(text, 14);
    EXPECT_EQ(one.alignment(), CenterTextAlignment);
    EXPECT_EQ(one.headIndent(), 36.0);
    EXPECT_EQ(one.firstLineHeadIndent(), 18.0);
    EXPECT_EQ(one.tailIndent(), -7.2);
    EXPECT_EQ(one.paragraphSpacingBefore(), 6.0);
    EXPECT_EQ(one.paragraphSpacing(), 12.0);
    EXPECT_EQ(one.minimumLineHeight(), 14.0);
    EXPECT_EQ(one.maximumLineHeight(), 14.0);
    const QVector<TextTab> tabs{{LeftTextAlignment, 72}, {RightTextAlignment, 250}, {CenterTextAlignment, 150}};
    EXPECT_EQ(one.tabStops(), tabs);
    EXPECT_EQ(one, two); // \par keeps the paragraph formatting
    EXPECT_EQ(three.alignment(), JustifiedTextAlignment);
    EXPECT_EQ(three.lineHeightMultiple(), 1.5);
    EXPECT_EQ(three.headIndent(), 0.0);
    EXPECT_TRUE(three.tabStops().isEmpty());
    EXPECT_EQ(four.alignment(), NaturalTextAlignment);
    EXPECT_EQ(four.minimumLineHeight(), 15.0);
    EXPECT_EQ(four.maximumLineHeight(), 0.0);
}

TEST(RTFReader, FieldsListsAndUnknownDestinations)
{
    const AttributedString text = readBody(
        "{\\*\\generator Some Writer;}{\\*\\unknowndest {skipped} text}{\\stylesheet{\\s0 Normal;}}"
        "{\\header header text\\par}{\\*\\bkmkstart mark}"
        "see {\\field{\\*\\fldinst{HYPERLINK \"https://example.com/a b\" \\\\o \"tip\"}}{\\fldrslt {\\ul here}}} or "
        "{\\field{\\*\\fldinst{HYPERLINK \\\\l \"Chapter\"}}{\\fldrslt there}} at {\\field{\\*\\fldinst "
        "PAGE}{\\fldrslt 7}}."
        "\\unknownword42 {\\pict\\pngblip 89504e47}{\\footnote skipped note}{\\*\\shppict{\\pict "
        "00}}{\\nonshppict{\\pict 00}}");
    const QString s = text.string();
    ASSERT_EQ(s, QStringLiteral("see here or there at 7."));
    EXPECT_EQ(text.attribute(LinkAttributeName, 4).toString(), QStringLiteral("https://example.com/a b"));
    EXPECT_EQ(text.attribute(UnderlineStyleAttributeName, 4).toInt(), 1);
    EXPECT_EQ(text.attribute(LinkAttributeName, 12).toString(), QStringLiteral("#Chapter"));
    EXPECT_FALSE(text.attribute(LinkAttributeName, 9).isValid());
    EXPECT_FALSE(text.attribute(LinkAttributeName, 21).isValid());

    // Word's list shape: a list table with level templates, overrides and marker text.
    const AttributedString list = readBody(
        "\\pard\\ls2\\ilvl1{\\listtext\\pard\\plain 1.2)\\tab}nested\\par\\pard\\ls1{\\listtext\\'b7\\tab}bullet",
        "{\\*\\listtable{\\list\\listtemplateid5{\\listlevel\\levelnfc0\\levelstartat3{\\leveltext\\'02\\'00.;}"
        "{\\levelnumbers\\'01;}}{\\listlevel\\levelnfc2{\\leveltext\\'05\\'00.\\'01);}{\\levelnumbers\\'01\\'03;}}"
        "\\listid77}{\\list{\\listlevel\\levelnfc23{\\leveltext\\'01\\u9702 ?;}}\\listid78}}"
        "{\\*\\listoverridetable{\\listoverride\\listid78\\listoverridecount0\\ls1}{\\listoverride\\listid77\\ls2}}");
    EXPECT_EQ(list.string(), QStringLiteral("1.2)\tnested\n\u00b7\tbullet"));
    const QVector<TextList> nested = styleAt(list, 0).textLists();
    ASSERT_EQ(nested.size(), 2);
    EXPECT_EQ(nested[0], (TextList{QStringLiteral("{decimal}."), 0, 3}));
    EXPECT_EQ(nested[1].markerFormat, QStringLiteral("{lower-roman})"));
    EXPECT_EQ(nested[1].options, 1u);
    const QVector<TextList> bullet = styleAt(list, 14).textLists();
    ASSERT_EQ(bullet.size(), 1);
    EXPECT_EQ(bullet[0].markerFormat, QStringLiteral("{circle}"));
    EXPECT_EQ(bullet[0].startingItemNumber, 1);
}

TEST(RTFReader, TablesAndNestedTables)
{
    const AttributedString text =
        readBody("\\trowd\\cellx2000\\clcbpat1\\cellx4000\\pard\\intbl a\\cell b1\\par b2\\cell\\row"
                 "\\trowd\\cellx2000\\cellx4000\\pard\\intbl c\\cell\\pard\\intbl\\itap2 n1\\nestcell n2\\nestcell"
                 "{\\*\\nesttableprops\\trowd\\cellx1000\\cellx2000\\nestrow}{\\nonesttables\\par}"
                 "\\pard\\intbl\\itap1\\cell\\row"
                 "\\pard after",
                 "{\\colortbl;\\red0\\green128\\blue0;}");
    EXPECT_EQ(text.string(), QStringLiteral("a\nb1\nb2\nc\nn1\nn2\n\nafter"));
    auto blocks = [&](qsizetype i) { return styleAt(text, i).textBlocks(); };
    ASSERT_EQ(blocks(0).size(), 1);
    const auto table = blocks(0)[0].table;
    ASSERT_TRUE(table);
    EXPECT_EQ(table->numberOfColumns, 2);
    EXPECT_EQ(blocks(2)[0].startingColumn, 1);
    EXPECT_EQ(blocks(2)[0].backgroundColor, Color(0, 128 / 255.0, 0));
    EXPECT_EQ(blocks(5)[0].startingColumn, 1); // b1 and b2 share a cell
    EXPECT_EQ(blocks(8)[0].startingRow, 1);
    ASSERT_EQ(blocks(10).size(), 2);
    EXPECT_EQ(blocks(10)[0].table, table);
    EXPECT_EQ(blocks(10)[0].startingColumn, 1);
    EXPECT_NE(blocks(10)[1].table, table);
    EXPECT_EQ(blocks(13)[1].startingColumn, 1);
    EXPECT_TRUE(blocks(17).isEmpty());
}

TEST(RTFReader, DocumentAttributes)
{
    QVariantMap attributes;
    read("{\\rtf1\\ansi{\\info{\\title T}{\\author Jane \\'c9lise}{\\creatim\\yr2024}}\\paperw11906\\margl1134"
         "\\margr1000\\margt500\\margb600\\viewkind1 x}",
         &attributes);
    EXPECT_EQ(attributes.value(AuthorDocumentAttribute).toString(), QStringLiteral("Jane \u00c9lise"));
    EXPECT_EQ(attributes.value(PaperSizeDocumentAttribute).toSizeF(), QSizeF(595.3, 792));
    EXPECT_EQ(attributes.value(LeftMarginDocumentAttribute).toDouble(), 56.7);
    EXPECT_EQ(attributes.value(RightMarginDocumentAttribute).toDouble(), 50.0);
    EXPECT_EQ(attributes.value(TopMarginDocumentAttribute).toDouble(), 25.0);
    EXPECT_EQ(attributes.value(BottomMarginDocumentAttribute).toDouble(), 30.0);
    EXPECT_EQ(attributes.value(ViewModeDocumentAttribute).toInt(), 1);
    QVariantMap none;
    read("{\\rtf1 x}", &none);
    EXPECT_TRUE(none.isEmpty());
}
