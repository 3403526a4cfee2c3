#include "ExportPreferences.h"

namespace {

constexpr Preference<int> kSaveFormat{"hmphoto.saveFormat", 0};
constexpr Preference<int> kSaveSizeOption{"hmphoto.saveSizeOption", 0};
constexpr Preference<double> kSaveJpeg{"hmphoto.saveJpeg", 7.0};
constexpr Preference<bool> kSaveTiff{"hmphoto.saveTiff", true};

constexpr int kTiff = 3;
constexpr double kBestJpeg = 10;

}

int g_saveFormat = kSaveFormat.fallback;
int g_sizeOption = kSaveSizeOption.fallback;
double g_jpegCompression = kSaveJpeg.fallback;
bool g_tiffCompression = kSaveTiff.fallback;

void readExportPreferences(const UserDefaults &defaults)
{
    g_saveFormat = qBound(kJpegFormat, defaults.value(kSaveFormat), kTiff);
    g_sizeOption = defaults.value(kSaveSizeOption);
    const double quality = defaults.value(kSaveJpeg);
    g_jpegCompression = quality >= 0 && quality <= kBestJpeg ? quality : kSaveJpeg.fallback;
    g_tiffCompression = defaults.value(kSaveTiff);
}

void writeExportPreferences(UserDefaults &defaults)
{
    defaults.setValue(kSaveFormat, g_saveFormat);
    defaults.setValue(kSaveSizeOption, g_sizeOption);
    defaults.setValue(kSaveTiff, g_tiffCompression);
    defaults.setValue(kSaveJpeg, static_cast<double>(static_cast<float>(g_jpegCompression)));
}

namespace {

double compressionFor(int format)
{
    if (format == kJpegFormat)
        return g_jpegCompression / kBestJpeg;
    return format == kTiff && !g_tiffCompression ? 0.0 : 1.0;
}

}

double exportCompression()
{
    return compressionFor(g_saveFormat);
}

ExportSettings ExportSettings::chosen()
{
    return chosenFor(g_saveFormat, g_sizeOption);
}

ExportSettings ExportSettings::chosenFor(int format, int sizeOption)
{
    return {format, sizeOption, compressionFor(format)};
}
