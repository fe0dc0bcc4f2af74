#pragma once
// Opens files in the headless office suite as a writer would, and reads what it made of them. One
// call converts many files (starting the suite is the slow part); each run has a private profile so
// that parallel test programs do not share one.
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

namespace qly::tooltest {

/// The office suite's program; empty when it is missing (scripts/bootstrap installs it).
inline QString officeSuite() { return QStandardPaths::findExecutable(QStringLiteral("soffice")); }

/// Converts every file to format ("docx", "pdf") into folder, in one call. True when each output exists.
inline bool convertWithOfficeSuite(const QString& folder, const QStringList& files, const QString& format)
{
    QStringList args{QStringLiteral("-env:UserInstallation=file://") + folder + QStringLiteral("/office-profile"),
                     QStringLiteral("--headless"),
                     QStringLiteral("--convert-to"),
                     format,
                     QStringLiteral("--outdir"),
                     folder};
    args.append(files);
    QProcess process;
    process.start(officeSuite(), args);
    if (!process.waitForFinished(240000))
        return false;
    for (const QString& file : files) {
        if (!QFileInfo::exists(folder + QLatin1Char('/') + QFileInfo(file).completeBaseName() + QLatin1Char('.')
                               + format))
            return false;
    }
    return true;
}

/// The output of a program run to its end; empty when it failed.
inline QString programOutput(const QString& program, const QStringList& args)
{
    QProcess process;
    process.start(program, args);
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return QString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// One part of a .docx ("word/document.xml"); empty when it has none.
inline QString docxPart(const QString& docx, const QString& part)
{
    return programOutput(QStringLiteral("unzip"), {QStringLiteral("-p"), docx, part});
}

/// The text of a part's runs, run by run, with each note reference as "[ref]".
inline QString docxRunText(const QString& xml)
{
    static const QRegularExpression piece(
        QStringLiteral("<w:t(?: [^>]*)?>([^<]*)</w:t>|<w:(?:footnote|endnote|comment)Reference[^>]*/>"));
    QString text;
    for (auto it = piece.globalMatch(xml); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        text.append(m.captured(1).isNull() ? QStringLiteral("[ref]") : m.captured(1));
    }
    return text;
}

} // namespace qly::tooltest
