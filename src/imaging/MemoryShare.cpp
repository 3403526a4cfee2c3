#include "MemoryShare.h"

#include "PixelPool.h"

#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>

namespace {

struct Ledger
{
    std::mutex mutex;
    std::condition_variable changed;
    qint64 taken = 0;
    std::list<qint64> waiting; ///< in the order of coming, so that a large picture gets its turn among small ones
};

Ledger &ledger()
{
    static Ledger instance;
    return instance;
}

}

qint64 MemoryShare::mostBytes()
{
    static const qint64 most = PixelPool::standardBudget();
    return most;
}

MemoryShare::MemoryShare(qint64 bytes, const std::atomic<bool> *cancelled)
{
    if (bytes <= kSmallBytes || bytes > mostBytes()) {
        m_isGranted = bytes <= kSmallBytes;
        return;
    }
    constexpr std::chrono::milliseconds cancellationCheck(20);
    const auto isCancelled = [cancelled] { return cancelled && cancelled->load(std::memory_order_relaxed); };
    Ledger &book = ledger();
    std::unique_lock lock(book.mutex);
    const auto place = book.waiting.insert(book.waiting.end(), bytes);
    const auto isMyTurn = [&] { return place == book.waiting.begin() && book.taken + bytes <= mostBytes(); };
    while (!isMyTurn() && !isCancelled())
        book.changed.wait_for(lock, cancellationCheck);
    m_isGranted = isMyTurn();
    if (m_isGranted) {
        m_counted = bytes;
        book.taken += bytes;
    }
    book.waiting.erase(place);
    book.changed.notify_all();
}

MemoryShare::~MemoryShare()
{
    if (m_counted == 0)
        return;
    Ledger &book = ledger();
    const std::lock_guard lock(book.mutex);
    book.taken -= m_counted;
    book.changed.notify_all();
}
