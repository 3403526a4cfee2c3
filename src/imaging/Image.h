#pragma once

#include "Decoder.h"
#include "EffectChain.h"

#include <QImage>
#include <QRectF>
#include <QSize>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>

/// The largest size with the image's shape that fits into `box` without enlarging, both sides rounded down, at least
/// 1 × 1: a 4000 × 3000 picture in 240 × 240 gives 240 × 180.
[[nodiscard]] QSize CenterRectangle(QSize image, QSize box);
/// The same, centred in the box; the origin is rounded down too.
[[nodiscard]] QRectF CenterRectangle(QSizeF size, const QRectF &box);

/// A cheap, immutable, thread-safe handle on a picture that has not been decoded: a file, or pixels in memory, with an
/// optional crop and effect chain. Copies share one identity. Pixels are made when asked for, at the size asked for.
class Image
{
public:
    /// A null image.
    Image() = default;
    /// Opens the file and reads its header only; null when it is no readable picture (then `reason` tells why).
    [[nodiscard]] static Image fromFile(const QString &path, QString *reason = nullptr);
    [[nodiscard]] static Image fromPixels(const QImage &pixels);

    [[nodiscard]] bool isNull() const { return !d; }
    /// Pixels as shown: orientation and crop applied. Empty when null.
    [[nodiscard]] QSize size() const;
    [[nodiscard]] bool hasAlpha() const;
    /// The same object, not merely an equal picture.
    [[nodiscard]] bool isSameAs(const Image &other) const { return d == other.d; }
    /// A number that only this image and its copies have, so that pixels can be kept under it; 0 when null.
    [[nodiscard]] quint64 number() const;
    /// The file's path; empty for pixels in memory.
    [[nodiscard]] QString path() const;
    /// Whether the file is still as it was when the handle was made: a changed file yields no pixels, and wants a new
    /// handle. Costs one look at the path; always true for pixels in memory.
    [[nodiscard]] bool isCurrent() const;

    /// The part inside `rect` (pixels of this image, y downward), clamped to the image; null when nothing is left.
    [[nodiscard]] Image cropped(const QRectF &rect) const;
    /// With the chain applied after what this image already has.
    [[nodiscard]] Image withEffects(const EffectChain &chain) const;

    /// Decodes, crops and filters to exactly `size` (the full size when empty; never enlarged beyond it).
    /// Nothing when the file is gone or unreadable, or `cancelled` becomes true; effects that fail are left out.
    /// Blocks: any thread but the main one. A damaged file gives what could be read and is told of in the log once.
    [[nodiscard]] std::optional<QImage> pixels(QSize size = {}, const std::atomic<bool> *cancelled = nullptr) const;
    /// The same of `part` alone (pixels of this image, inside it), scaled to exactly `size`, never enlarged.
    [[nodiscard]] std::optional<QImage> pixelsOf(const QRect &part, QSize size,
                                                 const std::atomic<bool> *cancelled = nullptr) const;
    /// Whether the pixels that were made so far came from a file that was cut short or broken. Any thread.
    [[nodiscard]] bool isDamaged() const;
    /// Whether effects failed and were left out of the pixels that were made so far. Any thread.
    [[nodiscard]] bool lacksEffects() const;
    /// The small picture that the file carries; null when there is none, and for an image with a crop or effects.
    /// Reads the first kilobytes of the file.
    [[nodiscard]] QImage embeddedThumbnail() const;
    /// What the file tells of itself that exports keep, whatever the crop and effects. Blocks: any thread but the main
    /// one.
    [[nodiscard]] PictureNotes notes() const;

private:
    struct Source;
    struct FileSource;
    struct PixelSource;
    struct CropSource;
    struct EffectSource;
    explicit Image(std::shared_ptr<const Source> source)
        : d(std::move(source))
    {}
    std::shared_ptr<const Source> d;
};
