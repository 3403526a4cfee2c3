#pragma once

#include <QString>

#include <memory>
#include <utility>

#include <vips/vips.h>

/// Starts libvips as this program wants it: no untrusted loaders, no cache. Any thread, any number of times.
void ensureVips();

/// What libvips last complained about, and forgets it.
[[nodiscard]] QString takeVipsError();

struct GObjectDeleter
{
    void operator()(void *object) const { g_object_unref(object); }
};

/// A libvips pipeline: an image to which one operation after the other is added.
class VipsPipeline
{
public:
    explicit VipsPipeline(VipsImage *owned = nullptr)
        : m_image(owned)
    {}

    [[nodiscard]] VipsImage *image() const { return m_image.get(); }
    [[nodiscard]] bool isNull() const { return !m_image; }
    [[nodiscard]] int width() const { return vips_image_get_width(m_image.get()); }
    [[nodiscard]] int height() const { return vips_image_get_height(m_image.get()); }
    [[nodiscard]] int bands() const { return vips_image_get_bands(m_image.get()); }

    /// `operation(in, &out)` as libvips' functions are; false when it fails, and then nothing has changed.
    template<typename Operation>
    [[nodiscard]] bool add(Operation operation)
    {
        VipsImage *out = nullptr;
        if (operation(m_image.get(), &out) != 0)
            return false;
        m_image.reset(out);
        return true;
    }

private:
    std::unique_ptr<VipsImage, GObjectDeleter> m_image;
};
