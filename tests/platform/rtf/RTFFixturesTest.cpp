// Word-processor RTF: files made by an office suite from the HTML sources beside them. Our plain text
// must equal the suite's own plain-text conversion of the same file, and the formatting runs must be
// what the sources hold.
#include "RTFTestSupport.h"

#include <QFile>
#include <QRegularExpression>
#include <QUrl>

#include <qlyappkit/platform/text/PlatformAttributes.h>

using namespace qly;
using namespace qly::rtftest;

namespace {

QByteArray fixtureBytes(const QString& name)
{
    QFile file(QStringLiteral(QLY_SOURCE_DIR "/tests/fixtures/rtf/") + name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
    return file.readAll();
}

AttributedString fixture(const QString& name) { return read(fixtureBytes(name + QStringLiteral(".rtf"))); }

ParagraphStyle styleAt(const AttributedString& text, qsizetype index)
{
    return text.attribute(ParagraphStyleAttributeName, index).value<ParagraphStyle>();
}

// The suite writes list markers its own way ("    • item", "    1. item") where the RTF carries them as
// marker text ("•\titem"): list items are compared after their markers.
QString withoutMarker(const QString& line, bool ours)
{
    if (ours)
        return line.mid(line.indexOf(QLatin1Char('\t')) + 1);
    const QString trimmed =
        line.trimmed().isEmpty() ? line : line.mid(line.indexOf(QRegularExpression(QStringLiteral("\\S"))));
    return trimmed.mid(trimmed.indexOf(QLatin1Char(' ')) + 1);
}

void expectSamePlainText(const QString& name)
{
    SCOPED_TRACE(name.toStdString());
    const AttributedString text = fixture(name);
    QString theirs = QString::fromUtf8(fixtureBytes(name + QStringLiteral(".txt")));
    if (theirs.startsWith(QChar(0xFEFF)))
        theirs.remove(0, 1);
    QString ours = text.string();
    ours.replace(QChar(0x2028), QLatin1Char('\n')); // plain text breaks lines with line feeds
    const QStringList ourLines = ours.split(QLatin1Char('\n')), theirLines = theirs.split(QLatin1Char('\n'));
    ASSERT_EQ(ourLines.size(), theirLines.size()) << ours.toStdString();
    qsizetype offset = 0;
    for (qsizetype i = 0; i < ourLines.size(); ++i) {
        const bool listItem = offset < text.length() && !styleAt(text, offset).textLists().isEmpty();
        if (listItem)
            EXPECT_EQ(withoutMarker(ourLines[i], true), withoutMarker(theirLines[i], false)) << "line " << i;
        else
            EXPECT_EQ(ourLines[i], theirLines[i]) << "line " << i;
        offset += ourLines[i].size() + 1;
    }
}

Attributes attributesOf(const AttributedString& text, const QString& needle)
{
    const qsizetype at = text.string().indexOf(needle);
    EXPECT_GE(at, 0) << needle.toStdString();
    return at >= 0 ? text.attributes(at) : Attributes();
}

Font fontOf(const AttributedString& text, const QString& needle)
{
    return attributesOf(text, needle).value(FontAttributeName).value<Font>();
}

} // namespace

TEST(RTFFixtures, PlainTextEqualsTheSuitesOwnConversion)
{
    for (const char* name : {"styles", "lists", "table", "links", "nonlatin"})
        expectSamePlainText(QLatin1String(name));
}

TEST(RTFFixtures, CharacterAndParagraphFormattingOfStyles)
{
    const AttributedString text = fixture(QStringLiteral("styles"));
    EXPECT_TRUE(fontOf(text, QStringLiteral("bold,")).isBold());
    EXPECT_FALSE(fontOf(text, QStringLiteral("bold,")).isItalic());
    EXPECT_TRUE(fontOf(text, QStringLiteral("italic,")).isItalic());
    EXPECT_TRUE(fontOf(text, QStringLiteral("bold italic")).isBold());
    EXPECT_TRUE(fontOf(text, QStringLiteral("bold italic")).isItalic());
    EXPECT_FALSE(fontOf(text, QStringLiteral("Plain text")).isBold());
    EXPECT_EQ(fontOf(text, QStringLiteral("Plain text")).familyName(), QStringLiteral("Liberation Serif"));
    EXPECT_EQ(fontOf(text, QStringLiteral("Plain text")).pointSize(), 12.0);
    EXPECT_EQ(attributesOf(text, QStringLiteral("underlined")).value(UnderlineStyleAttributeName).toInt(), 1);
    EXPECT_EQ(attributesOf(text, QStringLiteral("struck")).value(StrikethroughStyleAttributeName).toInt(), 1);
    EXPECT_FALSE(attributesOf(text, QStringLiteral("Plain")).contains(UnderlineStyleAttributeName));

    const Color red = attributesOf(text, QStringLiteral("red and")).value(ForegroundColorAttributeName).value<Color>();
    EXPECT_EQ(red, Color(192 / 255.0, 0, 0));
    const Color yellow =
        attributesOf(text, QStringLiteral("highlighted")).value(BackgroundColorAttributeName).value<Color>();
    EXPECT_EQ(yellow, Color(1, 1, 0));

    EXPECT_EQ(styleAt(text, text.string().indexOf(QStringLiteral("A centred"))).alignment(), CenterTextAlignment);
    const qsizetype right = text.string().indexOf(QStringLiteral("Right aligned"));
    EXPECT_EQ(styleAt(text, right).alignment(), RightTextAlignment);
    EXPECT_EQ(fontOf(text, QStringLiteral("Right aligned")).familyName(), QStringLiteral("Liberation Mono"));
    EXPECT_EQ(fontOf(text, QStringLiteral("Right aligned")).pointSize(), 10.0);
    const ParagraphStyle justified = styleAt(text, text.string().indexOf(QStringLiteral("A justified")));
    EXPECT_EQ(justified.alignment(), JustifiedTextAlignment);
    EXPECT_EQ(justified.headIndent(), 72.0);
    EXPECT_EQ(justified.firstLineHeadIndent(), 36.0);

    EXPECT_LT(attributesOf(text, QStringLiteral("2O")).value(SuperscriptAttributeName).toInt()
                  + attributesOf(text, QStringLiteral("2O")).value(BaselineOffsetAttributeName).toDouble(),
              0.0);
    EXPECT_GT(attributesOf(text, QStringLiteral("2;")).value(SuperscriptAttributeName).toInt()
                  + attributesOf(text, QStringLiteral("2;")).value(BaselineOffsetAttributeName).toDouble(),
              0.0);
    EXPECT_EQ(fontOf(text, QStringLiteral("large")).pointSize(), 18.0);
    EXPECT_EQ(fontOf(text, QStringLiteral("small")).pointSize(), 8.0);
    EXPECT_EQ(styleAt(text, text.string().indexOf(QStringLiteral("Chapter One"))).headerLevel(), 1);
    EXPECT_EQ(styleAt(text, text.string().indexOf(QStringLiteral("Section Two"))).headerLevel(), 2);
    EXPECT_TRUE(fontOf(text, QStringLiteral("Chapter One")).isBold());
}

TEST(RTFFixtures, ListsBecomeTextLists)
{
    const AttributedString text = fixture(QStringLiteral("lists"));
    const QString s = text.string();
    auto listsAt = [&](const char* needle) { return styleAt(text, s.indexOf(QLatin1String(needle))).textLists(); };
    EXPECT_TRUE(listsAt("Shopping").isEmpty());
    ASSERT_EQ(listsAt("Apples").size(), 1);
    EXPECT_EQ(listsAt("Apples").front().markerFormat, QStringLiteral("{disc}"));
    ASSERT_EQ(listsAt("Conference").size(), 2);
    EXPECT_EQ(listsAt("Conference").front(), listsAt("Apples").front());
    ASSERT_EQ(listsAt("Open the file").size(), 1);
    EXPECT_EQ(listsAt("Open the file").front().markerFormat, QStringLiteral("{decimal}."));
    ASSERT_EQ(listsAt("carefully").size(), 2);
    EXPECT_EQ(listsAt("carefully").back().markerFormat, QStringLiteral("{lower-alpha}."));
    ASSERT_EQ(listsAt("Fourth").size(), 1);
    EXPECT_EQ(listsAt("Fourth").front().markerFormat, QStringLiteral("{upper-roman}."));
    EXPECT_EQ(listsAt("Fourth").front().startingItemNumber, 4);
    EXPECT_TRUE(listsAt("After the lists").isEmpty());
}

TEST(RTFFixtures, TablesBecomeTextBlocks)
{
    const AttributedString text = fixture(QStringLiteral("table"));
    const QString s = text.string();
    auto blockAt = [&](const char* needle) {
        const QVector<TextBlock> blocks = styleAt(text, s.indexOf(QLatin1String(needle))).textBlocks();
        EXPECT_EQ(blocks.size(), 1) << needle;
        return blocks.value(0);
    };
    EXPECT_TRUE(styleAt(text, s.indexOf(QStringLiteral("Before"))).textBlocks().isEmpty());
    EXPECT_TRUE(styleAt(text, s.indexOf(QStringLiteral("After"))).textBlocks().isEmpty());
    const TextBlock name = blockAt("Name"), scenes = blockAt("Scenes"), ben = blockAt("Ben"), seven = blockAt("7");
    ASSERT_TRUE(name.table);
    EXPECT_EQ(name.table->numberOfColumns, 3);
    EXPECT_EQ(name.table, seven.table);
    EXPECT_EQ(std::pair(name.startingRow, name.startingColumn), std::pair(0, 0));
    EXPECT_EQ(std::pair(scenes.startingRow, scenes.startingColumn), std::pair(0, 2));
    EXPECT_EQ(std::pair(ben.startingRow, ben.startingColumn), std::pair(2, 0));
    EXPECT_EQ(std::pair(seven.startingRow, seven.startingColumn), std::pair(2, 2));
    const TextBlock support = blockAt("Support");
    EXPECT_EQ(std::pair(support.startingRow, support.startingColumn), std::pair(2, 1));
}

TEST(RTFFixtures, LinksCoverTheirText)
{
    const AttributedString text = fixture(QStringLiteral("links"));
    const QString s = text.string();
    Range range;
    const QVariant guide = text.attribute(LinkAttributeName, s.indexOf(QStringLiteral("the guide")), &range);
    EXPECT_EQ(guide.toString(), QStringLiteral("https://example.com/guide?page=2&lang=en"));
    EXPECT_EQ(s.mid(range.location, range.length), QStringLiteral("the guide"));
    EXPECT_EQ(text.attribute(LinkAttributeName, s.indexOf(QStringLiteral("someone"))).toString(),
              QStringLiteral("mailto:someone@example.org"));
    EXPECT_EQ(text.attribute(LinkAttributeName, s.indexOf(QStringLiteral("bold link"))).toString(),
              QStringLiteral("https://example.org/caf\u00e9")); // the suite writes the address decoded
    EXPECT_TRUE(fontOf(text, QStringLiteral("bold link")).isBold());
    EXPECT_FALSE(text.attribute(LinkAttributeName, s.indexOf(QStringLiteral("for details"))).isValid());
}
