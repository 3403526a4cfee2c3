#include "PictureRecipe.h"

OpenedPicture PictureRecipe::open() const
{
    OpenedPicture picture;
    picture.file = file.path() == path && file.isCurrent() ? file : Image::fromFile(path);
    if (!picture.file.isNull())
        picture.shown = renderedFrom(picture.file, crop, chain);
    return picture;
}

Image PictureRecipe::renderedFrom(const Image &file, const QRectF &crop, const EffectChain &chain)
{
    Image shown = crop.isEmpty() ? file : file.cropped(crop);
    if (shown.isNull())
        shown = file; // the crop lies outside a picture that has become smaller
    return chain.isEmpty() ? shown : shown.withEffects(chain);
}
