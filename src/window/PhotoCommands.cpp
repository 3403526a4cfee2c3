#include "PhotoCommands.h"

#include "DateSort.h"
#include "FileViewer.h"
#include "FolderChooser.h"
#include "GiveAlert.h"
#include "Isaac.h"
#include "LibraryActions.h"
#include "LibraryNotifications.h"
#include "LibraryView.h"
#include "PhotoLibrary.h"
#include "PhotoPasteboard.h"
#include "PhotoStep.h"
#include "QVUndoManager.h"
#include "ThumbnailGridView.h"

#include <QDateTime>
#include <QDesktopServices>
#include <QUrl>

PhotoCommands::PhotoCommands(LibraryEditor &editor, QVUndoManager &undo, ThumbnailGridView &grid,
                             CurrentPhoto currentPhoto, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_grid(grid)
    , m_currentPhoto(std::move(currentPhoto))
    , m_window(window)
    , m_edits(editor)
    , m_trash(editor, undo, std::make_shared<DesktopTrash>())
    , m_pasteboard(new PhotoPasteboard(editor.library(), this))
    , m_dateSort(new DateSort(
          editor, window, [this] { sortFolder(PhotoEdits::Order::Date); }, this))
{
    connect(m_pasteboard, &PhotoPasteboard::canPasteChanged, this, &PhotoCommands::canPasteChanged);
}

PhotoCommands::~PhotoCommands() = default;

void PhotoCommands::bind(LibraryActions &actions)
{
    const auto bindTo = [&](Command command, auto perform) {
        actions.bind(command, [this, perform](bool) { perform(*this); });
    };
    using Self = PhotoCommands;
    bindTo(Command::Cut, [](Self &self) { self.cut(); });
    bindTo(Command::Copy, [](Self &self) { self.copy(); });
    bindTo(Command::Paste, [](Self &self) { self.paste(); });
    bindTo(Command::SelectMarked, [](Self &self) { self.selectMarked(); });
    bindTo(Command::ToggleMark, [](Self &self) { static_cast<void>(self.m_edits.toggleMark()); });
    bindTo(Command::ExtractFolder, [](Self &self) { self.extractFolder(PhotoEdits::Transfer::Move); });
    bindTo(Command::CopyToNewFolder, [](Self &self) { self.extractFolder(PhotoEdits::Transfer::Copy); });
    bindTo(Command::SortByName, [](Self &self) { self.sortFolder(PhotoEdits::Order::Name); });
    bindTo(Command::SortByDate, [](Self &self) { self.m_dateSort->start(); });
    bindTo(Command::SortAtRandom, [](Self &self) { self.sortFolder(PhotoEdits::Order::Random); });
    bindTo(Command::Reveal, [](Self &self) { self.reveal(); });
    bindTo(Command::EditImage, [](Self &self) { self.editImage(); });
}

bool PhotoCommands::canPaste() const
{
    return m_pasteboard->canPaste();
}

bool PhotoCommands::canMoveBy(int places) const
{
    const IndexSet &selected = m_grid.selectedPositions();
    const auto folder = m_grid.folder();
    if (!folder || selected.isEmpty())
        return false;
    // Photos that stand apart can always be brought together.
    const bool areTogether = selected.ranges().size() == 1;
    return !areTogether || (places < 0 ? *selected.first() > 0 : *selected.last() + 1 < folder->photos().size());
}

void PhotoCommands::copy()
{
    m_pasteboard->copy(m_edits.selectedPhotos());
}

void PhotoCommands::cut()
{
    copy();
    deletePhotos(m_edits.selectedPhotos());
}

void PhotoCommands::paste()
{
    const auto photos = m_pasteboard->photos();
    if (!photos || !m_edits.paste(*photos))
        Beep();
}

void PhotoCommands::deletePhotos(const PIGroup::PhotoList &photos)
{
    static_cast<void>(m_edits.deletePhotos(photos));
}

void PhotoCommands::trash(const PIGroup::PhotoList &among)
{
    const PIGroup::PhotoList photos = PhotoTrash::trashable(among);
    if (photos.isEmpty()) {
        Beep();
        return;
    }
    const auto question = PhotoTrash::question(photos);
    if (GiveAlert(question.title, question.text, {tr("OK"), tr("Cancel")}, /*escapeButton=*/1) == 0)
        m_trash.trash(photos);
}

void PhotoCommands::moveBy(int places)
{
    static_cast<void>(m_edits.moveSelectedBy(places));
}

void PhotoCommands::selectMarked()
{
    m_grid.selectWhere([](const PIPhoto &photo) { return photo.isMarked(); });
    if (m_grid.selectedPositions().isEmpty())
        Beep();
}

namespace {

quint32 secondsOfThisMillennium()
{
    constexpr qint64 kStartOf2001 = 978307200;
    return static_cast<quint32>(QDateTime::currentSecsSinceEpoch() - kStartOf2001);
}

}

void PhotoCommands::sortFolder(PhotoEdits::Order order)
{
    if (order == PhotoEdits::Order::Random && !m_random)
        m_random = std::make_unique<Isaac>(Isaac::startedWith(secondsOfThisMillennium()));
    static_cast<void>(m_edits.sortFolder(order, [this] { return m_random->next(); }));
}

void PhotoCommands::extractFolder(PhotoEdits::Transfer transfer)
{
    if (const auto folder = m_edits.extractFolder(transfer))
        Q_EMIT folderMade(folder);
}

void PhotoCommands::moveToFolder()
{
    const PIGroup::PhotoList photos = m_edits.selectedPhotos();
    FolderChooser chooser(m_editor, static_cast<int>(photos.size()), &m_window);
    chooser.exec();
    if (const auto choice = chooser.choice())
        static_cast<void>(m_edits.copyPhotos(photos, choice->item, choice->transfer));
}

QStringList PhotoCommands::selectedFiles() const
{
    QStringList paths;
    for (const auto &photo : PhotoTrash::trashable(m_edits.selectedPhotos()))
        paths.append(photo->fileRef()->path());
    paths.removeDuplicates();
    return paths;
}

void PhotoCommands::reveal()
{
    const QStringList paths = selectedFiles();
    if (paths.isEmpty())
        Beep();
    else
        revealInFileViewer(paths);
}

void PhotoCommands::editImage()
{
    const QStringList paths = selectedFiles();
    if (paths.isEmpty())
        Beep();
    constexpr qsizetype kMany = 10;
    if (paths.size() > kMany &&
        GiveAlert(tr("Open %1 files?").arg(paths.size()), tr("Each of them may be opened in a window of its own."),
                  {tr("OK"), tr("Cancel")}, /*escapeButton=*/1) != 0)
        return;
    for (const QString &path : paths)
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

void PhotoCommands::step(StepDirection direction)
{
    const auto folder = m_grid.folder();
    const auto current = m_currentPhoto();
    const qsizetype reference = folder ? std::as_const(*folder).photos().indexOf(current) : -1;
    if (reference < 0) {
        Beep();
        return;
    }
    const auto &photos = std::as_const(*folder).photos();
    const auto step = PhotoStep::from(reference, photos.size(), m_grid.selectedPositions(), direction);
    m_grid.setFocus();
    if (!step)
        return;
    const auto target = photos.at(step->index);
    if (step->becomesSelection) {
        m_grid.selectIndexes(IndexSet::single(step->index));
        m_grid.scrollToSelection();
    } else if (m_grid.makeCurrent(*target)) {
        m_grid.scrollTo(m_grid.currentIndex());
        m_editor.library().notifications().post(kSelectNotification, target);
    }
}
