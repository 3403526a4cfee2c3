#include "HeldPicture.h"

#include "PIPhoto.h"

bool isStill(const PIPhoto &photo, const PictureRecipe &recipe)
{
    return photo.fileRef() && photo.fileRef()->path() == recipe.path && photo.cropRect() == recipe.crop &&
           photo.filterDicts() == recipe.chain;
}

HeldPicture::HeldPicture(const std::shared_ptr<PIPhoto> &photo, const PictureRecipe &recipe, const Image &image)
    : m_photo(photo)
    , m_recipe(recipe)
    , m_image(image)
{}

Image HeldPicture::of(const PIPhoto &photo) const
{
    const bool holds = !m_image.isNull() && isFor(photo) && isStill(photo, m_recipe) && m_image.isCurrent();
    return holds ? m_image : Image();
}
