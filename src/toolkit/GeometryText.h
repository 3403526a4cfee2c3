#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>

/// Rectangles and points as text, "{{x, y}, {width, height}}" and "{x, y}", each number in its shortest form that
/// reads back to the same value. Missing or malformed numbers read as 0.
[[nodiscard]] QString textFromRect(const QRectF &rect);
[[nodiscard]] QRectF rectFromText(const QString &text);
[[nodiscard]] QString textFromPoint(const QPointF &point);
[[nodiscard]] QPointF pointFromText(const QString &text);
