#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QImage>

/// Files as cameras write them, made by code.
namespace CameraFile {

[[nodiscard]] inline QByteArray jpeg(const QColor &color, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 90);
    return bytes;
}

[[nodiscard]] inline QByteArray bigEndian(quint32 value, int bytes)
{
    QByteArray text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text.append(char(value >> shift & 0xff));
    return text;
}

[[nodiscard]] inline QByteArray exifEntry(quint32 tag, quint32 type, quint32 value)
{
    const QByteArray padded = type == 3 ? bigEndian(value, 2) + bigEndian(0, 2) : bigEndian(value, 4);
    return bigEndian(tag, 2) + bigEndian(type, 2) + bigEndian(1, 4) + padded;
}

/// The JPEG file `picture` with the JPEG file `small` in it as a camera's thumbnail.
[[nodiscard]] inline QByteArray withThumbnail(const QByteArray &picture, const QByteArray &small)
{
    const quint32 second = 8 + 2 + 12 + 4;
    const quint32 place = second + 2 + 3 * 12 + 4;
    const QByteArray exif = QByteArray("Exif\0\0MM\0*", 10) + bigEndian(8, 4) + bigEndian(1, 2) +
                            exifEntry(0x0112, 3, 1) + bigEndian(second, 4) + bigEndian(3, 2) + exifEntry(0x0103, 3, 6) +
                            exifEntry(0x0201, 4, place) + exifEntry(0x0202, 4, quint32(small.size())) +
                            bigEndian(0, 4) + small;
    return QByteArray("\xff\xd8\xff\xe1") + bigEndian(quint32(exif.size() + 2), 2) + exif + picture.mid(2);
}

/// A JPEG file of one colour that carries a small picture of another.
[[nodiscard]] inline QByteArray twoColors(const QColor &color, const QColor &embedded)
{
    return withThumbnail(jpeg(color, {800, 600}), jpeg(embedded, {160, 120}));
}

}
