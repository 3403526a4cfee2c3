#include "BatchRename.h"

#include "FileFinder.h"
#include "FileRenaming.h"
#include "FormatMessage.h"
#include "LogString.h"
#include "PhotoLibrary.h"

#include <QCoreApplication>
#include <QSet>

PIGroup::PhotoList BatchRename::renamable(const PIGroup::PhotoList &photos)
{
    PIGroup::PhotoList present;
    for (const auto &photo : photos)
        if (!photo->isFileLost())
            present.append(photo);
    return present;
}

QStringList BatchRename::pathsOf(const PIGroup::PhotoList &photos)
{
    QStringList paths;
    for (const auto &photo : photos)
        paths.append(photo->fileRef() ? photo->fileRef()->path() : QString());
    return paths;
}

QStringList BatchRename::lostPaths(const PhotoLibrary &library)
{
    QStringList paths;
    const auto lost = library.usedFileRefs([](const PIFileRef &file) { return file.isFileLost(); });
    for (const auto &file : lost)
        paths.append(file->path());
    return paths;
}

namespace {

using Step = RenamePlan::Step;
using Obstacle = RenamePlan::Obstacle;

/// With what the library knows better by now.
RenamePlan reviewed(RenamePlan plan, const PIGroup::PhotoList &photos, const QStringList &lostPaths)
{
    const QSet<QString> lost(lostPaths.cbegin(), lostPaths.cend());
    const QStringList paths = BatchRename::pathsOf(photos);
    for (qsizetype i = 0; i < plan.steps().size(); ++i) {
        const Step &step = plan.steps().at(i);
        if (i >= photos.size() || photos.at(i)->isFileLost() || paths.at(i) != step.oldPath)
            plan.setObstacle(i, Obstacle::Missing);
        else if (step.obstacle == Obstacle::None && lost.contains(step.newPath))
            plan.setObstacle(i, Obstacle::Reserved);
    }
    return plan;
}

/// Which file each step means: while others are renamed its path alone does not tell.
QList<std::optional<FileKey>> filesOf(const RenamePlan &plan, const std::stop_token &stop)
{
    QList<std::optional<FileKey>> files;
    for (const Step &step : plan.steps())
        files.append(step.newPath.isEmpty() || stop.stop_requested() ? std::nullopt : FileKey::at(step.oldPath));
    return files;
}

QString failureOf(const RenamePlan::Step &step, const QString &reason)
{
    LogString("Can't move %@ to %@. %@", step.oldPath, step.newPath, reason);
    return FormatMessage(QCoreApplication::translate("BatchRename", "I can't rename \"%@\" to \"%@\". %@"),
                         {step.oldPath, step.newPath, reason});
}

/// The text of an alert when it ends early.
QString carryOut(const RenamePlan &plan, const std::stop_token &stop, const FileFinder::Preparation &prepare,
                 const FileRun::Tell &tell)
{
    const auto files = filesOf(plan, stop);
    for (qsizetype i = 0; i < plan.steps().size() && !stop.stop_requested(); ++i) {
        const Step &step = plan.steps().at(i);
        if (step.newPath.isEmpty())
            continue;
        const bool isDoneBefore = step.isMovedBefore && step.obstacle == Obstacle::None;
        const auto renaming = isDoneBefore ? FileRenaming{.isDone = true} : FileRenaming::carryOut(step, files.at(i));
        if (renaming.isDone)
            tell({i, step.newPath, prepare ? prepare(step.newPath) : QByteArray()});
        if (!renaming.reason.isEmpty())
            return failureOf(step, renaming.reason);
    }
    return {};
}

}

std::unique_ptr<FileRun> BatchRename::start(LibraryEditor &editor, DispatchQueue &queue, const RenamePlan &plan,
                                            const PIGroup::PhotoList &photos, const FileRun::Progress &progress,
                                            const FileRun::Ended &ended)
{
    const auto files = FileRun::filesOf(photos, editor.library());
    return std::make_unique<FileRun>(
        editor, queue, files,
        [plan = reviewed(plan, photos, lostPaths(editor.library())),
         prepare = editor.library().fileFinder().preparation()](
            const std::stop_token &stop, const FileRun::Tell &tell) { return carryOut(plan, stop, prepare, tell); },
        progress, ended);
}
