#pragma once

#include "UserDefaults.h"

/// What the library window remembers across runs.
namespace WindowPreferences {

inline constexpr Preference<bool> kShowDetail{"hmphoto.showDetail", true};
inline constexpr Preference<int> kSplit0{"hmphoto.split0", 200}; ///< position of the first divider, pixels
inline constexpr Preference<int> kSplit1{"hmphoto.split1", 0};   ///< of the second; below 1: split0 + kSplit1Offset
inline constexpr int kSplit1Offset = 333;
inline constexpr Preference<bool> kShowCaptions{"hmphoto.showCaptions", false};
inline constexpr Preference<bool> kShowDates{"hmphoto.showDates", false};
inline constexpr Preference<bool> kShowFileNames{"hmphoto.showFileNames", true};
inline constexpr Preference<bool> kReadMetadata{"hmphoto.readMetadata", true}; ///< when photos are added
inline constexpr Preference<int> kColumnCount{"hmphoto.columnCount", 3};
inline constexpr Preference<int> kCropSize{"hmphoto.cropSize", 0}; ///< position among the crop sizes
inline constexpr char kGeometry[] = "hmphoto.windowGeometry";
inline constexpr Preference<const char *> kLastFolder{"hmphoto.lastAddFolder", ""};
inline constexpr Preference<const char *> kLastExportFolder{"hmphoto.lastExportFolder", ""};

}
