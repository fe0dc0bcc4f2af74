// Keep-with-next: a marked paragraph goes to the next page when the next paragraph's first line would
// not fit below it, within the limits of the rule.
#include <gtest/gtest.h>

#include <qlyappkit/platform/layout/TextContainer.h>
#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/text/attributes/XQAttributeNames.h>
#include <qlyappkit/text/fitting/XQKeepWithNextTypesetter.h>

#include "FittingTestSupport.h"

namespace qly {
namespace {

using namespace fittingtest;

Attributes kept()
{
    Attributes a = body();
    a.insert(XQKeepWithNextAttributeName, true);
    return a;
}

struct Pages {
    TextStorage storage;
    LayoutManager manager;
    XQKeepWithNextTypesetter* typesetter;

    Pages(const AttributedString& text, std::vector<double> heights, bool allow = true) : storage(text)
    {
        auto owned = std::make_unique<XQKeepWithNextTypesetter>();
        typesetter = owned.get();
        typesetter->setAllowsKeepWithNext(allow);
        manager.setTypesetter(std::move(owned));
        manager.setTextStorage(&storage);
        for (double height : heights)
            manager.addTextContainer(std::make_unique<TextContainer>(QSizeF(300, height)));
    }
    int pageOf(const QString& marker)
    {
        TextContainer* c = manager.textContainerForGlyphAtIndex(storage.string().indexOf(marker));
        return int(manager.indexOfTextContainer(c));
    }
};

// fillerLines one-line paragraphs, then the marked heading, then what follows.
AttributedString document(int fillerLines, const QString& heading, const QString& after)
{
    AttributedString text;
    for (int i = 0; i < fillerLines; ++i)
        text.append(QStringLiteral("filler %1\n").arg(i), body());
    text.append(heading, kept());
    if (!after.isEmpty())
        text.append(QStringLiteral("\n") + after, body());
    return text;
}

TEST(XQKeepWithNextTypesetter, MovesAHeadingWhoseNextFirstLineWouldNotFit)
{
    const double page = 10 * line() + 0.5;
    const QString next = QStringLiteral("BODY ") + longParagraph(60);
    struct Case {
        const char* name;
        int filler;
        QString heading;
        QString after;
        std::vector<double> pages;
        bool allow;
        int expectedPage;
    };
    const std::vector<Case> cases = {
        {"last line of the page, body follows: moved", 9, QStringLiteral("HEAD"), next, {page, page}, true, 1},
        {"rule switched off: stays", 9, QStringLiteral("HEAD"), next, {page, page}, false, 0},
        {"first body line still fits below: stays", 8, QStringLiteral("HEAD"), next, {page, page}, true, 0},
        {"last paragraph of the text: stays", 9, QStringLiteral("HEAD"), QString(), {page, page}, true, 0},
        {"taller than the room left: breaks normally",
         9,
         QStringLiteral("HEAD ") + longParagraph(60),
         next,
         {page, page},
         true,
         0},
        {"next page too small for heading and first line: stays",
         9,
         QStringLiteral("HEAD"),
         next,
         {page, 1.5 * line()},
         true,
         0},
        {"body fits whole below: stays",
         8,
         QStringLiteral("HEAD"),
         QStringLiteral("BODY short"),
         {page, page},
         true,
         0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Pages pages(document(c.filler, c.heading, c.after), c.pages, c.allow);
        pages.manager.ensureLayoutForAllText();
        EXPECT_EQ(pages.pageOf(QStringLiteral("HEAD")), c.expectedPage);
        if (!c.after.isEmpty() && c.expectedPage == 1) {
            // The heading starts the page and its body follows on the same page.
            EXPECT_DOUBLE_EQ(
                pages.manager.lineFragmentRectForGlyphAtIndex(pages.storage.string().indexOf(QStringLiteral("HEAD")))
                    .top(),
                0);
            EXPECT_EQ(pages.pageOf(QStringLiteral("BODY")), 1);
        }
        EXPECT_EQ(pages.typesetter->breakingParagraphGlyphIndex(), 0);
    }
}

TEST(XQKeepWithNextTypesetter, OnlyATrueBooleanKeeps)
{
    const double page = 10 * line() + 0.5;
    AttributedString text = document(9, QStringLiteral("HEAD"), QStringLiteral("BODY ") + longParagraph(60));
    const qsizetype head = text.string().indexOf(QStringLiteral("HEAD"));
    text.addAttribute(XQKeepWithNextAttributeName, QStringLiteral("yes"), Range{head, 4});
    Pages pages(text, {page, page});
    EXPECT_EQ(pages.pageOf(QStringLiteral("HEAD")), 0);
}

TEST(XQKeepWithNextTypesetter, FormFeedBreaksLineParagraphAndContainer)
{
    Pages pages(AttributedString(QStringLiteral("one\ftwo\tthree"), body()), {200, 200});
    EXPECT_EQ(pages.typesetter->actionForControlCharacterAtIndex(3), 56);
    EXPECT_EQ(pages.typesetter->actionForControlCharacterAtIndex(7), Typesetter::HorizontalTabAction);
    EXPECT_EQ(pages.pageOf(QStringLiteral("one")), 0);
    EXPECT_EQ(pages.pageOf(QStringLiteral("two")), 1);
    EXPECT_DOUBLE_EQ(pages.manager.lineFragmentRectForGlyphAtIndex(4).top(), 0);
}

TEST(XQKeepWithNextTypesetter, NextContainerSizeAndParagraphRanges)
{
    // The typesetter's paragraph queries, seen from inside a paragraph's layout.
    struct Probe : XQKeepWithNextTypesetter {
        std::vector<QSizeF> nextSizes;
        std::vector<Range> ranges, withoutNewline;
        void beginParagraph() override
        {
            XQKeepWithNextTypesetter::beginParagraph();
            nextSizes.push_back(nextTextContainerSize());
            ranges.push_back(trueParagraphCharacterRange());
            withoutNewline.push_back(trueParagraphCharacterRangeWithoutTerminatingNewline());
            EXPECT_TRUE(currentAttributes().has_value());
        }
    };
    TextStorage storage(AttributedString(QStringLiteral("first\r\nsecond\fthird"), body()));
    LayoutManager manager;
    auto owned = std::make_unique<Probe>();
    Probe* probe = owned.get();
    manager.setTypesetter(std::move(owned));
    manager.setTextStorage(&storage);
    manager.addTextContainer(std::make_unique<TextContainer>(QSizeF(300, 200)));
    TextContainer* second = manager.addTextContainer(std::make_unique<TextContainer>(QSizeF(250, 100)));
    TextView growing(QRectF(0, 0, 250, 100), second);
    growing.setVerticallyResizable(true);
    growing.setMaxSize(QSizeF(250, 5000));
    manager.ensureLayoutForAllText();
    ASSERT_EQ(probe->nextSizes.size(), 3u);
    // From the first container the next is the growing one: its view's maximum height counts.
    EXPECT_EQ(probe->nextSizes[0], QSizeF(250, 5000));
    // From the last container, the last one itself.
    EXPECT_EQ(probe->nextSizes[2], QSizeF(250, 5000));
    EXPECT_EQ(probe->ranges[0], (Range{0, 7}));
    EXPECT_EQ(probe->withoutNewline[0], (Range{0, 5}));
    EXPECT_EQ(probe->attributesAtIndex(100), Attributes());
}

} // namespace
} // namespace qly
