#pragma once

#include <QtGlobal>

#include <bit>
#include <vector>

/// Finds values by inode number. It is asked once for every file that a walk meets, nearly always in vain, so it keeps
/// everything in one array. Several values may have the same number.
template<typename T>
class InodeTable
{
public:
    explicit InodeTable(qsizetype maxValues = 0)
        : m_slots(std::bit_ceil(static_cast<std::size_t>(maxValues) * 2 + 1))
    {}

    /// At most as many as the table was made for.
    void add(quint64 inode, T *value)
    {
        std::size_t at = slotOf(inode);
        while (m_slots[at].value)
            at = next(at);
        m_slots[at] = {inode, value};
    }

    /// Calls `visit` for every value with this number; whether it answered true for one.
    template<typename Visit>
    bool visit(quint64 inode, Visit visit) const
    {
        bool any = false;
        for (std::size_t at = slotOf(inode); m_slots[at].value; at = next(at))
            if (m_slots[at].inode == inode)
                any |= visit(*m_slots[at].value);
        return any;
    }

    /// A value with this number; null when there is none.
    [[nodiscard]] T *first(quint64 inode) const
    {
        for (std::size_t at = slotOf(inode); m_slots[at].value; at = next(at))
            if (m_slots[at].inode == inode)
                return m_slots[at].value;
        return nullptr;
    }

private:
    struct Slot
    {
        quint64 inode = 0;
        T *value = nullptr; ///< null: the slot is free
    };

    // Neighbouring numbers, such as those of files that were made together, share a cache line; the product spreads
    // the groups.
    std::size_t slotOf(quint64 inode) const
    {
        const quint64 group = ((inode >> 2) * 0x9E3779B97F4A7C15u) >> 32;
        return static_cast<std::size_t>(group << 2 | (inode & 3)) & (m_slots.size() - 1);
    }
    std::size_t next(std::size_t slot) const { return (slot + 1) & (m_slots.size() - 1); }

    std::vector<Slot> m_slots;
};
