#pragma once

#include "ByteSource.h"
#include "PictureNotes.h"

/// The notes in the directories of a TIFF file, wherever in it they stand: writers put them behind the pixels, cameras
/// in front. Most raw files are TIFF files too. Empty for anything else.
[[nodiscard]] PictureNotes readTiffNotes(const ByteSource &source);

/// A little-endian TIFF file with the notes in its directories, the first of which stands at the end then; as it was
/// when it cannot take them.
[[nodiscard]] QByteArray withTiffNotes(QByteArray file, const PictureNotes &notes);
