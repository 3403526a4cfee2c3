#pragma once

#include <QByteArray>
#include <QByteArrayView>

/// What an export keeps of a camera's notes: when the picture was taken and whose it is. Where it was taken, and with
/// what, is not among them.
struct PictureNotes
{
    QByteArray taken; ///< "2024:05:31 12:34:56", the camera's own time
    QByteArray artist;
    QByteArray copyright;

    [[nodiscard]] bool isEmpty() const { return taken.isEmpty() && artist.isEmpty() && copyright.isEmpty(); }

    /// All texts together must fit into one segment of a JPEG file.
    static constexpr qsizetype kMostText = 16 * 1024;

    /// From texts as a file holds them; a moment that is none stays empty.
    [[nodiscard]] static PictureNotes fromTexts(const QByteArray &taken, const QByteArray &artist,
                                                const QByteArray &copyright);
    /// From an EXIF block, with its signature or without; what cannot be read stays empty.
    [[nodiscard]] static PictureNotes fromExif(QByteArrayView exif);
    /// An EXIF block with its signature; empty when there is nothing to tell.
    [[nodiscard]] QByteArray exif() const;
    /// The same as an XMP packet, for formats in which an EXIF block has no usual place.
    [[nodiscard]] QByteArray xmp() const;
};
