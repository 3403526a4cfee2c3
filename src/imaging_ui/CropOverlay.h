#pragma once

#include <QRectF>

class QPainter;

/// What is drawn over a picture while it is cropped: shade over what is cut away, thirds, and handles in the band
/// around the crop. Both rectangles in the view's coordinates.
void paintCropOverlay(QPainter &painter, const QRectF &picture, const QRectF &crop);
