#pragma once

#include <QColor>
#include <QIcon>
#include <QImage>
#include <QLatin1String>
#include <QSize>
#include <QString>

/// The icon of the desktop's theme, or of our own set, in the palette's text colour, where the theme has none.
[[nodiscard]] QIcon themedIcon(QLatin1String name);

/// An SVG resource drawn at that size; what it draws in "currentColor" takes `color`. Null when it cannot be read.
[[nodiscard]] QImage renderSvg(const QString &path, QSize size, const QColor &color);
