#pragma once

#include "EffectChain.h"
#include "Image.h"

#include <QRectF>
#include <QString>

/// Handles on the picture of a photo.
struct OpenedPicture
{
    Image file;  ///< the file as it is; null when it cannot be read
    Image shown; ///< with the photo's crop and effects
};

/// What a photo's picture is made of, copied so that a job can open it while the photo changes.
struct PictureRecipe
{
    QString path;
    Image file; ///< a handle that was at hand, perhaps out of date; null when there was none
    QRectF crop;
    EffectChain chain;

    /// Reads the file's header unless the handle still holds. Blocks: any thread but the main one.
    [[nodiscard]] OpenedPicture open() const;
    /// The picture of a file with a photo's crop and effects. Any thread.
    [[nodiscard]] static Image renderedFrom(const Image &file, const QRectF &crop, const EffectChain &chain);
};
