#pragma once

#include "FileFingerprint.h"
#include "FileIdentity.h"

#include <QByteArray>

#include <optional>

class BookmarkView;

/// What a bookmark holds about its file. Paths are bytes as the kernel takes them.
struct BookmarkData
{
    FileIdentity file;
    std::optional<FileFingerprint> fingerprint; ///< nothing for a folder and for a file that could not be read
    QByteArray volume;                          ///< Volume::identity()
    QByteArray volumePath; ///< from the root of the volume, whatever part of it is mounted: "/2023/a.jpg"
    QByteArray mountPoint; ///< where the volume was mounted
    QByteArray givenPath;  ///< as the caller knows it when that leads through links to another path; else empty
    bool operator==(const BookmarkData &) const = default;

    [[nodiscard]] QByteArray encode() const;
    /// Nothing when the bytes are not exactly one bookmark of a known version.
    [[nodiscard]] static std::optional<BookmarkData> decode(const QByteArray &bytes);
    [[nodiscard]] static BookmarkData of(const BookmarkView &view);
};
