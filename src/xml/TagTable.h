#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <cstring>
#include <vector>

/// Element names in UTF-8 and their numbers. Open addressing over a power of two of slots, at most half of them used:
/// looked up twice for each tag that is read.
class TagTable
{
public:
    void insert(const QByteArray &name, int number)
    {
        if (name.isEmpty())
            return; // no tag has it, and null means a free slot
        if (2 * (m_count + 1) > m_slots.size())
            grow();
        Slot &slot = m_slots[find(name)];
        if (slot.name.isNull())
            ++m_count;
        slot = {name, number};
    }

    /// 0 when it is not there.
    [[nodiscard]] int number(QByteArrayView name) const { return m_slots.empty() ? 0 : m_slots[find(name)].number; }

    [[nodiscard]] static bool isSame(QByteArrayView left, QByteArrayView right)
    {
        return left.size() == right.size() &&
               std::memcmp(left.data(), right.data(), static_cast<size_t>(left.size())) == 0;
    }

private:
    struct Slot
    {
        QByteArray name; ///< null in a free slot
        int number = 0;
    };

    /// Names within one vocabulary differ in length, first, middle or last letter, nearly always.
    static size_t hash(QByteArrayView name)
    {
        if (name.isEmpty())
            return 0;
        const auto unit = [name](qsizetype i) { return static_cast<size_t>(name[i]); };
        const qsizetype size = name.size();
        return static_cast<size_t>(size) + unit(0) * 3 + unit(size / 2) * 17 + unit(size - 1) * 5;
    }

    /// The slot of the name, or the free one where it belongs.
    [[nodiscard]] size_t find(QByteArrayView name) const
    {
        const size_t mask = m_slots.size() - 1;
        size_t i = hash(name) & mask;
        while (!m_slots[i].name.isNull() && !isSame(m_slots[i].name, name))
            i = (i + 1) & mask;
        return i;
    }

    void grow()
    {
        std::vector<Slot> old(m_slots.empty() ? 128 : 2 * m_slots.size());
        m_slots.swap(old);
        m_count = 0;
        for (const Slot &slot : old)
            if (!slot.name.isNull())
                insert(slot.name, slot.number);
    }

    std::vector<Slot> m_slots;
    size_t m_count = 0;
};
