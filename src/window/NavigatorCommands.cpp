#include "NavigatorCommands.h"

#include "FolderChooser.h"
#include "FormatMessage.h"
#include "GiveAlert.h"
#include "LibraryView.h"
#include "NavigatorDrop.h"
#include "PIFolder.h"

NavigatorCommands::NavigatorCommands(LibraryEditor &editor, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_window(window)
    , m_edits(editor)
{}

void NavigatorCommands::deleteItem()
{
    const auto item = m_editor.view().selectedItem();
    if (!item)
        return;
    const QString kind = item->asFolder() ? tr("folder") : tr("group");
    const int answer = GiveAlert(FormatMessage(tr("Delete %@?"), {kind}),
                                 FormatMessage(tr("Are you sure you want to delete the %@ \"%@\"? All the folders and "
                                                  "photos it contains will also be deleted."),
                                               {kind, item->name()}),
                                 {tr("OK"), tr("Cancel")}, /*escapeButton=*/1);
    if (answer == 0)
        static_cast<void>(m_edits.deleteItem(item));
}

void NavigatorCommands::moveToFolder()
{
    const auto item = m_editor.view().selectedItem();
    if (!item || !item->asFolder())
        return;
    const auto folder = std::static_pointer_cast<PIFolder>(item);
    FolderChooser chooser(m_editor, folder, &m_window);
    chooser.exec();
    if (const auto choice = chooser.choice())
        static_cast<void>(m_edits.moveFolder(folder, choice->item, NavigatorDrop::kOntoItem));
}

void NavigatorCommands::moveBy(int places)
{
    if (const auto item = m_editor.view().selectedItem())
        static_cast<void>(m_edits.moveBy(item, places));
}

bool NavigatorCommands::canMoveBy(int places) const
{
    const auto item = m_editor.view().selectedItem();
    return item && m_edits.canMoveBy(item, places);
}
