#include "TestRunner.h"

#include "DetailScene.h"

#include "AlertPresenter.h"
#include "FileDates.h"

#include <QDateTimeEdit>
#include <QLineEdit>
#include <QTest>
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
        pane.photo->fileRef()->setCreationTime(0);
        pane.notifications.post(kSelectNotification, pane.photo);
        auto &date = pane.child<QDateTimeEdit>("File date");
        QTest::keyClick(&date, Qt::Key_Return);
        QCOMPARE(FileDates::dateOf(pane.path), withSeconds);
        date.setDateTime(date.dateTime().addDays(1));
        QTest::keyClick(&date, Qt::Key_Return);
        QCOMPARE(FileDates::dateOf(pane.path), withSeconds + 24 * 60 * 60);
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
