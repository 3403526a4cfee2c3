#include "FileRenaming.h"

#include "FileWriter.h"
#include "FormatMessage.h"
#include "LogString.h"
#include "PosixSupport.h"
#include "StringUtilities.h"

#include <QCoreApplication>

#include <sys/stat.h>

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

QString textOf(int error)
{
    QString text;
    Posix::fail(&text, error);
    return text;
}

QString sidecarRefusal(const QString &sidecar, const QString &reason)
{
    return FormatMessage(tr("Its sidecar \"%@\" could not be renamed. %@"),
                         {QVString::lastPathComponent(sidecar), reason});
}

/// Why the plan holds the file where it is; empty when it does not.
QString refusalOf(const RenamePlan::Step &step)
{
    using Obstacle = RenamePlan::Obstacle;
    switch (step.obstacle) {
    case Obstacle::NoName:
        return tr("A file cannot have this name.");
    case Obstacle::TooLong:
        return tr("The name is too long.");
    case Obstacle::Taken:
        return textOf(EEXIST);
    case Obstacle::SidecarTaken:
        return sidecarRefusal(step.detail, textOf(EEXIST));
    case Obstacle::Reserved:
        return tr("Another photo has this name, and its file is missing.");
    case Obstacle::Missing:
        return textOf(ENOENT);
    case Obstacle::Unreadable:
        return tr("Its folder cannot be read.") + u' ' + step.detail;
    case Obstacle::None:
        break;
    }
    return {};
}

}

std::optional<FileKey> FileKey::at(const QString &path)
{
    struct stat facts = {};
    if (::lstat(Posix::nativePath(path).constData(), &facts) != 0)
        return {};
    return FileKey{facts.st_dev, facts.st_ino};
}

FileRenaming FileRenaming::carryOut(const RenamePlan::Step &step, const std::optional<FileKey> &file)
{
    if (const QString refusal = refusalOf(step); !refusal.isEmpty())
        return {.reason = refusal};
    const auto present = FileKey::at(step.oldPath);
    if (!present || present != file)
        return {.reason = present ? tr("Another file has taken its place.") : textOf(ENOENT)};
    QList<RenamePlan::Move> done{{step.oldPath, step.newPath}};
    QString reason;
    if (!rename(done.first(), &reason))
        return {.reason = reason};
    for (const RenamePlan::Move &sidecar : step.sidecars) {
        if (rename(sidecar, &reason)) {
            done.append(sidecar);
            continue;
        }
        if (!FileKey::at(sidecar.from))
            continue; // gone since the plan was made
        return {.isDone = !takeBack(done), .reason = sidecarRefusal(sidecar.from, reason)};
    }
    return {.isDone = true};
}
