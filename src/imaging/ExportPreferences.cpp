#include "ExportPreferences.h"

namespace {

constexpr Preference<int> kSaveFormat{"hmphoto.saveFormat", 0};
constexpr Preference<int> kSaveSizeOption{"hmphoto.saveSizeOption", 0};
constexpr Preference<double> kSaveJpeg{"hmphoto.saveJpeg", 7.0};
constexpr Preference<bool> kSaveTiff{"hmphoto.saveTiff", true};

}

ExportSettings g_exportSettings;

ExportSettings readExportSettings(const UserDefaults &defaults)
{
    ExportSettings settings;
    settings.format = qBound(0, defaults.value(kSaveFormat), 3);
    settings.sizeOption = defaults.value(kSaveSizeOption);
    const double quality = defaults.value(kSaveJpeg);
    settings.jpegQuality = quality >= 0 && quality <= 10 ? quality : kSaveJpeg.fallback;
    settings.compressTiff = defaults.value(kSaveTiff);
    return settings;
}

void writeExportSettings(UserDefaults &defaults, const ExportSettings &settings)
{
    defaults.setValue(kSaveFormat, settings.format);
    defaults.setValue(kSaveSizeOption, settings.sizeOption);
    defaults.setValue(kSaveTiff, settings.compressTiff);
    defaults.setValue(kSaveJpeg, static_cast<double>(static_cast<float>(settings.jpegQuality)));
}
