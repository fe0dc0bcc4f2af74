#pragma once
// Runs the headless office suite (scripts/bootstrap installs it) to convert files. One call converts
// many files, since starting the suite is the slow part; each call has a private profile so that
// parallel test programs never share one.
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

namespace qly::testsupport {

/// The office suite's program; empty when it is missing.
inline QString officeSuite() { return QStandardPaths::findExecutable(QStringLiteral("soffice")); }

/// Converts every file to format ("docx", "pdf", "fodt", or a full filter such as
/// "txt:Text (encoded):UTF8") into folder, in one call; the profile lives in folder too. True when the
/// suite finished within timeoutMs and each output exists.
inline bool convertWithOfficeSuite(const QString& folder, const QStringList& files, const QString& format,
                                   int timeoutMs = 240000)
{
    const QString program = officeSuite();
    if (program.isEmpty())
        return false;
    QStringList args{QStringLiteral("-env:UserInstallation=file://") + folder + QStringLiteral("/office-profile"),
                     QStringLiteral("--headless"),
                     QStringLiteral("--convert-to"),
                     format,
                     QStringLiteral("--outdir"),
                     folder};
    args.append(files);
    QProcess process;
    process.start(program, args);
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        return false;
    }
    // The output's extension is the format's name without its filter part.
    const QString extension = format.section(QLatin1Char(':'), 0, 0);
    for (const QString& file : files) {
        if (!QFileInfo::exists(folder + QLatin1Char('/') + QFileInfo(file).completeBaseName() + QLatin1Char('.')
                               + extension))
            return false;
    }
    return true;
}

} // namespace qly::testsupport
