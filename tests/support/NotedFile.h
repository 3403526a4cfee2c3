#pragma once

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QString>
#include <QStringList>

#include <utility>

/// Image files with what people and cameras write about a picture, made by code.
namespace NotedFile {

[[nodiscard]] inline QByteArray number(quint64 value, int bytes)
{
    QByteArray text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text.append(char(value >> shift & 0xff));
    return text;
}

/// An XMP packet. `description` is what stands in the list of languages.
[[nodiscard]] inline QByteArray packet(const QByteArray &description, const QByteArrayList &subjects)
{
    QByteArray items;
    for (const QByteArray &subject : subjects)
        items += "<rdf:li>" + subject + "</rdf:li>";
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
           "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/'>"
           "<dc:description><rdf:Alt>" +
           description + "</rdf:Alt></dc:description><dc:subject><rdf:Bag>" + items +
           "</rdf:Bag></dc:subject></rdf:Description></rdf:RDF></x:xmpmeta>";
}

[[nodiscard]] inline QByteArray inEveryLanguage(const QByteArray &text)
{
    return "<rdf:li xml:lang='x-default'>" + text + "</rdf:li>";
}

/// One record of the kind in which captions (120) and keywords (25) stand.
[[nodiscard]] inline QByteArray record(char dataSet, const QByteArray &text)
{
    return QByteArray("\x1c\x02") + dataSet + number(quint64(text.size()), 2) + text;
}
/// Stands before records in UTF-8.
inline const QByteArray kUtf8Records = QByteArray("\x1c\x01\x5a\0\x03\x1b%G", 8);

/// Records among an image editor's resources.
[[nodiscard]] inline QByteArray resources(const QByteArray &records)
{
    const QByteArray padding(records.size() % 2, '\0');
    return QByteArray("8BIM\x04\x04\0\0", 8) + number(quint64(records.size()), 4) + records + padding;
}

struct Entry
{
    quint16 tag;
    quint16 type; ///< 1 bytes, 2 text, 3 short, 4 long, 5 rational
    quint32 count;
    QByteArray value;
};

[[nodiscard]] inline Entry text(quint16 tag, const QByteArray &value)
{
    return {tag, 2, quint32(value.size() + 1), value + '\0'};
}

[[nodiscard]] inline Entry rational(quint16 tag, quint32 above, quint32 below)
{
    return {tag, 5, 1, number(above, 4) + number(below, 4)};
}

[[nodiscard]] inline QByteArray directory(const QList<Entry> &entries, qint64 place)
{
    QByteArray head = number(quint64(entries.size()), 2);
    QByteArray values;
    const qint64 behind = place + 2 + 12 * entries.size() + 4;
    for (const Entry &entry : entries) {
        const bool isInPlace = entry.value.size() <= 4;
        head += number(entry.tag, 2) + number(entry.type, 2) + number(entry.count, 4);
        head += isInPlace ? entry.value.leftJustified(4, '\0') : number(quint64(behind + values.size()), 4);
        if (!isInPlace)
            values += entry.value;
    }
    return head + number(0, 4) + values;
}

/// A TIFF file without pixels: an EXIF block, or what a raw file looks like. `more` goes into the first directory.
[[nodiscard]] inline QByteArray cameraNotes(const QList<Entry> &more = {})
{
    const QList<Entry> camera{rational(0x829a, 1, 250),        rational(0x829d, 28, 10),
                              {0x8827, 3, 1, number(400, 2)},  text(0x9003, "2024:05:31 12:34:56"),
                              text(0x9011, "+02:00"),          rational(0x920a, 85, 1),
                              text(0xa434, "Norvik 85mm F1.8")};
    const QByteArray head("MM\0*", 4);
    const QByteArray second = directory(camera, 8);
    QList<Entry> entries{text(0x010f, "NORVIK CORPORATION"), text(0x0110, "Norvik D5")};
    entries += more;
    entries << Entry{0x8769, 4, 1, number(8, 4)};
    return head + number(quint64(8 + second.size()), 4) + second + directory(entries, 8 + second.size());
}

/// The JPEG file with one more segment in front.
[[nodiscard]] inline QByteArray withSegment(const QByteArray &jpeg, char marker, const QByteArray &body)
{
    return jpeg.left(2) + '\xff' + marker + number(quint64(body.size() + 2), 2) + body + jpeg.mid(2);
}
[[nodiscard]] inline QByteArray withPacket(const QByteArray &jpeg, const QByteArray &packet)
{
    return withSegment(jpeg, '\xe1', QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + packet);
}
[[nodiscard]] inline QByteArray withRecords(const QByteArray &jpeg, const QByteArray &records)
{
    return withSegment(jpeg, '\xed', QByteArray("Photoshop 3.0\0", 14) + resources(records));
}
[[nodiscard]] inline QByteArray withExif(const QByteArray &jpeg, const QByteArray &notes)
{
    return withSegment(jpeg, '\xe1', QByteArray("Exif\0\0", 6) + notes);
}

}
