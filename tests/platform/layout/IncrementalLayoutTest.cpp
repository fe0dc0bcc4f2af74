// Edits lay out again only what they touched, and always end where a fresh layout of the new text
// would.
#include <gtest/gtest.h>

#include "LayoutTestSupport.h"

namespace qly {
namespace {

using layouttest::fontAttributes;
using layouttest::Layout;

const QSizeF Page(468, 648);

// Adds a page like the last whenever the last one is full, as a page view does.
struct Pages : LayoutManagerDelegate {
    void layoutManagerDidCompleteLayoutForTextContainer(LayoutManager& manager, TextContainer* c, bool atEnd) override
    {
        if (!atEnd && c && c == manager.textContainers().back())
            manager.addTextContainer(std::make_unique<TextContainer>(c->size()));
    }
};

AttributedString manuscript(int paragraphs, quint32 seed)
{
    QRandomGenerator random(seed);
    AttributedString text;
    const Attributes body = fontAttributes(QStringLiteral("Times"), 12);
    const Attributes heading = fontAttributes(QStringLiteral("Helvetica-Bold"), 16);
    for (int p = 0; p < paragraphs; ++p) {
        if (p % 25 == 0)
            text.append(QStringLiteral("Chapter %1\n").arg(p / 25 + 1), heading);
        text.append(layouttest::words(random, 20 + int(random.bounded(120))) + QLatin1Char('\n'), body);
    }
    return text;
}

struct Snapshot {
    std::vector<std::pair<Range, QRectF>> lines;
    std::vector<int> containers;
    friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

void PrintTo(const Snapshot& s, std::ostream* os)
{
    *os << s.lines.size() << " lines";
    for (size_t i = 0; i < s.lines.size(); ++i) {
        const auto& [range, rect] = s.lines[i];
        *os << "\n  [" << range.location << "+" << range.length << "] c" << s.containers[i] << " y" << rect.y() << " h"
            << rect.height() << " w" << rect.width();
    }
}

Snapshot snapshot(LayoutManager& manager)
{
    Snapshot s;
    manager.ensureLayoutForAllText();
    for (TextContainer* c : manager.textContainers()) {
        for (const LineFragment& line : manager.lineFragmentsForTextContainer(c)) {
            s.lines.push_back({line.glyphRange, line.rect});
            s.containers.push_back(line.containerIndex);
        }
    }
    return s;
}

Snapshot freshSnapshot(const AttributedString& text)
{
    Layout fresh(text, Page);
    Pages pages;
    fresh.manager.setDelegate(&pages);
    Snapshot s = snapshot(fresh.manager);
    fresh.manager.setDelegate(nullptr);
    return s;
}

TEST(IncrementalLayout, AKeystrokeShapesOneParagraphAndMovesNoOther)
{
    Layout layout(manuscript(300, 11), Page);
    Pages pages;
    layout.manager.setDelegate(&pages);
    layout.manager.ensureLayoutForAllText();
    ASSERT_GT(layout.manager.textContainers().size(), 20u);

    const qsizetype middle = layout.storage.length() / 2;
    const QString around = layout.storage.substring(Range{middle - 1, 2});
    ASSERT_FALSE(around.contains(QLatin1Char('\n')));
    layout.manager.resetStatistics();
    layout.storage.replaceCharacters(Range{middle, 0}, QStringLiteral("x"));
    layout.manager.ensureLayoutForAllText();
    // The edited paragraph and the one before it (which looks at its neighbour) at most.
    EXPECT_LE(layout.manager.statistics().paragraphsShaped, 2);
    EXPECT_LE(layout.manager.statistics().paragraphsPlaced, 3);
    EXPECT_EQ(snapshot(layout.manager), freshSnapshot(layout.storage.attributedString()));
    layout.manager.setDelegate(nullptr);
}

TEST(IncrementalLayout, ParagraphsAfterAGrowingOneAreMovedNotShaped)
{
    Layout layout(manuscript(200, 5), Page);
    Pages pages;
    layout.manager.setDelegate(&pages);
    layout.manager.ensureLayoutForAllText();
    const qsizetype at = layout.storage.length() / 3;
    layout.manager.resetStatistics();
    // Three lines' worth of words: every later line moves down, across every page break after it.
    layout.storage.replaceCharacters(Range{at, 0},
                                     QStringLiteral(" more words to make a longer paragraph").repeated(6));
    layout.manager.ensureLayoutForAllText();
    EXPECT_LE(layout.manager.statistics().paragraphsShaped, 2);
    EXPECT_GT(layout.manager.statistics().paragraphsPlaced, 50);
    EXPECT_EQ(snapshot(layout.manager), freshSnapshot(layout.storage.attributedString()));
    layout.manager.setDelegate(nullptr);
}

TEST(IncrementalLayout, RandomEditsEndWhereAFreshLayoutWould)
{
    QRandomGenerator random(2026);
    Layout layout(manuscript(40, 9), Page);
    Pages pages;
    layout.manager.setDelegate(&pages);
    layout.manager.ensureLayoutForAllText();
    const QStringList insertions = {QStringLiteral("x"),      QStringLiteral("\n"),   QStringLiteral(" two words"),
                                    QStringLiteral("\f"),     QStringLiteral("\r\n"), QStringLiteral("\r"),
                                    QStringLiteral("\u2029"), QStringLiteral("\t")};
    for (int step = 0; step < 120; ++step) {
        SCOPED_TRACE(step);
        const qsizetype length = layout.storage.length();
        const qsizetype at = qsizetype(random.bounded(int(length + 1)));
        const int kind = int(random.bounded(4));
        if (kind == 0 && length > 0) {
            const qsizetype n = std::min<qsizetype>(qsizetype(random.bounded(300)) + 1, length - std::min(at, length));
            layout.storage.deleteCharacters(Range{std::min(at, length - 1), std::max<qsizetype>(n, 1)});
        } else if (kind == 1 && length > 10) {
            // An attribute change on a stretch: a bigger font.
            const qsizetype n = std::min<qsizetype>(40, length - std::min(at, length - 1));
            layout.storage.addAttribute(FontAttributeName, QVariant::fromValue(Font(QStringLiteral("Times"), 18)),
                                        Range{std::min(at, length - 1), n});
        } else {
            layout.storage.replaceCharacters(Range{at, 0}, insertions.at(int(random.bounded(insertions.size()))));
        }
        // Lay out only part of the time, so that several edits pile up before layout.
        if (step % 3 == 0 || step > 110) {
            ASSERT_EQ(snapshot(layout.manager), freshSnapshot(layout.storage.attributedString()));
        }
        // Trim pages after the end, as a page view does.
        while (layout.manager.textContainers().size() > 1
               && layout.manager.glyphRangeForTextContainer(layout.manager.textContainers().back()).length == 0)
            layout.manager.removeTextContainerAtIndex(qsizetype(layout.manager.textContainers().size()) - 1);
    }
    layout.manager.setDelegate(nullptr);
}

TEST(IncrementalLayout, ResizingAContainerFlowsTheTextAgain)
{
    Layout layout(manuscript(60, 4), Page);
    Pages pages;
    layout.manager.setDelegate(&pages);
    layout.manager.ensureLayoutForAllText();
    const size_t before = layout.manager.textContainers().size();
    for (TextContainer* c : layout.manager.textContainers())
        c->setSize(QSizeF(300, 400));
    layout.manager.ensureLayoutForAllText();
    EXPECT_GT(layout.manager.textContainers().size(), before);
    Layout fresh(layout.storage.attributedString(), QSizeF(300, 400));
    fresh.manager.setDelegate(&pages);
    EXPECT_EQ(snapshot(layout.manager), snapshot(fresh.manager));
    fresh.manager.setDelegate(nullptr);
    layout.manager.setDelegate(nullptr);
}

} // namespace
} // namespace qly
