#pragma once

#include <exiv2/exiv2.hpp>

#include <QByteArray>
#include <QString>

/// The way to Exiv2. It gets blocks only, never files, and no block that would keep it busy or exhaust the stack.
/// It throws nothing from here: what it cannot read is left empty and told in one line of the log. Any thread.
/// `source` is the file of which the log tells.
namespace SafeMetadata {

enum class XmpPart {
    Words, ///< description and subjects, also of a packet in which the rest is not as it should be
    All
};

/// Also refuses packets with entities of their own, very deep ones and those with very many properties.
[[nodiscard]] Exiv2::XmpData xmp(const QByteArray &packet, XmpPart part, const QString &source);
/// From bare records: those of captions, keywords and their characters, not very many.
[[nodiscard]] Exiv2::IptcData iptc(const QByteArray &records, const QString &source);
/// The records among an image editor's resources; empty when there are none.
[[nodiscard]] QByteArray recordsInResources(const QByteArray &resources);
[[nodiscard]] Exiv2::ExifData exif(const QByteArray &block, const QString &source);

}
