#pragma once

#include "ByteSource.h"
#include "PictureNotes.h"

/// The notes in the directories of a TIFF file, wherever in it they stand: writers put them behind the pixels, cameras
/// in front. Most raw files are TIFF files too. Empty for anything else.
[[nodiscard]] PictureNotes readTiffNotes(const ByteSource &source);
