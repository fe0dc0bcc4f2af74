// qly board end to end: the picture it writes for a folder or an outline is the one the corkboard view
// draws for the cards those sources should give, in every mode; bad options and sources are refused.
#include <gtest/gtest.h>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include <qlyappkit/corkboard/XQCorkboardCardList.h>
#include <qlyappkit/corkboard/XQCorkboardView.h>

#include "QlyRunner.h"

using namespace qly;
using namespace qly::tooltest;

namespace {

struct BoardSettings {
    int multipleSectionsMode = 0;
    bool freeform = false;
    int across = 3;
    int width = 1200;
    bool numbers = false;
    bool blueAndBlack = false;
};

/// The board the library draws for the cards with the settings, as qly board is meant to.
QImage expectedBoard(XQCorkboardCardList cards, const BoardSettings& settings)
{
    XQCorkboardView view;
    view.resize(settings.width, 1);
    view.setMultipleSectionsMode(settings.multipleSectionsMode);
    view.setCardsAcross(settings.across);
    view.setShowsCardNumbers(settings.numbers);
    if (settings.blueAndBlack)
        view.setBlueAndBlackIndexCardTheme();
    if (settings.freeform) {
        cards.arrangeFreeform(view.indexCardHeightRatio());
        view.setUsesFreeformArrangement(true);
    }
    view.setDataSource(&cards);
    return view.renderBoard().convertToFormat(QImage::Format_RGB32);
}

QImage decoded(const QByteArray& png) { return QImage::fromData(png, "PNG").convertToFormat(QImage::Format_RGB32); }

QImage readPicture(const QString& path) { return QImage(path).convertToFormat(QImage::Format_RGB32); }

XQCorkboardCard textCard(const QString& title, const QString& text)
{
    XQCorkboardCard card;
    card.title = title;
    card.text = text;
    return card;
}

/// A folder of cards: two loose files, then sections "2 Middle" and "10 End" (numeric order), a nested
/// folder whose cards join their section, a file of an unknown kind and a hidden file left out.
void writeFolder(const QTemporaryDir& dir)
{
    QDir(dir.path()).mkpath(QStringLiteral("book/2 Middle/deeper"));
    QDir(dir.path()).mkpath(QStringLiteral("book/10 End"));
    writeFile(dir, QStringLiteral("book/b Opening.txt"), "The first line.\n\nThe second paragraph.\n");
    writeFile(dir, QStringLiteral("book/a Prologue.md"), "Before it all began.\n");
    writeFile(dir, QStringLiteral("book/notes.xyz"), "not a card");
    writeFile(dir, QStringLiteral("book/.hidden.txt"), "not a card either");
    writeFile(dir, QStringLiteral("book/2 Middle/10 Later.txt"), "Ten.\n");
    writeFile(dir, QStringLiteral("book/2 Middle/9 Sooner.txt"),
              "One.\n\n\nTwo.\r\nThree.\nFour is not on the card.\n");
    writeFile(dir, QStringLiteral("book/2 Middle/deeper/Inside.txt"), "Nested.\n");
    writeFile(dir, QStringLiteral("book/10 End/Last.txt"), "  The end.  \n");
}

XQCorkboardCardList folderCards()
{
    return XQCorkboardCardList(
        {XQCorkboardSection{
             QStringLiteral("book"),
             {textCard(QStringLiteral("a Prologue"), QStringLiteral("Before it all began.")),
              textCard(QStringLiteral("b Opening"), QStringLiteral("The first line.\nThe second paragraph."))}},
         XQCorkboardSection{QStringLiteral("2 Middle"),
                            {textCard(QStringLiteral("9 Sooner"), QStringLiteral("One.\nTwo.\nThree.")),
                             textCard(QStringLiteral("10 Later"), QStringLiteral("Ten.")),
                             textCard(QStringLiteral("Inside"), QStringLiteral("Nested."))}},
         XQCorkboardSection{QStringLiteral("10 End"), {textCard(QStringLiteral("Last"), QStringLiteral("The end."))}}});
}

const QByteArray Outline = "<?xml version=\"1.0\"?>\n<opml version=\"2.0\"><head><title>Board</title></head><body>"
                           "<outline text=\"Act One\">"
                           "<outline text=\"Arrival\" _note=\"She steps off the boat.\" _status=\"Draft\" "
                           "_label=\"#3060c0\"/>"
                           "<outline text=\"The tower\" _label=\"green\"><outline text=\"too deep\"/></outline>"
                           "</outline>"
                           "<outline text=\"Act Two\"><outline text=\"Storm\" _note=\"Glass falling.\"/></outline>"
                           "</body></opml>\n";

XQCorkboardCardList outlineCards()
{
    XQCorkboardCard arrival = textCard(QStringLiteral("Arrival"), QStringLiteral("She steps off the boat."));
    arrival.stamp = QStringLiteral("Draft");
    arrival.labelColor = QColor(0x30, 0x60, 0xc0);
    XQCorkboardCard tower = textCard(QStringLiteral("The tower"), QString());
    tower.labelColor = QColor(0, 128, 0); // the colour named green
    return XQCorkboardCardList(
        {XQCorkboardSection{QStringLiteral("Act One"), {arrival, tower}},
         XQCorkboardSection{QStringLiteral("Act Two"),
                            {textCard(QStringLiteral("Storm"), QStringLiteral("Glass falling."))}}});
}

} // namespace

TEST(BoardCommand, AFolderIsDrawnAsItsCardsInEveryMode)
{
    QTemporaryDir dir;
    writeFolder(dir);
    struct Case {
        QStringList options;
        BoardSettings settings;
    };
    const std::vector<Case> cases = {
        {{}, {}},
        {{"--mode", "rows", "--width", "700"}, {.multipleSectionsMode = 1, .width = 700}},
        {{"--mode", "columns", "--numbers"}, {.multipleSectionsMode = 2, .numbers = true}},
        {{"--mode", "freeform", "--theme", "blue-black"}, {.freeform = true, .blueAndBlack = true}},
        {{"--across", "2", "--width", "640", "--numbers"}, {.across = 2, .width = 640, .numbers = true}},
    };
    const QImage reference = expectedBoard(folderCards(), {});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.options.join(u' ').toStdString());
        const QString out = dir.filePath(QStringLiteral("board.png"));
        const QlyRun run = runQly(QStringList{"board", dir.filePath("book"), "-o", out} + c.options);
        ASSERT_EQ(run.exitCode, 0) << run.err.toStdString();
        const QImage picture = readPicture(out);
        ASSERT_FALSE(picture.isNull());
        const QImage expected = expectedBoard(folderCards(), c.settings);
        EXPECT_EQ(picture.size(), expected.size());
        EXPECT_TRUE(picture == expected);
        if (!c.options.isEmpty()) {
            EXPECT_FALSE(picture == reference); // the option changed the picture
        }
    }
}

TEST(BoardCommand, AnOutlineFromStandardInputToStandardOutput)
{
    // The PNG goes out as bytes: read them from the process, not through runQly's text decoding.
    QProcess process;
    process.start(Qly, {"board", "-", "-o", "-", "--mode", "columns", "--width", "900"});
    process.write(Outline);
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(60000));
    ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    const QImage picture = decoded(process.readAllStandardOutput());
    ASSERT_FALSE(picture.isNull());
    const QImage expected = expectedBoard(outlineCards(), {.multipleSectionsMode = 2, .width = 900});
    EXPECT_TRUE(picture == expected);
}

TEST(BoardCommand, RefusesBadOptionsAndSources)
{
    QTemporaryDir dir;
    const QString out = dir.filePath(QStringLiteral("board.png"));
    const QString outline = writeFile(dir, QStringLiteral("o.opml"), Outline);
    struct Case {
        QStringList args;
        int exitCode;
        QString message;
    };
    const std::vector<Case> cases = {
        {{"board", outline}, 2, "-o"},
        {{"board", outline, "-o", out, "--mode", "spiral"}, 2, "spiral"},
        {{"board", outline, "-o", out, "--across", "0"}, 2, "--across"},
        {{"board", outline, "-o", out, "--across", "many"}, 2, "many"},
        {{"board", outline, "-o", out, "--width", "50"}, 2, "--width"},
        {{"board", outline, "-o", out, "--theme", "green"}, 2, "green"},
        {{"board", outline, "-o", out, "--colour"}, 2, "colour"},
        {{"board", dir.filePath("missing"), "-o", out}, 1, "no such file or folder"},
        {{"board", writeFile(dir, "bad.opml", "<opml><body><outline text='x'>"), "-o", out}, 1, "not well-formed"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(u' ').toStdString());
        const QlyRun run = runQly(c.args);
        EXPECT_EQ(run.exitCode, c.exitCode);
        EXPECT_TRUE(run.err.contains(c.message)) << run.err.toStdString();
        EXPECT_FALSE(QFile::exists(out)); // nothing half-written is left behind
    }
}
