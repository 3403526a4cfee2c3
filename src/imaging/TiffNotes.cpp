#include "TiffNotes.h"

#include "TiffDirectories.h"

#include <QMap>
#include <QtEndian>

#include <limits>
#include <optional>
#include <utility>

namespace {

constexpr quint16 kArtist = 0x013b;
constexpr quint16 kCopyright = 0x8298;
constexpr quint16 kCameraDirectory = 0x8769;
constexpr quint16 kTaken = 0x9003;

}

PictureNotes readTiffNotes(const ByteSource &source)
{
    const TiffDirectories file(source);
    const qint64 first = file.first();
    return PictureNotes::fromTexts(file.textIn(file.directoryIn(first, kCameraDirectory), kTaken),
                                   file.textIn(first, kArtist), file.textIn(first, kCopyright));
}

namespace {

template<typename Number>
QByteArray littleEndian(Number value)
{
    value = qToLittleEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof(value));
}

template<typename Number>
Number littleEndianAt(const QByteArray &file, qsizetype at)
{
    return qFromLittleEndian<Number>(file.constData() + at);
}

/// Entries of a directory by their tags, in whose order they must stand.
using TiffEntries = QMap<quint16, QByteArray>;

void addEntry(TiffEntries &entries, quint16 tag, quint16 type, qsizetype count, QByteArray value)
{
    entries[tag] = littleEndian(tag) + littleEndian(type) + littleEndian(quint32(count)) + value.leftJustified(4, '\0');
}

/// A text longer than an entry goes to the end of the file.
void addText(TiffEntries &entries, QByteArray &file, quint16 tag, const QByteArray &text)
{
    constexpr quint16 kText = 2;
    if (text.isEmpty())
        return;
    const QByteArray ended = text + '\0';
    if (ended.size() <= 4) {
        addEntry(entries, tag, kText, ended.size(), ended);
        return;
    }
    addEntry(entries, tag, kText, ended.size(), littleEndian(quint32(file.size())));
    file += ended;
}

/// Puts the directory at the end of the file and tells where that is: at an even place.
quint32 append(QByteArray &file, const TiffEntries &entries, quint32 next)
{
    if (file.size() % 2 != 0)
        file += '\0';
    const auto place = quint32(file.size());
    file += littleEndian(quint16(entries.size()));
    for (const QByteArray &entry : entries)
        file += entry;
    file += littleEndian(next);
    return place;
}

/// Those of the directory at `place`, and where the next one is; nothing when it is not all there.
std::optional<std::pair<TiffEntries, quint32>> entriesAt(const QByteArray &file, quint32 place)
{
    constexpr qsizetype entrySize = 12;
    if (qsizetype(place) + 2 > file.size())
        return std::nullopt;
    const qsizetype end = qsizetype(place) + 2 + entrySize * littleEndianAt<quint16>(file, place);
    if (end + 4 > file.size())
        return std::nullopt;
    TiffEntries entries;
    for (qsizetype at = qsizetype(place) + 2; at < end; at += entrySize)
        entries[littleEndianAt<quint16>(file, at)] = file.mid(at, entrySize);
    return std::pair(entries, littleEndianAt<quint32>(file, end));
}

}

QByteArray withTiffNotes(QByteArray file, const PictureNotes &notes)
{
    constexpr qint64 mostAdded = 4 * PictureNotes::kMostText + 4096;
    constexpr quint16 longNumber = 4;
    const bool isKnown = file.startsWith(QByteArrayView("II*\0", 4)) && file.size() > 8 &&
                         file.size() + mostAdded < std::numeric_limits<quint32>::max();
    auto first = isKnown && !notes.isEmpty() ? entriesAt(file, littleEndianAt<quint32>(file, 4)) : std::nullopt;
    if (!first)
        return file;
    addText(first->first, file, kArtist, notes.artist);
    addText(first->first, file, kCopyright, notes.copyright);
    if (!notes.taken.isEmpty()) {
        constexpr quint16 version = 0x9000;
        constexpr quint16 bytes = 7;
        TiffEntries camera;
        addEntry(camera, version, bytes, 4, "0232");
        addText(camera, file, kTaken, notes.taken);
        addEntry(first->first, kCameraDirectory, longNumber, 1, littleEndian(append(file, camera, 0)));
    }
    const quint32 place = append(file, first->first, first->second);
    return file.replace(4, 4, littleEndian(place));
}
