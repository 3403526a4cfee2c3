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

using Done = std::function<void(MailOutcome)>;

/// A process that is nobody's child: it would be killed with its parent, a mail program with it.
QProcess *makeProcess()
{
    auto *process = new QProcess;
    process->setStandardInputFile(QProcess::nullDevice());
    QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
    return process;
}

/// Where the process cannot start at all, nothing else is heard of it.
void whenItCannotStart(QProcess *process, QObject *context, const std::function<void()> &then)
{
    QObject::connect(process, &QProcess::errorOccurred, process, [process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            process->deleteLater();
    });
    QObject::connect(process, &QProcess::errorOccurred, context, [then](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            then();
    });
}

void openMail(const QString &program, const QStringList &attachments, QObject *context, const Done &done)
{
    QStringList arguments;
    for (const QString &path : attachments)
        arguments << QStringLiteral("--attach") << path;
    QProcess *process = makeProcess();
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    QObject::connect(process, &QProcess::finished, context,
                     [done](int exitCode, QProcess::ExitStatus status) { done(outcomeOf(exitCode, status)); });
    whenItCannotStart(process, context, [done] { done(MailOutcome::Failed); });
    process->start(program, arguments);
}

/// Goes on when somebody is there to take mail: on several desktops the opener tells of success or of some failure
/// where nobody is.
void askForMailProgram(const QString &asking, QObject *context, const Done &done, const std::function<void()> &goOn)
{
    QProcess *process = makeProcess();
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(process, &QProcess::finished, context, [=](int, QProcess::ExitStatus status) {
        if (status == QProcess::NormalExit && process->readAllStandardOutput().trimmed().isEmpty())
            done(MailOutcome::NoProgram);
        else
            goOn();
    });
    whenItCannotStart(process, context, goOn);
    process->start(asking,
                   {QStringLiteral("query"), QStringLiteral("default"), QStringLiteral("x-scheme-handler/mailto")});
}

}

void composeMail(const QStringList &attachments, QObject *context, const Done &done)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("xdg-email"));
    if (program.isEmpty()) {
        runOnMain([guard = QPointer<QObject>(context), done] {
            if (guard)
                done(MailOutcome::NoProgram);
        });
        return;
    }
    const auto open = [=] { openMail(program, attachments, context, done); };
    const QString asking = QStandardPaths::findExecutable(QStringLiteral("xdg-mime"));
    if (asking.isEmpty() || !qEnvironmentVariableIsEmpty("MAILER"))
        open();
    else
        askForMailProgram(asking, context, done, open);
}
