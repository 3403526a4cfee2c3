#pragma once

#include "CropSizes.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>

/// What of a crop a drag takes along: a bit for each axis.
namespace CropZone {

inline constexpr int kNone = 0;
inline constexpr int kLeft = 1;
inline constexpr int kMiddleX = 2; ///< neither the left nor the right edge
inline constexpr int kRight = 4;
inline constexpr int kTop = 16;
inline constexpr int kMiddleY = 32; ///< neither the top nor the bottom edge
inline constexpr int kBottom = 64;
inline constexpr int kMove = kMiddleX + kMiddleY; ///< the whole rectangle

}

/// Where a picture stands in a view: the place of its origin, and view units per pixel.
struct CropFrame
{
    QPointF origin;
    double scale = 1;

    [[nodiscard]] QRectF toView(const QRectF &pixels) const
    {
        return {origin + pixels.topLeft() * scale, pixels.size() * scale};
    }
};

/// The rectangle that a photo is to be cropped to, while the user drags it about: free, or held to the shape of a crop
/// size. In pixels of the whole picture, y downward; points of the pointer are in view units.
class CropEditing
{
public:
    /// Begins with the photo's crop, as far as it lies in the picture; without one with the largest rectangle of the
    /// preset's shape, or with the whole picture.
    void start(const QRectF &storedCrop, QSizeF pictureSize, CropSize preset);

    [[nodiscard]] const QRectF &cropRect() const { return m_cropRect; }
    /// The picture's size; empty before the first start.
    [[nodiscard]] QSizeF size() const { return m_size; }
    /// The preset stands on its short side.
    [[nodiscard]] bool isPortrait() const { return m_portrait; }
    /// What the drag in progress takes along; kNone when there is none.
    [[nodiscard]] int trackZone() const { return m_trackZone; }

    /// What a drag that began at `point` would take along.
    [[nodiscard]] int zoneAt(QPointF point, const CropFrame &frame) const { return gripAt(point, frame).zone; }
    void mouseDown(QPointF point, const CropFrame &frame);
    /// True when the rectangle is another one now.
    bool mouseDragged(QPointF point, const CropFrame &frame);
    /// True when this ended a drag.
    bool mouseUp();

    /// Turns the preset from wide to tall or back and begins with the largest rectangle of that shape. False, with
    /// nothing changed, when there is no preset.
    bool rotateCrop();

private:
    struct Grip
    {
        int zone = CropZone::kNone;
        QPointF offset; ///< from the edge or origin that is dragged to the pointer
    };

    [[nodiscard]] Grip gripAt(QPointF point, const CropFrame &frame) const;
    [[nodiscard]] bool isFree() const { return m_preset.width == 0; }
    [[nodiscard]] QRectF largestOfShape() const;
    [[nodiscard]] QRectF movedTo(QPointF origin) const;
    [[nodiscard]] QRectF resizedTo(QPointF corner) const;
    [[nodiscard]] bool enforceCropAspect(QRectF &rect, const QRectF &imageRect) const;
    [[nodiscard]] bool followHeight(QRectF &rect, const QRectF &imageRect) const;
    [[nodiscard]] bool followWidth(QRectF &rect, const QRectF &imageRect) const;

    QSizeF m_size;
    CropSize m_preset;
    QRectF m_cropRect;
    bool m_portrait = false;
    int m_trackZone = CropZone::kNone;
    QPointF m_dragOffset;
};
