#pragma once
// What every qly command shares: one option parser, so that unknown options, missing values and
// --help behave alike everywhere, and input and output where "-" means standard input or output.
#include <QByteArray>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <limits>
#include <vector>

namespace qly::tool {

/// Exit codes of every command.
enum ExitCode { ExitSuccess = 0, ExitFailure = 1, ExitUsage = 2 };

/// "-" as a file name: standard input when reading, standard output when writing.
inline const QString StandardStreamName = QStringLiteral("-");

/// One command's command line: its options and arguments, its help, and the checks every command makes.
class CommandLine {
public:
    /// synopsis is the part after "qly COMMAND" in the usage line; description follows it in --help.
    CommandLine(const QString& command, const QString& synopsis, const QString& description);

    void addOption(const QCommandLineOption& option) { m_parser.addOption(option); }
    /// Parses; false when the command is to stop, with *exitCode: 0 after printing --help, 2 after
    /// printing what was wrong. Checks the number of arguments (maxArguments -1: no limit).
    bool parse(const QStringList& args, int minArguments, int maxArguments, int* exitCode);

    bool isSet(const QString& name) const { return m_parser.isSet(name); }
    QString value(const QString& name) const { return m_parser.value(name); }
    QStringList values(const QString& name) const { return m_parser.values(name); }
    QStringList arguments() const { return m_parser.positionalArguments(); }

    /// Prints "qly COMMAND: message" and a pointer to --help; returns ExitUsage.
    int usageError(const QString& message) const;
    QString helpText() const;

private:
    QString m_command, m_synopsis, m_description;
    QCommandLineParser m_parser;
};

/// Reads count non-negative finite numbers at most maximum, separated by separator ("612x792",
/// "72,72,90,90"), into numbers; false when the text is anything else.
bool parseNumberList(const QString& text, QChar separator, int count, std::vector<double>& numbers,
                     double maximum = std::numeric_limits<double>::max());

/// Prints "qly: message" on stderr.
void printError(const QString& message);
/// Writes UTF-8 text to stdout.
void printOut(const QString& text);
/// Reads a whole file, or standard input for "-"; false after printing why.
bool readInput(const QString& path, QByteArray& bytes);
/// Writes a file atomically, or standard output for "-"; false after printing why.
bool writeOutput(const QString& path, const QByteArray& bytes);
/// Line breaks as the two characters "\n", so that a text stays on one output line.
QString oneLine(const QString& text);

} // namespace qly::tool
