#pragma once

#include "PictureRecipe.h"
#include "PrintLayout.h"

#include <QImage>
#include <QList>
#include <QString>

#include <atomic>
#include <functional>

class QPainter;

/// A photo of a print job: what its picture is made of, and what stands under it where photos have text.
struct PrintedPhoto
{
    PictureRecipe recipe;
    QString text;
};

/// The photos of a print job on their pages. It holds copies, so that pages can be painted on any thread, by one at a
/// time.
class PIPrintView
{
public:
    PIPrintView() = default;
    PIPrintView(QList<PrintedPhoto> photos, const PrintLayout &layout, bool cropMarks)
        : m_photos(std::move(photos))
        , m_layout(layout)
        , m_cropMarks(cropMarks)
    {}

    [[nodiscard]] int totalPages() const { return m_layout.totalPages(static_cast<int>(m_photos.size())); }
    /// Of the printable area, in points.
    [[nodiscard]] QSizeF pageSize() const { return m_layout.page * m_layout.scale; }
    /// Pictures without their colours.
    void setGrey(bool isGrey) { m_isGrey = isGrey; }
    [[nodiscard]] int photosOn(int page) const;
    /// Paints a page, counted from 1. The painter's unit is a point, its origin the corner of the printable area;
    /// pictures are rendered for its resolution. Returns early when cancelled. False when a photo could not be read:
    /// its place tells its name then. Calls `drawn` after each photo. Blocks: any thread but the main one.
    bool drawPage(QPainter &painter, int page, const std::atomic<bool> &cancelled,
                  const std::function<void()> &drawn = {}) const;

private:
    [[nodiscard]] bool drawPhoto(QPainter &painter, const PrintedPhoto &photo, int place,
                                 const std::atomic<bool> &cancelled) const;

    QList<PrintedPhoto> m_photos;
    PrintLayout m_layout;
    bool m_cropMarks = false;
    bool m_isGrey = false;
};
