#pragma once

#include "SaveImage.h"
#include "UserDefaults.h"

/// What the user chose for exports, as the preferences have it.
[[nodiscard]] ExportSettings readExportSettings(const UserDefaults &defaults);
void writeExportSettings(UserDefaults &defaults, const ExportSettings &settings);

/// The choice in force; read at launch, written at quit. Main thread.
extern ExportSettings g_exportSettings;
