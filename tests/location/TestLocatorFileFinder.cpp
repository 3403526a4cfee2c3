#include "../platform/BookmarkScene.h"
#include "FakeBookmarkService.h"
#include "LocatorCheck.h"
#include "LocatorFileFinder.h"
#include "PILocatorManager.h"
#include "TestRunner.h"
#include "UnsettledSearch.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <utility>

namespace {

using Search = LocatorFileFinder::Search;
using Doubt = LocatorFileFinder::Doubt;
using Status = BookmarkResolution::Status;

const QString kA = QStringLiteral("AAAAAAAA-0000-4000-8000-000000000001");
const QString kB = QStringLiteral("BBBBBBBB-0000-4000-8000-000000000002");

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// As careful editors save: beside the file, and then over it.
bool replaceFile(const QString &path, const QByteArray &bytes)
{
    const QString beside = path + QStringLiteral(".new");
    return writeFile(beside, bytes) && QFile::remove(path) && QFile::rename(beside, path);
}

bool swapFiles(const QString &a, const QString &b)
{
    const QString aside = a + QStringLiteral(".aside");
    return QFile::rename(a, aside) && QFile::rename(b, a) && QFile::rename(aside, b);
}

// Real bookmarks in a world that ends at one folder, which count how often they were asked for.
class CountingBookmarks final : public BookmarkService
{
public:
    std::optional<QByteArray> create(const QString &path, QString &reason) override
    {
        ++created;
        return FileBookmark::create(path, *volumes, &reason);
    }
    bool isCurrent(const QByteArray &bookmark, const FileIdentity &present, const Volumes *) override
    {
        ++looked;
        return FileBookmark::isCurrent(bookmark, present, volumes.get());
    }
    BookmarkResolution resolve(const QByteArray &bookmark, const BookmarkOptions &options) override
    {
        ++resolved;
        BookmarkOptions here = forPictures(options);
        here.volumes = volumes;
        return FileBookmark::resolve(bookmark, here);
    }

    std::shared_ptr<const Volumes> volumes;
    int created = 0;
    int resolved = 0;
    int looked = 0; ///< at files that exist
};

}

class TestLocatorFileFinder : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<PILocatorManager> m_manager;
    CountingBookmarks m_bookmarks;

    QString path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    LocatorFileFinder finder(Search search) { return LocatorFileFinder(m_manager.get(), m_bookmarks, search); }
    // As at the next start.
    void reopen()
    {
        if (m_manager)
            m_manager->close();
        m_manager = PILocatorManager::open(path("library"));
        QVERIFY(m_manager);
        m_bookmarks.created = 0;
        m_bookmarks.resolved = 0;
    }
    QByteArray database() const
    {
        QFile file(path("library/locators.database"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    // Where the files of both guids are, by either way of searching; empty for a lost one.
    std::pair<QString, QString> locateBoth(Search search)
    {
        LocatorFileFinder finder = this->finder(search);
        QHash<QString, FoundFile> places;
        for (const QString &guid : {kA, kB})
            places.insert(guid, finder.locate(guid, QStringLiteral("/nowhere")));
        BookmarkOptions options;
        options.volumes = m_bookmarks.volumes;
        searchUnsettled(finder.takeUnsettled(), finder.lastStored(), options, [&](const QList<SearchedFile> &files) {
            for (const SearchedFile &searched : files)
                places.insert(searched.file.guid, finder.settle(searched));
        });
        const auto text = [](const FoundFile &file) { return file.found ? file.path : QString(); };
        return {text(places.value(kA)), text(places.value(kB))};
    }

private Q_SLOTS:
    void init()
    {
        m_manager.reset();
        m_dir = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/finder ü XXXXXX"));
        m_bookmarks.volumes = BookmarkScene(m_dir->path(), BookmarkScene::Photos::Present).volumes();
        for (const char *folder : {"library", "p", "q"})
            QVERIFY(QDir().mkpath(path(folder)));
        QVERIFY(writeFile(path("p/a.jpg"), "picture a") && writeFile(path("p/b.jpg"), "picture b"));
        reopen();
        LocatorFileFinder finder = this->finder(Search::AtOnce);
        QVERIFY(finder.locate(kA, path("p/a.jpg")).found);
        QVERIFY(finder.relocate(kB, path("p/b.jpg")).found);
        QCOMPARE(m_bookmarks.created, 2);
        reopen();
    }

    void whatIsInItsPlaceIsNeitherSearchedNorStored()
    {
        const QByteArray before = database();
        for (const Search search : {Search::AtOnce, Search::Later})
            QCOMPARE(locateBoth(search), std::pair(path("p/a.jpg"), path("p/b.jpg")));
        QCOMPARE(m_bookmarks.created + m_bookmarks.resolved, 0);
        reopen();
        QCOMPARE(database(), before);
    }

    void filesAreFollowed_data()
    {
        QTest::addColumn<std::function<bool(const QString &)>>("change"); // given the temporary folder
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        const auto row = [](const char *name, const std::function<bool(const QString &)> &change, const char *a,
                            const char *b) {
            for (const char *search : {"at once", "later"})
                QTest::addRow("%s, %s", name, search) << change << QString::fromUtf8(a) << QString::fromUtf8(b);
        };
        const auto in = [](const QString &folder, const char *name) {
            return QString(folder + QString::fromUtf8(name));
        };
        row(
            "one moved", [=](const QString &f) { return QFile::rename(in(f, "/p/a.jpg"), in(f, "/q/c.jpg")); },
            "q/c.jpg", "p/b.jpg");
        row(
            "folder renamed", [=](const QString &f) { return QFile::rename(in(f, "/p"), in(f, "/q/r")); }, "q/r/a.jpg",
            "q/r/b.jpg");
        row(
            "swapped", [=](const QString &f) { return swapFiles(in(f, "/p/a.jpg"), in(f, "/p/b.jpg")); }, "p/b.jpg",
            "p/a.jpg");
        row(
            "another file put in the place of a moved one",
            [=](const QString &f) {
                return QFile::rename(in(f, "/p/a.jpg"), in(f, "/q/c.jpg")) && writeFile(in(f, "/p/a.jpg"), "picture x");
            },
            "q/c.jpg", "p/b.jpg");
        row(
            "another file put in the place of one in the trash",
            [=](const QString &f) {
                return QDir().mkpath(in(f, "/.Trash-1000/files")) &&
                       QFile::rename(in(f, "/p/a.jpg"), in(f, "/.Trash-1000/files/a.jpg")) &&
                       writeFile(in(f, "/p/a.jpg"), "picture x");
            },
            "p/a.jpg", "p/b.jpg");
        row(
            "a folder put in the place of a moved one",
            [=](const QString &f) {
                return QFile::rename(in(f, "/p/a.jpg"), in(f, "/q/c.jpg")) && QDir().mkpath(in(f, "/p/a.jpg"));
            },
            "q/c.jpg", "p/b.jpg");
        row(
            "a folder put in the place of a deleted one",
            [=](const QString &f) { return QFile::remove(in(f, "/p/a.jpg")) && QDir().mkpath(in(f, "/p/a.jpg")); }, "",
            "p/b.jpg");
        row(
            "edited in place", [=](const QString &f) { return writeFile(in(f, "/p/a.jpg"), "picture a, brighter"); },
            "p/a.jpg", "p/b.jpg");
        row(
            "edited by replacing, with a copy of the original kept",
            [=](const QString &f) {
                return QFile::copy(in(f, "/p/a.jpg"), in(f, "/p/a original.jpg")) &&
                       replaceFile(in(f, "/p/a.jpg"), "picture a, brighter");
            },
            "p/a.jpg", "p/b.jpg");
        row(
            "deleted, with two copies of different extensions",
            [=](const QString &f) {
                return QFile::copy(in(f, "/p/a.jpg"), in(f, "/q/a.jpg")) &&
                       QFile::copy(in(f, "/p/a.jpg"), in(f, "/q/a.jpeg")) && QFile::remove(in(f, "/p/a.jpg"));
            },
            "", "p/b.jpg");
        row(
            "deleted", [=](const QString &f) { return QFile::remove(in(f, "/p/a.jpg")); }, "", "p/b.jpg");
    }
    void filesAreFollowed()
    {
        QFETCH(std::function<bool(const QString &)>, change);
        QFETCH(QString, a);
        QFETCH(QString, b);
        QVERIFY(change(m_dir->path()));
        const Search search = QByteArray(QTest::currentDataTag()).endsWith("later") ? Search::Later : Search::AtOnce;
        const std::pair expected(a.isEmpty() ? QString() : m_dir->filePath(a), m_dir->filePath(b));
        QCOMPARE(locateBoth(search), expected);
        QCOMPARE(m_bookmarks.resolved > 0, search == Search::AtOnce);

        // What was found is stored, and so is what its bookmark has become.
        reopen();
        const QByteArray before = database();
        QCOMPARE(locateBoth(search), expected);
        if (!a.isEmpty()) {
            QCOMPARE(m_bookmarks.created + m_bookmarks.resolved, 0);
            QVERIFY(QFile::rename(m_dir->filePath(a), path("q/d.jpg")));
            QCOMPARE(locateBoth(search).first, path("q/d.jpg"));
        } else {
            QCOMPARE(database(), before);
        }
    }

    void whatCannotBeHadIsLeftAlone_data()
    {
        QTest::addColumn<Status>("status");
        QTest::addColumn<bool>("somethingIsThere");
        QTest::newRow("on an absent volume, nothing at its path") << Status::VolumeAway << false;
        QTest::newRow("on an absent volume, something else at its path") << Status::VolumeAway << true;
        QTest::newRow("under a name that is no text, nothing at its path") << Status::Unnameable << false;
        QTest::newRow("under a name that is no text, something else at its path") << Status::Unnameable << true;
    }
    void whatCannotBeHadIsLeftAlone()
    {
        QFETCH(Status, status);
        QFETCH(bool, somethingIsThere);
        FakeBookmarkService bookmarks;
        LocatorFileFinder finder(m_manager.get(), bookmarks, Search::AtOnce);
        (void)finder.relocate(kA, path("p/a.jpg"));
        const QByteArray mark = "mark:" + path("p/a.jpg").toUtf8();
        bookmarks.answers[mark].status = status;
        bookmarks.outdated = {mark};
        bookmarks.created.clear();
        if (!somethingIsThere)
            QVERIFY(QFile::remove(path("p/a.jpg")));
        const QByteArray before = database();
        const FoundFile file = finder.locate(kA, QString());
        const bool isAway = status == Status::VolumeAway;
        QCOMPARE(file.found, somethingIsThere && !isAway);
        QCOMPARE(file.volumeAway, isAway);
        QCOMPARE(file.path, path("p/a.jpg"));
        QCOMPARE(database(), before);
    }

    void onANetworkOnlyWhatWasWrittenSinceTakesThePlace_data()
    {
        QTest::addColumn<time_t>("date"); // of the file that was moved there
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("older than the photo") << time_t(1'000'000) << false;
        QTest::newRow("another photo, later than the first") << time_t(3'000'000) << false;
        QTest::newRow("saved anew") << ::time(nullptr) + 100 << true;
    }
    void onANetworkOnlyWhatWasWrittenSinceTakesThePlace()
    {
        QFETCH(time_t, date);
        const BookmarkScene scene(m_dir->path(), BookmarkScene::Photos::Present);
        scene.setDate("p/a.jpg", 2'000'000);
        QVERIFY(finder(Search::AtOnce).relocate(kA, path("p/a.jpg")).found);
        reopen();
        scene.setDate("p/b.jpg", date);
        scene.move("p/a.jpg", "q/a.jpg");
        scene.move("p/b.jpg", "p/a.jpg");
        m_bookmarks.volumes = scene.volumes("nfs4");
        const FoundFile file = finder(Search::AtOnce).locate(kA, QString());
        QCOMPARE(file.path, path("p/a.jpg"));
        QVERIFY(file.found);
        QTEST(file.contentChanged, "isTaken");
    }

    void whatIsLookedForLaterIsNotedOnce()
    {
        LocatorFileFinder finder = this->finder(Search::Later);
        QVERIFY(QFile::remove(path("p/a.jpg")) && replaceFile(path("p/b.jpg"), "another"));
        QVERIFY(!finder.locate(kA, QString()).found);
        QVERIFY(!finder.locate(kA, QString()).found);
        QVERIFY(finder.locate(kB, QString()).found);
        QCOMPARE(m_bookmarks.created + m_bookmarks.resolved, 0);
        QHash<QString, Doubt> doubts;
        const auto files = finder.takeUnsettled();
        for (const auto &file : files)
            doubts.insert(file.guid, file.doubt);
        QCOMPARE(files.size(), 2);
        QVERIFY(doubts.value(kA) == Doubt::Lost && doubts.value(kB) == Doubt::Changed);
        QVERIFY(finder.takeUnsettled().isEmpty());

        // A file that is given a new place by hand is not to be looked for any more.
        (void)finder.locate(kA, QString());
        QVERIFY(finder.relocate(kA, path("p/b.jpg")).found);
        QVERIFY(finder.takeUnsettled().isEmpty());
    }

    void whatACheckToldIsTakenUpWithoutAnotherLook()
    {
        LocatorFileFinder finder = this->finder(Search::Later);
        finder.postpone();
        for (const QString &guid : {kA, kB})
            QVERIFY(finder.locate(guid, path("p/unseen.jpg")).found);
        QVERIFY(writeFile(path("p/a.jpg"), "picture a, brighter") && QFile::remove(path("p/b.jpg")));
        QList<CheckedFile> checked;
        finder.takePostponed().run({}, [&](const QList<CheckedFile> &files) { checked += files; });
        QCOMPARE(checked.size(), 2);
        QVERIFY(finder.relocate(kB, path("p/a.jpg")).found); // by hand, meanwhile
        m_bookmarks.looked = 0;
        const FoundFile a = finder.takeChecked(checked.at(0));
        QVERIFY(a.found && a.path == path("p/a.jpg"));
        QCOMPARE(m_bookmarks.looked, 0);
        const FoundFile b = finder.takeChecked(checked.at(1));
        QVERIFY(b.found && b.path == path("p/a.jpg"));
        const auto unsettled = finder.takeUnsettled();
        QCOMPARE(unsettled.size(), 1);
        QVERIFY(unsettled.first().guid == kA && unsettled.first().doubt == Doubt::Changed);
    }

    void aCheckTellsThatItGetsOn()
    {
        LocatorFileFinder finder = this->finder(Search::Later);
        const QList<PostponedFile> files(450, PostponedFile{kA, path("p/a.jpg")});
        int calls = 0;
        qsizetype told = 0;
        finder.check(files + QList<PostponedFile>{{kB, path("p/b.jpg"), true}}).run({}, [&](const auto &checked) {
            ++calls;
            told += checked.size();
        });
        QCOMPARE(calls, 3);
        QCOMPARE(told, 1); // the one about which there was a doubt
    }

    void whatWasPreparedIsUsedIfItStillHolds_data()
    {
        QTest::addColumn<bool>("written");
        QTest::newRow("as it was") << false;
        QTest::newRow("written since") << true;
    }
    void whatWasPreparedIsUsedIfItStillHolds()
    {
        QFETCH(bool, written);
        const QString guid = QStringLiteral("CCCCCCCC-0000-4000-8000-000000000003");
        QVERIFY(writeFile(path("p/c.jpg"), "picture c"));
        LocatorFileFinder finder = this->finder(Search::Later);
        const QByteArray prepared = finder.preparation()(path("p/c.jpg"));
        QVERIFY(!written || writeFile(path("p/c.jpg"), "picture c, brighter"));
        finder.usePrepared(path("p/c.jpg"), prepared);
        QVERIFY(finder.locate(guid, path("p/c.jpg")).found);
        QCOMPARE(m_bookmarks.created, written ? 2 : 1);
        // It belongs to that file, and to no other.
        finder.usePrepared(path("p/c.jpg"), prepared);
        QVERIFY(finder.relocate(kA, path("p/a.jpg")).found);
        QVERIFY(QFile::rename(path("p/c.jpg"), path("q/c.jpg")) && QFile::rename(path("p/a.jpg"), path("q/a.jpg")));
        QCOMPARE(locateBoth(Search::AtOnce).first, path("q/a.jpg"));
        QCOMPARE(this->finder(Search::AtOnce).locate(guid, {}).path, path("q/c.jpg"));
    }

    void withoutADatabaseThePathIsBelieved()
    {
        LocatorFileFinder finder(nullptr, m_bookmarks, Search::Later);
        QVERIFY(finder.locate(kA, path("p/a.jpg")).found);
        const FoundFile lost = finder.locate(kA, path("p/c.jpg"));
        QVERIFY(!lost.found && lost.path == path("p/c.jpg"));
        finder.trimUnusedFiles({});
        QVERIFY(finder.takeUnsettled().isEmpty());
        QVERIFY(!finder.preparation());

        finder.postpone();
        for (const char *name : {"p/a.jpg", "p/c.jpg"})
            QVERIFY(finder.locate(kA, path(name)).found);
        QList<bool> present;
        finder.takePostponed().run({}, [&](const QList<CheckedFile> &files) {
            for (const CheckedFile &file : files)
                present << finder.takeChecked(file).found;
        });
        QCOMPARE(present, QList<bool>({true, false}));
        QCOMPARE(m_bookmarks.created, 0); // nobody would keep them
    }

    void trimmedGuidsStartAgainFromTheirPaths()
    {
        LocatorFileFinder finder = this->finder(Search::AtOnce);
        finder.trimUnusedFiles({kB});
        QCOMPARE(finder.locate(kA, path("p/b.jpg")).path, path("p/b.jpg"));
        QCOMPARE(finder.locate(kB, path("p/a.jpg")).path, path("p/b.jpg"));
    }
};

REGISTER_TEST(TestLocatorFileFinder)
#include "TestLocatorFileFinder.moc"
