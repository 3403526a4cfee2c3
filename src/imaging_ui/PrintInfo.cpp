#include "PrintInfo.h"

#include <QDataStream>
#include <QLocale>
#include <QMarginsF>

#include <cmath>

namespace {

constexpr qint32 kVersion = 2; ///< 1 had no scale
constexpr double kMillimetres = 10;
constexpr double kMostPoints = 20'000; ///< seven metres

QPageLayout usualLayout()
{
    const bool isMetric = QLocale::system().measurementSystem() == QLocale::MetricSystem;
    return {QPageSize(isMetric ? QPageSize::A4 : QPageSize::Letter), QPageLayout::Portrait,
            QMarginsF(kMillimetres, kMillimetres, kMillimetres, kMillimetres), QPageLayout::Millimeter};
}

bool isSane(QSizeF paper, const QMarginsF &margins)
{
    const auto isLength = [](double points) { return std::isfinite(points) && points >= 0 && points <= kMostPoints; };
    return isLength(paper.width()) && isLength(paper.height()) && isLength(margins.left()) && isLength(margins.top()) &&
           isLength(margins.right()) && isLength(margins.bottom()) &&
           paper.width() - margins.left() - margins.right() >= 72 &&
           paper.height() - margins.top() - margins.bottom() >= 72;
}

}

QByteArray archivedPrintInfo(const PrintInfo &info)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_0);
    stream << kVersion << info.paper.pageSize().size(QPageSize::Point) << qint32(info.paper.orientation())
           << info.paper.margins(QPageLayout::Point) << info.scale;
    return bytes;
}

PrintInfo printInfoFromArchive(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    qint32 version = 0;
    QSizeF paper;
    qint32 orientation = 0;
    QMarginsF margins;
    double scale = 1;
    stream >> version >> paper >> orientation >> margins;
    if (version == kVersion)
        stream >> scale;
    const bool isLandscape = orientation == QPageLayout::Landscape;
    if (stream.status() != QDataStream::Ok || version < 1 || version > kVersion ||
        !isSane(isLandscape ? paper.transposed() : paper, margins))
        return {usualLayout()};
    const bool isScale = scale >= PrintInfo::kLeastScale && scale <= PrintInfo::kMostScale;
    return {QPageLayout(QPageSize(paper, QPageSize::Point, {}, QPageSize::FuzzyOrientationMatch),
                        isLandscape ? QPageLayout::Landscape : QPageLayout::Portrait, margins, QPageLayout::Point),
            isScale ? scale : 1};
}
