// Real key presses: navigation in grid, column and freeform layouts, the beep on an empty selection,
// and the keys handed to the delegate.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>
#include <QVBoxLayout>

#include "CorkboardTestSupport.h"

using namespace qly;
using namespace qly::corkboardtest;

namespace {

struct Board {
    std::unique_ptr<XQCorkboardView> view;
    TestDataSource cards;
    TestDelegate delegate;
    int beeps = 0;

    Board(TestDataSource source, const std::function<void(XQCorkboardView&)>& set = {}, int width = 1000)
        : view(makeView(width, 600)), cards(std::move(source))
    {
        view->setBeepHandler([this] { ++beeps; });
        view->setDelegate(&delegate);
        if (set)
            set(*view);
        view->setDataSource(&cards);
    }
    /// Selects `from`, presses the key and returns the selection.
    XQIndexSet press(const XQIndexSet& from, Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        view->selectCardIndexes(from, false);
        QTest::keyClick(view.get(), key, modifiers);
        return view->selectedCardIndexes();
    }
};

struct Move {
    XQIndexSet from;
    Qt::Key key;
    Qt::KeyboardModifiers modifiers;
    XQIndexSet to;
};

void expectMoves(Board& board, const std::vector<Move>& moves)
{
    for (const Move& m : moves) {
        const XQIndexSet result = board.press(m.from, m.key, m.modifiers);
        EXPECT_EQ(result, m.to) << "from " << (m.from.isEmpty() ? -1 : m.from.firstIndex()) << " key "
                                << QTest::toString(m.key);
    }
}

const Qt::KeyboardModifiers None = Qt::NoModifier;
const Qt::KeyboardModifiers Shift = Qt::ShiftModifier;

} // namespace

TEST(CorkboardKeyboard, GridArrowsMoveAndShiftArrowsExtend)
{
    // Three across, five cards: the second row holds cards 3 and 4.
    Board board(TestDataSource::plain(5));
    expectMoves(board,
                {
                    {XQIndexSet{1}, Qt::Key_Right, None, XQIndexSet{2}},
                    {XQIndexSet{2}, Qt::Key_Right, None, XQIndexSet{3}}, // on along the index order
                    {XQIndexSet{4}, Qt::Key_Right, None, XQIndexSet{4}}, // no wrap at the end
                    {XQIndexSet{0}, Qt::Key_Left, None, XQIndexSet{0}},
                    {XQIndexSet{1, 3}, Qt::Key_Left, None, XQIndexSet{0}}, // from the first selected
                    {XQIndexSet{1, 3}, Qt::Key_Right, None, XQIndexSet{4}}, // from the last selected
                    {XQIndexSet{4}, Qt::Key_Up, None, XQIndexSet{1}}, // the card straight above
                    {XQIndexSet{1}, Qt::Key_Down, None, XQIndexSet{4}},
                    {XQIndexSet{2}, Qt::Key_Down, None, XQIndexSet{2}}, // nothing below: stays
                    {XQIndexSet{0}, Qt::Key_Up, None, XQIndexSet{0}},
                    {XQIndexSet{1}, Qt::Key_Right, Shift, XQIndexSet{1, 2}}, // the neighbour alone added
                    {XQIndexSet{1}, Qt::Key_Down, Shift, XQIndexSet::range(1, 4)}, // probing adds the range
                    {XQIndexSet{4}, Qt::Key_Up, Shift, XQIndexSet::range(1, 4)},
                    {XQIndexSet(), Qt::Key_Up, None, XQIndexSet{4}}, // nothing selected: the last card
                    {XQIndexSet(), Qt::Key_Down, None, XQIndexSet{0}},
                    {XQIndexSet{2}, Qt::Key_Home, Qt::ControlModifier, XQIndexSet{0}},
                    {XQIndexSet{2}, Qt::Key_End, Qt::ControlModifier, XQIndexSet{4}},
                    {XQIndexSet{2}, Qt::Key_Up, Qt::ControlModifier, XQIndexSet{0}},
                    {XQIndexSet{0}, Qt::Key_A, Qt::ControlModifier, XQIndexSet::range(0, 4)},
                });
    EXPECT_EQ(board.beeps, 0);
    EXPECT_EQ(board.view->lastScrolledToRect(), board.view->cardRects()[0]);
    // Left and right with nothing selected beep and change nothing.
    EXPECT_EQ(board.press(XQIndexSet(), Qt::Key_Left), XQIndexSet());
    EXPECT_EQ(board.press(XQIndexSet(), Qt::Key_Right, Shift), XQIndexSet());
    EXPECT_EQ(board.beeps, 2);
}

TEST(CorkboardKeyboard, RightToLeftSwapsLeftAndRight)
{
    Board board(TestDataSource::plain(5), [](XQCorkboardView& v) { v.setCardsUseRightToLeftDirection(true); });
    expectMoves(board,
                {
                    {XQIndexSet{1}, Qt::Key_Left, None, XQIndexSet{2}},
                    {XQIndexSet{1}, Qt::Key_Right, None, XQIndexSet{0}},
                    {XQIndexSet{1, 3}, Qt::Key_Left, None, XQIndexSet{4}}, // the anchor is the last selected
                });
}

TEST(CorkboardKeyboard, EmptyBoard)
{
    Board board(TestDataSource::plain(0));
    EXPECT_EQ(board.press(XQIndexSet(), Qt::Key_Up), XQIndexSet());
    EXPECT_EQ(board.press(XQIndexSet(), Qt::Key_Home, Qt::ControlModifier), XQIndexSet());
    EXPECT_EQ(board.beeps, 0);
    EXPECT_EQ(board.press(XQIndexSet(), Qt::Key_End, Qt::ControlModifier), XQIndexSet());
    EXPECT_EQ(board.beeps, 1);
}

TEST(CorkboardKeyboard, ColumnLayoutProbesSidewaysAndStepsThroughColumns)
{
    // Columns of 2, 3 and 1 cards, fixed width 200; card 2 is a picture (tall), so rows 1 and 2 of the
    // other columns sit lower.
    TestDataSource cards = TestDataSource::withSections({2, 3, 1});
    cards.card(2).image = true;
    Board board(std::move(cards), [](XQCorkboardView& v) {
        v.setMultipleSectionsMode(2);
        v.setFixedSizeCardWidth(200);
    });
    expectMoves(board,
                {
                    {XQIndexSet{2}, Qt::Key_Right, None, XQIndexSet{5}},
                    {XQIndexSet{2}, Qt::Key_Left, None, XQIndexSet{0}},
                    {XQIndexSet{3}, Qt::Key_Right, None, XQIndexSet{3}}, // nothing beside it: stays
                    {XQIndexSet{3}, Qt::Key_Left, None, XQIndexSet{1}},
                    {XQIndexSet{2}, Qt::Key_Left, Shift, XQIndexSet{0, 1, 2}}, // range from the first selected
                    {XQIndexSet{2}, Qt::Key_Up, None, XQIndexSet{1}}, // up from a column's top: previous column
                    {XQIndexSet{1}, Qt::Key_Down, None, XQIndexSet{2}},
                    {XQIndexSet{5}, Qt::Key_Down, None, XQIndexSet{5}}, // past the end: nothing
                    {XQIndexSet{0}, Qt::Key_Up, None, XQIndexSet{0}},
                    {XQIndexSet{3}, Qt::Key_Down, Shift, XQIndexSet{3, 4}},
                    {XQIndexSet(), Qt::Key_Up, None, XQIndexSet{5}},
                    {XQIndexSet(), Qt::Key_Down, None, XQIndexSet{0}},
                });
}

TEST(CorkboardKeyboard, FreeformFollowsTheBands)
{
    // 0 (0,0)  2 (1,0.1)  1 (2,0)
    // 3 (0,1)             4 (2,1.2)
    TestDataSource cards = TestDataSource::plain(5);
    const QPointF at[] = {{0, 0}, {2, 0}, {1, 0.1}, {0, 1}, {2, 1.2}};
    for (int i = 0; i < 5; ++i)
        cards.card(i).coordinate = at[i];
    Board board(std::move(cards), [](XQCorkboardView& v) {
        v.setUsesFreeformArrangement(true);
        v.setFixedSizeCardWidth(100);
    });
    expectMoves(board,
                {
                    {XQIndexSet{0}, Qt::Key_Right, None, XQIndexSet{2}},
                    {XQIndexSet{1}, Qt::Key_Right, None, XQIndexSet{3}}, // on to the next band
                    {XQIndexSet{4}, Qt::Key_Right, None, XQIndexSet{4}}, // the end: nothing
                    {XQIndexSet{3}, Qt::Key_Left, None, XQIndexSet{1}},
                    {XQIndexSet{0}, Qt::Key_Down, None, XQIndexSet{3}},
                    {XQIndexSet{2}, Qt::Key_Up, None, XQIndexSet{3}}, // top of a column: bottom of the one left
                    {XQIndexSet{0}, Qt::Key_Right, Shift, XQIndexSet{2}}, // never extends in freeform
                    {XQIndexSet{0}, Qt::Key_Down, Shift, XQIndexSet{3}},
                    {XQIndexSet{2}, Qt::Key_End, Qt::ControlModifier, XQIndexSet{4}}, // bottom-most
                    {XQIndexSet{4}, Qt::Key_Home, Qt::ControlModifier, XQIndexSet{0}}, // top-most
                });
    EXPECT_EQ(board.beeps, 0);
    board.press(XQIndexSet(), Qt::Key_Up);
    board.press(XQIndexSet(), Qt::Key_Right);
    EXPECT_EQ(board.beeps, 2);
    board.view->setCardsUseRightToLeftDirection(true);
    expectMoves(board,
                {
                    {XQIndexSet{2}, Qt::Key_Left, None, XQIndexSet{0}},
                    {XQIndexSet{2}, Qt::Key_Right, None, XQIndexSet{1}},
                });
}

TEST(CorkboardKeyboard, ReturnDeleteAndSpaceGoToTheDelegate)
{
    Board board(TestDataSource::plain(3));
    board.view->selectCardIndexes(XQIndexSet{1}, false);
    board.delegate.calls.clear();
    QTest::keyClick(board.view.get(), Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClick(board.view.get(), Qt::Key_Backspace);
    QTest::keyClick(board.view.get(), Qt::Key_Delete, Qt::AltModifier);
    QTest::keyClick(board.view.get(), Qt::Key_Space);
    EXPECT_EQ(board.delegate.calls,
              (std::vector<QString>{QStringLiteral("return"), QStringLiteral("delete"), QStringLiteral("delete"),
                                    QStringLiteral("space")}));
    EXPECT_EQ(board.delegate.lastModifiers, Qt::NoModifier);
    EXPECT_EQ(board.view->selectedCardIndexes(), XQIndexSet{1});

    // A delegate without those methods: the keys change nothing and call nothing.
    board.delegate.methods = {};
    board.delegate.calls.clear();
    for (Qt::Key key : {Qt::Key_Return, Qt::Key_Backspace, Qt::Key_Delete, Qt::Key_Space})
        QTest::keyClick(board.view.get(), key);
    EXPECT_TRUE(board.delegate.calls.empty());
    EXPECT_EQ(board.view->selectedCardIndexes(), XQIndexSet{1});
    EXPECT_EQ(board.view->editedCardIndex(), -1);
}

TEST(CorkboardKeyboard, EnterAndEscapeEditInPlace)
{
    TestDataSource cards = TestDataSource::plain(3);
    cards.card(1).title = QStringLiteral("Arrival");
    cards.card(1).text = QStringLiteral("The boat is late.");
    Board board(std::move(cards));
    board.view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(board.view.get()));

    // Escape with nothing selected beeps.
    QTest::keyClick(board.view.get(), Qt::Key_Escape);
    EXPECT_EQ(board.beeps, 1);
    EXPECT_EQ(board.view->editedCardIndex(), -1);

    // Keypad Enter edits the first selected card's title.
    board.view->selectCardIndexes(XQIndexSet{1, 2}, false);
    QTest::keyClick(board.view.get(), Qt::Key_Enter, Qt::KeypadModifier);
    ASSERT_EQ(board.view->editedCardIndex(), 1);
    ASSERT_NE(board.view->titleEditor(), nullptr);
    EXPECT_TRUE(board.view->titleEditor()->isVisible());
    EXPECT_EQ(board.view->titleEditor()->text(), QStringLiteral("Arrival"));
    EXPECT_TRUE(board.view->titleEditor()->geometry().intersects(board.view->titleRectForCardAtIndex(1).toRect()));
    board.view->titleEditor()->setText(QStringLiteral("Landfall"));
    board.view->textEditor()->setPlainText(QStringLiteral("The boat is very late."));
    // Escape ends the edit and hands the texts to the data source.
    QTest::keyClick(board.view->titleEditor(), Qt::Key_Escape);
    EXPECT_EQ(board.view->editedCardIndex(), -1);
    EXPECT_FALSE(board.view->titleEditor()->isVisible());
    EXPECT_EQ(board.cards.card(1).title, QStringLiteral("Landfall"));
    EXPECT_EQ(board.cards.card(1).text, QStringLiteral("The boat is very late."));

    // Escape with a selection opens the first selected card.
    board.view->selectCardIndexes(XQIndexSet{2}, false);
    QTest::keyClick(board.view.get(), Qt::Key_Escape);
    EXPECT_EQ(board.view->editedCardIndex(), 2);
    EXPECT_TRUE(board.view->textEditor()->isVisible());
    // Return in the text is a new line unless Return ends editing.
    QTest::keyClick(board.view->textEditor(), Qt::Key_Return);
    EXPECT_EQ(board.view->editedCardIndex(), 2);
    board.view->setReturnEndsEditing(true);
    QTest::keyClick(board.view->textEditor(), Qt::Key_Return);
    EXPECT_EQ(board.view->editedCardIndex(), -1);
    // A reload that removes the edited card drops the editors without writing back.
    board.view->editCardAtIndex(2, false);
    board.cards.sections[0].resize(2);
    board.view->reloadData();
    EXPECT_EQ(board.view->editedCardIndex(), -1);
    EXPECT_FALSE(board.view->textEditor()->isVisible());
}

TEST(CorkboardKeyboard, TabMovesToTheNextKeyView)
{
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    auto* view = new XQCorkboardView;
    auto* field = new QLineEdit;
    layout->addWidget(view);
    layout->addWidget(field);
    TestDataSource cards = TestDataSource::plain(2);
    view->setDataSource(&cards);
    window.resize(600, 400);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    view->setFocus();
    ASSERT_TRUE(view->hasFocus());
    QTest::keyClick(view, Qt::Key_Tab);
    EXPECT_TRUE(field->hasFocus());
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(field->hasFocus()); // the only other key view, backwards too
}
