#include "Pair.h"
#include "SamplePhoto.h"

#include "Decoder.h"
#include "PhotoExport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <unistd.h>
#include <vector>

namespace {

constexpr QSize kPhotoSize(6000, 4000);
constexpr int kPhotos = 100;
constexpr int kDifferent = 4;
constexpr int kThousandPixels = 2;

/// Photos of camera size; names of a few files, or the disk would be measured.
QStringList writePhotos(PairRunner &runner)
{
    const QByteArray bytes = sampleJpeg(kPhotoSize);
    QStringList paths;
    for (int i = 0; i < kPhotos; ++i) {
        paths << runner.folder() + QStringLiteral("/photo%1.jpg").arg(i);
        QFile file(paths.last());
        const bool written = i < kDifferent ? file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size()
                                            : ::link(QFile::encodeName(paths.at(i % kDifferent)).constData(),
                                                     QFile::encodeName(paths.last()).constData()) == 0;
        if (!written)
            runner.fail("a photo could not be written");
    }
    std::fprintf(stderr, "%d photos of %.1f MB\n", kPhotos, double(bytes.size()) / 1e6);
    return paths;
}

void exportAll(PairRunner &runner, const QStringList &paths, const QString &folder)
{
    ExportOrder order;
    order.folder = folder;
    order.settings = {kJpegFormat, kThousandPixels, 0.75};
    for (const QString &path : paths)
        order.photos << ExportedPhoto{{path, {}, {}, {}}, QFileInfo(path).completeBaseName()};
    PhotoExport run;
    QEventLoop loop;
    QObject::connect(&run, &PhotoExport::finished, &loop, [&](const ExportOutcome &outcome) {
        if (outcome.written.size() != paths.size())
            runner.fail("a photo could not be exported");
        loop.quit();
    });
    run.start(order);
    loop.exec();
}

/// As many processes as threads, each with its share of the photos and one thread.
void runVipsThumbnail(PairRunner &runner, const QStringList &paths, const QString &folder, int processCount)
{
    std::vector<std::unique_ptr<QProcess>> processes;
    const qsizetype share = (paths.size() + processCount - 1) / processCount;
    for (int i = 0; i < processCount; ++i) {
        auto process = std::make_unique<QProcess>();
        process->setStandardErrorFile(QProcess::nullDevice());
        process->start(QStringLiteral("vipsthumbnail"),
                       QStringList{QStringLiteral("--size=1000x1000"), QStringLiteral("-o"),
                                   folder + QStringLiteral("/%s.jpg[Q=75]")} +
                           paths.mid(i * share, share));
        processes.push_back(std::move(process));
    }
    for (const auto &process : processes) {
        if (!process->waitForFinished(-1) || process->exitCode() != 0)
            runner.fail("vipsthumbnail failed");
    }
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    QCoreApplication application(argc, argv);
    qputenv("VIPS_CONCURRENCY", "1");
    Decoder::initialize();
    const QStringList paths = writePhotos(runner);
    const QString target = runner.folder() + QStringLiteral("/exported");
    const int threads = std::max(QThread::idealThreadCount(), 1);
    runner.run({.name = "export, " + std::to_string(kPhotos) + " photos of 24 MP to 1000 pixels, " +
                        std::to_string(threads) + " threads",
                .ours = [&] { exportAll(runner, paths, target); },
                .peerName = "vipsthumbnail",
                .peer = [&] { runVipsThumbnail(runner, paths, target, threads); },
                .repetitions = 3,
                .prepare =
                    [&] {
                        QDir(target).removeRecursively();
                        QDir().mkpath(target);
                    }});
    return runner.result();
}
