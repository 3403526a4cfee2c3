#pragma once

#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>

/// One step of a walk over files and folders, in the order in which a library takes them in: a folder opens, its
/// subfolders follow, then the pictures that stand in it, and it closes.
struct ScanStep
{
    enum class Kind { FolderBegins, Image, FolderEnds };
    Kind kind = Kind::Image;
    QString path;
};

struct ScanSummary
{
    qint64 images = 0;
    qint64 folders = 0;
    /// Names that are no valid UTF-8 and could not be taken.
    qint64 skippedNames = 0;
    /// Folders that could not be read or stand too deep; each is told of in the log.
    qint64 unreadableFolders = 0;
    bool cancelled = false;
};

/// Walks `paths` in order: a picture is reported, a folder is walked, what does not exist or is no picture is passed
/// over. A folder with nothing in it is not reported. Names are sorted as people count ("2" before "10"); hidden
/// names are left out, links are followed, and no folder is walked twice. Blocks: any thread but the main one.
[[nodiscard]] ScanSummary scanForImages(const QStringList &paths, const std::function<void(ScanStep)> &report,
                                        const std::atomic<bool> &cancelled);
