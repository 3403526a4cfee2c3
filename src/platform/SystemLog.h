#pragma once

#include <QString>

#include <functional>

namespace SystemLog {

/// One line to syslog and standard error; line breaks inside the text become spaces. Any thread.
void write(const QString &line);

/// Sends lines to `function` as well until the next call; an empty one ends that. For tests and support logs.
void setSink(std::function<void(const QString &)> function);

}
