#include "../editing/House.h"
#include "TestRunner.h"

#include "AlertPresenter.h"
#include "FileBookmark.h"
#include "Housekeeping.h"
#include "ImportRunner.h"
#include "OrphanTableModel.h"
#include "PIOrphanDialog.h"
#include "UserDefaults.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

class TestHousekeeping : public QObject
{
    Q_OBJECT

    struct Alerts final : AlertPresenter
    {
        QStringList shown;
        Alerts() { AlertPresenter::install(this); }
        ~Alerts() override { AlertPresenter::install(nullptr); }
        int present(const Alert &alert) override
        {
            shown << alert.title + u'|' + alert.message;
            return 0;
        }
        void beep() override {}
    };

    /// A window over a library and a folder of pictures.
    struct Scene
    {
        QTemporaryDir dir;
        House house;
        Alerts alerts;
        QWidget window;
        UserDefaults defaults{dir.filePath(QStringLiteral("preferences.ini"))};
        ImportRunner importRunner{house.editor, defaults, window};
        Housekeeping housekeeping{house.editor, importRunner, window};

        Scene() { window.show(); }

        void put(const char *name, const QByteArray &content = {}) const
        {
            QDir().mkpath(QFileInfo(dir.filePath(QLatin1String(name))).path());
            QFile file(dir.filePath(QLatin1String(name)));
            QVERIFY(file.open(QFile::WriteOnly) && file.write(content) == content.size());
        }
        [[nodiscard]] PIOrphanDialog *dialog() const { return window.findChild<PIOrphanDialog *>(); }
        PIOrphanDialog &search()
        {
            housekeeping.findOrphansCore(dir.path());
            if (!QTest::qWaitFor([this] { return dialog() && dialog()->isVisible(); }, 30000))
                qFatal("no dialog");
            return *dialog();
        }
        [[nodiscard]] QStringList added() const
        {
            const auto &last = house.library.groups().last();
            QStringList names;
            if (last->groupType() == GroupType::Search && !last->folders().isEmpty())
                for (const auto &photo : last->folders().last()->photos())
                    names << QDir(dir.path()).relativeFilePath(photo->fileRef()->path());
            return names;
        }
    };

private Q_SLOTS:
    void tellsWhenThereAreNone()
    {
        Scene scene;
        scene.put("notes.txt");
        scene.housekeeping.findOrphansCore(scene.dir.path());
        QTRY_COMPARE(scene.alerts.shown.size(), 1);
        QCOMPARE(scene.alerts.shown[0],
                 QString(QStringLiteral("No orphan files found.|No unused photo files were found in \"") +
                         scene.dir.path() + QStringLiteral("\".")));
        QVERIFY(!scene.dialog());
    }

    void addsWhatIsTicked()
    {
        Scene scene;
        for (const char *name : {"b.jpg", "sub/a.jpg", "c.jpg"})
            scene.put(name);
        PIOrphanDialog &dialog = scene.search();
        auto &table = *dialog.findChild<QTreeView *>();
        QCOMPARE(table.model()->rowCount(), 3);
        QCOMPARE(table.model()->index(0, OrphanTableModel::Path).data().toString(), QStringLiteral("sub"));
        for (const int row : {0, 1})
            QVERIFY(table.model()->setData(table.model()->index(row, OrphanTableModel::Add), Qt::Checked,
                                           Qt::CheckStateRole));
        dialog.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
        QTRY_COMPARE(scene.added(), QStringList({QStringLiteral("sub/a.jpg"), QStringLiteral("b.jpg")}));
        QCOMPARE(scene.house.recorder.asked, QStringList(QStringLiteral("3/3/")));
        QVERIFY(scene.alerts.shown.isEmpty());
    }

    void makesNoFolderForFilesThatAreGone()
    {
        Scene scene;
        scene.put("a.jpg");
        PIOrphanDialog &dialog = scene.search();
        QVERIFY(QFile::remove(scene.dir.filePath(QStringLiteral("a.jpg"))));
        QSignalSpy running(&scene.importRunner, &ImportRunner::runningChanged);
        dialog.addAll();
        QTRY_COMPARE(running.count(), 2);
        QVERIFY(scene.house.recorder.asked.isEmpty());
        QCOMPARE(scene.house.library.groups().size(), 1);
        QTRY_COMPARE(scene.alerts.shown,
                     QStringList(QStringLiteral("Some files are gone.|1 file is no longer where it was found.")));
    }

    void rowsOnShowGetTheirPictures()
    {
        Scene scene;
        QImage image(80, 60, QImage::Format_RGB32);
        image.fill(Qt::red);
        for (int i = 0; i < 100; ++i)
            QVERIFY(image.save(scene.dir.filePath(QString::number(1000 + i) + QStringLiteral(".png"))));
        PIOrphanDialog &dialog = scene.search();
        auto &table = *dialog.findChild<QTreeView *>();
        const auto colour = [&table](int row) {
            const QVariant picture = table.model()->index(row, OrphanTableModel::Name).data(Qt::DecorationRole);
            const QImage shown = picture.value<QPixmap>().toImage();
            return shown.pixelColor(shown.rect().center());
        };
        QTRY_COMPARE(colour(0), QColor(Qt::red));
        QCOMPARE(colour(99).alpha(), 0);
        table.scrollToBottom();
        QTRY_COMPARE(colour(99), QColor(Qt::red));
        QCOMPARE(colour(50).alpha(), 0);
    }

    void theAltKeyTicksAll()
    {
        Scene scene;
        for (const char *name : {"a.jpg", "b.jpg", "c.jpg"})
            scene.put(name);
        PIOrphanDialog &dialog = scene.search();
        auto &table = *dialog.findChild<QTreeView *>();
        const QModelIndex box = table.model()->index(1, OrphanTableModel::Add);
        const QRect cell = table.visualRect(box);
        const QPoint place(cell.left() + 10, cell.center().y());
        QTest::mouseClick(table.viewport(), Qt::LeftButton, Qt::AltModifier, place);
        for (int row = 0; row < 3; ++row)
            QCOMPARE(table.model()->index(row, OrphanTableModel::Add).data(Qt::CheckStateRole).toInt(),
                     int(Qt::Checked));
        dialog.reject();
        QTRY_VERIFY(!scene.dialog());
        QVERIFY(scene.house.recorder.asked.isEmpty());
        QVERIFY(scene.added().isEmpty());
    }

    void givesAMissingPhotoItsFileBack()
    {
        Scene scene;
        scene.put("here.jpg", "a photo");
        const QString path = scene.dir.filePath(QStringLiteral("here.jpg"));
        const auto photo = std::make_shared<PIPhoto>(scene.house.library.fileRefs().fileRefForPath(path));
        scene.house.a->photos() << photo;
        scene.house.finder.bookmarks.insert(photo->fileRef()->guid(), FileBookmark::create(path).value_or("none"));
        QVERIFY(QDir(scene.dir.path()).rename(QStringLiteral("here.jpg"), QStringLiteral("there.jpg")));
        (void)photo->fileRef()->verify();
        QVERIFY(photo->isFileLost());

        PIOrphanDialog &dialog = scene.search();
        auto &table = *dialog.findChild<QTreeView *>();
        if (table.isColumnHidden(OrphanTableModel::Missing))
            QSKIP("there are no bookmarks here");
        table.setCurrentIndex(table.model()->index(0, OrphanTableModel::Name));
        QVERIFY(dialog.findChild<QCheckBox *>()->isVisible() && dialog.findChild<QCheckBox *>()->isChecked());
        dialog.addAll();
        QTRY_VERIFY(!photo->isFileLost());
        const QString newPath = scene.dir.filePath(QStringLiteral("there.jpg"));
        QCOMPARE(photo->fileRef()->path(), newPath);
        QCOMPARE(scene.house.finder.handedOver.value(newPath), "worker " + newPath.toUtf8());
        QVERIFY(scene.added().isEmpty());
    }

    void tellsWhatClearingDeleted()
    {
        Scene scene;
        const QDir cache(scene.house.library.thumbnails().cacheFolder());
        QFile thumbnail(cache.filePath(QStringLiteral("A.jpg")));
        QVERIFY(thumbnail.open(QFile::WriteOnly) && thumbnail.write(QByteArray(12000, 'x')) == 12000);
        thumbnail.close();
        scene.housekeeping.clearCaches();
        QTRY_COMPARE(scene.alerts.shown,
                     QStringList(QStringLiteral("Cache cleared.|1 item deleted. 12.00 KB reclaimed.")));
        QVERIFY(!thumbnail.exists());
    }
};

REGISTER_TEST(TestHousekeeping)
#include "TestHousekeeping.moc"
