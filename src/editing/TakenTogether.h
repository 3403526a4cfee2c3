#pragma once

#include <QList>
#include <QTimer>

#include <algorithm>
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
        m_timer.setSingleShot(true);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { takeSome(); });
    }

    void add(T told)
    {
        constexpr int kMilliseconds = 50;
        m_told.append(std::move(told));
        if (!m_timer.isActive())
            m_timer.start(kMilliseconds);
    }
    [[nodiscard]] bool isEmpty() const { return m_told.isEmpty(); }

private:
    /// No more than the main thread does without a halt that can be felt.
    void takeSome()
    {
        constexpr qsizetype kMost = 200;
        const QList<T> some = m_told.first(std::min(kMost, m_told.size()));
        m_told.remove(0, some.size());
        if (!m_told.isEmpty())
            m_timer.start(0);
        m_take(some);
    }

    Take m_take;
    QList<T> m_told;
    QTimer m_timer;
};
