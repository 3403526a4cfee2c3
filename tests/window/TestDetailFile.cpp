#include "TestRunner.h"

#include "DetailScene.h"

#include "CameraFacts.h"
#include "CameraFactsText.h"
#include "CameraFile.h"
#include "FakeAlerts.h"
#include "FileDates.h"
#include "FileNotifications.h"
#include "FoundFileDialog.h"
#include "NotedFile.h"

#include <QAbstractProxyModel>
#include <QDateTimeEdit>
#include <QDir>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QScopeGuard>
#include <QSemaphore>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

class TestDetailFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void typingANameRenamesTheFile()
    {
        DetailScene pane;
        auto &name = pane.child<QLineEdit>("File name");
        QCOMPARE(name.text(), QStringLiteral("a.png"));
        name.selectAll();
        QTest::keyClicks(&name, QStringLiteral("b.png"));
        QTest::keyClick(&name, Qt::Key_Return);
        QCOMPARE(pane.photo->fileRef()->path(), pane.dir.filePath(QStringLiteral("b.png")));
        QVERIFY(QFile::exists(pane.dir.filePath(QStringLiteral("b.png"))));

        name.clear();
        QTest::keyClick(&name, Qt::Key_Return);
        QCOMPARE(name.text(), QStringLiteral("b.png"));
    }

    void onlyAnEditedDateIsWritten()
    {
        DetailScene pane;
        const qint64 withSeconds = 1000000037;
        QVERIFY(FileDates::setDate(pane.path, withSeconds));
        auto &date = pane.child<QDateTimeEdit>("File date");
        pane.showAnew();
        QTRY_COMPARE(date.dateTime().toSecsSinceEpoch(), withSeconds);
        QTest::keyClick(&date, Qt::Key_Return);
        QCOMPARE(FileDates::dateOf(pane.path), withSeconds);
        date.setDateTime(date.dateTime().addDays(1));
        QTest::keyClick(&date, Qt::Key_Return);
        QCOMPARE(FileDates::dateOf(pane.path), withSeconds + 24 * 60 * 60);
    }

    void theHourThatComesTwiceIsLeftAlone()
    {
        const QByteArray zone = qgetenv("TZ");
        const auto restore = qScopeGuard([&] { zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone); });
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        DetailScene pane;
        auto &date = pane.child<QDateTimeEdit>("File date");
        constexpr qint64 kSecondTime = 1698543000; // half past two, in October of 2023
        for (const qint64 seconds : {kSecondTime - 3600, kSecondTime}) {
            QVERIFY(FileDates::setDate(pane.path, seconds));
            pane.showAnew();
            QTRY_COMPARE(pane.photo->fileRef()->knownCreationTime(), double(seconds));
            QCOMPARE(date.time(), QTime(2, 30));
            QTest::keyClick(&date, Qt::Key_Return);
            QCOMPARE(FileDates::dateOf(pane.path), seconds);
        }
    }

    void aDiskThatDoesNotAnswerLeavesTheFactsUnknown()
    {
        DetailScene pane;
        const auto answers = std::make_shared<QSemaphore>();
        pane.library.fileFacts().setReader([answers](const QString &) {
            answers->acquire();
            return FileAttributes{12000, 1000000000};
        });
        auto &date = pane.child<QDateTimeEdit>("File date");
        QTRY_VERIFY(pane.photo->fileRef()->areAttributesKnown()); // read before
        pane.showAnew();
        QCOMPARE(date.text(), QStringLiteral("Unknown"));
        QVERIFY(!pane.texts().contains(QStringLiteral("12.00 KB")));
        pane.window.activateWindow();
        date.setFocus(); // does not keep it from being filled
        answers->release();
        QTRY_VERIFY(pane.texts().contains(QStringLiteral("12.00 KB")));
        QCOMPARE(date.dateTime().toSecsSinceEpoch(), 1000000000);
    }

    void whatTheFileTellsOfTheShotIsShown()
    {
        DetailScene pane;
        const auto shown = [&pane] {
            QStringList rows;
            for (const auto *label : pane.window.findChildren<QLabel *>()) {
                if (label->isVisible() && label->accessibleName().contains(QLatin1String(": ")))
                    rows << label->accessibleName();
            }
            return rows;
        };
        QCOMPARE(shown(), QStringList());

        using namespace NotedFile;
        const QByteArray jpeg = CameraFile::jpeg(Qt::red, {64, 48});
        const auto write = [&pane](const QByteArray &bytes) {
            QFile file(pane.path);
            return file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size();
        };
        QVERIFY(write(withExif(jpeg, cameraNotes())));
        pane.notifications.post(kFileChangeNotification, pane.photo->fileRef());
        pane.select(pane.photo);
        const QString moment =
            QLocale().toString(QDateTime({2024, 5, 31}, {12, 34, 56}, Qt::UTC), QLocale::ShortFormat);
        const QStringList all{QStringLiteral("Taken: %1 (UTC+02:00)").arg(moment), QStringLiteral("Camera: Norvik D5"),
                              QStringLiteral("Lens: Norvik 85mm F1.8"),
                              QStringLiteral("Exposure: 1/250 s · f/2.8 · ISO 400 · 85 mm")};
        QTRY_COMPARE(shown(), all);

        pane.select(pane.other); // it has no file
        QCOMPARE(shown(), QStringList());
        pane.select(pane.photo);
        QTRY_COMPARE(shown(), all);

        QVERIFY(write(withExif(jpeg, QByteArray("MM\0*\0\0\0\x08", 8) + directory({text(0x0110, "<b>X1")}, 8))));
        pane.notifications.post(kFileChangeNotification, pane.photo->fileRef());
        pane.select(pane.photo);
        QTRY_COMPARE(shown(), QStringList(QStringLiteral("Camera: <b>X1")));
    }

    void exposuresReadAsOnCameras()
    {
        CameraFacts facts;
        QCOMPARE(exposureText(facts), QString());
        QCOMPARE(takenText(facts), QString());
        facts.aperture = 0.95;
        facts.focalLength = 4.25;
        QCOMPARE(exposureText(facts), QStringLiteral("f/0.95 · 4.25 mm"));
        for (const auto &[seconds, text] : std::initializer_list<std::pair<double, const char *>>{
                 {1.0 / 8000, "1/8000 s"}, {1.0 / 3.3333, "0.3 s"}, {0.25, "1/4 s"}, {2.5, "2.5 s"}, {300, "300 s"}}) {
            CameraFacts exposure;
            exposure.exposureTime = seconds;
            QCOMPARE(exposureText(exposure), QLatin1String(text));
        }
        facts.taken = QDateTime({2024, 5, 31}, {2, 30}, Qt::UTC);
        facts.secondsFromUtc = -(3 * 60 + 30) * 60;
        QVERIFY(takenText(facts).endsWith(QStringLiteral("(UTC−03:30)")));
    }

    void aNameThatCannotBeGivenIsTold()
    {
        DetailScene pane;
        FakeAlerts alerts;
        auto &name = pane.child<QLineEdit>("File name");
        name.selectAll();
        QTest::keyClicks(&name, QStringLiteral("sub/b.png"));
        QTest::keyClick(&name, Qt::Key_Return);
        QCOMPARE(alerts.said, QStringList(QStringLiteral("Rename failed.")));
        QCOMPARE(alerts.messages, QStringList(QStringLiteral("The file \"a.png\" could not be renamed. A file cannot "
                                                             "have this name.")));
        QCOMPARE(name.text(), QStringLiteral("a.png"));
        QVERIFY(QFile::exists(pane.path));
    }

    void onlyAFileOfExactlyThatNameCanBeShown()
    {
        QTemporaryDir dir;
        FakeAlerts alerts;
        const QString other = dir.filePath(QStringLiteral("IMG_1.JPG"));
        const QString wanted = dir.filePath(QStringLiteral("sub/IMG_1.jpg"));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("sub")));
        QVERIFY(QFile(other).open(QFile::WriteOnly) && QFile(wanted).open(QFile::WriteOnly));
        QWidget window;
        window.show();
        QStringList offered;
        QTimer::singleShot(0, &window, [&] {
            auto &dialog = *window.findChild<QFileDialog *>();
            const auto *shown = qobject_cast<QAbstractProxyModel *>(dialog.proxyModel());
            const auto *files = qobject_cast<QFileSystemModel *>(shown->sourceModel());
            (void)QTest::qWaitFor([&] {
                return files->index(other).isValid() &&
                       shown->rowCount(shown->mapFromSource(files->index(dir.path()))) == 2;
            });
            for (const QString &path : {other, dir.filePath(QStringLiteral("sub")), wanted})
                if (shown->flags(shown->mapFromSource(files->index(path))) & Qt::ItemIsEnabled)
                    offered << path;
            for (const QString &path : {other, wanted}) {
                dialog.findChild<QLineEdit *>()->setText(path);
                QMetaObject::invokeMethod(&dialog, "accept");
            }
            if (dialog.isVisible())
                dialog.reject();
        });
        QCOMPARE(askForFileNamed(QStringLiteral("IMG_1.jpg"), dir.path(), window), wanted);
        QCOMPARE(alerts.said, QStringList(QStringLiteral("This is another file.")));
        QVERIFY(!offered.contains(other));
        QVERIFY(offered.contains(dir.filePath(QStringLiteral("sub"))));
    }

    void whatIsTypedStaysAndTheWheelChangesNothing()
    {
        DetailScene pane;
        auto &name = pane.child<QLineEdit>("File name");
        pane.window.activateWindow();
        name.setFocus();
        QTRY_VERIFY(name.hasFocus());
        QTest::keyClicks(&name, QStringLiteral("x"));
        const QString typed = name.text();
        pane.notifications.post(kThumbnailNotification, pane.photo);
        QCOMPARE(name.text(), typed);

        auto &date = pane.child<QDateTimeEdit>("File date");
        const QDateTime before = date.dateTime();
        QWheelEvent wheel(QPointF(5, 5), date.mapToGlobal(QPointF(5, 5)), {}, {0, 240}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&date, &wheel);
        QCOMPARE(date.dateTime(), before);
    }

    void aPhotoWithoutAFileOffersNothing()
    {
        DetailScene pane;
        pane.notifications.post(kSelectNotification, std::make_shared<PIPhoto>());
        QCOMPARE(pane.offeredButtons(), QStringList());
    }

    void aLostFileCanOnlyBeSoughtFor()
    {
        DetailScene pane;
        QVERIFY(QFile::remove(pane.path));
        (void)pane.photo->fileRef()->verify();
        pane.notifications.post(kSelectNotification, pane.photo);
        QVERIFY(pane.child<QLineEdit>("File name").isReadOnly());
        QVERIFY(!pane.child<QDateTimeEdit>("File date").isEnabled());
        QCOMPARE(pane.child<QDateTimeEdit>("File date").text(), QStringLiteral("Unknown"));
        // No other file is lost, so there is no tree to be found.
        const QStringList alone{QStringLiteral("Find File…")};
        QCOMPARE(pane.offeredButtons(), alone);

        const auto gone = pane.library.fileRefs().fileRefForPath(pane.dir.filePath(QStringLiteral("gone.png")));
        const auto group = std::make_shared<PIGroup>(QStringLiteral("G"));
        group->makeNewFolder()->photos() << pane.photo << std::make_shared<PIPhoto>(gone);
        pane.library.groups() << group;
        for (const bool away : {false, true}) { // a volume may never come back
            pane.photo->fileRef()->setVolumeAway(away);
            gone->setVolumeAway(away);
            pane.notifications.post(kSelectNotification, pane.photo);
            QCOMPARE(pane.offeredButtons(), alone);
            QTRY_COMPARE(pane.offeredButtons(), alone + QStringList{QStringLiteral("They Moved To…")});
        }
    }
};

REGISTER_TEST(TestDetailFile)
#include "TestDetailFile.moc"
