#pragma once

#include "FileRun.h"
#include "RenamePlan.h"

/// Renames the files of many photos on disk. Cannot be undone. Main thread.
namespace BatchRename {

/// Those whose files are not lost.
[[nodiscard]] PIGroup::PhotoList renamable(const PIGroup::PhotoList &photos);

/// Where their files are.
[[nodiscard]] QStringList pathsOf(const PIGroup::PhotoList &photos);
/// Of all lost files of the library: a file that got such a path would be taken for the lost one. For a plan.
[[nodiscard]] QStringList lostPaths(const PhotoLibrary &library);

/// Begins to carry out a plan for the paths of these photos, as it is: what is no longer as it was then is in its way.
/// Ends at the first file that cannot be renamed; the others keep their new names.
[[nodiscard]] std::unique_ptr<FileRun> start(LibraryEditor &editor, DispatchQueue &queue, const RenamePlan &plan,
                                             const PIGroup::PhotoList &photos, const FileRun::Progress &progress,
                                             const FileRun::Ended &ended);

}
