#include "SystemLog.h"

#include <QLoggingCategory>

#include <syslog.h>

#include <mutex>
#include <utility>

namespace {

Q_LOGGING_CATEGORY(tamselLog, "tamsel")

struct Sink
{
    // Recursive, because a sink may well log something itself.
    std::recursive_mutex mutex;
    std::function<void(const QString &)> function;
};

Sink &sink()
{
    static Sink instance;
    return instance;
}

/// Names of files are part of many lines, and a terminal obeys control characters.
QString singleLine(QString line)
{
    for (QChar &character : line) {
        const bool lineBreak = character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
        if (lineBreak || character.category() == QChar::Other_Control)
            character = QChar::Space;
    }
    return line;
}

}

void SystemLog::write(const QString &line)
{
    const QString text = singleLine(line);
    ::syslog(LOG_USER | LOG_NOTICE, "%s", text.toUtf8().constData());
    qCInfo(tamselLog).noquote() << text;
    const std::lock_guard lock(sink().mutex);
    if (sink().function)
        sink().function(text);
}

void SystemLog::setSink(std::function<void(const QString &)> function)
{
    const std::lock_guard lock(sink().mutex);
    sink().function = std::move(function);
}
