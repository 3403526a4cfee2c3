#pragma once

#include <QStringList>

#include <functional>

class QObject;

enum class MailOutcome {
    Opened,
    NoProgram, ///< nothing here can hand files to a mail program, or there is none to take them
    Failed,
};

/// Opens a new message with these files attached in the user's mail program. What became of it is told later on the
/// main thread, perhaps only when the mail program ends, unless `context` is gone by then; the mail program stays open
/// all the same. Main thread.
void composeMail(const QStringList &attachments, QObject *context, const std::function<void(MailOutcome)> &done);
