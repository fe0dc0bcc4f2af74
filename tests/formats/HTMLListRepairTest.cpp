// Nested-list repair: items closed before their nested lists get the list moved inside them, the end
// of a list is found by counting the lists opened on the way, and the one-pass repair does what the
// step-by-step rule does on any tag soup.
#include <gtest/gtest.h>

#include <QRandomGenerator>

#include <qlyappkit/formats/html/HTMLListRepair.h>

using namespace qly;

namespace {

// The repair rule applied literally, one start tag at a time, each search in the text as edited so far.
qsizetype referenceEnd(const QString& html, const QString& start, const QString& end, qsizetype scan)
{
    qsizetype depth = 1, closed = 0;
    for (;;) {
        const qsizetype e = html.indexOf(end, scan, Qt::CaseInsensitive);
        if (e < 0)
            return -1;
        for (qsizetype s = html.indexOf(start, scan, Qt::CaseInsensitive); s >= 0 && s + start.size() <= e;
             s = html.indexOf(start, s + start.size(), Qt::CaseInsensitive))
            ++depth;
        ++closed;
        scan = e + end.size();
        if (closed == depth)
            return scan;
    }
}

void referenceRepair(QString& html, const QString& start, const QString& end)
{
    for (qsizetype at = html.indexOf(start, 0, Qt::CaseInsensitive); at >= 0;
         at = html.indexOf(start, at + start.size(), Qt::CaseInsensitive)) {
        qsizetype p = at - 1;
        while (p >= 0 && html.at(p).isSpace())
            --p;
        if (p < 0 || p - 4 <= 0 || html.mid(p - 4, 5).toLower() != QLatin1String("</li>"))
            continue;
        const qsizetype listEnd = referenceEnd(html, start, end, at + start.size());
        if (listEnd < 0)
            return;
        html.insert(listEnd, QStringLiteral("</li>"));
        html.remove(p - 4, 5);
        at -= 5;
    }
}

QString repaired(QString html)
{
    fixUpNestedHTMLLists(html);
    return html;
}

} // namespace

TEST(HTMLListRepair, NestedListsMoveIntoTheirItems)
{
    const std::vector<std::pair<QString, QString>> cases{
        // The writer's shape, and what it becomes.
        {QStringLiteral("<ul>\n<li>a</li>\n<ul>\n<li>b</li>\n</ul>\n<li>c</li>\n</ul>"),
         QStringLiteral("<ul>\n<li>a\n<ul>\n<li>b</li>\n</ul></li>\n<li>c</li>\n</ul>")},
        // Ordered inside unordered, upper case tags, three levels.
        {QStringLiteral("<UL><LI>a</LI><OL><li>b</li><ol><li>c</li></ol></OL></UL>"),
         QStringLiteral("<UL><LI>a<OL><li>b<ol><li>c</li></ol></li></OL></li></UL>")},
        // Two nested lists after one item: the second follows the moved end tag.
        {QStringLiteral("<ul><li>a</li><ul><li>b</li></ul><ul><li>c</li></ul></ul>"),
         QStringLiteral("<ul><li>a<ul><li>b</li></ul><ul><li>c</li></ul></li></ul>")},
        // Nothing to do: already nested, or no item before.
        {QStringLiteral("<ul><li>a<ul><li>b</li></ul></li></ul>"),
         QStringLiteral("<ul><li>a<ul><li>b</li></ul></li></ul>")},
        {QStringLiteral("<ul><ul><li>b</li></ul></ul>"), QStringLiteral("<ul><ul><li>b</li></ul></ul>")},
        // An "</li>" that begins the text is not moved.
        {QStringLiteral("</li><ul><li>x</li></ul>"), QStringLiteral("</li><ul><li>x</li></ul>")},
        {QStringLiteral(" </li><ul><li>x</li></ul>"), QStringLiteral(" <ul><li>x</li></ul></li>")},
        // A nested list that is never closed stops the repair there.
        {QStringLiteral("<ul><li>a</li><ul><li>b</li><li>c</li><ul><li>d</li></ul>"),
         QStringLiteral("<ul><li>a</li><ul><li>b</li><li>c</li><ul><li>d</li></ul>")},
        // A list whose outer list is never closed is still repaired.
        {QStringLiteral("<ol><li>a</li><ol><li>b</li></ol><li>c</li><ol><li>d</li></ol>"),
         QStringLiteral("<ol><li>a<ol><li>b</li></ol></li><li>c<ol><li>d</li></ol></li>")},
        {QStringLiteral("<ul><li>a</li><ul><li>b</li>"), QStringLiteral("<ul><li>a</li><ul><li>b</li>")},
        {QString(), QString()},
    };
    for (const auto& [html, expected] : cases)
        EXPECT_EQ(repaired(html), expected) << html.toStdString();
}

TEST(HTMLListRepair, EndOfAList)
{
    const QString ol = QStringLiteral("<ol"), olEnd = QStringLiteral("</ol>");
    const QString html = QStringLiteral("x<ol><li>a<OL><li>b</li></ol></li></OL>tail");
    EXPECT_EQ(endOfHTMLListForStartTag(html, ol, olEnd, Range{1, 3}), html.indexOf(QLatin1String("tail")));
    EXPECT_EQ(endOfHTMLListForStartTag(html, ol, olEnd, Range{10, 3}), html.indexOf(QLatin1String("</li></OL>")));
    EXPECT_EQ(endOfHTMLListForStartTag(QStringLiteral("<ol><ol></ol>"), ol, olEnd, Range{0, 3}), NotFound);
    EXPECT_EQ(endOfHTMLListForStartTag(html, ol, olEnd, Range{99, 3}), NotFound);
    EXPECT_EQ(endOfHTMLListForStartTag(html, QString(), olEnd, Range{1, 3}), NotFound);
}

TEST(HTMLListRepair, OnePassEqualsTheStepByStepRule)
{
    const QStringList pieces{
        QStringLiteral("<ul>"), QStringLiteral("</ul>"), QStringLiteral("<ol>"),  QStringLiteral("</ol>"),
        QStringLiteral("<li>"), QStringLiteral("</li>"), QStringLiteral("</LI>"), QStringLiteral("<UL class=\"x\">"),
        QStringLiteral(" "),    QStringLiteral("\n"),    QStringLiteral("t"),     QStringLiteral("</li>\n")};
    QRandomGenerator random(2024);
    for (int round = 0; round < 3000; ++round) {
        QString html;
        const int count = int(random.bounded(30));
        for (int i = 0; i < count; ++i)
            html += pieces[int(random.bounded(pieces.size()))];
        QString expected = html;
        referenceRepair(expected, QStringLiteral("<ol"), QStringLiteral("</ol>"));
        referenceRepair(expected, QStringLiteral("<ul"), QStringLiteral("</ul>"));
        ASSERT_EQ(repaired(html), expected) << html.toStdString();
    }
}

TEST(HTMLListRepair, DeepNestingIsRepairedWithoutRecursion)
{
    // Ten thousand levels, each item closed before the next level: every list ends up in its item.
    const int depth = 10000;
    QString html;
    for (int i = 0; i < depth; ++i)
        html += QStringLiteral("<ul>\n<li>x</li>\n");
    for (int i = 0; i < depth; ++i)
        html += QStringLiteral("</ul>\n");
    fixUpNestedHTMLLists(html);
    EXPECT_EQ(html.count(QLatin1String("</li>")), depth);
    EXPECT_EQ(html.count(QLatin1String("</li>\n<ul>")), 0);
    EXPECT_TRUE(html.startsWith(QLatin1String("<ul>\n<li>x\n<ul>\n<li>x\n<ul>")));
    EXPECT_TRUE(html.endsWith(QLatin1String("</ul></li>\n</ul>\n"))) << html.right(40).toStdString();
}
