#pragma once

#include <array>

/// A shape that crops may be held to, in units of its own, lying on its long side.
struct CropSize
{
    double width = 0;
    double height = 0;
};

/// By the number that the preferences store; the first leaves the crop free.
inline constexpr std::array<CropSize, 7> kCropSizes = {{{0, 0}, {3.5, 2}, {4, 3.5}, {6, 4}, {7, 5}, {10, 8}, {14, 11}}};

/// The size chosen for crops; read at launch. Main thread.
inline int g_cropSizeIndex = 0;
