#include "BookmarkData.h"

#include <QtEndian>

#include <algorithm>
#include <concepts>
#include <initializer_list>
#include <limits>

namespace {

// Everything is little-endian: magic, version, kind, flags, one zero byte; inode, birth, size, modified, fingerprint
// (high, low); handle type; then the handle, the volume and three paths, each a 16-bit length and as many bytes.
constexpr char kMagic[4] = {'F', 'B', 'm', 'k'};
constexpr quint8 kVersion = 1;
enum Flag : quint8 { HasBirth = 1, HasFingerprint = 2, AllFlags = 3 };
constexpr qsizetype kFixedSize = 4 + 4 + 8 + 12 + 8 + 12 + 16 + 4;
constexpr qsizetype kMaxText = std::numeric_limits<quint16>::max();

/// Fills bytes of a size that is known beforehand.
class Writer
{
public:
    explicit Writer(QByteArray &bytes)
        : m_at(bytes.data())
    {}

    template<std::integral T>
    void put(T value)
    {
        qToLittleEndian(value, m_at);
        m_at += sizeof value;
    }
    void put(const FileTime &time)
    {
        put(time.seconds);
        put(time.nanoseconds);
    }
    void put(QByteArrayView text)
    {
        put(static_cast<quint16>(text.size()));
        put(text.data(), text.size());
    }
    void put(const char *bytes, qsizetype count) { m_at = std::copy_n(bytes, count, m_at); }
    [[nodiscard]] const char *end() const { return m_at; }

private:
    char *m_at;
};

bool fits(const BookmarkData &data)
{
    const std::initializer_list<const QByteArray *> texts = {&data.volume, &data.volumePath, &data.mountPoint,
                                                             &data.givenPath};
    return data.file.handle.bytes.size() <= kMaxText &&
           std::all_of(texts.begin(), texts.end(), [](const QByteArray *text) { return text->size() <= kMaxText; });
}

/// Where the caller wants them: moving them there right after they were written would wait for the memory.
QByteArray encodeFitting(const BookmarkData &data)
{
    const FileIdentity &file = data.file;
    const QByteArrayView handle(file.handle.bytes);
    const FileFingerprint fingerprint = data.fingerprint.value_or(FileFingerprint{});
    QByteArray bytes(kFixedSize + 10 + handle.size() + data.volume.size() + data.volumePath.size() +
                         data.mountPoint.size() + data.givenPath.size(),
                     Qt::Uninitialized);
    Writer writer(bytes);
    writer.put(kMagic, sizeof kMagic);
    writer.put(kVersion);
    writer.put(static_cast<quint8>(file.kind));
    writer.put(static_cast<quint8>((file.birth ? HasBirth : 0) | (data.fingerprint ? HasFingerprint : 0)));
    writer.put(quint8(0));
    writer.put(file.inode);
    writer.put(file.birth.value_or(FileTime{}));
    writer.put(file.size);
    writer.put(file.modified);
    writer.put(fingerprint.high);
    writer.put(fingerprint.low);
    writer.put(file.handle.type);
    writer.put(handle);
    for (const QByteArray *text : {&data.volume, &data.volumePath, &data.mountPoint, &data.givenPath})
        writer.put(*text);
    Q_ASSERT(writer.end() == bytes.cend());
    return bytes;
}

}

QByteArray BookmarkData::encode() const
{
    // The kernel takes no path of 4 KiB, so no file that exists has one that does not fit.
    return fits(*this) ? encodeFitting(*this) : QByteArray();
}

namespace {

/// Reads from the front. Once something was not there, everything after it reads as zero and isGood() is false.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes)
        : m_at(bytes.constData())
        , m_left(bytes.size())
    {}

    template<std::integral T>
    T number()
    {
        const char *at = take(sizeof(T));
        return at ? qFromLittleEndian<T>(at) : T(0);
    }
    FileTime time()
    {
        const auto seconds = number<qint64>();
        const auto nanoseconds = number<quint32>();
        m_good = m_good && nanoseconds < 1'000'000'000;
        return {seconds, nanoseconds};
    }
    QByteArrayView text()
    {
        const auto length = number<quint16>();
        const char *at = take(length);
        return at && length > 0 ? QByteArrayView(at, length) : QByteArrayView();
    }
    [[nodiscard]] bool isGood() const { return m_good; }
    [[nodiscard]] bool isAtEnd() const { return m_left == 0; }

private:
    const char *take(qsizetype count)
    {
        m_good = m_good && count <= m_left;
        if (!m_good)
            return nullptr;
        m_left -= count;
        return std::exchange(m_at, m_at + count);
    }

    const char *m_at;
    qsizetype m_left;
    bool m_good = true;
};

bool isAbsolutePath(const QByteArray &path)
{
    return path.startsWith('/') && !path.contains('\0');
}

bool isSound(const BookmarkData &data)
{
    const bool isFile = data.file.kind == FileKind::File;
    return (isFile || data.file.kind == FileKind::Folder) && (isFile || !data.fingerprint) && !data.volume.isEmpty() &&
           isAbsolutePath(data.volumePath) && isAbsolutePath(data.mountPoint) &&
           (data.givenPath.isEmpty() || isAbsolutePath(data.givenPath));
}

/// In a library nearly every bookmark has the texts of the one before.
QByteArray shared(QByteArrayView text, const QByteArray *neighbour)
{
    return neighbour && *neighbour == text ? *neighbour : text.toByteArray();
}

void readBody(BookmarkData &data, Reader &reader, FileKind kind, quint8 flags, const BookmarkData *neighbour)
{
    data.file.kind = kind;
    data.file.inode = reader.number<quint64>();
    const FileTime birth = reader.time();
    if (flags & HasBirth)
        data.file.birth = birth;
    data.file.size = reader.number<quint64>();
    data.file.modified = reader.time();
    FileFingerprint fingerprint;
    fingerprint.high = reader.number<quint64>();
    fingerprint.low = reader.number<quint64>();
    if (flags & HasFingerprint)
        data.fingerprint = fingerprint;
    data.file.handle.type = reader.number<qint32>();
    const QByteArrayView handle = reader.text();
    data.file.handle.bytes.assign(handle.begin(), handle.end());
    data.volume = shared(reader.text(), neighbour ? &neighbour->volume : nullptr);
    data.volumePath = reader.text().toByteArray();
    data.mountPoint = shared(reader.text(), neighbour ? &neighbour->mountPoint : nullptr);
    data.givenPath = reader.text().toByteArray();
}

}

std::optional<BookmarkData> BookmarkData::decode(const QByteArray &bytes, const BookmarkData *neighbour)
{
    std::optional<BookmarkData> data(std::in_place);
    if (!data->read(bytes, neighbour))
        return {};
    return data;
}

bool BookmarkData::read(const QByteArray &bytes, const BookmarkData *neighbour)
{
    if (!bytes.startsWith(QByteArrayView(kMagic, sizeof kMagic)))
        return false;
    Reader reader(bytes);
    reader.number<quint32>();
    const auto version = reader.number<quint8>();
    const auto kind = static_cast<FileKind>(reader.number<quint8>());
    const auto flags = reader.number<quint8>();
    const auto reserved = reader.number<quint8>();
    if (!reader.isGood() || version != kVersion || (flags & ~AllFlags) != 0 || reserved != 0)
        return false;
    readBody(*this, reader, kind, flags, neighbour);
    return reader.isGood() && reader.isAtEnd() && isSound(*this);
}
