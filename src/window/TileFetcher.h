#pragma once

#include "EmbeddedThumbnails.h"
#include "ThumbnailScheduler.h"
#include "TilePictures.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

class FileFacts;
class PIFileRef;
class PIPhoto;
class ThumbnailGridModel;
class ThumbnailMaker;

/// Brings pictures and dates to the tiles of the grid, a few milliseconds per turn of the event loop, in the order in
/// which the scheduler wants them.
class TileFetcher final : public QObject, private TileSource
{
    Q_OBJECT

public:
    /// All outlive the fetcher.
    TileFetcher(ThumbnailMaker &thumbnails, FileFacts &facts, ThumbnailGridModel &model, QObject *parent = nullptr);

    [[nodiscard]] const TilePictures &pictures() const { return m_pictures; }
    /// The side of the square for pictures; while it keeps changing, the pictures there are stay.
    void setPictureSide(int side, qreal devicePixelRatio);
    void setDatesWanted(bool wanted);
    void setVisible(GridLayout::Span visible);
    /// The model shows other photos.
    void modelReset();
    /// The photo's picture may have changed.
    void photoChanged(const PIPhoto &photo);
    /// What can be known of the file is.
    void factsTold(const PIFileRef &file);

Q_SIGNALS:
    /// The tile has something new to show.
    void tileChanged(int index);

private:
    bool prepare(int index) override;
    [[nodiscard]] bool lacksThumbnail(int index) const override;
    void request(int index) override;
    [[nodiscard]] int pendingJobs() const override;
    void visiblePrepared() override;

    void applySide();
    void lookAgain();
    void work();
    void fetchDate(int index, const PIPhoto &photo);
    void learnDate(int index);
    void dropStale(int index, const PIPhoto &photo);
    void showEmbedded(int index, const PIPhoto &photo);
    void embeddedReady(const QString &fileGuid);

    ThumbnailMaker &m_thumbnails;
    FileFacts &m_facts;
    ThumbnailGridModel &m_model;
    TilePictures m_pictures;
    EmbeddedThumbnails m_embedded;
    ThumbnailScheduler m_scheduler;
    GridLayout::Span m_visible;
    std::vector<EmbeddedThumbnails::File> m_wanted; // on show without a picture, from the top
    QList<std::shared_ptr<PIFileRef>> m_undated;    // the same without a date
    bool m_datesWanted = false;
    QTimer m_workTimer;
    QTimer m_sideTimer;
    int m_newSide = 0;
    qreal m_newRatio = 1;
};
