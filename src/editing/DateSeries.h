#pragma once

#include "FileRun.h"

#include <optional>

/// Dates that follow each other in even steps, and what gives them to the files of photos. Cannot be undone.
struct DateSeries
{
    /// The numbers are stored; any other stands for seconds.
    enum Unit { Seconds = 0, Minutes = 1, Hours = 2, Days = 3 };

    int whatToChange = Seconds; ///< a unit
    qint64 increment = 1;       ///< units from one photo to the next; below 0 the dates go back

    /// In seconds since 1970, as `base` is; nothing beyond the years that people write with four digits.
    [[nodiscard]] std::optional<qint64> dateAt(qint64 index, qint64 base) const;

    /// Which of these files, in the order of their photos, get dates: all but the first one, those that came before,
    /// and those without a path.
    [[nodiscard]] static QList<qsizetype> datedFiles(const QStringList &paths);
    /// The paths of the photos' files, empty where a file is lost.
    [[nodiscard]] static QStringList pathsOf(const PIGroup::PhotoList &photos);

    /// Begins to date those of these photos' files, each by its place behind the first one. A file whose date cannot be
    /// set is passed over.
    [[nodiscard]] std::unique_ptr<FileRun> start(LibraryEditor &editor, DispatchQueue &queue,
                                                 const PIGroup::PhotoList &photos, const FileRun::Progress &progress,
                                                 const FileRun::Ended &ended) const;

    bool operator==(const DateSeries &) const = default;
};
