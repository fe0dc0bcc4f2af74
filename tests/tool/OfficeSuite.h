#pragma once
// Opens files in the headless office suite as a writer would (support/OfficeSuite.h), and reads what
// it made of them.
#include <QProcess>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include "support/OfficeSuite.h"

namespace qly::tooltest {

using qly::testsupport::convertWithOfficeSuite;
using qly::testsupport::officeSuite;

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
