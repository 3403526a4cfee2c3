#include "FollowedLibrary.h"
#include "TestRunner.h"

#include "FileNotifications.h"
#include "LibraryNotifications.h"
#include "LostFileSearch.h"

#include <QTest>

using Summary = LostFileSearch::Summary;

class TestLostFileSearch : public QObject
{
    Q_OBJECT

    std::unique_ptr<FollowedLibrary> m_house;
    qsizetype m_foldersWalked = 0;

    /// Looks at all files, searches to the end, and tells what that came to. `meanwhile` runs before any result comes.
    Summary search(LostFileSearch &search, const std::function<void()> &meanwhile = {})
    {
        Summary summary;
        bool isDone = false;
        m_foldersWalked = 0;
        search.setProgress([this](qsizetype found, const BookmarkProgress &walk) {
            m_foldersWalked = walk.foldersRead;
            if (found > walk.total)
                qFatal("more is found than is looked for");
        });
        search.setFinished([&](const Summary &result) {
            summary = result;
            isDone = true;
        });
        m_house->lookAtAll();
        search.start();
        if (meanwhile)
            meanwhile();
        isDone |= !search.isRunning(); // nothing was noted
        if (!QTest::qWaitFor([&] { return isDone; }, 60000))
            qFatal("the search does not tell its end");
        search.setFinished({});
        return summary;
    }

private Q_SLOTS:
    void init() { m_house = std::make_unique<FollowedLibrary>(); }
    void cleanup() { m_house.reset(); }

    void aRenamedAndShuffledTreeIsFoundWithOneWalk()
    {
        FollowedLibrary &house = *m_house;
        QList<std::shared_ptr<PIPhoto>> photos;
        for (const char *name : {"tree/a/1.png", "tree/a/2.png", "tree/b/1.png", "tree/b/c/3.png", "other/near.png"})
            photos << house.add(name);
        const auto still = house.add("other/still.png");
        house.library->setDirty(false);
        house.move("tree", "moved/away");
        house.move("moved/away/a/1.png", "moved/away/b/c/swapped.png");
        house.move("moved/away/b/1.png", "moved/away/a/1.png");
        house.move("moved/away/b/c/3.png", "far/from/all.png");
        house.move("other/near.png", "other/renamed.png");
        QStringList shown;
        const auto observer =
            house.notifications.observe(kThumbnailNotification, [&](const NotificationObject &object) {
                shown << object.as<PIPhoto>()->caption();
            });

        LostFileSearch lost(*house.library, *house.finder, house.options());
        const Summary summary = search(lost);
        QCOMPARE(summary.found, 5);
        QCOMPARE(summary.missing, 0);
        QVERIFY2(m_foldersWalked <= 10, qPrintable(QString::number(m_foldersWalked))); // no folder twice
        const char *places[] = {"moved/away/b/c/swapped.png", "moved/away/a/2.png", "moved/away/a/1.png",
                                "far/from/all.png", "other/renamed.png"};
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(photos[i]->fileRef()->path(), house.at(places[i]));
            QVERIFY(!photos[i]->isFileLost());
            QCOMPARE(house.storedPath(*photos[i]), house.at(places[i]));
        }
        QVERIFY(!shown.contains(still->caption()));
        QCOMPARE(QSet<QString>(shown.begin(), shown.end()).size(), 5);
        QVERIFY(!house.library->isDirty()); // the locators know: there is nothing to ask about at the end
    }

    void whatIsNowhereIsWalkedForOnce()
    {
        FollowedLibrary &house = *m_house;
        const auto gone = house.add("a/gone.png");
        QVERIFY(QFile::remove(house.at("a/gone.png")));
        LostFileSearch lost(*house.library, *house.finder, house.options());
        const Summary summary = search(lost);
        QCOMPARE(summary.missing, 1);
        QVERIFY(m_foldersWalked > 0);
        QVERIFY(gone->isFileLost());
        QCOMPARE(search(lost).missing, 0); // not told again
        QCOMPARE(m_foldersWalked, 0);

        house.draw("a/gone.png"); // back for a while
        (void)search(lost);
        QVERIFY(!gone->isFileLost());
        house.move("a/gone.png", "b/gone.png");
        QCOMPARE(search(lost).found, 1);
    }

    void cancellingForgoesTheWalk()
    {
        FollowedLibrary &house = *m_house;
        const auto near = house.add("a/near.png");
        const auto far = house.add("a/far.png");
        const auto along = house.add("c/1.png");
        house.move("a/near.png", "a/renamed.png");
        house.move("c", "d");
        house.move("a/far.png", "b/far.png");
        LostFileSearch lost(*house.library, *house.finder, house.options());
        const Summary summary = search(lost, [&] { lost.cancel(); });
        QVERIFY(summary.cancelled);
        QCOMPARE(summary.found, 2);
        QCOMPARE(summary.missing, 1);
        QCOMPARE(along->fileRef()->path(), house.at("d/1.png"));
        QCOMPARE(near->fileRef()->path(), house.at("a/renamed.png"));
        QVERIFY(far->isFileLost());
        QCOMPARE(far->fileRef()->path(), house.at("a/far.png"));
        QCOMPARE(m_foldersWalked, 0);
        QCOMPARE(search(lost).found, 0);
        lost.allowAnotherWalk({far->fileRef()});
        QCOMPARE(search(lost).found, 1);
        QCOMPARE(far->fileRef()->path(), house.at("b/far.png"));
    }

    void aWalkWithoutTimeSaysSo()
    {
        FollowedLibrary &house = *m_house;
        (void)house.add("a/far.png");
        house.move("a/far.png", "b/far.png");
        BookmarkOptions options = house.options();
        options.timeLimit = {};
        LostFileSearch lost(*house.library, *house.finder, options);
        const Summary summary = search(lost);
        QVERIFY(summary.timedOut && !summary.cancelled);
        QCOMPARE(summary.missing, 1);
    }

    void aPlaceGivenByHandMeanwhileStays()
    {
        FollowedLibrary &house = *m_house;
        const auto photo = house.add("a/1.png");
        house.draw("chosen.png");
        house.move("a/1.png", "a/2.png");
        LostFileSearch lost(*house.library, *house.finder, house.options());
        (void)search(lost, [&] { photo->fileRef()->setPath(house.at("chosen.png")); });
        QCOMPARE(photo->fileRef()->path(), house.at("chosen.png"));
        QCOMPARE(house.storedPath(*photo), house.at("chosen.png"));
    }

    void whatStandsAtAnOldPathIsTakenForWhatItIs_data()
    {
        QTest::addColumn<QString>("change");
        QTest::addColumn<QString>("a"); ///< where the first photo is then
        QTest::addColumn<bool>("cropStays");
        QTest::addColumn<bool>("thumbnailStays");
        QTest::newRow("written in place") << "write"
                                          << "d/a.png" << false << false;
        QTest::newRow("given another date") << "touch"
                                            << "d/a.png" << true << false;
        QTest::newRow("replaced by a new file") << "replace"
                                                << "d/a.png" << false << false;
        for (const char *name : {"d/a.png~", "d/a.bak", "d/a_original.png"})
            QTest::addRow("saved anew, with the original kept as %s", name) << name << "d/a.png" << false << false;
        for (const char *name : {"d/b.png", "d/a_original.png"})
            QTest::addRow("exchanged with %s", name) << QStringLiteral("swap") << name << true << true;
    }
    void whatStandsAtAnOldPathIsTakenForWhatItIs()
    {
        QFETCH(QString, change);
        FollowedLibrary &house = *m_house;
        const auto photo = house.add("d/a.png");
        QFETCH(QString, a);
        const QByteArray second = change == QLatin1String("swap") ? a.toUtf8() : QByteArray("d/b.png");
        const auto other = house.add(second);
        photo->setCropRect({1, 1, 20, 20});
        photo->setThumbnailDate(7);
        if (change == QLatin1String("swap")) {
            house.move("d/a.png", "d/c.png");
            house.move(second, "d/a.png");
            house.move("d/c.png", second);
        } else if (change == QLatin1String("write")) {
            house.draw("d/a.png");
        } else if (change == QLatin1String("touch")) {
            BookmarkScene(house.at(""), BookmarkScene::Photos::Present).setDate("d/a.png", 1'000'000);
        } else if (change.startsWith(QLatin1String("d/"))) {
            house.move("d/a.png", change.toUtf8());
            house.draw("d/a.png");
        } else {
            house.draw("d/new.png");
            house.move("d/new.png", "d/a.png");
        }
        LostFileSearch lost(*house.library, *house.finder, house.options());
        (void)search(lost);
        QCOMPARE(photo->fileRef()->path().mid(house.at("").size()), a);
        QFETCH(bool, thumbnailStays);
        QTRY_COMPARE(photo->thumbnailDate() == 7, thumbnailStays);
        QTEST(!photo->cropRect().isEmpty(), "cropStays");
        QVERIFY(!photo->isFileLost() && !other->isFileLost());
        house.lookAtAll();
        QVERIFY(!house.finder->hasUnsettled()); // the bookmarks are fresh
    }

    void anEarlierFileAtTheOldPathIsNotThePhoto_data()
    {
        QTest::addColumn<bool>("isOnAnotherDisk");
        QTest::newRow("that was taken to another disk") << true;
        QTest::newRow("that is nowhere") << false;
    }
    void anEarlierFileAtTheOldPathIsNotThePhoto()
    {
        QFETCH(bool, isOnAnotherDisk);
        FollowedLibrary &house = *m_house;
        const auto photo = house.add("d/a.png");
        QVERIFY(QDir().mkpath(house.at("e")));
        QVERIFY(!isOnAnotherDisk || QFile::copy(house.at("d/a.png"), house.at("e/a.png")));
        house.draw("d/decoy.png");
        BookmarkScene(house.at(""), BookmarkScene::Photos::Present).setDate("d/decoy.png", 1'000'000);
        house.move("d/decoy.png", "d/a.png");
        const QByteArray bookmark = house.finder->bookmark(photo->fileRef()->guid());
        LostFileSearch lost(*house.library, *house.finder, house.options());
        (void)search(lost);
        QVERIFY(!photo->isFileLost());
        QCOMPARE(photo->fileRef()->path(), house.at(isOnAnotherDisk ? "e/a.png" : "d/a.png"));
        QCOMPARE(house.finder->bookmark(photo->fileRef()->guid()) == bookmark, !isOnAnotherDisk);
    }

    void aLibraryThatWasPlayedBackOntoAnotherDiskIsTakenUp()
    {
        FollowedLibrary &house = *m_house;
        const auto photo = house.add("usb/a.png");
        house.move("usb", "unplugged");
        QVERIFY(QDir().mkpath(house.at("usb")) && QFile::copy(house.at("unplugged/a.png"), house.at("usb/a.png")));
        house.nameVolume("uuid:new");
        LostFileSearch lost(*house.library, *house.finder, house.options());
        QCOMPARE(search(lost).missing, 0);
        QVERIFY(!photo->isFileLost() && !photo->isVolumeAway());
        house.lookAtAll();
        QVERIFY(!house.finder->hasUnsettled()); // the bookmark is one of the new disk
        house.move("usb/a.png", "usb/b.png");
        (void)search(lost);
        QCOMPARE(photo->fileRef()->path(), house.at("usb/b.png"));
    }

    void onANetworkVolumeOnlyANewerFileReplacesAnother_data()
    {
        QTest::addColumn<time_t>("date");
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("saved anew") << ::time(nullptr) + 100 << true;
        QTest::newRow("older, and moved there") << time_t(1'000'000) << false;
    }
    void onANetworkVolumeOnlyANewerFileReplacesAnother()
    {
        QFETCH(time_t, date);
        QFETCH(bool, isTaken);
        FollowedLibrary &house = *m_house;
        const auto photo = house.add("d/a.png");
        house.draw("d/new.png");
        const BookmarkScene scene(house.at(""), BookmarkScene::Photos::Present);
        scene.setDate("d/new.png", date);
        house.move("d/new.png", "d/a.png");
        BookmarkOptions options = house.options();
        options.volumes = scene.volumes("nfs4");
        LostFileSearch lost(*house.library, *house.finder, options);
        (void)search(lost);
        QVERIFY(!photo->isFileLost());
        house.lookAtAll();
        QCOMPARE(!house.finder->hasUnsettled(), isTaken); // whether the bookmark is fresh
    }

    void anAbsentVolumeIsNotSearchedAndNothingIsChanged_data()
    {
        QTest::addColumn<QByteArray>("there");
        QTest::newRow("nothing at its mount point") << QByteArray();
        QTest::newRow("another card at its mount point") << QByteArray("usb/a.png");
    }
    void anAbsentVolumeIsNotSearchedAndNothingIsChanged()
    {
        QFETCH(QByteArray, there);
        FollowedLibrary &house = *m_house;
        const auto photo = house.add("usb/a.png");
        const QString stored = house.storedPath(*photo);
        house.move("usb", "unplugged");
        if (!there.isEmpty())
            house.draw(there);
        BookmarkOptions options = house.options();
        options.volumes = std::make_shared<const Volumes>(QByteArray(), identifyMount);
        LostFileSearch lost(*house.library, *house.finder, options);
        QCOMPARE(search(lost).missing, 0);
        QVERIFY(photo->isVolumeAway());
        QCOMPARE(m_foldersWalked, 0);
        QCOMPARE(house.storedPath(*photo), stored);
        house.lookAtAll();
        QVERIFY(photo->isVolumeAway()); // still, before the next search has told so

        if (!there.isEmpty())
            house.move("usb", "unplugged too");
        house.move("unplugged", "usb");
        house.lookAtAll();
        QVERIFY(!photo->isFileLost() && !photo->isVolumeAway());
    }
};

REGISTER_TEST(TestLostFileSearch)
#include "TestLostFileSearch.moc"
