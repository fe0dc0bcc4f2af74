// Golden files of the export for word processors: each folder under tests/fixtures/word-rtf holds a
// stored text (input.rtf, optionally input.comments.xml and pictures), the export settings
// (arguments, one per line, as qly convert takes them) and the RTF the export must write
// (expected.rtf), compared byte for byte. On a mismatch the test prints a unified diff and keeps the
// actual output; QLY_REGENERATE_GOLDEN=1 rewrites every expected.rtf instead (scripts/regenerate-golden).
#include "support/TestFiles.h"

#include <qlyappkit/interchange/export/StoredText.h>
#include <qlyappkit/interchange/export/WordRTFExport.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSizeF>

#include <optional>

using namespace qly;
using namespace qly::testfiles;

namespace {

const QString GoldenFolder = QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/word-rtf");
const QString ActualFolder = QStringLiteral(QLY_BINARY_DIR "/tests/word-rtf-actual");
const char* const RegenerateVariable = "QLY_REGENERATE_GOLDEN";

const QString InputName = QStringLiteral("input.rtf");
const QString CommentsName = QStringLiteral("input.comments.xml");
const QString ArgumentsName = QStringLiteral("arguments");
const QString ExpectedName = QStringLiteral("expected.rtf");

// The export settings of the arguments lines, as qly convert reads them; nothing after a failure
// naming the line.
std::optional<WordRTFExportSettings> settingsFromArguments(const QString& arguments, QString* problem)
{
    WordRTFExportSettings settings;
    auto numbers = [](const QString& text, QChar separator, int count) {
        QList<double> values;
        for (const QString& part : text.split(separator)) {
            bool ok = false;
            values.append(part.trimmed().toDouble(&ok));
            if (!ok)
                return QList<double>();
        }
        return values.size() == count ? values : QList<double>();
    };
    for (const QString& line : arguments.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const qsizetype blank = line.indexOf(QLatin1Char(' '));
        const QString name = blank < 0 ? line : line.left(blank);
        const QString value = blank < 0 ? QString() : line.mid(blank + 1);
        bool ok = true;
        if (name == QLatin1String("--option")) {
            ok = setRTFOptionFromString(settings.options, value, problem);
        } else if (name == QLatin1String("--author")) {
            settings.documentAttributes.insert(AuthorDocumentAttribute, value);
        } else if (name == QLatin1String("--annotations-as-footnotes") && value.isEmpty()) {
            settings.annotationsAsFootnotes = true;
        } else if (name == QLatin1String("--paper")) {
            const QList<double> n = numbers(value.toLower(), QLatin1Char('x'), 2);
            ok = !n.isEmpty();
            if (ok)
                settings.documentAttributes.insert(PaperSizeDocumentAttribute, QSizeF(n[0], n[1]));
        } else if (name == QLatin1String("--margins")) {
            const QList<double> n = numbers(value, QLatin1Char(','), 4);
            ok = !n.isEmpty();
            if (ok) {
                settings.documentAttributes.insert(LeftMarginDocumentAttribute, n[0]);
                settings.documentAttributes.insert(RightMarginDocumentAttribute, n[1]);
                settings.documentAttributes.insert(TopMarginDocumentAttribute, n[2]);
                settings.documentAttributes.insert(BottomMarginDocumentAttribute, n[3]);
            }
        } else {
            ok = false;
        }
        if (!ok) {
            *problem = QStringLiteral("%1: bad line \u201C%2\u201D %3").arg(ArgumentsName, line, *problem);
            return std::nullopt;
        }
    }
    return settings;
}

// The export of one case folder; empty with *problem when the case cannot be run.
QByteArray exportCase(const QDir& folder, QString* problem)
{
    const std::optional<WordRTFExportSettings> read =
        settingsFromArguments(QString::fromUtf8(readFileBytes(folder.filePath(ArgumentsName))), problem);
    if (!read)
        return {};
    WordRTFExportSettings settings = *read;
    settings.resourceFolder = folder.absolutePath();
    const QString comments =
        QFileInfo::exists(folder.filePath(CommentsName)) ? folder.filePath(CommentsName) : QString();
    QVariantMap storedAttributes;
    Error error;
    const std::optional<AttributedString> text = storedTextFromDocumentData(
        readFileBytes(folder.filePath(InputName)), DocumentFormat::RTF, comments, &storedAttributes, &error);
    if (!text) {
        *problem = error.localizedDescription;
        return {};
    }
    return wordRTFFromStoredText(*text, storedAttributes, settings);
}

// "diff -u" of the two files, long lines (picture data) cut so that the report stays readable.
QString unifiedDiff(const QString& expectedPath, const QString& actualPath)
{
    constexpr qsizetype MaxLineLength = 1000, MaxLines = 150;
    QProcess diff;
    diff.start(QStringLiteral("/usr/bin/diff"), {QStringLiteral("-u"), expectedPath, actualPath});
    if (!diff.waitForFinished(30000))
        return QStringLiteral("(/usr/bin/diff did not run)");
    QStringList lines = QString::fromUtf8(diff.readAllStandardOutput()).split(QLatin1Char('\n'));
    const qsizetype total = lines.size();
    if (total > MaxLines)
        lines.resize(MaxLines);
    for (QString& line : lines) {
        if (line.size() > MaxLineLength)
            line = line.left(MaxLineLength) + QStringLiteral("[… %1 more]").arg(line.size() - MaxLineLength);
    }
    if (total > MaxLines)
        lines.append(QStringLiteral("[… %1 more lines]").arg(total - MaxLines));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

TEST(WordRTFGolden, EveryCaseExportsExactlyItsExpectedRTF)
{
    const bool regenerate = qEnvironmentVariableIntValue(RegenerateVariable) == 1;
    const QStringList cases = QDir(GoldenFolder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    ASSERT_GE(cases.size(), 10) << "golden cases missing under " << GoldenFolder.toStdString();
    for (const QString& name : cases) {
        SCOPED_TRACE(name.toStdString());
        const QDir folder(GoldenFolder + QLatin1Char('/') + name);
        QString problem;
        const QByteArray actual = exportCase(folder, &problem);
        ASSERT_FALSE(actual.isEmpty()) << problem.toStdString();
        const QString expectedPath = folder.filePath(ExpectedName);
        if (regenerate) {
            writeFileBytes(expectedPath, actual);
            continue;
        }
        const QByteArray expected = readFileBytes(expectedPath);
        if (actual == expected)
            continue;
        ASSERT_TRUE(QDir().mkpath(ActualFolder));
        const QString actualPath = ActualFolder + QLatin1Char('/') + name + QStringLiteral(".rtf");
        writeFileBytes(actualPath, actual);
        ADD_FAILURE() << "the export differs from " << expectedPath.toStdString() << "\nactual output kept in "
                      << actualPath.toStdString() << "\n"
                      << (expected.isEmpty() ? QStringLiteral("(no expected.rtf: run scripts/regenerate-golden)")
                                             : unifiedDiff(expectedPath, actualPath))
                             .toStdString();
    }
}
