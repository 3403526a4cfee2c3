#include "SafeMetadata.h"

#include "LogString.h"
#include "XmpPacket.h"

#include <QtEndian>

#include <mutex>

namespace {

std::recursive_mutex s_xmpLock; // the toolkit keeps its namespaces in one table

void lockXmp(void *, bool locks)
{
    if (locks)
        s_xmpLock.lock();
    else
        s_xmpLock.unlock();
}

void ensureReady()
{
    static const bool ready = [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        return Exiv2::XmpParser::initialize(lockXmp);
    }();
    static_cast<void>(ready);
}

/// Runs what calls Exiv2, and tells when that could not read what it was given.
template<typename Read>
void guarded(const QString &source, const char *kind, Read read)
{
    try {
        ensureReady();
        read();
    } catch (const std::exception &error) {
        LogString("The %@ block of %@ cannot be read: %@", QString::fromLatin1(kind), source,
                  QString::fromUtf8(error.what()));
    }
}

/// The records that are of use, few enough for a parser that looks through all records for each new one.
QByteArray usefulRecords(const QByteArray &records)
{
    constexpr int mostKeywords = 1'000;
    constexpr char marker = 0x1c;
    constexpr qsizetype head = 5;
    QByteArray useful;
    int keywords = 0;
    int others = 0;
    for (qsizetype at = records.indexOf(marker); at >= 0 && at + head <= records.size();
         at = records.indexOf(marker, at)) {
        const qsizetype size = qFromBigEndian<quint16>(records.constData() + at + 3);
        const bool isShort = size < 0x8000; // longer ones are no words
        const QByteArrayView kind = QByteArrayView(records).sliced(at + 1, 2);
        const bool isKeyword = kind == QByteArrayView("\x02\x19");
        const bool isOther = kind == QByteArrayView("\x01\x5a") || kind == QByteArrayView("\x02\x78");
        if (isShort && ((isKeyword && keywords++ < mostKeywords) || (isOther && others++ < 8)))
            useful += records.mid(at, head + size);
        at += isShort ? head + size : 1;
    }
    return useful;
}

}

Exiv2::XmpData SafeMetadata::xmp(const QByteArray &packet, XmpPart part, const QString &source)
{
    Exiv2::XmpData data;
    std::optional<std::string> text = std::string();
    if (!packet.isEmpty())
        text = part == XmpPart::Words ? wordsOfXmp(packet) : harmlessXmp(packet);
    if (!text)
        LogString("The XMP block of %@ is broken or unreasonable.", source);
    if (!text || text->empty())
        return data;
    guarded(source, "XMP", [&] {
        const std::lock_guard lock(s_xmpLock);
        if (Exiv2::XmpParser::decode(data, *text) != 0) {
            data.clear();
            LogString("The XMP block of %@ cannot be read.", source);
        }
    });
    return data;
}

Exiv2::IptcData SafeMetadata::iptc(const QByteArray &records, const QString &source)
{
    Exiv2::IptcData data;
    const QByteArray useful = usefulRecords(records);
    const auto *bytes = reinterpret_cast<const Exiv2::byte *>(useful.constData());
    guarded(source, "IPTC", [&] {
        if (!useful.isEmpty())
            Exiv2::IptcParser::decode(data, bytes, std::uint32_t(useful.size()));
    });
    return data;
}

QByteArray SafeMetadata::recordsInResources(const QByteArray &resources)
{
    const auto *bytes = reinterpret_cast<const Exiv2::byte *>(resources.constData());
    const Exiv2::byte *record = nullptr;
    std::uint32_t head = 0;
    std::uint32_t size = 0;
    QByteArray records;
    guarded({}, "resource", [&] {
        if (!resources.isEmpty() &&
            Exiv2::Photoshop::locateIptcIrb(bytes, long(resources.size()), &record, &head, &size) == 0)
            records = QByteArray(reinterpret_cast<const char *>(record + head), qsizetype(size));
    });
    return records;
}

Exiv2::ExifData SafeMetadata::exif(const QByteArray &block, const QString &source)
{
    // Entries may all lead to the same bytes, which are copied for each of them.
    constexpr qsizetype mostBytes = 128 << 10;
    Exiv2::ExifData data;
    if (block.size() > mostBytes) {
        LogString("The EXIF block of %@ is unreasonably large.", source);
        return data;
    }
    const auto *bytes = reinterpret_cast<const Exiv2::byte *>(block.constData());
    guarded(source, "EXIF", [&] {
        if (!block.isEmpty())
            Exiv2::ExifParser::decode(data, bytes, std::uint32_t(block.size()));
    });
    return data;
}
