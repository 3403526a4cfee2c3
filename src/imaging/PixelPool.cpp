#include "PixelPool.h"

#include <algorithm>

#include <unistd.h>

qint64 PixelPool::standardBudget()
{
    constexpr qint64 most = qint64(1) << 30;
    const qint64 pages = ::sysconf(_SC_PHYS_PAGES);
    const qint64 pageSize = ::sysconf(_SC_PAGESIZE);
    return pages > 0 && pageSize > 0 ? std::min(most, pages * pageSize / 4) : most / 4;
}

PixelPool::PixelPool(qint64 budgetBytes)
    : m_budget(budgetBytes)
{}

QImage PixelPool::find(const QString &key)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_index.find(key);
    if (found == m_index.end())
        return {};
    m_items.splice(m_items.begin(), m_items, found->second);
    return found->second->image;
}

void PixelPool::insert(const QString &key, const QImage &image)
{
    const std::lock_guard lock(m_mutex);
    drop(key);
    if (image.isNull() || image.sizeInBytes() > m_budget)
        return;
    m_items.push_front({key, image});
    m_index.emplace(key, m_items.begin());
    m_used += image.sizeInBytes();
    evict();
}

void PixelPool::remove(const QString &key)
{
    const std::lock_guard lock(m_mutex);
    drop(key);
}

void PixelPool::clear()
{
    const std::lock_guard lock(m_mutex);
    m_index.clear();
    m_items.clear();
    m_used = 0;
}

qint64 PixelPool::bytesUsed() const
{
    const std::lock_guard lock(m_mutex);
    return m_used;
}

void PixelPool::drop(const QString &key)
{
    const auto found = m_index.find(key);
    if (found == m_index.end())
        return;
    m_used -= found->second->image.sizeInBytes();
    m_items.erase(found->second);
    m_index.erase(found);
}

void PixelPool::evict()
{
    while (m_used > m_budget) {
        const QString last = m_items.back().key; // a copy: drop() destroys the item
        drop(last);
    }
}
