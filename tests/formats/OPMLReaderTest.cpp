#include <qlyappkit/formats/opml/OPMLText.h>
#include <qlyappkit/formats/opml/XQOPMLStorage.h>
#include <qlyappkit/platform/services/NamedException.h>

#include <QRandomGenerator>
#include <QTemporaryDir>

#include "support/TestFiles.h"

using namespace qly;

namespace {

QByteArray opml(const QByteArray& head, const QByteArray& body)
{
    return "<?xml version=\"1.0\"?>\n<opml version=\"2.0\">\n<head>" + head + "</head>\n<body>" + body
        + "</body>\n</opml>\n";
}

// The item tree in a compact form: attributes as name=value in order, children in brackets (present
// only when the item has child nodes).
QString describeItems(const XQOPMLStorage& storage, const QList<qsizetype>& indexes)
{
    QStringList parts;
    for (qsizetype index : indexes) {
        const XQOPMLItem& item = storage.item(index);
        QStringList attributes;
        for (const auto& [name, value] : item.attributes.entries())
            attributes << name + u'=' + value;
        QString part = u'(' + attributes.join(u',') + u')';
        if (item.hasChildNodes)
            part += u'[' + describeItems(storage, item.children) + u']';
        parts << part;
    }
    return parts.join(u' ');
}

QString describeHead(const XQOPMLStorage& storage)
{
    QStringList parts;
    for (const auto& [name, value] : storage.head().entries())
        parts << name + u'=' + value;
    return parts.join(u'|');
}

// The six replacements made one after the other over the whole string, as the decoding rule states it.
QString sequentialAttributeDecoding(QString s)
{
    s.replace(QStringLiteral("&#10;"), QStringLiteral("\n"), Qt::CaseInsensitive);
    s.replace(QStringLiteral("&quot;"), QStringLiteral("\""), Qt::CaseInsensitive);
    s.replace(QStringLiteral("&apos;"), QStringLiteral("'"), Qt::CaseInsensitive);
    s.replace(QStringLiteral("&lt;"), QStringLiteral("<"), Qt::CaseInsensitive);
    s.replace(QStringLiteral("&gt;"), QStringLiteral(">"), Qt::CaseInsensitive);
    s.replace(QStringLiteral("&amp;"), QStringLiteral("&"), Qt::CaseInsensitive);
    return s;
}

XQOPMLStorage read(const QByteArray& bytes)
{
    XQOPMLReadError error;
    std::optional<XQOPMLStorage> storage = XQOPMLStorage::initWithData(bytes, &error);
    if (!storage) {
        ADD_FAILURE() << "not read: " << error.message.toStdString() << " at " << error.offset;
        return {};
    }
    return *storage;
}

} // namespace

TEST(OPMLReader, BodyItemsKeepEveryAttributeAndChildNodesDecideTheChildrenEntry)
{
    struct Case {
        const char* what;
        QByteArray body;
        const char* expected;
    };
    const Case cases[] = {
        {"empty body", "", ""},
        {"attributes kept by name, in order", "<outline text=\"A\" _note=\"n\" type=\"x\" created=\"today\"/>",
         "(text=A,_note=n,type=x,created=today)"},
        {"nesting in document order",
         "<outline text=\"P\"><outline text=\"C1\"><outline text=\"S\"/></outline><outline text=\"C2\"/></outline>"
         "<outline text=\"Q\"/>",
         "(text=P)[(text=C1)[(text=S)] (text=C2)] (text=Q)"},
        {"a comment alone gives an empty children list", "<outline text=\"A\"><!-- later --></outline>", "(text=A)[]"},
        {"text alone gives an empty children list", "<outline text=\"A\">stray text</outline>", "(text=A)[]"},
        {"a processing instruction counts as a child node", "<outline text=\"A\"><?app x?></outline>", "(text=A)[]"},
        {"whitespace-only text is no child node", "<outline text=\"A\">\n   \t</outline>", "(text=A)"},
        {"other elements are skipped with all below them",
         "<outline text=\"A\"><note><outline text=\"hidden\"/></note><outline text=\"B\"/></outline><p/>",
         "(text=A)[(text=B)]"},
        {"no special attribute names", "<outline children=\"3\" TEXT=\"upper\"/>", "(children=3,TEXT=upper)"},
        {"an attribute written twice keeps the last value", "<outline text=\"first\" text=\"second\"/>",
         "(text=second)"},
        {"CRLF and tabs in attributes are normalised by the XML rules", "<outline text=\"a\tb\r\nc\"/>",
         "(text=a b c)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const XQOPMLStorage storage = read(opml("", c.body));
        EXPECT_EQ(describeItems(storage, storage.body()), QString::fromUtf8(c.expected));
    }
}

TEST(OPMLReader, AttributeValuesAreDecodedInTheirOrderAmpersandLast)
{
    struct Case {
        const char* raw; // as written in the file
        const char* decoded;
    };
    const Case cases[] = {
        {"line&#10;break", "line\nbreak"},
        {"&amp;#10;", "&#10;"}, // the escaped form of a line-break reference stays a reference
        {"&amp;lt;", "&lt;"},
        {"&quot;q&quot; &apos;a&apos; &lt;t&gt;", "\"q\" 'a' <t>"},
        {"&AMP; &Lt; &QUOT;", "& < \""}, // case-insensitive
        {"&#65; &#x41; &eacute;", "&#65; &#x41; &eacute;"}, // nothing else is decoded
        {"&amp;amp;", "&amp;"},
        {"a & b", "a & b"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.raw);
        const XQOPMLStorage storage = read(opml("", "<outline v=\"" + QByteArray(c.raw) + "\"/>"));
        ASSERT_EQ(storage.body().size(), 1);
        const QString value = storage.item(storage.body()[0]).attributes.value(QStringLiteral("v"));
        EXPECT_EQ(value, QString::fromUtf8(c.decoded));
    }
}

TEST(OPMLReader, AttributeDecodingMatchesReplacingOneEscapeAfterAnother)
{
    // Random strings dense in escape fragments: one left-to-right pass must give what six whole-string
    // replacements in order give.
    const QStringList pieces = {QStringLiteral("&"),      QStringLiteral("amp;"),  QStringLiteral("AMP;"),
                                QStringLiteral("lt;"),    QStringLiteral("gt;"),   QStringLiteral("#10;"),
                                QStringLiteral("quot;"),  QStringLiteral("apos;"), QStringLiteral("x"),
                                QStringLiteral("\u00e9"), QStringLiteral(";"),     QStringLiteral("#1"),
                                QStringLiteral("&a")};
    QRandomGenerator random(7);
    for (int round = 0; round < 5000; ++round) {
        QString s;
        const int count = random.bounded(1, 12);
        for (int i = 0; i < count; ++i)
            s += pieces[random.bounded(int(pieces.size()))];
        const QString expected = sequentialAttributeDecoding(s);
        ASSERT_EQ(stringByTranslatingOPMLTagsFromString(s), expected) << s.toStdString();
        // The reader decodes the UTF-8 bytes directly.
        const QByteArray utf8 = s.toUtf8();
        QByteArray decoded = "kept:";
        appendTranslatingOPMLTags(decoded, utf8.constData(), utf8.size());
        ASSERT_EQ(QString::fromUtf8(decoded), QStringLiteral("kept:") + expected) << s.toStdString();
    }
}

TEST(OPMLReader, HeadHoldsElementTextWithItsSixEntitiesAndBareNamesForOthers)
{
    struct Case {
        const char* what;
        QByteArray head;
        const char* expected;
    };
    const Case cases[] = {
        {"empty head", "", ""},
        {"entity in a title", "<title>A &amp; B</title>", "title=A & B"},
        {"the six replacements", "<t>&lt;&gt;&quot;&apos;&amp;&#10;</t>", "t=<>\"'&\n"},
        {"other references give their bare names", "<t>caf&#233; &nbsp;x</t>", "t=caf#233 nbspx"},
        {"names are case-sensitive here", "<t>&AMP;</t>", "t=AMP"},
        {"later elements replace earlier ones, in place", "<title>one</title><owner>me</owner><title>two</title>",
         "title=two|owner=me"},
        {"CDATA is text as it is", "<t><![CDATA[a &amp; <b>]]>c</t>", "t=a &amp; <b>c"},
        {"grandchildren are not visited", "<t>a<b>hidden</b>c</t>", "t=ac"},
        {"comments add nothing", "<t>a<!-- x -->b</t>", "t=ab"},
        {"an element without text", "<expansionState/>", "expansionState="},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const XQOPMLStorage storage = read(opml(c.head, ""));
        EXPECT_EQ(describeHead(storage), QString::fromUtf8(c.expected));
    }
}

TEST(OPMLReader, OfSeveralSameNamedElementsTheLastIsRead)
{
    const XQOPMLStorage twoBodies = read("<opml><head/><body><outline text=\"first\"/></body>"
                                         "<body><outline text=\"second\"/></body></opml>");
    EXPECT_EQ(describeItems(twoBodies, twoBodies.body()), QStringLiteral("(text=second)"));
    const XQOPMLStorage twoHeads = read("<opml><head><a>1</a></head><body/><head><b>2</b></head></opml>");
    EXPECT_EQ(describeHead(twoHeads), QStringLiteral("b=2"));
}

TEST(OPMLReader, MissingHeadOrBodyRaisesItsNamedException)
{
    struct Case {
        const char* what;
        QByteArray xml;
        const QString* name;
        const QString* reason;
    };
    const Case cases[] = {
        {"no head", "<opml><body/></opml>", &XQOPMLMissingHeadExceptionName, &XQOPMLMissingHeadReason},
        {"no opml element", "<outline><head/><body/></outline>", &XQOPMLMissingHeadExceptionName,
         &XQOPMLMissingHeadReason},
        {"head nested too deep", "<opml><x><head/></x><body/></opml>", &XQOPMLMissingHeadExceptionName,
         &XQOPMLMissingHeadReason},
        {"no body", "<opml><head><title>t</title></head></opml>", &XQOPMLMissingBodyExceptionName,
         &XQOPMLMissingBodyReason},
        {"neither: the head is looked for first", "<opml/>", &XQOPMLMissingHeadExceptionName, &XQOPMLMissingHeadReason},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        try {
            XQOPMLStorage::initWithData(c.xml);
            ADD_FAILURE() << "no exception";
        } catch (const NamedException& exception) {
            EXPECT_EQ(exception.name(), *c.name);
            EXPECT_EQ(exception.reason(), *c.reason);
        }
    }
    EXPECT_EQ(XQOPMLMissingHeadExceptionName, QStringLiteral("OPMLcreateHeaderDictionaryFromTreeFailed"));
    EXPECT_EQ(XQOPMLMissingBodyExceptionName, QStringLiteral("OPMLParsercreateBodyArrayFromTreeFailed"));
}

TEST(OPMLReader, UnreadableFilesAndMalformedXMLGiveNothingWithTheReason)
{
    struct Case {
        const char* what;
        QByteArray xml;
        qsizetype offset;
    };
    const Case cases[] = {
        {"empty", "", 0},
        {"unclosed element", "<opml><head></head><body>", 24},
        {"mismatched end tag", "<opml><head></opml>", 14},
        {"truncated attribute", "<opml><head/><body><outline text=\"abc", 34},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        XQOPMLReadError error;
        EXPECT_FALSE(XQOPMLStorage::initWithData(c.xml, &error).has_value());
        EXPECT_FALSE(error.message.isEmpty());
        EXPECT_EQ(error.offset, c.offset);
    }
    QTemporaryDir dir;
    XQOPMLReadError error;
    EXPECT_FALSE(XQOPMLStorage::initWithContentsOfFile(dir.filePath(QStringLiteral("missing.opml")), &error));
    EXPECT_FALSE(error.message.isEmpty());
    EXPECT_FALSE(XQOPMLStorage::initWithContentsOfFile(dir.path(), &error)) << "a folder is not a file";
}

TEST(OPMLReader, ReadsTheSampleFileInOtherEncodingsToo)
{
    const QString path = QStringLiteral(QLY_SOURCE_DIR "/samples/outline.opml");
    const std::optional<XQOPMLStorage> storage = XQOPMLStorage::initWithContentsOfFile(path);
    ASSERT_TRUE(storage);
    EXPECT_EQ(storage->head().value(QStringLiteral("title")), QStringLiteral("The Lighthouse Keeper's Daughter"));
    ASSERT_EQ(storage->body().size(), 2);
    const XQOPMLItem& part = storage->item(storage->body()[0]);
    EXPECT_EQ(part.attributes.value(QStringLiteral("_note")),
              QStringLiteral("Autumn 1911.\nEverything happens within sight of the lamp."));
    EXPECT_EQ(storage->itemCount(), 11);
    EXPECT_EQ(storage->attributeValue(storage->body()[1], QStringLiteral("type")), QStringLiteral("part"));
    EXPECT_EQ(storage->attributeValue(storage->body()[1], QStringLiteral("_note"), QStringLiteral("none")),
              QStringLiteral("none"));
    EXPECT_EQ(storage->nextSibling(storage->body()[0]), -1) << "top-level items are listed by body(), not linked";
    EXPECT_EQ(storage->children(storage->body()[1]).size(), 2);

    // The same outline as UTF-16 with a byte-order mark, and a Latin-1 title declared as such.
    const QString text =
        QString::fromUtf8(testfiles::readFileBytes(path)).replace(QStringLiteral("UTF-8"), QStringLiteral("UTF-16"));
    QByteArray utf16("\xFF\xFE", 2);
    utf16.append(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    const std::optional<XQOPMLStorage> wide = XQOPMLStorage::initWithData(utf16);
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->head(), storage->head());
    EXPECT_EQ(wide->itemCount(), storage->itemCount());
    const std::optional<XQOPMLStorage> latin1 = XQOPMLStorage::initWithData(
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><opml><head><title>Caf\xE9</title></head><body/></opml>");
    ASSERT_TRUE(latin1);
    EXPECT_EQ(latin1->head().value(QStringLiteral("title")), QStringLiteral("Caf\u00e9"));
}

TEST(OPMLReader, DictionaryFormHasChildrenOnlyForItemsWithChildNodes)
{
    const XQOPMLStorage storage =
        read(opml("",
                  "<outline text=\"A\" children=\"attr\"><!-- c --></outline>"
                  "<outline text=\"B\"><outline text=\"C\"/></outline><outline text=\"D\"/>"));
    const QVariantMap a = storage.itemDictionary(storage.body()[0]);
    EXPECT_EQ(a.value(XQOPMLChildren), QVariantList()) << "the children list replaces an attribute of that name";
    EXPECT_EQ(a.value(QStringLiteral("text")), QStringLiteral("A"));
    const QVariantMap b = storage.itemDictionary(storage.body()[1]);
    const QVariantList bChildren = b.value(XQOPMLChildren).toList();
    ASSERT_EQ(bChildren.size(), 1);
    EXPECT_EQ(bChildren[0].toMap(), (QVariantMap{{QStringLiteral("text"), QStringLiteral("C")}}));
    EXPECT_FALSE(storage.itemDictionary(storage.body()[2]).contains(XQOPMLChildren));
}

TEST(OPMLReader, HostileDocumentsAreReadWithoutExpandingOrReadingAnythingElse)
{
    // Entities a DOCTYPE declares are never expanded: references to them reach the text as bare names.
    QByteArray laughs = "<?xml version=\"1.0\"?>\n<!DOCTYPE opml [\n<!ENTITY lol \"lol\">\n";
    for (int level = 1; level <= 9; ++level) {
        laughs += "<!ENTITY lol" + QByteArray::number(level) + " \"";
        for (int i = 0; i < 10; ++i)
            laughs += "&lol" + (level > 1 ? QByteArray::number(level - 1) : QByteArray()) + ";";
        laughs += "\">\n";
    }
    laughs += "]>\n<opml><head><title>&lol9;</title></head><body><outline text=\"&lol9;\"/></body></opml>\n";
    const XQOPMLStorage bomb = read(laughs);
    EXPECT_EQ(bomb.head().value(QStringLiteral("title")), QStringLiteral("lol9"));
    EXPECT_EQ(bomb.item(0).attributes.value(QStringLiteral("text")), QStringLiteral("&lol9;"));

    // An external entity naming a local file: the file is never read.
    QTemporaryDir dir;
    const QString secretPath = dir.filePath(QStringLiteral("secret.txt"));
    testfiles::writeFileBytes(secretPath, "TOP-SECRET");
    const QByteArray external = "<?xml version=\"1.0\"?>\n<!DOCTYPE opml [<!ENTITY xxe SYSTEM \"file://"
        + secretPath.toUtf8()
        + "\">]>\n<opml><head><title>&xxe;</title></head><body><outline text=\"&xxe;\"/></body></opml>";
    const XQOPMLStorage xxe = read(external);
    EXPECT_EQ(xxe.head().value(QStringLiteral("title")), QStringLiteral("xxe"));
    EXPECT_FALSE(xxe.item(0).attributes.value(QStringLiteral("text")).contains(QStringLiteral("SECRET")));
}

TEST(OPMLReader, DeepNestingAndHugeAttributesAreReadWithoutRecursion)
{
    constexpr int Depth = 100'000;
    QByteArray deep = "<opml><head/><body>";
    deep.reserve(Depth * 40);
    for (int i = 0; i < Depth; ++i)
        deep += "<outline text=\"" + QByteArray::number(i) + "\">";
    for (int i = 0; i < Depth; ++i)
        deep += "</outline>";
    deep += "</body></opml>";
    {
        const XQOPMLStorage storage = read(deep);
        ASSERT_EQ(storage.itemCount(), Depth);
        qsizetype index = storage.body().constFirst();
        int depth = 1;
        while (!storage.item(index).children.isEmpty()) {
            index = storage.item(index).children.constFirst();
            ++depth;
        }
        EXPECT_EQ(depth, Depth);
        EXPECT_EQ(storage.item(index).attributes.value(QStringLiteral("text")), QString::number(Depth - 1));
        const XQOPMLStorage copy = storage; // copying and destroying are flat too
        EXPECT_EQ(copy.itemCount(), storage.itemCount());
        // The dictionary form stops at its depth bound instead of building a value too deep to destroy.
        QVariantMap dictionary = storage.itemDictionary(storage.body().constFirst(), 3);
        dictionary = dictionary.value(XQOPMLChildren).toList().value(0).toMap();
        dictionary = dictionary.value(XQOPMLChildren).toList().value(0).toMap();
        EXPECT_EQ(dictionary.value(QStringLiteral("text")), QStringLiteral("2"));
        EXPECT_EQ(dictionary.value(XQOPMLChildren), QVariantList());
    }

    // A 100 MB attribute value, with escapes at both ends.
    constexpr qsizetype Size = 100 * 1024 * 1024;
    QByteArray huge = "<opml><head/><body><outline text=\"&lt;";
    huge.append(Size, 'x');
    huge += "&amp;lt;\"/></body></opml>";
    const XQOPMLStorage storage = read(std::move(huge));
    const QString value = storage.item(0).attributes.value(QStringLiteral("text"));
    ASSERT_EQ(value.size(), Size + 5);
    EXPECT_TRUE(value.startsWith(QStringLiteral("<xx")));
    EXPECT_TRUE(value.endsWith(QStringLiteral("xx&lt;")));
}

TEST(OPMLReader, ManyAttributesAndHeadElementsStayLinear)
{
    // Thousands of names in one element: each later value of a name replaces the earlier one.
    QByteArray attributes;
    QByteArray head;
    for (int i = 0; i < 20'000; ++i) {
        attributes += " a" + QByteArray::number(i) + "=\"" + QByteArray::number(i) + "\"";
        head += "<h" + QByteArray::number(i % 5000) + ">" + QByteArray::number(i) + "</h" + QByteArray::number(i % 5000)
            + ">";
    }
    const XQOPMLStorage storage = read(opml(head, "<outline" + attributes + " a7=\"again\"/>"));
    const XQOPMLDictionary& item = storage.item(0).attributes;
    EXPECT_EQ(item.size(), 20'000);
    EXPECT_EQ(item.value(QStringLiteral("a7")), QStringLiteral("again"));
    EXPECT_EQ(item.value(QStringLiteral("a19999")), QStringLiteral("19999"));
    EXPECT_EQ(item.entries()[7].first, QStringLiteral("a7")) << "a replaced value keeps its place";
    EXPECT_EQ(storage.head().size(), 5000);
    EXPECT_EQ(storage.head().value(QStringLiteral("h3")), QStringLiteral("15003"));
}
