#include "CommandTable.h"

#include <QCoreApplication>

namespace {

constexpr CommandInfo kCommands[] = {
    {Command::AddFiles,
     QT_TRANSLATE_NOOP("Command", "Add Files…"),
     QT_TRANSLATE_NOOP("Command", "Add image files to the folder on show. The files stay where they are"),
     "insert-image",
     {QKeySequence::Open}},
    {Command::AddFolder,
     QT_TRANSLATE_NOOP("Command", "Add Folder…"),
     QT_TRANSLATE_NOOP("Command", "Add a folder of images with all its subfolders. The files stay where they are"),
     "folder-open",
     {QKeyCombination(Qt::CTRL | Qt::SHIFT | Qt::Key_O)}},
    {Command::FindOrphans,
     QT_TRANSLATE_NOOP("Command", "Find Orphan Files…"),
     QT_TRANSLATE_NOOP("Command", "Look in a folder for image files that are not in the library"),
     "edit-find",
     {QKeyCombination(Qt::CTRL | Qt::ALT | Qt::Key_O)}},
    {Command::NewGroup,
     QT_TRANSLATE_NOOP("Command", "New Group"),
     QT_TRANSLATE_NOOP("Command", "Make a group at the end of the navigator"),
     "group-new",
     {QKeyCombination(Qt::CTRL | Qt::SHIFT | Qt::Key_N)}},
    {Command::NewFolder,
     QT_TRANSLATE_NOOP("Command", "New Folder"),
     QT_TRANSLATE_NOOP("Command", "Make a folder in the selected group or folder"),
     "folder-new",
     {QKeySequence::New}},
    {Command::Save,
     QT_TRANSLATE_NOOP("Command", "Save"),
     QT_TRANSLATE_NOOP("Command", "Save the photo library"),
     "document-save",
     {QKeySequence::Save}},
    {Command::ClearCaches,
     QT_TRANSLATE_NOOP("Command", "Clear Caches"),
     QT_TRANSLATE_NOOP("Command", "Delete the stored thumbnails. They are made again when they are needed"),
     "edit-clear",
     {}},
    {Command::Quit,
     QT_TRANSLATE_NOOP("Command", "Quit"),
     QT_TRANSLATE_NOOP("Command", "Close the photo library"),
     "application-exit",
     {QKeyCombination(Qt::CTRL | Qt::Key_Q)}},
    {Command::SelectAll,
     QT_TRANSLATE_NOOP("Command", "Select All"),
     QT_TRANSLATE_NOOP("Command", "Select every photo of the folder"),
     "edit-select-all",
     {QKeySequence::SelectAll}},
    {Command::Rename,
     QT_TRANSLATE_NOOP("Command", "Rename Folder or Group"),
     QT_TRANSLATE_NOOP("Command", "Change the name of the selected folder or group"),
     "edit-rename",
     {QKeyCombination(Qt::Key_F2)}},
    {Command::ShowSelection,
     QT_TRANSLATE_NOOP("Command", "Show Selection"),
     QT_TRANSLATE_NOOP("Command", "Scroll to the selected photos"),
     "",
     {QKeyCombination(Qt::CTRL | Qt::Key_J)}},
    {Command::ShowCaptions,
     QT_TRANSLATE_NOOP("Command", "Captions"),
     QT_TRANSLATE_NOOP("Command", "Show captions under the thumbnails"),
     "",
     {},
     true},
    {Command::ShowDates,
     QT_TRANSLATE_NOOP("Command", "Dates"),
     QT_TRANSLATE_NOOP("Command", "Show file dates under the thumbnails"),
     "",
     {},
     true},
    {Command::ShowFileNames,
     QT_TRANSLATE_NOOP("Command", "File Names"),
     QT_TRANSLATE_NOOP("Command", "Show file names under the thumbnails"),
     "",
     {},
     true},
    {Command::FewerColumns,
     QT_TRANSLATE_NOOP("Command", "Larger Thumbnails"),
     QT_TRANSLATE_NOOP("Command", "Show fewer thumbnails beside each other"),
     "zoom-in",
     {QKeySequence::ZoomIn, QKeyCombination(Qt::CTRL | Qt::Key_Equal)}},
    {Command::MoreColumns,
     QT_TRANSLATE_NOOP("Command", "Smaller Thumbnails"),
     QT_TRANSLATE_NOOP("Command", "Show more thumbnails beside each other"),
     "zoom-out",
     {QKeySequence::ZoomOut}},
    {Command::ShowDetail,
     QT_TRANSLATE_NOOP("Command", "Large Photo"),
     QT_TRANSLATE_NOOP("Command", "Show the current photo large at the right"),
     "view-split-left-right",
     {QKeyCombination(Qt::Key_F9)},
     true},
    {Command::FullScreen,
     QT_TRANSLATE_NOOP("Command", "Full Screen"),
     QT_TRANSLATE_NOOP("Command", "Fill the whole screen with the window"),
     "view-fullscreen",
     {QKeyCombination(Qt::Key_F11)},
     true},
    {Command::Back,
     QT_TRANSLATE_NOOP("Command", "Back"),
     QT_TRANSLATE_NOOP("Command", "Go to the folder shown before"),
     "go-previous",
     {QKeyCombination(Qt::ALT | Qt::Key_Left)}},
    {Command::Forward,
     QT_TRANSLATE_NOOP("Command", "Forward"),
     QT_TRANSLATE_NOOP("Command", "Go to the folder that was stepped back from"),
     "go-next",
     {QKeyCombination(Qt::ALT | Qt::Key_Right)}},
};

}

QList<QKeySequence> CommandInfo::shortcuts() const
{
    QList<QKeySequence> sequences;
    for (const Shortcut &shortcut : keys) {
        if (const auto *standard = std::get_if<QKeySequence::StandardKey>(&shortcut))
            sequences << QKeySequence(*standard);
        else if (const auto *combination = std::get_if<QKeyCombination>(&shortcut))
            sequences << QKeySequence(*combination);
    }
    return sequences;
}

std::span<const CommandInfo> commandTable()
{
    return kCommands;
}
