// Write then read: generated texts covering every attribute the writer knows come back equal.
#include "RTFTestSupport.h"

#include <QRandomGenerator>
#include <QSizeF>
#include <QUrl>
#include <map>
#include <tuple>

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>

using namespace qly;
using namespace qly::rtftest;

namespace {

// Values the RTF units hold exactly: colours in 255ths, lengths in twentieths of a point, sizes in
// half points, multiples in 240ths.
Color randomColor(QRandomGenerator& rng)
{
    return Color(rng.bounded(256) / 255.0, rng.bounded(256) / 255.0, rng.bounded(256) / 255.0);
}

Attributes randomCharacterAttributes(QRandomGenerator& rng)
{
    static const char* families[] = {"Helvetica", "Times", "Courier", "Liberation Sans", "Gill Sans"};
    static const double sizes[] = {9, 10.5, 12, 14, 18, 24};
    Attributes a;
    a.insert(FontAttributeName,
             QVariant::fromValue(
                 Font::fromFamily(QLatin1String(families[rng.bounded(5)]), sizes[rng.bounded(6)], rng.bounded(4))));
    if (rng.bounded(3) == 0)
        a.insert(ForegroundColorAttributeName, QVariant::fromValue(randomColor(rng)));
    if (rng.bounded(4) == 0)
        a.insert(BackgroundColorAttributeName, QVariant::fromValue(randomColor(rng)));
    static const int underlines[] = {1, 2, 9};
    if (rng.bounded(4) == 0) {
        a.insert(UnderlineStyleAttributeName, underlines[rng.bounded(3)]);
        if (rng.bounded(2))
            a.insert(UnderlineColorAttributeName, QVariant::fromValue(randomColor(rng)));
    }
    if (rng.bounded(5) == 0)
        a.insert(StrikethroughStyleAttributeName, rng.bounded(2) ? 1 : 9);
    if (rng.bounded(5) == 0)
        a.insert(SuperscriptAttributeName, rng.bounded(2) ? 1 : -1);
    if (rng.bounded(5) == 0)
        a.insert(BaselineOffsetAttributeName, rng.bounded(2) ? 1.5 : -2.0);
    if (rng.bounded(5) == 0)
        a.insert(KernAttributeName, rng.bounded(2) ? 1.2 : -0.25);
    if (rng.bounded(6) == 0)
        a.insert(LinkAttributeName,
                 rng.bounded(2) ? QStringLiteral("https://example.com/a?b=1&c=%C3%A9")
                                : QStringLiteral("quillcmt://4F2A-Case-Sensitive"));
    return a;
}

ParagraphStyle randomParagraphStyle(QRandomGenerator& rng)
{
    ParagraphStyle s;
    s.setAlignment(TextAlignment(rng.bounded(5)));
    if (rng.bounded(2)) {
        s.setHeadIndent(rng.bounded(100) * 0.5);
        s.setFirstLineHeadIndent(rng.bounded(100) * 0.5);
    }
    if (rng.bounded(3) == 0)
        s.setTailIndent(-rng.bounded(1, 80) * 1.0);
    if (rng.bounded(2)) {
        s.setParagraphSpacingBefore(rng.bounded(30) * 0.5);
        s.setParagraphSpacing(rng.bounded(30) * 0.5);
    }
    switch (rng.bounded(6)) {
    case 0:
        s.setLineHeightMultiple(1.5);
        break;
    case 1:
        s.setLineHeightMultiple(1.25);
        s.setMaximumLineHeight(30);
        break;
    case 2:
        s.setMinimumLineHeight(14);
        break;
    case 3:
        s.setMinimumLineHeight(16);
        s.setMaximumLineHeight(16);
        break;
    case 4:
        s.setMinimumLineHeight(12);
        s.setMaximumLineHeight(20);
        break;
    default:
        break;
    }
    if (rng.bounded(3) == 0)
        s.setLineSpacing(rng.bounded(1, 10) * 0.5);
    if (rng.bounded(3) == 0) {
        QVector<TextTab> tabs;
        for (int i = 0, n = rng.bounded(5); i < n; ++i)
            tabs.append(TextTab{TextAlignment(rng.bounded(3)), 36.0 * (i + 1) + rng.bounded(4) * 0.5});
        s.setTabStops(tabs);
    }
    if (rng.bounded(4) == 0) {
        static const char* formats[] = {"{disc}",         "{decimal}.", "({lower-roman})",
                                        "{upper-alpha})", "{circle}",   "\u2192"};
        QVector<TextList> lists;
        // Only a numbered level inside a numbered level can include the enclosing number.
        auto numbered = [](const QString& f) {
            return f.contains(QLatin1String("decimal")) || f.contains(QLatin1String("roman"))
                || f.contains(QLatin1String("alpha"));
        };
        for (int i = 0, n = rng.bounded(1, 4); i < n; ++i) {
            const QString format = QString::fromUtf8(formats[rng.bounded(6)]);
            const bool prepend = i > 0 && numbered(format) && numbered(lists.last().markerFormat) && rng.bounded(2);
            lists.append(TextList{format, unsigned(prepend ? 1 : 0), rng.bounded(1, 5)});
        }
        s.setTextLists(lists);
    }
    if (rng.bounded(8) == 0)
        s.setHeaderLevel(rng.bounded(1, 4));
    return s;
}

QString randomWord(QRandomGenerator& rng)
{
    static const char16_t* words[] = {u"manuscript", u"caf\u00e9",    u"\u4e2d\u6587",   u"\U0001F600ok",
                                      u"a\tb",       u"page\u000c",   u"line\u2028next", u"back\\slash",
                                      u"{brace}",    u"{\\QLRY_FN=",  u"\\END_QLRY_FN}", u"\u00a0nbsp",
                                      u"--",         u"\u201cq\u201d"};
    return QString::fromUtf16(words[rng.bounded(14)]);
}

AttributedString randomText(quint32 seed)
{
    QRandomGenerator rng(seed);
    AttributedString text;
    const int paragraphs = rng.bounded(1, 12);
    for (int p = 0; p < paragraphs; ++p) {
        const QVariant style = QVariant::fromValue(randomParagraphStyle(rng));
        const int runs = rng.bounded(1, 6);
        for (int r = 0; r < runs; ++r) {
            Attributes a = randomCharacterAttributes(rng);
            a.insert(ParagraphStyleAttributeName, style);
            QString chunk;
            for (int w = 0, n = rng.bounded(1, 5); w < n; ++w)
                chunk += randomWord(rng) + QLatin1Char(' ');
            if (r == runs - 1 && p < paragraphs - 1)
                chunk += QLatin1Char('\n');
            text.append(chunk, a);
        }
    }
    return text;
}

} // namespace

TEST(RTFRoundTrip, GeneratedTextsComeBackEqual)
{
    for (quint32 seed = 1; seed <= 300; ++seed) {
        const AttributedString original = randomText(seed);
        const QByteArray rtf = write(original);
        for (char c : rtf)
            ASSERT_TRUE(static_cast<unsigned char>(c) < 0x80) << "seed " << seed;
        ASSERT_TRUE(sameText(original, read(rtf))) << "seed " << seed << "\n" << rtf.left(3000).constData();
    }
}

TEST(RTFRoundTrip, DocumentAttributesComeBack)
{
    const QVariantMap attributes{{PaperSizeDocumentAttribute, QSizeF(595.3, 841.9)},
                                 {LeftMarginDocumentAttribute, 72.0},
                                 {RightMarginDocumentAttribute, 54.5},
                                 {TopMarginDocumentAttribute, 36.0},
                                 {BottomMarginDocumentAttribute, 90.0},
                                 {AuthorDocumentAttribute, QStringLiteral("Zo\u00eb {Writer}")}};
    QVariantMap read_;
    const AttributedString text(QStringLiteral("x"));
    read(write(text, attributes), &read_);
    EXPECT_EQ(read_.value(PaperSizeDocumentAttribute).toSizeF(), QSizeF(595.3, 841.9));
    EXPECT_DOUBLE_EQ(read_.value(LeftMarginDocumentAttribute).toDouble(), 72.0);
    EXPECT_DOUBLE_EQ(read_.value(RightMarginDocumentAttribute).toDouble(), 54.5);
    EXPECT_DOUBLE_EQ(read_.value(TopMarginDocumentAttribute).toDouble(), 36.0);
    EXPECT_DOUBLE_EQ(read_.value(BottomMarginDocumentAttribute).toDouble(), 90.0);
    EXPECT_EQ(read_.value(AuthorDocumentAttribute).toString(), QStringLiteral("Zo\u00eb {Writer}"));
}

TEST(RTFRoundTrip, ColoursComeBackToOneIn255)
{
    const Color odd(0.123456, 0.5, 0.999);
    const AttributedString text(QStringLiteral("tinted"),
                                Attributes{{ForegroundColorAttributeName, QVariant::fromValue(odd)}});
    const Color back = read(write(text)).attribute(ForegroundColorAttributeName, 0).value<Color>();
    EXPECT_NEAR(back.redComponent(), odd.redComponent(), 0.5 / 255);
    EXPECT_NEAR(back.greenComponent(), odd.greenComponent(), 0.5 / 255);
    EXPECT_NEAR(back.blueComponent(), odd.blueComponent(), 0.5 / 255);
}

TEST(RTFRoundTrip, TablesKeepTheirCellsRowsWidthsAndColours)
{
    // Two tables (the second after a plain paragraph), cells of one or two paragraphs.
    auto first = std::make_shared<TextTable>(), second = std::make_shared<TextTable>();
    first->numberOfColumns = 3;
    second->numberOfColumns = 1;
    struct Cell {
        std::shared_ptr<TextTable> table;
        int row, column;
        double width;
        Color background;
        const char* text;
    };
    const Color none(1, 1, 1, 0);
    const std::vector<Cell> cells{
        {first, 0, 0, 72, none, "a\n"},        {first, 0, 1, 0, Color(1, 0, 0), "b1\nb2\n"},
        {first, 0, 2, 36.5, none, "c\n"},      {first, 1, 0, 72, none, "d\n"},
        {first, 1, 1, 0, none, "\n"},          {first, 1, 2, 36.5, Color(0, 0, 1), "f\n"},
        {nullptr, 0, 0, 0, none, "between\n"}, {second, 0, 0, 0, none, "only\n"},
        {nullptr, 0, 0, 0, none, "after"},
    };
    AttributedString text;
    for (const Cell& cell : cells) {
        ParagraphStyle style;
        if (cell.table)
            style.setTextBlocks({TextBlock{cell.table, cell.row, 1, cell.column, 1, cell.width, cell.background}});
        text.append(QString::fromUtf8(cell.text), {{ParagraphStyleAttributeName, QVariant::fromValue(style)}});
    }
    const AttributedString back = read(write(text));
    ASSERT_EQ(back.string(), text.string()) << write(text).constData();

    // Tables map one to one (new objects, same grouping), blocks keep rows, columns, widths, colours.
    std::map<const TextTable*, const TextTable*> tables;
    for (qsizetype i = 0; i < text.length(); ++i) {
        const QVector<TextBlock> want =
            text.attribute(ParagraphStyleAttributeName, i).value<ParagraphStyle>().textBlocks();
        const QVector<TextBlock> got =
            back.attribute(ParagraphStyleAttributeName, i).value<ParagraphStyle>().textBlocks();
        ASSERT_EQ(want.size(), got.size()) << i;
        if (want.isEmpty())
            continue;
        const TextBlock& w = want.front();
        const TextBlock& g = got.front();
        ASSERT_TRUE(g.table);
        auto [it, inserted] = tables.emplace(w.table.get(), g.table.get());
        EXPECT_EQ(it->second, g.table.get()) << i;
        EXPECT_EQ(g.table->numberOfColumns, w.table->numberOfColumns);
        EXPECT_EQ(std::tuple(g.startingRow, g.startingColumn, g.contentWidth),
                  std::tuple(w.startingRow, w.startingColumn, w.contentWidth))
            << i;
        if (w.backgroundColor.alphaComponent() > 0)
            EXPECT_EQ(g.backgroundColor, w.backgroundColor) << i;
        else
            EXPECT_EQ(g.backgroundColor.alphaComponent(), 0.0) << i;
    }
    EXPECT_EQ(tables.size(), 2u);
    EXPECT_NE(tables[first.get()], tables[second.get()]);
}

TEST(RTFRoundTrip, ParagraphSeparatorsBecomeLineFeeds)
{
    // Every paragraph terminator is written as the one RTF paragraph mark and read back as a line feed.
    const AttributedString text(QStringLiteral("a\rb\r\nc\u2029d\ne"));
    EXPECT_EQ(read(write(text)).string(), QStringLiteral("a\nb\nc\nd\ne"));
    // A line separator stays one wherever it stands: first, last, doubled, beside paragraph breaks and
    // at a change of formatting.
    EXPECT_EQ(read(write(AttributedString(QStringLiteral("a\u2028b")))).string(), QStringLiteral("a\u2028b"));
    AttributedString separators(QStringLiteral("\u2028a\u2028\u2028b\r\n\u2028\rc\u2029\u2028"));
    separators.append(
        QStringLiteral("\u2028bold\u2028"),
        {{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 14, BoldFontMask))}});
    const QByteArray rtf = write(separators);
    EXPECT_FALSE(rtf.contains("\\line")) << rtf.toStdString();
    EXPECT_EQ(read(rtf).string(), QStringLiteral("\u2028a\u2028\u2028b\n\u2028\nc\n\u2028\u2028bold\u2028"));
}
