#include <qlyappkit/interchange/xml/RichTextElement.h>

#include <QBuffer>
#include <QImage>
#include <sstream>

#include "support/RichTextAssertions.h"

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/TextAttachment.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>

using namespace qly;

namespace {

AttributedString styledText()
{
    AttributedString text(
        QStringLiteral("Bold "),
        {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Helvetica"), 12, BoldFontMask))}});
    text.append(
        QStringLiteral("italic \u00e9t\u00e9 "),
        {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 14, ItalicFontMask))}});
    text.append(QStringLiteral("colour \u4e2d\u6587 \U0001F600 ]]> <&>\n"),
                {{ForegroundColorAttributeName, QVariant::fromValue(Color(0.1, 0.2, 0.3, 0.5))}});
    return text;
}

// Serialises and parses the document again, as a file round trip would.
AttributedString throughSavedXML(const AttributedString& text, const QString& name)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("Root");
    XQXMLElementFromAttributedString(root, text, name);
    std::ostringstream out;
    document.save(out);
    pugi::xml_document reread;
    if (!reread.load_string(out.str().c_str()))
        return AttributedString(QStringLiteral("<unparseable>"));
    return XQAttributedStringFromXMLElement(reread.document_element().child(name.toUtf8().constData()));
}

} // namespace

TEST(RichTextElement, RoundTripThroughXML)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("Root");
    const pugi::xml_node element = XQXMLElementFromAttributedString(root, styledText());
    ASSERT_TRUE(element);
    EXPECT_STREQ(element.name(), "RTF");
    EXPECT_EQ(element.first_child().type(), pugi::node_cdata);
    EXPECT_FALSE(element.first_child().next_sibling());

    // The rich text travels as RTF: characters exact, fonts by name, size and traits, colours to 1/255.
    EXPECT_TRUE(richtext::sameRichText(throughSavedXML(styledText(), QStringLiteral("RTF")), styledText()));
    EXPECT_TRUE(richtext::sameRichText(throughSavedXML(styledText(), QStringLiteral("Notes")), styledText()));
    EXPECT_TRUE(throughSavedXML(AttributedString(), QStringLiteral("RTF")).isEmpty());
    EXPECT_EQ(QByteArray(element.first_child().value()).left(6), QByteArray("{\\rtf1"));

    EXPECT_FALSE(XQXMLElementFromAttributedString(pugi::xml_node(), styledText()));
}

TEST(RichTextElement, UnreadableContentsGiveEmptyText)
{
    const char* const broken[] = {
        "<RTF/>",
        "<RTF><![CDATA[]]></RTF>",
        "<RTF><![CDATA[%%% not base64 %%%]]></RTF>",
        "<RTF><![CDATA[AAAA]]></RTF>",
        "<RTF><![CDATA[\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9]]></RTF>",
    };
    for (const char* xml : broken) {
        SCOPED_TRACE(xml);
        pugi::xml_document document;
        ASSERT_TRUE(document.load_string(xml));
        EXPECT_TRUE(XQAttributedStringFromXMLElement(document.document_element()).isEmpty());
    }
    EXPECT_TRUE(XQAttributedStringFromXMLElement(pugi::xml_node()).isEmpty());

    // RTF from elsewhere, not in CDATA, still reads.
    pugi::xml_document foreign;
    ASSERT_TRUE(foreign.load_string("<RTF>{\\rtf1\\ansi plain RTF}</RTF>"));
    EXPECT_EQ(XQAttributedStringFromXMLElement(foreign.document_element()).string(), QStringLiteral("plain RTF"));

    // A damaged copy of a good element gives what was read up to the damage.
    pugi::xml_document document;
    pugi::xml_node element = XQXMLElementFromAttributedString(document.append_child("Root"), styledText());
    std::string stored = element.first_child().value();
    stored.resize(stored.rfind("colour"));
    element.first_child().set_value(stored.c_str());
    EXPECT_EQ(XQAttributedStringFromXMLElement(element).string(), QStringLiteral("Bold italic \u00e9t\u00e9 "));
}

TEST(RichTextElement, KeepsPicturesAndNotes)
{
    QImage image(6, 4, QImage::Format_RGB32);
    for (int i = 0; i < 24; ++i)
        image.setPixel(i % 6, i / 6, qRgb(i * 10, 255 - i * 10, i * 3));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(image.save(&buffer, "PNG"));

    AttributedString text(QStringLiteral("A figure "));
    text.append(QString(QChar(AttachmentCharacter)),
                {{AttachmentAttributeName, QVariant::fromValue(TextAttachment(QStringLiteral("plan.png"), png))}});
    text.append(QStringLiteral(" and a note"), {{XQFootnoteAttributeName, true}});
    pugi::xml_document document;
    const pugi::xml_node element = XQXMLElementFromAttributedString(document.append_child("Root"), text);
    EXPECT_TRUE(QByteArray(element.first_child().value()).contains("\\pngblip "));

    const AttributedString read = throughSavedXML(text, QStringLiteral("RTF"));
    ASSERT_EQ(read.string(), text.string());
    const TextAttachment attachment = read.attribute(AttachmentAttributeName, 9).value<TextAttachment>();
    EXPECT_EQ(attachment.fileName(), QStringLiteral("plan.png"));
    EXPECT_EQ(attachment.contents(), png);
    EXPECT_EQ(read.attribute(XQFootnoteAttributeName, 12), QVariant(true));
    EXPECT_FALSE(read.attribute(XQFootnoteAttributeName, 3).isValid());
}
