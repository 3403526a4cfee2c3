#include "PhotoMessage.h"

#include "PIPhoto.h"

#include <QFileInfo>
#include <QPainter>
#include <QPainterPath>
#include <QWidget>

namespace {

/// A picture frame with a crack through it.
void paintBrokenFrame(QPainter &painter, const QRectF &area)
{
    QPainterPath frame;
    frame.addRoundedRect(area, 4, 4);
    painter.drawPath(frame);
    const auto at = [&](double x, double y) {
        return QPointF(area.left() + x * area.width(), area.top() + y * area.height());
    };
    painter.drawPolyline(QPolygonF({at(0.58, 0), at(0.46, 0.3), at(0.6, 0.5), at(0.44, 0.72), at(0.5, 1)}));
    painter.drawEllipse(at(0.24, 0.3), area.width() * 0.06, area.width() * 0.06);
    painter.drawPolyline(QPolygonF({at(0.08, 0.86), at(0.26, 0.56), at(0.38, 0.74)}));
}

QString tr(const char *text)
{
    return PhotoPicture::tr(text);
}

}

QString photoMessage(PhotoPicture::State state, const PIPhoto *photo)
{
    using State = PhotoPicture::State;
    const QString name = photo && photo->fileRef() ? QFileInfo(photo->fileRef()->path()).fileName() : QString();
    switch (state) {
    case State::Missing:
        return (photo && photo->isVolumeAway() ? tr("Volume not mounted") : tr("The file is missing.")) +
               QLatin1Char('\n') + name;
    case State::Unreadable:
        return tr("This file cannot be shown. It may be damaged.") + QLatin1Char('\n') + name;
    case State::Empty:
        return tr("No photo");
    default:
        return name;
    }
}

void paintPhotoMessage(QPainter &painter, const QWidget &view, const QString &message)
{
    QColor color = view.palette().color(QPalette::WindowText);
    color.setAlphaF(0.65F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    constexpr QSizeF kIcon(56, 42);
    const int textHeight = 4 * view.fontMetrics().height();
    const double top = (view.height() - kIcon.height() - textHeight) / 2;
    paintBrokenFrame(painter, {QPointF((view.width() - kIcon.width()) / 2, top), kIcon});

    const double gap = view.fontMetrics().height() / 2.0;
    const QRectF text(8, top + kIcon.height() + gap, view.width() - 16, textHeight);
    painter.setPen(color);
    QStringList lines = message.split(u'\n');
    lines.last() = view.fontMetrics().elidedText(lines.last(), Qt::ElideMiddle, int(text.width()));
    painter.drawText(text, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, lines.join(u'\n'));
}

void paintPictureNote(QPainter &painter, const QRect &area, int flags, const QString &text)
{
    const QRect box = painter.boundingRect(area.adjusted(10, 4, -10, -4), flags, text).adjusted(-10, -4, 10, 4);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 150));
    painter.drawRoundedRect(box, 6, 6);
    painter.setPen(Qt::white);
    painter.drawText(box, Qt::AlignCenter | (flags & Qt::TextWordWrap), text);
}
