#include "PrintLayout.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPointsPerInch = 72;
constexpr double kPrintGap = 18; ///< between prints, for the scissors
constexpr double kMargin = 6;    ///< around a photo that fills its cell
constexpr double kTextHeight = 14;
constexpr int kMostPhotosPerPage = 1000; ///< whatever a preference says

int timesThatFit(double length, double part)
{
    return static_cast<int>(std::floor(length / part));
}

}

PrintLayout PrintLayout::on(QSizeF page, int layout, QSizeF preset, double scale)
{
    PrintLayout result;
    result.scale = scale > 0 ? scale : 1;
    result.page = page / result.scale;
    if (layout == kFillPage)
        result.fillWithPrints(preset * kPointsPerInch);
    else if (layout == kProof)
        result.fillWithProofs();
    else
        result.fillWithSome(std::clamp(layout, 1, kMostPhotosPerPage));
    return result;
}

/// As many prints as fit, all upright or all turned. A print that does not fit is one photo that fills the page.
void PrintLayout::fillWithPrints(QSizeF preset)
{
    if (preset.isEmpty() || preset.width() > page.width() || preset.width() > page.height())
        return;
    const QSizeF cell = preset + QSizeF(kPrintGap, kPrintGap);
    const QSizeF room = page + QSizeF(kPrintGap, kPrintGap);
    const int columns = timesThatFit(room.width(), cell.width());
    const int rows = timesThatFit(room.height(), cell.height());
    const int turnedColumns = timesThatFit(room.width(), cell.height());
    const int turnedRows = timesThatFit(room.height(), cell.width());
    const bool areTurned = turnedColumns * turnedRows > columns * rows;
    const int prints = areTurned ? turnedColumns * turnedRows : columns * rows;
    if (prints < 1)
        return;
    columnCount = areTurned ? turnedColumns : columns;
    rowCount = areTurned ? turnedRows : rows;
    photosPerPage = prints;
    print = areTurned ? preset.transposed() : preset;
}

void PrintLayout::fillWithProofs()
{
    constexpr double kSpare = 108;
    constexpr double kUsualCell = 126;
    const int fewest = page.height() <= page.width() ? 8 : 4;
    columnCount = std::max(fewest, timesThatFit(page.width() + kSpare, kUsualCell));
    const auto cellSize = std::floor(static_cast<float>(page.width() + kSpare) / static_cast<float>(columnCount));
    rowCount = std::max(timesThatFit(page.height() + kSpare, double(cellSize)), 1);
    photosPerPage = columnCount * rowCount;
    hasText = true;
}

void PrintLayout::fillWithSome(int photos)
{
    photosPerPage = photos;
    columnCount = photos <= 3 ? 1 : photos <= 8 ? 2 : 3;
    rowCount = photos / columnCount;
    if (page.width() > page.height())
        std::swap(columnCount, rowCount);
}

int PrintLayout::totalPages(int photos) const
{
    return (photos + photosPerPage - 1) / photosPerPage;
}

/// Prints of a fixed size stand in the middle of the page; all others share it.
QRectF PrintLayout::cell(int place) const
{
    const int rows = std::max(rowCount, (photosPerPage + columnCount - 1) / columnCount);
    const QPointF position(place % columnCount, place / columnCount);
    if (print.isEmpty()) {
        const QSizeF size(page.width() / columnCount, page.height() / rows);
        return {QPointF(position.x() * size.width(), position.y() * size.height()), size};
    }
    const QSizeF pitch = print + QSizeF(kPrintGap, kPrintGap);
    const QPointF start((page.width() - columnCount * pitch.width() + kPrintGap) / 2,
                        (page.height() - rows * pitch.height() + kPrintGap) / 2);
    return {start + QPointF(position.x() * pitch.width(), position.y() * pitch.height()), print};
}

/// On small cells text has no more than a quarter of them.
double PrintLayout::textHeight(const QRectF &cell) const
{
    return hasText ? std::min(kTextHeight, cell.height() / 4) : 0;
}

QRectF PrintLayout::photoArea(int place) const
{
    const QRectF whole = cell(place);
    if (!print.isEmpty() || photosPerPage == 1)
        return whole;
    const double margin = std::min({kMargin, whole.width() / 8, whole.height() / 8});
    return whole.adjusted(margin, margin, -margin, -margin - textHeight(whole));
}

QRectF PrintLayout::textArea(int place) const
{
    if (!hasText)
        return {};
    const QRectF photo = photoArea(place);
    return {photo.left(), photo.bottom() + 1, photo.width(), textHeight(cell(place))};
}
