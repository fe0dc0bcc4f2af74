// The text view as a user meets it: real widgets shown off screen, typed into with key events and
// clicked with the mouse, checked through the storage it edits and the caret it places.
#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <QTest>

#include <qlyappkit/platform/layout/TextView.h>
#include <qlyappkit/platform/services/NotificationCenter.h>

#include "LayoutTestSupport.h"

namespace qly {
namespace {

using layouttest::fontAttributes;

const Attributes Sans12 = fontAttributes(QStringLiteral("Helvetica"), 12);
const Attributes Bold12 = fontAttributes(QStringLiteral("Helvetica-Bold"), 12);

// A storage that counts its batches of edits, as the framework's counting storages do.
class CountingStorage : public TextStorage {
public:
    using TextStorage::TextStorage;
    int processed = 0;
    void processEditing() override
    {
        ++processed;
        TextStorage::processEditing();
    }
};

// One or more views of one layout manager, shown in a window; each container tracks its view.
struct Editor {
    CountingStorage storage;
    LayoutManager manager;
    QWidget window;
    std::vector<TextView*> views;

    explicit Editor(const AttributedString& text, QSizeF size = QSizeF(300, 400), int pages = 1) : storage(text)
    {
        manager.setTextStorage(&storage);
        window.resize(int(size.width()) + 20, int(size.height() * pages) + 20);
        for (int i = 0; i < pages; ++i) {
            auto container = std::make_unique<TextContainer>(size);
            container->setWidthTracksTextView(true);
            container->setHeightTracksTextView(true);
            auto* view = new TextView(QRectF(QPointF(0, i * size.height()), size), container.get(), &window);
            manager.addTextContainer(std::move(container));
            views.push_back(view);
        }
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        views.front()->setFocus();
        QApplication::processEvents();
    }
    TextView& view(int i = 0) { return *views[size_t(i)]; }
    QPoint pointAt(qsizetype index, int i = 0)
    {
        TextContainer* container = nullptr;
        const QRectF caret = manager.insertionPointRectForCharacterIndex(index, &container);
        EXPECT_EQ(container, view(i).textContainer());
        return (caret.center() + view(i).textContainerOrigin()).toPoint();
    }
};

TEST(TextView, TypingEditsTheStorageOneBatchPerKeyAndMovesTheCaret)
{
    Editor editor(AttributedString(QString(), Sans12));
    int selectionPosts = 0;
    ScopedObserver watch(TextViewDidChangeSelectionNotification, editor.views.front(),
                         [&](const Notification&) { ++selectionPosts; });
    QTest::keyClicks(&editor.view(), QStringLiteral("Hello world"));
    EXPECT_EQ(editor.storage.string(), QStringLiteral("Hello world"));
    EXPECT_EQ(editor.storage.processed, 11);
    EXPECT_EQ(editor.view().selectedRange(), (Range{11, 0}));
    EXPECT_GE(selectionPosts, 11);
    QTest::keyClick(&editor.view(), Qt::Key_Return);
    QTest::keyClicks(&editor.view(), QStringLiteral("Next"));
    EXPECT_EQ(editor.storage.string(), QStringLiteral("Hello world\nNext"));
    // The caret stands on the second line, after "Next".
    const QRectF caret = editor.view().insertionPointRect();
    const QRectF second = editor.manager.lineFragmentRectForGlyphAtIndex(13);
    EXPECT_NEAR(caret.center().y(), second.center().y(), second.height() / 2);
    EXPECT_NEAR(caret.left(), editor.manager.insertionPointRectForCharacterIndex(16).left(), 0.01);
}

TEST(TextView, TypingAttributesFollowTheCharacterBeforeTheCaret)
{
    AttributedString text(QStringLiteral("ab"), Bold12);
    text.append(AttributedString(QStringLiteral("cd"), Sans12));
    struct Case {
        qsizetype caret;
        Attributes expected;
    };
    for (const Case& c : {Case{1, Bold12}, Case{2, Bold12}, Case{3, Sans12}, Case{4, Sans12}, Case{0, Bold12}}) {
        Editor editor(text);
        editor.view().setSelectedRange(Range{c.caret, 0});
        QTest::keyClick(&editor.view(), Qt::Key_X);
        EXPECT_EQ(editor.storage.string(), QStringLiteral("abcd").insert(c.caret, QLatin1Char('x')));
        EXPECT_EQ(editor.storage.attributes(c.caret), c.expected) << c.caret;
        EXPECT_EQ(editor.view().typingAttributes(), c.expected) << c.caret;
    }
}

TEST(TextView, DeletingTakesWholeCharactersBackwardsAndForwards)
{
    Editor editor(AttributedString(QString::fromUtf16(u"a\U0001F600b\r\nc"), Sans12));
    TextView& view = editor.view();
    view.setSelectedRange(Range{3, 0}); // after the emoji
    QTest::keyClick(&view, Qt::Key_Backspace);
    EXPECT_EQ(editor.storage.string(), QString::fromUtf16(u"ab\r\nc"));
    EXPECT_EQ(view.selectedRange(), (Range{1, 0}));
    QTest::keyClick(&view, Qt::Key_Right);
    QTest::keyClick(&view, Qt::Key_Delete); // a CR LF goes as one
    EXPECT_EQ(editor.storage.string(), QStringLiteral("abc"));
    QTest::keyClick(&view, Qt::Key_Home);
    QTest::keyClick(&view, Qt::Key_Backspace); // nothing before the start
    EXPECT_EQ(editor.storage.string(), QStringLiteral("abc"));
    view.setSelectedRange(Range{1, 2});
    QTest::keyClick(&view, Qt::Key_Delete);
    EXPECT_EQ(editor.storage.string(), QStringLiteral("a"));
    EXPECT_EQ(editor.storage.processed, 3); // the key that deleted nothing edited nothing
}

TEST(TextView, ArrowsMoveAndShiftExtendsFromTheAnchor)
{
    QString text;
    for (int i = 0; i < 6; ++i)
        text += QStringLiteral("line %1 of some words that wrap across the view\n").arg(i);
    Editor editor(AttributedString(text, Sans12), QSizeF(160, 600));
    TextView& view = editor.view();
    view.setSelectedRange(Range{0, 0});
    QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier);
    QTest::keyClick(&view, Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedRange(), (Range{0, 3}));
    QTest::keyClick(&view, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedRange(), (Range{0, 2}));
    QTest::keyClick(&view, Qt::Key_Right);
    EXPECT_EQ(view.selectedRange(), (Range{2, 0}));

    // Down walks the lines in order, keeping near the same x; Up walks back to the start.
    std::vector<qsizetype> stops{2};
    for (int i = 0; i < 8; ++i) {
        const QRectF before = view.insertionPointRect();
        QTest::keyClick(&view, Qt::Key_Down);
        const QRectF after = view.insertionPointRect();
        EXPECT_GT(after.top(), before.top()) << i;
        EXPECT_NEAR(after.left(), before.left(), 12) << i;
        stops.push_back(view.insertionPointIndex());
    }
    EXPECT_TRUE(std::is_sorted(stops.begin(), stops.end()));
    for (int i = 0; i < 8; ++i)
        QTest::keyClick(&view, Qt::Key_Up);
    EXPECT_EQ(view.insertionPointIndex(), 2);
    QTest::keyClick(&view, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedRange().location, 2);
    EXPECT_EQ(view.selectedRange().end(), stops[1]);
}

TEST(TextView, ClicksPlaceTheCaretAndSelectWordsAndParagraphs)
{
    const QString text = QStringLiteral("First paragraph here.\nSecond one with words.\nThird.");
    Editor editor(AttributedString(text, Sans12));
    TextView& view = editor.view();
    for (qsizetype index : std::vector<qsizetype>{0, 3, 10, 21, 25, 40, text.size()}) {
        QTest::mouseClick(&view, Qt::LeftButton, {}, editor.pointAt(index));
        EXPECT_EQ(view.selectedRange(), (Range{index, 0})) << index;
    }
    // Double click: the word; a third click soon after: the paragraph.
    const qsizetype inWith = text.indexOf(QStringLiteral("with")) + 1;
    QTest::mouseDClick(&view, Qt::LeftButton, {}, editor.pointAt(inWith));
    EXPECT_EQ(view.selectedRange(), (Range{text.indexOf(QStringLiteral("with")), 4}));
    QTest::mousePress(&view, Qt::LeftButton, {}, editor.pointAt(inWith));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, editor.pointAt(inWith));
    EXPECT_EQ(view.selectedRange(), (Range{22, 23}));
    // A drag selects from the press to the pointer.
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    QTest::mousePress(&view, Qt::LeftButton, {}, editor.pointAt(2));
    QMouseEvent move(QEvent::MouseMove, QPointF(editor.pointAt(30)), view.mapToGlobal(QPointF(editor.pointAt(30))),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&view, &move);
    QTest::mouseRelease(&view, Qt::LeftButton, {}, editor.pointAt(30));
    EXPECT_EQ(view.selectedRange(), (Range{2, 28}));
    // Shift-click extends from the anchor.
    QTest::mouseClick(&view, Qt::LeftButton, Qt::ShiftModifier, editor.pointAt(40));
    EXPECT_EQ(view.selectedRange(), (Range{2, 38}));
}

TEST(TextView, CopyCutAndPasteCarryRichTextThroughTheClipboard)
{
    AttributedString text(QStringLiteral("plain "), Sans12);
    text.append(AttributedString(QStringLiteral("bold"), Bold12));
    text.append(AttributedString(QStringLiteral(" end"), Sans12));
    Editor editor(text);
    TextView& view = editor.view();
    view.setSelectedRange(Range{6, 4});
    QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->text(), QStringLiteral("bold"));
    EXPECT_TRUE(data->data(RTFPasteboardType).startsWith("{\\rtf1"));
    // Pasted at the end, the word keeps its bold face although the text before it is plain.
    view.setSelectedRange(Range{editor.storage.length(), 0});
    QTest::keyClick(&view, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(editor.storage.string(), QStringLiteral("plain bold endbold"));
    EXPECT_EQ(editor.storage.attribute(FontAttributeName, 15).value<Font>().fontName(),
              Bold12.value(FontAttributeName).value<Font>().fontName());
    EXPECT_EQ(view.selectedRange(), (Range{18, 0}));
    // Cut takes the text out and onto the clipboard.
    view.setSelectedRange(Range{0, 6});
    QTest::keyClick(&view, Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(editor.storage.string(), QStringLiteral("bold endbold"));
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("plain "));
    // Plain text from another program takes the typing attributes.
    QGuiApplication::clipboard()->setText(QStringLiteral("typed"));
    view.setSelectedRange(Range{0, 0});
    QTest::keyClick(&view, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(editor.storage.string(), QStringLiteral("typedbold endbold"));
    EXPECT_EQ(editor.storage.attributes(0), Bold12);
}

TEST(TextView, TheCaretRunsIntoTheNextViewAndTakesTheFocusWithIt)
{
    // Two views of one line each: the second line is in the second view.
    const double h = LayoutManager::defaultLineHeightForFont(Font(QStringLiteral("Helvetica"), 12));
    Editor editor(AttributedString(QStringLiteral("one\ntwo"), Sans12), QSizeF(200, std::ceil(h) + 1), 2);
    TextView& first = editor.view(0);
    TextView& second = editor.view(1);
    EXPECT_EQ(second.selectedRange(), first.selectedRange()); // one selection for both
    first.setSelectedRange(Range{3, 0});
    first.setFocus();
    QApplication::processEvents();
    EXPECT_FALSE(first.insertionPointRect().isNull());
    QTest::keyClick(&first, Qt::Key_Right);
    EXPECT_EQ(first.selectedRange(), (Range{4, 0}));
    EXPECT_TRUE(first.insertionPointRect().isNull());
    EXPECT_FALSE(second.insertionPointRect().isNull());
    EXPECT_TRUE(second.hasFocus());
    QTest::keyClicks(&second, QStringLiteral("X"));
    EXPECT_EQ(editor.storage.string(), QStringLiteral("one\nXtwo"));
    // Clicking in the first view brings the caret back.
    QTest::mouseClick(&first, Qt::LeftButton, {}, editor.pointAt(1, 0));
    EXPECT_EQ(second.selectedRange(), (Range{1, 0}));
}

TEST(TextView, AViewThatIsNotEditableIgnoresTypingButSelects)
{
    Editor editor(AttributedString(QStringLiteral("fixed"), Sans12));
    TextView& view = editor.view();
    view.setEditable(false);
    view.setSelectedRange(Range{5, 0});
    QTest::keyClicks(&view, QStringLiteral("abc"));
    QTest::keyClick(&view, Qt::Key_Backspace);
    EXPECT_EQ(editor.storage.string(), QStringLiteral("fixed"));
    EXPECT_EQ(editor.storage.processed, 0);
    QTest::keyClick(&view, Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(view.selectedRange(), (Range{4, 1}));
}

TEST(TextView, AResizableViewGrowsWithItsText)
{
    Editor editor(AttributedString(QStringLiteral("one"), Sans12), QSizeF(200, 30));
    TextView& view = editor.view();
    view.textContainer()->setHeightTracksTextView(false);
    view.textContainer()->setSize(QSizeF(200, TextContainer::LargeDimension));
    view.setVerticallyResizable(true);
    view.setMinSize(QSizeF(0, 10));
    view.setSelectedRange(Range{3, 0});
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(&view, Qt::Key_Return);
    const double h = LayoutManager::defaultLineHeightForFont(Font(QStringLiteral("Helvetica"), 12));
    EXPECT_NEAR(view.frame().height(), std::ceil(6 * h), 1.0);
    EXPECT_EQ(view.height(), int(std::lround(view.frame().height())));
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(&view, Qt::Key_Backspace);
    EXPECT_NEAR(view.frame().height(), std::ceil(h), 1.0);
}

TEST(TextView, ThePaintedViewShowsTheTextTheSelectionAndTheCaret)
{
    Editor editor(AttributedString(QStringLiteral("Visible words"), Sans12));
    TextView& view = editor.view();
    view.setDrawsBackground(true);
    view.setSelectedRange(Range{0, 7});
    QImage image = view.grab().toImage();
    const QRectF line = editor.manager.lineFragmentRectForGlyphAtIndex(0);
    const int xEnd = int(editor.manager.insertionPointRectForCharacterIndex(7).x());
    int selected = 0, dark = 0;
    for (int y = int(line.top()); y < int(line.bottom()); ++y) {
        for (int x = 0; x < xEnd; ++x)
            selected += image.pixelColor(x, y) == view.selectedTextBackgroundColor() ? 1 : 0;
        for (int x = xEnd + 2; x < 150; ++x)
            dark += image.pixelColor(x, y).lightness() < 100 ? 1 : 0;
    }
    EXPECT_GT(selected, 100); // the highlight behind "Visible"
    EXPECT_GT(dark, 20); // the glyphs of "words"
    // The caret: a dark column where the geometry puts it, in a focused view.
    view.setSelectedRange(Range{13, 0});
    view.setFocus();
    QApplication::processEvents();
    ASSERT_TRUE(view.hasFocus());
    image = view.grab().toImage();
    const QRectF caret = view.insertionPointRect();
    int caretDark = 0;
    for (int y = int(caret.top()) + 1; y < int(caret.bottom()) - 1; ++y) {
        bool dark = false;
        for (int x = int(caret.left()) - 1; x <= int(caret.left()) + 1; ++x)
            dark = dark || image.pixelColor(x, y).lightness() < 100;
        caretDark += dark ? 1 : 0;
    }
    EXPECT_GE(caretDark, int(caret.height()) - 4);
}

} // namespace
} // namespace qly
