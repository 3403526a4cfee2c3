// How long it takes until a photo that was stepped to is sharp, with and without preparing its neighbours.

#include "Pair.h"
#include "SamplePhoto.h"

#include "Decoder.h"
#include "FileFinder.h"
#include "PhotoLibrary.h"
#include "PhotoView.h"
#include "PreviewList.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr QSize kPhotoSize(6000, 4000);
constexpr QSize kScreen(1920, 1080);
constexpr int kPhotos = 50;
constexpr int kPatienceMilliseconds = 20'000;

/// Files of their own, each with a number in it.
QStringList writePhotos(PairRunner &runner)
{
    const QByteArray bytes = sampleJpeg(kPhotoSize);
    QStringList paths;
    for (int i = 0; i < kPhotos; ++i) {
        paths << runner.folder() + QStringLiteral("/photo%1.jpg").arg(i);
        QFile file(paths.last());
        const QByteArray comment = QByteArray("\xff\xfe\0\x06", 4) + QByteArray::number(1000 + i);
        const QByteArray all = bytes.left(2) + comment + bytes.mid(2);
        if (bytes.isEmpty() || !file.open(QFile::WriteOnly) || file.write(all) != all.size())
            runner.fail("a photo could not be written");
    }
    std::fprintf(stderr, "%d photos of 24 MP, %.1f MB each\n", kPhotos, double(bytes.size()) / 1e6);
    return paths;
}

void spin(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

enum class Ahead { No, Yes };

struct Stepping
{
    int interval; ///< milliseconds from press to press; 0: the next press comes as soon as the photo is sharp
    Ahead ahead;
};

/// A library that has never seen the photos, and a view that fills a screen.
class Walk
{
public:
    explicit Walk(const QStringList &paths)
    {
        PIGroup::PhotoList photos;
        for (const QString &path : paths)
            photos << std::make_shared<PIPhoto>(m_library.fileRefs().fileRefForPath(path));
        m_list = PreviewList(photos, {});
        m_view.resize(kScreen);
        m_view.show();
    }

    /// Milliseconds from each press to the sharp picture; empty when one did not come.
    std::vector<double> run(const Stepping &stepping)
    {
        std::vector<double> times;
        showCurrent(stepping.ahead);
        if (!waitUntilSharp())
            return {};
        spin(1000); // the first photo is looked at a while
        for (qsizetype step = 1; step < m_list.count(); ++step) {
            QElapsedTimer sincePress;
            sincePress.start();
            (void)m_list.moveRight();
            showCurrent(stepping.ahead);
            if (!waitUntilSharp())
                return {};
            times.push_back(double(sincePress.nsecsElapsed()) / 1e6);
            spin(std::max(0, stepping.interval - int(sincePress.elapsed())));
        }
        return times;
    }

private:
    void showCurrent(Ahead ahead)
    {
        m_view.setPhoto(m_list.photo(), ahead == Ahead::Yes ? m_list.ahead() : PIGroup::PhotoList());
    }
    /// Sharp and painted.
    bool waitUntilSharp()
    {
        QElapsedTimer patience;
        patience.start();
        QTimer wake; // should no event come
        wake.start(kPatienceMilliseconds);
        while (m_view.state() != PhotoView::State::Sharp && !patience.hasExpired(kPatienceMilliseconds))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        m_view.repaint();
        return m_view.state() == PhotoView::State::Sharp;
    }

    QTemporaryDir m_thumbnails;
    NotificationCenter m_notifications;
    PathFileFinder m_finder;
    PhotoLibrary m_library{m_thumbnails.path(), m_finder, m_notifications};
    PhotoView m_view{m_library.thumbnails(), m_library.imageCache(), m_library.thumbnails().pixelPool()};
    PreviewList m_list;
};

double percentile(std::vector<double> values, double share)
{
    std::sort(values.begin(), values.end());
    return values.at(size_t(std::ceil(share * double(values.size()))) - 1);
}

void measure(PairRunner &runner, const QStringList &paths, int interval, const char *name)
{
    const std::vector<double> with = Walk(paths).run({interval, Ahead::Yes});
    const std::vector<double> without = Walk(paths).run({interval, Ahead::No});
    if (with.empty() || without.empty())
        return runner.fail("a photo did not become sharp");
    for (const auto &[which, share] :
         {std::pair("median", 0.5), std::pair("95th percentile", 0.95), std::pair("slowest", 1.0)}) {
        const double ours = percentile(with, share);
        const double theirs = percentile(without, share);
        std::printf("stepping, %s, %s | %.1f ms | %.1f ms (nothing prepared) | %.2f\n", name, which, ours, theirs,
                    theirs / ours);
    }
    std::fflush(stdout);
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    QApplication application(argc, argv);
    Decoder::initialize();
    const QStringList paths = writePhotos(runner);
    measure(runner, paths, 250, "a press every 250 ms");
    measure(runner, paths, 200, "a press every 200 ms");
    measure(runner, paths, 150, "a press every 150 ms");
    measure(runner, paths, 0, "as fast as photos are sharp");
    return runner.result();
}
