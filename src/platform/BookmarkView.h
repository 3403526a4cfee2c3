#pragma once

#include "BookmarkFormat.h"
#include "FileFingerprint.h"
#include "FileIdentity.h"

#include <QByteArray>
#include <QByteArrayView>

#include <array>
#include <optional>

/// Reads a bookmark where it lies and copies nothing, for those who look for very many files. As valid as the bytes.
/// What the fields mean is told with BookmarkData.
class BookmarkView
{
public:
    /// Nothing when the bytes are not exactly one bookmark of a known version.
    [[nodiscard]] static std::optional<BookmarkView> of(QByteArrayView bytes);

    [[nodiscard]] FileKind kind() const { return static_cast<FileKind>(number<quint8>(BookmarkFormat::Kind)); }
    [[nodiscard]] quint64 inode() const { return number<quint64>(BookmarkFormat::Inode); }
    [[nodiscard]] std::optional<FileTime> birth() const;
    [[nodiscard]] quint64 size() const { return number<quint64>(BookmarkFormat::Size); }
    [[nodiscard]] FileTime modified() const { return time(BookmarkFormat::Modified); }
    [[nodiscard]] FileHandle handle() const;
    /// All of the above.
    [[nodiscard]] FileIdentity file() const;
    [[nodiscard]] std::optional<FileFingerprint> fingerprint() const;

    [[nodiscard]] QByteArrayView volume() const { return text(BookmarkFormat::VolumeIdentity); }
    [[nodiscard]] QByteArrayView volumePath() const { return text(BookmarkFormat::VolumePath); }
    [[nodiscard]] QByteArrayView mountPoint() const { return text(BookmarkFormat::MountPoint); }
    [[nodiscard]] QByteArrayView givenPath() const { return text(BookmarkFormat::GivenPath); }

    /// The bookmark of the same file on the same volume at another place. Empty when a path is too long for one.
    [[nodiscard]] QByteArray movedTo(QByteArrayView volumePath, QByteArrayView mountPoint,
                                     QByteArrayView givenPath) const;

    /// Has the bytes brought near that will be asked for in a moment.
    void prefetch() const
    {
        constexpr qsizetype kCacheLine = 64;
        for (qsizetype at = 0; at < start(BookmarkFormat::TextCount); at += kCacheLine)
            __builtin_prefetch(m_bytes + at);
    }

private:
    template<std::integral T>
    [[nodiscard]] T number(qsizetype at) const
    {
        return qFromLittleEndian<T>(m_bytes + at);
    }
    [[nodiscard]] FileTime time(qsizetype at) const { return {number<qint64>(at), number<quint32>(at + 8)}; }
    [[nodiscard]] bool has(BookmarkFormat::Flag flag) const { return number<quint8>(BookmarkFormat::Flags) & flag; }
    /// Where the length of a text stands; with TextCount where everything ends.
    [[nodiscard]] qsizetype start(int text) const
    {
        qsizetype at = BookmarkFormat::Texts;
        for (int before = 0; before < text; ++before)
            at += BookmarkFormat::kLengthSize + m_lengths[static_cast<std::size_t>(before)];
        return at;
    }
    [[nodiscard]] QByteArrayView text(BookmarkFormat::Text which) const
    {
        return {m_bytes + start(which) + BookmarkFormat::kLengthSize,
                qsizetype(m_lengths[static_cast<std::size_t>(which)])};
    }
    [[nodiscard]] bool readLengths(qsizetype size);
    [[nodiscard]] bool isSound() const;

    const char *m_bytes = nullptr;
    std::array<quint16, BookmarkFormat::TextCount> m_lengths = {};
};
