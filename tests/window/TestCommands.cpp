#include "TestRunner.h"
#include "WindowDesk.h"

#include "CameraFile.h"
#include "DragData.h"
#include "FileDates.h"
#include "LibraryFile.h"
#include "LibraryNotifications.h"
#include "NavigatorModel.h"
#include "NotedFile.h"
#include "PIDetailController.h"
#include "PIDetailFileVC.h"
#include "PIFolder.h"
#include "PIImageView.h"
#include "ThumbnailGridView.h"

#include <QApplication>
#include <QClipboard>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QProgressDialog>
#include <QSemaphore>
#include <QTest>
#include <QTimer>

namespace {

/// A window that shows a folder of photos of real files.
struct PhotoDesk : WindowDesk
{
    std::shared_ptr<PIFolder> folder = group()->folders().first();

    explicit PhotoDesk(int count)
    {
        LibraryFile::registerTags();
        for (int number = 0; number < count; ++number) {
            const QString path = makePicture(QStringLiteral("%1.png").arg(number));
            folder->photos().append(std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path)));
        }
        controller->resetList(folder);
        controller->thumbnailView().setFocus();
        (void)QTest::qWaitForWindowActive(&controller->window());
    }

    QAction &action(Command command) const { return *controller->actions().action(command); }
    void select(const QString &positions) const { controller->selectIndexes(IndexSet::fromArchive(positions)); }
    QString selected() const { return controller->selectedIndexes().archive(); }
    /// Drops what is dragged onto a point of a view; false when the view refuses it.
    static bool drop(QAbstractScrollArea &view, QPoint at, const QMimeData &data, Qt::KeyboardModifiers modifiers = {})
    {
        const auto actions = Qt::CopyAction | Qt::MoveAction;
        QDragEnterEvent enter(at, actions, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(view.viewport(), &enter);
        QDropEvent drop(at, actions, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(view.viewport(), &drop);
        return enter.isAccepted() && drop.isAccepted();
    }
    [[nodiscard]] QPoint placeOf(const PIGroup &item) const
    {
        const auto &model = *static_cast<const NavigatorModel *>(outline().model());
        return outline().visualRect(model.indexOf(&item)).center();
    }
    /// The file names of a folder's photos, without extension.
    static QString names(const PIFolder &shown)
    {
        QString text;
        for (const auto &photo : shown.photos())
            text += QFileInfo(photo->fileRef()->path()).baseName();
        return text;
    }
};

}

class TestCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void enablingFollowsSelectionAndFocus()
    {
        PhotoDesk desk(3);
        desk.select({});
        for (const Command command : {Command::Cut, Command::Copy, Command::Trash, Command::ToggleMark, Command::Reveal,
                                      Command::Delete, Command::NextPhoto, Command::Undo})
            QVERIFY(!desk.action(command).isEnabled());
        desk.select(QStringLiteral("0"));
        for (const Command command : {Command::Cut, Command::Copy, Command::Trash, Command::ToggleMark, Command::Reveal,
                                      Command::Delete, Command::NextPhoto, Command::MoveDown})
            QVERIFY(desk.action(command).isEnabled());
        QVERIFY(!desk.action(Command::MoveUp).isEnabled());
        QCOMPARE(desk.action(Command::Delete).text(), QStringLiteral("Delete Photo"));

        desk.outline().setFocus();
        QCOMPARE(desk.action(Command::Delete).text(), QStringLiteral("Delete Folder"));
        QVERIFY(!desk.action(Command::MoveDown).isEnabled());
        desk.trigger(Command::ToggleMark);
        QCOMPARE(desk.action(Command::Undo).text(), QStringLiteral("Undo Sort Folder"));
        QVERIFY(desk.action(Command::Save).isEnabled());
    }

    void photosTravelThroughTheClipboard()
    {
        PhotoDesk desk(3);
        const auto other = desk.folder->makeNewFolder();
        desk.select(QStringLiteral("0"));
        desk.trigger(Command::Copy);
        const auto clipboard = [] { return QGuiApplication::clipboard()->mimeData(); };
        QVERIFY(clipboard()->hasUrls());
        QTRY_VERIFY(clipboard()->hasFormat(QStringLiteral("image/png")));
        QVERIFY(clipboard()->hasFormat(QStringLiteral("image/tiff")));
        QCOMPARE(QImage::fromData(clipboard()->data(QStringLiteral("image/png"))).size(), QSize(64, 48));

        desk.select(QStringLiteral("1-2"));
        desk.trigger(Command::Cut);
        QCOMPARE(PhotoDesk::names(*desk.folder), QStringLiteral("0"));
        desk.controller->resetList(other);
        QVERIFY(desk.action(Command::Paste).isEnabled());
        desk.trigger(Command::Paste);
        QCOMPARE(PhotoDesk::names(*other), QStringLiteral("12"));
        QCOMPARE(desk.selected(), QStringLiteral("0-1"));
        desk.trigger(Command::Undo);
        desk.trigger(Command::Undo);
        QCOMPARE(PhotoDesk::names(*desk.folder), QStringLiteral("012"));
        QVERIFY(other->photos().isEmpty());
        QVERIFY(!desk.library.isDirty());
        QGuiApplication::clipboard()->clear();
        QTRY_VERIFY(!desk.action(Command::Paste).isEnabled());
    }

    void wordsOfFilesAreTakenOverWhenThatIsWanted()
    {
        PhotoDesk desk(1);
        const QString path = desk.dir.filePath(QStringLiteral("worded.jpg"));
        QFile file(path);
        const QByteArray packet = NotedFile::packet(NotedFile::inEveryLanguage("Harbour"), {"old town"});
        QVERIFY(file.open(QFile::WriteOnly));
        QVERIFY(file.write(NotedFile::withPacket(CameraFile::jpeg(Qt::red, {64, 48}), packet)) > 0);
        file.close();
        const auto photos = [&desk]() -> PIGroup::PhotoList & { return desk.folder->photos(); };
        QAction *takeOver = desk.controller->actions().action(Command::TakeOverWords);
        QVERIFY(takeOver->isChecked());
        QVERIFY(desk.controller->openFiles({path}, desk.folder, kNotFound, UndoName::AddPhoto));
        QTRY_COMPARE(photos().size(), 2);
        QCOMPARE(photos().last()->caption(), QStringLiteral("Harbour"));
        QCOMPARE(photos().last()->keywordList(desk.library.keywords()), QStringLiteral("\"old town\""));

        desk.trigger(Command::TakeOverWords);
        QVERIFY(!takeOver->isChecked());
        QVERIFY(desk.controller->openFiles({path}, desk.folder, kNotFound, UndoName::AddPhoto));
        QTRY_COMPARE(photos().size(), 3);
        QCOMPARE(photos().last()->caption(), QString());
        QVERIFY(photos().last()->keywordIndexes().isEmpty());

        // A photo that is copied keeps the words it has, whatever its file tells.
        desk.trigger(Command::TakeOverWords);
        photos().last()->setCaption(QStringLiteral("own"));
        desk.select(QStringLiteral("2"));
        desk.trigger(Command::Copy);
        desk.trigger(Command::Paste);
        QTRY_COMPARE(photos().size(), 4);
        QCOMPARE(photos().last()->caption(), QStringLiteral("own"));
        QVERIFY(photos().last()->keywordIndexes().isEmpty());
    }

    void steppingWalksTheFolderOrTheSelection()
    {
        PhotoDesk desk(4);
        const auto shown = [&] { return QFileInfo(desk.controller->detailController().photo()->fileRef()->path()); };
        desk.select(QStringLiteral("3"));
        desk.trigger(Command::NextPhoto);
        QCOMPARE(desk.selected(), QStringLiteral("0"));
        QCOMPARE(shown().baseName(), QStringLiteral("0"));
        desk.select(QStringLiteral("1 3"));
        desk.trigger(Command::NextPhoto);
        QCOMPARE(desk.selected(), QStringLiteral("1 3"));
        QCOMPARE(shown().baseName(), QStringLiteral("3"));
        desk.trigger(Command::NextPhoto);
        QCOMPARE(shown().baseName(), QStringLiteral("1"));
    }

    void aNameBeingTypedIsTakenBeforeACommand()
    {
        PhotoDesk desk(1);
        desk.trigger(Command::NewFolder);
        const auto first = desk.folder->folders().last();
        auto *editor = desk.outline().findChild<QLineEdit *>();
        QVERIFY(editor);
        QTest::keyClicks(editor, QStringLiteral("Summer"));
        desk.trigger(Command::NewFolder);
        QCOMPARE(first->name(), QStringLiteral("Summer"));

        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        editor = desk.outline().viewport()->findChild<QLineEdit *>();
        QVERIFY(editor);
        QTest::keyClicks(editor, QStringLiteral("Winter"));
        desk.trigger(Command::Undo);
        QVERIFY(desk.action(Command::Redo).text().endsWith(QStringLiteral("Rename Folder")));
        QCOMPARE(first->name(), QStringLiteral("Summer"));
    }

    void aFileNameBeingTypedIsTakenWhenAnotherWindowIsUsed()
    {
        PhotoDesk desk(1);
        auto *name =
            desk.controller->detailController().view()->findChild<PIDetailFileVC *>()->findChild<QLineEdit *>();
        QVERIFY(name);
        name->setFocus();
        name->selectAll();
        QTest::keyClicks(name, QStringLiteral("lake.png"));
        Q_EMIT desk.controller->window().didResignKey();
        QVERIFY(QFile::exists(desk.dir.filePath(QStringLiteral("lake.png"))));
        QVERIFY(desk.controller->thumbnailView().hasFocus());
    }

    void aContextMenuMeansItsPane()
    {
        PhotoDesk desk(3);
        desk.select(QStringLiteral("0-1"));
        const auto menuTitle = [&](QWidget &widget) {
            QString title;
            QTimer::singleShot(0, &widget, [&] {
                title = desk.action(Command::Delete).text();
                QApplication::activePopupWidget()->close();
            });
            Q_EMIT widget.customContextMenuRequested(QPoint(5, 5));
            return title;
        };
        QCOMPARE(menuTitle(desk.outline()), QStringLiteral("Delete Folder"));
        QCOMPARE(menuTitle(desk.controller->thumbnailView()), QStringLiteral("Delete Photo"));
        QCOMPARE(desk.action(Command::Delete).text(), QStringLiteral("Delete Photo"));

        desk.outline().setFocus();
        auto &large = desk.controller->detailController().photoView();
        QTimer::singleShot(0, &large, [&] {
            desk.trigger(Command::Delete); // the one shown large, alone
            QApplication::activePopupWidget()->close();
        });
        Q_EMIT large.customContextMenuRequested(QPoint(5, 5));
        QCOMPARE(PhotoDesk::names(*desk.folder), QStringLiteral("12"));
    }

    void dropsArrangePhotosAndFolders()
    {
        PhotoDesk desk(3);
        const auto other = desk.group()->makeNewFolder();
        desk.controller->resetList(desk.folder);
        const auto dragged = [&](qsizetype index) {
            return DragData::forPhotos({desk.folder->photos().at(index)}, DragData::Transfer::Move);
        };
        QVERIFY(PhotoDesk::drop(desk.outline(), desk.placeOf(*other), *dragged(1)));
        QCOMPARE(PhotoDesk::names(*desk.folder) + u'/' + PhotoDesk::names(*other), QStringLiteral("02/1"));
        QCOMPARE(desk.controller->shownFolder(), other);
        desk.trigger(Command::Undo);
        desk.controller->resetList(desk.folder);
        QVERIFY(PhotoDesk::drop(desk.outline(), desk.placeOf(*other), *dragged(1), Qt::ControlModifier));
        QCOMPARE(PhotoDesk::names(*desk.folder) + u'/' + PhotoDesk::names(*other), QStringLiteral("012/1"));

        desk.controller->resetList(desk.folder);
        QVERIFY(PhotoDesk::drop(desk.controller->thumbnailView(), QPoint(6, 30), *dragged(2)));
        QCOMPARE(PhotoDesk::names(*desk.folder), QStringLiteral("201"));
        const QPoint below(20, desk.outline().viewport()->height() - 5);
        QVERIFY(!PhotoDesk::drop(desk.outline(), below, *dragged(0)));

        QVERIFY(PhotoDesk::drop(desk.outline(), desk.placeOf(*other), *DragData::forItem(desk.folder)));
        QCOMPARE(other->folders().first(), desk.folder);
        desk.controller->resetList(desk.folder);
        // Into itself it would be lost.
        (void)PhotoDesk::drop(desk.outline(), desk.placeOf(*desk.folder), *DragData::forItem(other));
        QCOMPARE(desk.group()->folders().size(), 1);
        QCOMPARE(other->parent(), desk.group());
    }

    void aPhotoIsShownWhereverItIs()
    {
        PhotoDesk desk(3);
        const auto photo = desk.folder->photos().at(1);
        desk.controller->resetList(desk.folder->makeNewFolder());
        desk.notifications.post(kForcePhotoNotification, photo);
        QCOMPARE(desk.controller->shownFolder(), desk.folder);
        QCOMPARE(desk.selected(), QStringLiteral("1"));
        QCOMPARE(desk.controller->detailController().photo(), photo);
    }

    void foldersAreSortedByDate()
    {
        PhotoDesk desk(3);
        for (int i = 0; i < 3; ++i) // the last one first
            QVERIFY(FileDates::setDate(desk.dir.filePath(QStringLiteral("%1.png").arg(i)), 1000 - i));
        const auto answers = std::make_shared<QSemaphore>();
        desk.library.fileFacts().setReader([answers](const QString &path) {
            answers->acquire();
            return FileAttributes::of(path);
        });
        QTRY_VERIFY(desk.folder->photos().first()->fileRef()->areAttributesKnown()); // of the current one
        desk.folder->photos().first()->fileRef()->forgetFacts();
        desk.trigger(Command::SortByDate);
        auto *progress = desk.controller->window().findChild<QProgressDialog *>();
        QVERIFY(progress);
        Q_EMIT progress->canceled(); // a disk does not answer
        answers->release(1000);
        QTRY_VERIFY(desk.folder->photos().last()->fileRef()->areAttributesKnown());
        QCOMPARE(PhotoDesk::names(*desk.folder), QStringLiteral("012"));
        desk.trigger(Command::SortByDate);
        QTRY_COMPARE(PhotoDesk::names(*desk.folder), QStringLiteral("210"));
    }

    void deletingAFolderAsksAndCanBeUndone()
    {
        PhotoDesk desk(2);
        FakeAlerts alerts;
        const auto inside = desk.folder->makeNewFolder();
        desk.controller->resetList(inside);
        desk.controller->resetList(desk.folder);
        desk.outline().setFocus();
        alerts.answer = 1;
        desk.trigger(Command::Delete);
        QCOMPARE(alerts.said, QStringList(QStringLiteral("Delete folder?")));
        QCOMPARE(desk.group()->folders().size(), 1);
        alerts.answer = 0;
        desk.trigger(Command::Delete);
        QVERIFY(desk.group()->folders().isEmpty());
        QVERIFY(!desk.controller->shownFolder());
        QVERIFY(!desk.action(Command::Back).isEnabled());
        QVERIFY(QFile::exists(desk.dir.filePath(QStringLiteral("0.png"))));
        desk.trigger(Command::Undo);
        QCOMPARE(PhotoDesk::names(*desk.group()->folders().first()), QStringLiteral("01"));
        QCOMPARE(desk.group()->folders().first()->folders().size(), 1);
    }

    void trashedFilesLeaveTheDisk()
    {
        PhotoDesk desk(2);
        FakeAlerts alerts;
        desk.select(QStringLiteral("0"));
        desk.trigger(Command::Trash);
        QCOMPARE(alerts.said, QStringList(QStringLiteral("Trash 1 photo?")));
        QCOMPARE(PhotoDesk::names(*desk.folder), QStringLiteral("1"));
        QTRY_VERIFY(!QFile::exists(desk.dir.filePath(QStringLiteral("0.png"))));
        QVERIFY(!desk.action(Command::Undo).isEnabled());
        QVERIFY(desk.library.isDirty());
    }
};

REGISTER_TEST(TestCommands)
#include "TestCommands.moc"
