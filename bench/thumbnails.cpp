#include "CameraFile.h"
#include "GridMeasures.h"
#include "Pair.h"
#include "SamplePhoto.h"

#include "Decoder.h"
#include "FileFinder.h"
#include "ImageEncoders.h"
#include "PhotoLibrary.h"
#include "SaveImage.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include <jpeglib.h>
#include <unistd.h>

namespace {

constexpr QSize kPhotoSize(6000, 4000);
constexpr QSize kBox(240, 240);
constexpr int kPhotos = 8;
constexpr int kCached = 500;
constexpr int kManyPhotos = 200;
constexpr int kFolderOfPhotos = 10'000;

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

struct Photos
{
    QStringList paths;
    QString target;
};

/// A library in which the program's own thumbnails are made.
struct Library
{
    QTemporaryDir thumbnails;
    NotificationCenter notifications;
    PathFileFinder finder;
    PhotoLibrary library{thumbnails.path(), finder, notifications};
    std::vector<std::shared_ptr<PIPhoto>> photos;

    explicit Library(const QStringList &paths)
    {
        for (const QString &path : paths)
            photos.push_back(std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path)));
    }
    /// On as many threads as there are processors.
    bool makeAll()
    {
        ThumbnailMaker &maker = library.thumbnails();
        for (const auto &photo : photos)
            (void)maker.thumbnail(*photo);
        while (maker.pendingJobs() > 0)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return std::all_of(photos.begin(), photos.end(), [](const auto &photo) { return photo->thumbnailDate() != 0; });
    }
};

/// What a job of the thumbnail queue does, here on the calling thread.
bool makeThumbnail(const QString &path, const QString &target)
{
    const Image image = Image::fromFile(path);
    const QSize size = CenterRectangle(image.size(), kBox);
    SaveRequest request;
    request.path = target;
    request.type = SaveFileType::Jpeg;
    request.compression = 0.5;
    request.embedProfile = false;
    request.flush = FileWriter::Flush::No;
    return SaveImageCore(size.width(), size.height(), image, request);
}

void makeThumbnails(PairRunner &runner, const Photos &photos, int threadCount)
{
    bool made = true;
    if (threadCount > 1) {
        made = Library(photos.paths).makeAll();
    } else {
        for (int i = 0; i < photos.paths.size(); ++i)
            made = makeThumbnail(photos.paths.at(i), photos.target + QStringLiteral("/ours%1.jpg").arg(i)) && made;
    }
    if (!made)
        runner.fail("a thumbnail could not be made");
}

/// As many processes as threads, each with its share of the photos and one thread.
void runVipsThumbnail(PairRunner &runner, const Photos &photos, int processCount)
{
    std::vector<std::unique_ptr<QProcess>> processes;
    const qsizetype share = photos.paths.size() / processCount;
    for (int i = 0; i < processCount; ++i) {
        auto process = std::make_unique<QProcess>();
        process->setStandardErrorFile(QProcess::nullDevice());
        process->start(QStringLiteral("vipsthumbnail"),
                       QStringList{QStringLiteral("--size=240x240"), QStringLiteral("-o"),
                                   photos.target + QStringLiteral("/peer_%s.jpg[Q=50,strip]")} +
                           photos.paths.mid(i * share, share));
        processes.push_back(std::move(process));
    }
    for (const auto &process : processes) {
        if (!process->waitForFinished(-1) || process->exitCode() != 0)
            runner.fail("vipsthumbnail failed");
    }
}

/// What no way through libjpeg can be faster than.
void decodeAtOneEighth(const QString &path)
{
    std::FILE *file = std::fopen(QFile::encodeName(path).constData(), "rb");
    jpeg_decompress_struct info = {};
    jpeg_error_mgr errors = {};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_stdio_src(&info, file);
    jpeg_read_header(&info, TRUE);
    info.scale_num = 1;
    info.scale_denom = 8;
    jpeg_start_decompress(&info);
    std::vector<JSAMPLE> row(size_t(info.output_width) * size_t(info.output_components));
    JSAMPROW pointer = row.data();
    while (info.output_scanline < info.output_height)
        jpeg_read_scanlines(&info, &pointer, 1);
    benchmark::DoNotOptimize(row.data());
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    std::fclose(file);
}

Photos writePhotos(PairRunner &runner)
{
    Photos photos;
    photos.target = runner.folder() + QStringLiteral("/thumbnails");
    QDir().mkpath(photos.target);
    const QImage pixels = samplePhoto(kPhotoSize);
    const QByteArray bytes = ImageEncoders::jpeg(pixels, 90, ImageEncoders::Chroma::Halved, {});
    for (int i = 0; i < kPhotos; ++i) {
        photos.paths << runner.folder() + QStringLiteral("/photo%1.jpg").arg(i);
        if (bytes.isEmpty() || !writeFile(photos.paths.last(), bytes))
            runner.fail("a photo could not be written");
    }
    std::fprintf(stderr, "%d photos of %.1f MB\n", kPhotos, double(bytes.size()) / 1e6);
    return photos;
}

void measureMaking(PairRunner &runner, const Photos &photos)
{
    for (const int threads : {1, std::max(2, QThread::idealThreadCount())}) {
        const std::string name = "thumbnail, " + std::to_string(kPhotos) + " photos of 24 MP, " +
                                 std::to_string(threads) + (threads == 1 ? " thread" : " threads");
        runner.run({.name = name,
                    .ours = [&, threads] { makeThumbnails(runner, photos, threads); },
                    .peerName = "vipsthumbnail",
                    .peer = [&, threads] { runVipsThumbnail(runner, photos, threads); }});
    }
    runner.run({.name = "thumbnail, against the floor, 1 photo",
                .ours = [&] { makeThumbnail(photos.paths.first(), photos.target + QStringLiteral("/one.jpg")); },
                .peerName = "libjpeg-turbo decoding at 1/8",
                .peer = [&] { decodeAtOneEighth(photos.paths.first()); },
                .repetitions = 21});
}

void measureLoading(PairRunner &runner, const Photos &photos)
{
    Library library(photos.paths.first(1));
    ThumbnailMaker &maker = library.library.thumbnails();
    const PIPhoto &photo = *library.photos.front();
    const QString cached = maker.thumbnailPath(photo);
    const auto load = [&] {
        maker.pixelPool().clear();
        return maker.availableThumbnail(photo);
    };
    if (!library.makeAll() || load().isNull() || QImage(cached).isNull())
        runner.fail("a thumbnail cannot be loaded");
    const auto repeat = [](auto read) {
        for (int i = 0; i < kCached; ++i)
            benchmark::DoNotOptimize(read());
    };
    runner.run({.name = "thumbnail-cached, " + std::to_string(kCached) + " of them",
                .ours = [&] { repeat(load); },
                .peerName = "QImage",
                .peer = [&] { repeat([&] { return QImage(cached); }); }});
}

/// The photo under many names, each a file of its own with a number in it.
QStringList writeMany(PairRunner &runner, const Photos &photos)
{
    QFile photo(photos.paths.first());
    const QByteArray bytes = photo.open(QFile::ReadOnly) ? photo.readAll() : QByteArray();
    QStringList paths;
    for (int i = 0; i < kManyPhotos; ++i) {
        paths << runner.folder() + QStringLiteral("/many%1.jpg").arg(i);
        const QByteArray comment = QByteArray("\xff\xfe\0\x06", 4) + QByteArray::number(1000 + i);
        if (!writeFile(paths.last(), bytes.left(2) + comment + bytes.mid(2)))
            runner.fail("a photo could not be written");
    }
    return paths;
}

/// Links to a few photos that carry a green picture.
QStringList linkCameraPhotos(PairRunner &runner, const Photos &photos)
{
    const QByteArray small = CameraFile::jpeg(QColor(0, 128, 0), {160, 107});
    QStringList originals;
    for (const QString &path : photos.paths) {
        QFile photo(path);
        originals << path + QStringLiteral(".camera.jpg");
        if (!photo.open(QFile::ReadOnly) ||
            !writeFile(originals.last(), CameraFile::withThumbnail(photo.readAll(), small)))
            runner.fail("a photo could not be written");
    }
    QStringList paths;
    const QString folder = runner.folder() + QStringLiteral("/camera");
    QDir().mkpath(folder);
    for (int i = 0; i < kFolderOfPhotos; ++i) {
        paths << folder + QStringLiteral("/IMG_%1.jpg").arg(i);
        const QByteArray original = QFile::encodeName(originals.at(i % originals.size()));
        if (::link(original.constData(), QFile::encodeName(paths.last()).constData()) != 0)
            runner.fail("a photo could not be linked");
    }
    return paths;
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    QApplication application(argc, argv);
    qputenv("VIPS_CONCURRENCY", "1");
    Decoder::initialize();
    const Photos photos = writePhotos(runner);
    measureMaking(runner, photos);
    measureLoading(runner, photos);
    GridMeasures::paintFirst(runner, linkCameraPhotos(runner, photos));
    GridMeasures::makeThumbnails(runner, writeMany(runner, photos), photos.target);
    return runner.result();
}
