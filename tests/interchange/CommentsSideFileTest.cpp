#include "support/TestFiles.h"
#include <qlyappkit/interchange/comments/CommentsSideFile.h>

#include "support/RichTextAssertions.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QUrl>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/xml/XMLElement.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/comments/CommentedText.h>

using namespace qly;

using namespace qly::testfiles;

namespace {

AttributedString richCommentText()
{
    AttributedString text(
        QStringLiteral("Bold "),
        {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Helvetica"), 12, BoldFontMask))}});
    text.append(
        QStringLiteral("italic \u00e9l\u00e8ve "),
        {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 13, ItalicFontMask))}});
    text.append(QStringLiteral("red \u65e5\u672c\u8a9e \U0001F600"),
                {{ForegroundColorAttributeName, QVariant::fromValue(Color(1, 0, 0))}});
    return text;
}

QString attributeOf(const pugi::xml_node& element, const char* name)
{
    const pugi::xml_attribute attribute = element.attribute(name);
    return attribute ? QString::fromUtf8(attribute.value()) : QStringLiteral("<absent>");
}

XQCommentPtr commentAt(const MutableAttributedString& text, qsizetype index, Range* range = nullptr)
{
    return commentFromVariant(text.attribute(XQCommentAttributeName, index, range));
}

// "Alpha beta gamma delta": a comment on Alpha, a collapsed numbered footnote on gamma, and a comment
// without colour on delta.
struct CommentedSample {
    XQCommentPtr comment = XQComment::create(richCommentText());
    XQCommentPtr footnote = XQComment::create(AttributedString(QStringLiteral("See p. 12.")), true);
    XQCommentPtr uncoloured = XQComment::create(AttributedString(QStringLiteral("plain")));
    AttributedString text{QStringLiteral("Alpha beta gamma delta")};

    CommentedSample()
    {
        footnote->setFootnoteNumber(4);
        footnote->setCollapsed(true);
        footnote->setColor(Color(0.25, 0.5, 0.125));
        uncoloured->setColor(std::nullopt);
        text.addAttribute(XQCommentAttributeName, variantFromComment(comment), Range{0, 5});
        text.addAttribute(XQCommentAttributeName, variantFromComment(footnote), Range{11, 5});
        text.addAttribute(XQCommentAttributeName, variantFromComment(uncoloured), Range{17, 5});
    }
};

} // namespace

TEST(CommentsSideFile, XMLRepresentationWritesOptionalAttributesOnlyWhenSet)
{
    EXPECT_FALSE(commentsXMLRepresentation(AttributedString(QStringLiteral("no comments here"))));

    CommentedSample sample;
    sample.comment->setFootnoteNumber(0); // neither 0 nor -1 is written
    const std::unique_ptr<pugi::xml_document> document = commentsXMLRepresentation(sample.text);
    ASSERT_TRUE(document);
    const pugi::xml_node root = document->document_element();
    EXPECT_STREQ(root.name(), "Comments");

    std::vector<pugi::xml_node> elements;
    for (pugi::xml_node child : root.children())
        elements.push_back(child);
    ASSERT_EQ(elements.size(), 3u);
    for (const pugi::xml_node& element : elements)
        EXPECT_STREQ(element.name(), "Comment");

    EXPECT_EQ(attributeOf(elements[0], "ID"), sample.comment->uniqueID());
    EXPECT_EQ(attributeOf(elements[0], "Footnote"), QStringLiteral("<absent>"));
    EXPECT_EQ(attributeOf(elements[0], "Number"), QStringLiteral("<absent>"));
    EXPECT_EQ(attributeOf(elements[0], "Collapsed"), QStringLiteral("<absent>"));
    EXPECT_EQ(attributeOf(elements[0], "Color"), QStringLiteral("0.992 0.929 0.525"));

    EXPECT_EQ(attributeOf(elements[1], "ID"), sample.footnote->uniqueID());
    EXPECT_EQ(attributeOf(elements[1], "Footnote"), QStringLiteral("Yes"));
    EXPECT_EQ(attributeOf(elements[1], "Number"), QStringLiteral("4"));
    EXPECT_EQ(attributeOf(elements[1], "Collapsed"), QStringLiteral("Yes"));
    EXPECT_EQ(attributeOf(elements[1], "Color"), QStringLiteral("0.25 0.5 0.125"));

    EXPECT_EQ(attributeOf(elements[2], "Color"), QStringLiteral("<absent>"));
    EXPECT_EQ(attributeOf(elements[2], "Number"), QStringLiteral("<absent>")); // -1

    // The rich text sits in an "RTF" child as a CDATA section.
    const pugi::xml_node rtf = elements[1].child("RTF");
    ASSERT_TRUE(rtf);
    EXPECT_EQ(rtf.first_child().type(), pugi::node_cdata);
}

TEST(CommentsSideFile, WriteThenReadRoundTrip)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("comments.xml"));
    CommentedSample sample;

    Error error;
    ASSERT_TRUE(writeCommentsToURL(sample.text, path, &error)) << qPrintable(error.localizedDescription);
    EXPECT_TRUE(readFileBytes(path).startsWith("<?xml version=\"1.0\""));

    const std::optional<XQCommentsByID> read = commentsFromURL(path);
    ASSERT_TRUE(read);
    ASSERT_EQ(read->size(), 3);
    for (const XQCommentPtr& original : {sample.comment, sample.footnote, sample.uncoloured}) {
        SCOPED_TRACE(qPrintable(original->string()));
        const XQCommentPtr copy = read->value(original->uniqueID());
        ASSERT_TRUE(copy);
        EXPECT_NE(copy, original);
        EXPECT_EQ(copy->uniqueID(), original->uniqueID());
        EXPECT_TRUE(richtext::sameRichText(copy->text(), original->text()));
        EXPECT_EQ(copy->isFootnote(), original->isFootnote());
        EXPECT_EQ(copy->footnoteNumber(), original->footnoteNumber());
        EXPECT_EQ(copy->isCollapsed(), original->isCollapsed());
        if (original->color()) {
            ASSERT_TRUE(copy->color());
            EXPECT_NEAR(copy->color()->redComponent(), original->color()->redComponent(), 1e-6);
            EXPECT_NEAR(copy->color()->greenComponent(), original->color()->greenComponent(), 1e-6);
            EXPECT_NEAR(copy->color()->blueComponent(), original->color()->blueComponent(), 1e-6);
        }
    }
    // A comment stored without colour takes the default one when read.
    EXPECT_EQ(read->value(sample.uncoloured->uniqueID())->color(), XQComment::defaultCommentColor());

    // Rewriting replaces the file; loading the comments back onto the flattened text restores them.
    AttributedString flattened = attributedStringBySavingCommentAndQuilleryLinkIDsAsLinkAttributes(sample.text, true);
    flattened.removeAttribute(XQCommentAttributeName, Range{0, flattened.length()});
    MutableAttributedString reloaded(flattened);
    loadCommentsFromURL(reloaded, path);
    Range range;
    const XQCommentPtr onGamma = commentAt(reloaded, 12, &range);
    ASSERT_TRUE(onGamma);
    EXPECT_EQ(range, (Range{11, 5}));
    EXPECT_EQ(onGamma->uniqueID(), sample.footnote->uniqueID());
    EXPECT_TRUE(richtext::sameRichText(onGamma->text(), sample.footnote->text()));
    EXPECT_FALSE(reloaded.attribute(LinkAttributeName, 12).isValid());
    EXPECT_TRUE(richtext::sameRichText(commentAt(reloaded, 0)->text(), richCommentText()));
}

TEST(CommentsSideFile, NoCommentsMeansNoFile)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("comments.xml"));
    const AttributedString plain(QStringLiteral("nothing to note"));

    EXPECT_TRUE(writeCommentsToURL(plain, path));
    EXPECT_FALSE(QFileInfo::exists(path));

    CommentedSample sample;
    ASSERT_TRUE(writeCommentsToURL(sample.text, path));
    ASSERT_TRUE(QFileInfo::exists(path));
    // The stale file is removed once the text has no comments left.
    EXPECT_TRUE(writeCommentsToURL(plain, path));
    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList());

    // A folder that does not exist: failure with a reason, nothing created.
    Error error;
    EXPECT_FALSE(writeCommentsToURL(sample.text, dir.filePath(QStringLiteral("missing/comments.xml")), &error));
    EXPECT_FALSE(error.localizedDescription.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("missing"))));
}

TEST(CommentsSideFile, UnreadableFilesGiveNothing)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("comments.xml"));
    EXPECT_FALSE(commentsFromURL(path)); // missing
    EXPECT_FALSE(commentsFromURL(dir.path())); // a folder

    CommentedSample sample;
    ASSERT_TRUE(writeCommentsToURL(sample.text, path));
    const QByteArray good = readFileBytes(path);

    const QList<QByteArray> broken{
        QByteArray(),
        QByteArray("not xml at all <<<"),
        good.left(good.size() / 2), // truncated
        QByteArray("<Notes><Comment ID=\"A\"/></Notes>"), // wrong root
        QByteArray::fromHex("fffe003c0043"),
    };
    for (const QByteArray& contents : broken) {
        SCOPED_TRACE(contents.left(40).toStdString());
        writeFileBytes(path, contents);
        EXPECT_FALSE(commentsFromURL(path));
        // Loading from such a file leaves the text alone.
        MutableAttributedString text(QStringLiteral("abc"), {{LinkAttributeName, QStringLiteral("quillcmt://A")}});
        loadCommentsFromURL(text, path);
        EXPECT_EQ(text.attribute(LinkAttributeName, 0).toString(), QStringLiteral("quillcmt://A"));
    }

    // Children without an ID are skipped; damaged rich text gives an empty text, no rich text keeps the default.
    writeFileBytes(path,
                   "<Comments><Comment Footnote=\"Yes\"/>"
                   "<Comment ID=\"B\" Number=\"x9\" Color=\"1 2\"><RTF><![CDATA[%%% not base64]]></RTF></Comment>"
                   "<Comment ID=\"C\" Collapsed=\"yes\"><RTF><![CDATA[AAAA]]></RTF></Comment>"
                   "<Other ID=\"D\"/></Comments>");
    const std::optional<XQCommentsByID> read = commentsFromURL(path);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->size(), 3);
    const XQCommentPtr b = read->value(QStringLiteral("B"));
    ASSERT_TRUE(b);
    EXPECT_TRUE(b->text().isEmpty());
    EXPECT_EQ(b->footnoteNumber(), 0);
    EXPECT_FALSE(b->color().has_value());
    const XQCommentPtr c = read->value(QStringLiteral("C"));
    ASSERT_TRUE(c);
    EXPECT_TRUE(c->isCollapsed());
    EXPECT_TRUE(c->text().isEmpty());
    EXPECT_TRUE(read->value(QStringLiteral("D")));
}

TEST(CommentsSideFile, LoadingCommentsFromADictionary)
{
    const XQCommentPtr known = XQComment::create(AttributedString(QStringLiteral("known")));
    known->setUniqueID(QStringLiteral("ABCDEF01-2345-6789-ABCD-EF0123456789"));
    // "one two three four five"
    MutableAttributedString text(QStringLiteral("one two three four five"));
    text.addAttribute(LinkAttributeName, QStringLiteral("quillcmt://ABCDEF01-2345-6789-ABCD-EF0123456789"),
                      Range{0, 3});
    text.addAttribute(LinkAttributeName, QStringLiteral("quillcmt://UNKNOWN"), Range{4, 3});
    text.addAttribute(LinkAttributeName, QUrl(QStringLiteral("https://example.com/x")), Range{8, 5});
    text.addAttribute(LinkAttributeName, QStringLiteral("quilllnk://Doc-7"), Range{14, 4});
    text.addAttribute(LinkAttributeName,
                      QVariant(QVariantMap{{QStringLiteral("QuilleryLink"), QStringLiteral("Doc-9")}}), Range{19, 4});

    loadCommentsFromDictionary(text, XQCommentsByID{{known->uniqueID(), known}});

    Range range;
    EXPECT_EQ(commentAt(text, 1, &range), known);
    EXPECT_EQ(range, (Range{0, 3}));
    EXPECT_FALSE(text.attribute(LinkAttributeName, 1).isValid());
    EXPECT_FALSE(text.attribute(LinkAttributeName, 5).isValid()); // unknown: dropped
    EXPECT_FALSE(commentAt(text, 5));
    EXPECT_EQ(text.attribute(LinkAttributeName, 9).toUrl(), QUrl(QStringLiteral("https://example.com/x")));
    EXPECT_EQ(text.attribute(LinkAttributeName, 15).toString(), QStringLiteral("quilllnk://Doc-7"));
    EXPECT_EQ(text.attribute(LinkAttributeName, 20),
              QVariant(QVariantMap{{QStringLiteral("QuilleryLink"), QStringLiteral("Doc-9")}}));
    EXPECT_EQ(text.string(), QStringLiteral("one two three four five"));
}

TEST(CommentsSideFile, DeeplyNestedRichTextIsReadWithoutRecursion)
{
    // The RTF of a comment split over 200,000 nested elements (1.4 MB): their text joined in document
    // order is the rich text, as for any other element.
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("comments.xml"));
    constexpr int depth = 200'000;
    QByteArray xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Comments><Comment ID=\"A\"><RTF>{\\rtf1 deep";
    for (int i = 0; i < depth; ++i)
        xml += "<a>";
    xml += " text";
    for (int i = 0; i < depth; ++i)
        xml += "</a>";
    xml += "}</RTF></Comment><Comment ID=\"B\"/></Comments>\n";
    writeFileBytes(path, xml);

    const std::optional<XQCommentsByID> comments = commentsFromURL(path);
    ASSERT_TRUE(comments);
    ASSERT_EQ(comments->size(), 2);
    const XQCommentPtr a = comments->value(QStringLiteral("A"));
    ASSERT_TRUE(a);
    EXPECT_EQ(a->text().string(), QStringLiteral("deep text"));
    EXPECT_TRUE(comments->value(QStringLiteral("B")));
}
