#pragma once

#include <QString>
#include <QStringList>

#include <functional>

/// The applications that keep the user's cloud folders up to date, keyed by bundle identifier: whether one is running,
/// by the process table, and starting one, by its desktop entry. An identifier that is not known is never running.
class RunningServices
{
public:
    /// Where services are looked for, and how they are started.
    struct Surroundings
    {
        QString processTable;    ///< "/proc"
        QStringList dataFolders; ///< hold "applications" with desktop entries; an earlier folder hides a later one
        std::function<bool(const QStringList &command, const QString &workingFolder)> launch;
    };
    /// This machine, as it is.
    [[nodiscard]] static Surroundings system();

    explicit RunningServices(Surroundings surroundings = system());

    /// Whether this user runs a process of the service.
    [[nodiscard]] bool isServiceRunning(const QString &bundleIdentifier) const;
    /// Starts the service in the background. False when it has no desktop entry or cannot be started.
    [[nodiscard]] bool runService(const QString &bundleIdentifier) const;

private:
    Surroundings m_surroundings;
};
