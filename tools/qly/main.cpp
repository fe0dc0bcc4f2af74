// qly: the project's command-line tool. Runs the framework's conversions end to end.
#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>
#include <memory>
#include <unistd.h>

#include "CommandLine.h"
#include "Commands.h"

namespace {

struct Command {
    const char* name;
    int (*run)(const QStringList&);
    /// Measures text or renders pictures, which needs the GUI classes (widgets: the text views).
    bool needsGui;
    const char* summary;
};

const Command Commands[] = {
    {"stats", qly::tool::runStats, false, "words and characters of documents"},
    {"comments", qly::tool::runComments, false, "the comments of a comments side file"},
    {"convert", qly::tool::runConvert, true, "documents between formats; stored texts for word processors"},
    {"notes", qly::tool::runNotes, false, "the notes tagged in a text"},
    {"screenplay", qly::tool::runScreenplay, false, "the elements of a plain-text screenplay"},
    {"diff", qly::tool::runDiff, false, "what changed between two versions of a document"},
    {"outline", qly::tool::runOutline, false, "the head and the items of an OPML outline"},
    {"fits", qly::tool::runFits, true, "whether a document fits on one page; its page count"},
    {"pages", qly::tool::runPages, true, "a document printed as pages, to PDF or a picture"},
    {"board", qly::tool::runBoard, true, "index cards on a corkboard, drawn to a PNG picture"},
};

void printUsage(FILE* stream)
{
    std::fputs("usage: qly COMMAND [OPTIONS] [ARGS...]\n\ncommands:\n", stream);
    for (const Command& command : Commands)
        std::fprintf(stream, "  %-10s %s\n", command.name, command.summary);
    std::fputs("\n\"qly COMMAND --help\" describes a command. \"-\" as a file reads standard input or\n"
               "writes standard output. Exit status: 0 done, 1 a file could not be read or written,\n"
               "2 wrong usage.\n\noptions:\n  -h, --help     this text\n  --version      the version\n",
               stream);
}

const Command* commandNamed(const QString& name)
{
    for (const Command& command : Commands) {
        if (name == QLatin1String(command.name))
            return &command;
    }
    return nullptr;
}

// A command-line tool never shows a window: it draws off screen unless told otherwise, and gives the
// GUI classes a private runtime folder when the session has none (CI, a shell on a server).
void prepareHeadlessGui()
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
        const QString dir = QDir::tempPath() + QStringLiteral("/qly-runtime-") + QString::number(getuid());
        if (QDir().mkpath(dir))
            QFile::setPermissions(dir, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", dir.toUtf8());
    }
}

} // namespace

int main(int argc, char** argv)
{
    const Command* command = argc > 1 ? commandNamed(QString::fromLocal8Bit(argv[1])) : nullptr;
    if (command && command->needsGui)
        prepareHeadlessGui();
    std::unique_ptr<QCoreApplication> app(command && command->needsGui ? new QApplication(argc, argv)
                                                                       : new QCoreApplication(argc, argv));
    QCoreApplication::setApplicationName(QStringLiteral("qly"));
    QStringList args = QCoreApplication::arguments().mid(1);
    if (args.isEmpty()) {
        printUsage(stderr);
        return qly::tool::ExitUsage;
    }
    const QString name = args.takeFirst();
    if (command)
        return command->run(args);
    if (name == QLatin1String("--help") || name == QLatin1String("-h") || name == QLatin1String("help")) {
        if (!args.isEmpty() && commandNamed(args.constFirst()))
            return commandNamed(args.constFirst())->run({QStringLiteral("--help")});
        printUsage(stdout);
        return qly::tool::ExitSuccess;
    }
    if (name == QLatin1String("--version")) {
        std::puts("qly " QLY_VERSION);
        return qly::tool::ExitSuccess;
    }
    qly::tool::printError(QStringLiteral("unknown command '%1' (see qly --help)").arg(name));
    return qly::tool::ExitUsage;
}
