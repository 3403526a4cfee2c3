#include "PhotoTrash.h"

#include "FormatMessage.h"
#include "GiveAlert.h"
#include "LibraryView.h"
#include "LogString.h"
#include "PhotoLibrary.h"
#include "QVUndoManager.h"
#include "StringUtilities.h"

#include <QCoreApplication>
#include <QSet>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PhotoTrash", text);
}

QString fileName(const PIPhoto &photo)
{
    return QVString::lastPathComponent(photo.fileRef()->path());
}

QSet<const PIFileRef *> filesOf(const PIGroup::PhotoList &photos)
{
    QSet<const PIFileRef *> files;
    for (const auto &photo : photos)
        files.insert(photo->fileRef().get());
    return files;
}

}

PhotoTrash::PhotoTrash(LibraryEditor &editor, QVUndoManager &undo, std::shared_ptr<Trash> trash)
    : m_editor(editor)
    , m_undo(undo)
    , m_trash(std::move(trash))
    , m_worker(QStringLiteral("hmphoto.trash"), 1, DispatchQueue::AtEnd::LeaveBehind)
{}

PIGroup::PhotoList PhotoTrash::trashable(const PIGroup::PhotoList &photos)
{
    PIGroup::PhotoList reachable;
    for (const auto &photo : photos) {
        if (!photo->isFileLost())
            reachable.append(photo);
    }
    return reachable;
}

PhotoTrash::Question PhotoTrash::question(const PIGroup::PhotoList &photos)
{
    const bool isOne = photos.size() == 1;
    const QString what = isOne ? QString(u'"' + fileName(*photos.first()) + u'"') : tr("the selected photos");
    return {isOne ? tr("Trash 1 photo?") : FormatMessage(tr("Trash %d photos?"), {static_cast<int>(photos.size())}),
            FormatMessage(tr("Are you sure you want to trash %@? You can't undo this, and all undo history will be "
                             "cleared by this action."),
                          {what})};
}

void PhotoTrash::trash(const PIGroup::PhotoList &photos)
{
    if (photos.isEmpty())
        return;
    QList<Trashed> trashed;
    QStringList paths;
    for (const auto &photo : photos) {
        trashed.append({photo, photo->fileRef()->path()});
        paths.append(trashed.last().path);
    }
    paths.removeDuplicates();
    removeFromLibrary(photos);
    const quint64 job = ++m_lastJob;
    m_jobs.insert(job, trashed);
    m_worker.async([paths, job, trash = m_trash, toHere = m_link.toHere()] {
        toHere([failures = trash->recycle(paths), job](PhotoTrash &here) { here.recycled(job, failures); });
    });
}

void PhotoTrash::removeFromLibrary(const PIGroup::PhotoList &photos)
{
    const auto files = filesOf(photos);
    const auto first = m_editor.view().selectedIndexes().first();
    for (const auto &group : std::as_const(m_editor.library().groups())) {
        if (group->groupType() == GroupType::Undeleted)
            continue;
        for (const auto &folder : std::as_const(group->folders()))
            folder->removePhotosForFileRefs(files);
    }
    m_editor.view().resetList(nullptr);
    const auto shown = m_editor.view().shownFolder();
    if (shown && first && *first < std::as_const(*shown).photos().size())
        m_editor.view().selectIndexes(IndexSet::single(*first));
    // Marks the library as changed; no earlier state of it can come back.
    static_cast<void>(m_undo.setUndoAction(UndoAction::EffectSets, UndoName::EffectSets, {}));
    m_undo.clearUndo();
}

void PhotoTrash::recycled(quint64 job, const QList<Trash::Failure> &failures)
{
    const QList<Trashed> trashed = m_jobs.take(job);
    QSet<QString> paths;
    for (const Trash::Failure &failure : failures) {
        LogString(QStringLiteral("%1 could not be moved to the trash: %2").arg(failure.path, failure.reason));
        paths.insert(failure.path);
    }
    PIGroup::PhotoList left;
    PIGroup::PhotoList gone;
    for (const Trashed &each : trashed)
        (paths.contains(each.path) ? left : gone).append(each.photo);
    // A file that is brought to one of those places later is a new one.
    m_editor.library().fileRefs().dropPaths(filesOf(gone));
    if (failures.isEmpty())
        return;
    for (auto &photo : left) {
        photo = photo->copy();
        photo->setGuid(QVString::guidString());
    }
    takeBack(left, failures.first().reason);
}

void PhotoTrash::takeBack(const PIGroup::PhotoList &photos, const QString &reason)
{
    if (const auto folder = m_editor.makeSpecialGroupFolder(GroupType::Undeleted)) {
        folder->photos() = photos;
        folder->enforceVisibility();
        m_editor.view().resetList(folder);
    }
    GiveAlert(tr("Move to trash failed."),
              FormatMessage(tr("Some files could not be moved to the trash and were instead moved to the "
                               "\"Undeleted\" group. %@"),
                            {reason}));
}
