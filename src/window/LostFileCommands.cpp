#include "LostFileCommands.h"

#include "FoundFileDialog.h"
#include "GiveAlert.h"
#include "InBackground.h"
#include "LibraryNotifications.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"
#include "StringUtilities.h"
#include "TextForPeople.h"

#include <QDir>
#include <QFileDialog>
#include <QTimer>

#include <chrono>
#include <utility>

namespace {

constexpr int kLooksAtOnce = 4;
/// With the disk on which the file stood.
constexpr std::chrono::milliseconds kPatience(1000);

}

LostFileCommands::LostFileCommands(PhotoLibrary &library, ShownFolder shownFolder, CurrentPhoto currentPhoto,
                                   QWidget &section)
    : QObject(&section)
    , m_library(library)
    , m_shownFolder(std::move(shownFolder))
    , m_currentPhoto(std::move(currentPhoto))
    , m_section(section)
    , m_looks(QStringLiteral("hmphoto.oldPlaces"), kLooksAtOnce, DispatchQueue::AtEnd::LeaveBehind)
    , m_worker(QStringLiteral("hmphoto.lostFiles"), kLooksAtOnce, DispatchQueue::AtEnd::LeaveBehind)
{}

/// The question begins with what is left of the old place, but where that does not answer, at home.
void LostFileCommands::findFile()
{
    const auto lost = m_currentPhoto();
    if (!lost || !lost->fileRef())
        return;
    const auto ask = [this, lost, question = ++m_question](const QString &folder) {
        if (question != m_question)
            return;
        ++m_question;
        askForFile(lost, folder);
    };
    inBackground(
        m_looks, this, [path = lost->fileRef()->path()] { return FileCommands::folderLeftOf(path); }, ask);
    QTimer::singleShot(kPatience, this, [ask] { ask(QDir::homePath()); });
}

void LostFileCommands::askForFile(const std::shared_ptr<PIPhoto> &lost, const QString &folder)
{
    if (m_currentPhoto() != lost)
        return;
    const QString name = QVString::lastPathComponent(lost->fileRef()->path());
    const QString path = askForFileNamed(name, folder, *m_section.window());
    if (!path.isEmpty() && m_currentPhoto() == lost)
        takeFile(lost, path);
}

void LostFileCommands::takeFile(const std::shared_ptr<PIPhoto> &lost, const QString &path)
{
    const auto files = FileCommands::filesFoundWith(*lost, m_shownFolder().get(), path);
    MovedFilesRun::start(m_library, m_worker, files, tr("Find File"), *m_section.window(), this,
                         [this, lost](const MovedFilesRun::Outcome &outcome) {
                             if (outcome.taken > 0 && m_currentPhoto() == lost)
                                 m_library.notifications().post(kSelectNotification, lost);
                             Q_EMIT done();
                         });
}

void LostFileCommands::findMovedFolder(const QString &path, const std::function<void(const QString &folder)> &told)
{
    inBackground(
        m_looks, this, [path] { return FileCommands::movedFolderOf(path); }, told);
}

void LostFileCommands::findMovedTree(const QString &folder)
{
    const auto lost = m_currentPhoto();
    const auto tree = lost ? FileCommands::lostTreeIn(folder, m_library, *lost) : std::nullopt;
    if (!tree)
        return;
    const QString place = QFileDialog::getExistingDirectory(
        m_section.window(), tr("Where is the folder “%1” now?").arg(QVString::lastPathComponent(tree->folder)),
        QDir::homePath());
    if (!place.isEmpty())
        MovedFilesRun::start(m_library, m_worker, FileCommands::filesMovedTo(m_library, *tree, place),
                             tr("Find Moved Files"), *m_section.window(), this,
                             [this](const MovedFilesRun::Outcome &outcome) { treeWasSought(outcome); });
}

void LostFileCommands::treeWasSought(const MovedFilesRun::Outcome &outcome)
{
    Q_EMIT done();
    if (outcome.isCancelled || outcome.notFound == 0)
        return;
    if (outcome.taken == 0)
        GiveAlert(tr("No missing files were found."), tr("The folder you chose holds none of the missing files."));
    else
        GiveAlert(tr("Some files are still missing."),
                  CountText(outcome.notFound, tr("%n file was not found in the folder you chose."),
                            tr("%n files were not found in the folder you chose.")));
}
