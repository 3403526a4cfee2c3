#include "DropCommands.h"

#include "DragData.h"
#include "LibraryView.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"

#include <QDropEvent>
#include <QSet>

DropCommands::DropCommands(LibraryEditor &editor, OpenFiles openFiles)
    : m_editor(editor)
    , m_openFiles(std::move(openFiles))
    , m_photoEdits(editor)
    , m_treeEdits(editor)
{}

void DropCommands::dropOnNavigator(const QDropEvent &event, const NavigatorDrop &place)
{
    using Kind = NavigatorDrop::Kind;
    const QMimeData &data = *event.mimeData();
    const auto kind = DragData::kind(event);
    if (kind == Kind::Files) {
        dropFiles(DragData::files(data), place.item);
    } else if (kind == Kind::Photos) {
        const auto shown = m_editor.view().shownFolder();
        const auto transfer = DragData::transfer(event);
        if (shown && (transfer == PhotoEdits::Transfer::Copy || place.item != std::static_pointer_cast<PIGroup>(shown)))
            static_cast<void>(m_photoEdits.copyPhotos(DragData::photos(data, *shown), place.item, transfer));
    } else if (const auto item = DragData::item(data, m_editor.library())) {
        if (item->asFolder())
            static_cast<void>(
                m_treeEdits.moveFolder(std::static_pointer_cast<PIFolder>(item), place.item, place.childIndex));
        else
            static_cast<void>(m_treeEdits.moveGroup(item, place.childIndex));
    }
}

/// A group takes files into its last folder. One that has none is selected, and gets one if there is need.
void DropCommands::dropFiles(const QStringList &paths, const std::shared_ptr<PIGroup> &item)
{
    std::shared_ptr<PIFolder> folder;
    if (item && item->asFolder())
        folder = std::static_pointer_cast<PIFolder>(item);
    else if (item && !item->folders().isEmpty())
        folder = item->lastFolder();
    else if (item)
        m_editor.view().resetList(item);
    m_openFiles(paths, folder, kNotFound, UndoName::AddPhoto);
}

void DropCommands::dropOnGrid(const QDropEvent &event, int before)
{
    const QMimeData &data = *event.mimeData();
    const auto shown = m_editor.view().shownFolder();
    if (DragData::kind(event) == NavigatorDrop::Kind::Files) {
        const quint64 behind = before > 0 ? static_cast<quint64>(before - 1) : kNotFound;
        m_openFiles(DragData::files(data), shown, behind, UndoName::AddPhoto);
        return;
    }
    if (!shown)
        return;
    const PIGroup::PhotoList dragged = DragData::photos(data, *shown);
    const QSet<std::shared_ptr<PIPhoto>> photos(dragged.cbegin(), dragged.cend());
    IndexSet positions;
    for (qsizetype i = 0; i < std::as_const(*shown).photos().size(); ++i) {
        if (photos.contains(std::as_const(*shown).photos().at(i)))
            positions.add(i);
    }
    static_cast<void>(m_photoEdits.reorderPhotos(positions, before));
}
