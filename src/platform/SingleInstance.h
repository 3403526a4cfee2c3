#pragma once

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

/// Holds a library folder for one process. A second process hands its file arguments to the first.
class SingleInstance
{
public:
    enum class Claim {
        First,      ///< this process holds the folder until the object is destroyed or the process ends
        HandedOver, ///< another process holds it and has taken the arguments
        NoAnswer,   ///< another process holds it and does not answer
        Failed,     ///< the lock cannot be made, or there are too many arguments to hand over; the log tells which
    };

    /// `patience` is how long a claim waits for the process that holds the folder.
    explicit SingleInstance(const QString &folder, std::chrono::milliseconds patience = std::chrono::seconds(4));
    ~SingleInstance();
    SingleInstance(const SingleInstance &) = delete;
    SingleInstance &operator=(const SingleInstance &) = delete;

    /// Tries to take the folder; when another process has it, sends it `paths`, which are absolute: the other process
    /// works in another folder.
    [[nodiscard]] Claim claim(const QStringList &paths);
    /// Called on the main thread, after `Claim::First`, with what a later process hands over (may be empty).
    void setHandler(std::function<void(const QStringList &)> handler);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
