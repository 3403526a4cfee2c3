// Printing many photos of a camera: how long it takes, and how much memory at most.

#include "Decoder.h"
#include "Pair.h"
#include "PeakMemory.h"
#include "PrintRun.h"
#include "SamplePhoto.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>

#include <cstdio>

namespace {

constexpr QSize kPhotoSize(6000, 4000);
constexpr int kPhotos = 500;
constexpr int kDifferent = 4;
constexpr int kPerPage = 4;
constexpr int kDotsPerInch = 600;

QList<PrintedPhoto> photosIn(const QString &folder)
{
    const QByteArray bytes = sampleJpeg(kPhotoSize);
    QList<PrintedPhoto> photos;
    for (int i = 0; i < kPhotos; ++i) {
        const QString name = QStringLiteral("photo%1.jpg").arg(i % kDifferent);
        const QString path = folder + u'/' + name;
        QFile file(path);
        if (i < kDifferent && !(file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size()))
            return {};
        photos << PrintedPhoto{{path, {}, {}, {}}, name};
    }
    return photos;
}

PrintRun::Outcome print(const PrintJob &job, const PIPrintView &view)
{
    PrintRun run;
    PrintRun::Outcome outcome;
    QEventLoop loop;
    QObject::connect(&run, &PrintRun::finished, &loop, [&](const PrintRun::Outcome &result) {
        outcome = result;
        loop.quit();
    });
    run.start(job, view);
    loop.exec();
    return outcome;
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    Decoder::initialize();
    PrintJob job;
    job.paper = {QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(28, 28, 28, 28), QPageLayout::Point};
    job.resolution = kDotsPerInch;
    job.file = runner.folder() + QStringLiteral("/out.pdf");
    const QList<PrintedPhoto> photos = photosIn(runner.folder());
    const PIPrintView view(photos, PrintLayout::on(job.paper.paintRect(QPageLayout::Point).size(), kPerPage, {}), true);
    for (int page = 1; page <= view.totalPages(); ++page)
        job.pages << page;

    clearPeak();
    QElapsedTimer timer;
    timer.start();
    const PrintRun::Outcome outcome = print(job, view);
    if (!outcome.isPrinted || outcome.incompletePages > 0 || photos.isEmpty())
        runner.fail("the photos could not be printed");
    std::printf("printing, %d photos of 24 MP on %d pages | %.1f s | - | -\n", kPhotos, view.totalPages(),
                double(timer.elapsed()) / 1000);
    std::printf("printing, peak MB | %.0f | - | -\n", peakMegabytes());
    return runner.result();
}
