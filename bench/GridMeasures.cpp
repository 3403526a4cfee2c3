#include "GridMeasures.h"

#include "FileFinder.h"
#include "Pair.h"
#include "PeakMemory.h"
#include "PhotoLibrary.h"
#include "ThumbnailGridModel.h"
#include "ThumbnailGridView.h"

#include <QBackingStore>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <memory>
#include <vector>

namespace {

/// A library of one folder in a window of its own.
struct Desk
{
    QTemporaryDir thumbnails;
    NotificationCenter notifications;
    PathFileFinder finder;
    PhotoLibrary library{thumbnails.path(), finder, notifications};
    std::shared_ptr<PIFolder> folder = std::make_shared<PIFolder>(QStringLiteral("Photos"));
    ThumbnailGridView view{library};

    explicit Desk(const QStringList &photos)
    {
        view.resize(1000, 800);
        for (const QString &path : photos)
            folder->photos().append(std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path)));
    }

    [[nodiscard]] bool hasAllThumbnails() const
    {
        const auto &photos = folder->photos();
        return std::all_of(photos.begin(), photos.end(), [](const auto &photo) { return photo->thumbnailDate() != 0; });
    }

    /// Those of which at least the middle is in sight.
    [[nodiscard]] std::vector<QPoint> tilesInSight() const
    {
        std::vector<QPoint> centres;
        for (int row = 0; row < view.model()->rowCount(); ++row) {
            const QPoint centre = view.visualRect(view.model()->index(row, 0)).center();
            if (!view.viewport()->rect().contains(centre))
                break;
            centres.push_back(view.viewport()->mapTo(&view, centre));
        }
        return centres;
    }

    /// Crosses off the tiles in which the window has painted green, or that are past that already. Paints nothing.
    void crossOff(std::vector<QPoint> &tiles) const
    {
        const auto *painted = dynamic_cast<const QImage *>(view.backingStore()->paintDevice());
        if (!painted)
            return;
        std::erase_if(tiles, [&](QPoint tile) {
            const QColor color = painted->rect().contains(tile) ? painted->pixelColor(tile) : QColor();
            const QModelIndex index = view.indexAt(view.viewport()->mapFrom(&view, tile));
            const bool isMade = index.isValid() && folder->photos().at(index.row())->thumbnailDate() != 0;
            return isMade || (color.green() > 90 && color.red() < 60 && color.blue() < 60);
        });
    }
};

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

struct Turn
{
    double milliseconds = 0;
    double ownMilliseconds = 0; ///< of the processor, so without the time that other programs took from it
};

double ownMilliseconds()
{
    timespec time = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// Runs the event loop turn by turn, and returns the most that a turn took.
template<typename IsDone>
Turn runUntil(IsDone isDone)
{
    constexpr int patienceMilliseconds = 120'000;
    Turn longest;
    QElapsedTimer total;
    total.start();
    while (!isDone() && !total.hasExpired(patienceMilliseconds)) {
        QElapsedTimer turn;
        turn.start();
        const double ownBefore = ownMilliseconds();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        const double took = milliseconds(turn);
        longest.milliseconds = std::max(longest.milliseconds, took);
        longest.ownMilliseconds = std::max(longest.ownMilliseconds, ownMilliseconds() - ownBefore);
        if (took < 0.1)
            QThread::usleep(200);
    }
    return longest;
}

/// As many processes as we have threads, each with its share of the photos and one thread.
double secondsOfVips(PairRunner &runner, const QStringList &photos, const QString &folder)
{
    QElapsedTimer timer;
    timer.start();
    const int count = std::max(1, QThread::idealThreadCount());
    const qsizetype share = (photos.size() + count - 1) / count;
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < count; ++i) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->setStandardErrorFile(QProcess::nullDevice());
        processes.back()->start(QStringLiteral("vipsthumbnail"),
                                QStringList{QStringLiteral("--size=240x240"), QStringLiteral("-o"),
                                            folder + QStringLiteral("/peer_%s.jpg[Q=50,strip]")} +
                                    photos.mid(i * share, share));
    }
    for (const auto &process : processes) {
        if (!process->waitForFinished(-1) || process->exitCode() != 0)
            runner.fail("vipsthumbnail failed");
    }
    return milliseconds(timer) / 1000;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

}

void GridMeasures::makeThumbnails(PairRunner &runner, const QStringList &photos, const QString &folder)
{
    clearPeak();
    QElapsedTimer timer;
    timer.start();
    Desk desk(photos);
    desk.view.setFolder(desk.folder);
    desk.view.show();
    const Turn longest = runUntil([&] { return desk.hasAllThumbnails(); });
    const double ours = milliseconds(timer) / 1000;
    const double peak = peakMegabytes();
    if (!desk.hasAllThumbnails())
        runner.fail("a thumbnail was not made");
    const double theirs = secondsOfVips(runner, photos, folder);
    std::printf("thumbnail, %d photos of 24 MP through the grid | %.3g s | %.3g s (vipsthumbnail) | %.2f\n",
                int(photos.size()), ours, theirs, theirs / ours);
    std::printf("thumbnail-turn-ms, the longest turn meanwhile | %.1f | - | -\n", longest.milliseconds);
    std::printf("thumbnail-turn-cpu-ms, the most work in a turn | %.1f | - | -\n", longest.ownMilliseconds);
    std::printf("thumbnail-memory-mb, at most meanwhile | %.0f | - | -\n", peak);
    std::fflush(stdout);
}

void GridMeasures::paintFirst(PairRunner &runner, const QStringList &photos)
{
    constexpr int rounds = 7;
    std::vector<double> times;
    size_t tileCount = 0;
    for (int round = 0; round < rounds; ++round) {
        Desk desk(photos);
        desk.view.show();
        runUntil([&] { return desk.view.backingStore() && desk.view.backingStore()->paintDevice(); });
        QElapsedTimer timer;
        timer.start();
        desk.view.setFolder(desk.folder);
        std::vector<QPoint> tiles = desk.tilesInSight();
        tileCount = tiles.size();
        runUntil([&] {
            desk.crossOff(tiles);
            return tiles.empty();
        });
        times.push_back(milliseconds(timer));
        if (tileCount == 0 || !tiles.empty())
            runner.fail("a tile was not painted");
    }
    std::printf("thumbnail-first-paint-ms, %d tiles of %d camera photos | %.1f | - | -\n", int(tileCount),
                int(photos.size()), median(times));
    std::fflush(stdout);
}
