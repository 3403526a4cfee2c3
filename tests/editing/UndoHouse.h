#pragma once

#include "House.h"

#include "LibraryUndo.h"
#include "PhotoEdits.h"
#include "TreeEdits.h"

/// A house whose changes can be undone.
struct UndoHouse : House
{
    LibraryUndo undo{library, view};
    QVUndoManager manager;
    LibraryEditor undoable{library, view, manager};
    TreeEdits tree{undoable};
    PhotoEdits photoEdits{undoable};
    int beeps = 0;

    UndoHouse()
    {
        manager.setDelegate(&undo);
        manager.setCapacity(50);
        manager.setBeep([this] { ++beeps; });
    }

    bool record(UndoAction action, UndoName name, const std::shared_ptr<PIGroup> &container = {},
                const std::shared_ptr<PIPhoto> &photo = {})
    {
        return manager.setUndoAction(action, name, {.container = container, .photo = photo});
    }

    /// Everything that edits change, as text.
    QString text() const
    {
        QString result;
        for (const auto &each : library.groups())
            addText(result, *each, 0);
        for (const QString &name : library.effectSets().keys())
            result += name + u'\n';
        return result;
    }

    /// The first folder whose parent is not what holds it; empty when all is well.
    QString wrongParent() const
    {
        for (const auto &each : library.groups()) {
            if (const QString wrong = wrongParentIn(each); !wrong.isEmpty())
                return wrong;
        }
        return {};
    }

private:
    static void addText(QString &text, const PIGroup &item, int depth)
    {
        text += QString(depth, u' ') + item.guid() + u' ' + item.name() + u'\n';
        const PIFolder *folder = item.asFolder();
        for (const auto &photo : folder ? folder->photos() : PIGroup::PhotoList()) {
            text += photo->guid() + u' ' + photo->caption() + QString::number(photo->cropRect().width());
            text += photo->isMarked() ? u"!" : u" ";
            for (const EffectEntry &effect : photo->filterDicts())
                text += effect.filterName();
            for (const quint64 keyword : photo->keywordIndexes())
                text += QString::number(keyword) + u',';
            text += u'\n';
        }
        for (const auto &child : item.folders())
            addText(text, *child, depth + 1);
    }

    static QString wrongParentIn(const std::shared_ptr<PIGroup> &item)
    {
        for (const auto &child : std::as_const(item->folders())) {
            if (child->parent() != item)
                return child->name();
            if (const QString wrong = wrongParentIn(child); !wrong.isEmpty())
                return wrong;
        }
        return {};
    }
};
