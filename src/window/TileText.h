#pragma once

#include <QFlags>

/// A line of text under a tile.
enum class TileLine { Caption = 1, Date = 2, FileName = 4 };

/// The lines shown under the tiles, always in the order caption, date, file name.
Q_DECLARE_FLAGS(TileText, TileLine)
Q_DECLARE_OPERATORS_FOR_FLAGS(TileText)
