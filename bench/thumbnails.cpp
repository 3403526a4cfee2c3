#include "Pair.h"

#include "Decoder.h"
#include "Image.h"
#include "ImageEncoders.h"
#include "OpenFile.h"
#include "SaveImage.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QThread>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <memory>
#include <random>
#include <vector>

#include <jpeglib.h>

namespace {

constexpr QSize kPhotoSize(6000, 4000);
constexpr QSize kBox(240, 240);
constexpr int kPhotos = 8;
constexpr int kCached = 500;

/// Hills of a few sizes: what gradients, skies and blurred backgrounds are to an encoder.
double relief(double x, double y)
{
    return 40 * std::sin(x * 3.1 + y * 1.7) + 25 * std::sin(x * 11 - y * 7 + std::sin(y * 9)) +
           12 * std::sin(x * 47 + 5 * std::sin(y * 31)) + 7 * std::sin(x * 190 + y * 210 + 3 * std::sin(x * 77));
}

/// A picture that costs an encoder what a photo costs it: large forms, fine texture here and there, sensor noise.
QImage photo(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    std::minstd_rand random(1);
    for (int y = 0; y < size.height(); ++y) {
        auto *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        const double down = double(y) / size.height();
        for (int x = 0; x < size.width(); ++x) {
            const double across = double(x) / size.width();
            const auto bits = quint32(random());
            const double noise = double((bits & 0xf) + (bits >> 4 & 0xf) + (bits >> 8 & 0xf)) - 22.5;
            const double texture = 1 + 2.2 * std::max(0.0, std::sin(across * 9) * std::sin(down * 5));
            const double light = 128 + relief(across, down) + noise * 0.5 * texture;
            const auto level = [&](double offset) { return int(std::clamp(light + offset, 0.0, 255.0)); };
            row[x] = qRgb(level(20 * across), level(0), level(25 * down - 10));
        }
    }
    return image;
}

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
    std::atomic<int> next = 0;
    std::atomic<int> made = 0;
    const auto work = [&] {
        for (int i = next++; i < photos.paths.size(); i = next++)
            made += makeThumbnail(photos.paths.at(i), photos.target + QStringLiteral("/ours%1.jpg").arg(i));
    };
    std::vector<std::unique_ptr<QThread>> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back(QThread::create(work));
        threads.back()->start();
    }
    for (const auto &thread : threads)
        thread->wait();
    if (made != photos.paths.size())
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

QImage loadCached(const QString &path)
{
    const auto file = openRegularFile(path);
    const auto decoded = file ? Decoder::decode(file->descriptor.number(), path) : std::nullopt;
    return decoded ? decoded->pixels : QImage();
}

Photos writePhotos(PairRunner &runner)
{
    Photos photos;
    photos.target = runner.folder() + QStringLiteral("/thumbnails");
    QDir().mkpath(photos.target);
    const QImage pixels = photo(kPhotoSize);
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
    for (const int threads : {1, 2}) {
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
    const QString cached = photos.target + QStringLiteral("/cached.jpg");
    if (!makeThumbnail(photos.paths.first(), cached) || loadCached(cached).isNull() || QImage(cached).isNull())
        runner.fail("a thumbnail cannot be loaded");
    const auto repeat = [](auto load) {
        for (int i = 0; i < kCached; ++i)
            benchmark::DoNotOptimize(load());
    };
    runner.run({.name = "thumbnail-cached, " + std::to_string(kCached) + " of them",
                .ours = [&] { repeat([&] { return loadCached(cached); }); },
                .peerName = "QImage",
                .peer = [&] { repeat([&] { return QImage(cached); }); }});
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    qputenv("VIPS_CONCURRENCY", "1");
    Decoder::initialize();
    const Photos photos = writePhotos(runner);
    measureMaking(runner, photos);
    measureLoading(runner, photos);
    return runner.result();
}
