#pragma once

#include "PIGroup.h"

#include <functional>

/// The orders in which a folder can be sorted. Photos without a file come first.
namespace PhotoOrder {

/// By file name without extension, whatever its case.
[[nodiscard]] PIGroup::PhotoList byName(const PIGroup::PhotoList &photos);
/// By the file's date, the oldest first; those of which it is not known come before all others.
[[nodiscard]] PIGroup::PhotoList byDate(const PIGroup::PhotoList &photos);
/// At random: each in turn is the one of those left, counted in their present order, that the next random number,
/// modulo how many are left, tells. The last takes no number.
[[nodiscard]] PIGroup::PhotoList shuffled(const PIGroup::PhotoList &photos, const std::function<quint32()> &random);

}
