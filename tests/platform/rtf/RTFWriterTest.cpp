// The shape of the RTF the writer produces: the extended passes search it for exact text.
#include "RTFTestSupport.h"

#include <QSizeF>
#include <limits>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/TextAttachment.h>

using namespace qly;
using namespace qly::rtftest;

namespace {

Attributes fontAttributes(const Font& font) { return {{FontAttributeName, QVariant::fromValue(font)}}; }

} // namespace

TEST(RTFWriter, HeaderTablesAndPageControlsComeInOrder)
{
    AttributedString text(QStringLiteral("One "), fontAttributes(Font::fromFamily(QStringLiteral("Times"), 12)));
    Attributes bold = fontAttributes(Font::fromFamily(QStringLiteral("Helvetica"), 14, BoldFontMask));
    bold.insert(ForegroundColorAttributeName, QVariant::fromValue(Color(1, 0, 0)));
    text.append(QStringLiteral("two"), bold);
    const QVariantMap page{
        {PaperSizeDocumentAttribute, QSizeF(612, 792)}, {LeftMarginDocumentAttribute, 90.0},
        {RightMarginDocumentAttribute, 90.0},           {TopMarginDocumentAttribute, 72.0},
        {BottomMarginDocumentAttribute, 72.0},          {AuthorDocumentAttribute, QStringLiteral("Ann")}};
    const QByteArray rtf = write(text, page);
    EXPECT_TRUE(rtf.startsWith("{\\rtf1\\ansi\\ansicpg1252\\cocoartf")) << rtf.constData();
    EXPECT_TRUE(rtf.contains("\\deff0\n{\\fonttbl")) << rtf.constData();
    EXPECT_TRUE(rtf.endsWith("}"));
    // Fonts in order of first use, each with family, charset and face name.
    EXPECT_TRUE(rtf.contains("{\\fonttbl\\f0\\froman\\fcharset0 Times;\\f1\\fswiss\\fcharset0 Helvetica;}"))
        << rtf.constData();
    EXPECT_TRUE(rtf.contains("{\\colortbl;\\red255\\green255\\blue255;\\red255\\green0\\blue0;}"));
    EXPECT_TRUE(rtf.contains("{\\info\n{\\author Ann}}"));
    EXPECT_TRUE(rtf.contains("\\paperw12240\\paperh15840\\margl1800\\margr1800\\margt1440\\margb1440\\viewkind0\n"));
    const qsizetype fonts = rtf.indexOf("{\\fonttbl"), colors = rtf.indexOf("{\\colortbl"),
                    view = rtf.indexOf("\\viewkind0"), pard = rtf.indexOf("\\pard");
    EXPECT_LT(fonts, colors);
    EXPECT_LT(colors, view);
    EXPECT_LT(view, pard);
    // The first text carries its font and size explicitly.
    EXPECT_TRUE(rtf.contains("\\f0\\fs24\\cf0 One \\f1\\fs28\\b\\cf2 two}")) << rtf.constData();

    // Without document attributes no page control is written (the extended writer adds defaults).
    const QByteArray plain = write(text);
    EXPECT_FALSE(plain.contains("\\paperw"));
    EXPECT_FALSE(plain.contains("\\margl"));
    EXPECT_FALSE(plain.contains("\\info"));
    EXPECT_TRUE(plain.contains("\\viewkind0"));
}

TEST(RTFWriter, BreaksAndCharactersOutsideAsciiHaveTheirExactForms)
{
    const AttributedString text(QStringLiteral("a\nb\u2028c\u00e9\u4e2d\U0001F600\td\fe\\{}\r\nf"));
    const QByteArray rtf = write(text);
    for (char c : rtf)
        ASSERT_LT(static_cast<unsigned char>(c), 0x80);
    EXPECT_TRUE(rtf.contains("a\\\nb\\uc0\\u8232 c\\uc0\\u233 \\uc0\\u20013 \\uc0\\u55357 \\uc0\\u56832 \\tab d\\page e"
                             "\\\\\\{\\}\\\nf}"))
        << rtf.constData();
    // The trailing blank of "\uN " is always there, so a following blank is text.
    EXPECT_TRUE(write(AttributedString(QStringLiteral("\u00e9 x"))).contains("\\uc0\\u233  x"));
}

TEST(RTFWriter, ParagraphControlsListsLinksTablesAndBackgrounds)
{
    ParagraphStyle style;
    style.setAlignment(RightTextAlignment);
    style.setHeadIndent(36);
    style.setFirstLineHeadIndent(18);
    style.setTailIndent(-10);
    style.setParagraphSpacingBefore(6);
    style.setParagraphSpacing(12);
    style.setLineHeightMultiple(1.5);
    style.setTabStops({TextTab{CenterTextAlignment, 100}, TextTab{RightTextAlignment, 200}});
    style.setTextLists({TextList{QStringLiteral("{decimal}."), 0, 1}});
    Attributes a{{ParagraphStyleAttributeName, QVariant::fromValue(style)},
                 {BackgroundColorAttributeName, QVariant::fromValue(Color(0, 0, 1))}};
    AttributedString text(QStringLiteral("\t1.\titem\n"), a);
    a.insert(LinkAttributeName, QStringLiteral("https://example.com/x"));
    text.append(QStringLiteral("linked"), a);
    const QByteArray rtf = write(text);
    EXPECT_TRUE(rtf.contains("\\pard\\tqc\\tx2000\\tqr\\tx4000\\li720\\fi-360\\ri200\\sb120\\sa240\\sl360\\slmult1\\qr"
                             "\\ls1\\ilvl0\n"))
        << rtf.constData();
    EXPECT_TRUE(rtf.contains("{\\leveltext\\'02\\'00.;}")) << rtf.constData();
    EXPECT_TRUE(rtf.contains("{\\listtext\\tab 1.\\tab }")) << rtf.constData();
    EXPECT_TRUE(rtf.contains("{\\field{\\*\\fldinst{HYPERLINK \"https://example.com/x\"}}{\\fldrslt "))
        << rtf.constData();
    EXPECT_TRUE(rtf.contains("\\cb2")) << rtf.constData();

    ParagraphStyle cell;
    auto table = std::make_shared<TextTable>();
    table->numberOfColumns = 2;
    TextBlock left{table, 0, 1, 0, 1, 100, Color(1, 1, 1, 0)};
    TextBlock right{table, 0, 1, 1, 1, 0, Color(0, 1, 0)};
    cell.setTextBlocks({left});
    AttributedString cells(QStringLiteral("L\n"), {{ParagraphStyleAttributeName, QVariant::fromValue(cell)}});
    cell.setTextBlocks({right});
    cells.append(QStringLiteral("R\n"), {{ParagraphStyleAttributeName, QVariant::fromValue(cell)}});
    const QByteArray tableRTF = write(cells);
    EXPECT_TRUE(
        tableRTF.contains("\\trowd\\trgaph108\\trleft-108\\clwWidth2000\\clftsWidth3\\cellx2000\\clcbpat2\\cellx6320"))
        << tableRTF.constData();
    EXPECT_TRUE(tableRTF.contains("\\intbl\\itap1\n")) << tableRTF.constData();
    EXPECT_TRUE(tableRTF.contains("L\\cell")) << tableRTF.constData();
    EXPECT_TRUE(tableRTF.contains("R\\cell\\row")) << tableRTF.constData();
}

TEST(RTFWriter, AttachmentsAndRangesOutsideTheTextWriteNothing)
{
    AttributedString text(QStringLiteral("a"));
    text.append(QString(QChar(AttachmentCharacter)),
                {{AttachmentAttributeName, QVariant::fromValue(TextAttachment(QStringLiteral("x.png"), "data"))}});
    text.append(AttributedString(QStringLiteral("b")));
    const AttributedString back = read(write(text));
    EXPECT_EQ(back.string(), QStringLiteral("ab"));

    EXPECT_EQ(read(RTFFromRange(text, Range{1, 100}, {})).string(), QStringLiteral("b"));
    EXPECT_EQ(read(RTFFromRange(text, Range{-5, 2}, {})).string(), QString());
    EXPECT_EQ(read(RTFFromRange(AttributedString(), Range{0, 0}, {})).string(), QString());
}

TEST(RTFWriter, MeasuresNoDocumentHoldsAreWrittenSaturated)
{
    // NaN gives 0; infinities and values past what an RTF parameter holds saturate, so the text reads
    // back with the largest values the reader keeps rather than with wrapped ones.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    ParagraphStyle style;
    style.setHeadIndent(1e300);
    style.setFirstLineHeadIndent(-infinity);
    style.setTailIndent(nan);
    style.setParagraphSpacing(infinity);
    style.setLineHeightMultiple(1e12);
    style.setTabStops({TextTab{LeftTextAlignment, 1e40}});
    Attributes attributes = fontAttributes(Font::fromFamily(QStringLiteral("Times"), infinity));
    attributes.insert(ParagraphStyleAttributeName, QVariant::fromValue(style));
    attributes.insert(BaselineOffsetAttributeName, -infinity);
    attributes.insert(KernAttributeName, nan);
    attributes.insert(ForegroundColorAttributeName, QVariant::fromValue(Color(nan, infinity, -infinity)));
    const QVariantMap page{{PaperSizeDocumentAttribute, QSizeF(infinity, 1e300)}, {LeftMarginDocumentAttribute, nan}};
    const QByteArray rtf = write(AttributedString(QStringLiteral("x"), attributes), page);
    EXPECT_FALSE(rtf.contains("-2147483648")) << rtf.toStdString();
    EXPECT_TRUE(rtf.contains("\\red0\\green255\\blue0;")) << rtf.toStdString();

    const AttributedString back = read(rtf);
    ASSERT_EQ(back.string(), QStringLiteral("x"));
    EXPECT_GE(back.attribute(FontAttributeName, 0).value<Font>().pointSize(), 1000);
    const ParagraphStyle backStyle = back.attribute(ParagraphStyleAttributeName, 0).value<ParagraphStyle>();
    EXPECT_GE(backStyle.headIndent(), 1000);
    EXPECT_LT(backStyle.firstLineHeadIndent(), backStyle.headIndent());
    EXPECT_EQ(backStyle.tailIndent(), 0);
    EXPECT_GE(backStyle.paragraphSpacing(), 1000);
}

// Word processors take a font table name as a family: faces of one family share an entry, each
// entry has its family class, and the traits come back from \b and \i.
TEST(RTFWriter, FontsAreFamiliesWithTheirClassAndTraitsComeBack)
{
    struct Case {
        const char* face;
        double size;
    };
    const Case cases[] = {{"Times", 12},           {"Times-Bold", 12},   {"Times-Italic", 13},
                          {"Times-BoldItalic", 9}, {"Courier-Bold", 10}, {"Helvetica-Oblique", 11},
                          {"Zapfino", 20}};
    AttributedString text;
    for (const Case& c : cases)
        text.append(QStringLiteral("w%1 ").arg(text.length()),
                    fontAttributes(Font(QString::fromLatin1(c.face), c.size)));
    const QByteArray rtf = write(text);
    EXPECT_TRUE(rtf.contains("{\\fonttbl\\f0\\froman\\fcharset0 Times;\\f1\\fmodern\\fcharset0 Courier;"
                             "\\f2\\fswiss\\fcharset0 Helvetica;\\f3\\fnil\\fcharset0 Zapfino;}"))
        << rtf.constData();
    EXPECT_FALSE(rtf.contains("-Bold")) << rtf.constData();
    const AttributedString back = read(rtf);
    ASSERT_EQ(back.string(), text.string());
    for (qsizetype i = 0; i < text.length(); ++i) {
        const Font expected = text.attribute(FontAttributeName, i).value<Font>();
        const Font actual = back.attribute(FontAttributeName, i).value<Font>();
        EXPECT_EQ(actual.fontName(), expected.fontName()) << "at " << i;
        EXPECT_EQ(actual.pointSize(), expected.pointSize()) << "at " << i;
        EXPECT_EQ(actual.traits(), expected.traits()) << "at " << i;
    }
}

// A list item's marker goes in {\listtext …} whether it has the leading tab or not; text that only
// looks like a marker (it holds a blank, or the paragraph is outside lists) stays body text. The
// reader reads the marker back as text either way.
TEST(RTFWriter, ListMarkersGoInListTextInBothForms)
{
    ParagraphStyle style;
    style.setTextLists({TextList{QStringLiteral("{decimal}."), 0, 1}});
    const Attributes item{{ParagraphStyleAttributeName, QVariant::fromValue(style)}};
    struct Case {
        QString text;
        bool inList;
        const char* expected; // in the RTF
        const char* absent;
    };
    const Case cases[] = {
        {QStringLiteral("\t1.\tOne\n"), true, "{\\listtext\\tab 1.\\tab }One", nullptr},
        {QStringLiteral("1.\tOne\n"), true, "{\\listtext 1.\\tab }One", "\n1.\\tab"},
        {QStringLiteral(" 2.\tTwo\n"), true, "{\\listtext  2.\\tab }Two", "\n 2.\\tab"},
        {QStringLiteral("\u2022\tFirst bullet\n"), true, "{\\listtext\\uc0\\u8226 \\tab }First bullet", nullptr},
        {QStringLiteral("Not a\tmarker\n"), true, "Not a\\tab marker", "listtext"},
        {QStringLiteral("1.\tOutside\n"), false, "1.\\tab Outside", "listtext"},
    };
    for (const Case& c : cases) {
        const AttributedString text(c.text, c.inList ? item : Attributes{});
        const QByteArray rtf = write(text);
        EXPECT_TRUE(rtf.contains(c.expected)) << c.text.toStdString() << "\n" << rtf.constData();
        if (c.absent) {
            EXPECT_FALSE(rtf.contains(c.absent)) << c.text.toStdString() << "\n" << rtf.constData();
        }
        EXPECT_EQ(read(rtf).string(), c.text);
    }
}
