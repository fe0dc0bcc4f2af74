#include <qlyappkit/platform/xml/XMLElement.h>

#include <sstream>

using namespace qly;

namespace {

std::string saved(const pugi::xml_document& document)
{
    std::ostringstream out;
    document.save(out, "", pugi::format_raw | pugi::format_no_declaration);
    return out.str();
}

} // namespace

TEST(XMLElement, PugiStringConversionsUseUtf8)
{
    const QString text = u"Grüße, 😀 & <tags>"_qs;
    const std::string bytes = toPugiString(text);
    EXPECT_EQ(bytes,
              "Gr\xC3\xBC\xC3\x9F"
              "e, \xF0\x9F\x98\x80 & <tags>");
    EXPECT_EQ(fromPugiString(bytes.c_str()), text);
    EXPECT_EQ(fromPugiString(nullptr), u"");
    EXPECT_EQ(toPugiString(QString()), "");
}

TEST(XMLElement, ValidStringDropsWhatXMLCannotHold)
{
    EXPECT_EQ(xmlValidString(u"a\u0001b\u000Bc\u001F\td\ne\rf"_qs), u"abc\td\ne\rf");
    EXPECT_EQ(xmlValidString(u"x"_qs + QChar(0) + QChar(u'y')), u"xy");
    EXPECT_EQ(xmlValidString(u"\uFFFE\uFFFFok\uFFFD"_qs), u"ok\uFFFD");
    EXPECT_EQ(xmlValidString(u"😀 keeps pairs"_qs), u"😀 keeps pairs");

    const QString loneHigh = u"a"_qs + QChar(0xD83D) + QChar(u'b');
    const QString loneLow = u"a"_qs + QChar(0xDE00) + QChar(u'b');
    const QString reversed = u"a"_qs + QChar(0xDE00) + QChar(0xD83D);
    EXPECT_EQ(xmlValidString(loneHigh), u"ab");
    EXPECT_EQ(xmlValidString(loneLow), u"ab");
    EXPECT_EQ(xmlValidString(reversed), u"a");
    EXPECT_EQ(xmlValidString(u"end"_qs + QChar(0xD83D)), u"end");
    EXPECT_EQ(xmlValidString(u"😀"_qs + QChar(0x7F) + QChar(0x85)), u"😀"_qs + QChar(0x7F) + QChar(0x85));

    const QString clean = QString::fromUtf8("Nothing to drop here");
    EXPECT_TRUE(xmlValidString(clean).isSharedWith(clean));
    EXPECT_EQ(xmlValidString(QString()), u"");
}

TEST(XMLElement, FindsFirstChildElementByName)
{
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string("<root><!--item--><?item pi?>text<item>first<b>bold</b><![CDATA[ & raw]]></item>"
                                     "<item>second</item><empty/><other><item>nested</item></other></root>",
                                     pugi::parse_default | pugi::parse_pi | pugi::parse_comments));
    const pugi::xml_node root = document.child("root");

    const pugi::xml_node item = firstChildElementWithName(root, u"item"_qs);
    ASSERT_TRUE(item);
    EXPECT_EQ(item.type(), pugi::node_element);
    EXPECT_STREQ(item.child_value(), "first");
    EXPECT_EQ(stringValueOfFirstChildElementWithName(root, u"item"_qs), u"firstbold & raw"_qs);

    EXPECT_FALSE(firstChildElementWithName(root, u"missing"_qs));
    EXPECT_EQ(stringValueOfFirstChildElementWithName(root, u"missing"_qs), std::nullopt);
    EXPECT_EQ(stringValueOfFirstChildElementWithName(root, u"empty"_qs), u""_qs); // present but empty
    EXPECT_EQ(stringValueOfFirstChildElementWithName(root, u"other"_qs), u"nested"_qs);
    EXPECT_FALSE(firstChildElementWithName(pugi::xml_node(), u"item"_qs));
    EXPECT_EQ(stringValueOfFirstChildElementWithName(document, u"root"_qs), u"textfirstbold & rawsecondnested"_qs);
}

TEST(XMLElement, AddsChildElementsAndAttributes)
{
    pugi::xml_document document;
    pugi::xml_node root = addChildElementWithName(document, u"Settings"_qs, QString());
    ASSERT_TRUE(root);
    EXPECT_FALSE(root.first_child());

    const QString value = u"a < b & \"c\" — ünï 😀"_qs;
    const pugi::xml_node name = addChildElementWithName(root, u"Name"_qs, value);
    ASSERT_TRUE(name);
    addChildElementWithName(root, u"Name"_qs, u"second"_qs);
    EXPECT_EQ(stringValueOfFirstChildElementWithName(root, u"Name"_qs), value);
    EXPECT_FALSE(addChildElementWithName(pugi::xml_node(), u"Name"_qs, value));
    EXPECT_FALSE(addChildElementWithName(name.first_child(), u"Inner"_qs, value)); // a text node

    EXPECT_TRUE(addAttributeWithName(root, u"Size"_qs, u"12.0"_qs));
    addAttributeWithName(root, u"Size"_qs, u"14.0"_qs);
    addAttributeWithName(root, u"Title"_qs, u"Ça & <co>"_qs);
    EXPECT_EQ(std::distance(root.attributes_begin(), root.attributes_end()), 2);
    EXPECT_STREQ(root.attribute("Size").value(), "14.0");
    EXPECT_FALSE(addAttributeWithName(name.first_child(), u"Size"_qs, u"1"_qs));

    // What was added survives saving and parsing.
    pugi::xml_document reread;
    ASSERT_TRUE(reread.load_string(saved(document).c_str()));
    const pugi::xml_node settings = reread.child("Settings");
    EXPECT_EQ(stringValueOfFirstChildElementWithName(settings, u"Name"_qs), value);
    EXPECT_EQ(fromPugiString(settings.attribute("Title").value()), u"Ça & <co>"_qs);
}

TEST(XMLElement, CDATAElements)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("root");
    const QString rtf = u"{\\rtf1\\ansi <not a tag> & ]] > done}"_qs;
    const pugi::xml_node element = appendElementWithCDATA(root, u"RTF"_qs, rtf);
    ASSERT_TRUE(element);
    ASSERT_TRUE(element.first_child());
    EXPECT_EQ(element.first_child().type(), pugi::node_cdata);
    EXPECT_FALSE(element.first_child().next_sibling());
    EXPECT_EQ(stringValueOfNode(element), rtf);

    const pugi::xml_node empty = appendElementWithCDATA(root, u"Empty"_qs, QString());
    ASSERT_TRUE(empty.first_child());
    EXPECT_EQ(empty.first_child().type(), pugi::node_cdata);
    EXPECT_STREQ(empty.first_child().value(), "");

    appendElementWithCDATA(root, u"Tricky"_qs, u"a]]>b"_qs);
    EXPECT_FALSE(appendElementWithCDATA(pugi::xml_node(), u"RTF"_qs, rtf));

    const std::string text = saved(document);
    EXPECT_NE(text.find("<RTF><![CDATA[{\\rtf1\\ansi <not a tag> & ]] > done}]]></RTF>"), std::string::npos) << text;
    EXPECT_NE(text.find("<Empty><![CDATA[]]></Empty>"), std::string::npos) << text;

    pugi::xml_document reread;
    ASSERT_TRUE(reread.load_string(text.c_str()));
    const pugi::xml_node readRoot = reread.child("root");
    EXPECT_EQ(stringValueOfFirstChildElementWithName(readRoot, u"RTF"_qs), rtf);
    EXPECT_EQ(stringValueOfFirstChildElementWithName(readRoot, u"Empty"_qs), u""_qs);
    EXPECT_EQ(stringValueOfFirstChildElementWithName(readRoot, u"Tricky"_qs), u"a]]>b"_qs);
}

TEST(XMLElement, StringValueOfDeeplyNestedElements)
{
    // 200,000 levels, each holding one letter before and one after its child: the text is collected in
    // document order without recursing on the depth.
    constexpr int depth = 200'000;
    std::string xml;
    std::string expectedBefore, expectedAfter;
    xml.reserve(size_t(depth) * 16);
    for (int i = 0; i < depth; ++i) {
        const char letter = char('a' + i % 26);
        xml += "<e>";
        xml += letter;
        expectedBefore += letter;
    }
    xml += "<![CDATA[middle]]>";
    for (int i = depth - 1; i >= 0; --i) {
        const char letter = char('A' + i % 26);
        xml += letter;
        xml += "</e>";
        expectedAfter += letter;
    }
    pugi::xml_document document;
    ASSERT_TRUE(document.load_buffer(xml.data(), xml.size()));
    const QString value = stringValueOfNode(document.document_element());
    EXPECT_EQ(value, QString::fromStdString(expectedBefore + "middle" + expectedAfter));
    EXPECT_EQ(stringValueOfNode(document), value);

    // A node's value ends with its own subtree, not with what follows it.
    pugi::xml_document siblings;
    ASSERT_TRUE(siblings.load_string("<r><a><b>1</b><c/></a><d>2</d></r>"));
    EXPECT_EQ(stringValueOfNode(siblings.child("r").child("a")), u"1"_qs);
    EXPECT_EQ(stringValueOfNode(siblings.child("r").child("a").child("c")), u""_qs);
    EXPECT_EQ(stringValueOfNode(siblings.child("r")), u"12"_qs);
}
