#include "PixelRequest.h"

QString PixelRequest::key() const
{
    QString text = QStringLiteral("%1 %2x%3").arg(image.number()).arg(size.width()).arg(size.height());
    if (!part.isEmpty())
        text += QStringLiteral(" %1,%2 %3x%4").arg(part.x()).arg(part.y()).arg(part.width()).arg(part.height());
    return text;
}

std::optional<QImage> PixelRequest::make(const std::atomic<bool> &cancelled) const
{
    return part.isEmpty() ? image.pixels(size, &cancelled) : image.pixelsOf(part, size, &cancelled);
}
