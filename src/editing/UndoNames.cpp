#include "UndoNames.h"

#include <QCoreApplication>

#include <array>

QString undoName(UndoName name)
{
    static constexpr std::array names = {
        QT_TRANSLATE_NOOP("UndoName", "Add Folder"),    QT_TRANSLATE_NOOP("UndoName", "Add Group"),
        QT_TRANSLATE_NOOP("UndoName", "Add Photo"),     QT_TRANSLATE_NOOP("UndoName", "Add Search Results"),
        QT_TRANSLATE_NOOP("UndoName", "Crop"),          QT_TRANSLATE_NOOP("UndoName", "Cut"),
        QT_TRANSLATE_NOOP("UndoName", "Delete Folder"), QT_TRANSLATE_NOOP("UndoName", "Delete Group"),
        QT_TRANSLATE_NOOP("UndoName", "Delete Photo"),  QT_TRANSLATE_NOOP("UndoName", "Mark"),
        QT_TRANSLATE_NOOP("UndoName", "Move Folder"),   QT_TRANSLATE_NOOP("UndoName", "Move Group"),
        QT_TRANSLATE_NOOP("UndoName", "Move Photo"),    QT_TRANSLATE_NOOP("UndoName", "Paste"),
        QT_TRANSLATE_NOOP("UndoName", "Caption"),       QT_TRANSLATE_NOOP("UndoName", "Effects"),
        QT_TRANSLATE_NOOP("UndoName", "Keywords"),      QT_TRANSLATE_NOOP("UndoName", "Rename Folder"),
        QT_TRANSLATE_NOOP("UndoName", "Rename Group"),  QT_TRANSLATE_NOOP("UndoName", "Sort Folder"),
        QT_TRANSLATE_NOOP("UndoName", "Effect Sets"),
    };
    static_assert(names.size() == static_cast<size_t>(UndoName::AlreadyRecorded));
    const auto index = static_cast<size_t>(name);
    return index < names.size() ? QCoreApplication::translate("UndoName", names.at(index)) : QString();
}
