#include <qlyappkit/platform/services/NotificationCenter.h>

#include <QStringList>

using namespace qly;

namespace {
const QString kChanged = QStringLiteral("Changed");
const QString kOther = QStringLiteral("Other");
} // namespace

TEST(NotificationCenter, SenderAndNameFiltering)
{
    NotificationCenter center;
    int senderA = 0, senderB = 0;
    QStringList heard;
    auto log = [&heard](const QString& who) {
        return [&heard, who](const Notification& n) {
            heard << who + QLatin1Char(':') + n.name + QLatin1Char(':')
                    + n.userInfo.value(QStringLiteral("k")).toString();
        };
    };
    center.addObserver(kChanged, &senderA, log(QStringLiteral("fromA")));
    center.addObserver(kChanged, nullptr, log(QStringLiteral("any")));
    center.addObserver(QString(), &senderB, log(QStringLiteral("allFromB")));

    center.post(kChanged, &senderA, {{QStringLiteral("k"), 1}});
    center.post(kChanged, &senderB, {{QStringLiteral("k"), 2}});
    center.post(kOther, &senderA, {{QStringLiteral("k"), 3}});
    center.post(kOther, &senderB, {{QStringLiteral("k"), 4}});
    center.post(kChanged, nullptr, {{QStringLiteral("k"), 5}});
    EXPECT_EQ(heard,
              (QStringList{QStringLiteral("fromA:Changed:1"), QStringLiteral("any:Changed:1"),
                           QStringLiteral("any:Changed:2"), QStringLiteral("allFromB:Changed:2"),
                           QStringLiteral("allFromB:Other:4"), QStringLiteral("any:Changed:5")}));

    // The notification carries its sender.
    const void* seen = nullptr;
    center.addObserver(kOther, nullptr, [&seen](const Notification& n) { seen = n.object; });
    center.post(kOther, &senderA);
    EXPECT_EQ(seen, &senderA);
}

TEST(NotificationCenter, ChangesDuringDelivery)
{
    NotificationCenter center;
    QStringList heard;
    NotificationCenter::Token second = 0, self = 0;
    bool added = false;

    // Removes itself and a later observer, then goes on running: its captured state must still be
    // alive (the guard records when the handler's captures are destroyed).
    struct Guard {
        explicit Guard(bool* flag) : destroyed(flag) { }
        ~Guard() { *destroyed = true; }
        bool* destroyed;
    };
    bool handlerDestroyed = false;
    auto guard = std::make_shared<Guard>(&handlerDestroyed);
    const QString name = QStringLiteral("first, which outlives its own removal");
    self = center.addObserver(kChanged, nullptr, [&, name, guard](const Notification&) {
        center.removeObserver(self);
        center.removeObserver(second);
        EXPECT_FALSE(handlerDestroyed);
        heard << name;
        if (!added) {
            added = true;
            center.addObserver(kChanged, nullptr, [&](const Notification&) { heard << QStringLiteral("added"); });
        }
    });
    second = center.addObserver(kChanged, nullptr, [&](const Notification&) { heard << QStringLiteral("second"); });
    center.addObserver(kChanged, nullptr, [&](const Notification&) { heard << QStringLiteral("third"); });

    guard.reset();
    center.post(kChanged, nullptr);
    EXPECT_TRUE(handlerDestroyed); // released once the delivery is over
    EXPECT_EQ(heard, (QStringList{name, QStringLiteral("third")}));
    heard.clear();
    center.post(kChanged, nullptr);
    EXPECT_EQ(heard, (QStringList{QStringLiteral("third"), QStringLiteral("added")}));

    // Removing an unknown or already removed token is harmless.
    center.removeObserver(self);
    center.removeObserver(9999);

    // A nested post from inside a handler is delivered at once.
    NotificationCenter nested;
    QStringList order;
    nested.addObserver(kChanged, nullptr, [&](const Notification&) {
        order << QStringLiteral("outer");
        nested.post(kOther, nullptr);
    });
    nested.addObserver(kOther, nullptr, [&](const Notification&) { order << QStringLiteral("inner"); });
    nested.post(kChanged, nullptr);
    EXPECT_EQ(order, (QStringList{QStringLiteral("outer"), QStringLiteral("inner")}));
}

TEST(NotificationCenter, ScopedObserver)
{
    int count = 0;
    const int sender = 0;
    {
        ScopedObserver observer(kChanged, &sender, [&count](const Notification&) { ++count; });
        NotificationCenter::defaultCenter().post(kChanged, &sender);
        EXPECT_EQ(count, 1);

        ScopedObserver moved(std::move(observer));
        NotificationCenter::defaultCenter().post(kChanged, &sender);
        EXPECT_EQ(count, 2); // moved, not doubled

        ScopedObserver assigned;
        assigned = std::move(moved);
        NotificationCenter::defaultCenter().post(kChanged, &sender);
        EXPECT_EQ(count, 3);
    }
    NotificationCenter::defaultCenter().post(kChanged, &sender);
    EXPECT_EQ(count, 3);

    // Assigning over an active observer ends its observation.
    NotificationCenter center;
    int a = 0, b = 0;
    ScopedObserver first(
        kChanged, nullptr, [&a](const Notification&) { ++a; }, center);
    first = ScopedObserver(
        kChanged, nullptr, [&b](const Notification&) { ++b; }, center);
    center.post(kChanged, nullptr);
    EXPECT_EQ(a, 0);
    EXPECT_EQ(b, 1);
    first.reset();
    center.post(kChanged, nullptr);
    EXPECT_EQ(b, 1);
}
