#include "CommandLine.h"

#include <qlyappkit/platform/services/AtomicFile.h>

#include <QFile>

#include <cmath>
#include <cstdio>

namespace qly::tool {

CommandLine::CommandLine(const QString& command, const QString& synopsis, const QString& description)
    : m_command(command), m_synopsis(synopsis), m_description(description)
{
    m_parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    m_parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsOptions);
    m_parser.addHelpOption();
}

bool CommandLine::parse(const QStringList& args, int minArguments, int maxArguments, int* exitCode)
{
    // QCommandLineParser expects the program name first.
    if (!m_parser.parse(QStringList{QStringLiteral("qly")} + args)) {
        *exitCode = usageError(m_parser.errorText());
        return false;
    }
    if (m_parser.isSet(QStringLiteral("help"))) {
        std::fputs(helpText().toUtf8().constData(), stdout);
        *exitCode = ExitSuccess;
        return false;
    }
    const qsizetype count = arguments().size();
    if (count < minArguments || (maxArguments >= 0 && count > maxArguments)) {
        *exitCode = usageError(count < minArguments ? QStringLiteral("missing arguments")
                                                    : QStringLiteral("too many arguments"));
        return false;
    }
    return true;
}

int CommandLine::usageError(const QString& message) const
{
    std::fprintf(stderr, "qly %s: %s\nusage: qly %s %s\n(see qly %s --help)\n", qPrintable(m_command),
                 qPrintable(message), qPrintable(m_command), qPrintable(m_synopsis), qPrintable(m_command));
    return ExitUsage;
}

QString CommandLine::helpText() const
{
    // The parser's own text lists the options; its first lines (usage) are replaced by ours.
    QString options = m_parser.helpText();
    const qsizetype at = options.indexOf(QLatin1String("Options:"));
    options = at >= 0 ? options.mid(at) : QString();
    return QStringLiteral("usage: qly %1 %2\n\n%3\n\n%4").arg(m_command, m_synopsis, m_description, options);
}

void printError(const QString& message) { std::fprintf(stderr, "qly: %s\n", message.toUtf8().constData()); }

void printOut(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    std::fwrite(utf8.constData(), 1, size_t(utf8.size()), stdout);
}

bool parseNumberList(const QString& text, QChar separator, int count, std::vector<double>& numbers, double maximum)
{
    const QStringList parts = text.split(separator);
    if (parts.size() != count)
        return false;
    numbers.clear();
    for (const QString& part : parts) {
        bool ok = false;
        const double n = part.trimmed().toDouble(&ok);
        if (!ok || n < 0 || !std::isfinite(n) || n > maximum)
            return false;
        numbers.push_back(n);
    }
    return true;
}

bool readInput(const QString& path, QByteArray& bytes)
{
    QFile file;
    const bool standardInput = path == StandardStreamName;
    const bool opened = standardInput ? file.open(stdin, QIODevice::ReadOnly)
                                      : (file.setFileName(path), file.open(QIODevice::ReadOnly));
    if (!opened) {
        printError(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
        return false;
    }
    bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        printError(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
        return false;
    }
    return true;
}

bool writeOutput(const QString& path, const QByteArray& bytes)
{
    if (path == StandardStreamName) {
        if (std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout) != size_t(bytes.size())
            || std::fflush(stdout) != 0) {
            printError(QStringLiteral("cannot write to standard output"));
            return false;
        }
        return true;
    }
    Error error;
    if (!writeFileAtomically(path, bytes, &error)) {
        printError(QStringLiteral("cannot write %1: %2").arg(path, error.localizedRecoverySuggestion));
        return false;
    }
    return true;
}

QString oneLine(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == u'\r' && i + 1 < text.size() && text.at(i + 1) == u'\n')
            continue; // CR LF is one break
        if (c == u'\n' || c == u'\r' || c == QChar(0x2028) || c == QChar(0x2029) || c == QChar(0x0085))
            out += QStringLiteral("\\n");
        else
            out += c;
    }
    return out;
}

} // namespace qly::tool
