#include "TestRunner.h"

#include "PhotoOrder.h"
#include "UndoHouse.h"

#include <QTest>

#include <deque>

namespace {

/// "G(A B(C)) H()": the tree in one line.
QString treeText(const PIGroup &item)
{
    QStringList inside;
    for (const auto &folder : item.folders())
        inside << treeText(*folder);
    const bool isLeaf = inside.isEmpty() && item.asFolder();
    return item.name() + (isLeaf ? QString() : QStringLiteral("(%1)").arg(inside.join(u' ')));
}

/// G(A B(C)) H(): with photos in A.
struct Tree : UndoHouse
{
    std::shared_ptr<PIFolder> c = b->makeNewFolder();
    std::shared_ptr<PIGroup> h = std::make_shared<PIGroup>(QStringLiteral("H"));

    Tree()
    {
        c->setName(QStringLiteral("C"));
        library.groups() << h;
        a->photos() = photos({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4")});
        view.resetList(a);
    }
    std::shared_ptr<PIGroup> named(const QString &name) const
    {
        for (const std::shared_ptr<PIGroup> &item :
             {group, h, std::shared_ptr<PIGroup>(a), std::shared_ptr<PIGroup>(b), std::shared_ptr<PIGroup>(c)}) {
            if (item->name() == name)
                return item;
        }
        return nullptr;
    }
    QString shape() const
    {
        QStringList roots;
        for (const auto &each : library.groups())
            roots << treeText(*each);
        return roots.join(u' ');
    }
    QString lastEntry() const
    {
        if (manager.entries().empty())
            return {};
        const auto &entry = manager.entries().back();
        return QStringLiteral("%1/%2").arg(int(entry.action)).arg(int(entry.descriptor));
    }
    PIGroup::PhotoList fromA(const QString &captions) const
    {
        PIGroup::PhotoList list;
        for (const auto &photo : std::as_const(*a).photos()) {
            if (captions.contains(photo->caption()))
                list << photo;
        }
        return list;
    }
};

IndexSet positions(const QString &text)
{
    return IndexSet::fromArchive(text);
}

}

class TestArranging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itemsGoWhereTheyAreDropped_data()
    {
        QTest::addColumn<QString>("moved");
        QTest::addColumn<QString>("to");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("shape");
        QTest::addColumn<QString>("recorded");
        const auto row = [](const char *tag, const char *moved, const char *to, int index, const char *shape,
                            const char *recorded) {
            QTest::newRow(tag) << QString::fromLatin1(moved) << QString::fromLatin1(to) << index
                               << QString::fromLatin1(shape) << QString::fromLatin1(recorded);
        };
        row("down in its list", "A", "G", 2, "G(B(C) A) H()", "2/10");
        row("up in its list", "B", "G", 0, "G(B(C) A) H()", "2/10");
        row("to the end of its list", "A", "G", -1, "G(B(C) A) H()", "2/10");
        row("before itself", "A", "G", 0, "G(A B(C)) H()", "2/10");
        row("into a folder", "A", "B", 0, "G(B(A C)) H()", "1/10");
        row("beyond a folder's end", "A", "B", 7, "G(B(C A)) H()", "1/10");
        row("to another group", "B", "H", -1, "G(A) H(B(C))", "1/10");
        row("between groups", "C", "", 0, "G(A B C) H()", "1/10");
        row("below all groups", "C", "", 2, "G(A B) H(C)", "1/10");
        row("onto itself", "B", "B", -1, "G(A B(C)) H()", "");
        row("into its own subfolder", "B", "C", -1, "G(A B(C)) H()", "");
        row("a group to the end", "G", "", 2, "H() G(A B(C))", "3/11");
        row("a group to the front", "H", "", 0, "H() G(A B(C))", "3/11");
        row("a group before its neighbour", "G", "", 1, "G(A B(C)) H()", "3/11");
    }
    void itemsGoWhereTheyAreDropped()
    {
        QFETCH(QString, moved);
        QFETCH(QString, to);
        QFETCH(int, index);
        QFETCH(QString, recorded);
        Tree tree;
        const QString before = tree.text();
        const auto item = tree.named(moved);
        const bool done = item->asFolder()
                              ? tree.tree.moveFolder(std::static_pointer_cast<PIFolder>(item), tree.named(to), index)
                              : tree.tree.moveGroup(item, index);
        QCOMPARE(done, !recorded.isEmpty());
        QTEST(tree.shape(), "shape");
        QCOMPARE(tree.lastEntry(), recorded);
        QCOMPARE(tree.wrongParent(), QString());
        if (done)
            tree.manager.undo();
        QCOMPARE(tree.text(), before);
    }

    void itemsStepAmongTheirNeighbours()
    {
        Tree tree;
        QVERIFY(!tree.tree.moveBy(tree.a, -1));
        QVERIFY(!tree.tree.moveBy(tree.h, 1));
        QVERIFY(tree.tree.moveBy(tree.a, 1));
        QVERIFY(tree.tree.moveBy(tree.h, -1));
        QCOMPARE(tree.shape(), QStringLiteral("H() G(B(C) A)"));
        QVERIFY(tree.tree.moveBy(tree.a, -1));
        QCOMPARE(tree.shape(), QStringLiteral("H() G(A B(C))"));
    }

    void deletingLeavesANeighbourSelected()
    {
        Tree tree;
        tree.view.resetList(tree.c);
        QVERIFY(tree.tree.deleteItem(tree.b));
        QCOMPARE(tree.lastEntry(), QStringLiteral("2/6"));
        QCOMPARE(tree.view.item, std::shared_ptr<PIGroup>(tree.a));
        QVERIFY(tree.tree.deleteItem(tree.h)); // not what is selected
        QCOMPARE(tree.lastEntry(), QStringLiteral("3/7"));
        QCOMPARE(tree.view.item, std::shared_ptr<PIGroup>(tree.a));
        QVERIFY(tree.tree.deleteItem(tree.group));
        QVERIFY(!tree.view.item);
        QCOMPARE(tree.view.forgotten, QStringList({QStringLiteral("B"), QStringLiteral("A")}));
        for (int i = 0; i < 3; ++i)
            tree.manager.undo();
        QCOMPARE(tree.shape(), QStringLiteral("G(A B(C)) H()"));
    }

    void photosChangeFolders_data()
    {
        QTest::addColumn<QString>("photos");
        QTest::addColumn<QString>("to");
        QTest::addColumn<bool>("moves");
        QTest::addColumn<QString>("inA");
        QTest::addColumn<QString>("inTarget");
        QTest::addColumn<QString>("selectedInA");
        QTest::addColumn<QString>("recorded");
        const auto row = [](const char *tag, const char *photos, const char *to, bool moves, const char *inA,
                            const char *inTarget, const char *selected, const char *recorded) {
            QTest::newRow(tag) << QString::fromLatin1(photos) << QString::fromLatin1(to) << moves
                               << QString::fromLatin1(inA) << QString::fromLatin1(inTarget)
                               << QString::fromLatin1(selected) << QString::fromLatin1(recorded);
        };
        row("move", "13", "C", true, "24", "13", "1", "1/2");
        row("move the last", "4", "C", true, "123", "4", "2", "1/2");
        row("move all", "1234", "B", true, "", "1234", "", "1/2");
        row("copy", "13", "C", false, "1234", "13", "", "4/2");
        row("move to a group's last folder", "2", "G", true, "134", "2", "1", "1/2");
        row("move to an empty group", "2", "H", true, "134", "2", "1", "1/2");
        row("copy to an empty group", "2", "H", false, "1234", "2", "", "2/2");
    }
    void photosChangeFolders()
    {
        QFETCH(QString, photos);
        QFETCH(QString, to);
        QFETCH(bool, moves);
        QFETCH(QString, selectedInA);
        QFETCH(QString, recorded);
        Tree tree;
        const QString before = tree.text();
        QStringList selections;
        tree.view.selected = [&](const IndexSet &indexes) { selections << indexes.archive(); };
        QVERIFY(tree.photoEdits.copyPhotos(tree.fromA(photos), tree.named(to),
                                           moves ? PhotoEdits::Transfer::Move : PhotoEdits::Transfer::Copy));
        QTEST(House::captions(*tree.a), "inA");
        QTEST(House::captions(*tree.view.folder), "inTarget");
        QCOMPARE(selections.size() > 1, moves);
        if (moves)
            QCOMPARE(selections.first(), selectedInA);
        QCOMPARE(tree.lastEntry(), recorded);
        QCOMPARE(int(tree.manager.entries().size()), 1);
        tree.manager.undo();
        QCOMPARE(tree.text(), before);
    }

    void photosAreReordered_data()
    {
        QTest::addColumn<QString>("moved");
        QTest::addColumn<int>("before");
        QTest::addColumn<QString>("order");
        QTest::addColumn<QString>("selected");
        QTest::newRow("down") << QStringLiteral("0") << 3 << QStringLiteral("2314") << QStringLiteral("2");
        QTest::newRow("to the end") << QStringLiteral("1") << 4 << QStringLiteral("1342") << QStringLiteral("3");
        QTest::newRow("scattered") << QStringLiteral("0 3") << 2 << QStringLiteral("2143") << QStringLiteral("1-2");
        QTest::newRow("where they are") << QStringLiteral("1-2") << 2 << QStringLiteral("1234") << "";
    }
    void photosAreReordered()
    {
        QFETCH(QString, moved);
        QFETCH(int, before);
        QFETCH(QString, selected);
        Tree tree;
        QCOMPARE(tree.photoEdits.reorderPhotos(positions(moved), before), !selected.isEmpty());
        QTEST(House::captions(*tree.a), "order");
        QCOMPARE(tree.view.selection.archive(), selected);
        QCOMPARE(tree.lastEntry(), selected.isEmpty() ? QString() : QStringLiteral("4/19"));
    }

    void selectedPhotosStepThroughTheFolder()
    {
        Tree tree;
        tree.view.selection = positions(QStringLiteral("1-2"));
        QVERIFY(tree.photoEdits.moveSelectedBy(1));
        QCOMPARE(House::captions(*tree.a), QStringLiteral("1423"));
        QVERIFY(!tree.photoEdits.moveSelectedBy(1));
        QVERIFY(tree.photoEdits.moveSelectedBy(-1));
        QVERIFY(tree.photoEdits.moveSelectedBy(-1));
        QVERIFY(!tree.photoEdits.moveSelectedBy(-1));
        QCOMPARE(House::captions(*tree.a), QStringLiteral("2314"));
    }

    void whatIsTakenOutLeavesTheNextOneSelected()
    {
        Tree tree;
        const auto expect = [&](const char *left, const char *selected, const char *recorded) {
            QCOMPARE(House::captions(*tree.a), QString::fromLatin1(left));
            QCOMPARE(tree.view.selection.archive(), QString::fromLatin1(selected));
            QCOMPARE(tree.lastEntry(), QString::fromLatin1(recorded));
        };
        QVERIFY(tree.photoEdits.deletePhotos(tree.fromA(QStringLiteral("24"))));
        expect("13", "1", "4/8");
        tree.view.selection = positions(QStringLiteral("1"));
        QStringList selections;
        tree.view.selected = [&](const IndexSet &indexes) { selections << indexes.archive(); };
        const auto folder = tree.photoEdits.extractFolder(PhotoEdits::Transfer::Move);
        QVERIFY(folder);
        QCOMPARE(House::captions(*folder), QStringLiteral("3"));
        QCOMPARE(folder->parent(), std::shared_ptr<PIGroup>(tree.a));
        QCOMPARE(tree.view.folder, folder);
        QCOMPARE(selections, QStringList(QStringLiteral("0")));
        QCOMPARE(tree.lastEntry(), QStringLiteral("1/0"));
    }

    void foldersAreSorted()
    {
        Tree tree;
        tree.a->photos() = tree.photos({QStringLiteral("b"), QStringLiteral("C"), QStringLiteral("a")});
        qint64 date = 0;
        for (const auto &photo : std::as_const(*tree.a).photos())
            photo->fileRef()->setCreationTime(double(++date * 7 % 10)); // 7, 4, 1
        const auto sorted = [&](PhotoEdits::Order order, std::deque<quint32> numbers = {}) {
            const auto draw = [&] {
                const quint32 number = numbers.front();
                numbers.pop_front();
                return number;
            };
            return tree.photoEdits.sortFolder(order, draw) && numbers.empty() ? House::captions(*tree.a) : QString();
        };
        QCOMPARE(sorted(PhotoEdits::Order::Name), QStringLiteral("abC"));
        QCOMPARE(sorted(PhotoEdits::Order::Date), QStringLiteral("aCb"));
        // Of a, C, b the 5 mod 3rd, then of a, C the 7 mod 2nd; the last is drawn without a number.
        QCOMPARE(sorted(PhotoEdits::Order::Random, {5, 7}), QStringLiteral("bCa"));
        QCOMPARE(tree.lastEntry(), QStringLiteral("4/19"));
    }

    void shufflingKeepsEveryPhoto()
    {
        House house;
        QStringList names;
        for (int i = 0; i < 1000; ++i)
            names << QString::number(i);
        const auto photos = house.photos(names);
        quint32 number = 1;
        auto shuffled = PhotoOrder::shuffled(photos, [&] { return number = number * 1664525U + 1013904223U; });
        QVERIFY(shuffled != photos);
        std::sort(shuffled.begin(), shuffled.end(),
                  [](const auto &one, const auto &other) { return one->caption().toInt() < other->caption().toInt(); });
        QCOMPARE(shuffled, photos);
    }

    void photosArePastedBehindTheSelection()
    {
        Tree tree;
        PIGroup::PhotoList copies;
        for (const auto &photo : tree.fromA(QStringLiteral("12")))
            copies.append(photo->copy());
        tree.view.selection = positions(QStringLiteral("0 2"));
        QVERIFY(tree.photoEdits.paste(copies));
        QCOMPARE(House::captions(*tree.a), QStringLiteral("123124"));
        QCOMPARE(tree.lastEntry(), QStringLiteral("4/13"));
        QVERIFY(!tree.photoEdits.paste({}));
    }

    void cropsAreCleared()
    {
        Tree tree;
        const auto &photos = std::as_const(*tree.a).photos();
        tree.view.selection = positions(QStringLiteral("0-2"));
        QVERIFY(!tree.photoEdits.clearCrop());
        for (const int i : {0, 1, 3})
            photos.at(i)->setCropRect({1, 2, 3, 4});
        QVERIFY(tree.photoEdits.clearCrop());
        QCOMPARE(tree.view.selection, positions(QStringLiteral("0 1")));
        QCOMPARE(tree.lastEntry(), QStringLiteral("4/4"));
        QVERIFY(photos.at(1)->cropRect().isEmpty() && !photos.at(3)->cropRect().isEmpty());
        QVERIFY(photos.at(0)->isCropChanged());

        tree.view.selection = positions(QStringLiteral("3"));
        QVERIFY(tree.photoEdits.clearCrop());
        QCOMPARE(tree.lastEntry(), QStringLiteral("0/4"));
    }
};

REGISTER_TEST(TestArranging)
#include "TestArranging.moc"
