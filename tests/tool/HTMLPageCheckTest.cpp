// Exported pages as their readers meet them (conversions and comparisons): checked by the HTML
// validator (the Nu checker, run with Java), and the demo page loaded in headless Chromium, which
// reports what it measured.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QUrl>

#include <qlyappkit/formats/html/HTMLExport.h>
#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Color.h>
#include <qlyappkit/platform/values/Font.h>
#include <qlyappkit/platform/values/ParagraphStyle.h>
#include <qlyappkit/platform/values/TextAttachment.h>

#include "support/TestFiles.h"
#include "tool/HeadlessBrowser.h"
#include "tool/QlyRunner.h"

using namespace qly;
using namespace qly::testfiles;
using namespace qly::tooltest;

namespace {

const QString Manuscript = QStringLiteral(QLY_SOURCE_DIR "/samples/manuscript.rtf");
const QString Validator = QStringLiteral(QLY_SOURCE_DIR "/.cache/npm/node_modules/vnu-jar/build/dist/vnu.jar");
const QString OutputFolder = QStringLiteral(QLY_BINARY_DIR "/test-output/html");
// The arguments scripts/demo converts the manuscript with.
const QStringList DemoArguments{QStringLiteral("--center-width"), QStringLiteral("640")};

QString exportedManuscript(const QTemporaryDir& dir, const QStringList& extra = DemoArguments)
{
    const QString out = dir.filePath(QStringLiteral("manuscript.html"));
    const QlyRun run = runQly(QStringList{QStringLiteral("convert"), Manuscript, QStringLiteral("-o"), out} + extra);
    EXPECT_EQ(run.exitCode, 0) << run.err.toStdString();
    return out + QStringLiteral("/manuscript.html");
}

// A text that uses everything the writer writes: styles, lists (a level skipped, a second list after a
// nested one), tables (nested, spanning, a list in a cell), links, breaks and a picture.
AttributedString everythingText()
{
    const Attributes body{{FontAttributeName, QVariant::fromValue(Font::fromFamily(QStringLiteral("Times"), 12))}};
    auto styled = [&](auto&& set) {
        ParagraphStyle s;
        set(s);
        Attributes a = body;
        a.insert(ParagraphStyleAttributeName, QVariant::fromValue(s));
        return a;
    };
    AttributedString text(QStringLiteral("Heading\n"), styled([](auto& s) { s.setHeaderLevel(1); }));
    text.append(QStringLiteral("Centred, indented and spaced.\n"), styled([](auto& s) {
                    s.setAlignment(CenterTextAlignment);
                    s.setHeadIndent(20);
                    s.setFirstLineHeadIndent(40);
                    s.setParagraphSpacing(6);
                    s.setLineHeightMultiple(1.5);
                }));
    Attributes fancy = body;
    fancy.insert(ForegroundColorAttributeName, QVariant::fromValue(Color(0.2, 0.4, 0.6, 0.5)));
    fancy.insert(BackgroundColorAttributeName, QVariant::fromValue(Color(1, 1, 0)));
    fancy.insert(UnderlineStyleAttributeName, UnderlineStyleDouble);
    fancy.insert(StrikethroughStyleAttributeName, 1);
    fancy.insert(KernAttributeName, 1.5);
    text.append(QStringLiteral("Fancy "), fancy);
    Attributes up = body;
    up.insert(SuperscriptAttributeName, 1);
    text.append(QStringLiteral("up"), up);
    Attributes shifted = body;
    shifted.insert(BaselineOffsetAttributeName, -2.0);
    text.append(QStringLiteral("down "), shifted);
    for (const QString& link :
         {QStringLiteral("https://example.org/a b?c=\"d\"&e=<f>"), QStringLiteral("\"><script>alert(1)</script>"),
          QStringLiteral("100%"), QStringLiteral("javascript:alert(1)")}) {
        Attributes linked = body;
        linked.insert(LinkAttributeName, link);
        text.append(QStringLiteral("link "), linked);
    }
    text.append(QStringLiteral("tab\there  two spaces\u2028line \u0001\uFFFE<&>\f\n"), body);
    const TextList bullets{QStringLiteral("{disc}")}, roman{QStringLiteral("({upper-roman})"), 0, 4},
        hyphens{QStringLiteral("{hyphen}")}, arrows{QStringLiteral("\u2192")};
    auto item = [&](const QVector<TextList>& lists, const QVector<TextBlock>& blocks = {}) {
        return styled([&](auto& s) {
            s.setTextLists(lists);
            s.setTextBlocks(blocks);
        });
    };
    text.append(QStringLiteral("\t\u2022\tone\n"), item({bullets}));
    text.append(QStringLiteral("\tIV.\tnested\n"), item({bullets, roman}));
    text.append(QStringLiteral("\t\u2043\tdeeper by two\n"), item({bullets, roman, hyphens, arrows}));
    text.append(QStringLiteral("\t\u2022\ttwo\n"), item({bullets}));
    text.append(QStringLiteral("\t\u2192\tarrows right after\n"), item({bullets, arrows}));
    text.append(QStringLiteral("\t\u2043\thyphens after that\n"), item({bullets, hyphens}));
    auto table = std::make_shared<TextTable>(TextTable{2});
    auto inner = std::make_shared<TextTable>(TextTable{1});
    auto cell = [](std::shared_ptr<TextTable> t, int row, int column, int span = 1) {
        TextBlock b;
        b.table = t;
        b.startingRow = row;
        b.startingColumn = column;
        b.columnSpan = span;
        b.backgroundColor = Color(0.9, 0.9, 1);
        return b;
    };
    text.append(QStringLiteral("cell\n"), item({}, {cell(table, 0, 0)}));
    text.append(QStringLiteral("\t\u2022\tlisted in a cell\n"), item({bullets}, {cell(table, 0, 1)}));
    text.append(QStringLiteral("inner\n"), item({}, {cell(table, 0, 1), cell(inner, 0, 0)}));
    text.append(QStringLiteral("spanning\n"), item({}, {cell(table, 1, 0, 2)}));
    QImage image(300, 150, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    Attributes pictured = body;
    pictured.insert(AttachmentAttributeName,
                    QVariant::fromValue(TextAttachment::fromImage(image, QStringLiteral("a \"green\" <field>.png"))));
    text.append(QString(QChar(AttachmentCharacter)), pictured);
    text.append(QStringLiteral("\nThe end."), body);
    return text;
}

// Everything the validator says about the files, one line per message ("" when they are valid).
QString validatorErrors(const QStringList& files)
{
    const QString java = QStandardPaths::findExecutable(QStringLiteral("java"));
    if (java.isEmpty() || !QFileInfo::exists(Validator))
        return QStringLiteral("the validator is missing: run scripts/bootstrap (java and vnu-jar)");
    QProcess process;
    process.start(java,
                  QStringList{QStringLiteral("-jar"), Validator, QStringLiteral("--errors-only"),
                              QStringLiteral("--format"), QStringLiteral("json")}
                      + files);
    if (!process.waitForFinished(120000))
        return QStringLiteral("the validator did not finish");
    const QJsonDocument report = QJsonDocument::fromJson(process.readAllStandardError());
    if (!report.isObject())
        return QStringLiteral("the validator gave no report");
    QStringList lines;
    for (const QJsonValue& m : report.object().value(QStringLiteral("messages")).toArray()) {
        const QJsonObject message = m.toObject();
        lines.append(QStringLiteral("%1:%2: %3 [%4]")
                         .arg(message.value(QStringLiteral("url")).toString())
                         .arg(message.value(QStringLiteral("lastLine")).toInt())
                         .arg(message.value(QStringLiteral("message")).toString(),
                              message.value(QStringLiteral("extract")).toString()));
    }
    if (lines.isEmpty() && process.exitCode() != 0)
        lines.append(QStringLiteral("the validator failed: exit %1").arg(process.exitCode()));
    return lines.join(QLatin1Char('\n'));
}

// Measures the loaded page and writes the result into it as JSON, for --dump-dom to bring back.
const char* const ProbeScript = R"(<script>
window.addEventListener('load', function () {
  var result = {images: [], items: [], links: [], text: document.body.innerText};
  document.querySelectorAll('img').forEach(function (img) {
    var box = img.getBoundingClientRect();
    result.images.push({src: img.getAttribute('src'), loaded: img.complete && img.naturalWidth > 0,
                        width: box.width, height: box.height,
                        tagWidth: Number(img.getAttribute('width')), tagHeight: Number(img.getAttribute('height'))});
  });
  document.querySelectorAll('li').forEach(function (li) {
    var depth = 0;
    for (var e = li.parentElement; e; e = e.parentElement) if (e.tagName === 'LI') depth++;
    var first = li.firstElementChild;
    result.items.push({text: first && first.tagName === 'SPAN' ? first.textContent : '', depth: depth,
                       list: li.parentElement.tagName, listParent: li.parentElement.parentElement.tagName});
  });
  document.querySelectorAll('a').forEach(function (a) { result.links.push({text: a.textContent, href: a.href}); });
  var out = document.createElement('pre');
  out.id = 'probe';
  out.textContent = JSON.stringify(result);
  document.body.appendChild(out);
});
</script>
)";

} // namespace

TEST(HTMLPage, ValidatesAsHTML5)
{
    QTemporaryDir dir;
    QTemporaryDir xhtmlDir;
    QStringList pages{exportedManuscript(dir), exportedManuscript(xhtmlDir, {QStringLiteral("--xhtml")})};
    // The richest text the writer meets, as a plain page and as a page with its images (kept with the
    // test output to be looked at; an earlier run's export there is replaced).
    const AttributedString everything = everythingText();
    QDir().mkpath(OutputFolder);
    const QString plain = OutputFolder + QStringLiteral("/everything-plain.html");
    writeFileBytes(plain,
                   HTMLDataFromRange(everything, Range{0, everything.length()},
                                     {{TitleDocumentAttribute, QStringLiteral("Everything")}}));
    const QString pictured = OutputFolder + QStringLiteral("/everything.html");
    Error error;
    ASSERT_TRUE(writeHTMLToFileAsDirectoryIfNecessary(
        everything, pictured,
        {{XQHTMLCenteredBodyTableWidthAttribute, 200}, {ExcludedElementsDocumentAttribute, QStringList()}}, &error))
        << error.localizedDescription.toStdString();
    pages << plain << pictured + QStringLiteral("/everything.html");
    // Markdown in, page out on standard output.
    const QlyRun markdown =
        runQly({QStringLiteral("convert"), QStringLiteral(QLY_SOURCE_DIR "/samples/chapter-three.md"),
                QStringLiteral("-o"), QStringLiteral("-"), QStringLiteral("-t"), QStringLiteral("html")});
    ASSERT_EQ(markdown.exitCode, 0);
    pages << writeFile(dir, QStringLiteral("chapter-three.html"), markdown.out.toUtf8());
    // A comparison of two drafts as a page.
    const QString older = writeFile(dir, QStringLiteral("older.txt"), "The ship sailed.\nAt dawn.\n"),
                  newer = writeFile(dir, QStringLiteral("newer.txt"), "The boat sailed.\nAt dawn, quietly.\n");
    const QString changes = dir.filePath(QStringLiteral("changes.html"));
    ASSERT_EQ(runQly({QStringLiteral("diff"), older, newer, QStringLiteral("-o"), changes}).exitCode, 1);
    pages << changes;

    EXPECT_EQ(validatorErrors(pages), QString()) << "checked: " << pages.join(QLatin1Char(' ')).toStdString();
    // The validator does report errors (it is not just silent).
    const QString broken = writeFile(dir, QStringLiteral("broken.html"),
                                     "<!DOCTYPE html><html><head><title>x</title></head><body><ul><ul></ul></ul>");
    EXPECT_TRUE(validatorErrors({broken}).contains(QLatin1String("not allowed as child")));
}

TEST(HTMLPage, DemoPageInARealBrowser)
{
    QTemporaryDir dir;
    const QString page = exportedManuscript(dir);
    QString problem;
    const QJsonObject result = probedPage(page, ProbeScript, &problem);
    ASSERT_TRUE(problem.isEmpty()) << problem.toStdString();

    // Every image loaded, at the size its tag gives.
    const QJsonArray images = result.value(QStringLiteral("images")).toArray();
    ASSERT_EQ(images.size(), 2);
    for (const QJsonValue& v : images) {
        const QJsonObject image = v.toObject();
        const std::string src = image.value(QStringLiteral("src")).toString().toStdString();
        EXPECT_TRUE(image.value(QStringLiteral("loaded")).toBool()) << src;
        EXPECT_EQ(image.value(QStringLiteral("width")).toDouble(), image.value(QStringLiteral("tagWidth")).toDouble())
            << src;
        EXPECT_EQ(image.value(QStringLiteral("height")).toDouble(), image.value(QStringLiteral("tagHeight")).toDouble())
            << src;
    }
    EXPECT_EQ(images[0].toObject().value(QStringLiteral("tagWidth")).toInt(), 240);

    // The numbered items sit inside the bulleted item they follow.
    QStringList items;
    for (const QJsonValue& v : result.value(QStringLiteral("items")).toArray()) {
        const QJsonObject item = v.toObject();
        items.append(QStringLiteral("%1:%2:%3/%4")
                         .arg(item.value(QStringLiteral("text")).toString())
                         .arg(item.value(QStringLiteral("depth")).toInt())
                         .arg(item.value(QStringLiteral("list")).toString(),
                              item.value(QStringLiteral("listParent")).toString()));
    }
    EXPECT_EQ(items,
              (QStringList{QStringLiteral("Warm clothes:0:UL/DIV"), QStringLiteral("Food for three days:0:UL/DIV"),
                           QStringLiteral("Bread and cheese:1:OL/LI"), QStringLiteral("Apples from the market:1:OL/LI"),
                           QStringLiteral("The letter:0:UL/DIV")}));

    // The one link goes where the text said.
    const QJsonArray links = result.value(QStringLiteral("links")).toArray();
    ASSERT_EQ(links.size(), 1);
    EXPECT_EQ(links[0].toObject().value(QStringLiteral("text")).toString(), QStringLiteral("online too"));
    EXPECT_EQ(links[0].toObject().value(QStringLiteral("href")).toString(),
              QStringLiteral("https://example.org/ferry/timetable?day=sunday&port=harbour"));

    // The text reads in order: both chapters, the list, then the notes gathered at the end.
    const QString text = result.value(QStringLiteral("text")).toString();
    qsizetype at = -1;
    for (const char* phrase :
         {"Chapter One", "The ferry left the harbour at dawn", "[ Is the lighthouse still working", "[the letter]",
          "What Mara packed", "Bread and cheese", "The letter", "Chapter Two", "online too", "She slept badly",
          "1 The crossing took forty minutes", "5 The storm of that week"}) {
        const qsizetype next = text.indexOf(QLatin1String(phrase), at + 1);
        EXPECT_GT(next, at) << phrase << " out of order in:\n" << text.toStdString();
        at = std::max(at, next);
    }

    // A screenshot of the page as the export wrote it, kept with the test output.
    QDir().mkpath(OutputFolder);
    const QString screenshot = OutputFolder + QStringLiteral("/manuscript.png");
    QFile::remove(screenshot);
    runChromium({QStringLiteral("--window-size=900,900"), QStringLiteral("--screenshot=") + screenshot,
                 QUrl::fromLocalFile(page).toString()},
                &problem);
    ASSERT_TRUE(problem.isEmpty()) << problem.toStdString();
    const QImage shot(screenshot);
    ASSERT_EQ(shot.size(), QSize(900, 900)) << screenshot.toStdString();
    // The figure's pale blue sky and the text's ink are both on it.
    int sky = 0, ink = 0;
    for (int y = 0; y < shot.height(); y += 2) {
        for (int x = 0; x < shot.width(); x += 2) {
            const QColor c = shot.pixelColor(x, y);
            sky += c.blue() > 220 && c.red() > 200 && c.red() < 240;
            ink += qGray(c.rgb()) < 80;
        }
    }
    EXPECT_GT(sky, 1000);
    EXPECT_GT(ink, 500);
}
