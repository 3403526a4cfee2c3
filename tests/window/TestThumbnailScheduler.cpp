#include "TestRunner.h"

#include "ThumbnailScheduler.h"

#include <QSet>
#include <QTest>

namespace {

using Outcome = ThumbnailScheduler::Outcome;

/// Photos by number; keeps a diary of what the scheduler did.
struct FakeTiles final : TileSource
{
    QSet<int> made;
    QSet<int> asked; // waiting; those that failed wait for ever
    QList<int> prepared;
    QList<int> requested;
    QList<int> looked;
    int jobs = 0;
    int told = 0;

    bool prepare(int index) override
    {
        prepared << index;
        return lacks(index);
    }
    bool lacksThumbnail(int index) const override
    {
        const_cast<FakeTiles *>(this)->looked << index;
        return lacks(index);
    }
    bool lacks(int index) const { return !made.contains(index) && !asked.contains(index); }
    void request(int index) override
    {
        requested << index;
        asked << index;
        ++jobs;
    }
    int pendingJobs() const override { return jobs; }
    void visiblePrepared() override { ++told; }

    void finish(int index)
    {
        --jobs;
        asked.remove(index);
        made.insert(index);
    }
    void fail() { --jobs; }
};

const auto kNoHurry = [] { return false; };
const auto kOneStep = [] { return true; };

/// Lets every job succeed at once until the scheduler is done.
void runToTheEnd(ThumbnailScheduler &scheduler, FakeTiles &tiles)
{
    while (scheduler.advance(kNoHurry) != Outcome::Done) {
        for (const int index : QSet<int>(tiles.asked))
            tiles.finish(index);
    }
}

}

class TestThumbnailScheduler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void visibleFromTheTopThenOutward()
    {
        FakeTiles tiles;
        ThumbnailScheduler scheduler(tiles, 3, 1);
        scheduler.reset(12);
        scheduler.setVisible({4, 6});
        runToTheEnd(scheduler, tiles);
        QCOMPARE(tiles.requested, QList<int>({4, 5, 6, 7, 3, 8, 2, 9, 1, 10, 0, 11}));
    }

    void allVisibleTilesArePreparedBeforeTheFirstRequest()
    {
        FakeTiles tiles;
        tiles.made = {2, 3};
        ThumbnailScheduler scheduler(tiles, 1, 1);
        scheduler.reset(4);
        scheduler.setVisible({0, 3});
        QCOMPARE(scheduler.advance(kNoHurry), Outcome::Blocked);
        QCOMPARE(tiles.prepared, QList<int>({0, 1, 2, 3}));
        QCOMPARE(tiles.told, 1);
        QCOMPARE(tiles.requested, QList<int>({0}));
    }

    void whatScrolledAwayBeforeItsTurnIsNeverRequested()
    {
        FakeTiles tiles;
        ThumbnailScheduler scheduler(tiles, 2, 1);
        scheduler.reset(1000);
        for (int top = 0; top < 500; top += 10) {
            scheduler.setVisible({top, top + 9});
            QCOMPARE(scheduler.advance(kNoHurry), Outcome::Blocked);
        }
        QCOMPARE(tiles.requested, QList<int>({0, 1})); // the two that were in flight all the while
        tiles.finish(0);
        QCOMPARE(scheduler.advance(kNoHurry), Outcome::Blocked);
        QCOMPARE(tiles.requested.last(), 490);
    }

    void idleJobsLeaveRoomForVisibleOnes()
    {
        FakeTiles tiles;
        tiles.made = {0, 1};
        ThumbnailScheduler scheduler(tiles, 4, 2);
        scheduler.reset(100);
        scheduler.setVisible({0, 1});
        QCOMPARE(scheduler.advance(kNoHurry), Outcome::Blocked);
        QCOMPARE(tiles.requested, QList<int>({2, 3}));
        scheduler.setVisible({50, 51});
        QCOMPARE(scheduler.advance(kNoHurry), Outcome::Blocked);
        QCOMPARE(tiles.requested, QList<int>({2, 3, 50, 51}));
    }

    void photosThatFailHoldNothingUp()
    {
        FakeTiles tiles;
        ThumbnailScheduler scheduler(tiles, 2, 2);
        scheduler.reset(6);
        scheduler.setVisible({0, 2});
        int turns = 0;
        while (scheduler.advance(kNoHurry) != Outcome::Done && ++turns < 100) {
            while (tiles.jobs > 0)
                tiles.fail(); // nobody is told
        }
        QCOMPARE(tiles.requested, QList<int>({0, 1, 2, 3, 4, 5}));
        // Once nothing runs any more the visible tiles are looked at again, to settle what they show.
        QCOMPARE(tiles.prepared.mid(tiles.prepared.size() - 3), QList<int>({0, 1, 2}));
    }

    void onlyTheNextPagesAreReadFromDisk()
    {
        FakeTiles tiles;
        for (int index = 0; index < 1000; ++index)
            tiles.made << index;
        ThumbnailScheduler scheduler(tiles, 2, 2);
        scheduler.reset(1000);
        scheduler.setVisible({500, 509});
        runToTheEnd(scheduler, tiles);
        QCOMPARE(QSet<int>(tiles.prepared.begin(), tiles.prepared.end()).size(), 30);
        QVERIFY(tiles.prepared.contains(490) && tiles.prepared.contains(519));
        QCOMPARE(tiles.looked.size(), 970);

        // The rest of the folder is known by now, and scrolling does not go through it again.
        scheduler.setVisible({0, 9});
        runToTheEnd(scheduler, tiles);
        QCOMPARE(tiles.looked.size(), 970);
        QVERIFY(tiles.prepared.contains(19));
    }

    void oneStepAtATime()
    {
        FakeTiles tiles;
        ThumbnailScheduler scheduler(tiles, 10, 10);
        scheduler.reset(3);
        scheduler.setVisible({0, 2});
        for (int step = 1; step <= 3; ++step) {
            QCOMPARE(scheduler.advance(kOneStep), Outcome::More);
            QCOMPARE(tiles.prepared.size(), step);
        }
        QCOMPARE(tiles.requested.size(), 0);
        QCOMPARE(scheduler.advance(kOneStep), Outcome::More);
        QCOMPARE(tiles.requested, QList<int>({0}));
    }

    void anotherFolderStartsAnew()
    {
        FakeTiles tiles;
        ThumbnailScheduler scheduler(tiles, 1, 1);
        scheduler.reset(100);
        scheduler.setVisible({90, 99});
        QCOMPARE(scheduler.advance(kNoHurry), Outcome::Blocked);
        tiles.prepared.clear();
        scheduler.reset(3);
        scheduler.setVisible({0, 50}); // more than there is
        QCOMPARE(scheduler.advance(kNoHurry), Outcome::Blocked);
        QCOMPARE(tiles.prepared, QList<int>({0, 1, 2}));
        scheduler.reset(0);
        tiles.jobs = 0;
        QCOMPARE(scheduler.advance(kNoHurry), Outcome::Done);
    }
};

REGISTER_TEST(TestThumbnailScheduler)
#include "TestThumbnailScheduler.moc"
