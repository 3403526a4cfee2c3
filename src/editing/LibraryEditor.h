#pragma once

#include "NotFound.h"
#include "PIGroup.h"
#include "UndoRecorder.h"

#include <QHash>
#include <QString>

#include <memory>
#include <optional>

class LibraryView;
class PhotoLibrary;

/// Changes to the library's structure. Each records itself for undo first and leaves the model alone when that is
/// refused, then changes the model and lets the window show the result. Main thread.
class LibraryEditor
{
public:
    /// All three outlive the editor.
    LibraryEditor(PhotoLibrary &library, LibraryView &view, UndoRecorder &recorder);

    /// A folder chosen to take new photos.
    struct Target
    {
        std::shared_ptr<PIFolder> folder;
        quint64 insertIndex = kNotFound; ///< photos go behind this position; kNotFound: to the end
        bool created = false;            ///< the folder was made for the purpose
    };

    /// Inserts photos behind position `atIndex` of the folder (at the end when it lies outside), selects and shows
    /// them. Without a folder one is chosen. False when nothing was added.
    bool addPhotos(const PIGroup::PhotoList &photos, std::shared_ptr<PIFolder> toFolder, quint64 atIndex,
                   UndoName undoName);

    /// The folder that new photos go to when the user named none: the one on show, else the one selected in the
    /// navigator, else one in the selected or last group; made, and recorded under `undoName`, when there is none.
    /// After a recording `undoName` is AlreadyRecorded. Nothing when the recording was refused.
    [[nodiscard]] std::optional<Target> selectOrCreateFolder(UndoName &undoName);

    /// Appends "New Group" with one new folder and shows it; null when refused.
    std::shared_ptr<PIGroup> newGroup();
    /// Makes "New Folder" in the selected item, or in the last group, and shows it. With no groups it makes a group
    /// and returns that. Null when refused.
    std::shared_ptr<PIGroup> newFolder();
    /// A new folder, named for the day, at the end of the group that the program keeps for search results or for
    /// undeleted files; the group is made when there is none. Null when refused, or for ordinary groups.
    [[nodiscard]] std::shared_ptr<PIFolder> makeSpecialGroupFolder(GroupType type);
    /// False when refused, or when the name is empty or the same.
    bool rename(const std::shared_ptr<PIGroup> &item, const QString &name);
    /// Groups that the program made for a purpose keep their names.
    [[nodiscard]] static bool canRename(const PIGroup &item);

    [[nodiscard]] PhotoLibrary &library() { return m_library; }
    [[nodiscard]] LibraryView &view() { return m_view; }
    [[nodiscard]] UndoRecorder &recorder() { return m_recorder; }

private:
    PhotoLibrary &m_library;
    LibraryView &m_view;
    UndoRecorder &m_recorder;
    QHash<GroupType, int> m_specialFolders; ///< made since the start
};
