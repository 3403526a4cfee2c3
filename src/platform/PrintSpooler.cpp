#include "PrintSpooler.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QProcess>
#include <QStandardPaths>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PrintSpooler", text);
}

QStringList argumentsFor(const QString &path, const PrintTicket &ticket)
{
    QStringList arguments;
    if (!ticket.printer.isEmpty())
        arguments << QStringLiteral("-d") << ticket.printer;
    arguments << QStringLiteral("-t") << ticket.title << QStringLiteral("-n") << QString::number(ticket.copies);
    const auto option = [&](const QString &text) { arguments << QStringLiteral("-o") << text; };
    if (ticket.copies > 1)
        option(ticket.collate ? QStringLiteral("collate=true") : QStringLiteral("collate=false"));
    if (!ticket.media.isEmpty())
        option(QString(QStringLiteral("media=") + ticket.media));
    switch (ticket.sides) {
    case PrintTicket::Sides::One:
        option(QStringLiteral("sides=one-sided"));
        break;
    case PrintTicket::Sides::LongEdge:
        option(QStringLiteral("sides=two-sided-long-edge"));
        break;
    case PrintTicket::Sides::ShortEdge:
        option(QStringLiteral("sides=two-sided-short-edge"));
        break;
    }
    if (ticket.isGrey)
        option(QStringLiteral("print-color-mode=monochrome"));
    return arguments << QStringLiteral("--") << path;
}

}

bool spoolPdf(const QString &path, const PrintTicket &ticket, const std::atomic<bool> &cancelled, QString &reason)
{
    constexpr int kPatience = 60'000; // milliseconds
    constexpr int kTurn = 100;
    const QString program = QStandardPaths::findExecutable(QStringLiteral("lp"));
    if (program.isEmpty()) {
        reason = tr("There is no printing system: the command lp is missing");
        return false;
    }
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(program, argumentsFor(path, ticket));
    const QDeadlineTimer deadline(kPatience);
    while (!cancelled && !deadline.hasExpired() && !process.waitForFinished(kTurn) &&
           process.state() != QProcess::NotRunning) {
    }
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
        if (!cancelled)
            reason = tr("The printing system does not answer");
        return false;
    }
    const bool isTaken = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 &&
                         process.error() != QProcess::FailedToStart;
    if (!isTaken)
        reason = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    return isTaken;
}
