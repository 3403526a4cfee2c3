#pragma once

#include <QImage>

#include <functional>
#include <memory>

/// The same work as effects do, in OpenCV: on three encoded bytes a pixel, as its users would.
namespace OpenCvEffects {

class Photo
{
public:
    explicit Photo(const QImage &pixels);
    ~Photo();
    Photo(const Photo &) = delete;
    Photo &operator=(const Photo &) = delete;

    void blur() const;
    void colorControls() const;
    void unsharpMask() const;
    void sepia() const;
    void bump() const;
    void chain() const;

private:
    struct Pixels;
    std::unique_ptr<Pixels> m_pixels;
};

/// What is done in all libraries.
inline constexpr double kBlurRadius = 10;
inline constexpr double kSharpenRadius = 2.5;
inline constexpr double kSharpenIntensity = 0.5;
inline constexpr double kBumpRadius = 1500;
inline constexpr double kBumpScale = 0.5;
inline constexpr double kSaturation = 1.3;
inline constexpr double kBrightness = 0.05;
inline constexpr double kContrast = 1.2;

}
