#pragma once

#include "UserDefaults.h"

/// What the user chose for printing; read at launch. Main thread.
inline bool g_cropMarks = false; ///< draw marks where the paper is to be cut
inline int g_printLayout = 0;    ///< number of the layout

inline constexpr Preference<bool> kCropMarks{"hmphoto.cropMarks", false};
inline constexpr Preference<int> kPrintLayout{"hmphoto.printLayout", 0};
inline constexpr char kPrintInfo[] = "hmphoto.printInfo";
