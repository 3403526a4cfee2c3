#include "NotificationCenter.h"
#include "TestRunner.h"

#include <QStringList>
#include <QTest>

#include <optional>

class TestNotificationCenter : public QObject
{
    Q_OBJECT

    const QString m_name = QStringLiteral("test.event");

private Q_SLOTS:
    void deliversInOrderOfRegistrationToThoseConcerned();
    void observersMayComeAndGoDuringDelivery();
    void anObserverMayEndItselfWhileItRuns();
    void observerOutlivesTheCentre();
    void movingAnObserverKeepsOneRegistration();
};

void TestNotificationCenter::deliversInOrderOfRegistrationToThoseConcerned()
{
    NotificationCenter centre;
    QStringList calls;
    int one = 1;
    int two = 2;
    const auto note = [&](const char *who) {
        return [&calls, who](const NotificationObject &) { calls.append(QString::fromUtf8(who)); };
    };
    const auto a = centre.observe(m_name, note("any"));
    const auto b = centre.observe(m_name, note("one"), &one);
    const auto c = centre.observe(QStringLiteral("test.other"), note("other"));
    const auto d = centre.observe(m_name, note("two"), &two);
    centre.post(m_name, &one);
    QCOMPARE(calls, QStringList({QStringLiteral("any"), QStringLiteral("one")}));
    calls.clear();
    centre.post(m_name);
    QCOMPARE(calls, QStringList({QStringLiteral("any")}));
}

void TestNotificationCenter::observersMayComeAndGoDuringDelivery()
{
    NotificationCenter centre;
    QStringList calls;
    std::optional<NotificationCenter::Observer> second;
    std::optional<NotificationCenter::Observer> late;
    const auto first = centre.observe(m_name, [&](const NotificationObject &) {
        calls.append(QStringLiteral("first"));
        second.reset();
        if (!late)
            late = centre.observe(m_name, [&](const NotificationObject &) { calls.append(QStringLiteral("late")); });
    });
    second = centre.observe(m_name, [&](const NotificationObject &) { calls.append(QStringLiteral("second")); });
    centre.post(m_name);
    QCOMPARE(calls, QStringList({QStringLiteral("first")}));
    centre.post(m_name);
    QCOMPARE(calls.mid(1), QStringList({QStringLiteral("first"), QStringLiteral("late")}));
}

void TestNotificationCenter::anObserverMayEndItselfWhileItRuns()
{
    NotificationCenter centre;
    std::optional<NotificationCenter::Observer> observer;
    const auto witness = std::make_shared<int>(0);
    observer = centre.observe(m_name, [&observer, witness](const NotificationObject &) {
        observer.reset();
        ++*witness; // the handler's own copies must still be there
    });
    centre.post(m_name);
    centre.post(m_name);
    QCOMPARE(*witness, 1);
    QCOMPARE(witness.use_count(), 1L);
}

void TestNotificationCenter::observerOutlivesTheCentre()
{
    auto centre = std::make_unique<NotificationCenter>();
    int calls = 0;
    auto observer = centre->observe(m_name, [&](const NotificationObject &) { ++calls; });
    centre.reset();
    observer = {};
    QCOMPARE(calls, 0);
}

void TestNotificationCenter::movingAnObserverKeepsOneRegistration()
{
    NotificationCenter centre;
    int firstCalls = 0;
    int secondCalls = 0;
    auto kept = centre.observe(m_name, [&](const NotificationObject &) { ++firstCalls; });
    {
        auto other = centre.observe(m_name, [&](const NotificationObject &) { ++secondCalls; });
        kept = std::move(other);
    }
    centre.post(m_name);
    QCOMPARE(firstCalls, 0);
    QCOMPARE(secondCalls, 1);
}

REGISTER_TEST(TestNotificationCenter)
#include "TestNotificationCenter.moc"
