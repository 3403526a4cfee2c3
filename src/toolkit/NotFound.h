#pragma once

#include <QtGlobal>

/// "No index" and "no save number". Written with a 32-bit format it appears as -1.
inline constexpr quint64 kNotFound = 0x7fffffffffffffff;
