#include "SafeMetadata.h"

#include "LogString.h"
#include "XmpPacket.h"

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

/// A packet without these words need not be looked through for them: most that cameras write are such.
bool mayHoldWords(const std::string &packet)
{
    return packet.find("description") != std::string::npos || packet.find("subject") != std::string::npos;
}

}

Exiv2::XmpData SafeMetadata::xmp(const QByteArray &packet, XmpPart part, const QString &source)
{
    Exiv2::XmpData data;
    auto text = packet.isEmpty() ? std::string() : harmlessXmp(packet);
    if (text && part == XmpPart::Words)
        text = mayHoldWords(*text) ? wordsOfXmp(*text) : std::string();
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
    const auto *bytes = reinterpret_cast<const Exiv2::byte *>(records.constData());
    guarded(source, "IPTC", [&] {
        if (!records.isEmpty())
            Exiv2::IptcParser::decode(data, bytes, std::uint32_t(records.size()));
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
    Exiv2::ExifData data;
    const auto *bytes = reinterpret_cast<const Exiv2::byte *>(block.constData());
    guarded(source, "EXIF", [&] {
        if (!block.isEmpty())
            Exiv2::ExifParser::decode(data, bytes, std::uint32_t(block.size()));
    });
    return data;
}
