#include "MemoryShare.h"
#include "TestRunner.h"

#include <QTest>

#include <future>
#include <optional>

class TestMemoryShare : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void neverMoreThanThereIs()
    {
        const qint64 most = MemoryShare::mostBytes();
        QVERIFY(!MemoryShare(most + 1).isGranted());
        std::optional<MemoryShare> first(std::in_place, most / 2 + 1);
        QVERIFY(first->isGranted());
        QVERIFY(MemoryShare(MemoryShare::kSmallBytes).isGranted());
        const std::atomic<bool> cancelled = true;
        QVERIFY(!MemoryShare(most / 2, &cancelled).isGranted());
        QVERIFY(MemoryShare(most / 4, &cancelled).isGranted()); // that was no reason to wait

        std::atomic<bool> firstIsThere = true;
        std::atomic<bool> together = false;
        const auto take = [&](qint64 bytes) {
            return std::async(std::launch::async, [&, bytes] {
                const MemoryShare share(bytes);
                together = together || firstIsThere;
                return share.isGranted();
            });
        };
        auto second = take(most);
        auto third = take(most / 2 + 1);
        firstIsThere = false;
        first.reset();
        QVERIFY(second.get() && third.get());
        QVERIFY(!together);
        QVERIFY(MemoryShare(most).isGranted()); // everything was given back
    }
};

REGISTER_TEST(TestMemoryShare)
#include "TestMemoryShare.moc"
