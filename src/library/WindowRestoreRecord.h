#pragma once

#include "IndexSet.h"

#include <memory>
#include <optional>

class PIFolder;
class PIPhoto;

/// What the library file tells of the window as it was when it was saved.
struct WindowRestoreRecord
{
    qint64 folderNumber = -1; ///< save number of the shown folder; -1 when none
    std::shared_ptr<PIFolder> folder;
    qint64 photoIndex = -1; ///< position in the list of all photos read; -1 when none
    std::shared_ptr<PIPhoto> photo;
    std::optional<IndexSet> selection;
};
