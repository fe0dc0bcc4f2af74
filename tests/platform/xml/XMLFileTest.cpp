#include "support/TestFiles.h"
#include <qlyappkit/platform/xml/XMLElement.h>

using namespace qly::testfiles;
#include <qlyappkit/platform/xml/XMLFile.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

using namespace qly;

TEST(XMLFile, WritesIndentedUtf8AtomicallyAndReadsBack)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(u"settings.xml"_qs);
    writeFileBytes(path, "old contents that must be replaced entirely");

    pugi::xml_document document;
    pugi::xml_node root = addChildElementWithName(document, u"Settings"_qs, QString());
    addAttributeWithName(root, u"Version"_qs, u"2"_qs);
    addChildElementWithName(root, u"Title"_qs, u"Ünïcödé & more"_qs);
    appendElementWithCDATA(root, u"RTF"_qs, u"{\\rtf1 x}"_qs);

    Error error;
    ASSERT_TRUE(writeXMLDocumentAtomically(document, path, &error));
    const QByteArray bytes = readFileBytes(path);
    EXPECT_TRUE(bytes.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Settings Version=\"2\">\n"))
        << bytes.toStdString();
    EXPECT_TRUE(bytes.contains("\n    <Title>\xC3\x9Cn\xC3\xAF"
                               "c\xC3\xB6"
                               "d\xC3\xA9 &amp; more</Title>\n"))
        << bytes.toStdString();
    EXPECT_TRUE(bytes.contains("\n    <RTF><![CDATA[{\\rtf1 x}]]></RTF>\n")) << bytes.toStdString();
    EXPECT_FALSE(bytes.contains("old contents"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System), QStringList{u"settings.xml"_qs});

    pugi::xml_document reread;
    ASSERT_TRUE(loadXMLDocument(path, reread, false));
    const pugi::xml_node settings = reread.child("Settings");
    EXPECT_STREQ(settings.attribute("Version").value(), "2");
    EXPECT_EQ(stringValueOfFirstChildElementWithName(settings, u"Title"_qs), u"Ünïcödé & more"_qs);
    EXPECT_EQ(stringValueOfFirstChildElementWithName(settings, u"RTF"_qs), u"{\\rtf1 x}"_qs);
}

TEST(XMLFile, KeepsTheDocumentsOwnDeclaration)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"declared.xml"_qs);
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string("<?xml version=\"1.0\" standalone=\"yes\"?><a/>",
                                     pugi::parse_default | pugi::parse_declaration));
    ASSERT_TRUE(writeXMLDocumentAtomically(document, path));
    const QByteArray bytes = readFileBytes(path);
    EXPECT_EQ(bytes.count("<?xml"), 1);
    EXPECT_TRUE(bytes.startsWith("<?xml version=\"1.0\" standalone=\"yes\"?>")) << bytes.toStdString();
}

TEST(XMLFile, WriteFailureLeavesNothingBehind)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"missing folder/out.xml"_qs);
    pugi::xml_document document;
    document.append_child("a");

    Error error;
    EXPECT_FALSE(writeXMLDocumentAtomically(document, path, &error));
    EXPECT_EQ(error.domain, XQXMLFileErrorDomain);
    EXPECT_EQ(error.code, XQXMLFileCannotOpenError);
    EXPECT_TRUE(error.localizedDescription.contains(u"out.xml"_qs)) << error.localizedDescription.toStdString();
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
    EXPECT_FALSE(writeXMLDocumentAtomically(document, path)); // no error object wanted: still no crash
}

TEST(XMLFile, LoadReportsMissingAndMalformedFiles)
{
    QTemporaryDir dir;
    pugi::xml_document document;
    document.append_child("stale");

    EXPECT_EQ(loadXMLDocument(dir.filePath(u"none.xml"_qs), document, false).status, pugi::status_file_not_found);
    EXPECT_FALSE(document.first_child()); // the old contents never survive a load

    const QString broken = dir.filePath(u"broken.xml"_qs);
    writeFileBytes(broken, "<root><open></root>");
    const pugi::xml_parse_result result = loadXMLDocument(broken, document, false);
    EXPECT_FALSE(result);
    EXPECT_EQ(result.status, pugi::status_end_element_mismatch);
    EXPECT_EQ(result.offset, 14);

    writeFileBytes(broken, "");
    EXPECT_EQ(loadXMLDocument(broken, document, false).status, pugi::status_no_document_element);

    EXPECT_EQ(loadXMLDocument(dir.path(), document, false).status, pugi::status_io_error); // a folder
}

TEST(XMLFile, LoadKeepsWhitespaceOnlyTextWhenAsked)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"space.xml"_qs);
    writeFileBytes(path, "<a>\n  <b> x </b>\n  <c>  </c>\n</a>");

    pugi::xml_document document;
    ASSERT_TRUE(loadXMLDocument(path, document, false));
    EXPECT_EQ(document.child("a").first_child().type(), pugi::node_element);
    EXPECT_STREQ(document.child("a").child("b").child_value(), " x "); // text with content is never trimmed
    EXPECT_FALSE(document.child("a").child("c").first_child());

    ASSERT_TRUE(loadXMLDocument(path, document, true));
    EXPECT_EQ(document.child("a").first_child().type(), pugi::node_pcdata);
    EXPECT_STREQ(document.child("a").child("c").child_value(), "  ");
}

TEST(XMLFile, LoadsDeeplyNestedDocuments)
{
    // Reading and freeing a document 200,000 elements deep uses no stack per level.
    QTemporaryDir dir;
    const QString path = dir.filePath(u"deep.xml"_qs);
    constexpr int depth = 200'000;
    QByteArray bytes;
    for (int i = 0; i < depth; ++i)
        bytes += "<e>";
    bytes += "bottom";
    for (int i = 0; i < depth; ++i)
        bytes += "</e>";
    writeFileBytes(path, bytes);

    pugi::xml_document document;
    ASSERT_TRUE(loadXMLDocument(path, document, false));
    int levels = 0;
    pugi::xml_node node = document.document_element();
    for (; node.type() == pugi::node_element; node = node.first_child())
        ++levels;
    EXPECT_EQ(levels, depth);
    EXPECT_STREQ(node.value(), "bottom");
}
