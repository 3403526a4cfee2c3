#include "TestRunner.h"

#include "AlertPresenter.h"
#include "PhotoTrash.h"
#include "UndoHouse.h"

#include <QTest>

namespace {

/// Takes every file but those that it was told to refuse.
struct FakeTrash final : Trash
{
    QSet<QString> refused;
    QStringList taken;
    QList<Failure> recycle(const QStringList &paths) override
    {
        QList<Failure> failures;
        for (const QString &path : paths) {
            if (refused.contains(path))
                failures.append({path, QStringLiteral("The trash is full.")});
            else
                taken.append(path);
        }
        return failures;
    }
};

struct Alerts final : AlertPresenter
{
    QStringList said;
    Alerts() { install(this); }
    ~Alerts() override { install(nullptr); }
    int present(const Alert &alert) override
    {
        said << alert.title + QStringLiteral(" ") + alert.message;
        return 0;
    }
    void beep() override {}
};

/// A house whose photos have files.
struct TrashHouse : UndoHouse
{
    QTemporaryDir files;
    std::shared_ptr<FakeTrash> fake = std::make_shared<FakeTrash>();
    PhotoTrash trash{undoable, manager, fake};

    QString path(const QString &name) const { return files.filePath(name); }
    std::shared_ptr<PIPhoto> add(const std::shared_ptr<PIFolder> &folder, const QString &name)
    {
        QFile(path(name)).open(QIODevice::WriteOnly);
        folder->photos().append(std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path(name))));
        folder->photos().last()->setCaption(name);
        return folder->photos().last();
    }
};

}

class TestPhotoTrash : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void photosOfTheFilesLeaveTheWholeLibrary()
    {
        TrashHouse house;
        const auto one = house.add(house.a, QStringLiteral("1"));
        const auto two = house.add(house.a, QStringLiteral("2"));
        const auto three = house.add(house.a, QStringLiteral("3"));
        const auto inside = house.b->makeNewFolder();
        house.add(inside, QStringLiteral("1"));
        const auto undeleted = std::make_shared<PIGroup>(QStringLiteral("U"));
        undeleted->setGroupType(GroupType::Undeleted);
        house.library.groups() << undeleted;
        const auto kept = undeleted->makeNewFolder();
        house.add(kept, QStringLiteral("1"));
        house.view.resetList(house.a);
        house.view.selection = IndexSet::range(0, 2);
        house.library.setDirty(false);

        house.trash.trash({one, two});
        QVERIFY(house.trash.isBusy());
        QTRY_VERIFY(!house.trash.isBusy());
        QCOMPARE(House::captions(*house.a), QStringLiteral("3"));
        QVERIFY(inside->photos().isEmpty());
        QCOMPARE(kept->photos().size(), 1);
        QCOMPARE(house.view.selection, IndexSet::single(0));
        QCOMPARE(house.fake->taken, QStringList({house.path(QStringLiteral("1")), house.path(QStringLiteral("2"))}));
        QVERIFY(house.library.isDirty());
        QVERIFY(!house.manager.isUndoAvailable());
        // A file that is imported from the same place is another one.
        QVERIFY(house.library.fileRefs().fileRefForPath(house.path(QStringLiteral("2"))) != two->fileRef());
    }

    void photosOfFilesThatStayComeBack()
    {
        TrashHouse house;
        Alerts alerts;
        const auto one = house.add(house.a, QStringLiteral("1"));
        const auto two = house.add(house.a, QStringLiteral("2"));
        house.view.resetList(house.a);
        house.fake->refused = {house.path(QStringLiteral("2"))};
        house.trash.trash({one, two});
        QTRY_VERIFY(!house.trash.isBusy());

        const auto group = house.library.groups().last();
        QCOMPARE(group->groupType(), GroupType::Undeleted);
        QCOMPARE(house.view.folder, group->folders().last());
        QCOMPARE(House::captions(*group->folders().last()), QStringLiteral("2"));
        const auto back = group->folders().last()->photos().first();
        QVERIFY(back->guid() != two->guid());
        QCOMPARE(back->fileRef(), two->fileRef());
        QCOMPARE(house.library.fileRefs().fileRefForPath(house.path(QStringLiteral("2"))), two->fileRef());
        QCOMPARE(alerts.said, QStringList(QStringLiteral(
                                  "Move to trash failed. Some files could not be moved to the trash and were instead "
                                  "moved to the \"Undeleted\" group. The trash is full.")));
    }

    void theQuestionCountsWhatCanBeTrashed()
    {
        TrashHouse house;
        house.add(house.a, QStringLiteral("1 %@.jpg"));
        house.a->photos().append(std::make_shared<PIPhoto>(
            house.library.fileRefs().fileRefForPath(house.path(QStringLiteral("missing.jpg")))));
        const auto photos = PhotoTrash::trashable(house.a->photos());
        const auto question = PhotoTrash::question(photos);
        QCOMPARE(question.title, QStringLiteral("Trash 1 photo?"));
        QVERIFY(
            question.text.startsWith(QStringLiteral("Are you sure you want to trash \"1 %@.jpg\"? You can't undo")));
        QVERIFY(PhotoTrash::question(photos + photos).text.contains(QStringLiteral("trash the selected photos?")));
        QCOMPARE(PhotoTrash::question(photos + photos).title, QStringLiteral("Trash 2 photos?"));
    }
};

REGISTER_TEST(TestPhotoTrash)
#include "TestPhotoTrash.moc"
