#include "NotificationCenter.h"

#include <QHash>
#include <QList>

#include <utility>

struct NotificationCenter::State
{
    // Posting copies the list, which costs nothing while nobody registers meanwhile.
    QHash<QString, QList<std::shared_ptr<Observer::Registration>>> observers;
};

struct NotificationCenter::Observer::Registration
{
    std::weak_ptr<State> state;
    QString name;
    Handler handler;
    NotificationObject object;
    bool active = true;
};

NotificationCenter::Observer::Observer(std::shared_ptr<Registration> registration)
    : m_registration(std::move(registration))
{}

NotificationCenter::Observer &NotificationCenter::Observer::operator=(Observer &&other) noexcept
{
    Observer(std::move(other)).m_registration.swap(m_registration);
    return *this;
}

NotificationCenter::Observer::~Observer()
{
    if (!m_registration)
        return;
    m_registration->active = false;
    const auto state = m_registration->state.lock();
    if (!state)
        return;
    const auto list = state->observers.find(m_registration->name);
    if (list == state->observers.end())
        return;
    list->removeOne(m_registration);
    if (list->isEmpty())
        state->observers.erase(list);
}

NotificationCenter::NotificationCenter()
    : m_state(std::make_shared<State>())
{}

NotificationCenter::~NotificationCenter() = default;

NotificationCenter::Observer NotificationCenter::observe(const QString &name, Handler handler,
                                                         const NotificationObject &object)
{
    auto registration = std::make_shared<Observer::Registration>();
    registration->state = m_state;
    registration->name = name;
    registration->handler = std::move(handler);
    registration->object = object;
    m_state->observers[name].append(registration);
    return Observer(std::move(registration));
}

void NotificationCenter::post(const QString &name, const NotificationObject &object)
{
    const auto observers = m_state->observers.value(name);
    for (const auto &registration : observers) {
        const bool concerned = registration->object.isNull() || registration->object.isSameAs(object);
        if (registration->active && concerned && registration->handler)
            registration->handler(object);
    }
}
