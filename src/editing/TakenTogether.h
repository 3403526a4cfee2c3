#pragma once

#include <QList>
#include <QTimer>

#include <functional>
#include <utility>

/// What a worker tells about many files one by one, taken some at a time: telling photos goes through the whole
/// library. Main thread.
template<typename T>
class TakenTogether
{
public:
    using Take = std::function<void(const QList<T> &)>;

    explicit TakenTogether(Take take)
        : m_take(std::move(take))
    {
        constexpr int kMilliseconds = 50;
        m_timer.setSingleShot(true);
        m_timer.setInterval(kMilliseconds);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { takeNow(); });
    }

    void add(T told)
    {
        m_told.append(std::move(told));
        if (!m_timer.isActive())
            m_timer.start();
    }
    void takeNow()
    {
        m_timer.stop();
        if (!m_told.isEmpty())
            m_take(std::exchange(m_told, {}));
    }

private:
    Take m_take;
    QList<T> m_told;
    QTimer m_timer;
};
