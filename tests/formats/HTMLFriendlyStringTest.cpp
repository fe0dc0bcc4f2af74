// Named character references: the table with its deliberate departures, and the escaping that
// applies it entry by entry.
#include <gtest/gtest.h>

#include <QRandomGenerator>

#include <qlyappkit/formats/html/HTMLExportConstants.h>
#include <qlyappkit/formats/html/HTMLFriendlyString.h>

using namespace qly;

namespace {

QString characterOf(const QVariantMap& entry) { return entry.value(XQHTMLEntityCharacterKey).toString(); }
QString referenceOf(const QVariantMap& entry) { return entry.value(XQHTMLEntityReferenceKey).toString(); }

// The escaping as the table defines it: each entry replaces all its occurrences before the next.
QString escapedEntryByEntry(QString text)
{
    for (const QVariantMap& entry : HTMLCharacterEntityReferences())
        text.replace(characterOf(entry), referenceOf(entry));
    return text;
}

} // namespace

TEST(HTMLFriendlyString, TheTableAndItsDepartures)
{
    const QList<QVariantMap>& table = HTMLCharacterEntityReferences();
    ASSERT_EQ(table.size(), 131);
    const QStringList firstFive{QStringLiteral("&amp;"), QStringLiteral("&quot;"), QStringLiteral("&apos;"),
                                QStringLiteral("&lt;"), QStringLiteral("&gt;")};
    const QString firstCharacters = QStringLiteral("&\"'<>");
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(characterOf(table[i]), QString(firstCharacters[i]));
        EXPECT_EQ(referenceOf(table[i]), firstFive[i]);
    }
    QHash<char16_t, QString> byCharacter;
    char16_t previous = 0;
    for (int i = 5; i < table.size(); ++i) {
        ASSERT_EQ(table[i].size(), 2);
        const QString c = characterOf(table[i]);
        ASSERT_EQ(c.size(), 1);
        const QString reference = referenceOf(table[i]);
        EXPECT_TRUE(reference.startsWith(u'&') && reference.endsWith(u';')) << reference.toStdString();
        if (i < table.size() - 1) {
            EXPECT_GT(c[0].unicode(), previous) << "code-point order at entry " << i;
            previous = c[0].unicode();
        }
        byCharacter.insert(c[0].unicode(), reference);
    }
    // Last, the double arrow a second time.
    EXPECT_EQ(characterOf(table.last()), QStringLiteral("\u21D2"));
    EXPECT_EQ(referenceOf(table.last()), QStringLiteral("&rArr;"));
    EXPECT_EQ(referenceOf(table[table.size() - 2]), QStringLiteral("&there4;"));

    // Latin-1 characters without an entry, and the names that depart from the usual ones.
    for (char16_t missing : {0x00A0, 0x00A4, 0x00A6, 0x00A8, 0x00AA, 0x00AF, 0x00B8, 0x00EE, 0x00FF})
        EXPECT_FALSE(byCharacter.contains(missing)) << std::hex << int(missing);
    const std::vector<std::pair<char16_t, const char*>> named{
        {0x00A1, "&iexcl;"}, {0x00CC, "&lgrave;"}, {0x00CD, "&lacute;"}, {0x00CE, "&lcirc;"},  {0x00CF, "&luml;"},
        {0x00D7, "&times;"}, {0x00DE, "&THORN;"},  {0x00FE, "&yuml;"},   {0x00EF, "&iuml;"},   {0x0152, "&OElig;"},
        {0x0192, "&fnof;"},  {0x200F, "&rlm;"},    {0x201E, "&bdquo;"},  {0x20AC, "&euro;"},   {0x2122, "&trade;"},
        {0x21D0, "&lArr;"},  {0x221E, "&infin;"},  {0x2234, "&there4;"}, {0x2026, "&hellip;"},
    };
    for (const auto& [c, reference] : named)
        EXPECT_EQ(byCharacter.value(c), QLatin1String(reference)) << std::hex << int(c);
    // Every Latin-1 character from U+00A1 to U+00FE but the seven left out has an entry.
    int latin1 = 0;
    for (char16_t c = 0x00A1; c <= 0x00FE; ++c)
        latin1 += byCharacter.contains(c);
    EXPECT_EQ(latin1, 94 - 7);
}

TEST(HTMLFriendlyString, EscapesAsTheTableSays)
{
    const std::vector<std::pair<QString, QString>> cases{
        {QStringLiteral("a<b & c"), QStringLiteral("a&lt;b &amp; c")},
        {QStringLiteral("\u00FE"), QStringLiteral("&yuml;")},
        {QStringLiteral("\u00FF\u00EE\u00A0"), QStringLiteral("\u00FF\u00EE\u00A0")},
        {QStringLiteral("\u00CCle \u2014 \u201Cquoted\u201D"),
         QStringLiteral("&lgrave;le &mdash; &ldquo;quoted&rdquo;")},
        {QStringLiteral("&lt; stays text"), QStringLiteral("&amp;lt; stays text")},
        {QStringLiteral("\"it's\" \u21D2 \u20AC5"), QStringLiteral("&quot;it&apos;s&quot; &rArr; &euro;5")},
        {QString(), QString()},
        {QStringLiteral("plain text"), QStringLiteral("plain text")},
        {QStringLiteral("\U0001F600<"), QStringLiteral("\U0001F600&lt;")},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(HTMLFriendlyString(text), expected) << text.toStdString();
        EXPECT_EQ(escapedEntryByEntry(text), expected) << text.toStdString();
    }
    // The one-pass escaping equals the entry-by-entry definition on any mix of table characters.
    QString alphabet = QStringLiteral("ab ;#\u00FF\u00A0");
    for (const QVariantMap& entry : HTMLCharacterEntityReferences())
        alphabet += characterOf(entry);
    QRandomGenerator random(131);
    for (int round = 0; round < 300; ++round) {
        QString text;
        const int length = int(random.bounded(40));
        for (int i = 0; i < length; ++i)
            text += alphabet[int(random.bounded(alphabet.size()))];
        ASSERT_EQ(HTMLFriendlyString(text), escapedEntryByEntry(text)) << text.toStdString();
    }
}
