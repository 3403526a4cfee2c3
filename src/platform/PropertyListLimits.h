#pragma once

#include <QByteArrayView>

/// Looks over a property list before it is decoded, because decoding believes what it reads: deep nesting exhausts
/// the stack, and a few bytes of a binary list can share objects so that they unfold to gigabytes.
/// False when the list is too deep or too large, or when a binary list's structure is broken.
[[nodiscard]] bool isPropertyListWithinLimits(QByteArrayView bytes);
