#pragma once
// Runs the built qly program and collects what it printed.
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "support/TestFiles.h"

namespace qly::tooltest {

inline const QString Qly = QStringLiteral(QLY_BINARY_DIR "/tools/qly/qly");

struct QlyRun {
    int exitCode = -1; ///< -1 when it crashed or did not finish
    QString out;
    QString err;
};

/// Runs qly with the arguments, giving it input on its standard input.
inline QlyRun runQly(const QStringList& args, const QByteArray& input = {})
{
    QProcess process;
    process.start(Qly, args);
    process.write(input);
    process.closeWriteChannel();
    QlyRun run;
    if (!process.waitForFinished(60000))
        return run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

/// Writes a file into dir and returns its path.
inline QString writeFile(const QTemporaryDir& dir, const QString& name, const QByteArray& bytes)
{
    const QString path = dir.filePath(name);
    testfiles::writeFileBytes(path, bytes);
    return path;
}

} // namespace qly::tooltest
