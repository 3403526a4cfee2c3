#include "OpenCvEffects.h"

#include <opencv2/imgproc.hpp>

namespace {

cv::Mat blurred(const cv::Mat &in)
{
    cv::Mat out;
    cv::GaussianBlur(in, out, cv::Size(), OpenCvEffects::kBlurRadius);
    return out;
}

cv::Mat colorControlled(const cv::Mat &in)
{
    using namespace OpenCvEffects;
    constexpr float weights[3] = {0.0722F, 0.7152F, 0.2126F}; // blue first
    cv::Mat matrix(3, 4, CV_32F);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            matrix.at<float>(row, column) =
                float(kContrast * ((row == column ? kSaturation : 0) + (1 - kSaturation) * double(weights[column])));
        matrix.at<float>(row, 3) = float(255 * (0.5 - 0.5 * kContrast + kBrightness));
    }
    cv::Mat out;
    cv::transform(in, out, matrix);
    return out;
}

cv::Mat sharpened(const cv::Mat &in)
{
    using namespace OpenCvEffects;
    cv::Mat soft;
    cv::GaussianBlur(in, soft, cv::Size(), kSharpenRadius);
    cv::Mat out;
    cv::addWeighted(in, 1 + kSharpenIntensity, soft, -kSharpenIntensity, 0, out);
    return out;
}

cv::Mat toned(const cv::Mat &in)
{
    const cv::Matx33f matrix(0.131F, 0.534F, 0.272F, 0.168F, 0.686F, 0.349F, 0.189F, 0.769F, 0.393F);
    cv::Mat out;
    cv::transform(in, out, matrix);
    return out;
}

cv::Mat bumped(const cv::Mat &in)
{
    const cv::Point2f center(float(in.cols) / 2, float(in.rows) / 2);
    cv::Mat fromX(in.size(), CV_32F);
    cv::Mat fromY(in.size(), CV_32F);
    cv::parallel_for_(cv::Range(0, in.rows), [&](const cv::Range &rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            for (int x = 0; x < in.cols; ++x) {
                const cv::Point2f apart(float(x) + 0.5F - center.x, float(y) + 0.5F - center.y);
                const float share =
                    1 - std::sqrt(apart.x * apart.x + apart.y * apart.y) / float(OpenCvEffects::kBumpRadius);
                const float factor = share > 0 ? 1 - float(OpenCvEffects::kBumpScale) * share * share : 1;
                fromX.at<float>(y, x) = center.x + apart.x * factor - 0.5F;
                fromY.at<float>(y, x) = center.y + apart.y * factor - 0.5F;
            }
        }
    });
    cv::Mat out;
    cv::remap(in, out, fromX, fromY, cv::INTER_LINEAR);
    return out;
}

}

struct OpenCvEffects::Photo::Pixels
{
    cv::Mat mat;
};

OpenCvEffects::Photo::Photo(const QImage &pixels)
    : m_pixels(std::make_unique<Pixels>())
{
    // OpenCV only reads what it is given.
    const cv::Mat whole(pixels.height(), pixels.width(), CV_8UC4, const_cast<uchar *>(pixels.constBits()),
                        size_t(pixels.bytesPerLine()));
    cv::cvtColor(whole, m_pixels->mat, cv::COLOR_BGRA2BGR);
}

OpenCvEffects::Photo::~Photo() = default;

void OpenCvEffects::Photo::blur() const
{
    (void)blurred(m_pixels->mat);
}

void OpenCvEffects::Photo::colorControls() const
{
    (void)colorControlled(m_pixels->mat);
}

void OpenCvEffects::Photo::unsharpMask() const
{
    (void)sharpened(m_pixels->mat);
}

void OpenCvEffects::Photo::sepia() const
{
    (void)toned(m_pixels->mat);
}

void OpenCvEffects::Photo::bump() const
{
    (void)bumped(m_pixels->mat);
}

void OpenCvEffects::Photo::chain() const
{
    (void)toned(sharpened(colorControlled(blurred(m_pixels->mat))));
}
