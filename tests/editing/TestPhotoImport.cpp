#include "TestRunner.h"

#include "UndoHouse.h"

#include "DispatchQueue.h"
#include "LibraryNotifications.h"
#include "PhotoImport.h"

#include <QDir>
#include <QTest>

class TestPhotoImport : public QObject
{
    Q_OBJECT

    static void touch(const QString &path)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QFile::WriteOnly));
    }

    /// Runs to the end. `atFile` is called before each file is made findable.
    static PhotoImport::Outcome runImport(House &house, const PhotoImport::Request &request,
                                          const std::function<void(PhotoImport &)> &atFile = {})
    {
        return runImport(house, house.editor, request, atFile);
    }
    static PhotoImport::Outcome runImport(House &house, LibraryEditor &editor, const PhotoImport::Request &request,
                                          const std::function<void(PhotoImport &)> &atFile = {})
    {
        DispatchQueue queue(QStringLiteral("import"), 1);
        PhotoImport running(editor, queue, request);
        if (atFile)
            house.finder.asked = [&] { atFile(running); };
        std::optional<PhotoImport::Outcome> outcome;
        const auto isDone = [&outcome] { return outcome.has_value(); };
        running.start({}, [&outcome](const PhotoImport::Outcome &result) { outcome = result; });
        if (!QTest::qWaitFor(isDone, 30000))
            qFatal("the import does not end");
        return outcome.value();
    }

    /// Brings words for files whose name begins with "w".
    static PictureWords wordsOf(const QString &path)
    {
        if (QThread::currentThread() == QCoreApplication::instance()->thread())
            qFatal("a file is read on the main thread");
        if (!QFileInfo(path).fileName().startsWith(u'w'))
            return {};
        return {QStringLiteral("Harbour"), {QStringLiteral("SEA"), QStringLiteral("old town")}};
    }

private Q_SLOTS:
    void makesTheTreeOfTheDiskAsOneStep()
    {
        QTemporaryDir dir;
        for (const char *name : {"trip/a.jpg", "trip/day 1/b.jpg", "trip/day 1/c.png", "trip/day 2/d.jpg", "e.jpg"})
            touch(dir.filePath(QLatin1String(name)));
        House house;
        house.view.folder = house.a;
        PhotoImport::Request request;
        request.paths << dir.filePath(QStringLiteral("trip")) << dir.filePath(QStringLiteral("e.jpg"));
        const auto outcome = runImport(house, request);
        QVERIFY(outcome.accepted);
        QCOMPARE(outcome.photosAdded, 5);
        QCOMPARE(house.recorder.asked, QStringList(QStringLiteral("1/2/")));

        QCOMPARE(house.a->folders().size(), 1);
        const auto &trip = house.a->folders().first();
        QCOMPARE(outcome.firstFolder, trip);
        QCOMPARE(trip->name(), QStringLiteral("trip"));
        QCOMPARE(trip->parent(), std::shared_ptr<PIGroup>(house.a));
        QCOMPARE(trip->photos().size(), 1);
        QCOMPARE(trip->folders().size(), 2);
        QCOMPARE(trip->folders().first()->name(), QStringLiteral("day 1"));
        QCOMPARE(trip->folders().first()->photos().size(), 2);
        QCOMPARE(house.a->photos().size(), 1);
        QVERIFY(!house.a->photos().first()->isFileLost());
        // What takes long about a file was done on the worker.
        const QString loose = dir.filePath(QStringLiteral("e.jpg"));
        QCOMPARE(house.finder.handedOver.value(loose), QByteArray("worker " + loose.toUtf8()));
    }

    void whatIsClickedMeanwhileDoesNotMoveTheImport()
    {
        QTemporaryDir dir;
        for (const char *name : {"one/a.jpg", "two/b.jpg", "c.jpg"})
            touch(dir.filePath(QLatin1String(name)));
        House house;
        house.view.folder = house.a;
        house.view.item = house.a;
        PhotoImport::Request request;
        request.paths << dir.filePath(QStringLiteral("one")) << dir.filePath(QStringLiteral("two"))
                      << dir.filePath(QStringLiteral("c.jpg"));
        const auto outcome = runImport(house, request, [&house](PhotoImport &) {
            house.view.folder = house.b;
            house.view.item = house.b;
            QVERIFY(house.a->folders().isEmpty()); // the navigator reads the tree: it changes in one turn
        });
        QCOMPARE(outcome.photosAdded, 3);
        QCOMPARE(house.a->folders().size(), 2);
        QVERIFY(house.b->folders().isEmpty() && house.b->photos().isEmpty());
        QCOMPARE(house.view.folder, house.a); // where the loose photo is
        QCOMPARE(house.view.selection.archive(), QStringLiteral("0"));
    }

    void whatWasSelectedStaysSelected()
    {
        QTemporaryDir dir;
        touch(dir.filePath(QStringLiteral("trip/a.jpg")));
        House house;
        PhotoImport::Request request;
        request.paths << dir.filePath(QStringLiteral("trip"));
        house.view.item = house.group;
        (void)runImport(house, request);
        QCOMPARE(house.view.item, house.group);
        QCOMPARE(house.group->folders().last()->name(), QStringLiteral("trip"));

        House bare;
        bare.group->folders().clear();
        const auto outcome = runImport(bare, request);
        QCOMPARE(bare.group->folders().size(), 1);
        QCOMPARE(bare.view.item, std::shared_ptr<PIGroup>(outcome.firstFolder));
        QCOMPARE(bare.group->folders().first()->parent(), bare.group);
    }

    void photosOfOneFileShareItsReference()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("a.jpg"));
        touch(path);
        House house;
        for (const auto &folder : {house.a, house.b}) {
            PhotoImport::Request request;
            request.paths << path;
            request.toFolder = folder;
            (void)runImport(house, request);
        }
        QCOMPARE(house.a->photos().first()->fileRef(), house.b->photos().first()->fileRef());
        QVERIFY(house.a->photos().first()->guid() != house.b->photos().first()->guid());
    }

    void wordsComeAlongAndGoWithTheirPhotos()
    {
        QTemporaryDir dir;
        for (const char *name : {"trip/w1.jpg", "trip/w2.jpg", "w3.jpg", "plain.jpg"})
            touch(dir.filePath(QLatin1String(name)));
        UndoHouse house;
        house.library.keywords().append(QStringLiteral("sea"));
        int told = 0;
        const auto observer =
            house.notifications.observe(kKeywordsNotification, [&](const NotificationObject &) { ++told; });
        PhotoImport::Request request;
        for (const char *name : {"trip", "w3.jpg", "plain.jpg"})
            request.paths << dir.filePath(QLatin1String(name));
        request.toFolder = house.a;
        request.readWords = &wordsOf;
        const QString before = house.text();
        // The words join the library's when their photos do.
        (void)runImport(house, house.undoable, request,
                        [&](PhotoImport &) { QCOMPARE(house.library.keywords().count(), 1); });
        const KeywordVocabulary &keywords = house.library.keywords();
        QCOMPARE(keywords.words(), (QStringList{QStringLiteral("sea"), QStringLiteral("\"old town\"")}));
        QCOMPARE(told, 1);
        const auto shown = [&](const PIFolder &folder) {
            QString text;
            for (const auto &photo : folder.photos())
                text += photo->caption() + u'|' + photo->keywordList(keywords) + u';';
            return text;
        };
        const QString words = QStringLiteral("Harbour|sea \"old town\";");
        QCOMPARE(shown(*house.a->folders().first()), words + words);
        QCOMPARE(shown(*house.a), words + QStringLiteral("|;"));

        const QString after = house.text();
        house.manager.undo();
        QCOMPARE(house.text(), before);
        house.manager.redo();
        QCOMPARE(house.text(), after);
        QCOMPARE(shown(*house.a), words + QStringLiteral("|;"));
    }

    void cancellingKeepsWhatWasTaken()
    {
        QTemporaryDir dir;
        for (int i = 0; i < 300; ++i)
            touch(dir.filePath(QStringLiteral("many/%1.jpg").arg(i)));
        House house;
        PhotoImport::Request request;
        request.paths << dir.filePath(QStringLiteral("many"));
        request.toFolder = house.a;
        int seen = 0;
        const auto outcome = runImport(house, request, [&](PhotoImport &running) {
            if (++seen == 100)
                running.cancel();
        });
        QVERIFY(outcome.scan.cancelled);
        QCOMPARE(outcome.photosAdded, 100);
        QCOMPARE(house.a->folders().first()->photos().size(), 100);
        QCOMPARE(house.recorder.asked.size(), 1);
    }

    void nothingUsableChangesNothing()
    {
        QTemporaryDir dir;
        touch(dir.filePath(QStringLiteral("notes.txt")));
        QDir().mkpath(dir.filePath(QStringLiteral("empty")));
        House house;
        PhotoImport::Request request;
        request.paths << dir.filePath(QStringLiteral("notes.txt")) << dir.filePath(QStringLiteral("empty"));
        request.toFolder = house.a;
        const auto outcome = runImport(house, request);
        QVERIFY(outcome.accepted);
        QCOMPARE(outcome.photosAdded, 0);
        QVERIFY(house.recorder.asked.isEmpty());
        QVERIFY(house.a->folders().isEmpty());
    }

    void aRefusalEndsTheImport()
    {
        QTemporaryDir dir;
        touch(dir.filePath(QStringLiteral("trip/w.jpg")));
        House house;
        house.recorder.refuses = true;
        PhotoImport::Request request;
        request.paths << dir.filePath(QStringLiteral("trip"));
        request.toFolder = house.a;
        request.readWords = &wordsOf;
        QVERIFY(!runImport(house, request).accepted);
        QVERIFY(house.a->folders().isEmpty());
        QVERIFY(house.library.keywords().isEmpty());
    }

    void anImportThatIsGoneTakesNothingMore()
    {
        QTemporaryDir dir;
        for (int i = 0; i < 100; ++i)
            touch(dir.filePath(QStringLiteral("many/%1.jpg").arg(i)));
        House house;
        PhotoImport::Request request;
        request.paths << dir.filePath(QStringLiteral("many"));
        request.toFolder = house.a;
        DispatchQueue queue(QStringLiteral("import"), 1);
        bool finished = false;
        {
            PhotoImport running(house.editor, queue, request);
            running.start({}, [&](const PhotoImport::Outcome &) { finished = true; });
        }
        queue.waitUntilIdle();
        QCoreApplication::processEvents();
        QVERIFY(!finished);
        QVERIFY(house.a->folders().isEmpty());
    }
};

REGISTER_TEST(TestPhotoImport)
#include "TestPhotoImport.moc"
