#include "LocatorMap.h"

#include "LocatorBlock.h"
#include "PropertyList.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace {

const QString kFreeKey = QStringLiteral("free");

std::optional<quint32> numberFrom(const QVariant &value)
{
    if (value.typeId() != QMetaType::LongLong)
        return {};
    const qlonglong number = value.toLongLong();
    if (number < 0 || number > std::numeric_limits<quint32>::max())
        return {};
    return static_cast<quint32>(number);
}

QHash<QString, quint32> offsetsFrom(const QVariantHash &list, quint64 fileLength)
{
    QHash<QString, quint32> offsets;
    offsets.reserve(list.size());
    for (auto entry = list.cbegin(); entry != list.cend(); ++entry) {
        const auto offset = LocatorMap::isGuid(entry.key()) ? numberFrom(entry.value()) : std::nullopt;
        if (offset && LocatorBlock::fits(*offset, /*dataBytes=*/0, fileLength))
            offsets.insert(entry.key(), *offset);
    }
    return offsets;
}

QList<FreeBlockList::Block> freeBlocksFrom(const QVariant &list, quint64 fileLength)
{
    QList<FreeBlockList::Block> blocks;
    const QVariantList items = list.toList();
    for (const QVariant &item : items) {
        const QVariantList numbers = item.toList();
        if (numbers.size() != 3)
            continue;
        const auto offset = numberFrom(numbers[0]);
        const auto capacity = numberFrom(numbers[1]);
        const auto freedAt = numberFrom(numbers[2]);
        if (offset && capacity && freedAt && LocatorBlock::fits(*offset, *capacity, fileLength))
            blocks.append({*offset, *capacity, *freedAt});
    }
    return blocks;
}

/// Where blocks begin, one number for each that claims to.
class BlockStarts
{
public:
    BlockStarts(const QHash<QString, quint32> &offsets, const QList<FreeBlockList::Block> &freeBlocks)
    {
        m_starts.assign(offsets.cbegin(), offsets.cend());
        for (const FreeBlockList::Block &block : freeBlocks)
            m_starts.push_back(block.offset);
        std::sort(m_starts.begin(), m_starts.end());
    }
    /// Whether one block alone begins at `offset`, and no other one within `bytes` behind that.
    bool isAlone(quint32 offset, quint64 bytes) const
    {
        const auto next = std::upper_bound(m_starts.cbegin(), m_starts.cend(), offset);
        const bool isOnly = next - m_starts.cbegin() < 2 || *(next - 2) != offset;
        return isOnly && (next == m_starts.cend() || *next >= offset + bytes);
    }

private:
    std::vector<quint32> m_starts;
};

}

bool LocatorMap::isGuid(const QString &text)
{
    return !text.isEmpty() && text != kFreeKey && PropertyList::isStorableText(text);
}

std::optional<LocatorMap> LocatorMap::fromPropertyList(const QVariant &list, quint64 fileLength)
{
    if (list.typeId() != QMetaType::QVariantHash)
        return {};
    const QVariantHash dictionary = list.toHash();
    LocatorMap map;
    map.offsets = offsetsFrom(dictionary, fileLength);
    const QList<FreeBlockList::Block> freeBlocks = freeBlocksFrom(dictionary.value(kFreeKey), fileLength);
    const BlockStarts starts(map.offsets, freeBlocks);
    map.offsets.removeIf([&](const auto &entry) { return !starts.isAlone(entry.value(), LocatorBlock::kPrefixBytes); });
    for (const FreeBlockList::Block &block : freeBlocks)
        if (starts.isAlone(block.offset, LocatorBlock::kPrefixBytes + quint64(block.capacity)))
            map.freeBlocks.append(block);
    return map;
}

std::optional<QByteArray> LocatorMap::toPropertyList() const
{
    PropertyList::DictionaryWriter list;
    for (auto entry = offsets.cbegin(); entry != offsets.cend(); ++entry)
        list.add(entry.key(), qlonglong(entry.value()));
    QVariantList blocks;
    const QList<FreeBlockList::Block> free = freeBlocks.blocks();
    for (const FreeBlockList::Block &block : free)
        blocks.append(
            QVariant(QVariantList{qlonglong(block.offset), qlonglong(block.capacity), qlonglong(block.freedAt)}));
    if (!blocks.isEmpty())
        list.add(kFreeKey, blocks);
    return list.take();
}
