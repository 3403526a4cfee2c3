#include "TestRunner.h"

#include "AlertPresenter.h"
#include "CollapsibleSection.h"
#include "FileDates.h"
#include "FileFinder.h"
#include "LibraryNotifications.h"
#include "PIDetailController.h"
#include "PhotoLibrary.h"
#include "UserDefaults.h"

#include <QDateTimeEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

class TestDetailFile : public QObject
{
    Q_OBJECT

    /// A detail pane over one photo of one file.
    struct Pane
    {
        QTemporaryDir dir;
        NotificationCenter notifications;
        PathFileFinder finder;
        PhotoLibrary library{dir.path(), finder, notifications};
        UserDefaults defaults{dir.filePath(QStringLiteral("preferences.ini"))};
        QWidget window;
        std::unique_ptr<PIDetailController> controller;
        QString path = dir.filePath(QStringLiteral("a.png"));
        std::shared_ptr<PIPhoto> photo;

        Pane()
        {
            QImage image(64, 48, QImage::Format_RGB32);
            image.fill(Qt::red);
            image.save(path);
            photo = std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path));
            controller = std::make_unique<PIDetailController>(
                library, defaults, [] { return std::shared_ptr<PIFolder>(); }, &window);
            window.show();
            notifications.post(kSelectNotification, photo);
        }

        template<typename Widget>
        Widget &child(const char *accessibleName)
        {
            for (Widget *widget : window.findChildren<Widget *>()) {
                if (widget->accessibleName() == QLatin1String(accessibleName))
                    return *widget;
            }
            qFatal("no such widget");
        }
    };

private Q_SLOTS:
    void typingANameRenamesTheFile()
    {
        Pane pane;
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
        Pane pane;
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
        Pane pane;
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
        Pane pane;
        pane.notifications.post(kSelectNotification, std::make_shared<PIPhoto>());
        const auto buttons = pane.window.findChildren<QPushButton *>();
        QVERIFY(std::none_of(buttons.begin(), buttons.end(), [](const auto *b) { return b->isVisible(); }));
    }

    void aLostFileCanOnlyBeSoughtFor()
    {
        Pane pane;
        QVERIFY(QFile::remove(pane.path));
        (void)pane.photo->fileRef()->verify();
        pane.notifications.post(kSelectNotification, pane.photo);
        QVERIFY(pane.child<QLineEdit>("File name").isReadOnly());
        QVERIFY(!pane.child<QDateTimeEdit>("File date").isEnabled());
        QCOMPARE(pane.child<QDateTimeEdit>("File date").text(), QStringLiteral("Unknown"));
        const auto buttons = pane.window.findChildren<QPushButton *>();
        const auto shown = std::count_if(buttons.begin(), buttons.end(), [](const auto *b) { return b->isVisible(); });
        QCOMPARE(shown, 1); // no other file is lost, so there is no tree to be found
    }

    void sectionsStayAsTheyWereLeft()
    {
        Pane pane;
        QTest::mouseClick(&pane.child<QToolButton>("File"), Qt::LeftButton);
        QVERIFY(!pane.window.findChild<CollapsibleSection *>()->isOpen());
        pane.controller.reset();
        QCOMPARE(pane.defaults.dictionary(QStringLiteral("hmphoto.detailOpen")).value(QStringLiteral("DetailFile")),
                 QVariant(false));
    }
};

REGISTER_TEST(TestDetailFile)
#include "TestDetailFile.moc"
