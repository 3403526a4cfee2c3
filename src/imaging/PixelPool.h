#pragma once

#include <QImage>
#include <QString>

#include <list>
#include <mutex>
#include <unordered_map>

/// Decoded pixels under a byte budget, least recently used out first. Any thread.
class PixelPool
{
public:
    /// A quarter of the machine's memory, at most 1 GiB.
    [[nodiscard]] static qint64 standardBudget();

    explicit PixelPool(qint64 budgetBytes);
    [[nodiscard]] qint64 budget() const { return m_budget; }

    /// Null when it is not, or no longer, there; finding it makes it the most recently used.
    [[nodiscard]] QImage find(const QString &key);
    /// An image larger than the whole budget is not kept.
    void insert(const QString &key, const QImage &image);
    void remove(const QString &key);
    void clear();
    [[nodiscard]] qint64 bytesUsed() const;

private:
    struct Item
    {
        QString key;
        QImage image;
    };

    // Both with the mutex held.
    void drop(const QString &key);
    void evict();

    mutable std::mutex m_mutex;
    qint64 m_budget;
    qint64 m_used = 0;
    std::list<Item> m_items; // most recently used first
    std::unordered_map<QString, std::list<Item>::iterator> m_index;
};
