#include "LogString.h"

#include "SystemLog.h"

void LogString(const QString &message)
{
    SystemLog::write(message);
}

void LogException(const QString &object, const QString &context)
{
    LogString("%@: %@", context, object);
}
