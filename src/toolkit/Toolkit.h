#pragma once

#include <QString>

#include <array>
#include <cstdint>

/// Learns what the toolkit must know of the system; once, at start, before anything else of this folder.
void InitializeQuorvane();

/// The operating system's version as major × 65536 + minor × 256 + patch; 10.6.0 when it cannot be told.
[[nodiscard]] std::uint32_t systemVersion();

/// The number for a version text such as "6.1.0-18-amd64"; numbers above 255 count as 255.
[[nodiscard]] std::uint32_t systemVersionFromText(const QString &text);

/// Four bytes private to the calling thread, zero at first.
[[nodiscard]] std::array<std::uint8_t, 4> &GetQVThreadStorage();
