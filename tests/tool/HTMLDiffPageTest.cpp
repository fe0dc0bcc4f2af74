// qly diff written as an HTML page, run as the built program and loaded in headless Chromium: removed
// text is struck through and added text underlined, each in its colour, as the browser shows them.
#include <gtest/gtest.h>

#include <QColor>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>

#include <qlyappkit/formats/comparison/DiffConstants.h>
#include <qlyappkit/platform/values/Color.h>

#include "support/TestFiles.h"
#include "tool/HeadlessBrowser.h"
#include "tool/QlyRunner.h"

using namespace qly;
using namespace qly::testfiles;
using namespace qly::tooltest;

namespace {

const QByteArray Draft1 = "The ship sailed at dawn & <nobody> saw it go.\nThe harbour was quiet.\n";
const QByteArray Draft2 = "The boat sailed at dawn & <nobody> saw it go, said Anna.\nThe harbour was quiet.\n";

// Every stretch of text the browser draws struck through or underlined, with the colours it uses.
const char* const MarksProbe = R"(<script>
window.addEventListener('load', function () {
  var result = {marks: [], text: document.body.innerText};
  document.querySelectorAll('body *').forEach(function (e) {
    var style = getComputedStyle(e);
    var line = style.textDecorationLine;
    if (line === 'none' || e.children.length > 0)
      return;
    result.marks.push({text: e.textContent, line: line, color: style.color,
                       lineColor: style.textDecorationColor});
  });
  var out = document.createElement('pre');
  out.id = 'probe';
  out.textContent = JSON.stringify(result);
  document.body.appendChild(out);
});
</script>
)";

// A colour as the browser's computed style writes it.
QString cssColor(const Color& color)
{
    const QColor c = color.toQColor();
    return QStringLiteral("rgb(%1, %2, %3)").arg(c.red()).arg(c.green()).arg(c.blue());
}

} // namespace

TEST(HTMLDiffPage, BrowserShowsRemovedStruckAndAddedUnderlined)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString a = writeFile(dir, QStringLiteral("a.txt"), Draft1),
                  b = writeFile(dir, QStringLiteral("b.txt"), Draft2),
                  out = dir.filePath(QStringLiteral("changes.html"));
    const QlyRun run = runQly({QStringLiteral("diff"), a, b, QStringLiteral("-o"), out});
    ASSERT_EQ(run.exitCode, 1) << run.err.toStdString();
    const QString page = QString::fromUtf8(readFileBytes(out));
    EXPECT_TRUE(page.startsWith(QLatin1String("<!DOCTYPE html>"))) << page.left(200).toStdString();
    EXPECT_TRUE(page.contains(QLatin1String("<title>changes</title>")));

    QString problem;
    const QJsonObject result = probedPage(out, MarksProbe, &problem);
    ASSERT_TRUE(problem.isEmpty()) << problem.toStdString();
    QStringList marks;
    for (const QJsonValue& v : result.value(QStringLiteral("marks")).toArray()) {
        const QJsonObject mark = v.toObject();
        marks.append(QStringLiteral("%1|%2|%3|%4")
                         .arg(mark.value(QStringLiteral("text")).toString(),
                              mark.value(QStringLiteral("line")).toString(),
                              mark.value(QStringLiteral("color")).toString(),
                              mark.value(QStringLiteral("lineColor")).toString()));
    }
    const QString removed = cssColor(XQDiffDefaultRemovedTextColor), added = cssColor(XQDiffDefaultAddedTextColor);
    EXPECT_EQ(marks,
              (QStringList{QStringLiteral("ship|line-through|%1|%1").arg(removed),
                           QStringLiteral("boat|underline|%1|%1").arg(added),
                           QStringLiteral(", said Anna|underline|%1|%1").arg(added)}));
    // Both versions' words in the order the merged text has them, the markup characters as text.
    EXPECT_EQ(result.value(QStringLiteral("text")).toString().trimmed().section(QLatin1Char('\n'), 0, 0),
              QStringLiteral("The shipboat sailed at dawn & <nobody> saw it go, said Anna."));

    // Chosen colours reach the page; an equal pair gives exit 0 and a page without marks.
    const QString chosen = dir.filePath(QStringLiteral("chosen.htm"));
    ASSERT_EQ(runQly({QStringLiteral("diff"), a, b, QStringLiteral("-o"), chosen, QStringLiteral("--old-color"),
                      QStringLiteral("00ff00")})
                  .exitCode,
              1);
    const QJsonObject colored = probedPage(chosen, MarksProbe, &problem);
    ASSERT_TRUE(problem.isEmpty()) << problem.toStdString();
    ASSERT_FALSE(colored.value(QStringLiteral("marks")).toArray().isEmpty());
    EXPECT_EQ(
        colored.value(QStringLiteral("marks")).toArray().first().toObject().value(QStringLiteral("color")).toString(),
        QStringLiteral("rgb(0, 255, 0)"));
    const QString same = dir.filePath(QStringLiteral("same.html"));
    ASSERT_EQ(runQly({QStringLiteral("diff"), a, a, QStringLiteral("-o"), same}).exitCode, 0);
    const QString samePage = QString::fromUtf8(readFileBytes(same));
    EXPECT_TRUE(samePage.contains(QLatin1String("The ship sailed at dawn &amp; &lt;nobody&gt; saw it go.")));
    EXPECT_FALSE(samePage.contains(QLatin1String("line-through")));
    EXPECT_FALSE(samePage.contains(QLatin1String("underline")));

    // On standard output with -t html.
    const QlyRun piped = runQly({QStringLiteral("diff"), a, b, QStringLiteral("-t"), QStringLiteral("html")});
    EXPECT_EQ(piped.exitCode, 1) << piped.err.toStdString();
    EXPECT_TRUE(piped.out.startsWith(QLatin1String("<!DOCTYPE html>")));
    EXPECT_TRUE(piped.out.contains(QLatin1String("<title>b</title>")));
}
