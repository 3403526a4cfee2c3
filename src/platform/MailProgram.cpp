#include "MailProgram.h"

#include "DispatchQueue.h"

#include <QPointer>
#include <QProcess>
#include <QStandardPaths>

namespace {

MailOutcome outcomeOf(int exitCode, QProcess::ExitStatus status)
{
    constexpr int toolIsMissing = 3;
    if (status == QProcess::NormalExit && exitCode == toolIsMissing)
        return MailOutcome::NoProgram;
    return status == QProcess::NormalExit && exitCode == 0 ? MailOutcome::Opened : MailOutcome::Failed;
}

}

void composeMail(const QStringList &attachments, QObject *context, const std::function<void(MailOutcome)> &done)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("xdg-email"));
    if (program.isEmpty()) {
        runOnMain([guard = QPointer<QObject>(context), done] {
            if (guard)
                done(MailOutcome::NoProgram);
        });
        return;
    }
    QStringList arguments;
    for (const QString &path : attachments)
        arguments << QStringLiteral("--attach") << path;
    auto *process = new QProcess; // nobody's child: it would be killed with its parent, a mail program with it
    process->setStandardInputFile(QProcess::nullDevice());
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    QObject::connect(process, &QProcess::finished, context,
                     [done](int exitCode, QProcess::ExitStatus status) { done(outcomeOf(exitCode, status)); });
    QObject::connect(process, &QProcess::errorOccurred, context, [process, done](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return; // finished() follows
        process->deleteLater();
        done(MailOutcome::Failed);
    });
    process->start(program, arguments);
}
