#include "DispatchQueue.h"

#include "SystemLog.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <QRunnable>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <set>
#include <utility>
#include <vector>

namespace {

void runGuarded(const std::function<void()> &block, const QString &where)
{
    try {
        if (block)
            block();
    } catch (const std::exception &exception) {
        SystemLog::write(where + QLatin1String(": ") + QString::fromUtf8(exception.what()));
    } catch (...) {
        SystemLog::write(where + QLatin1String(": unknown exception"));
    }
}

}

// Standard mutexes rather than Qt's: thread sanitizer sees the order that they make, and not that of Qt's own.
struct DispatchQueue::State final : QRunnable
{
    struct Item
    {
        Block block;
        bool barrier = false;
        quint64 number = 0;
    };

    State(const QString &name, int threads)
        : label(name)
        , maxThreads(threads)
    {
        setAutoDelete(false);
        pool.setMaxThreadCount(threads);
    }

    void submit(Block block, bool barrier);
    void run() override;
    void startWorkers();
    [[nodiscard]] int startable() const;
    [[nodiscard]] bool allDoneBefore(quint64 number) const;

    const QString label;
    const int maxThreads;
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<Item> waiting;
    std::set<quint64> running; ///< numbers of the blocks that run now
    quint64 nextNumber = 0;
    int workers = 0;  ///< turns of run() that were asked for and have not ended
    int arriving = 0; ///< those of them that have not looked for work yet
    bool barrierRuns = false;
    bool stopping = false;
    QThreadPool pool; // last, so that its threads end before anything they use
};

void DispatchQueue::State::submit(Block block, bool barrier)
{
    const std::lock_guard lock(mutex);
    if (stopping)
        return;
    waiting.push_back({std::move(block), barrier, nextNumber++});
    startWorkers();
}

int DispatchQueue::State::startable() const
{
    if (barrierRuns || waiting.empty())
        return 0;
    if (waiting.front().barrier)
        return running.empty() ? 1 : 0;
    const auto limit = waiting.begin() + std::min<std::ptrdiff_t>(std::ssize(waiting), maxThreads);
    return static_cast<int>(std::find_if(waiting.begin(), limit, [](const Item &item) { return item.barrier; }) -
                            waiting.begin());
}

void DispatchQueue::State::startWorkers()
{
    for (int wanted = startable(); workers < maxThreads && arriving < wanted; ++workers, ++arriving)
        pool.start(this);
}

/// One worker's turn: takes blocks from the front for as long as one may start.
void DispatchQueue::State::run()
{
    std::unique_lock lock(mutex);
    --arriving;
    while (startable() > 0) {
        Item item = std::move(waiting.front());
        waiting.pop_front();
        barrierRuns = item.barrier;
        running.insert(item.number);
        lock.unlock();
        runGuarded(item.block, label);
        item.block = nullptr; // what it holds is released before anybody learns that it has run
        lock.lock();
        running.erase(item.number);
        if (item.barrier)
            barrierRuns = false;
        startWorkers();
        changed.notify_all();
    }
    --workers;
    changed.notify_all();
}

bool DispatchQueue::State::allDoneBefore(quint64 number) const
{
    return (waiting.empty() || waiting.front().number >= number) && (running.empty() || *running.begin() >= number);
}

DispatchQueue::DispatchQueue(const QString &label, int maxThreads, AtEnd atEnd)
    : m_state(std::make_shared<State>(label, maxThreads > 0 ? maxThreads : std::max(1, QThread::idealThreadCount())))
    , m_atEnd(atEnd)
{}

struct DispatchQueue::LeftBehind
{
    static LeftBehind &shared()
    {
        static auto *instance = new LeftBehind; // never destroyed: its threads may run to the very end
        return *instance;
    }

    std::mutex mutex;
    std::vector<std::shared_ptr<State>> states;
};

bool DispatchQueue::isAnyLeftBehind()
{
    LeftBehind &left = LeftBehind::shared();
    const std::lock_guard lock(left.mutex);
    return std::any_of(left.states.begin(), left.states.end(), [](const auto &state) {
        const std::lock_guard stateLock(state->mutex);
        return state->workers > 0;
    });
}

DispatchQueue::~DispatchQueue()
{
    std::deque<State::Item> dropped;
    std::unique_lock lock(m_state->mutex);
    m_state->stopping = true;
    dropped.swap(m_state->waiting);
    lock.unlock();
    dropped.clear(); // what the blocks hold may run code of its own, which must not find the lock taken
    lock.lock();
    constexpr std::chrono::milliseconds aMoment(200);
    const auto ended = [this] { return m_state->workers == 0; };
    if (m_atEnd == AtEnd::Wait)
        m_state->changed.wait(lock, ended);
    const bool allEnded = m_state->changed.wait_for(lock, aMoment, ended);
    lock.unlock();
    if (!allEnded) {
        const std::lock_guard leftLock(LeftBehind::shared().mutex);
        LeftBehind::shared().states.push_back(m_state);
        return;
    }
    m_state->pool.waitForDone();
}

QString DispatchQueue::label() const
{
    return m_state->label;
}

void DispatchQueue::async(Block block)
{
    m_state->submit(std::move(block), /*barrier=*/false);
}

void DispatchQueue::barrierAsync(Block block)
{
    m_state->submit(std::move(block), /*barrier=*/true);
}

void DispatchQueue::waitUntilIdle()
{
    std::unique_lock lock(m_state->mutex);
    const quint64 end = m_state->nextNumber;
    m_state->changed.wait(lock, [&] { return m_state->allDoneBefore(end); });
}

int DispatchQueue::pendingCount() const
{
    const std::lock_guard lock(m_state->mutex);
    return static_cast<int>(m_state->waiting.size() + m_state->running.size());
}

namespace {

/// Lives on the main thread as long as the application object does, and runs one block per event.
class MainThreadReceiver final : public QObject
{
public:
    static std::mutex &mutex()
    {
        static std::mutex instance;
        return instance;
    }
    static std::unique_ptr<MainThreadReceiver> &shared()
    {
        static std::unique_ptr<MainThreadReceiver> instance;
        return instance;
    }

    void add(std::function<void()> block)
    {
        m_blocks.push_back(std::move(block));
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        std::function<void()> block;
        {
            const std::lock_guard lock(mutex());
            if (m_blocks.empty())
                return true;
            block = std::move(m_blocks.front());
            m_blocks.pop_front();
        }
        runGuarded(block, QStringLiteral("main thread"));
        return true;
    }

private:
    std::deque<std::function<void()>> m_blocks;
};

void dropReceiver()
{
    std::unique_ptr<MainThreadReceiver> receiver;
    const std::lock_guard lock(MainThreadReceiver::mutex());
    receiver.swap(MainThreadReceiver::shared());
}

void makeReceiver()
{
    qAddPostRoutine(dropReceiver);
    const std::lock_guard lock(MainThreadReceiver::mutex());
    MainThreadReceiver::shared() = std::make_unique<MainThreadReceiver>();
}

Q_COREAPP_STARTUP_FUNCTION(makeReceiver)

}

void runOnMain(std::function<void()> block)
{
    const std::lock_guard lock(MainThreadReceiver::mutex());
    if (MainThreadReceiver::shared())
        MainThreadReceiver::shared()->add(std::move(block));
}
