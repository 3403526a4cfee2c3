#pragma once

#include "RenamePlan.h"

#include <optional>

/// What tells a file from another that takes its path, as one may of two files that are renamed one after the other.
struct FileKey
{
    quint64 device = 0;
    quint64 inode = 0;

    /// Of what stands at the path, be it a link; nothing when nothing does.
    [[nodiscard]] static std::optional<FileKey> at(const QString &path);
    bool operator==(const FileKey &) const = default;
};

/// What came of renaming one file.
struct FileRenaming
{
    bool isDone = false;
    QString reason = {}; ///< why it failed; also where it is done, but a sidecar had to be left behind

    /// Renames the file and its sidecars as planned, replacing nothing, whatever came to stand at their new places
    /// since, and only `file`. Where a sidecar cannot go along, the file keeps its name; where the plan has an
    /// obstacle, nothing is tried. Not for the main thread: a disk may not answer.
    [[nodiscard]] static FileRenaming carryOut(const RenamePlan::Step &step, const std::optional<FileKey> &file);
};
