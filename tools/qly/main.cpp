// qly: the project's command-line tool. Runs the framework's conversions end to end.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QStringConverter>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

#include "Commands.h"

namespace qly::tool {

void printError(const QString& message) { std::fprintf(stderr, "qly: %s\n", message.toUtf8().constData()); }

void printOut(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    std::fwrite(utf8.constData(), 1, size_t(utf8.size()), stdout);
}

bool readTextFile(const QString& path, QString& text, QString& message)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        message = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    text = QString::fromUtf8(file.readAll());
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    return true;
}

} // namespace qly::tool

namespace {

const char* const Usage = "usage: qly COMMAND [ARGS...]\n"
                          "\n"
                          "commands:\n"
                          "  stats FILE...     words and characters (UTF-16 units) of UTF-8 text files:\n"
                          "                    words<TAB>characters<TAB>path, and a total line for several files\n"
                          "  comments FILE     the comments of a comments side file, one per line:\n"
                          "                    ID<TAB>footnote<TAB>number<TAB>collapsed<TAB>colour<TAB>text\n"
                          "  convert IN -o OUT [--to rtf|txt]\n"
                          "                    converts between RTF and plain text (UTF-8), by the files'\n"
                          "                    extensions (.rtf, .txt); --to names the output format\n"
                          "  convert IN.rtf -o OUT.rtf --to word-rtf [--comments FILE.xml]\n"
                          "          [--option NAME=VALUE]... [--paper WxH] [--margins L,R,T,B] [--author NAME]\n"
                          "          [--annotations-as-footnotes]\n"
                          "                    exports a stored text (RTF with note tags) for word processors:\n"
                          "                    real footnotes, endnotes, comments, bookmarks, sections, pictures;\n"
                          "                    comments come from --comments or IN.comments.xml beside IN;\n"
                          "                    --option sets an XQRTF... option (yes/no, numbers, texts);\n"
                          "                    --annotations-as-footnotes writes annotations as footnotes;\n"
                          "                    paper and margins in points; links qlybookmark:NAME,\n"
                          "                    qlypageref:NAME and qlypicture:FILE become bookmarks, page\n"
                          "                    references and pictures; page breaks start sections\n"
                          "  notes FILE        the notes tagged in a UTF-8 text, one per line in text order:\n"
                          "                    annotation|footnote|preserve<TAB>start<TAB>length<TAB>text\n"
                          "                    (UTF-16 units of the text without its tags; line breaks as \\n)\n"
                          "\n"
                          "options:\n"
                          "  --help            this text\n"
                          "  --version         the version\n";

} // namespace

int main(int argc, char** argv)
{
    // Export for word processors measures text and renders pictures, which needs the GUI classes;
    // a command-line tool never shows a window, so it draws off screen unless told otherwise.
    bool needsGui = false;
    for (int i = 1; i < argc; ++i)
        needsGui = needsGui || std::strcmp(argv[i], "word-rtf") == 0;
    if (needsGui && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Without a session (CI, a shell on a server) the GUI classes warn about a missing runtime folder;
    // give them a private one.
    if (needsGui && qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        const QByteArray dir = QDir::tempPath().toUtf8() + "/qly-runtime-" + QByteArray::number(getuid());
        if (QDir().mkpath(QString::fromUtf8(dir)))
            QFile::setPermissions(QString::fromUtf8(dir),
                                  QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", dir);
    }
    std::unique_ptr<QCoreApplication> app(needsGui ? new QGuiApplication(argc, argv)
                                                   : new QCoreApplication(argc, argv));
    QCoreApplication::setApplicationName(QStringLiteral("qly"));
    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty()) {
        std::fputs(Usage, stderr);
        return 2;
    }
    const QString command = args.takeFirst();
    if (command == QLatin1String("--help") || command == QLatin1String("-h") || command == QLatin1String("help")) {
        std::fputs(Usage, stdout);
        return 0;
    }
    if (command == QLatin1String("--version")) {
        std::puts("qly " QLY_VERSION);
        return 0;
    }
    if (command == QLatin1String("stats"))
        return qly::tool::runStats(args);
    if (command == QLatin1String("comments"))
        return qly::tool::runComments(args);
    if (command == QLatin1String("convert"))
        return qly::tool::runConvert(args);
    if (command == QLatin1String("notes"))
        return qly::tool::runNotes(args);
    qly::tool::printError(QStringLiteral("unknown command '%1' (see qly --help)").arg(command));
    return 2;
}
