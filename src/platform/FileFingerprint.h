#pragma once

#include <QtGlobal>

#include <optional>

/// What a file's content looks like at a glance: a hash of its first and last 64 KiB. Together with the size it tells
/// photos apart at the price of two small reads. It is no proof against somebody who wants to deceive.
struct FileFingerprint
{
    quint64 high = 0;
    quint64 low = 0;
    bool operator==(const FileFingerprint &) const = default;
};

/// Of an open regular file of `size` bytes. Nothing when it cannot be read or is shorter than that by now.
[[nodiscard]] std::optional<FileFingerprint> readFingerprint(int descriptor, quint64 size);
/// Of the file `name` inside an open folder (or of a path, see kNoFolder), when its size is still `size`. A link, a
/// pipe or a device is not opened.
[[nodiscard]] std::optional<FileFingerprint> readFingerprintAt(int folder, const char *name, quint64 size);
