#include "TilePictures.h"

#include "ThumbnailMaker.h"

#include <QImage>

#include <algorithm>

namespace {

constexpr qint64 kBytesPerPixel = 4;

}

TilePictures::TilePictures(qint64 budgetBytes)
    : m_budget(budgetBytes)
    , m_pictures(qsizetype(budgetBytes / 1024))
{}

void TilePictures::makeRoomFor(int pictures)
{
    const qint64 needed = qint64(pictures) * m_side * m_side * kBytesPerPixel;
    m_pictures.setMaxCost(qsizetype(std::max(m_budget, needed) / 1024));
}

void TilePictures::setSide(int pixels, qreal devicePixelRatio)
{
    m_side = pixels;
    m_devicePixelRatio = devicePixelRatio;
}

const TilePictures::Picture *TilePictures::find(const QString &guid) const
{
    return m_pictures.object(guid);
}

bool TilePictures::isReady(const QString &guid) const
{
    const Picture *picture = find(guid);
    return picture && !picture->stale && picture->kind == Kind::Thumbnail && picture->side == m_side;
}

void TilePictures::insert(const QString &guid, const QImage &picture, Kind kind)
{
    const QSize size = shownSize(picture.size(), kind, m_side);
    if (size.isEmpty())
        return;
    const QImage scaled =
        size == picture.size() ? picture : picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const qsizetype cost = std::max(qsizetype(1), qsizetype(size.width() * size.height() * kBytesPerPixel / 1024));
    m_pictures.insert(guid, new Picture{QPixmap::fromImage(scaled), picture.size(), m_side, kind, false}, cost);
}

void TilePictures::markStale(const QString &guid)
{
    if (Picture *picture = m_pictures.object(guid))
        picture->stale = true;
}

QSize TilePictures::shownSize(QSize source, Kind kind, int side) const
{
    if (source.isEmpty() || side <= 0)
        return {};
    const int longest = std::max(source.width(), source.height());
    if (kind == Kind::Thumbnail && longest < ThumbnailMaker::kBoxSide)
        side = std::min(side, qRound(longest * m_devicePixelRatio));
    return source.scaled(side, side, Qt::KeepAspectRatio).expandedTo({1, 1});
}
