#include "DispatchQueue.h"
#include "SystemLog.h"
#include "TestRunner.h"

#include <QStringList>
#include <QTest>
#include <QThread>

#include <atomic>
#include <future>
#include <latch>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

class TestDispatchQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocksStartInTheOrderOfSubmission();
    void blocksRunConcurrently();
    void barrierSeparatesWhatCameBeforeAndAfter();
    void destructionDropsWhatHasNotStarted();
    void leavesBehindWhatDoesNotEnd();
    void waitingEndsAlthoughMoreIsSubmittedMeanwhile();
    void anExceptionIsLoggedAndTheQueueGoesOn();
    void manyThreadsMaySubmit();
    void mainThreadRunsBlocksInOrderInLaterTurns();
    void mainThreadRunsOneBlockPerTurn();
};

void TestDispatchQueue::blocksStartInTheOrderOfSubmission()
{
    DispatchQueue queue(QStringLiteral("test.order"), 1);
    std::vector<int> order;
    for (int i = 0; i < 100; ++i)
        queue.async([&order, i] { order.push_back(i); });
    queue.waitUntilIdle();
    QCOMPARE(order.size(), std::size_t(100));
    QVERIFY(std::is_sorted(order.begin(), order.end()));
}

void TestDispatchQueue::blocksRunConcurrently()
{
    DispatchQueue queue(QStringLiteral("test.width"), 3);
    std::latch together(3); // opens only when three blocks run at once
    for (int i = 0; i < 3; ++i)
        queue.async([&] { together.arrive_and_wait(); });
    queue.waitUntilIdle();
    QCOMPARE(queue.pendingCount(), 0);
}

void TestDispatchQueue::barrierSeparatesWhatCameBeforeAndAfter()
{
    DispatchQueue queue(QStringLiteral("test.barrier"), 4);
    std::atomic<int> running = 0;
    std::atomic<int> finished = 0;
    std::atomic<int> faults = 0;
    const auto block = [&] {
        ++running;
        std::this_thread::yield();
        --running;
        ++finished;
    };
    for (int round = 0; round < 50; ++round) {
        for (int i = 0; i < 6; ++i)
            queue.async(block);
        const int expected = (round + 1) * 6;
        queue.barrierAsync([&, expected] { faults += running != 0 || finished != expected ? 1 : 0; });
        queue.barrierAsync([&, expected] { faults += running != 0 || finished != expected ? 1 : 0; });
    }
    queue.waitUntilIdle();
    QCOMPARE(finished.load(), 300);
    QCOMPARE(faults.load(), 0);
}

void TestDispatchQueue::destructionDropsWhatHasNotStarted()
{
    std::promise<void> started;
    std::promise<void> release;
    std::atomic<int> ran = 0;
    const auto held = std::make_shared<int>(0);
    auto queue = std::make_unique<DispatchQueue>(QStringLiteral("test.end"), 1);
    queue->async([&] {
        started.set_value();
        release.get_future().wait();
        ++ran;
    });
    queue->async([&ran, held] { ran += 100; });
    queue->barrierAsync([&ran, held] { ran += 100; });
    started.get_future().wait();
    QCOMPARE(queue->pendingCount(), 3);
    std::thread ending([&] { queue.reset(); });
    const bool dropped = QTest::qWaitFor([&] { return held.use_count() == 1; }); // while the first still runs
    release.set_value();
    ending.join();
    QVERIFY(dropped);
    QCOMPARE(ran.load(), 1);
}

void TestDispatchQueue::leavesBehindWhatDoesNotEnd()
{
    std::promise<void> started;
    const auto release = std::make_shared<std::promise<void>>();
    const auto later = std::make_shared<std::atomic<bool>>(false);
    {
        DispatchQueue queue(QStringLiteral("test.left"), 1, DispatchQueue::AtEnd::LeaveBehind);
        queue.async([&started, release] {
            started.set_value();
            release->get_future().wait();
        });
        queue.async([later] { *later = true; });
        started.get_future().wait();
    }
    QVERIFY(DispatchQueue::isAnyLeftBehind());
    release->set_value();
    QTRY_VERIFY(!DispatchQueue::isAnyLeftBehind());
    QVERIFY(!*later);
}

void TestDispatchQueue::waitingEndsAlthoughMoreIsSubmittedMeanwhile()
{
    DispatchQueue queue(QStringLiteral("test.wait"), 2);
    std::promise<void> release;
    std::atomic<int> done = 0;
    queue.async([&] {
        queue.async([&] { release.get_future().wait(); }); // submitted later than the wait below, and never ready
        ++done;
    });
    queue.waitUntilIdle();
    QCOMPARE(done.load(), 1);
    release.set_value();
    queue.waitUntilIdle();
}

void TestDispatchQueue::anExceptionIsLoggedAndTheQueueGoesOn()
{
    std::mutex mutex;
    QStringList lines;
    SystemLog::setSink([&](const QString &line) {
        const std::lock_guard lock(mutex);
        lines.append(line);
    });
    DispatchQueue queue(QStringLiteral("test.throw"), 1);
    bool ranAfter = false;
    queue.async([] { throw std::runtime_error("lost the file"); });
    queue.barrierAsync([] { throw 7; });
    queue.async([&] { ranAfter = true; });
    queue.waitUntilIdle();
    SystemLog::setSink({});
    QVERIFY(ranAfter);
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines.first().contains(QLatin1String("test.throw")));
    QVERIFY(lines.first().contains(QLatin1String("lost the file")));
}

void TestDispatchQueue::manyThreadsMaySubmit()
{
    DispatchQueue queue(QStringLiteral("test.many"), 4);
    std::atomic<int> concurrent = 0;
    int alone = 0; // touched by barriers only, so that no lock guards it
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                queue.async([&] { ++concurrent; });
                queue.barrierAsync([&] { ++alone; });
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    queue.waitUntilIdle();
    QCOMPARE(concurrent.load(), 800);
    QCOMPARE(alone, 800);
}

void TestDispatchQueue::mainThreadRunsBlocksInOrderInLaterTurns()
{
    std::vector<int> order;
    bool allOnMain = true;
    std::thread worker([&] {
        for (int i = 0; i < 50; ++i) {
            runOnMain([&, i] {
                order.push_back(i);
                allOnMain = allOnMain && QThread::currentThread() == thread();
            });
        }
    });
    worker.join();
    QVERIFY(order.empty());
    runOnMain([] { throw std::runtime_error("from a block on the main thread"); });
    runOnMain([&] { order.push_back(50); });
    QTRY_COMPARE(order.size(), std::size_t(51));
    QVERIFY(std::is_sorted(order.begin(), order.end()));
    QVERIFY(allOnMain);
}

void TestDispatchQueue::mainThreadRunsOneBlockPerTurn()
{
    QStringList calls;
    runOnMain([&] {
        runOnMain([&] { calls.append(QStringLiteral("inner")); });
        calls.append(QStringLiteral("outer"));
    });
    QTRY_COMPARE(calls, QStringList({QStringLiteral("outer"), QStringLiteral("inner")}));
}

REGISTER_TEST(TestDispatchQueue)
#include "TestDispatchQueue.moc"
