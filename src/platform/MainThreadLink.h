#pragma once

#include "DispatchQueue.h"

#include <memory>
#include <utility>

/// Leads jobs on other threads back to an object of the main thread that may be gone by then: a member of it.
template<typename T>
class MainThreadLink
{
public:
    explicit MainThreadLink(T &object)
        : m_object(std::make_shared<T *>(&object))
    {}
    ~MainThreadLink() { *m_object = nullptr; }
    MainThreadLink(const MainThreadLink &) = delete;
    MainThreadLink &operator=(const MainThreadLink &) = delete;

    /// For jobs to keep and to call on any thread: runs what it is given on the main thread, with the object, and drops
    /// it when there is none any more.
    [[nodiscard]] auto toHere() const
    {
        return [object = m_object](auto deliver) {
            runOnMain([object, deliver = std::move(deliver)] {
                if (*object)
                    deliver(**object);
            });
        };
    }

private:
    std::shared_ptr<T *> m_object; ///< what it points to is touched on the main thread only
};
