#pragma once

#include <QRectF>
#include <QSizeF>

/// How photos are laid out on the pages of a print. Lengths are points, 72 to the inch; y grows downward.
struct PrintLayout
{
    // What the number of a layout stands for; above 0 it is that many photos per page.
    static constexpr int kProof = -1;
    static constexpr int kFillPage = 0;

    /// The layout of that number for a page whose printable area is `page`, and for prints of the crop size `preset`
    /// (inches; empty when none is chosen), which only filling the page heeds. At a smaller `scale` the page holds
    /// more.
    [[nodiscard]] static PrintLayout on(QSizeF page, int layout, QSizeF preset, double scale = 1);

    [[nodiscard]] int totalPages(int photos) const;
    /// The cell of the photo at that place on its page, in reading order, within the printable area.
    [[nodiscard]] QRectF cell(int place) const;
    /// Where a photo is put within its cell: there is room around it, and under it for a line of text when there is
    /// one.
    [[nodiscard]] QRectF photoArea(int place) const;
    /// Under the photo; empty where photos have no text.
    [[nodiscard]] QRectF textArea(int place) const;

    double scale = 1; ///< of all that follows, on paper
    QSizeF page;      ///< before scaling, like all lengths here
    int columnCount = 1;
    int rowCount = 1;
    int photosPerPage = 1; ///< may be more than columns times rows: then there are more rows
    QSizeF print;          ///< the size of each print when it is fixed, as wide as its cell is; else empty
    bool hasText = false;

private:
    [[nodiscard]] double textHeight(const QRectF &cell) const;
    void fillWithPrints(QSizeF preset);
    void fillWithProofs();
    void fillWithSome(int photos);
};
