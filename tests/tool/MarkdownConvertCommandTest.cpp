// qly convert with Markdown, Fountain and MultiMarkdown, and the manuscript options, run as the built program.
#include <gtest/gtest.h>

#include "platform/rtf/RTFTestSupport.h"
#include "support/TestFiles.h"
#include "tool/QlyRunner.h"

#include <qlyappkit/platform/text/PlatformAttributes.h>
#include <qlyappkit/platform/values/Font.h>

#include <QFileInfo>
#include <QTemporaryDir>

using namespace qly;
using namespace qly::rtftest;
using namespace qly::testfiles;
using namespace qly::tooltest;

namespace {

// Bold, italic and underline of each character, as "b", "i", "u<n>" after it ("w[b]" …), spaces bare.
QString emphasisOf(const AttributedString& text)
{
    QString out;
    for (qsizetype i = 0; i < text.length(); ++i) {
        out += text.characterAt(i);
        if (text.characterAt(i).isSpace())
            continue;
        const Font font = text.attribute(FontAttributeName, i).value<Font>();
        const int underline = text.attribute(UnderlineStyleAttributeName, i).toInt();
        QString tag = QString(font.isBold() ? QStringLiteral("b") : QString())
            + (font.isItalic() ? QStringLiteral("i") : QString());
        if (underline)
            tag += QStringLiteral("u%1").arg(underline);
        if (!tag.isEmpty())
            out += u'[' + tag + u']';
    }
    return out;
}

QStringList args(std::initializer_list<QString> list) { return QStringList(list); }

} // namespace

TEST(MarkdownConvertCommand, MarkdownToRTFAndBack)
{
    ASSERT_TRUE(QFileInfo(Qly).isExecutable()) << "build the qly target first";
    QTemporaryDir dir;
    const QString md = writeFile(dir, QStringLiteral("in.md"), "A **b** *i* __d__ _s_ 2 * 3\n\n\\*x*\n");
    const QString rtf = dir.filePath(QStringLiteral("out.rtf"));
    ASSERT_EQ(runQly(args({QStringLiteral("convert"), md, QStringLiteral("-o"), rtf})).exitCode, 0);
    EXPECT_EQ(emphasisOf(read(readFileBytes(rtf))), QStringLiteral("A b[b] i[i] d[b] s[i] 2 * 3\n\n*x*\n"));

    // With --underlines "__" is a double underline and "_" disappears without emphasis.
    ASSERT_EQ(runQly(args({QStringLiteral("convert"), md, QStringLiteral("-o"), rtf, QStringLiteral("--underlines")}))
                  .exitCode,
              0);
    EXPECT_EQ(emphasisOf(read(readFileBytes(rtf))), QStringLiteral("A b[b] i[i] d[u9] s 2 * 3\n\n*x*\n"));

    // Back to Markdown, the underline written with underscores.
    const QString back = dir.filePath(QStringLiteral("back.md"));
    ASSERT_EQ(runQly(args({QStringLiteral("convert"), rtf, QStringLiteral("-o"), back, QStringLiteral("--underlines")}))
                  .exitCode,
              0);
    EXPECT_EQ(readFileBytes(back), QByteArray("A **b** *i* __d__ s 2 * 3\n\n*x*\n"));

    // Standard input and output, a Fountain file's rules, and the older MultiMarkdown rules.
    const QlyRun piped =
        runQly(args({QStringLiteral("convert"), QStringLiteral("-"), QStringLiteral("-f"), QStringLiteral("fountain"),
                     QStringLiteral("-o"), QStringLiteral("-"), QStringLiteral("-t"), QStringLiteral("md")}),
               "\xEF\xBB\xBFINT. *Night*\n");
    EXPECT_EQ(piped.exitCode, 0) << piped.err.toStdString();
    EXPECT_EQ(piped.out, QStringLiteral("INT. *Night*\n"));
    const QString mmd = writeFile(dir, QStringLiteral("old.txt"), "__a_ \\*b\\*\n");
    ASSERT_EQ(runQly(args({QStringLiteral("convert"), mmd, QStringLiteral("--from"), QStringLiteral("multimarkdown"),
                           QStringLiteral("-o"), rtf}))
                  .exitCode,
              0);
    EXPECT_EQ(emphasisOf(read(readFileBytes(rtf))), QStringLiteral("_a[i] *b*\n"));
}

TEST(MarkdownConvertCommand, OptionsBelongToTheirFormats)
{
    QTemporaryDir dir;
    const QString md = writeFile(dir, QStringLiteral("in.md"), "x\n");
    const QString txt = dir.filePath(QStringLiteral("out.txt"));
    QlyRun run = runQly(args({QStringLiteral("convert"), md, QStringLiteral("-o"), txt, QStringLiteral("--split-by"),
                              QStringLiteral("SceneHeading")}));
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.contains(QStringLiteral("--split-by applies only to screenplay"))) << run.err.toStdString();
    run = runQly(args(
        {QStringLiteral("convert"), md, QStringLiteral("-o"), txt, QStringLiteral("--dashes"), QStringLiteral("3")}));
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.contains(QStringLiteral("--dashes takes 0, 1 or 2"))) << run.err.toStdString();
    run = runQly(args({QStringLiteral("convert"), md, QStringLiteral("-o"), txt, QStringLiteral("--keep-italics")}));
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_FALSE(QFileInfo::exists(txt));
    run = runQly(args({QStringLiteral("convert"), md, QStringLiteral("-f"), QStringLiteral("mmd"), QStringLiteral("-o"),
                       txt, QStringLiteral("--underlines")}));
    EXPECT_EQ(run.exitCode, 2) << "MultiMarkdown takes no options";
}

TEST(MarkdownConvertCommand, ManuscriptConversionsApplyToAnyConversion)
{
    QTemporaryDir dir;
    const QString md =
        writeFile(dir, QStringLiteral("in.md"), "An *italic  phrase* \xE2\x80\x94 and more\xE2\x80\xA6\n");
    const QString rtf = dir.filePath(QStringLiteral("out.rtf"));
    ASSERT_EQ(runQly(args({QStringLiteral("convert"), md, QStringLiteral("-o"), rtf, QStringLiteral("--manuscript"),
                           QStringLiteral("--dashes"), QStringLiteral("2"), QStringLiteral("--ellipses")}))
                  .exitCode,
              0);
    EXPECT_EQ(emphasisOf(read(readFileBytes(rtf))),
              QStringLiteral("An i[u1]t[u1]a[u1]l[u1]i[u1]c[u1]  p[u1]h[u1]r[u1]a[u1]s[u1]e[u1] --- and more...\n"));

    ASSERT_EQ(runQly(args({QStringLiteral("convert"), md, QStringLiteral("-o"), rtf, QStringLiteral("--manuscript"),
                           QStringLiteral("--keep-italics"), QStringLiteral("--dashes"), QStringLiteral("1")}))
                  .exitCode,
              0);
    const AttributedString kept = read(readFileBytes(rtf));
    EXPECT_EQ(kept.string(), QStringLiteral("An italic  phrase -- and more\u2026\n"));
    EXPECT_TRUE(kept.attribute(FontAttributeName, 3).value<Font>().isItalic());
}
