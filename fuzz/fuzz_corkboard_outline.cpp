// Fuzz target for the corkboard fed by an outline, as qly board reads one: the first byte picks the
// layout mode and settings, the rest is OPML. Any outline must give a board without a crash or a hang;
// the grid, rows and column passes must keep every card inside its section and the board, no two
// cards overlapping; each card's centre must hit that card; and the board must paint.
#include <QApplication>
#include <QImage>
#include <QPainter>

#include <cstdint>
#include <cstdlib>
#include <memory>

#include <qlyappkit/corkboard/XQCorkboardCardList.h>
#include <qlyappkit/corkboard/XQCorkboardView.h>
#include <qlyappkit/formats/opml/XQOPMLStorage.h>
#include <qlyappkit/formats/outline/OPMLOutline.h>
#include <qlyappkit/platform/services/NamedException.h>

using namespace qly;

namespace {

// Boards beyond this many cards take long to lay out and paint and find nothing new.
constexpr qsizetype MaximumCards = 300;

void ensureApplication()
{
    // Text measuring and painting need an application; the corpus replay does not call the initializer.
    if (!QCoreApplication::instance()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "fuzz_corkboard_outline";
        static char* argv[] = {name, nullptr};
        static QApplication app(argc, argv);
    }
}

bool inside(const QRectF& inner, const QRectF& outer)
{
    constexpr double e = 1e-6;
    return inner.left() >= outer.left() - e && inner.top() >= outer.top() - e && inner.right() <= outer.right() + e
        && inner.bottom() <= outer.bottom() + e;
}

bool overlap(const QRectF& a, const QRectF& b)
{
    return a.left() < b.right() && b.left() < a.right() && a.top() < b.bottom() && b.top() < a.bottom();
}

void checkBoard(const XQCorkboardView& view, const XQCorkboardCardList& cards)
{
    const auto& rects = view.cardRects().rects;
    if (qsizetype(rects.size()) != cards.cardCount())
        std::abort();
    const QRectF frame(0, 0, view.width(), view.height());
    if (view.usesFreeformArrangement()) {
        for (const QRectF& card : rects) {
            if (!inside(card, frame))
                std::abort();
        }
        return;
    }
    qsizetype global = 0;
    for (qsizetype s = 0; s < cards.sections().size(); ++s) {
        const QRectF section = view.sectionRects()[s];
        for (qsizetype k = 0; k < cards.sections()[s].cards.size(); ++k, ++global) {
            if (!inside(rects[size_t(global)], section) || !inside(rects[size_t(global)], frame))
                std::abort();
        }
    }
    for (size_t i = 0; i < rects.size(); ++i) {
        if (view.indexOfCardAtPoint(rects[i].center()) != qsizetype(i))
            std::abort();
        for (size_t j = i + 1; j < rects.size(); ++j) {
            if (overlap(rects[i], rects[j]))
                std::abort();
        }
    }
}

} // namespace

extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libfreetype\nleak:libharfbuzz\nleak:libQt6Gui\nleak:libQt6Core\n"
           "leak:libQt6Widgets\n";
}

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    ensureApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1 || size > 16384)
        return 0;
    ensureApplication();
    const unsigned settings = data[0];
    std::optional<XQOPMLStorage> storage;
    try {
        storage = XQOPMLStorage::initWithData(QByteArray(reinterpret_cast<const char*>(data + 1), qsizetype(size - 1)));
    } catch (const NamedException&) {
        return 0;
    }
    if (!storage)
        return 0;
    XQCorkboardCardList cards = XQCorkboardCardList::fromOutline(XQBaseNodesFromOPMLStorage(*storage));
    if (cards.cardCount() > MaximumCards)
        return 0;

    XQCorkboardView view;
    view.resize(200 + int(settings & 7) * 150, 300);
    view.setMultipleSectionsMode(int((settings >> 3) % 3));
    view.setCardsAcross((settings & 0x20) ? -1 : 1 + int(settings % 5));
    view.setSizesCardsToFitWidth(!(settings & 0x40));
    view.setShowsCardNumbers(true);
    view.setUsesTwoLineTitles(settings & 1);
    view.setTitlesShrinkToFit(settings & 2);
    if (settings & 0x80) {
        cards.arrangeFreeform(view.indexCardHeightRatio());
        view.setAllowsFreeformCardResizing(settings & 4);
        view.setUsesFreeformArrangement(true);
    }
    view.setDataSource(&cards);
    checkBoard(view, cards);

    // Paint the top of the board, where the cards are, at a small scale.
    QImage canvas(320, 240, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&canvas);
    painter.scale(0.5, 0.5);
    view.paintBoard(painter, QRectF(0, 0, 640, 480));
    return 0;
}
