#pragma once

#include "FileRun.h"
#include "RenamePlan.h"

/// Renames the files of many photos on disk. Cannot be undone. Main thread.
namespace BatchRename {

/// Those whose files are not lost.
[[nodiscard]] PIGroup::PhotoList renamable(const PIGroup::PhotoList &photos);

/// Begins to rename the files of these photos, which must be renamable, in their order. Ends at the first that cannot
/// be renamed; the others keep their new names.
[[nodiscard]] std::unique_ptr<FileRun> start(LibraryEditor &editor, DispatchQueue &queue,
                                             const RenameSettings &settings, const PIGroup::PhotoList &photos,
                                             const FileRun::Progress &progress, const FileRun::Ended &ended);

}
