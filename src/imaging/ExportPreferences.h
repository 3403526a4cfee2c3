#pragma once

#include "UserDefaults.h"

// What the user chose for exports: read at launch, written at quit. Main thread.
extern int g_saveFormat;         ///< 0 JPEG, 1 PDF, 2 PNG, 3 TIFF
extern int g_sizeOption;         ///< see exportSideLimit
extern double g_jpegCompression; ///< 0 to 10
extern bool g_tiffCompression;

/// Values that no panel could have written count as absent.
void readExportPreferences(const UserDefaults &defaults);
void writeExportPreferences(UserDefaults &defaults);

/// The `compression` of a save request for the chosen format.
[[nodiscard]] double exportCompression();
