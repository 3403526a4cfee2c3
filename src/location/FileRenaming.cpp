#include "FileRenaming.h"

#include "DirectoryReader.h"
#include "FileWriter.h"
#include "FormatMessage.h"
#include "LogString.h"
#include "StringUtilities.h"

#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("FileRenaming", text);
}

bool rename(const RenamePlan::Move &move, QString *reason)
{
    return FileWriter::renameNoReplace(move.from, move.to, reason, FileWriter::WithoutLinks::Refuse);
}

/// The latest first. False when one could not be taken back.
bool takeBack(const QList<RenamePlan::Move> &moves)
{
    for (qsizetype i = moves.size() - 1; i >= 0; --i) {
        QString reason;
        if (rename({moves[i].to, moves[i].from}, &reason))
            continue;
        LogString("Can't move %@ back to %@. %@", moves[i].to, moves[i].from, reason);
        return false;
    }
    return true;
}

}

FileRenaming FileRenaming::carryOut(const RenamePlan::Step &step)
{
    using Obstacle = RenamePlan::Obstacle;
    if (step.obstacle == Obstacle::NoName)
        return {.reason = tr("A file cannot have this name.")};
    if (step.obstacle == Obstacle::TooLong)
        return {.reason = tr("The name is too long.")};
    QList<RenamePlan::Move> done{{step.oldPath, step.newPath}};
    QString reason;
    if (!rename(done.first(), &reason))
        return {.reason = reason};
    for (const RenamePlan::Move &sidecar : step.sidecars) {
        if (rename(sidecar, &reason)) {
            done.append(sidecar);
            continue;
        }
        if (!entryTypeAt(sidecar.from))
            continue; // gone since the plan was made
        const QString why = FormatMessage(tr("Its sidecar \"%@\" could not be renamed. %@"),
                                          {QVString::lastPathComponent(sidecar.from), reason});
        return {.isDone = !takeBack(done), .reason = why};
    }
    return {.isDone = true};
}
