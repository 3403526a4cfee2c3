#include "FollowedLibrary.h"
#include "TestRunner.h"

#include "FileNotifications.h"
#include "LibraryFollower.h"
#include "LibraryNotifications.h"

#include <QSemaphore>
#include <QTest>

class TestLibraryFollower : public QObject
{
    Q_OBJECT

    std::unique_ptr<FollowedLibrary> m_house;
    std::shared_ptr<PIPhoto> m_photo;
    std::unique_ptr<LibraryFollower> m_follower;
    NotificationCenter::Observer m_fileObserver;
    NotificationCenter::Observer m_tileObserver;
    int m_filesChanged = 0;
    int m_tilesChanged = 0;

    QString path() const { return m_photo->fileRef()->path(); }

private Q_SLOTS:
    void init()
    {
        m_house = std::make_unique<FollowedLibrary>();
        m_photo = m_house->add("shown/a.png");
        m_follower = std::make_unique<LibraryFollower>(*m_house->library, *m_house->finder, m_house->options());
        m_follower->setFolder(m_house->folder);
        m_follower->begin();
        m_filesChanged = 0;
        m_tilesChanged = 0;
        m_fileObserver =
            m_house->notifications.observe(kFileChangeNotification, [this](const NotificationObject &object) {
                m_filesChanged += object.as<PIFileRef>() == m_photo->fileRef().get();
            });
        m_tileObserver =
            m_house->notifications.observe(kThumbnailNotification, [this](const NotificationObject &object) {
                m_tilesChanged += object.as<PIPhoto>() == m_photo.get();
            });
    }
    void cleanup()
    {
        m_follower.reset();
        m_photo.reset();
        m_house.reset();
    }

    void renamesAreFollowedWithoutAWalk()
    {
        bool isWalked = false;
        connect(m_follower.get(), &LibraryFollower::walking, this, [&] { isWalked = true; });
        m_house->move("shown/a.png", "shown/b.png");
        QTRY_COMPARE(path(), m_house->at("shown/b.png"));
        m_house->move("shown/b.png", "shown/c.png");
        QTRY_COMPARE(path(), m_house->at("shown/c.png"));
        QTRY_VERIFY(!m_follower->isSearching());
        QVERIFY(!m_photo->isFileLost());
        QVERIFY(!isWalked);
        QVERIFY(m_tilesChanged > 0);
        QCOMPARE(m_filesChanged, 0);
        // What comes to stand at its old places is another file.
        FileRefRegistry &files = m_house->library->fileRefs();
        QCOMPARE(files.fileRefForPathIfExists(path()), m_photo->fileRef());
        for (const char *name : {"shown/a.png", "shown/b.png"})
            QVERIFY(!files.fileRefForPathIfExists(m_house->at(name)));
    }

    void movesAreFollowedAndWatchedWhereTheyLead()
    {
        m_house->move("shown", "renamed folder");
        QTRY_COMPARE(path(), m_house->at("renamed folder/a.png"));
        m_house->move("renamed folder/a.png", "renamed folder/sub/a.png");
        QTRY_COMPARE(path(), m_house->at("renamed folder/sub/a.png"));
        m_house->move("renamed folder/sub/a.png", "renamed folder/sub/z.png");
        QTRY_COMPARE(path(), m_house->at("renamed folder/sub/z.png"));
        m_house->move("renamed folder", "top"); // not the folder that holds it, but one above
        QTRY_COMPARE(path(), m_house->at("top/sub/z.png"));
    }

    void aWrittenFileIsAnnounced_data()
    {
        QTest::addColumn<bool>("inPlace");
        QTest::newRow("in place") << true;
        QTest::newRow("saved beside it, and then over it") << false;
    }
    void aWrittenFileIsAnnounced()
    {
        QFETCH(bool, inPlace);
        const QImage before = m_photo->fileRef()->image().pixels().value_or(QImage());
        QVERIFY(!before.isNull());
        m_house->draw(inPlace ? "shown/a.png" : "shown/a.png.part");
        if (!inPlace)
            m_house->move("shown/a.png.part", "shown/a.png");
        QTRY_COMPARE(m_filesChanged, 1);
        QTRY_VERIFY(m_tilesChanged > 0);
        QTRY_VERIFY(!m_follower->isSearching());
        QCOMPARE(m_filesChanged, 1);
        QVERIFY(m_photo->fileRef()->image().pixels().value_or(QImage()) != before);
        QCOMPARE(path(), m_house->at("shown/a.png"));

        // Its bookmark is fresh: it is followed from here on as well.
        QTRY_VERIFY(!m_house->finder->hasUnsettled());
        m_house->move("shown/a.png", "shown/b.png");
        QTRY_COMPARE(path(), m_house->at("shown/b.png"));
    }

    void aFileThatGoesIsLostUntilItIsBack()
    {
        const auto second = m_house->add("shown/b.png");
        m_house->move("shown/b.png", "b.png");
        QVERIFY(QFile::remove(m_house->at("b.png")));
        QTRY_VERIFY(second->isFileLost());
        QTRY_VERIFY(!m_follower->isSearching());
        m_house->draw("shown/b.png");
        QTRY_VERIFY(!second->isFileLost());
        QVERIFY(!m_photo->isFileLost());
    }

    void aVolumeComesBackByItself()
    {
        BookmarkOptions options = m_house->options();
        options.volumes = std::make_shared<const Volumes>(QByteArray(), identifyMount); // none is mounted
        m_follower = std::make_unique<LibraryFollower>(*m_house->library, *m_house->finder, options);
        m_follower->setFolder(m_house->folder);
        m_follower->begin();
        m_house->move("shown", "unplugged");
        QTRY_VERIFY(m_photo->isVolumeAway());
        QTRY_VERIFY(!m_follower->isSearching());
        QVERIFY(!m_follower->searchAgain()); // it is not missing

        m_follower->setFolder(nullptr); // what is not on show comes back, too
        m_house->move("unplugged", "shown");
        m_tilesChanged = 0;
        Q_EMIT m_follower->findChild<MountWatcher *>()->mountsChanged();
        QTRY_VERIFY(!m_photo->isFileLost());
        QVERIFY(m_tilesChanged > 0);
    }

    void whatAWalkDidNotFindCanBeLookedForAgain()
    {
        m_house->move("shown/a.png", "a.png");
        QFile file(m_house->at("a.png"));
        QVERIFY(file.open(QFile::ReadOnly));
        const QByteArray content = file.readAll();
        QVERIFY(file.remove());
        QTRY_VERIFY(m_photo->isFileLost());
        QTRY_VERIFY(!m_follower->isSearching());
        QVERIFY(QDir().mkpath(m_house->at("back")));
        QFile copy(m_house->at("back/a.png"));
        QVERIFY(copy.open(QFile::WriteOnly) && copy.write(content) == content.size());
        copy.close();
        QVERIFY(m_follower->searchAgain());
        QTRY_COMPARE(path(), m_house->at("back/a.png"));
        QVERIFY(!m_follower->searchAgain());
    }

    void aDiskThatDoesNotAnswerHoldsUpItsOwnFilesOnly()
    {
        m_follower.reset();
        const auto other = m_house->add("other/b.png");
        const auto answers = std::make_shared<QSemaphore>();
        const auto asked = std::make_shared<QSemaphore>();
        m_house->setLookListener(
            [=, stuck = m_house->finder->bookmark(m_photo->fileRef()->guid())](const auto &bookmark) {
                if (bookmark != stuck)
                    return;
                asked->release();
                answers->acquire();
            });
        FolderFollower follower(*m_house->library, *m_house->finder);
        follower.setPatience(std::chrono::milliseconds(50));
        follower.lookAt({m_photo->fileRef()});
        asked->acquire();
        QVERIFY(QFile::remove(m_house->at("other/b.png")));
        follower.lookAt({m_photo->fileRef(), other->fileRef()});
        QTRY_VERIFY(other->isFileLost());
        QCOMPARE(asked->available(), 0); // not again before it answers

        answers->release(1000);
        const auto isAskedAgain = [&] {
            follower.lookAt({m_photo->fileRef()});
            return asked->available() > 0;
        };
        QTRY_VERIFY(isAskedAgain());
    }

    void aLibraryJustReadIsLookedAtInTheBackground()
    {
        for (const char *name : {"shown/moved.png", "shown/gone.png", "shown/new.png", "shown/left.png"})
            (void)m_house->add(name);
        m_house->manager->forget({m_house->folder->photos().at(3)->fileRef()->guid()}); // as after a loss of the list
        const auto removed = m_house->folder->photos().takeLast();
        // It was followed since the library was saved last, and goes for good.
        const QString gone = m_house->folder->photos().at(2)->fileRef()->guid();
        auto locator = m_house->manager->locatorForGuid(gone);
        locator->setPath(m_house->at("later/gone.png"));
        QVERIFY(m_house->manager->setLocator(*locator, gone));
        m_follower.reset();
        m_photo.reset();
        m_house->reload();
        m_house->move("shown/moved.png", "elsewhere/moved.png");
        QVERIFY(QFile::remove(m_house->at("shown/gone.png")));
        const auto &photos = m_house->folder->photos();
        for (const auto &photo : photos)
            QVERIFY(!photo->isFileLost());

        m_follower = std::make_unique<LibraryFollower>(*m_house->library, *m_house->finder, m_house->options());
        m_follower->begin();
        QVERIFY(m_follower->isSearching());
        QTRY_VERIFY(!m_follower->isSearching());
        QCOMPARE(photos.at(0)->fileRef()->path(), m_house->at("shown/a.png"));
        QCOMPARE(photos.at(1)->fileRef()->path(), m_house->at("elsewhere/moved.png"));
        QCOMPARE(m_house->library->fileRefs().fileRefForPath(m_house->at("elsewhere/moved.png")),
                 photos.at(1)->fileRef()); // as when it is imported there
        QVERIFY(photos.at(2)->isFileLost());
        QCOMPARE(photos.at(2)->fileRef()->path(), m_house->at("later/gone.png"));
        QCOMPARE(m_house->storedPath(*photos.at(3)), m_house->at("shown/new.png"));
        QVERIFY(m_house->storedPath(*removed).isEmpty());
    }

    void whatWasNotedBeforeItBeganIsLookedFor()
    {
        m_follower.reset();
        m_house->move("shown/a.png", "elsewhere/a.png");
        m_house->lookAtAll();
        QVERIFY(m_photo->isFileLost());
        m_follower = std::make_unique<LibraryFollower>(*m_house->library, *m_house->finder, m_house->options());
        m_follower->begin();
        QTRY_COMPARE(path(), m_house->at("elsewhere/a.png"));
    }
};

REGISTER_TEST(TestLibraryFollower)
#include "TestLibraryFollower.moc"
