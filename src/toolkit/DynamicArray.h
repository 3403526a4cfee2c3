#pragma once

#include <cstdint>
#include <memory>

/// A growable block of entries that all have one size, without an allocation per entry.
struct DynamicArray
{
    std::uint32_t count = 0;      ///< entries in use
    std::uint32_t capacity = 0;   ///< entries allocated
    std::uint32_t entrySize = 0;  ///< bytes per entry; never 0 and always even
    std::uint8_t *data = nullptr; ///< capacity × entrySize bytes
};

/// What AppendToDynamicArray returns when memory is short.
inline constexpr std::uint32_t kNoDynamicArrayIndex = 0xFFFFFFFF;

/// An empty array of at least 10 entries' capacity; null when the entry size is 0 or odd, or memory is short.
[[nodiscard]] DynamicArray *CreateDynamicArray(std::uint32_t entrySize, std::uint32_t initialCapacity);
/// Null is accepted.
void FreeDynamicArray(DynamicArray *array);
/// Adds an entry (left as it is when `entry` is null) and returns its index. A full array grows by a quarter, at
/// least by 10 entries.
std::uint32_t AppendToDynamicArray(DynamicArray *array, const void *entry);
/// An index beyond the end does nothing.
void DeleteFromDynamicArray(DynamicArray *array, std::uint32_t index);
/// Copies the entry out; an index beyond the end gives zero bytes.
void FetchDynamicArrayEntry(const DynamicArray *array, std::uint32_t index, void *entry);

struct DynamicArrayDeleter
{
    void operator()(DynamicArray *array) const { FreeDynamicArray(array); }
};
using DynamicArrayPtr = std::unique_ptr<DynamicArray, DynamicArrayDeleter>;
