#include "BatchRename.h"

#include "FileFinder.h"
#include "FileRenaming.h"
#include "FormatMessage.h"
#include "LogString.h"
#include "PhotoLibrary.h"

#include <QCoreApplication>

PIGroup::PhotoList BatchRename::renamable(const PIGroup::PhotoList &photos)
{
    PIGroup::PhotoList present;
    for (const auto &photo : photos)
        if (!photo->isFileLost())
            present.append(photo);
    return present;
}

namespace {

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
    for (qsizetype i = 0; i < plan.steps().size() && !stop.stop_requested(); ++i) {
        const RenamePlan::Step &step = plan.steps().at(i);
        if (step.newPath.isEmpty())
            continue;
        const FileRenaming renaming = step.isMovedBefore ? FileRenaming{.isDone = true} : FileRenaming::carryOut(step);
        if (renaming.isDone)
            tell({i, step.newPath, prepare ? prepare(step.newPath) : QByteArray()});
        if (!renaming.reason.isEmpty())
            return failureOf(step, renaming.reason);
    }
    return {};
}

}

std::unique_ptr<FileRun> BatchRename::start(LibraryEditor &editor, DispatchQueue &queue, const RenameSettings &settings,
                                            const PIGroup::PhotoList &photos, const FileRun::Progress &progress,
                                            const FileRun::Ended &ended)
{
    const auto files = FileRun::filesOf(photos, editor.library());
    QStringList paths;
    for (const FileRun::File &file : files)
        paths.append(file.path);
    return std::make_unique<FileRun>(
        editor, queue, files,
        [settings, paths, prepare = editor.library().fileFinder().preparation()](const std::stop_token &stop,
                                                                                 const FileRun::Tell &tell) {
            return carryOut(RenamePlan(settings, paths), stop, prepare, tell);
        },
        progress, ended);
}
