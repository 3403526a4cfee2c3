#pragma once

#include "RenamePlan.h"

/// What came of renaming one file.
struct FileRenaming
{
    bool isDone = false;
    QString reason = {}; ///< why it failed; also where it is done, but a sidecar had to be left behind

    /// Renames the file and its sidecars as planned, replacing nothing, whatever came to stand at their new places
    /// since. Where a sidecar cannot go along, the file keeps its name. Not for the main thread: a disk may not answer.
    [[nodiscard]] static FileRenaming carryOut(const RenamePlan::Step &step);
};
