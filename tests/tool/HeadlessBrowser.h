#pragma once
// Pages loaded in headless Chromium: a run with a fresh profile and nothing fetched from outside, and a
// page measured by a script of the test's, which leaves its findings in the page as JSON for --dump-dom.
#include <QByteArray>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QUrl>

#include "support/TestFiles.h"

namespace qly::tooltest {

/// Runs headless Chromium with the arguments and returns what it printed; problem says why it could not.
inline QByteArray runChromium(const QStringList& arguments, QString* problem)
{
    const QString chromium = QStandardPaths::findExecutable(QStringLiteral("chromium"));
    if (chromium.isEmpty()) {
        *problem = QStringLiteral("chromium is missing: run scripts/bootstrap");
        return {};
    }
    QTemporaryDir profile;
    QProcess process;
    process.start(chromium,
                  QStringList{QStringLiteral("--headless"), QStringLiteral("--no-sandbox"),
                              QStringLiteral("--disable-gpu"), QStringLiteral("--disable-quic"),
                              QStringLiteral("--no-first-run"), QStringLiteral("--disable-background-networking"),
                              QStringLiteral("--disable-component-update"), QStringLiteral("--disable-sync"),
                              QStringLiteral("--disable-dev-shm-usage"),
                              QStringLiteral("--user-data-dir=") + profile.path()}
                      + arguments);
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        *problem = QStringLiteral("chromium did not finish");
        return {};
    }
    return process.readAllStandardOutput();
}

/// Loads a copy of the page (beside it, so that its pictures are found alike) with script added at the
/// end of its body, and returns the JSON the script put into a `<pre id="probe">`; empty, with
/// problem set, when there is none.
inline QJsonObject probedPage(const QString& page, const char* script, QString* problem)
{
    QByteArray html = testfiles::readFileBytes(page);
    if (!html.contains("</body>")) {
        *problem = QStringLiteral("the page has no body end: %1").arg(page);
        return {};
    }
    const QString probed = QFileInfo(page).absolutePath() + QStringLiteral("/probed-") + QFileInfo(page).fileName();
    testfiles::writeFileBytes(probed, html.replace("</body>", QByteArray(script) + "</body>"));
    const QByteArray dom = runChromium({QStringLiteral("--virtual-time-budget=5000"), QStringLiteral("--dump-dom"),
                                        QUrl::fromLocalFile(probed).toString()},
                                       problem);
    if (!problem->isEmpty())
        return {};
    const QRegularExpression probe(QStringLiteral("<pre id=\"probe\">(.*)</pre>"),
                                   QRegularExpression::DotMatchesEverythingOption);
    const QString json = probe.match(QString::fromUtf8(dom))
                             .captured(1)
                             .replace(QLatin1String("&lt;"), QLatin1String("<"))
                             .replace(QLatin1String("&gt;"), QLatin1String(">"))
                             .replace(QLatin1String("&amp;"), QLatin1String("&"));
    const QJsonObject result = QJsonDocument::fromJson(json.toUtf8()).object();
    if (result.isEmpty())
        *problem = QStringLiteral("no measurements in the page:\n") + QString::fromUtf8(dom.left(2000));
    return result;
}

} // namespace qly::tooltest
