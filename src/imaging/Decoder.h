#pragma once

#include "ImageFormat.h"
#include "PictureBlocks.h"
#include "PictureNotes.h"

#include <QImage>
#include <QRect>
#include <QSize>
#include <QString>

#include <atomic>
#include <optional>

/// What a file's header tells.
struct ImageHeader
{
    ImageFormat format = ImageFormat::Unknown;
    QSize size; ///< pixels, as shown: orientation applied
    bool hasAlpha = false;
};

/// Which pixels are wanted.
struct DecodeRequest
{
    QSize size;   ///< as shown; the part's full size when empty, and never enlarged beyond it
    QRect region; ///< the part of the picture, in pixels as shown; all of it when empty
    const std::atomic<bool> *cancelled = nullptr; ///< set from another thread when nobody wants the pixels any more
};

struct DecodedImage
{
    QImage pixels;        ///< 8-bit sRGB: Format_RGB32, or Format_ARGB32_Premultiplied when there is alpha
    QSize fullSize;       ///< as in the header
    bool damaged = false; ///< the file was cut short or broken; what could be read is in `pixels`
};

/// The one door through which pictures from outside come in. It takes a descriptor, never a name; refuses by header
/// what is not a picture, larger than 300 megapixels, or a file of too many bytes; applies the file's orientation
/// and converts to sRGB. Any thread. Nothing is thrown, and failures tell why through `reason`.
namespace Decoder {

inline constexpr qint64 kMaxPixels = 300'000'000;
/// Bounds what one row can take.
inline constexpr int kMaxSide = 100'000;
inline constexpr qint64 kMaxFileBytes = qint64(2) << 30;

/// Prepares the libraries behind the door; whoever decodes first does it otherwise.
void initialize();

/// Reads the header only. `fileName` serves to tell camera raw files from TIFF. The descriptor stays the caller's;
/// its file position is left anywhere.
[[nodiscard]] std::optional<ImageHeader> readHeader(int descriptor, const QString &fileName, QString *reason = nullptr);

/// Decodes to exactly the size wanted, shrinking while loading as far as the format allows.
[[nodiscard]] std::optional<DecodedImage> decode(int descriptor, const QString &fileName,
                                                 const DecodeRequest &request = {}, QString *reason = nullptr);

/// The small picture that many camera files carry, turned upright; reads the first kilobytes of the file only.
/// Nothing when there is none, or when its shape is not that of the picture.
[[nodiscard]] std::optional<QImage> embeddedThumbnail(int descriptor, const QString &fileName);

/// What the file tells of itself that exports keep; empty when it tells nothing. Reads no pixels.
[[nodiscard]] PictureNotes readNotes(int descriptor, const QString &fileName);

/// What people, programs and the camera wrote about the picture, not yet understood. Reads no pixels.
[[nodiscard]] PictureBlocks readBlocks(int descriptor, const QString &fileName);

}
