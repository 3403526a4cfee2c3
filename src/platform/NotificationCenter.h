#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <typeinfo>

/// What a notification is about: nothing, or one object of any type. It does not keep the object alive.
class NotificationObject
{
public:
    NotificationObject() = default;
    template<typename T>
    NotificationObject(T *object)
        : m_object(object)
        , m_type(&typeid(T))
    {}
    template<typename T>
    NotificationObject(const std::shared_ptr<T> &object)
        : NotificationObject(object.get())
    {}

    /// The object when it was posted as a `T`, else null.
    template<typename T>
    [[nodiscard]] T *as() const
    {
        return m_type && *m_type == typeid(T) ? static_cast<T *>(const_cast<void *>(m_object)) : nullptr;
    }
    [[nodiscard]] bool isSameAs(const NotificationObject &other) const { return m_object == other.m_object; }
    [[nodiscard]] bool isNull() const { return !m_object; }

private:
    const void *m_object = nullptr;
    const std::type_info *m_type = nullptr;
};

/// Broadcasts named events to whoever asked for them: synchronously, on the posting thread, in order of registration.
/// Main thread only. Observers may register, unregister and post while a notification is being delivered.
class NotificationCenter
{
public:
    using Handler = std::function<void(const NotificationObject &)>;

    /// Keeps an observer registered for as long as it lives; may outlive the centre.
    class Observer
    {
    public:
        Observer() = default;
        Observer(Observer &&) noexcept = default;
        Observer &operator=(Observer &&other) noexcept;
        Observer(const Observer &) = delete;
        Observer &operator=(const Observer &) = delete;
        ~Observer();

    private:
        friend class NotificationCenter;
        struct Registration;
        explicit Observer(std::shared_ptr<Registration> registration);
        std::shared_ptr<Registration> m_registration;
    };

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter &) = delete;
    NotificationCenter &operator=(const NotificationCenter &) = delete;

    /// Calls `handler` for every later post of `name`; with an `object`, only for posts about that object.
    [[nodiscard]] Observer observe(const QString &name, Handler handler, const NotificationObject &object = {});
    void post(const QString &name, const NotificationObject &object = {});

private:
    struct State;
    std::shared_ptr<State> m_state;
};
