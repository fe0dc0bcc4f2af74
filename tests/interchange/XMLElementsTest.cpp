// The XML elements of stored values: each written element read back gives the value, through a saved
// and parsed document; the exact attribute forms; and the fallbacks of each reader.
#include <sstream>

#include <qlyappkit/interchange/xml/XMLElements.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/xml/XMLElement.h>

using namespace qly;

namespace {

// The document saved and parsed again, as a file round trip would; returns the root's first element.
pugi::xml_node reparsed(const pugi::xml_document& document, pugi::xml_document& into)
{
    std::ostringstream out;
    document.save(out);
    EXPECT_TRUE(into.load_string(out.str().c_str()));
    return into.document_element().first_child();
}

pugi::xml_node parsedElement(pugi::xml_document& document, const char* xml)
{
    EXPECT_TRUE(document.load_string(xml)) << xml;
    return document.document_element();
}

} // namespace

TEST(XMLElements, FontsAndTheirFallbacks)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("Root");
    const pugi::xml_node font =
        XQXMLElementFromFont(root, Font::fromFamily(QStringLiteral("Courier"), 13.5, BoldFontMask));
    EXPECT_STREQ(font.name(), "Font");
    EXPECT_STREQ(font.attribute("Name").value(), "Courier-Bold");
    EXPECT_STREQ(font.attribute("Size").value(), "13.5");
    const pugi::xml_node missing = XQXMLElementFromFont(root, std::nullopt, QStringLiteral("Heading"));
    EXPECT_STREQ(missing.name(), "Heading");
    EXPECT_STREQ(missing.attribute("Name").value(), "Helvetica");
    EXPECT_STREQ(missing.attribute("Size").value(), "12.0");

    pugi::xml_document again;
    const Font read = XQFontFromXMLElement(reparsed(document, again));
    EXPECT_EQ(read.familyName(), QStringLiteral("Courier"));
    EXPECT_EQ(read.fontName(), QStringLiteral("Courier-Bold"));
    EXPECT_EQ(read.pointSize(), 13.5);

    const struct {
        const char* xml;
        double size;
    } fallbacks[] = {
        {"<Font Name=\"Times\" Size=\"0\"/>", 12},
        {"<Font Name=\"Times\"/>", 12},
        {"<Font Name=\"Times\" Size=\"-4\"/>", 12},
        {"<Font Name=\"No Such Face Anywhere\" Size=\"9\"/>", 9},
        {"<Font Size=\"20\"/>", 20},
    };
    for (const auto& f : fallbacks) {
        SCOPED_TRACE(f.xml);
        pugi::xml_document d;
        const Font font = XQFontFromXMLElement(parsedElement(d, f.xml));
        EXPECT_TRUE(font.isValid());
        EXPECT_EQ(font.pointSize(), f.size);
    }
    pugi::xml_document d;
    EXPECT_EQ(XQFontFromXMLElement(parsedElement(d, "<Font Name=\"No Such Face Anywhere\" Size=\"9\"/>")),
              Font::userFont(9));
    EXPECT_EQ(XQFontFromXMLElement(pugi::xml_node()), Font::userFont(12));
}

TEST(XMLElements, OutlineExpandedState)
{
    pugi::xml_document document;
    const QList<qint64> ids{3, 17, -2, 9000000000LL, 3};
    const pugi::xml_node element = XQXMLElementFromOutlineExpandedState(document.append_child("Root"), ids);
    EXPECT_STREQ(element.name(), "ExpandedState");
    EXPECT_STREQ(element.first_child().name(), "ItemID");
    EXPECT_STREQ(element.first_child().text().get(), "3");
    pugi::xml_document again;
    EXPECT_EQ(XQOutlineExpandedStateFromXMLElement(reparsed(document, again)), ids);
    EXPECT_TRUE(XQOutlineExpandedStateFromXMLElement(pugi::xml_node()).isEmpty());
    pugi::xml_document d;
    EXPECT_EQ(XQOutlineExpandedStateFromXMLElement(
                  parsedElement(d, "<S><ItemID>4</ItemID>text<ItemID>x</ItemID><Other> 8 </Other></S>")),
              (QList<qint64>{4, 0, 8}));
}

TEST(XMLElements, PrintSettingsRoundTripAndDefaults)
{
    PrintInfo info;
    info.setPaperName(QStringLiteral("A4"));
    info.setPaperSize(QSizeF(595.5, 842));
    info.setLeftMargin(36.25);
    info.setRightMargin(40);
    info.setTopMargin(0);
    info.setBottomMargin(90.5);
    info.setOrientation(PrintOrientation::Landscape);
    info.setHorizontalPagination(PrintPagination::Clip);
    info.setVerticalPagination(PrintPagination::Fit);
    info.setScaleFactor(0.75);
    info.setHorizontallyCentered(false);
    info.setVerticallyCentered(true);
    info.setCollates(false);
    info.setReverseOrder(true);
    info.setPrintsHeaderAndFooter(true);
    info.setPagesAcross(2);
    info.setPagesDown(3);
    pugi::xml_document document;
    const pugi::xml_node element = XQXMLElementFromPrintInfo(document.append_child("Root"), info);
    const struct {
        const char* attribute;
        const char* value;
    } forms[] = {
        {"PaperSize", "595.5,842.0"},
        {"LeftMargin", "36.25"},
        {"TopMargin", "0.0"},
        {"PaperType", "A4"},
        {"Orientation", "Landscape"},
        {"HorizontalPagination", "Clip"},
        {"VerticalPagination", "Fit"},
        {"ScaleFactor", "0.75"},
        {"HorizontallyCentered", "No"},
        {"ReverseOrder", "Yes"},
        {"PrintHeaderAndFooter", "Yes"},
        {"PagesAcross", "2"},
        {"PagesDown", "3"},
    };
    for (const auto& f : forms)
        EXPECT_STREQ(element.attribute(f.attribute).value(), f.value) << f.attribute;
    pugi::xml_document again;
    EXPECT_EQ(XQPrintInfoFromXMLElement(reparsed(document, again)), info);
    EXPECT_EQ(XQPrintInfoFromXMLElement(pugi::xml_node()), PrintInfo());

    // Missing and unusable values fall back one by one.
    pugi::xml_document d;
    const PrintInfo damaged = XQPrintInfoFromXMLElement(parsedElement(
        d,
        "<PrintSettings PaperType=\"a4\" PaperSize=\"-1,5\" LeftMargin=\"-3\" RightMargin=\"nan\" TopMargin=\"12\" "
        "Orientation=\"landscape\" HorizontalPagination=\"Fit\" VerticalPagination=\"Sideways\" ScaleFactor=\"0\" "
        "Collates=\"YES\" ReverseOrder=\"1\" PagesAcross=\"0\" PagesDown=\"4.0\"/>"));
    PrintInfo expected;
    expected.setPaperName(QStringLiteral("a4"));
    expected.setPaperSize(QSizeF(595, 842)); // the named paper's size
    expected.setTopMargin(12);
    expected.setHorizontalPagination(PrintPagination::Fit);
    expected.setPagesDown(4);
    EXPECT_EQ(damaged, expected);
    pugi::xml_document unknown;
    EXPECT_EQ(XQPrintInfoFromXMLElement(parsedElement(unknown, "<PrintSettings PaperType=\"Napkin\" PaperSize=\"7\"/>"))
                  .paperSize(),
              PrintInfo().paperSize());
}

TEST(XMLElements, TextAttributesAndParagraphStyles)
{
    ParagraphStyle style;
    style.setAlignment(CenterTextAlignment);
    style.setFirstLineHeadIndent(18);
    style.setParagraphSpacing(6);
    const Attributes attributes{
        {FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 14, ItalicFontMask))},
        {ForegroundColorAttributeName, QVariant::fromValue(Color(1, 0, 0))},
        {ParagraphStyleAttributeName, QVariant::fromValue(style)},
    };
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("Root");
    EXPECT_STREQ(XQXMLElementFromTextAttributes(root, attributes).name(), "RTFTextAttributes");
    const pugi::xml_node hex = XQXMLElementWithHexadecimalDataFromTextAttributes(root, attributes);
    EXPECT_STREQ(hex.name(), "TextFormatData");
    EXPECT_TRUE(QByteArray(hex.text().get()).startsWith("7b5c72746631")); // "{\rtf1"
    EXPECT_STREQ(XQXMLElementFromParagraphStyle(root, style).name(), "RTFParagraphStyle");

    pugi::xml_document again;
    pugi::xml_node read = reparsed(document, again);
    for (int i = 0; i < 2; ++i, read = read.next_sibling()) {
        SCOPED_TRACE(read.name());
        const std::optional<Attributes> back =
            i == 0 ? XQTextAttributesFromXMLElement(read) : XQTextAttributesFromHexadecimalDataInXMLElement(read);
        ASSERT_TRUE(back);
        EXPECT_EQ(back->value(FontAttributeName).value<Font>(), attributes.value(FontAttributeName).value<Font>());
        EXPECT_EQ(back->value(ForegroundColorAttributeName).value<Color>(), Color(1, 0, 0));
        EXPECT_EQ(back->value(ParagraphStyleAttributeName).value<ParagraphStyle>().alignment(), CenterTextAlignment);
        EXPECT_EQ(back->value(ParagraphStyleAttributeName).value<ParagraphStyle>().firstLineHeadIndent(), 18);
    }
    const ParagraphStyle readStyle = XQParagraphStyleFromXMLElement(read);
    EXPECT_EQ(readStyle.alignment(), CenterTextAlignment);
    EXPECT_EQ(readStyle.paragraphSpacing(), 6);

    // Fallbacks: nothing for no text or undecodable data, the default style for no style.
    const char* const empty[] = {"<E/>", "<E>zz</E>", "<E>7b5</E>", "<E>41424344</E>"};
    for (const char* xml : empty) {
        SCOPED_TRACE(xml);
        pugi::xml_document d;
        const pugi::xml_node e = parsedElement(d, xml);
        EXPECT_FALSE(XQTextAttributesFromHexadecimalDataInXMLElement(e));
        EXPECT_FALSE(XQTextAttributesFromXMLElement(e));
        EXPECT_EQ(XQParagraphStyleFromXMLElement(e), ParagraphStyle::defaultParagraphStyle());
    }
    pugi::xml_document d;
    EXPECT_EQ(XQParagraphStyleFromXMLElement(XQXMLElementFromTextAttributes(d.append_child("R"), {})),
              ParagraphStyle::defaultParagraphStyle());
}
