#include "TileFetcher.h"

#include "FileFacts.h"
#include "PIPhoto.h"
#include "ThumbnailGridModel.h"
#include "ThumbnailMaker.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>

namespace {

constexpr qint64 kPictureBytes = qint64(64) << 20;
/// What is on show, a page either side of it, and one more.
constexpr int kPagesKept = 4;
constexpr int kSliceMilliseconds = 5;
/// Also how soon work goes on after a job that failed, of which nobody tells.
constexpr int kBlockedMilliseconds = 40;
constexpr int kSideSettlesMilliseconds = 80;

int processors()
{
    return std::max(1, QThread::idealThreadCount());
}

}

TileFetcher::TileFetcher(ThumbnailMaker &thumbnails, FileFacts &facts, ThumbnailGridModel &model, QObject *parent)
    : QObject(parent)
    , m_thumbnails(thumbnails)
    , m_facts(facts)
    , m_model(model)
    , m_pictures(kPictureBytes)
    , m_embedded([this](const QString &guid) { embeddedReady(guid); })
    , m_scheduler(*this, /*visibleJobs=*/2 * processors() + 2, /*idleJobs=*/2 * processors())
{
    m_workTimer.setSingleShot(true);
    connect(&m_workTimer, &QTimer::timeout, this, &TileFetcher::work);
    m_sideTimer.setSingleShot(true);
    m_sideTimer.setInterval(kSideSettlesMilliseconds);
    connect(&m_sideTimer, &QTimer::timeout, this, &TileFetcher::applySide);
}

void TileFetcher::setPictureSide(int side, qreal devicePixelRatio)
{
    if (side == m_newSide && qFuzzyCompare(devicePixelRatio, m_newRatio))
        return;
    m_newSide = side;
    m_newRatio = devicePixelRatio;
    if (m_pictures.side() == 0)
        applySide();
    else
        m_sideTimer.start();
}

void TileFetcher::applySide()
{
    m_pictures.setSide(qRound(m_newSide * m_newRatio), m_newRatio);
    m_pictures.makeRoomFor(kPagesKept * m_visible.count());
    lookAgain();
}

void TileFetcher::setDatesWanted(bool wanted)
{
    m_datesWanted = wanted;
    lookAgain();
}

void TileFetcher::setVisible(GridLayout::Span visible)
{
    if (visible == m_visible)
        return;
    m_visible = visible;
    m_wanted.clear();
    m_undated.clear();
    m_pictures.makeRoomFor(kPagesKept * visible.count());
    m_scheduler.setVisible(visible);
    m_workTimer.start(0);
}

void TileFetcher::modelReset()
{
    m_visible = {};
    m_wanted.clear();
    m_undated.clear();
    m_scheduler.reset(m_model.rowCount());
}

void TileFetcher::photoChanged(const PIPhoto &photo)
{
    m_pictures.markStale(photo.guid());
    m_model.forgetDate(photo);
    if (photo.fileRef())
        m_embedded.forget(photo.fileRef()->guid());
    lookAgain();
}

void TileFetcher::lookAgain()
{
    m_wanted.clear();
    m_undated.clear();
    m_scheduler.recheckVisible();
    m_workTimer.start(0);
}

void TileFetcher::work()
{
    QElapsedTimer clock;
    clock.start();
    switch (m_scheduler.advance([&clock] { return clock.hasExpired(kSliceMilliseconds); })) {
    case ThumbnailScheduler::Outcome::More:
        m_workTimer.start(0);
        break;
    case ThumbnailScheduler::Outcome::Blocked:
        m_workTimer.start(kBlockedMilliseconds);
        break;
    case ThumbnailScheduler::Outcome::Done:
        break;
    }
}

bool TileFetcher::prepare(int index)
{
    const auto photo = m_model.photo(index);
    if (!photo)
        return false;
    if (m_datesWanted && m_visible.contains(index) && !m_model.isDateKnown(index))
        fetchDate(index, *photo);
    if (m_pictures.isReady(photo->guid()))
        return false;

    const QImage thumbnail = m_thumbnails.availableThumbnail(*photo);
    if (!thumbnail.isNull()) {
        m_pictures.insert(photo->guid(), thumbnail, TilePictures::Kind::Thumbnail);
        Q_EMIT tileChanged(index);
        return false;
    }
    const bool failed = photo->isWaitingForThumbnail() && m_thumbnails.pendingJobs() == 0;
    if (failed || photo->isFileLost())
        dropStale(index, *photo);
    if (m_visible.contains(index) && !photo->isFileLost())
        showEmbedded(index, *photo);
    return !photo->isFileLost() && !photo->isWaitingForThumbnail();
}

void TileFetcher::fetchDate(int index, const PIPhoto &photo)
{
    const auto &file = photo.fileRef();
    if (photo.isFileLost() || file->knownCreationTime() != 0)
        learnDate(index);
    else
        m_undated.append(file);
}

void TileFetcher::learnDate(int index)
{
    m_model.learnDate(index);
    Q_EMIT tileChanged(index);
}

void TileFetcher::factsTold(const PIFileRef &file)
{
    for (int index = m_visible.first; m_datesWanted && index <= m_visible.last; ++index) {
        const auto photo = m_model.photo(index);
        if (photo && photo->fileRef().get() == &file)
            learnDate(index);
    }
}

/// A picture that is out of date stands in only for as long as a new one can be hoped for.
void TileFetcher::dropStale(int index, const PIPhoto &photo)
{
    const auto *picture = m_pictures.find(photo.guid());
    if (!picture || !picture->stale)
        return;
    m_pictures.remove(photo.guid());
    Q_EMIT tileChanged(index);
}

/// Shows the picture that the camera left in the file until there is a thumbnail; it knows of no crop and no effects.
void TileFetcher::showEmbedded(int index, const PIPhoto &photo)
{
    if (!photo.fileRef() || !photo.cropRect().isEmpty() || !photo.filterDicts().isEmpty())
        return;
    const auto *present = m_pictures.find(photo.guid());
    if (present && (present->kind == TilePictures::Kind::Thumbnail || present->side == m_pictures.side()))
        return;
    const QImage embedded = m_embedded.find(photo.fileRef()->guid());
    if (embedded.isNull()) {
        m_wanted.push_back({photo.fileRef()->guid(), photo.fileRef()->path()});
        return;
    }
    m_pictures.insert(photo.guid(), embedded, TilePictures::Kind::Embedded);
    Q_EMIT tileChanged(index);
}

bool TileFetcher::lacksThumbnail(int index) const
{
    const auto &photo = m_model.photos().at(index);
    return (photo->thumbnailDate() == 0 || photo->isCropChanged()) && !photo->isWaitingForThumbnail() &&
           !photo->isFileLost();
}

void TileFetcher::request(int index)
{
    if (const auto photo = m_model.photo(index))
        static_cast<void>(m_thumbnails.thumbnail(*photo)); // the placeholder, until the thumbnail is announced
}

int TileFetcher::pendingJobs() const
{
    return m_thumbnails.pendingJobs();
}

void TileFetcher::visiblePrepared()
{
    m_embedded.want(std::exchange(m_wanted, {}));
    m_facts.want(std::exchange(m_undated, {}));
}

void TileFetcher::embeddedReady(const QString &fileGuid)
{
    for (int index = m_visible.first; index <= m_visible.last; ++index) {
        const auto photo = m_model.photo(index);
        if (photo && photo->fileRef() && photo->fileRef()->guid() == fileGuid)
            showEmbedded(index, *photo);
    }
}
