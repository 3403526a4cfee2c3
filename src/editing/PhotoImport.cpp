#include "PhotoImport.h"

#include "DispatchQueue.h"
#include "FileFinder.h"
#include "KeywordText.h"
#include "LibraryNotifications.h"
#include "LibraryView.h"
#include "PIFolder.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"
#include "StringUtilities.h"

#include <QElapsedTimer>

#include <condition_variable>
#include <mutex>

namespace {

/// How long one turn of the event loop may be busy with taking photos in.
constexpr qint64 kSliceMilliseconds = 8;
/// The walk waits when it is this far ahead, so that a huge tree costs no memory.
constexpr size_t kMaxPending = 20000;
constexpr qsizetype kMostPendingLetters = 4'000'000; ///< of captions and keywords

qsizetype lettersIn(const PictureWords &words)
{
    qsizetype letters = words.caption.size();
    for (const QString &keyword : words.keywords)
        letters += keyword.size();
    return letters;
}

}

struct PhotoImport::Channel
{
    std::mutex mutex;
    std::condition_variable room;
    struct Step
    {
        ScanStep scanned;
        QByteArray prepared; ///< for the file finder
        PictureWords words;
    };
    std::deque<Step> steps;
    qsizetype letters = 0; ///< in the steps
    bool wakeUpSent = false;
    bool walkDone = false;
    ScanSummary summary;
    std::atomic<bool> cancelled = false;
    PhotoImport *import = nullptr; ///< main thread only; null once the import is gone

    /// Asks the main thread to take what is here, unless it has been asked already.
    static void wakeUp(const std::shared_ptr<Channel> &channel)
    {
        runOnMain([channel] {
            if (channel->import)
                channel->import->takeSlice();
        });
    }

    static void add(const std::shared_ptr<Channel> &channel, Step step)
    {
        std::unique_lock lock(channel->mutex);
        channel->room.wait(lock, [&] {
            const bool hasRoom = channel->steps.size() < kMaxPending && channel->letters < kMostPendingLetters;
            return hasRoom || channel->cancelled;
        });
        channel->letters += lettersIn(step.words);
        channel->steps.push_back(std::move(step));
        if (std::exchange(channel->wakeUpSent, true))
            return;
        lock.unlock();
        wakeUp(channel);
    }
};

PhotoImport::PhotoImport(LibraryEditor &editor, DispatchQueue &workers, Request request)
    : m_editor(editor)
    , m_workers(workers)
    , m_request(std::move(request))
    , m_channel(std::make_shared<Channel>())
{
    m_channel->import = this;
}

PhotoImport::~PhotoImport()
{
    m_channel->import = nullptr;
    cancel();
}

void PhotoImport::start(Progress progress, Finished finished)
{
    m_progress = std::move(progress);
    m_finished = std::move(finished);
    notePlace();
    m_workers.async([channel = m_channel, paths = m_request.paths,
                     prepare = m_editor.library().fileFinder().preparation(), readWords = m_request.readWords] {
        const auto report = [&](const ScanStep &scanned) {
            Channel::Step step{scanned, {}, {}};
            const bool isWanted = scanned.kind == ScanStep::Kind::Image && !channel->cancelled;
            if (isWanted && prepare)
                step.prepared = prepare(scanned.path);
            if (isWanted && readWords)
                step.words = readWords(scanned.path);
            Channel::add(channel, std::move(step));
        };
        const ScanSummary summary = scanForImages(paths, report, channel->cancelled);
        {
            const std::lock_guard lock(channel->mutex);
            channel->summary = summary;
            channel->walkDone = true;
        }
        Channel::wakeUp(channel);
    });
}

/// What is clicked while the walk runs does not change where things go.
void PhotoImport::notePlace()
{
    const LibraryView &view = m_editor.view();
    m_selectedBefore = view.selectedItem();
    if (!m_request.toFolder) {
        m_request.toFolder = view.shownFolder();
        const auto first = m_request.toFolder ? view.selectedIndexes().first() : std::nullopt;
        m_request.atIndex = first ? static_cast<quint64>(*first) : kNotFound;
    }
    m_parent = m_request.toFolder ? m_request.toFolder : m_selectedBefore;
}

void PhotoImport::cancel()
{
    m_channel->cancelled = true;
    const std::lock_guard lock(m_channel->mutex);
    m_channel->room.notify_all();
}

void PhotoImport::takeSlice()
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < kSliceMilliseconds) {
        std::optional<Channel::Step> step;
        bool done = false;
        {
            const std::lock_guard lock(m_channel->mutex);
            if (m_channel->cancelled) {
                m_channel->steps.clear();
                m_channel->letters = 0;
            }
            if (!m_channel->steps.empty()) {
                step = std::move(m_channel->steps.front());
                m_channel->steps.pop_front();
                m_channel->letters -= lettersIn(step->words);
            } else {
                m_channel->wakeUpSent = false;
                done = m_channel->walkDone;
            }
            m_channel->room.notify_all();
        }
        if (done)
            return finish();
        if (!step)
            return reportProgress();
        m_editor.library().fileFinder().usePrepared(step->scanned.path, step->prepared);
        take(step->scanned, step->words);
    }
    Channel::wakeUp(m_channel);
    reportProgress();
}

void PhotoImport::reportProgress()
{
    if (m_progress && std::exchange(m_photosReported, m_photosTaken) != m_photosTaken)
        m_progress(m_photosTaken);
}

void PhotoImport::take(const ScanStep &step, const PictureWords &words)
{
    switch (step.kind) {
    case ScanStep::Kind::FolderBegins:
        return beginFolder(step.path);
    case ScanStep::Kind::FolderEnds:
        return m_openFolders.pop_back();
    case ScanStep::Kind::Image:
        break;
    }
    auto photo = std::make_shared<PIPhoto>(m_editor.library().fileRefs().fileRefForPath(step.path));
    takeWords(*photo, words);
    PIGroup::PhotoList &photos = m_openFolders.empty() ? m_loosePhotos : m_openFolders.back()->photos();
    photos.append(std::move(photo));
    ++m_photosTaken;
}

void PhotoImport::takeWords(PIPhoto &photo, const PictureWords &words)
{
    if (!words.caption.isEmpty())
        photo.setCaption(words.caption);
    if (words.keywords.isEmpty())
        return;
    photo.setKeywordList(KeywordText::listOf(words.keywords), m_keywords);
    m_photosWithKeywords << photo.shared_from_this();
}

void PhotoImport::beginFolder(const QString &path)
{
    std::shared_ptr<PIFolder> folder;
    if (m_openFolders.empty()) {
        folder = std::make_shared<PIFolder>();
        m_newFolders.append(folder);
    } else {
        folder = m_openFolders.back()->makeNewFolder();
    }
    folder->setName(QVString::lastPathComponent(path));
    m_openFolders.push_back(folder);
}

void PhotoImport::finish()
{
    m_channel->import = nullptr;
    m_outcome.scan = m_channel->summary;
    m_outcome.scan.cancelled = m_channel->cancelled; // the walk may have been through already
    KeywordVocabulary &vocabulary = m_editor.library().keywords();
    const KeywordVocabulary before = vocabulary;
    joinVocabulary();
    m_outcome.accepted = recordMixture() && addFolders() && addLoosePhotos();
    m_outcome.photosAdded = m_outcome.accepted ? m_photosTaken : 0;
    if (!m_outcome.accepted && !m_outcome.firstFolder)
        vocabulary = before; // what is refused leaves no words behind
    if (vocabulary.count() > before.count())
        m_editor.library().notifications().post(kKeywordsNotification);
    const Finished finished = std::move(m_finished);
    const Outcome outcome = std::move(m_outcome);
    if (finished)
        finished(outcome);
}

/// Each word is looked up once, so that it takes no time however many photos have it.
void PhotoImport::joinVocabulary()
{
    QList<quint64> positions;
    for (const QString &word : m_keywords.words())
        positions << m_editor.library().keywords().indexOfOrAppend(word);
    for (const auto &photo : std::as_const(m_photosWithKeywords)) {
        QList<quint64> indexes = photo->keywordIndexes();
        for (quint64 &index : indexes)
            index = positions.at(static_cast<qsizetype>(index));
        photo->setKeywordIndexes(indexes);
    }
}

/// Folders and loose photos may go to different places: what brings both is recorded for the whole tree.
bool PhotoImport::recordMixture()
{
    if (m_newFolders.isEmpty() || m_loosePhotos.isEmpty() || m_request.undoName == UndoName::AlreadyRecorded)
        return true;
    if (!m_editor.recorder().setUndoAction(UndoAction::WholeTree, m_request.undoName, {}))
        return false;
    m_request.undoName = UndoName::AlreadyRecorded;
    return true;
}

/// What was selected in the navigator stays so; without that, and without photos to be shown in a moment, the first
/// new folder is.
bool PhotoImport::addFolders()
{
    if (m_newFolders.isEmpty())
        return true;
    for (const auto &folder : std::as_const(m_newFolders)) {
        if (!addFolder(folder))
            return false;
    }
    m_outcome.firstFolder = m_newFolders.first();
    const bool showsNew = !m_selectedBefore && m_loosePhotos.isEmpty();
    m_editor.view().resetList(showsNew ? m_outcome.firstFolder : m_selectedBefore);
    return true;
}

bool PhotoImport::addFolder(const std::shared_ptr<PIFolder> &folder)
{
    std::shared_ptr<PIGroup> parent = m_parent;
    if (!parent) {
        const auto target = m_editor.selectOrCreateFolder(m_request.undoName);
        if (!target)
            return false;
        parent = target->folder;
        if (target->created) { // an empty folder to begin with: this one takes its place
            parent = target->folder->parent();
            parent->folders().removeOne(target->folder);
        }
    }
    if (m_request.undoName != UndoName::AlreadyRecorded &&
        !m_editor.recorder().setUndoAction(UndoAction::FolderList, m_request.undoName,
                                           {.container = parent, .photo = {}}))
        return false;
    m_request.undoName = UndoName::AlreadyRecorded;
    folder->setParent(parent);
    parent->folders().append(folder);
    return true;
}

bool PhotoImport::addLoosePhotos()
{
    if (m_loosePhotos.isEmpty())
        return true;
    if (m_request.makeFolder) {
        m_request.toFolder = m_request.makeFolder();
        m_request.atIndex = kNotFound;
        if (!m_request.toFolder)
            return false;
    }
    return m_editor.addPhotos(m_loosePhotos, m_request.toFolder, m_request.atIndex, m_request.undoName);
}
