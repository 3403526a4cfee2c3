#include "LostFileSearch.h"

#include "LibraryNotifications.h"
#include "PhotoLibrary.h"

#include <QSet>

/// Touched on the main thread only.
struct LostFileSearch::Link
{
    LostFileSearch *search = nullptr;
};

LostFileSearch::LostFileSearch(PhotoLibrary &library, LocatorFileFinder &finder)
    : m_library(library)
    , m_finder(finder)
    , m_link(std::make_shared<Link>())
    , m_queue(QStringLiteral("hmphoto.lostFiles"), 1)
{
    m_link->search = this;
}

LostFileSearch::~LostFileSearch()
{
    m_link->search = nullptr;
    m_stop.request_stop();
}

void LostFileSearch::start()
{
    if (m_running) {
        m_again = true;
        return;
    }
    const QList<LocatorFileFinder::Unsettled> files = m_finder.takeUnsettled();
    if (files.isEmpty())
        return;
    m_running = true;
    m_again = false;
    m_summary = {.sought = files.size()};
    m_stop = {};

    const auto toHere = [link = m_link](auto deliver) {
        runOnMain([link, deliver] {
            if (link->search)
                deliver(*link->search);
        });
    };
    BookmarkOptions options;
    options.stop = m_stop.get_token();
    options.pathsInUse = pathsInUse();
    options.progress = [toHere](const BookmarkProgress &progress) {
        toHere([progress](LostFileSearch &search) {
            if (search.m_progress)
                search.m_progress(progress);
        });
    };
    m_queue.async([toHere, files, options] {
        searchUnsettled(files, options, [toHere](const QList<SearchedFile> &searched) {
            toHere([searched](LostFileSearch &search) { search.take(searched); });
        });
        toHere([cancelled = options.stop.stop_requested()](LostFileSearch &search) { search.end(cancelled); });
    });
}

void LostFileSearch::cancel()
{
    m_stop.request_stop();
}

void LostFileSearch::take(const QList<SearchedFile> &files)
{
    QSet<const PIFileRef *> moved;
    QSet<const PIFileRef *> changed;
    for (const SearchedFile &searched : files) {
        const auto ref = m_library.fileRefs().fileRefForGuid(searched.file.guid);
        if (!ref)
            continue;
        const bool wasLost = ref->isFileLost();
        const QString before = ref->path();
        ref->take(m_finder.settle(searched.file, searched.resolution));
        if (ref->path() != before || ref->isFileLost() != wasLost)
            moved.insert(ref.get());
        else if (searched.file.doubt == LocatorFileFinder::Doubt::Changed)
            changed.insert(ref.get());
        m_summary.found += !ref->isFileLost() && (wasLost || ref->path() != before);
    }
    if (moved.isEmpty() && changed.isEmpty())
        return;
    for (const PIFileRef *ref : moved + changed)
        m_library.imageCache().storeImage({}, ref->guid());
    m_library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
        if (changed.contains(photo->fileRef().get()))
            m_library.thumbnails().updateForFilters(*photo);
        if (moved.contains(photo->fileRef().get()) || changed.contains(photo->fileRef().get()))
            m_library.notifications().post(kThumbnailNotification, photo);
    });
    if (!moved.isEmpty())
        m_library.setDirty(true);
}

void LostFileSearch::end(bool cancelled)
{
    m_running = false;
    m_summary.cancelled = cancelled;
    if (m_finished)
        m_finished(m_summary);
    if (m_again)
        start();
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
