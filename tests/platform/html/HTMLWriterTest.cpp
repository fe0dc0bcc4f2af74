// The platform HTML writer: a whole page whose styles, lists, tables and links say what the text says,
// with text passed through untouched but for what would be markup.
#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QUrl>
#include <pugixml.hpp>

#include <qlyappkit/platform/html/HTMLWriter.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;

namespace {

const QVariantMap XHTML{{ExcludedElementsDocumentAttribute, QStringList()}};

QString pageOf(const AttributedString& text, const QVariantMap& attributes = {})
{
    return QString::fromUtf8(HTMLFromRange(text, Range{0, text.length()}, attributes));
}

QString bodyOf(const QString& page)
{
    const qsizetype start = page.indexOf(QLatin1String("<body>"));
    const qsizetype end = page.indexOf(QLatin1String("</body>"));
    return start >= 0 && end > start ? page.mid(start + 6, end - start - 6) : QString();
}

// The element names in the order their tags come, end tags with a "/".
QString tagSequence(const QString& html)
{
    QStringList tags;
    static const QRegularExpression tag(QStringLiteral("<(/?[a-z0-9]+)"));
    for (const QRegularExpressionMatch& m : tag.globalMatch(html))
        tags.append(m.captured(1));
    return tags.join(QLatin1Char(' '));
}

// The declarations of the class on the element whose text is exactly `text`.
QString declarationsOfElementHolding(const QString& page, const QString& element, const QString& text)
{
    const QRegularExpression holding(
        QStringLiteral("<%1 class=\"([a-z]\\d+)\">%2</%1>").arg(element, QRegularExpression::escape(text)));
    const QString name = holding.match(page).captured(1);
    if (name.isEmpty())
        return QStringLiteral("(no %1 holds \"%2\")").arg(element, text);
    const QRegularExpression rule(QStringLiteral("\\n\\.%1 \\{([^}]*)\\}").arg(name));
    return rule.match(page).captured(1);
}

Attributes withFont(const Font& font) { return {{FontAttributeName, QVariant::fromValue(font)}}; }

Attributes withStyle(const ParagraphStyle& style, Attributes attributes = {})
{
    attributes.insert(ParagraphStyleAttributeName, QVariant::fromValue(style));
    return attributes;
}

ParagraphStyle listStyle(const QVector<TextList>& lists)
{
    ParagraphStyle style;
    style.setTextLists(lists);
    style.setHeadIndent(36.0 * lists.size());
    return style;
}

pugi::xml_document parsedXHTML(const QString& page, bool* ok)
{
    pugi::xml_document doc;
    const QByteArray bytes = page.toUtf8();
    *ok = bool(doc.load_buffer(bytes.constData(), size_t(bytes.size())));
    return doc;
}

} // namespace

TEST(HTMLWriter, PageHeadBodyAndTheVoidElementEnding)
{
    AttributedString text(QStringLiteral("First\u2028line\n\nLast"));
    const QString page = pageOf(text,
                                {{TitleDocumentAttribute, QStringLiteral("Tom & \"Jerry\" <1>")},
                                 {AuthorDocumentAttribute, QStringLiteral("A \"quoted\" <writer>")}});
    EXPECT_TRUE(page.startsWith(QLatin1String("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"UTF-8\">\n")))
        << page.toStdString();
    EXPECT_TRUE(page.contains(QLatin1String("<title>Tom &amp; \"Jerry\" &lt;1&gt;</title>")));
    EXPECT_TRUE(page.contains(QLatin1String("<meta name=\"author\" content=\"A &quot;quoted&quot; &lt;writer&gt;\">")));
    EXPECT_TRUE(page.endsWith(QLatin1String("</body>\n</html>\n")));
    // A line separator breaks the line; an empty paragraph still takes its line.
    const QString body = bodyOf(page);
    EXPECT_EQ(tagSequence(body), QStringLiteral("p span br /span /p p br /p p span /span /p"));
    EXPECT_TRUE(body.contains(QLatin1String("First<br>line")));

    // Without a title the page is still titled; with an excluded-elements list lacking "XML" the void
    // elements close themselves and the page is well-formed XML.
    const QString xhtml = pageOf(text, XHTML);
    EXPECT_TRUE(xhtml.contains(QLatin1String("<title>Untitled</title>")));
    EXPECT_TRUE(xhtml.contains(QLatin1String("<meta charset=\"UTF-8\" />")));
    EXPECT_TRUE(xhtml.contains(QLatin1String("First<br />line")));
    EXPECT_FALSE(xhtml.contains(QLatin1String("<br>")));
    bool ok = false;
    const pugi::xml_document doc = parsedXHTML(xhtml, &ok);
    EXPECT_TRUE(ok) << xhtml.toStdString();
    EXPECT_EQ(doc.select_nodes("/html/body/p").size(), 3u);
    // "XML" in the list (any case) keeps the HTML form; "DOCTYPE" leaves the doctype out.
    const QString html = pageOf(
        text, {{ExcludedElementsDocumentAttribute, QStringList{QStringLiteral("xml"), QStringLiteral("DOCTYPE")}}});
    EXPECT_TRUE(html.startsWith(QLatin1String("<html>\n")));
    EXPECT_TRUE(html.contains(QLatin1String("First<br>line")));
}

TEST(HTMLWriter, CharacterAttributesBecomeSpanClasses)
{
    const Font times = Font::fromFamily(QStringLiteral("Times"), 14);
    struct Case {
        const char* name;
        Attributes attributes;
        QStringList declarations;
    };
    const std::vector<Case> cases{
        {"plain", withFont(times), {"font-family: 'Times'", "font-size: 14px", "white-space: pre-wrap"}},
        {"default font", {}, {"font-family: 'Helvetica'", "font-size: 12px"}},
        {"bold italic",
         withFont(Font::fromFamily(QStringLiteral("Times"), 10.5, BoldFontMask | ItalicFontMask)),
         {"font-size: 10.5px", "font-weight: bold", "font-style: italic"}},
        {"colours",
         {{ForegroundColorAttributeName, QVariant::fromValue(Color(1, 0, 0))},
          {BackgroundColorAttributeName, QVariant::fromValue(Color(0, 0.5, 1, 0.5))}},
         {"color: #ff0000", "background-color: rgba(0, 128, 255, 0.5)"}},
        {"underline", {{UnderlineStyleAttributeName, UnderlineStyleSingle}}, {"text-decoration: underline"}},
        {"double underline",
         {{UnderlineStyleAttributeName, UnderlineStyleDouble},
          {UnderlineColorAttributeName, QVariant::fromValue(Color(0, 0, 1))}},
         {"text-decoration: underline", "text-decoration-style: double", "text-decoration-color: #0000ff"}},
        {"thick underline", {{UnderlineStyleAttributeName, UnderlineStyleThick}}, {"text-decoration-thickness: 2px"}},
        {"strike", {{StrikethroughStyleAttributeName, UnderlineStyleSingle}}, {"text-decoration: line-through"}},
        {"both lines",
         {{StrikethroughStyleAttributeName, 1}, {UnderlineStyleAttributeName, 1}},
         {"text-decoration: underline line-through"}},
        {"superscript", {{SuperscriptAttributeName, 1}}, {"vertical-align: super"}},
        {"subscript", {{SuperscriptAttributeName, -2}}, {"vertical-align: sub"}},
        {"baseline", {{BaselineOffsetAttributeName, 3.0}}, {"vertical-align: 3px"}},
        {"kern", {{KernAttributeName, -0.5}}, {"letter-spacing: -0.5px"}},
    };
    AttributedString text;
    for (const Case& c : cases) {
        text.append(QString::fromLatin1(c.name), c.attributes);
        text.append(QStringLiteral("\n"), {});
    }
    const QString page = pageOf(text);
    for (const Case& c : cases) {
        const QString declarations = declarationsOfElementHolding(page, QStringLiteral("span"), QLatin1String(c.name));
        for (const QString& d : c.declarations)
            EXPECT_TRUE(declarations.contains(d)) << c.name << ": " << declarations.toStdString();
    }
    // Plain text carries no decoration it was not given.
    const QString plain = declarationsOfElementHolding(page, QStringLiteral("span"), QStringLiteral("plain"));
    for (const char* absent : {"bold", "italic", "color", "text-decoration", "vertical-align"})
        EXPECT_FALSE(plain.contains(QLatin1String(absent))) << absent;

    // Equal styles share one class, however many runs use them; neighbours that look alike share a span.
    AttributedString many;
    for (int i = 0; i < 500; ++i) {
        Attributes a = withFont(times);
        a.insert(QStringLiteral("XQSomethingTheWriterIgnores"), i); // makes every run distinct
        if (i % 2)
            a.insert(ForegroundColorAttributeName, QVariant::fromValue(Color(0, 0, 1)));
        many.append(QStringLiteral("w "), a);
        many.append(QStringLiteral("x "), a); // same look as its neighbour
    }
    const QString manyPage = pageOf(many);
    EXPECT_EQ(manyPage.count(QRegularExpression(QStringLiteral("\\n\\.s\\d+ \\{"))), 2);
    EXPECT_EQ(manyPage.count(QLatin1String("<span")), 500);
}

TEST(HTMLWriter, FontNamesCannotLeaveTheirStyleSheet)
{
    const Font evil = Font::fromFamily(QStringLiteral("Evil'; }</style><script>alert(1)</script>"), 12);
    const QString page = pageOf(AttributedString(QStringLiteral("x"), withFont(evil)));
    EXPECT_FALSE(page.contains(QLatin1String("<script")));
    EXPECT_EQ(page.count(QLatin1String("</style>")), 1);
    EXPECT_TRUE(page.contains(QLatin1String("font-family: 'Evil\\27 ; }\\3c /style\\3e \\3c script\\3e alert(1)\\3c "
                                            "/script\\3e '")))
        << page.toStdString();
    // Without a style sheet the same declarations go in attributes, which stay closed too.
    const QString inline_ = pageOf(AttributedString(QStringLiteral("x"), withFont(evil)),
                                   {{ExcludedElementsDocumentAttribute, QStringList{QStringLiteral("STYLE")}}});
    EXPECT_FALSE(inline_.contains(QLatin1String("<style")));
    EXPECT_FALSE(inline_.contains(QLatin1String("<script")));
    bool ok = false;
    const pugi::xml_document doc = parsedXHTML(inline_, &ok);
    ASSERT_TRUE(ok) << inline_.toStdString();
    const QString style = QString::fromUtf8(doc.select_node("//span").node().attribute("style").value());
    EXPECT_TRUE(style.startsWith(QLatin1String("font-family: 'Evil\\27 ; }\\3c /style"))) << style.toStdString();
}

TEST(HTMLWriter, ParagraphStylesBecomeParagraphClasses)
{
    struct Case {
        const char* text;
        ParagraphStyle style;
        QStringList declarations;
        QStringList absent;
    };
    auto style = [](auto&& set) {
        ParagraphStyle s;
        set(s);
        return s;
    };
    const std::vector<Case> cases{
        {"natural", ParagraphStyle(), {"margin: 0"}, {"text-align", "text-indent", "line-height"}},
        {"left", style([](auto& s) { s.setAlignment(LeftTextAlignment); }), {"text-align: left"}, {}},
        {"right", style([](auto& s) { s.setAlignment(RightTextAlignment); }), {"text-align: right"}, {}},
        {"centre", style([](auto& s) { s.setAlignment(CenterTextAlignment); }), {"text-align: center"}, {}},
        {"justified", style([](auto& s) { s.setAlignment(JustifiedTextAlignment); }), {"text-align: justify"}, {}},
        {"indents",
         style([](auto& s) {
             s.setHeadIndent(36);
             s.setFirstLineHeadIndent(54);
             s.setTailIndent(-18);
         }),
         {"margin: 0 18px 0 36px", "text-indent: 18px"},
         {}},
        {"hanging",
         style([](auto& s) {
             s.setHeadIndent(36);
             s.setFirstLineHeadIndent(18);
         }),
         {"text-indent: -18px"},
         {}},
        {"spacing",
         style([](auto& s) {
             s.setParagraphSpacingBefore(6);
             s.setParagraphSpacing(12.25);
         }),
         {"margin: 6px 0 12.25px 0"},
         {}},
        {"double", style([](auto& s) { s.setLineHeightMultiple(2); }), {"line-height: 2"}, {}},
        {"exactly", style([](auto& s) { s.setMinimumLineHeight(18); }), {"line-height: 18px"}, {}},
        {"leading", style([](auto& s) { s.setLineSpacing(4); }), {"line-height: calc(1.15em + 4px)"}, {}},
    };
    AttributedString text;
    for (const Case& c : cases)
        text.append(QString::fromLatin1(c.text) + u'\n', withStyle(c.style));
    const QString page = pageOf(text);
    for (const Case& c : cases) {
        const QRegularExpression holding(
            QStringLiteral("<p class=\"(p\\d+)\"><span class=\"s\\d+\">%1</span></p>").arg(QLatin1String(c.text)));
        const QString name = holding.match(page).captured(1);
        ASSERT_FALSE(name.isEmpty()) << c.text;
        const QString declarations =
            QRegularExpression(QStringLiteral("\\n\\.%1 \\{([^}]*)\\}").arg(name)).match(page).captured(1);
        for (const QString& d : c.declarations)
            EXPECT_TRUE(declarations.contains(d)) << c.text << ": " << declarations.toStdString();
        for (const QString& d : c.absent)
            EXPECT_FALSE(declarations.contains(d)) << c.text << ": " << declarations.toStdString();
    }

    // Header levels choose the element; page breaks the printed page, before or after the paragraph.
    ParagraphStyle heading;
    heading.setHeaderLevel(2);
    AttributedString headed(QStringLiteral("Title\n"), withStyle(heading));
    headed.append(QStringLiteral("\fChapter\nEnd of part\f\nNext"), {});
    const QString headedPage = pageOf(headed);
    EXPECT_EQ(tagSequence(bodyOf(headedPage)),
              QStringLiteral("h2 span /span /h2 p span /span /p p span /span /p p span /span /p"));
    EXPECT_TRUE(declarationsOfElementHolding(headedPage, QStringLiteral("h2"),
                                             QStringLiteral("<span class=\"s1\">Title</span>"))
                    .contains(QLatin1String("font-weight: normal")));
    EXPECT_TRUE(declarationsOfElementHolding(headedPage, QStringLiteral("p"),
                                             QStringLiteral("<span class=\"s1\">Chapter</span>"))
                    .contains(QLatin1String("break-before: page")));
    EXPECT_TRUE(declarationsOfElementHolding(headedPage, QStringLiteral("p"),
                                             QStringLiteral("<span class=\"s1\">End of part</span>"))
                    .contains(QLatin1String("break-after: page")));
    EXPECT_FALSE(headedPage.contains(QChar(0x000C)));
}

TEST(HTMLWriter, TextPassesThroughButForMarkupAndForbiddenCharacters)
{
    const QString typed =
        QStringLiteral("{\\XQIMG_REF::\"Images/a.png\" width=\"1\"} 'q' & <b> \u00e9\U0001F600 a\tb  c");
    const QString body = bodyOf(pageOf(AttributedString(typed)));
    EXPECT_TRUE(body.contains(QStringLiteral("{\\XQIMG_REF::\"Images/a.png\" width=\"1\"} 'q' &amp; &lt;b&gt; "
                                             "\u00e9\U0001F600 a\tb  c")))
        << body.toStdString();

    // Controls HTML forbids, noncharacters and attachment characters go; a lone surrogate is replaced.
    const QString odd = QStringLiteral("a") + QChar(0x0001) + QChar(0x007F) + QChar(0x009F) + QChar(0xFFFE)
        + QChar(0xFDD0) + QChar(AttachmentCharacter) + QChar(0xD800) + QStringLiteral("b\u0085c");
    const QByteArray bytes = HTMLFromRange(AttributedString(odd), Range{0, odd.size()});
    const QString oddBody = bodyOf(QString::fromUtf8(bytes));
    EXPECT_TRUE(oddBody.contains(QStringLiteral("a\uFFFDb<br>c"))) << oddBody.toStdString();
    EXPECT_EQ(QString::fromUtf8(bytes).toUtf8(), bytes); // valid UTF-8 throughout

    // A range is written by itself, clipped to the text.
    AttributedString text(QStringLiteral("one two three"));
    const QString middle = bodyOf(QString::fromUtf8(HTMLFromRange(text, Range{4, 3})));
    EXPECT_TRUE(middle.contains(QLatin1String(">two<")));
    EXPECT_FALSE(middle.contains(QLatin1String("one")));
    EXPECT_TRUE(bodyOf(QString::fromUtf8(HTMLFromRange(text, Range{8, 99}))).contains(QLatin1String(">three<")));
    EXPECT_EQ(tagSequence(bodyOf(QString::fromUtf8(HTMLFromRange(text, Range{99, 5})))), QString());
}

TEST(HTMLWriter, LinksGoWhereTheTextSaysAndStayInert)
{
    struct Case {
        QVariant link;
        const char* href; // null: no link written
    };
    const std::vector<Case> cases{
        {QUrl(QStringLiteral("https://example.org/a?b=1&c=2")), "https://example.org/a?b=1&amp;c=2"},
        {QStringLiteral("\"><script>alert(1)</script>"), "%22%3E%3Cscript%3Ealert(1)%3C/script%3E"},
        {QStringLiteral("  mailto:ann@example.org "), "mailto:ann@example.org"},
        {QStringLiteral("a file.html#part 2"), "a%20file.html#part%202"},
        {QStringLiteral("100%.html?x=%41"), "100%25.html?x=%41"},
        {QStringLiteral("javascript:alert(1)"), nullptr},
        {QStringLiteral(" JaVa\tScript:alert(1)"), nullptr},
        {QStringLiteral("data:text/html,<b>x</b>"), nullptr},
        {QVariantMap{{QStringLiteral("QuilleryLink"), QStringLiteral("doc")}}, nullptr},
        {QStringLiteral(" "), nullptr},
    };
    for (const Case& c : cases) {
        AttributedString text(QStringLiteral("before "));
        text.append(QStringLiteral("anchor"), {{LinkAttributeName, c.link}});
        text.append(QStringLiteral(" after"), {});
        const QString page = pageOf(text, XHTML);
        const QString body = bodyOf(page);
        EXPECT_FALSE(body.contains(QLatin1String("<script"))) << body.toStdString();
        bool ok = false;
        const pugi::xml_document doc = parsedXHTML(page, &ok);
        ASSERT_TRUE(ok) << page.toStdString();
        const pugi::xpath_node_set links = doc.select_nodes("//a");
        if (!c.href) {
            EXPECT_EQ(links.size(), 0u) << body.toStdString();
            EXPECT_TRUE(body.contains(QLatin1String(">before anchor after<"))) << body.toStdString();
            continue;
        }
        ASSERT_EQ(links.size(), 1u) << body.toStdString();
        EXPECT_TRUE(body.contains(QStringLiteral("<a href=\"%1\">").arg(QLatin1String(c.href)))) << body.toStdString();
        EXPECT_STREQ(links[0].node().child_value("span"), "anchor");
    }
    // "A" in the excluded elements writes links as their text.
    AttributedString text(QStringLiteral("go"), {{LinkAttributeName, QUrl(QStringLiteral("https://example.org"))}});
    EXPECT_FALSE(pageOf(text, {{ExcludedElementsDocumentAttribute, QStringList{QStringLiteral("a")}}})
                     .contains(QLatin1String("<a ")));
    EXPECT_FALSE(pageOf(text, {{ExcludedElementsDocumentAttribute, QStringList{QStringLiteral("SPAN")}}})
                     .contains(QLatin1String("<span")));
}

TEST(HTMLWriter, ListsAreWrittenItemByItemWithNestedListsAfterTheirItem)
{
    const TextList bullets{QStringLiteral("{disc}")}, numbers{QStringLiteral("({lower-roman})"), 0, 3},
        dashes{QStringLiteral("-")}, squares{QStringLiteral("{square}")};
    AttributedString text(QStringLiteral("Intro\n"));
    text.append(QStringLiteral("\t\u2022\tone\n"), withStyle(listStyle({bullets})));
    text.append(QStringLiteral("\t(iii)\tnested\n"), withStyle(listStyle({bullets, numbers})));
    text.append(QStringLiteral("\t(iv)\tnested too\n"), withStyle(listStyle({bullets, numbers})));
    text.append(QStringLiteral("\t\u2022\ttwo\n"), withStyle(listStyle({bullets})));
    // Two levels deeper at once, then another list at the level of the first nested one.
    text.append(QStringLiteral("\t-\tdeep\n"), withStyle(listStyle({bullets, squares, dashes})));
    text.append(QStringLiteral("\t(iii)\tafter\n"), withStyle(listStyle({bullets, numbers})));
    text.append(QStringLiteral("Outro"), {});
    const QString page = pageOf(text);
    const QString body = bodyOf(page);
    EXPECT_EQ(tagSequence(body).remove(QStringLiteral(" span /span")),
              QStringLiteral("p /p ul li /li ol li /li li /li /ol li /li "
                             "ul li /li ul li /li /ul /ul "
                             "li /li ol li /li /ol /ul p /p"))
        << body.toStdString();
    // The marker text in front of each item is the list's to show.
    EXPECT_TRUE(body.contains(QLatin1String("<span class=\"s1\">one</span></li>")));
    EXPECT_FALSE(body.contains(QLatin1String("\t")));
    EXPECT_TRUE(body.contains(QLatin1String("<ol start=\"3\"")));
    for (const auto& [item, type] : std::vector<std::pair<const char*, const char*>>{
             {"one", "disc"}, {"nested", "lower-roman"}, {"deep", "'- '"}}) {
        const QRegularExpression list(QStringLiteral("<[ou]l(?: start=\"\\d+\")? class=\"(l\\d+)\">\\n<li[^>]*><span "
                                                     "class=\"s\\d+\">%1</span>")
                                          .arg(QLatin1String(item)));
        const QString name = list.match(body).captured(1);
        ASSERT_FALSE(name.isEmpty()) << item;
        EXPECT_TRUE(page.contains(QStringLiteral(".%1 {list-style-type: %2;").arg(name, QLatin1String(type)))) << item;
    }
    // The item that only holds a skipped level shows no marker.
    EXPECT_TRUE(page.contains(QLatin1String("{list-style-type: none}")));
}

TEST(HTMLWriter, TablesFromTextBlocks)
{
    auto table = std::make_shared<TextTable>(TextTable{2});
    auto inner = std::make_shared<TextTable>(TextTable{1});
    auto cell = [&](int row, int column, std::shared_ptr<TextTable> t = nullptr) {
        TextBlock block;
        block.table = t ? t : table;
        block.startingRow = row;
        block.startingColumn = column;
        return block;
    };
    auto inCells = [](const QVector<TextBlock>& blocks, const QVector<TextList>& lists = {}) {
        ParagraphStyle s;
        s.setTextBlocks(blocks);
        s.setTextLists(lists);
        return withStyle(s);
    };
    TextBlock wide = cell(1, 0);
    wide.columnSpan = 2;
    wide.backgroundColor = Color(1, 1, 0);
    wide.contentWidth = 200;
    AttributedString text(QStringLiteral("Before\n"));
    text.append(QStringLiteral("a1\n"), inCells({cell(0, 0)}));
    text.append(QStringLiteral("a1 again\n"), inCells({cell(0, 0)}));
    text.append(QStringLiteral("\t\u2022\tlisted\n"), inCells({cell(0, 1)}, {TextList{QStringLiteral("{disc}")}}));
    text.append(QStringLiteral("inner\n"), inCells({cell(0, 1), cell(0, 0, inner)}));
    text.append(QStringLiteral("wide\n"), inCells({wide}));
    text.append(QStringLiteral("After"), {});
    const QString page = pageOf(text);
    EXPECT_EQ(tagSequence(bodyOf(page)).remove(QStringLiteral(" span /span")),
              QStringLiteral("p /p table tr td p /p p /p /td td ul li /li /ul "
                             "table tr td p /p /td /tr /table /td /tr tr td p /p /td /tr /table p /p"))
        << bodyOf(page).toStdString();
    const QRegularExpression spanning(QStringLiteral("<td colspan=\"2\" class=\"(c\\d+)\">"));
    const QString name = spanning.match(page).captured(1);
    ASSERT_FALSE(name.isEmpty());
    const QString rule = QRegularExpression(QStringLiteral("\\.%1 \\{([^}]*)\\}").arg(name)).match(page).captured(1);
    EXPECT_TRUE(rule.contains(QLatin1String("background-color: #ffff00"))) << rule.toStdString();
    EXPECT_TRUE(rule.contains(QLatin1String("width: 200px")));
}
