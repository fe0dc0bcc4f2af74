// qly convert: RTF and plain text into each other, by the files' extensions.
#include <qlyappkit/platform/rtf/RTFReader.h>
#include <qlyappkit/platform/rtf/RTFWriter.h>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include "Commands.h"

namespace qly::tool {

namespace {

enum class Format { Unknown, RTF, Text };

Format formatNamed(const QString& name)
{
    const QString n = name.toLower();
    if (n == QLatin1String("rtf"))
        return Format::RTF;
    if (n == QLatin1String("txt") || n == QLatin1String("text"))
        return Format::Text;
    return Format::Unknown;
}

Format formatOfPath(const QString& path) { return formatNamed(QFileInfo(path).suffix()); }

// Plain text has no line separators or attachments: the first become line feeds, the second go.
QString plainText(QString text)
{
    text.replace(QChar(0x2028), QLatin1Char('\n'));
    text.replace(QChar(0x2029), QLatin1Char('\n'));
    text.remove(QChar(0xFFFC));
    return text;
}

bool writeAtomically(const QString& path, const QByteArray& bytes, QString& message)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        message = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace

int runConvert(const QStringList& args)
{
    for (int i = 0; i + 1 < args.size(); ++i)
        if (args.at(i) == QLatin1String("--to") && args.at(i + 1) == QLatin1String("word-rtf"))
            return runWordRTFExport(args);
    QString input, output;
    Format target = Format::Unknown;
    for (int i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        if ((arg == QLatin1String("-o") || arg == QLatin1String("--to")) && i + 1 >= args.size()) {
            printError(QStringLiteral("%1 needs a value").arg(arg));
            return 2;
        }
        if (arg == QLatin1String("-o")) {
            output = args.at(++i);
        } else if (arg == QLatin1String("--to")) {
            target = formatNamed(args.at(++i));
            if (target == Format::Unknown) {
                printError(QStringLiteral("unknown output format '%1' (rtf or txt)").arg(args.at(i)));
                return 2;
            }
        } else if (input.isEmpty()) {
            input = arg;
        } else {
            printError(QStringLiteral("convert takes one input file"));
            return 2;
        }
    }
    if (input.isEmpty() || output.isEmpty()) {
        printError(QStringLiteral("usage: qly convert IN -o OUT [--to rtf|txt]"));
        return 2;
    }
    const Format source = formatOfPath(input);
    if (source == Format::Unknown) {
        printError(QStringLiteral("%1: unknown input format (use .rtf or .txt)").arg(input));
        return 2;
    }
    if (target == Format::Unknown)
        target = formatOfPath(output);
    if (target == Format::Unknown) {
        printError(QStringLiteral("%1: unknown output format (use .rtf or .txt, or --to)").arg(output));
        return 2;
    }

    AttributedString text;
    QVariantMap documentAttributes;
    if (source == Format::RTF) {
        QFile file(input);
        if (!file.open(QIODevice::ReadOnly)) {
            printError(QStringLiteral("cannot read %1: %2").arg(input, file.errorString()));
            return 1;
        }
        RTFParseResult result;
        std::optional<AttributedString> read = attributedStringFromRTF(file.readAll(), &documentAttributes, &result);
        if (!read) {
            printError(QStringLiteral("%1: %2").arg(input, result.description()));
            return 1;
        }
        if (!result)
            printError(QStringLiteral("%1: warning: %2").arg(input, result.description()));
        text = *read;
    } else {
        QString plain, message;
        if (!readTextFile(input, plain, message)) {
            printError(message);
            return 1;
        }
        text = AttributedString(plain);
    }

    const QByteArray bytes = target == Format::RTF ? RTFFromRange(text, Range{0, text.length()}, documentAttributes)
                                                   : plainText(text.string()).toUtf8();
    QString message;
    if (!writeAtomically(output, bytes, message)) {
        printError(message);
        return 1;
    }
    return 0;
}

} // namespace qly::tool
