// qly board: a folder of documents or an OPML outline as index cards on a corkboard, drawn to PNG by
// the corkboard view's own painting.
#include <qlyappkit/corkboard/XQCorkboardCardList.h>
#include <qlyappkit/corkboard/XQCorkboardView.h>
#include <qlyappkit/formats/opml/XQOPMLStorage.h>
#include <qlyappkit/formats/outline/OPMLOutline.h>
#include <qlyappkit/formats/outline/TitleOrdering.h>
#include <qlyappkit/platform/services/ContainedPaths.h>
#include <qlyappkit/platform/services/NamedException.h>

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

#include "CommandLine.h"
#include "Commands.h"
#include "convert/ConvertFormats.h"

namespace qly::tool {

namespace {

const QString OutputOption = QStringLiteral("output");
const QString ModeOption = QStringLiteral("mode");
const QString AcrossOption = QStringLiteral("across");
const QString WidthOption = QStringLiteral("width");
const QString NumbersOption = QStringLiteral("numbers");
const QString ThemeOption = QStringLiteral("theme");
const QStringList Modes = {QStringLiteral("grid"), QStringLiteral("rows"), QStringLiteral("columns"),
                           QStringLiteral("freeform")};
const QStringList Themes = {QStringLiteral("red-blue"), QStringLiteral("blue-black")};
const QStringList ImageExtensions = {QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                     QStringLiteral("gif"), QStringLiteral("bmp")};

constexpr int DefaultWidth = 1200;
constexpr int MinimumWidth = 200, MaximumWidth = 20000;
constexpr int MaximumAcross = 100;
/// A card shows the start of its document: this many paragraphs, cut at this many characters.
constexpr int CardParagraphs = 3;
constexpr int CardCharacters = 700;
/// Pictures are kept no larger than a card can show them.
constexpr int LargestPicture = 640;
/// The largest board drawn, in pixels (about 24,000 × 24,000): enough for thousands of cards.
constexpr qint64 MaximumPixels = 600'000'000;

// The start of a document as a card shows it: its first non-empty paragraphs.
QString cardText(const QString& text)
{
    QStringList kept;
    qsizetype length = 0;
    const QStringList paragraphs = QString(text)
                                       .replace(QStringLiteral("\r\n"), QStringLiteral("\n"))
                                       .split(QRegularExpression(QStringLiteral("[\\n\\r\\x{2029}]")));
    for (const QString& paragraph : paragraphs) {
        const QString trimmed = paragraph.trimmed();
        if (trimmed.isEmpty())
            continue;
        kept.append(trimmed);
        length += trimmed.size();
        if (kept.size() == CardParagraphs || length >= CardCharacters)
            break;
    }
    QString result = kept.join(QLatin1Char('\n'));
    if (result.size() > CardCharacters)
        result = result.left(CardCharacters);
    return result;
}

// Entries of a folder in the order a person numbers them: "2 Arrival" before "10 Departure".
QFileInfoList orderedEntries(const QString& folder)
{
    QFileInfoList entries =
        QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    // Not a collator: without ICU its numeric mode is ignored and "10" would sort before "2".
    std::stable_sort(entries.begin(), entries.end(), [](const QFileInfo& a, const QFileInfo& b) {
        return compareTitlesNumerically(a.fileName(), b.fileName(), true) == OrderedAscending;
    });
    entries.erase(std::remove_if(entries.begin(), entries.end(),
                                 [](const QFileInfo& info) { return info.fileName().startsWith(u'.'); }),
                  entries.end());
    return entries;
}

class FolderReader {
public:
    explicit FolderReader(const CommandLine& line) : m_line(line) { }

    bool cardFromFile(const QFileInfo& file, XQCorkboardCard* card)
    {
        const QString suffix = file.suffix().toLower();
        card->title = file.completeBaseName();
        if (ImageExtensions.contains(suffix)) {
            QImageReader reader(file.filePath());
            reader.setAutoTransform(true);
            const QSize size = reader.size();
            if (size.isValid() && (size.width() > LargestPicture || size.height() > LargestPicture))
                reader.setScaledSize(size.scaled(LargestPicture, LargestPicture, Qt::KeepAspectRatio));
            card->image = reader.read();
            if (card->image.isNull()) {
                printError(QStringLiteral("%1: cannot read the picture (%2); left off the board")
                               .arg(file.filePath(), reader.errorString()));
                return false;
            }
            return true;
        }
        const DocumentFormatHandler* handler = documentFormatHandlerForPath(file.filePath());
        if (!handler || !handler->read)
            return false;
        QByteArray bytes;
        if (!readInput(file.filePath(), bytes)) {
            m_failed = true;
            return false;
        }
        const std::optional<ConvertDocument> document = handler->read(bytes, file.filePath(), m_line);
        if (!document) {
            m_failed = true;
            return false;
        }
        card->text = cardText(document->text.string());
        return true;
    }

    // The cards of a folder: its files, then those of its sub-folders (in name order, depth first,
    // never following a link out of the folder).
    QList<XQCorkboardCard> cardsIn(const QString& root, const QString& folder, bool descend)
    {
        QList<XQCorkboardCard> cards;
        QStringList pending = {folder};
        QSet<QString> visited;
        while (!pending.isEmpty()) {
            const QString current = pending.takeFirst();
            const QString canonical = QFileInfo(current).canonicalFilePath();
            if (canonical.isEmpty() || visited.contains(canonical))
                continue;
            visited.insert(canonical);
            QStringList subFolders;
            for (const QFileInfo& entry : orderedEntries(current)) {
                const QString relative = QDir(root).relativeFilePath(entry.filePath());
                if (!pathInsideFolder(root, relative))
                    continue;
                if (entry.isDir()) {
                    if (descend)
                        subFolders.append(entry.filePath());
                    continue;
                }
                XQCorkboardCard card;
                if (cardFromFile(entry, &card))
                    cards.append(card);
            }
            pending = subFolders + pending;
        }
        return cards;
    }

    bool failed() const { return m_failed; }

private:
    const CommandLine& m_line;
    bool m_failed = false;
};

std::optional<XQCorkboardCardList> boardFromFolder(const QString& path, const CommandLine& line)
{
    FolderReader reader(line);
    QList<XQCorkboardSection> sections;
    XQCorkboardSection loose{QFileInfo(path).fileName(), reader.cardsIn(path, path, false)};
    if (!loose.cards.isEmpty())
        sections.append(loose);
    for (const QFileInfo& entry : orderedEntries(path)) {
        if (!entry.isDir() || !pathInsideFolder(path, entry.fileName()))
            continue;
        sections.append(XQCorkboardSection{entry.fileName(), reader.cardsIn(path, entry.filePath(), true)});
    }
    if (reader.failed())
        return std::nullopt;
    return XQCorkboardCardList(sections);
}

std::optional<XQCorkboardCardList> boardFromOutline(const QString& path)
{
    QByteArray bytes;
    if (!readInput(path, bytes))
        return std::nullopt;
    try {
        XQOPMLReadError error;
        std::optional<XQOPMLStorage> storage = XQOPMLStorage::initWithData(std::move(bytes), &error);
        if (!storage) {
            printError(
                QStringLiteral("%1: not well-formed XML: %2 at offset %3").arg(path, error.message).arg(error.offset));
            return std::nullopt;
        }
        return XQCorkboardCardList::fromOutline(XQBaseNodesFromOPMLStorage(*storage));
    } catch (const NamedException& exception) {
        printError(QStringLiteral("%1: %2").arg(path, exception.reason()));
        return std::nullopt;
    }
}

// The options the document readers look at, so that they can ask for them without complaint; they
// keep their defaults on a board.
void addReaderOptions(CommandLine& line)
{
    QSet<QString> names;
    for (const DocumentFormatHandler& handler : documentFormatHandlers()) {
        for (QCommandLineOption option : handler.options) {
            bool fresh = true;
            for (const QString& name : option.names())
                fresh = fresh && !names.contains(name);
            if (!fresh)
                continue;
            for (const QString& name : option.names())
                names.insert(name);
            option.setFlags(QCommandLineOption::HiddenFromHelp);
            line.addOption(option);
        }
    }
}

} // namespace

int runBoard(const QStringList& args)
{
    CommandLine line(
        QStringLiteral("board"),
        QStringLiteral("SOURCE -o BOARD.png [--mode grid|rows|columns|freeform] [--across N] [--width PX]\n"
                       "                 [--numbers] [--theme red-blue|blue-black]"),
        QStringLiteral("Draws index cards on a corkboard as a PNG picture. SOURCE is a folder, one card per\n"
                       ".txt, .rtf or .md file in name order (the title from the file name, the text from\n"
                       "its first paragraphs; pictures become picture cards) with each sub-folder a section,\n"
                       "or an OPML file (\"-\": standard input) whose top-level items are the sections and\n"
                       "their children the cards (title from \"text\", text from \"_note\", a status stamp\n"
                       "from \"_status\", a label colour from \"_label\").\n\n"
                       "Modes: grid (one grid, a band per section; the default), rows (each section one\n"
                       "row), columns (each section one column), freeform (cards pinned loosely)."));
    line.addOption({{QStringLiteral("o"), OutputOption},
                    QStringLiteral("The PNG file to write (\"-\": standard output)."),
                    QStringLiteral("FILE")});
    line.addOption({ModeOption, QStringLiteral("grid, rows, columns or freeform."), QStringLiteral("MODE")});
    line.addOption({AcrossOption,
                    QStringLiteral("Cards across in grid mode (default 3), or \"auto\" to fit the width."),
                    QStringLiteral("N")});
    line.addOption(
        {WidthOption, QStringLiteral("Width of the visible board in pixels (default 1200)."), QStringLiteral("PX")});
    line.addOption({NumbersOption, QStringLiteral("Number the cards (from 1 in each section).")});
    line.addOption(
        {ThemeOption, QStringLiteral("Card colours: red-blue (default) or blue-black."), QStringLiteral("THEME")});
    addReaderOptions(line);
    int exitCode = 0;
    if (!line.parse(args, 1, 1, &exitCode))
        return exitCode;

    const QString output = line.value(OutputOption);
    if (output.isEmpty())
        return line.usageError(QStringLiteral("name the picture to write with -o"));
    const QString mode = line.isSet(ModeOption) ? line.value(ModeOption).toLower() : Modes.constFirst();
    if (!Modes.contains(mode))
        return line.usageError(QStringLiteral("--mode takes grid, rows, columns or freeform, not '%1'").arg(mode));
    int across = 3;
    if (line.isSet(AcrossOption)) {
        const QString value = line.value(AcrossOption);
        bool ok = false;
        across = value.compare(QStringLiteral("auto"), Qt::CaseInsensitive) == 0 ? -1 : value.toInt(&ok);
        if (across != -1 && (!ok || across < 1 || across > MaximumAcross))
            return line.usageError(QStringLiteral("--across takes a number of cards from 1 to %1 or \"auto\", not '%2'")
                                       .arg(MaximumAcross)
                                       .arg(value));
    }
    int width = DefaultWidth;
    if (line.isSet(WidthOption)) {
        bool ok = false;
        width = line.value(WidthOption).toInt(&ok);
        if (!ok || width < MinimumWidth || width > MaximumWidth)
            return line.usageError(QStringLiteral("--width takes pixels from %1 to %2, not '%3'")
                                       .arg(MinimumWidth)
                                       .arg(MaximumWidth)
                                       .arg(line.value(WidthOption)));
    }
    const QString theme = line.isSet(ThemeOption) ? line.value(ThemeOption).toLower() : Themes.constFirst();
    if (!Themes.contains(theme))
        return line.usageError(QStringLiteral("--theme takes red-blue or blue-black, not '%1'").arg(theme));

    const QString source = line.arguments().constFirst();
    const QFileInfo info(source);
    if (source != StandardStreamName && !info.exists()) {
        printError(QStringLiteral("%1: no such file or folder").arg(source));
        return ExitFailure;
    }
    std::optional<XQCorkboardCardList> cards =
        source != StandardStreamName && info.isDir() ? boardFromFolder(source, line) : boardFromOutline(source);
    if (!cards)
        return ExitFailure;

    XQCorkboardView view;
    view.resize(width, 1);
    view.setMultipleSectionsMode(mode == QLatin1String("rows") ? 1 : mode == QLatin1String("columns") ? 2 : 0);
    view.setCardsAcross(across);
    view.setShowsCardNumbers(line.isSet(NumbersOption));
    if (theme == QLatin1String("blue-black"))
        view.setBlueAndBlackIndexCardTheme();
    if (mode == QLatin1String("freeform")) {
        cards->arrangeFreeform(view.indexCardHeightRatio());
        view.setUsesFreeformArrangement(true);
    }
    view.setDataSource(&*cards);
    if (qint64(view.width()) * view.height() > MaximumPixels) {
        printError(QStringLiteral("%1: a board of %2 × %3 pixels is too large to draw")
                       .arg(source)
                       .arg(view.width())
                       .arg(view.height()));
        return ExitFailure;
    }
    const QImage picture = view.renderBoard();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (picture.isNull() || !picture.save(&buffer, "PNG")) {
        printError(QStringLiteral("%1: the board could not be drawn").arg(output));
        return ExitFailure;
    }
    return writeOutput(output, png) ? ExitSuccess : ExitFailure;
}

} // namespace qly::tool
