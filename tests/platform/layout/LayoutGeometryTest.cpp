// Where the engine puts the caret and the selection: the extra line after a final line break, insertion
// points and hit testing as inverses, highlight rectangles, and the decorations it draws.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include <qlyappkit/platform/values/Color.h>

#include "LayoutTestSupport.h"

namespace qly {
namespace {

using layouttest::fontAttributes;
using layouttest::Layout;

const Attributes Sans12 = fontAttributes(QStringLiteral("Helvetica"), 12);

double lineHeight() { return LayoutManager::defaultLineHeightForFont(Font(QStringLiteral("Helvetica"), 12)); }

// Adds a container whenever layout runs out of them, as a paged view does.
struct AddingDelegate : LayoutManagerDelegate {
    QSizeF size;
    int added = 0;
    std::vector<std::pair<int, bool>> reports; ///< container index (-1: none) and atEnd
    void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& manager, TextContainer* container,
                                                        bool atEnd) override
    {
        reports.emplace_back(int(manager.indexOfTextContainer(container)), atEnd);
        if (!atEnd
            && (!container
                || manager.indexOfTextContainer(container) + 1 == qsizetype(manager.textContainers().size()))) {
            manager.addTextContainer(std::make_unique<TextContainer>(size));
            ++added;
        }
    }
};

TEST(LayoutGeometry, TheExtraLineExistsOnlyAfterAFinalLineBreakOrInAnEmptyText)
{
    struct Case {
        QString text;
        bool extra;
        double y; ///< top of the extra line, in lines
    };
    const Case cases[] = {
        {QString(), true, 0},
        {QStringLiteral("abc"), false, 0},
        {QStringLiteral("abc\n"), true, 1},
        {QStringLiteral("abc\r\n"), true, 1},
        {QStringLiteral("abc\n\n"), true, 2},
        {QString::fromUtf16(u"abc\u2029"), true, 1},
        {QString::fromUtf16(u"abc\u2028"), false, 0}, // a line break inside a paragraph is not its end
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        Layout layout(AttributedString(c.text, Sans12));
        const QRectF extra = layout.manager.extraLineFragmentRect();
        EXPECT_EQ(!extra.isNull(), c.extra);
        if (!c.extra) {
            EXPECT_EQ(layout.manager.extraLineFragmentTextContainer(), nullptr);
            continue;
        }
        EXPECT_EQ(layout.manager.extraLineFragmentTextContainer(), layout.container());
        EXPECT_NEAR(extra.top(), c.y * lineHeight(), 0.01);
        EXPECT_NEAR(extra.height(), lineHeight(), 0.01);
        // The caret at the end of the text stands on that line, at the text's left edge.
        TextContainer* container = nullptr;
        const QRectF caret = layout.manager.insertionPointRectForCharacterIndex(c.text.size(), &container);
        EXPECT_EQ(container, layout.container());
        EXPECT_NEAR(caret.top(), extra.top(), 0.01);
        EXPECT_NEAR(caret.left(), TextContainer::DefaultLineFragmentPadding, 0.01);
    }
}

TEST(LayoutGeometry, TheExtraLineGoesToTheNextContainerWhenTheLastIsFull)
{
    // Two lines fill a container exactly; the empty third line needs another.
    Layout probe(AttributedString(QStringLiteral("one\ntwo"), Sans12));
    const QSizeF size(300, probe.lines().at(1).rect.bottom());
    Layout layout(AttributedString(QStringLiteral("one\ntwo\n"), Sans12), size, 1);
    AddingDelegate delegate;
    delegate.size = size;
    layout.manager.setDelegate(&delegate);
    TextContainer* extra = layout.manager.extraLineFragmentTextContainer();
    ASSERT_EQ(layout.manager.textContainers().size(), 2u);
    EXPECT_EQ(extra, layout.container(1));
    EXPECT_EQ(delegate.added, 1);
    EXPECT_DOUBLE_EQ(layout.manager.extraLineFragmentRect().top(), 0);
    // Layout reported its end in the container that holds the extra line.
    ASSERT_FALSE(delegate.reports.empty());
    EXPECT_EQ(delegate.reports.back(), (std::pair<int, bool>{1, true}));
    // Deleting the final break takes the extra line away again.
    layout.storage.replaceCharacters(Range{7, 1}, QString());
    EXPECT_TRUE(layout.manager.extraLineFragmentRect().isNull());
    layout.manager.ensureLayoutForAllText();
    EXPECT_EQ(delegate.reports.back(), (std::pair<int, bool>{0, true}));
}

TEST(LayoutGeometry, ClickingAtTheCaretOfEveryIndexGivesThatIndexBack)
{
    const QString text = QStringLiteral("The quick brown fox jumps over the lazy dog and keeps running far away.\n"
                                        "Second paragraph, short.\n\nAfter an empty one");
    Layout layout(AttributedString(text, Sans12), QSizeF(160, TextContainer::LargeDimension));
    ASSERT_GT(layout.lines().size(), 5u);
    for (qsizetype i = 0; i <= text.size(); ++i) {
        TextContainer* container = nullptr;
        const QRectF caret = layout.manager.insertionPointRectForCharacterIndex(i, &container);
        ASSERT_EQ(container, layout.container()) << i;
        ASSERT_FALSE(caret.isNull()) << i;
        EXPECT_EQ(layout.manager.characterIndexForPoint(caret.center(), layout.container()), i) << i;
    }
}

TEST(LayoutGeometry, PointsOutsideTheLinesFindTheNearestPlace)
{
    const QString text = QStringLiteral("Short line\nAnother line");
    Layout layout(AttributedString(text, Sans12), QSizeF(400, TextContainer::LargeDimension));
    LayoutManager& manager = layout.manager;
    const double h = lineHeight();
    struct Case {
        QPointF point;
        qsizetype index;
    };
    const Case cases[] = {
        {QPointF(-50, h / 2), 0}, // left of the first line
        {QPointF(390, h / 2), 10}, // right of the first paragraph: before its line break
        {QPointF(-5, -30), 0}, // above the text: the first line
        {QPointF(390, 10 * h), text.size()}, // below the text: the end
        {QPointF(-5, 1.5 * h), 11}, // start of the second line
    };
    for (const Case& c : cases) {
        const qsizetype got = manager.characterIndexForPoint(c.point, layout.container());
        EXPECT_EQ(got, c.index) << c.point.x() << "," << c.point.y();
    }
}

TEST(LayoutGeometry, SelectionRectanglesCoverTheRangeLineByLine)
{
    const QString text = QStringLiteral("alpha beta gamma delta epsilon zeta eta theta iota kappa");
    Layout layout(AttributedString(text, Sans12), QSizeF(150, TextContainer::LargeDimension));
    const auto lines = layout.lines();
    ASSERT_GE(lines.size(), 3u);
    // From inside the first line to inside the second.
    const qsizetype from = 2, to = lines[1].glyphRange.location + 3;
    const auto rects = layout.manager.selectionRectsForCharacterRange(Range{from, to - from}, layout.container());
    ASSERT_EQ(rects.size(), 2u);
    const QRectF start = layout.manager.insertionPointRectForCharacterIndex(from);
    const QRectF end = layout.manager.insertionPointRectForCharacterIndex(to);
    EXPECT_NEAR(rects[0].left(), start.left(), 0.01);
    EXPECT_NEAR(rects[0].right(), 150, 0.01); // a line the range runs past is highlighted to the edge
    EXPECT_NEAR(rects[0].top(), lines[0].rect.top(), 0.01);
    EXPECT_NEAR(rects[1].top(), lines[1].rect.top(), 0.01);
    EXPECT_NEAR(rects[1].right(), end.left(), 0.01);
    EXPECT_LT(rects[1].left(), end.left());
    // Nothing for an empty range or another container.
    EXPECT_TRUE(layout.manager.selectionRectsForCharacterRange(Range{4, 0}, layout.container()).empty());
}

int countPixels(const QImage& image, const QRect& area, const std::function<bool(QColor)>& test)
{
    int n = 0;
    for (int y = std::max(0, area.top()); y <= std::min(image.height() - 1, area.bottom()); ++y)
        for (int x = std::max(0, area.left()); x <= std::min(image.width() - 1, area.right()); ++x)
            n += test(image.pixelColor(x, y)) ? 1 : 0;
    return n;
}

TEST(LayoutGeometry, BackgroundUnderlineAndStrikethroughAreDrawn)
{
    Attributes marked = Sans12;
    marked.insert(BackgroundColorAttributeName, QVariant::fromValue(Color(1, 1, 0, 1)));
    Attributes underlined = Sans12;
    underlined.insert(UnderlineStyleAttributeName, int(UnderlineStyleSingle));
    AttributedString text(QStringLiteral("plain "), Sans12);
    text.append(AttributedString(QStringLiteral("marked"), marked));
    text.append(AttributedString(QStringLiteral(" plain "), Sans12));
    text.append(AttributedString(QStringLiteral("underlined"), underlined));
    Layout layout(text, QSizeF(400, 100));
    QImage image(400, 40, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    layout.manager.drawTextContainer(layout.container(), &painter, QPointF(0, 0));
    painter.end();
    const auto x = [&](qsizetype i) { return int(layout.manager.insertionPointRectForCharacterIndex(i).x()); };
    const auto lines = layout.lines();
    const int top = int(lines[0].usedRect.top()), bottom = int(lines[0].usedRect.bottom());
    const auto yellow = [](QColor c) { return c.red() > 240 && c.green() > 240 && c.blue() < 30; };
    EXPECT_GT(countPixels(image, QRect(QPoint(x(6), top), QPoint(x(12) - 1, bottom - 1)), yellow), 100);
    EXPECT_EQ(countPixels(image, QRect(QPoint(0, 0), QPoint(x(6) - 2, 39)), yellow), 0);
    // An underline: a row below the baseline dark along the whole word, and no such row under plain text.
    const int baseline = int(lines[0].baseline);
    const auto dark = [](QColor c) { return c.lightness() < 128; };
    int bestUnderlined = 0, bestPlain = 0;
    for (int y = baseline + 1; y <= bottom; ++y) {
        bestUnderlined =
            std::max(bestUnderlined, countPixels(image, QRect(QPoint(x(19), y), QPoint(x(29) - 1, y)), dark));
        bestPlain = std::max(bestPlain, countPixels(image, QRect(QPoint(x(0), y), QPoint(x(5) - 1, y)), dark));
    }
    EXPECT_GT(bestUnderlined, (x(29) - x(19)) * 8 / 10);
    EXPECT_LT(bestPlain, (x(5) - x(0)) / 3);
}

} // namespace
} // namespace qly
