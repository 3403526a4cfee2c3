#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

/// What a job on another thread waits for after it has asked the main thread something. Never the other way round.
template<typename T>
class MainThreadAnswer
{
public:
    void give(T answer)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_answer = std::move(answer);
        }
        m_given.notify_all();
    }

    /// Nothing when `cancelled` becomes true first, as it must when nobody is left to answer.
    [[nodiscard]] std::optional<T> wait(const std::atomic<bool> &cancelled)
    {
        constexpr std::chrono::milliseconds cancellationCheck(20);
        std::unique_lock lock(m_mutex);
        while (!m_answer && !cancelled)
            m_given.wait_for(lock, cancellationCheck);
        return std::exchange(m_answer, std::nullopt);
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_given;
    std::optional<T> m_answer;
};
