#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What a desktop entry tells about starting its application.
struct DesktopEntry
{
    QStringList command; ///< the program and its arguments, without those that would name files to open
    QString workingFolder;
    bool hidden = false; ///< the user removed the application; nothing else is to be read from the entry

    /// Nothing when the file cannot be read, or is no entry of an application that can be started.
    [[nodiscard]] static std::optional<DesktopEntry> read(const QString &path);
    /// The command of an entry's "Exec" line; empty when its quotes do not match.
    [[nodiscard]] static QStringList parseExec(const QString &exec);
};
