#include "BookmarkData.h"

#include "BookmarkFormat.h"
#include "BookmarkView.h"

#include <algorithm>
#include <array>

using namespace BookmarkFormat;

QByteArray BookmarkData::encode() const
{
    const std::array<QByteArrayView, TextCount> texts = {file.handle.bytes, volume, volumePath, mountPoint, givenPath};
    qsizetype size = Texts;
    for (const QByteArrayView text : texts) {
        if (text.size() > kMaxText)
            return {}; // the kernel takes no path of 4 KiB, so this is of no file that exists
        size += kLengthSize + text.size();
    }
    QByteArray bytes(size, Qt::Uninitialized);
    Writer writer(bytes.data());
    writer.putBytes(QByteArrayView(kMagic, sizeof kMagic));
    writer.put(kVersion);
    writer.put(static_cast<quint8>(file.kind));
    writer.put(static_cast<quint8>((file.birth ? HasBirth : 0) | (fingerprint ? HasFingerprint : 0)));
    writer.put(quint8(0));
    writer.put(file.inode);
    writer.put(file.birth.value_or(FileTime{}));
    writer.put(file.size);
    writer.put(file.modified);
    writer.put(fingerprint.value_or(FileFingerprint{}).high);
    writer.put(fingerprint.value_or(FileFingerprint{}).low);
    writer.put(file.handle.type);
    for (const QByteArrayView text : texts)
        writer.putText(text);
    Q_ASSERT(writer.end() == bytes.cend());
    return bytes;
}

std::optional<BookmarkData> BookmarkData::decode(const QByteArray &bytes)
{
    const auto view = BookmarkView::of(bytes);
    return view ? std::optional(of(*view)) : std::nullopt;
}

BookmarkData BookmarkData::of(const BookmarkView &view)
{
    return {view.file(),
            view.fingerprint(),
            view.volume().toByteArray(),
            view.volumePath().toByteArray(),
            view.mountPoint().toByteArray(),
            view.givenPath().toByteArray()};
}
