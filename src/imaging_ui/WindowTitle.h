#pragma once

#include <QString>

/// A part of a window's title in which nothing of a name is taken for the mark of unsaved changes.
[[nodiscard]] inline QString titlePart(QString name)
{
    return name.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
}
