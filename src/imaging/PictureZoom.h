#pragma once

#include <QPointF>
#include <QRect>
#include <QSize>

#include <optional>

/// Where a picture stands in a view: fitted, or zoomed about a point and panned. Everything but the area is in the
/// screen's own pixels, so that at 100 % a pixel of the picture is one of the screen.
class PictureZoom
{
public:
    /// Pixels of the screen for one of the picture, at most.
    static constexpr double kMostScale = 8;

    /// A picture of another size is fitted.
    void setPicture(QSize picture);
    /// In the view's coordinates. What stood in the middle stays there.
    void setArea(const QRect &area, double pixelRatio);

    [[nodiscard]] bool isFitted() const { return !m_zoomed; }
    /// Pixels of the screen for one of the picture; 0 when there is nothing to show.
    [[nodiscard]] double scale() const;
    /// Of the whole picture, which may reach beyond the area; empty when there is nothing to show.
    [[nodiscard]] QRect place() const;
    [[nodiscard]] QPointF middle() const { return QRectF(m_area).center(); }
    /// Part of the picture is out of sight.
    [[nodiscard]] bool canPan() const;

    void fit() { m_zoomed.reset(); }
    /// Keeps the picture's point at `about` where it is, as far as the picture's edges allow.
    void zoomTo(double scale, QPointF about);
    /// The same, but stops on the way where the picture is fitted and at 100 %.
    void zoomBy(double factor, QPointF about);
    /// Moves the picture; its edges do not come inside the area.
    void panBy(QPointF way);

    /// Pixels to make of the picture.
    struct Pixels
    {
        QRect part; ///< of the picture
        QSize size; ///< to which that part is scaled
    };
    /// With parts, the picture can be made piece by piece; without, only as a whole.
    enum class Make { Parts, Whole };
    /// What a zoomed view needs, with no more detail than it shows and at most `mostPixels`: the whole picture where
    /// that is not too much, otherwise what is in sight and something around it.
    [[nodiscard]] Pixels wanted(qint64 mostPixels, Make make) const;
    /// Whether `pixels` hold all that is in sight, in the detail that `wanted` has.
    [[nodiscard]] bool isServedBy(const Pixels &pixels, const Pixels &wanted) const;
    /// Whether `pixels` have less detail than the screen could show.
    [[nodiscard]] bool isCoarse(const Pixels &pixels) const;
    /// Where a part of the picture stands.
    [[nodiscard]] QRectF placeOf(const QRect &part) const;

private:
    struct Zoomed
    {
        double scale = 1;
        QPointF origin; ///< of the whole picture
    };

    [[nodiscard]] QRect fittedRect() const;
    [[nodiscard]] double fittedScale() const;
    [[nodiscard]] double leastScale() const;
    [[nodiscard]] QPointF origin() const;
    [[nodiscard]] QRect partInSight() const;
    void moveTo(double scale, QPointF origin);

    QSize m_picture;
    QRect m_viewArea;
    double m_ratio = 1;
    QRect m_area;
    std::optional<Zoomed> m_zoomed; ///< nothing while the picture is fitted
};
