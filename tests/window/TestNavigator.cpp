#include "TestRunner.h"
#include "WindowDesk.h"

#include "FolderHistory.h"
#include "LibraryFile.h"
#include "LibraryNotifications.h"
#include "NavigatorModel.h"
#include "PIDetailController.h"
#include "ThumbnailGridView.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QTest>
#include <QUrl>
#include <QWindow>

class TestNavigator : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void historyKeepsForwardUntilANewVisit()
    {
        const auto a = std::make_shared<PIFolder>(QStringLiteral("a"));
        const auto b = std::make_shared<PIFolder>(QStringLiteral("b"));
        const auto c = std::make_shared<PIFolder>(QStringLiteral("c"));
        FolderHistory history;
        QVERIFY(!history.canGoBack());
        for (const auto &folder : {a, b, b, c})
            history.addFolderToNavigator(folder);
        QCOMPARE(history.goBack(), b);
        QCOMPARE(history.goBack(), a);
        QVERIFY(!history.goBack());
        QCOMPARE(history.goForward(), b);
        QVERIFY(history.canGoForward());
        history.addFolderToNavigator(c);
        QVERIFY(!history.canGoForward());
        QCOMPARE(history.goBack(), b);
    }

    void historyForgetsADeletedFolderWithAllBeneathIt()
    {
        const auto a = std::make_shared<PIFolder>(QStringLiteral("a"));
        const auto b = std::make_shared<PIFolder>(QStringLiteral("b"));
        const auto inside = b->makeNewFolder();
        FolderHistory history;
        for (const auto &folder : {a, b, a, inside, a})
            history.addFolderToNavigator(folder);
        history.deleteFolderFromNavigator(b);
        QVERIFY(!history.canGoBack()); // the neighbours have become one
    }

    void theModelFollowsTheLibrary()
    {
        WindowDesk desk;
        NavigatorModel model(desk.library, desk.controller->editor());
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        const auto folder = desk.group()->folders().first();
        const auto nested = folder->makeNewFolder();
        nested->photos() << std::make_shared<PIPhoto>() << std::make_shared<PIPhoto>();
        model.reset();

        const QModelIndex index = model.indexOf(nested.get());
        QCOMPARE(model.itemAt(index), std::shared_ptr<PIGroup>(nested));
        QCOMPARE(model.itemAt(index.parent()), std::shared_ptr<PIGroup>(folder));
        QCOMPARE(index.siblingAtColumn(NavigatorModel::CountColumn).data().toString(), QStringLiteral("2"));
        const QModelIndex outer = model.indexOf(folder.get()).siblingAtColumn(NavigatorModel::CountColumn);
        QCOMPARE(outer.data().toString(), QString());
        folder->setClosed(true);
        QCOMPARE(outer.data().toString(), QStringLiteral("2"));

        QVERIFY(model.setData(index, QStringLiteral("Venice")));
        QCOMPARE(nested->name(), QStringLiteral("Venice"));
        QVERIFY(desk.library.isDirty());
        desk.group()->setGroupType(GroupType::Search);
        QVERIFY(!model.flags(model.indexOf(desk.group().get())).testFlag(Qt::ItemIsEditable));
    }

    void changesAreTakenBackInTheWindow()
    {
        WindowDesk desk;
        const QAction &undo = *desk.controller->actions().action(Command::Undo);
        const QAction &redo = *desk.controller->actions().action(Command::Redo);
        const auto first = desk.group()->folders().first();
        desk.controller->resetList(first);
        QVERIFY(!undo.isEnabled());
        QVERIFY(desk.controller->editor().rename(first, QStringLiteral("Sea")));
        desk.trigger(Command::NewFolder); // inside it; its name is being edited
        QCOMPARE(undo.text(), QStringLiteral("Undo Add Folder"));
        QVERIFY(desk.controller->window().isWindowModified());

        desk.trigger(Command::Undo);
        QVERIFY(first->folders().isEmpty());
        QCOMPARE(desk.controller->shownFolder(), first);
        QVERIFY(!desk.outline().findChild<QLineEdit *>() || !desk.outline().findChild<QLineEdit *>()->isVisible());
        desk.trigger(Command::Undo);
        QCOMPARE(first->name(), QStringLiteral("New Folder"));
        QVERIFY(!desk.controller->window().isWindowModified());
        QVERIFY(!undo.isEnabled());
        QCOMPARE(redo.text(), QStringLiteral("Redo Rename Folder"));

        desk.trigger(Command::Redo);
        QVERIFY(desk.controller->window().isWindowModified());
        desk.trigger(Command::Save);
        QVERIFY(!undo.isEnabled());
        QVERIFY(!redo.isEnabled());
    }

    void deletedFoldersLeaveTheHistory()
    {
        WindowDesk desk;
        const auto first = desk.group()->folders().first();
        desk.controller->resetList(first);
        desk.controller->resetList(desk.controller->editor().newFolder());
        QVERIFY(desk.controller->actions().action(Command::Back)->isEnabled());
        desk.trigger(Command::Undo);
        QCOMPARE(desk.controller->shownFolder(), first);
        QVERIFY(!desk.controller->actions().action(Command::Back)->isEnabled());
        QVERIFY(!desk.controller->actions().action(Command::Forward)->isEnabled());
    }

    void newFoldersAreNamedAtOnce()
    {
        WindowDesk desk;
        desk.trigger(Command::NewFolder);
        QVERIFY(QTest::qWaitForWindowExposed(&desk.controller->window()));
        auto *editor = desk.outline().findChild<QLineEdit *>();
        QVERIFY(editor);
        QTest::keyClicks(editor, QStringLiteral("Summer"));
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_COMPARE(desk.group()->folders().last()->name(), QStringLiteral("Summer"));
        QCOMPARE(desk.controller->shownFolder(), desk.group()->folders().last());
        desk.trigger(Command::Back);
        QCOMPARE(desk.library.groups().size(), 1);
    }

    void droppedFilesJoinTheFolderOnShow()
    {
        WindowDesk desk;
        const auto folder = desk.group()->folders().first();
        desk.controller->resetList(folder);
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(desk.makePicture(QStringLiteral("a.png"))),
                      QUrl(QStringLiteral("https://example.org/b.png"))});
        QDragEnterEvent enter(QPoint(300, 200), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&desk.controller->window(), &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(300, 200), Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&desk.controller->window(), &drop);
        QCOMPARE(drop.dropAction(), Qt::CopyAction);
        QTRY_COMPARE(folder->photos().size(), 1);
        QTRY_VERIFY(desk.controller->detailController().photo());
        folder->setName(QStringLiteral("a[*]b"));
        desk.controller->resetList(folder);
        desk.notifications.post(kSelectNotification, folder->photos().first());
        QCOMPARE(desk.controller->window().windowHandle()->title(), QStringLiteral("Photo — a[*]b — a*"));
    }

    void aDropOfFoldersAndPhotosEndsAtThePhotos()
    {
        WindowDesk desk;
        const auto folder = desk.group()->folders().first();
        desk.controller->resetList(folder);
        QDir().mkpath(desk.dir.filePath(QStringLiteral("trip")));
        const QString inside = desk.makePicture(QStringLiteral("trip/a.png"));
        const QString loose = desk.makePicture(QStringLiteral("b.png"));
        QVERIFY(!desk.controller->openFiles({}, nullptr, kNotFound, UndoName::AddPhoto));
        int finished = 0;
        const auto count = [&finished](const PhotoImport::Outcome &) { ++finished; };
        QVERIFY(desk.controller->openFiles({QFileInfo(inside).path(), loose}, nullptr, kNotFound, UndoName::AddPhoto,
                                           count));
        QTRY_COMPARE(finished, 1);
        QCOMPARE(folder->folders().first()->photos().size(), 1);
        QCOMPARE(desk.controller->shownFolder(), folder);
        QTRY_VERIFY(desk.controller->detailController().photo());
        QCOMPARE(desk.controller->detailController().photo()->fileRef()->path(), loose);

        // Closing asks before it ends an import; one that waits is dropped and still tells that it is over.
        FakeAlerts alerts;
        for (int i = 0; i < 2; ++i)
            QVERIFY(desk.controller->openFiles({loose}, folder, kNotFound, UndoName::AddPhoto, count));
        alerts.answer = 1;
        QVERIFY(!desk.controller->windowShouldClose());
        QCOMPARE(finished, 1);
        alerts.answer = 0;
        QVERIFY(desk.controller->windowShouldClose());
        QCOMPARE(finished, 3);
        QCOMPARE(alerts.said.count(QStringLiteral("Stop adding photos?")), 2);
        QVERIFY(!desk.library.isDirty());
    }

    void foldersStayAsTheUserFoldedThem()
    {
        WindowDesk desk;
        const auto outer = desk.group()->folders().first();
        const auto nest = outer->makeNewFolder();
        const auto open = nest->makeNewFolder();
        open->makeNewFolder()->photos() << std::make_shared<PIPhoto>();
        nest->setClosed(true);
        desk.group()->setClosed(true);
        desk.controller->resetList(nest);
        QVERIFY(nest->isClosed());
        QVERIFY(!desk.group()->isClosed());

        auto &model = *static_cast<NavigatorModel *>(desk.outline().model());
        QVERIFY(!desk.outline().isExpanded(model.indexOf(nest.get())));
        desk.outline().expand(model.indexOf(nest.get()));
        QVERIFY(!nest->isClosed());
        QVERIFY(desk.outline().isExpanded(model.indexOf(open.get())));
    }

    void theFocusGoesToThePhotos()
    {
        WindowDesk desk;
        const auto folder = desk.group()->folders().first();
        folder->photos() << std::make_shared<PIPhoto>(
            desk.library.fileRefs().fileRefForPath(desk.makePicture(QStringLiteral("a.png"))));
        desk.controller->window().activateWindow();
        desk.outline().setFocus();
        QTRY_VERIFY(desk.outline().hasFocus());
        desk.outline().selectAndCenter(folder);
        QVERIFY(desk.controller->thumbnailView().hasFocus());
        QVERIFY(desk.controller->actions().action(Command::ShowSelection)->isEnabled());

        auto *name = desk.controller->detailController().view()->findChild<QLineEdit *>();
        name->setFocus();
        QTRY_VERIFY(name->hasFocus());
        QWidget other;
        other.show();
        other.activateWindow();
        QTRY_COMPARE(desk.controller->window().focusWidget(), &desk.controller->thumbnailView());
    }

    void theFullScreenCommandFollowsTheWindow()
    {
        WindowDesk desk;
        const QAction &action = *desk.controller->actions().action(Command::FullScreen);
        desk.controller->window().showFullScreen();
        QTRY_VERIFY(action.isChecked());
        desk.trigger(Command::FullScreen);
        QTRY_VERIFY(!desk.controller->window().isFullScreen());
        QTRY_VERIFY(!action.isChecked());
    }

    void closingAsksAboutChanges_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("saved");
        QTest::newRow("Save") << 0 << true << true;
        QTest::newRow("Cancel") << 1 << false << false;
        QTest::newRow("Don't Save") << 2 << true << false;
    }
    void closingAsksAboutChanges()
    {
        QFETCH(int, answer);
        QFETCH(bool, closes);
        QFETCH(bool, saved);
        WindowDesk desk;
        FakeAlerts alerts;
        QVERIFY(desk.controller->windowShouldClose());
        QVERIFY(alerts.said.isEmpty());

        desk.library.setDirty(true);
        alerts.answer = answer;
        QCOMPARE(desk.controller->windowShouldClose(), closes);
        QCOMPARE(alerts.said.size(), 1);
        QCOMPARE(QFile::exists(desk.database), saved);
        QCOMPARE(desk.library.isDirty(), !closes);
    }

    void aSaveThatFailsKeepsTheWindowOpen()
    {
        WindowDesk desk(QStringLiteral("gone/Photo.xml"));
        FakeAlerts alerts;
        desk.library.setDirty(true);
        QVERIFY(!desk.controller->windowShouldClose());
        QCOMPARE(alerts.said.last(), QStringLiteral("Save failed."));
        QVERIFY(desk.library.isDirty());
        QVERIFY(desk.controller->window().isVisible());
    }

    void theWindowComesBackAsItWasSaved()
    {
        WindowDesk desk;
        const auto folder = desk.group()->folders().first();
        for (int i = 0; i < 5; ++i)
            folder->photos() << std::make_shared<PIPhoto>(
                desk.library.fileRefs().fileRefForPath(desk.makePicture(QStringLiteral("%1.png").arg(i))));
        desk.controller->resetList(folder);
        IndexSet selection;
        selection.add(1, 3);
        desk.controller->selectIndexes(selection);
        desk.notifications.post(kSelectNotification, folder->photos().at(3));
        QVERIFY(desk.controller->SaveLibrary());

        PhotoLibrary again(desk.dir.path(), desk.finder, desk.notifications);
        LibraryFile::registerTags();
        const auto result = LibraryFile::load(desk.database, again);
        QCOMPARE(result.failure, QString());
        PIWindowController controller(again, desk.defaults, desk.database);
        controller.resetList(nullptr);
        controller.restoreState(result.restore);
        QCOMPARE(controller.shownFolder()->name(), folder->name());
        QCOMPARE(controller.selectedIndexes(), selection);
        QCOMPARE(controller.detailController().photo(), controller.shownFolder()->photos().at(3));
        QVERIFY(!again.isDirty());
    }
};

REGISTER_TEST(TestNavigator)
#include "TestNavigator.moc"
