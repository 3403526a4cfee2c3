#pragma once

#include "BookmarkView.h"

/// Whether what stands at `name` (inside the open folder, see kNoFolder) is the file of which a bookmark tells. Asks
/// for the handle and the content only where the rest does not tell; `present` then takes the handle.
[[nodiscard]] bool isStoredFile(const BookmarkView &stored, PresentFile &present, int folder, const char *name,
                                InodeTrust trust);
