#pragma once

#include <QList>

#include <deque>
#include <map>
#include <optional>

/// The blocks of the locator database that were given up, in that order. One is used again only when the database was
/// saved five times since: until then an older list of locators may still lead to it.
class FreeBlockList
{
public:
    struct Block
    {
        quint32 offset = 0;
        quint32 capacity = 0;
        quint32 freedAt = 0; ///< the sequence number of the database at that time
        bool operator==(const Block &) const = default;
    };

    void append(const Block &block);
    /// The first block that holds `length` bytes and is old enough.
    [[nodiscard]] std::optional<Block> find(quint32 length, quint32 sequenceID) const;
    /// Takes out what find() told.
    void remove(const Block &block);
    /// All, in order.
    [[nodiscard]] QList<Block> blocks() const;

private:
    struct Entry
    {
        quint64 position = 0;
        Block block;
    };
    quint64 m_nextPosition = 0;
    /// By capacity, so that finding the first that fits does not mean to look at every smaller one.
    std::map<quint32, std::deque<Entry>> m_entries;
};
