#pragma once

#include <QList>

/// Where the two dividers of the library window stand, in pixels from its left edge: the navigator ends at the first,
/// the thumbnails end at the second. A value.
struct PaneDividers
{
    static constexpr int kMinOutline = 200;
    static constexpr int kMaxOutline = 320;
    static constexpr int kMinThumbnails = 153;
    static constexpr int kMaxThumbnails = 1000; ///< while the detail pane is there to take the rest
    static constexpr int kMinDetail = 120;

    int outline = kMinOutline;
    int thumbnails = 0;

    /// The nearest places that the panes' least and greatest widths allow in a splitter of that width, whose dividers
    /// are `thickness` wide.
    [[nodiscard]] PaneDividers fitted(int width, int thickness) const;
    /// The widths of the three panes.
    [[nodiscard]] QList<int> sizes(int width, int thickness) const;
    /// The widths of the two panes that are there without the detail pane.
    [[nodiscard]] QList<int> sizesWithoutDetail(int width, int thickness) const;
};
