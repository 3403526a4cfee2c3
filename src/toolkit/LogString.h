#pragma once

#include "FormatMessage.h"

#include <QString>

/// One line in the system log. Every logged message of the system goes through it. Any thread.
void LogString(const QString &message);

/// The same, filled as FormatMessage tells.
template<typename... Arguments>
void LogString(const char *format, const Arguments &...arguments)
{
    LogString(FormatMessage(QString::fromUtf8(format), {MessageArgument(arguments)...}));
}

/// Logs that something unexpected came out of a library while doing what `context` names.
void LogException(const QString &object, const QString &context);
