#include <qlyappkit/platform/services/UserDefaults.h>

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

using qly::UserDefaults;

namespace {
// A private folder for the tests that switch storage; lives until the program ends, so later tests
// still write somewhere isolated.
QString privateFolder(int which)
{
    static QTemporaryDir dirs[2];
    return dirs[which].path();
}
} // namespace

TEST(UserDefaults, StorageIsIsolated)
{
    const QString probe = QStringLiteral("IsolationProbe");
    UserDefaults::standard().setValue(probe, 1);
    // Leaving the store writes it out; nothing may have reached the user's own settings file.
    UserDefaults::useIsolatedStorage(privateFolder(1));
    EXPECT_FALSE(UserDefaults::standard().contains(probe));
    const QString real = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/QlyAppKit/") + UserDefaults::processName() + QStringLiteral(".ini");
    QFile file(real);
    if (file.open(QIODevice::ReadOnly)) {
        EXPECT_FALSE(file.readAll().contains(probe.toLatin1())) << real.toStdString();
    }
    EXPECT_EQ(UserDefaults::processName(), QStringLiteral("QlyTests"));
}

TEST(UserDefaults, RegisteredDefaultsAndStoredValues)
{
    UserDefaults& defaults = UserDefaults::standard();
    const QString key = QStringLiteral("RegisteredFlag");
    EXPECT_FALSE(defaults.contains(key));
    EXPECT_FALSE(defaults.value(key).isValid());
    EXPECT_FALSE(defaults.boolForKey(key));

    defaults.registerDefaults({{key, true},
                               {QStringLiteral("RegisteredSize"), 14.5},
                               {QStringLiteral("RegisteredName"), QStringLiteral("Notes")}});
    EXPECT_TRUE(defaults.contains(key));
    EXPECT_TRUE(defaults.boolForKey(key));
    EXPECT_EQ(defaults.doubleForKey(QStringLiteral("RegisteredSize")), 14.5);
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("RegisteredName")), QStringLiteral("Notes"));

    // A stored value wins over the registered one; removing it brings the default back.
    defaults.setValue(key, false);
    EXPECT_FALSE(defaults.boolForKey(key));
    defaults.removeValue(key);
    EXPECT_TRUE(defaults.boolForKey(key));
    defaults.setValue(key, false);
    defaults.setValue(key, QVariant()); // setting nothing removes
    EXPECT_TRUE(defaults.boolForKey(key));
}

TEST(UserDefaults, TypedAccessorsAndTruthOfTexts)
{
    UserDefaults& defaults = UserDefaults::standard();
    struct Case {
        const char* text;
        bool expected;
    } cases[] = {{"YES", true},  {"yes", true}, {"true", true},   {"T", true},  {"1", true}, {" 2.5", true},
                 {"+007", true}, {"NO", false}, {"false", false}, {"0", false}, {"", false}, {"0.5", false}};
    for (const Case& c : cases) {
        defaults.setValue(QStringLiteral("TruthText"), QString::fromLatin1(c.text));
        EXPECT_EQ(defaults.boolForKey(QStringLiteral("TruthText")), c.expected) << c.text;
    }
    defaults.setValue(QStringLiteral("Count"), 42);
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("Count")), 42);
    EXPECT_TRUE(defaults.boolForKey(QStringLiteral("Count")));
    defaults.setValue(QStringLiteral("Bytes"), QByteArray("\x00\x01\xff", 3));
    EXPECT_EQ(defaults.dataForKey(QStringLiteral("Bytes")), QByteArray("\x00\x01\xff", 3));
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("Missing")), 0);
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("Missing")), QString());
}

TEST(UserDefaults, ValuesPersistInTheIsolatedFile)
{
    UserDefaults::useIsolatedStorage(privateFolder(0));
    UserDefaults::standard().setValue(QStringLiteral("Persisted"), true);
    UserDefaults::standard().setValue(QStringLiteral("PersistedCount"), 7);
    UserDefaults::standard().setValue(QStringLiteral("PersistedData"), QByteArray("a\0b", 3));

    // Another folder is another, empty store.
    UserDefaults::useIsolatedStorage(privateFolder(1));
    EXPECT_FALSE(UserDefaults::standard().contains(QStringLiteral("Persisted")));

    // Back to the first: the values come back from the file, typed through the accessors.
    UserDefaults::useIsolatedStorage(privateFolder(0));
    EXPECT_TRUE(QFileInfo::exists(privateFolder(0) + QStringLiteral("/defaults.ini")));
    EXPECT_TRUE(UserDefaults::standard().boolForKey(QStringLiteral("Persisted")));
    EXPECT_EQ(UserDefaults::standard().integerForKey(QStringLiteral("PersistedCount")), 7);
    EXPECT_EQ(UserDefaults::standard().dataForKey(QStringLiteral("PersistedData")), QByteArray("a\0b", 3));
}
