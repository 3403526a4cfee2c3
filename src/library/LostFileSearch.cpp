#include "LostFileSearch.h"

#include "FileBookmark.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"
#include "UnsettledSearch.h"

#include <algorithm>
#include <chrono>
#include <utility>

using Doubt = LocatorFileFinder::Doubt;
using Status = BookmarkResolution::Status;

namespace {

constexpr std::chrono::milliseconds kTellingTime(200);
constexpr std::chrono::milliseconds kRewritingTime(1000);
constexpr std::chrono::seconds kPatience(30);

void prepare(QTimer &timer, std::chrono::milliseconds time, const std::function<void()> &call)
{
    timer.setSingleShot(true);
    timer.setInterval(time);
    QObject::connect(&timer, &QTimer::timeout, &timer, call);
}

void startUnlessActive(QTimer &timer)
{
    if (!timer.isActive())
        timer.start();
}

}

LostFileSearch::LostFileSearch(PhotoLibrary &library, LocatorFileFinder &finder, const BookmarkOptions &options)
    : m_library(library)
    , m_finder(finder)
    , m_options(options)
    , m_near(QStringLiteral("hmphoto.lostFilesNear"))
    , m_far(QStringLiteral("hmphoto.lostFilesFar"))
{
    prepare(m_tellOfFound, kTellingTime, [this] { tellOfFound(); });
    prepare(m_tellOfRewritten, kRewritingTime, [this] { tellOfRewritten(); });
    prepare(m_near.patience, kPatience, [this] { giveUp(m_near); });
    prepare(m_far.patience, options.timeLimit + kPatience, [this] { giveUp(m_far); });
}

LostFileSearch::~LostFileSearch()
{
    m_near.stop.request_stop();
    m_far.stop.request_stop();
}

void LostFileSearch::start()
{
    if (m_near.running)
        return; // goes on with them when it ends
    const Files files = m_finder.takeUnsettled();
    if (!files.isEmpty())
        run(m_near, files);
}

void LostFileSearch::allowAnotherWalk(const QList<std::shared_ptr<PIFileRef>> &files)
{
    for (const auto &file : files)
        m_walkAgain.insert(file->guid());
}

void LostFileSearch::cancel()
{
    m_summary.cancelled = isRunning();
    m_far.stop.request_stop();
}

namespace {

qsizetype missingAmong(const QList<LocatorFileFinder::Unsettled> &files)
{
    return std::count_if(files.cbegin(), files.cend(), [](const auto &file) { return file.doubt != Doubt::Changed; });
}

}

void LostFileSearch::run(Stage &stage, const Files &files)
{
    stage.running = true;
    stage.found = 0;
    stage.open = missingAmong(files);
    stage.stop = {};
    stage.patience.start();
    BookmarkOptions options = m_options;
    options.stop = stage.stop.get_token();
    if (&stage == &m_near)
        options.reach = BookmarkOptions::Reach::OldFolders;
    else
        options.pathsInUse = pathsInUse();
    Stage LostFileSearch::*const which = &stage == &m_near ? &LostFileSearch::m_near : &LostFileSearch::m_far;
    const auto toHere = m_link.toHere();
    options.progress = [toHere, which](const BookmarkProgress &walk) {
        toHere([which, walk](LostFileSearch &search) { search.takeProgress(search.*which, walk); });
    };
    stage.queue.async([toHere, which, files, options, lastStored = m_finder.lastStored(), run = ++stage.run] {
        searchUnsettled(files, lastStored, options, [toHere, which](const QList<SearchedFile> &searched) {
            toHere([which, searched](LostFileSearch &search) { search.take(search.*which, searched); });
        });
        toHere([which, run](LostFileSearch &search) { search.end(search.*which, run); });
    });
}

/// A walk ends by its own time limit if its disk answers; what is done near the old places shows that it gets on.
void LostFileSearch::takeProgress(Stage &stage, const BookmarkProgress &walk)
{
    if (&stage == &m_near && stage.running)
        stage.patience.start();
    else if (&stage == &m_far && stage.running && m_progress)
        m_progress(stage.found, walk);
}

/// What it still tells later is taken then.
void LostFileSearch::giveUp(Stage &stage)
{
    stage.stop.request_stop();
    m_summary.timedOut = true;
    m_summary.missing += stage.open;
    end(stage, stage.run);
}

namespace {

/// Whether there is nothing more to ask about a file.
bool isTold(Status status)
{
    return status == Status::Found || status == Status::VolumeAway;
}

}

void LostFileSearch::take(Stage &stage, const QList<SearchedFile> &files)
{
    Files rest;
    for (const SearchedFile &searched : files) {
        const bool isMissing = searched.file.doubt != Doubt::Changed;
        stage.open -= isMissing && stage.open > 0;
        if (isTold(searched.status))
            continue;
        const bool isToBeWalkedFor = &stage == &m_near && searched.status != Status::Missing &&
                                     (m_walkAgain.remove(searched.file.guid) || searched.file.isNew);
        if (isToBeWalkedFor)
            rest.append(searched.file);
        else if (searched.status == Status::Unsearched)
            m_announced.remove(searched.file.guid); // nothing more becomes known of it
        if (&stage != &m_far || !stage.running)
            continue;
        m_summary.missing += isMissing;
        m_summary.timedOut |= searched.status == Status::Unsearched && !m_summary.cancelled;
    }
    m_rest += rest;
    announceAtOnce(rest);
    QList<SearchedFile> settled = files;
    settled.removeIf([](const SearchedFile &file) { return file.status == Status::Unsearched; });
    const qsizetype found = follow(settled);
    stage.found += found;
    m_summary.found += found;
}

/// Tells how many files are elsewhere.
qsizetype LostFileSearch::follow(const QList<SearchedFile> &files)
{
    qsizetype found = 0;
    for (const SearchedFile &searched : files) {
        const auto ref = m_library.fileRefs().fileRefForGuid(searched.file.guid);
        if (!ref)
            continue;
        const FoundFile before{!ref->isFileLost(), ref->path(), ref->isVolumeAway()};
        const FoundFile place = m_finder.settle(searched);
        ref->take(place);
        const bool isElsewhere = ref->path() != before.path;
        const bool isAnnounced = m_announced.remove(searched.file.guid);
        found += isElsewhere;
        if (isElsewhere || ref->isFileLost() == before.found || ref->isVolumeAway() != before.volumeAway)
            m_shownAnew.insert(ref.get());
        if (place.contentChanged)
            noteContent(*ref, !isAnnounced && !FileBookmark::haveSameContent(searched.file.locator.bookmark(),
                                                                             m_finder.bookmark(searched.file.guid)));
    }
    if (!m_shownAnew.isEmpty())
        startUnlessActive(m_tellOfFound);
    return found;
}

void LostFileSearch::noteContent(PIFileRef &ref, bool isNews)
{
    (isNews ? m_rewritten : m_touched).insert(&ref);
    startUnlessActive(m_tellOfRewritten);
}

void LostFileSearch::noteAnnounced(const QSet<const PIFileRef *> &files)
{
    for (const PIFileRef *file : files)
        m_announced.insert(file->guid());
}

/// A program may have saved over the file, and the walk that tells so for sure takes its time.
void LostFileSearch::announceAtOnce(const Files &files)
{
    QSet<PIFileRef *> changed;
    for (const auto &file : files) {
        const auto ref = m_library.fileRefs().fileRefForGuid(file.guid);
        if (file.doubt != Doubt::Changed || !ref || !m_isWatched || !m_isWatched(*ref) ||
            m_announced.contains(file.guid))
            continue;
        m_announced.insert(file.guid);
        changed.insert(ref.get());
    }
    m_library.filesChangedContent(changed);
}

void LostFileSearch::tellOfFound()
{
    m_tellOfFound.stop();
    if (m_shownAnew.isEmpty())
        return;
    const auto files = std::exchange(m_shownAnew, {});
    m_library.filesChangedPlace(files);
    if (m_moved)
        m_moved();
}

void LostFileSearch::tellOfRewritten()
{
    m_library.filesChangedContent(std::exchange(m_rewritten, {}));
    const auto touched = std::exchange(m_touched, {});
    for (PIFileRef *ref : touched) {
        ref->forgetFacts();
        m_library.imageCache().storeImage({}, ref->guid());
    }
    if (touched.isEmpty())
        return;
    m_library.forEachPhotoOf({touched.cbegin(), touched.cend()},
                             [this](const std::shared_ptr<PIPhoto> &photo) { m_library.pictureChanged(*photo); });
}

void LostFileSearch::end(Stage &stage, int run)
{
    if (run != stage.run)
        return walkForRest(); // nobody waited for it any more
    ++stage.run;
    stage.running = false;
    stage.patience.stop();
    if (&stage == &m_near)
        start();
    walkForRest();
    if (isRunning())
        return;
    tellOfFound();
    const Summary summary = std::exchange(m_summary, {});
    if (m_finished)
        m_finished(summary);
}

void LostFileSearch::walkForRest()
{
    if (m_far.running || m_near.running || m_rest.isEmpty())
        return;
    const Files rest = std::exchange(m_rest, {});
    if (!m_summary.cancelled)
        return run(m_far, rest);
    m_summary.missing += missingAmong(rest);
}

QSet<QString> LostFileSearch::pathsInUse() const
{
    QSet<QString> paths;
    m_library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
        if (photo->fileRef() && !photo->fileRef()->isFileLost())
            paths.insert(photo->fileRef()->path());
    });
    return paths;
}
