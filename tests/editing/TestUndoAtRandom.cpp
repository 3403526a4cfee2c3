#include "TestRunner.h"

#include "UndoHouse.h"

#include <QTest>

#include <algorithm>
#include <random>

namespace {

/// A history that keeps every state of the library in full, as text.
struct PlainHistory
{
    struct State
    {
        QString text;
        bool dirty = false;
        QString edit; ///< that led to it, where a later one of the kind would join it
    };
    QList<State> states;
    qsizetype at = 0;
    QString lastEdit; ///< what a later edit must be to join the last one; empty when none can

    void edited(const QString &text, const QString &edit)
    {
        const bool joins = !edit.isEmpty() && edit == lastEdit && at > 0;
        states.resize(at + 1);
        lastEdit = edit;
        if (joins) {
            states.last() = {text, true, edit};
            return;
        }
        states.append({text, true, edit});
        if (states.size() > 51)
            states.removeFirst();
        at = states.size() - 1;
    }
    void withdrawn(const QString &text)
    {
        edited(text, {});
        states.removeLast();
        --at;
        lastEdit = states[at].edit;
    }
    bool step(qsizetype by)
    {
        if (at + by < 0 || at + by >= states.size())
            return false;
        lastEdit.clear();
        at += by;
        return true;
    }
};

/// Somebody who does whatever comes to mind.
struct Arranger : UndoHouse
{
    std::mt19937 random{20260214};
    PlainHistory history;
    int names = 0;

    Arranger()
    {
        a->photos() = photos({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4")});
        b->photos() << a->photos().first(); // one photo may stand in two folders
        history.states << PlainHistory::State{text(), library.isDirty(), {}};
    }

    int below(qsizetype limit) { return int(random() % quint32(limit)); }
    QString newName() { return QStringLiteral("n%1").arg(++names); }

    QList<std::shared_ptr<PIGroup>> items() const
    {
        QList<std::shared_ptr<PIGroup>> all = library.groups();
        for (qsizetype i = 0; i < all.size(); ++i) {
            for (const auto &folder : std::as_const(*all[i]).folders())
                all << folder;
        }
        return all;
    }
    std::shared_ptr<PIGroup> item()
    {
        const auto all = items();
        return all[below(all.size())];
    }
    std::shared_ptr<PIFolder> folder()
    {
        const auto any = item();
        return any->asFolder() ? std::static_pointer_cast<PIFolder>(any) : nullptr;
    }
    std::shared_ptr<PIPhoto> shownPhoto()
    {
        const auto &shown = view.folder;
        return shown && !shown->photos().isEmpty() ? shown->photos().at(below(shown->photos().size())) : nullptr;
    }

    void look()
    {
        view.resetList(item());
        view.selection.clear();
        const qsizetype count = view.folder ? view.folder->photos().size() : 0;
        for (qsizetype i = 0; i < count; ++i) {
            if (below(3) == 0)
                view.selection.add(i);
        }
    }

    bool rename(QString &edit)
    {
        const auto renamed = item();
        edit = QStringLiteral("rename ") + renamed->guid();
        return undoable.rename(renamed, newName());
    }
    bool arrange()
    {
        const auto moved = folder();
        const qsizetype count = items().size();
        switch (below(6)) {
        case 0:
            return library.groups().size() < 4 && undoable.newGroup();
        case 1:
            return count < 12 && undoable.newFolder();
        case 2:
            return moved && tree.moveFolder(moved, below(4) ? item() : nullptr, below(4) - 1);
        case 3:
            return tree.moveGroup(library.groups()[below(library.groups().size())], below(5) - 1);
        case 4:
            return tree.moveBy(item(), below(2) ? 1 : -1);
        default:
            return count > 5 && library.groups().size() > 1 && tree.deleteItem(item());
        }
    }
    bool sortPhotos()
    {
        const auto numbers = [this] { return quint32(random()); };
        const qsizetype count = view.folder ? view.folder->photos().size() : 0;
        switch (below(6)) {
        case 0:
            return count < 30 && photoEdits.copyPhotos(photoEdits.selectedPhotos(), item(), PhotoEdits::Transfer::Copy);
        case 1:
            return photoEdits.copyPhotos(photoEdits.selectedPhotos(), item(), PhotoEdits::Transfer::Move);
        case 2:
            return items().size() < 12 && photoEdits.extractFolder(PhotoEdits::Transfer(below(2))) != nullptr;
        case 3:
            return count > 2 && photoEdits.deletePhotos(photoEdits.selectedPhotos());
        case 4:
            return photoEdits.reorderPhotos(view.selection, below(count + 1));
        default:
            return photoEdits.sortFolder(PhotoEdits::Order(below(3)), numbers);
        }
    }
    bool editPhoto(QString &edit)
    {
        const auto photo = shownPhoto();
        if (!photo)
            return false;
        const bool isCaption = below(2) == 0;
        if (!record(UndoAction::Photo, isCaption ? UndoName::Caption : UndoName::Effects, nullptr, photo))
            return false;
        if (isCaption)
            edit = QStringLiteral("caption ") + photo->guid();
        if (isCaption)
            photo->setCaption(newName());
        else
            photo->setFilterDicts({EffectEntry(newName())});
        return true;
    }
    bool editPhotos()
    {
        if (below(2) == 0)
            return photoEdits.toggleMark();
        if (!view.folder || !record(UndoAction::PhotoList, UndoName::Keywords, view.folder))
            return false;
        for (const auto &photo : photoEdits.selectedPhotos()) {
            photo->setKeywordIndexes({quint64(below(9)), quint64(below(9))});
            photo->setCropRect({0, 0, double(below(9)), 5});
        }
        return true;
    }
    bool editSets()
    {
        if (!record(UndoAction::EffectSets, UndoName::EffectSets))
            return false;
        library.effectSets().insert(newName(), {});
        return true;
    }
    /// Many things in one step.
    bool turnUpsideDown()
    {
        if (!record(UndoAction::WholeTree, UndoName::MovePhoto))
            return false;
        for (const auto &each : items()) {
            each->setName(newName());
            std::reverse(each->folders().begin(), each->folders().end());
            for (const auto &photo : each->asFolder() ? each->asFolder()->photos() : PIGroup::PhotoList())
                photo->setCaption(newName());
        }
        return true;
    }
    bool edit(QString &edit)
    {
        switch (below(9)) {
        case 0:
            return rename(edit);
        case 1:
        case 2:
            return arrange();
        case 3:
        case 4:
            return sortPhotos();
        case 5:
        case 6:
            return editPhoto(edit);
        case 7:
            return editPhotos();
        default:
            return below(3) ? editSets() : turnUpsideDown();
        }
    }

    void save()
    {
        library.setDirty(false);
        manager.clearUndo();
        history = {{{text(), false, {}}}, 0, {}};
    }
    void recordInVain()
    {
        QVERIFY(record(UndoAction::GroupList, UndoName::Crop));
        manager.popUndo();
        history.withdrawn(text());
    }
    void undoEverything()
    {
        while (history.step(-1))
            manager.undo();
    }
    void step()
    {
        const int choice = below(200);
        if (choice < 40)
            return look();
        if (choice < 75 || choice > 197) {
            const int expected = beeps + (history.step(-1) ? 0 : 1);
            manager.undo();
            QCOMPARE(beeps, expected);
        } else if (choice < 100) {
            const int expected = beeps + (history.step(1) ? 0 : 1);
            manager.redo();
            QCOMPARE(beeps, expected);
        } else if (choice == 100 && below(3) == 0) {
            save();
        } else if (choice == 101) {
            recordInVain();
        } else if (choice == 102 && below(3) == 0) {
            undoEverything();
        } else {
            QString kind;
            if (edit(kind))
                history.edited(text(), kind);
        }
    }
    void check() const
    {
        const PlainHistory::State &expected = history.states[history.at];
        QCOMPARE(text(), expected.text);
        QCOMPARE(library.isDirty(), expected.dirty);
        QCOMPARE(wrongParent(), QString());
        QCOMPARE(manager.isUndoAvailable(), history.at > 0);
        QCOMPARE(manager.isRedoAvailable(), history.at + 1 < history.states.size());
    }
};

}

class TestUndoAtRandom : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithAHistoryOfFullCopies()
    {
        Arranger arranger;
        qsizetype longest = 0;
        for (int i = 0; i < 10'000; ++i) {
            arranger.step();
            arranger.check();
            longest = std::max(longest, arranger.history.states.size());
            if (QTest::currentTestFailed())
                QFAIL(qPrintable(QStringLiteral("in step %1").arg(i)));
        }
        QCOMPARE(longest, qsizetype(51)); // the ring was full
        while (arranger.manager.isUndoAvailable())
            arranger.manager.undo();
        QCOMPARE(arranger.text(), arranger.history.states.first().text);
        while (arranger.manager.isRedoAvailable())
            arranger.manager.redo();
        QCOMPARE(arranger.text(), arranger.history.states.last().text);
    }
};

REGISTER_TEST(TestUndoAtRandom)
#include "TestUndoAtRandom.moc"
