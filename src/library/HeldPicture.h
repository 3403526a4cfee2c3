#pragma once

#include "PictureRecipe.h"

#include <memory>

class PIPhoto;

/// The picture of a photo as it was shown, for whoever will want it again: the cache keeps handles only for a while,
/// and what was kept under the number of another handle would not be found. Main thread.
class HeldPicture
{
public:
    HeldPicture() = default;
    /// `recipe` is what the image was made by.
    HeldPicture(const std::shared_ptr<PIPhoto> &photo, const PictureRecipe &recipe, const Image &image);

    [[nodiscard]] bool isFor(const PIPhoto &photo) const { return m_photo.lock().get() == &photo; }
    /// Null for another photo, and once this one was edited or its file has changed.
    [[nodiscard]] Image of(const PIPhoto &photo) const;

private:
    std::weak_ptr<PIPhoto> m_photo;
    PictureRecipe m_recipe;
    Image m_image;
};

/// The photo's picture is made as it was when the recipe was taken.
[[nodiscard]] bool isStill(const PIPhoto &photo, const PictureRecipe &recipe);
