// The layout engine's lines, paragraph styles, containers and control characters.
#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include <qlyappkit/platform/layout/Typesetter.h>
#include <qlyappkit/platform/values/TextAttachment.h>

#include "LayoutTestSupport.h"

namespace qly {
namespace {

using layouttest::fontAttributes;
using layouttest::Layout;
using layouttest::styled;

const Attributes Serif12 = fontAttributes(QStringLiteral("Times"), 12);

double lineHeight(const Attributes& attributes)
{
    return LayoutManager::defaultLineHeightForFont(attributes.value(FontAttributeName).value<Font>());
}

TEST(LayoutManager, LinesCoverTheTextInOrderAndStackWithoutGaps)
{
    QRandomGenerator random(7);
    QString text;
    for (int p = 0; p < 6; ++p)
        text += layouttest::words(random, 10 + 15 * p) + (p % 2 ? QStringLiteral("\r\n") : QStringLiteral("\n"));
    Layout layout(AttributedString(text, Serif12), QSizeF(250, TextContainer::LargeDimension));
    const auto lines = layout.allLines();
    ASSERT_GT(lines.size(), 10u);
    qsizetype next = 0;
    double y = 0;
    for (const LineFragment& line : lines) {
        EXPECT_EQ(line.glyphRange.location, next);
        EXPECT_GT(line.glyphRange.length, 0);
        EXPECT_DOUBLE_EQ(line.rect.y(), y);
        EXPECT_DOUBLE_EQ(line.rect.width(), 250);
        EXPECT_DOUBLE_EQ(line.rect.height(), lineHeight(Serif12));
        // Glyphs stay inside the padded width.
        EXPECT_GE(line.usedRect.left(), TextContainer::DefaultLineFragmentPadding - 0.01);
        EXPECT_LE(line.usedRect.right(), 250 - TextContainer::DefaultLineFragmentPadding + 0.01);
        next = line.glyphRange.end();
        y = line.rect.bottom();
    }
    EXPECT_EQ(next, text.size());
    EXPECT_TRUE(layout.manager.layoutReachedEnd());
    EXPECT_EQ(layout.manager.glyphRangeForTextContainer(layout.container()), (Range{0, text.size()}));
    EXPECT_DOUBLE_EQ(layout.manager.usedRectForTextContainer(layout.container()).height(), y);
}

TEST(LayoutManager, OneLinePerShortParagraphAndOneForAnEmptyOne)
{
    Layout layout(AttributedString(QStringLiteral("One\n\nThree"), Serif12));
    const auto lines = layout.allLines();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[1].glyphRange, (Range{4, 1}));
    EXPECT_DOUBLE_EQ(lines[1].rect.height(), lineHeight(Serif12));
    EXPECT_DOUBLE_EQ(lines[1].usedRect.width(), 0);
}

struct StyleCase {
    const char* name;
    std::function<void(ParagraphStyle&)> set;
    double firstFragment; // height of the second paragraph's one fragment, in line heights plus points
    double firstFragmentPoints;
    double usedTopOffset; // used rect below the fragment's top
};

TEST(LayoutManager, ParagraphSpacingAndLineHeightsShapeTheFragments)
{
    const double h = lineHeight(Serif12);
    const std::vector<StyleCase> cases = {
        {"plain", [](ParagraphStyle&) {}, 1, 0, 0},
        {"spacing before", [](ParagraphStyle& s) { s.setParagraphSpacingBefore(11); }, 1, 11, 11},
        {"spacing after", [](ParagraphStyle& s) { s.setParagraphSpacing(7); }, 1, 7, 0},
        {"line spacing", [](ParagraphStyle& s) { s.setLineSpacing(3); }, 1, 3, 0},
        {"multiple", [](ParagraphStyle& s) { s.setLineHeightMultiple(2); }, 2, 0, 0},
        {"minimum", [](ParagraphStyle& s) { s.setMinimumLineHeight(40); }, 0, 40, 0},
        {"maximum", [](ParagraphStyle& s) { s.setMaximumLineHeight(6); }, 0, 6, 0},
        {"multiple capped",
         [](ParagraphStyle& s) {
             s.setLineHeightMultiple(3);
             s.setMaximumLineHeight(20);
         },
         0, 20, 0},
    };
    for (const StyleCase& c : cases) {
        SCOPED_TRACE(c.name);
        ParagraphStyle style;
        c.set(style);
        AttributedString text(QStringLiteral("First\n"), Serif12);
        text.append(QStringLiteral("Second\n"), styled(Serif12, style));
        text.append(QStringLiteral("Third"), Serif12);
        Layout layout(text);
        const auto lines = layout.allLines();
        ASSERT_EQ(lines.size(), 3u);
        EXPECT_DOUBLE_EQ(lines[1].rect.top(), h);
        EXPECT_NEAR(lines[1].rect.height(), c.firstFragment * h + c.firstFragmentPoints, 1e-9);
        EXPECT_NEAR(lines[1].usedRect.top() - lines[1].rect.top(), c.usedTopOffset, 1e-9);
        EXPECT_DOUBLE_EQ(lines[2].rect.top(), lines[1].rect.bottom());
    }
}

TEST(LayoutManager, NoSpacingBeforeTheFirstGlyphOfTheText)
{
    ParagraphStyle style;
    style.setParagraphSpacingBefore(20);
    Layout layout(AttributedString(QStringLiteral("Only"), styled(Serif12, style)));
    const auto lines = layout.allLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_DOUBLE_EQ(lines[0].rect.top(), 0);
    EXPECT_DOUBLE_EQ(lines[0].usedRect.top(), 0);
}

TEST(LayoutManager, AlignmentAndIndentsPlaceTheGlyphs)
{
    const double width = 400, padding = TextContainer::DefaultLineFragmentPadding;
    const QString longText = QStringLiteral(
        "A paragraph long enough to wrap over several lines of the container so that the first line and the "
        "lines after it can be told apart by where they start and end.");
    struct Case {
        const char* name;
        TextAlignment alignment;
        double first, head, tail;
        QString text;
        std::function<void(const std::vector<LineFragment>&)> check;
    };
    const std::vector<Case> cases = {
        {"left with indents", LeftTextAlignment, 36, 12, -50, longText,
         [&](const auto& lines) {
             EXPECT_NEAR(lines[0].usedRect.left(), padding + 36, 0.01);
             EXPECT_NEAR(lines[1].usedRect.left(), padding + 12, 0.01);
             for (const auto& line : lines)
                 EXPECT_LE(line.usedRect.right(), width - padding - 50 + 0.01);
         }},
        {"positive tail from the leading edge", LeftTextAlignment, 0, 0, 200, longText,
         [&](const auto& lines) {
             for (const auto& line : lines)
                 EXPECT_LE(line.usedRect.right(), padding + 200 + 0.01);
         }},
        {"right", RightTextAlignment, 0, 0, 0, QStringLiteral("short"),
         [&](const auto& lines) { EXPECT_NEAR(lines[0].usedRect.right(), width - padding, 0.01); }},
        {"centre", CenterTextAlignment, 0, 0, 0, QStringLiteral("short"),
         [&](const auto& lines) { EXPECT_NEAR(lines[0].usedRect.center().x(), width / 2, 0.51); }},
        {"justified", JustifiedTextAlignment, 0, 0, 0, longText,
         [&](const auto& lines) {
             for (size_t i = 0; i + 1 < lines.size(); ++i)
                 EXPECT_NEAR(lines[i].usedRect.width(), width - 2 * padding, 0.01);
             EXPECT_LT(lines.back().usedRect.width(), width - 2 * padding - 20);
         }},
        {"natural right to left", NaturalTextAlignment, 0, 0, 0,
         QString::fromUtf8("\327\251\327\234\327\225\327\235"), // Hebrew "shalom"
         [&](const auto& lines) { EXPECT_NEAR(lines[0].usedRect.right(), width - padding, 0.01); }},
        {"natural left to right", NaturalTextAlignment, 0, 0, 0, QStringLiteral("short"),
         [&](const auto& lines) { EXPECT_NEAR(lines[0].usedRect.left(), padding, 0.01); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ParagraphStyle style;
        style.setAlignment(c.alignment);
        style.setFirstLineHeadIndent(c.first);
        style.setHeadIndent(c.head);
        style.setTailIndent(c.tail);
        Layout layout(AttributedString(c.text, styled(Serif12, style)), QSizeF(width, TextContainer::LargeDimension));
        const auto lines = layout.allLines();
        ASSERT_FALSE(lines.empty());
        c.check(lines);
    }
}

TEST(LayoutManager, TabStopsPlaceTheTextAfterATab)
{
    ParagraphStyle style;
    style.setTabStops({TextTab{LeftTextAlignment, 150}});
    Layout layout(AttributedString(QStringLiteral("a\tb"), styled(Serif12, style)));
    const auto lines = layout.allLines();
    ASSERT_EQ(lines.size(), 1u);
    // "b" starts at the stop: the glyphs reach past it.
    EXPECT_GT(lines[0].usedRect.right(), TextContainer::DefaultLineFragmentPadding + 150);
    EXPECT_LT(lines[0].usedRect.right(), TextContainer::DefaultLineFragmentPadding + 170);
}

TEST(LayoutManager, TextFlowsThroughContainersAndTellsTheDelegate)
{
    struct Recorder : LayoutManagerDelegate {
        std::vector<std::pair<TextContainer*, bool>> calls;
        void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager&, TextContainer* c, bool atEnd) override
        {
            calls.push_back({c, atEnd});
        }
    } recorder;
    const double h = lineHeight(Serif12);
    QString text;
    for (int i = 0; i < 10; ++i)
        text += QStringLiteral("line %1\n").arg(i);
    text.chop(1);
    // Three lines and a half per container: three lines each.
    Layout layout(AttributedString(text, Serif12), QSizeF(300, 3.5 * h), 2);
    layout.manager.setDelegate(&recorder);
    EXPECT_FALSE(layout.manager.layoutReachedEnd());
    EXPECT_EQ(layout.manager.glyphRangeForTextContainer(layout.container(0)).location, 0);
    EXPECT_EQ(layout.lines(0).size(), 3u);
    EXPECT_EQ(layout.lines(1).size(), 3u);
    EXPECT_EQ(layout.lines(1).front().rect.top(), 0);
    EXPECT_EQ(layout.manager.firstUnlaidCharacterIndex(), text.indexOf(QStringLiteral("line 6")));
    ASSERT_GE(recorder.calls.size(), 2u);
    EXPECT_EQ(recorder.calls[0], std::make_pair(layout.container(0), false));
    EXPECT_EQ(recorder.calls[1], std::make_pair(layout.container(1), false));
    EXPECT_EQ(layout.manager.textContainerForGlyphAtIndex(text.indexOf(QStringLiteral("line 4"))), layout.container(1));
    EXPECT_EQ(layout.manager.textContainerForGlyphAtIndex(text.indexOf(QStringLiteral("line 8"))), nullptr);

    // A container added later takes the rest; the last one holds the end.
    recorder.calls.clear();
    layout.manager.addTextContainer(std::make_unique<TextContainer>(QSizeF(300, 10 * h)));
    EXPECT_TRUE(layout.manager.layoutReachedEnd());
    EXPECT_EQ(layout.lines(2).size(), 4u);
    ASSERT_FALSE(recorder.calls.empty());
    EXPECT_EQ(recorder.calls.back(), std::make_pair(layout.container(2), true));
    layout.manager.setDelegate(nullptr);

    // A taller first container takes more lines; the others follow.
    layout.container(0)->setSize(QSizeF(300, 5.5 * h));
    EXPECT_EQ(layout.lines(0).size(), 5u);
    EXPECT_EQ(layout.lines(1).size(), 3u);
    EXPECT_EQ(layout.lines(2).size(), 2u);
}

TEST(LayoutManager, ADelegateAddsContainersAsTheTextNeedsThem)
{
    struct Pages : LayoutManagerDelegate {
        void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& manager, TextContainer* c,
                                                            bool atEnd) override
        {
            if (!atEnd && c == manager.textContainers().back())
                manager.addTextContainer(std::make_unique<TextContainer>(c->size()));
        }
    } pages;
    QRandomGenerator random(3);
    QString text;
    for (int i = 0; i < 40; ++i)
        text += layouttest::words(random, 60) + QLatin1Char('\n');
    Layout layout(AttributedString(text, Serif12), QSizeF(300, 200));
    layout.manager.setDelegate(&pages);
    EXPECT_TRUE(layout.manager.layoutReachedEnd());
    layout.manager.setDelegate(nullptr);
    EXPECT_GT(layout.manager.textContainers().size(), 10u);
    qsizetype next = 0;
    for (TextContainer* c : layout.manager.textContainers()) {
        const Range range = layout.manager.glyphRangeForTextContainer(c);
        EXPECT_EQ(range.location, next);
        EXPECT_LE(layout.manager.usedRectForTextContainer(c).bottom(), 200.0);
        next = range.end();
    }
    EXPECT_EQ(next, text.size());
}

TEST(LayoutManager, ControlCharactersFollowTheTypesettersActions)
{
    // U+0001 as a line break, form feed as the default container break.
    struct Custom : Typesetter {
        int actionForControlCharacterAtIndex(qsizetype i) override
        {
            if (attributedString()->characterAt(i) == QChar(1))
                return LineBreakAction;
            return Typesetter::actionForControlCharacterAtIndex(i);
        }
    };
    Layout layout(AttributedString(QStringLiteral("one\001two\fthree\u2028four\u0085five"), Serif12), QSizeF(300, 1000),
                  2);
    layout.manager.setTypesetter(std::make_unique<Custom>());
    const auto first = layout.lines(0);
    const auto second = layout.lines(1);
    ASSERT_EQ(first.size(), 2u);
    EXPECT_EQ(first[0].glyphRange, (Range{0, 4}));
    EXPECT_EQ(first[1].glyphRange, (Range{4, 4})); // "two" and the form feed
    ASSERT_EQ(second.size(), 3u);
    EXPECT_EQ(second[0].glyphRange, (Range{8, 6})); // "three" and the line separator
    EXPECT_EQ(second[1].glyphRange, (Range{14, 5})); // "four" and the next-line character
    EXPECT_DOUBLE_EQ(second[0].rect.top(), 0);
}

TEST(LayoutManager, AttachmentsTakeTheirPicturesSizeOrTheScaledOne)
{
    QImage image(100, 80, QImage::Format_RGB32);
    image.fill(Qt::red);
    const TextAttachment attachment = TextAttachment::fromImage(image);
    Attributes withPicture = Serif12;
    withPicture.insert(AttachmentAttributeName, QVariant::fromValue(attachment));
    AttributedString text(QStringLiteral("Before "), Serif12);
    text.append(QString(QChar(AttachmentCharacter)), withPicture);
    text.append(QStringLiteral(" after"), Serif12);

    Layout natural(text);
    auto lines = natural.allLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_GE(lines[0].rect.height(), 80.0);
    const double withImage = lines[0].usedRect.width();

    Layout plain(AttributedString(QStringLiteral("Before  after"), Serif12));
    EXPECT_NEAR(withImage - plain.allLines()[0].usedRect.width(), 100, 3.0);

    // In a container narrower than the picture, scaling down keeps the proportions.
    Layout scaled(text, QSizeF(60, TextContainer::LargeDimension));
    scaled.manager.setDefaultAttachmentScaling(ImageScaling::ProportionallyDown);
    lines = scaled.allLines();
    double tallest = 0;
    for (const auto& line : lines)
        tallest = std::max(tallest, line.rect.height());
    EXPECT_LT(tallest, 60.0);
    EXPECT_GT(tallest, 40.0 * 0.8 - 1);
}

TEST(LayoutManager, TableCellsAreLaidOutAsTheirTextInOrder)
{
    auto table = std::make_shared<TextTable>(TextTable{2});
    AttributedString text;
    const QStringList cells = {QStringLiteral("Name"), QStringLiteral("Role"), QStringLiteral("Ada"),
                               QStringLiteral("Writer")};
    for (int i = 0; i < cells.size(); ++i) {
        ParagraphStyle style;
        TextBlock block;
        block.table = table;
        block.startingRow = i / 2;
        block.startingColumn = i % 2;
        style.setTextBlocks({block});
        text.append(cells[i] + QLatin1Char('\n'), styled(Serif12, style));
    }
    Layout layout(text);
    const auto lines = layout.allLines();
    ASSERT_EQ(lines.size(), 4u);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(text.substring(lines[size_t(i)].glyphRange), cells[i] + QLatin1Char('\n'));
}

TEST(LayoutManager, EmptyTextAndNoContainersAreHandled)
{
    Layout empty(AttributedString(), QSizeF(300, 300));
    EXPECT_TRUE(empty.manager.layoutReachedEnd());
    EXPECT_TRUE(empty.lines().empty());
    EXPECT_EQ(empty.manager.glyphRangeForTextContainer(empty.container()), (Range{0, 0}));
    EXPECT_TRUE(empty.manager.usedRectForTextContainer(empty.container()).isNull());

    Layout none(AttributedString(QStringLiteral("text"), Serif12), QSizeF(300, 300), 0);
    EXPECT_FALSE(none.manager.layoutReachedEnd());
    EXPECT_EQ(none.manager.textContainerForGlyphAtIndex(0), nullptr);
    EXPECT_TRUE(none.manager.lineFragmentRectForGlyphAtIndex(0).isNull());
}

} // namespace
} // namespace qly

namespace qly {
namespace {

// Pixels of the colour in the rectangle of the image.
int countPixels(const QImage& image, const QRect& rect, const std::function<bool(QRgb)>& match)
{
    int count = 0;
    for (int y = std::max(rect.top(), 0); y <= std::min(rect.bottom(), image.height() - 1); ++y)
        for (int x = std::max(rect.left(), 0); x <= std::min(rect.right(), image.width() - 1); ++x)
            count += match(image.pixel(x, y)) ? 1 : 0;
    return count;
}

TEST(LayoutManager, DrawsEachContainersLinesAndPictures)
{
    QImage picture(40, 30, QImage::Format_RGB32);
    picture.fill(Qt::red);
    Attributes withPicture = Serif12;
    withPicture.insert(AttachmentAttributeName, QVariant::fromValue(TextAttachment::fromImage(picture)));
    AttributedString text(QStringLiteral("First page text\f"), Serif12);
    text.append(QString(QChar(AttachmentCharacter)), withPicture);
    text.append(QStringLiteral(" second page"), Serif12);
    Layout layout(text, QSizeF(300, 200), 2);
    layout.manager.ensureLayoutForAllText();

    auto render = [&](int page) {
        QImage image(300, 200, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        layout.manager.drawTextContainer(layout.container(page), &painter, QPointF(0, 0));
        return image;
    };
    const auto dark = [](QRgb c) { return qGray(c) < 128 && qRed(c) < 200; };
    const auto red = [](QRgb c) { return qRed(c) > 200 && qGreen(c) < 60 && qBlue(c) < 60; };
    const QImage first = render(0);
    const QRect firstLine = layout.lines(0)[0].usedRect.toAlignedRect();
    EXPECT_GT(countPixels(first, firstLine, dark), 50);
    EXPECT_EQ(countPixels(first, QRect(0, firstLine.bottom() + 2, 300, 200), dark), 0);
    EXPECT_EQ(countPixels(first, first.rect(), red), 0);

    const QImage second = render(1);
    const QRect secondLine = layout.lines(1)[0].usedRect.toAlignedRect();
    // The picture stands on the baseline at the start of the line, at its own size.
    EXPECT_GT(countPixels(second, QRect(secondLine.left(), secondLine.top(), 45, secondLine.height()), red),
              40 * 30 - 100);
    EXPECT_GT(countPixels(second, secondLine, dark), 50);
}

} // namespace
} // namespace qly
