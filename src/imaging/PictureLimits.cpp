#include "PictureLimits.h"

#include "Decoder.h"
#include "MemoryShare.h"

void tell(QString *reason, const QString &text)
{
    if (reason)
        *reason = text;
}

bool isAcceptableSize(QSize size, QString *reason)
{
    if (size.isEmpty()) {
        tell(reason, QStringLiteral("The picture has no pixels"));
        return false;
    }
    const qint64 pixels = qint64(size.width()) * size.height();
    if (pixels <= Decoder::kMaxPixels && size.width() <= Decoder::kMaxSide && size.height() <= Decoder::kMaxSide)
        return true;
    tell(reason, QStringLiteral("The picture is too large: %1 × %2 pixels").arg(size.width()).arg(size.height()));
    return false;
}

bool isAcceptableWhole(qint64 bytes, QString *reason)
{
    if (bytes <= MemoryShare::mostBytes())
        return true;
    tell(reason, QStringLiteral("The picture is too large for a file of its kind"));
    return false;
}
