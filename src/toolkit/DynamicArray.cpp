#include "DynamicArray.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::uint32_t kMinimumGrowth = 10;
constexpr std::uint64_t kMaximumBytes = std::uint64_t(1) << 36U;

/// Gives the array room for `capacity` entries; false, with the array unchanged, when memory is short.
bool reserve(DynamicArray &array, std::uint64_t capacity)
{
    if (capacity > kNoDynamicArrayIndex || capacity * array.entrySize > kMaximumBytes)
        return false;
    void *data = std::realloc(array.data, static_cast<std::size_t>(capacity * array.entrySize));
    if (!data)
        return false;
    array.data = static_cast<std::uint8_t *>(data);
    array.capacity = static_cast<std::uint32_t>(capacity);
    return true;
}

std::uint8_t *entryAt(const DynamicArray &array, std::uint32_t index)
{
    return array.data + static_cast<std::size_t>(index) * array.entrySize;
}

}

DynamicArray *CreateDynamicArray(std::uint32_t entrySize, std::uint32_t initialCapacity)
{
    if (entrySize == 0 || entrySize % 2 != 0)
        return nullptr;
    DynamicArrayPtr array(new (std::nothrow) DynamicArray);
    if (!array)
        return nullptr;
    array->entrySize = entrySize;
    return reserve(*array, std::max(initialCapacity, kMinimumGrowth)) ? array.release() : nullptr;
}

void FreeDynamicArray(DynamicArray *array)
{
    const std::unique_ptr<DynamicArray> owned(array);
    if (owned)
        std::free(owned->data);
}

std::uint32_t AppendToDynamicArray(DynamicArray *array, const void *entry)
{
    if (array->count == array->capacity) {
        const std::uint64_t growth = std::max(array->count / 4, kMinimumGrowth);
        if (!reserve(*array, array->count + growth))
            return kNoDynamicArrayIndex;
    }
    if (entry)
        std::memcpy(entryAt(*array, array->count), entry, array->entrySize);
    return array->count++;
}

void DeleteFromDynamicArray(DynamicArray *array, std::uint32_t index)
{
    if (index >= array->count)
        return;
    const std::size_t following = array->count - index - 1;
    std::memmove(entryAt(*array, index), entryAt(*array, index + 1), following * array->entrySize);
    --array->count;
}

void FetchDynamicArrayEntry(const DynamicArray *array, std::uint32_t index, void *entry)
{
    if (index < array->count)
        std::memcpy(entry, entryAt(*array, index), array->entrySize);
    else
        std::memset(entry, 0, array->entrySize);
}
