#pragma once

#include "Decoder.h"
#include "Image.h"

#include <QByteArray>
#include <QDir>
#include <QImage>
#include <QString>
#include <QTemporaryDir>

/// Pictures made by code, as pixels and as files, and how alike two pictures are.
namespace TestPictures {

/// No two corners are alike, nor any two edges: whatever is turned or mirrored differs from it. With alpha, the right
/// half fades out downwards.
[[nodiscard]] QImage colorful(QSize size, bool withAlpha = false);

/// The mean and the largest difference of any channel. Sizes that differ count as 255.
[[nodiscard]] double meanDifference(const QImage &a, const QImage &b);
[[nodiscard]] int largestDifference(const QImage &a, const QImage &b);

/// An EXIF block with that orientation and, when given, a small JPEG picture.
[[nodiscard]] QByteArray exifBlock(int orientation, const QByteArray &thumbnail = {});
/// A JPEG file of good quality with an EXIF block, when given, in front.
[[nodiscard]] QByteArray jpegFile(const QImage &pixels, const QByteArray &exif = {});

struct Encoding
{
    const char *suffix = ".png";   ///< with libvips' options for its saver
    int orientation = 0;           ///< written into the file when not 0
    const char *profile = nullptr; ///< a profile that libvips knows; the numbers are converted to it
};
/// The file of another format; empty when it cannot be written here.
[[nodiscard]] QByteArray encoded(const QImage &pixels, const Encoding &encoding);

/// The checksum of a PNG chunk, from its type on.
[[nodiscard]] quint32 pngChecksum(const QByteArray &bytes);

/// A camera raw file with a preview, turned as `orientation` says.
[[nodiscard]] QByteArray rawFile(const QByteArray &previewJpeg, QSize previewSize, int orientation);

/// A folder with names that trip over quoting.
class Folder
{
public:
    /// Writes a file there and returns its path.
    [[nodiscard]] QString add(const QString &name, const QByteArray &bytes) const;
    [[nodiscard]] QString path(const QString &name) const { return m_folder.filePath(name); }
    [[nodiscard]] bool isValid() const { return m_folder.isValid(); }

private:
    QTemporaryDir m_folder{QDir::tempPath() + QStringLiteral("/Bilder für alle XXXXXX")};
};

/// Opens the file and calls the door.
[[nodiscard]] std::optional<ImageHeader> header(const QString &path);
[[nodiscard]] std::optional<DecodedImage> decode(const QString &path, const DecodeRequest &request = {});

}
