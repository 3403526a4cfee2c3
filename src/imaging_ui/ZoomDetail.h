#pragma once

#include "ImageRenderer.h"
#include "PictureZoom.h"

#include <functional>

class QPainter;

/// The pixels of a zoomed picture: as many as it shows, made in the background. While they are being made, those from
/// before stay.
class ZoomDetail
{
public:
    /// `pool` outlives it; `arrived` is called when there are others.
    ZoomDetail(PixelPool &pool, std::function<void()> arrived);

    /// Another place, scale or picture. Nothing is kept while the picture is fitted.
    void follow(const Image &image, const PictureZoom &zoom, PictureZoom::Make make);
    /// There are pixels for all that is in sight, in the detail that is shown.
    [[nodiscard]] bool isComplete() const { return m_isComplete; }
    /// They are complete, but a picture of so many pixels has more detail.
    [[nodiscard]] bool isCoarse(const PictureZoom &zoom) const;
    /// Nothing when there are no pixels. `pixelRatio` is that of the screen.
    void paint(QPainter &painter, const PictureZoom &zoom, double pixelRatio) const;

private:
    void clear();
    void stopPending();
    void take(const PixelRequest &request, const QImage &pixels);

    ImageRenderer m_renderer;
    std::function<void()> m_arrived;
    qint64 m_mostPixels;
    PixelRequest m_shown;   ///< of a null image when there is nothing
    PixelRequest m_pending; ///< of a null image when nothing is being made
    PixelRequest m_refused; ///< cannot be made: not to be asked for again
    QImage m_pixels;
    bool m_isComplete = false;
};
