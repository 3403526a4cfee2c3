#include "PictureBlocks.h"

#include "HeifItems.h"
#include "JpegMarkers.h"
#include "TiffDirectories.h"

#include <QtEndian>

#include <functional>

namespace {

/// Real files stay far below; what exceeds it is made to keep us busy.
constexpr int kMostChunks = 20'000;

struct Chunk
{
    QByteArray type;
    qint64 start = 0; ///< of what it holds
    qint64 size = 0;
    qint64 next = 0;
};

/// Reads the head of the chunk that begins at a place.
using ReadHead = std::function<Chunk(const ByteSource &source, qint64 at)>;

Chunk pngHead(const ByteSource &source, qint64 at)
{
    const QByteArray head = source.bytes(at, 8);
    if (head.size() < 8)
        return {};
    const qint64 size = qFromBigEndian<quint32>(head.constData());
    return {head.mid(4, 4), at + 8, size, at + 8 + size + 4};
}

Chunk webPHead(const ByteSource &source, qint64 at)
{
    const QByteArray head = source.bytes(at, 8);
    if (head.size() < 8)
        return {};
    const qint64 size = qFromLittleEndian<quint32>(head.constData() + 4);
    return {head.left(4), at + 8, size, at + 8 + size + size % 2};
}

Chunk boxHead(const ByteSource &source, qint64 at)
{
    const QByteArray head = source.bytes(at, 16);
    if (head.size() < 8)
        return {};
    quint64 size = qFromBigEndian<quint32>(head.constData());
    const bool isWide = size == 1 && head.size() == 16;
    if (isWide)
        size = qFromBigEndian<quint64>(head.constData() + 8);
    if (size == 0) // to the end
        size = quint64(source.size() - at);
    const qint64 body = isWide ? 16 : 8;
    if (size < quint64(body) || size > quint64(source.size()))
        return {};
    return {head.mid(4, 4), at + body, qint64(size) - body, at + qint64(size)};
}

/// The text behind a keyword, two bytes about compression, a language and the keyword in that language.
QByteArray packetInPngText(const QByteArray &text)
{
    static constexpr QByteArrayView kHead("XML:com.adobe.xmp\0\0", 19); // not compressed
    if (!text.startsWith(kHead))
        return {};
    const qsizetype language = text.indexOf('\0', kHead.size() + 1);
    const qsizetype keyword = language < 0 ? -1 : text.indexOf('\0', language + 1);
    return keyword < 0 ? QByteArray() : text.mid(keyword + 1);
}

void take(PictureBlocks &blocks, const QByteArray &type, const QByteArray &bytes)
{
    if (type == "eXIf" || type == "EXIF")
        blocks.exif = PictureBlocks::withoutSignature(bytes);
    else if (type == "Exif")
        blocks.exif = PictureBlocks::withoutHead(bytes);
    else if (type == "iTXt" && blocks.xmp.isEmpty())
        blocks.xmp = packetInPngText(bytes);
    else if (type == "XMP " || type == "xml ")
        blocks.xmp = bytes;
}

bool isOfUse(const QByteArray &type)
{
    static const QByteArrayList kTypes{"eXIf", "EXIF", "Exif", "iTXt", "XMP ", "xml "};
    return kTypes.contains(type);
}

}

PictureBlocks PictureBlocks::fromChunks(const ByteSource &source, ImageFormat format)
{
    const ReadHead readHead = format == ImageFormat::Png ? pngHead : format == ImageFormat::WebP ? webPHead : boxHead;
    qint64 at = format == ImageFormat::Png ? 8 : format == ImageFormat::WebP ? 12 : 0;
    PictureBlocks blocks;
    for (int i = 0; i < kMostChunks; ++i) {
        const Chunk chunk = readHead(source, at);
        if (chunk.next <= at)
            break;
        if (isOfUse(chunk.type) && chunk.size <= kMostBytes)
            take(blocks, chunk.type, source.bytes(chunk.start, chunk.size));
        at = chunk.next;
    }
    return blocks;
}

PictureBlocks PictureBlocks::fromHeif(const ByteSource &source)
{
    const auto items = readHeifItems(source, kMostBytes);
    return {withoutSignature(withoutHead(items.value("Exif"))), items.value(kXmpContent), {}, {}};
}

PictureBlocks PictureBlocks::fromJpeg(const ByteSource &source)
{
    const auto markers = readJpegMarkers(source, JpegTexts::Read);
    if (!markers)
        return {};
    return {withoutSignature(markers->exif), markers->xmp, {}, markers->resources};
}

QByteArray PictureBlocks::withoutSignature(const QByteArray &exif)
{
    return exif.startsWith("Exif") ? exif.mid(6) : exif;
}

QByteArray PictureBlocks::withoutHead(const QByteArray &exif)
{
    return exif.size() > 4 ? exif.mid(4 + qint64(qFromBigEndian<quint32>(exif.constData()))) : QByteArray();
}

namespace {

/// Makes a small TIFF file of a few entries of a large one, in the same byte order.
class SmallTiff
{
public:
    explicit SmallTiff(const TiffDirectories &from)
        : m_from(from)
    {}

    /// The directory with those of the entries that are there and short, to stand at `place`; empty without any.
    [[nodiscard]] QByteArray directory(qint64 from, std::initializer_list<quint16> tags, qint64 place,
                                       const QByteArray &more = {}) const
    {
        constexpr qint64 entrySize = 12;
        constexpr qint64 longestValue = 4096;
        const qint64 room = entrySize * qint64(tags.size() + 1) + 6; // some of it stays unused
        QByteArray entries;
        QByteArray values;
        for (const quint16 tag : tags) {
            const QByteArray entry = m_from.entry(from, tag);
            const QByteArray value = m_from.valueOf(entry, longestValue);
            if (value.isEmpty())
                continue;
            const bool isInPlace = value.size() <= 4;
            entries +=
                entry.left(8) + (isInPlace ? value.leftJustified(4, '\0') : number(place + room + values.size()));
            values += isInPlace ? QByteArray() : value + QByteArray(value.size() % 2, '\0');
        }
        entries += more;
        if (entries.isEmpty())
            return {};
        const QByteArray directory = number(entries.size() / entrySize, 2) + entries + number(0);
        return directory.leftJustified(room, '\0') + values;
    }

    [[nodiscard]] QByteArray number(qint64 value, int bytes = 4) const
    {
        QByteArray text(bytes, '\0');
        for (int i = 0; i < bytes; ++i)
            text[m_from.isBigEndian() ? bytes - 1 - i : i] = char(value >> (8 * i) & 0xff);
        return text;
    }

private:
    const TiffDirectories &m_from;
};

/// Camera, lens, exposure and date.
QByteArray cameraBlock(const TiffDirectories &file)
{
    constexpr quint16 cameraDirectory = 0x8769;
    constexpr qint64 cameraPlace = 8;
    const SmallTiff small(file);
    const QByteArray camera = small.directory(
        file.directoryIn(file.first(), cameraDirectory),
        {0x829a, 0x829d, 0x8827, 0x8830, 0x8831, 0x8832, 0x8833, 0x9003, 0x9004, 0x9011, 0x9012, 0x920a, 0xa434},
        cameraPlace);
    const QByteArray more = camera.isEmpty() ? QByteArray()
                                             : small.number(cameraDirectory, 2) + small.number(4, 2) + small.number(1) +
                                                   small.number(cameraPlace);
    const qint64 firstPlace = cameraPlace + camera.size();
    const QByteArray first = small.directory(file.first(), {0x010f, 0x0110}, firstPlace, more);
    if (first.isEmpty())
        return {};
    return (file.isBigEndian() ? "MM" : "II") + small.number(42, 2) + small.number(firstPlace) + camera + first;
}

}

PictureBlocks PictureBlocks::fromTiff(const ByteSource &source)
{
    const TiffDirectories file(source);
    const auto block = [&](quint16 tag) { return file.valueOf(file.entry(file.first(), tag), kMostBytes); };
    return {cameraBlock(file), block(0x02bc), block(0x83bb), block(0x8649)};
}
