#pragma once

#include "Image.h"

/// Pixels of a picture that somebody wants, and the name under which a pool keeps them. An image that is edited is
/// another image, so that what was kept of it before is never found again.
struct PixelRequest
{
    Image image;
    QSize size;
    QRect part = {}; ///< pixels of the image; all of it when empty

    [[nodiscard]] QString key() const;
    /// Blocks: any thread but the main one.
    [[nodiscard]] std::optional<QImage> make(const std::atomic<bool> &cancelled) const;
    [[nodiscard]] bool isSameAs(const PixelRequest &other) const
    {
        return image.isSameAs(other.image) && size == other.size && part == other.part;
    }
};
