#pragma once

#include "UserDefaults.h"

/// The number of a format that is named in more than one place.
inline constexpr int kJpegFormat = 0;

// What the user chose for exports: read at launch, written at quit. Main thread.
extern int g_saveFormat;         ///< kJpegFormat, 1 PDF, 2 PNG, 3 TIFF
extern int g_sizeOption;         ///< see exportSideLimit
extern double g_jpegCompression; ///< 0 to 10
extern bool g_tiffCompression;

/// Values that no panel could have written count as absent.
void readExportPreferences(const UserDefaults &defaults);
void writeExportPreferences(UserDefaults &defaults);

/// The `compression` of a save request for the chosen format.
[[nodiscard]] double exportCompression();

/// How an export is made, copied for a job.
struct ExportSettings
{
    int format = kJpegFormat;
    int sizeOption = 0;
    double compression = 1.0;

    /// What the user chose.
    [[nodiscard]] static ExportSettings chosen();
    /// With the compression that the user chose for another format.
    [[nodiscard]] static ExportSettings chosenFor(int format, int sizeOption);
    /// Whether JPEG colours keep their full resolution: at the two best qualities.
    [[nodiscard]] bool keepsFullChroma() const { return compression >= 0.9; }
};
