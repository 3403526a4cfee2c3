#include "FileNotifications.h"
#include "LibraryFile.h"
#include "LibrarySupport.h"
#include "QVXmlEncoder.h"
#include "TestRunner.h"

/// The tree of groups and folders, and the library that holds it.
class TestPIGroup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void closedFoldersCountEverythingBeneath_data()
    {
        QTest::addColumn<bool>("outerClosed");
        QTest::addColumn<bool>("innerClosed");
        QTest::addColumn<Subfolders>("subfolders");
        QTest::addColumn<int>("count");
        QTest::newRow("own alone") << false << false << Subfolders::Exclude << 1;
        QTest::newRow("closed") << true << false << Subfolders::Exclude << 111;
        QTest::newRow("a closed one within is not seen") << false << true << Subfolders::Exclude << 1;
        QTest::newRow("asked for all") << false << false << Subfolders::Include << 111;
    }
    void closedFoldersCountEverythingBeneath()
    {
        QFETCH(bool, outerClosed);
        QFETCH(bool, innerClosed);
        QFETCH(Subfolders, subfolders);
        const auto outer = std::make_shared<PIFolder>();
        const auto inner = outer->makeNewFolder();
        const auto innermost = inner->makeNewFolder();
        const auto photo = std::make_shared<PIPhoto>();
        outer->photos() = {photo};
        inner->photos() = PIGroup::PhotoList(10, photo);
        innermost->photos() = PIGroup::PhotoList(100, photo);
        outer->setClosed(outerClosed);
        inner->setClosed(innerClosed);
        QTEST(outer->photoCount(subfolders), "count");
    }

    void showingAFolderOpensAllAboveIt()
    {
        TestLibrary test;
        const auto outer = test.addFolder();
        const auto inner = outer->makeNewFolder();
        const auto beside = outer->makeNewFolder();
        const auto &group = test.library.groups().first();
        for (PIGroup *item : {group.get(), static_cast<PIGroup *>(outer.get()), static_cast<PIGroup *>(inner.get()),
                              static_cast<PIGroup *>(beside.get())})
            item->setClosed(true);
        inner->enforceVisibility();
        QVERIFY(!inner->isClosed() && !outer->isClosed() && !group->isClosed() && beside->isClosed());
        QCOMPARE(PhotoLibrary::groupForFolder(inner), group);
        QCOMPARE(PhotoLibrary::groupForFolder(group), group);
        QCOMPARE(PhotoLibrary::groupForFolder(std::make_shared<PIFolder>()), nullptr);
    }

    void copiesAreShallow()
    {
        const auto group = std::make_shared<PIGroup>(QStringLiteral("Group"));
        const auto folder = group->makeNewFolder();
        folder->photos() = {std::make_shared<PIPhoto>()};
        folder->selection() = IndexSet::single(3);
        folder->setSaveIndex(9);
        const auto groupCopy = group->copy();
        QVERIFY(!groupCopy->asFolder());
        QCOMPARE(groupCopy->guid(), group->guid());
        QCOMPARE(groupCopy->folders(), group->folders());
        groupCopy->makeNewFolder();
        QCOMPARE(group->folders().size(), 1);

        const auto folderCopy = folder->copy();
        QVERIFY(folderCopy->asFolder());
        QCOMPARE(folderCopy->asFolder()->parent(), group);
        QCOMPARE(folderCopy->asFolder()->photos(), folder->photos());
        QCOMPARE(folderCopy->asFolder()->selection(), folder->selection());
        QCOMPARE(folderCopy->saveIndex(), quint64(0));
        QVERIFY(folderCopy->makeNewFolder()->parent() == folderCopy);
    }

    void selectionOfTheFirstPhotoIsNotWritten_data()
    {
        QTest::addColumn<IndexSet>("selection");
        QTest::addColumn<bool>("written");
        QTest::newRow("none") << IndexSet() << false;
        QTest::newRow("first") << IndexSet::single(0) << false;
        QTest::newRow("second") << IndexSet::single(1) << true;
        QTest::newRow("first two") << IndexSet::range(0, 2) << true;
    }
    void selectionOfTheFirstPhotoIsNotWritten()
    {
        QFETCH(IndexSet, selection);
        PIFolder folder;
        folder.selection() = selection;
        QVXmlEncoder encoder;
        folder.archiveToXml(encoder);
        QTEST(encoder.utf8().contains("selection"), "written");
    }

    void photosOfRemovedFilesGoFromAllSubfolders()
    {
        TestLibrary test;
        const auto gone = test.addPhoto(QStringLiteral("/pictures/gone.jpg"));
        const auto kept = test.addPhoto(QStringLiteral("/pictures/kept.jpg"));
        const auto outer = test.library.groups().first()->lastFolder();
        const auto inner = outer->makeNewFolder();
        inner->photos() = {gone, kept, std::make_shared<PIPhoto>(gone->fileRef()), std::make_shared<PIPhoto>()};
        outer->removePhotosForFileRefs({gone->fileRef().get()});
        QCOMPARE(outer->photos(), PIGroup::PhotoList({kept}));
        QCOMPARE(inner->photos().size(), 2);
        QCOMPARE(inner->findPhotoByGuid(kept->guid()), kept);
        QCOMPARE(inner->findPhotoByGuid(gone->guid()), nullptr);
    }

    void thingsAreFoundInTheTree()
    {
        TestLibrary test;
        const auto photo = test.addPhoto(QStringLiteral("/pictures/a.jpg"));
        const auto first = test.library.groups().first()->lastFolder();
        test.library.groups().append(std::make_shared<PIGroup>());
        const auto second = test.library.groups().last()->makeNewFolder()->makeNewFolder();
        second->photos() = {photo};
        QCOMPARE(test.library.folderForPhoto(*photo), second); // the last group comes first
        second->photos().clear();
        QCOMPARE(test.library.folderForPhoto(*photo), first);
        first->photos().clear();
        QCOMPARE(test.library.folderForPhoto(*photo), nullptr);
        QCOMPARE(test.library.findContainerByGuid(second->guid()), second);
        QCOMPARE(test.library.findContainerByGuid(test.library.groups().last()->guid()), test.library.groups().last());
        QCOMPARE(test.library.findContainerByGuid(QStringLiteral("none")), nullptr);
    }

    void dirtyIsToldOnceForEachChange()
    {
        TestLibrary test;
        QList<bool> told;
        test.library.setDirtyListener([&](bool dirty) { told.append(dirty); });
        test.library.setDirty(false);
        test.library.makeDefaultLibrary();
        test.library.setDirty(true);
        test.library.setDirty(false);
        QCOMPARE(told, QList<bool>({true, false}));
        QCOMPARE(test.library.groups().first()->name(), QStringLiteral("New Group"));
        QCOMPARE(test.library.groups().first()->folders().first()->name(), QStringLiteral("New Folder"));
    }

    void photosOfAChangedFileLoseTheirCrop()
    {
        TestLibrary test;
        const auto changed = test.addPhoto(QStringLiteral("/pictures/a.jpg"));
        const auto other = test.addPhoto(QStringLiteral("/pictures/b.jpg"));
        changed->setCropRect({1, 2, 3, 4});
        other->setCropRect({1, 2, 3, 4});
        QFile thumbnail(test.library.thumbnails().thumbnailPath(*changed));
        QVERIFY(thumbnail.open(QFile::WriteOnly));
        test.notifications.post(kFileChangeNotification, changed->fileRef());
        QVERIFY(changed->cropRect().isEmpty());
        QVERIFY(!thumbnail.exists());
        QVERIFY(!other->cropRect().isEmpty());
    }
};

REGISTER_TEST(TestPIGroup)
#include "TestPIGroup.moc"
