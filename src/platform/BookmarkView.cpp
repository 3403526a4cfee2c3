#include "BookmarkView.h"

#include <cstring>

using namespace BookmarkFormat;

std::optional<BookmarkView> BookmarkView::of(QByteArrayView bytes)
{
    if (bytes.size() < Texts || std::memcmp(bytes.data(), kMagic, sizeof kMagic) != 0)
        return {};
    BookmarkView view;
    view.m_bytes = bytes.data();
    if (view.number<quint8>(Version) != kVersion || (view.number<quint8>(Flags) & ~AllFlags) != 0 ||
        view.number<quint8>(Reserved) != 0 || !view.readLengths(bytes.size()) || !view.isSound())
        return {};
    return view;
}

/// Whether the texts fill the bytes.
bool BookmarkView::readLengths(qsizetype size)
{
    qsizetype at = Texts;
    for (quint16 &length : m_lengths) {
        if (size - at < kLengthSize)
            return false;
        length = number<quint16>(at);
        at += kLengthSize + length;
    }
    return at == size;
}

namespace {

bool isAbsolutePath(QByteArrayView path)
{
    return path.startsWith('/') && !std::memchr(path.data(), '\0', static_cast<std::size_t>(path.size()));
}

bool isMoment(const FileTime &time)
{
    return time.nanoseconds < 1'000'000'000;
}

}

bool BookmarkView::isSound() const
{
    const bool isFile = kind() == FileKind::File;
    return (isFile || (kind() == FileKind::Folder && !has(HasFingerprint))) && isMoment(time(Birth)) &&
           isMoment(modified()) && !volume().isEmpty() && isAbsolutePath(volumePath()) &&
           isAbsolutePath(mountPoint()) && (givenPath().isEmpty() || isAbsolutePath(givenPath()));
}

std::optional<FileTime> BookmarkView::birth() const
{
    return has(HasBirth) ? std::optional(time(Birth)) : std::nullopt;
}

FileHandle BookmarkView::handle() const
{
    const QByteArrayView bytes = text(Handle);
    return {number<qint32>(HandleType), std::string(bytes.data(), static_cast<std::size_t>(bytes.size()))};
}

FileIdentity BookmarkView::file() const
{
    return {kind(), inode(), handle(), birth(), size(), modified()};
}

std::optional<FileFingerprint> BookmarkView::fingerprint() const
{
    if (!has(HasFingerprint))
        return {};
    return FileFingerprint{number<quint64>(Fingerprint), number<quint64>(Fingerprint + 8)};
}

QByteArray BookmarkView::movedTo(QByteArrayView volumePath, QByteArrayView mountPoint, QByteArrayView givenPath) const
{
    if (std::max({volumePath.size(), mountPoint.size(), givenPath.size()}) > kMaxText)
        return {};
    const QByteArrayView same(m_bytes, start(VolumePath));
    QByteArray bytes(same.size() + 3 * kLengthSize + volumePath.size() + mountPoint.size() + givenPath.size(),
                     Qt::Uninitialized);
    Writer writer(bytes.data());
    writer.putBytes(same);
    for (const QByteArrayView text : {volumePath, mountPoint, givenPath})
        writer.putText(text);
    Q_ASSERT(writer.end() == bytes.cend());
    return bytes;
}
