// A library of 100,000 photos in 2,000 folders: read from its file into the model, saved again, and opened by the
// program.

#include "LibraryFile.h"
#include "NotificationCenter.h"
#include "Pair.h"
#include "PhotoLibrary.h"
#include "ProgramStart.h"
#include "SampleLibrary.h"
#include "TrustingFinder.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QXmlStreamReader>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <optional>

namespace {

constexpr int kPhotos = 100'000;

struct OpenLibrary
{
    explicit OpenLibrary(const QString &thumbnails)
        : library(thumbnails, finder, notifications)
    {}

    NotificationCenter notifications;
    TrustingFinder finder;
    PhotoLibrary library;
};

/// How many photos were read.
qsizetype load(const QString &path, OpenLibrary &into)
{
    return LibraryFile::load(path, into.library).photoGuids.size();
}

bool writeFile(const QString &path, const QByteArray &bytes, bool toDisk)
{
    const int file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0)
        return false;
    const bool written = ::write(file, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    const bool synced = !toDisk || ::fsync(file) == 0;
    return ::close(file) == 0 && written && synced;
}

qint64 parseWithStreamReader(const QByteArray &utf8)
{
    QXmlStreamReader reader(utf8);
    qint64 elements = 0;
    while (!reader.atEnd())
        elements += reader.readNext() == QXmlStreamReader::StartElement ? 1 : 0;
    return reader.hasError() ? 0 : elements;
}

/// The program started anew with "--peak FILE" does this, so that nothing but a load is in its memory.
int printPeakOfLoad(const QString &path)
{
    OpenLibrary opened(QFileInfo(path).path());
    if (load(path, opened) != kPhotos)
        return 1;
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QFile::ReadOnly))
        return 1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:") || line.startsWith("VmRSS:"))
            std::printf("%s\n", line.constData());
    }
    return 0;
}

void measureMemory(PairRunner &runner, const QString &program, const QString &path)
{
    QProcess process;
    process.start(program, {QStringLiteral("--peak"), path});
    if (!process.waitForFinished(-1) || process.exitCode() != 0)
        return runner.fail("the load in a process of its own failed");
    qint64 peak = 0;
    qint64 kept = 0;
    for (const QByteArray &line : process.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        if (words.size() >= 2)
            (words[0] == "VmHWM:" ? peak : kept) = words[1].toLongLong() / 1024;
    }
    std::printf("load-memory | %lld MB at most, %lld MB kept | - | -\n", static_cast<long long>(peak),
                static_cast<long long>(kept));
}

void measureLoad(PairRunner &runner, const QString &path, const QByteArray &text)
{
    std::unique_ptr<OpenLibrary> opened;
    const auto prepare = [&] { opened = std::make_unique<OpenLibrary>(runner.folder()); };
    runner.run({.name = "load",
                .ours =
                    [&] {
                        if (load(path, *opened) != kPhotos)
                            runner.fail("not all photos were read");
                    },
                .peerName = "QXmlStreamReader, parsing only",
                .peer = [&] { benchmark::DoNotOptimize(parseWithStreamReader(text)); },
                .bytes = text.size(),
                .prepare = prepare});
}

void measureSave(PairRunner &runner, const QString &path)
{
    OpenLibrary opened(runner.folder());
    const QString saved = runner.folder() + QStringLiteral("/saved.xml");
    QFile file(saved);
    if (load(path, opened) != kPhotos || !LibraryFile::save(saved, opened.library, {}) || !file.open(QFile::ReadOnly))
        return runner.fail("the library could not be read and saved");
    const QByteArray bytes = file.readAll();
    const QString bare = runner.folder() + QStringLiteral("/bare.xml");
    runner.run({.name = "save",
                .ours =
                    [&] {
                        if (!LibraryFile::save(saved, opened.library, {}))
                            runner.fail("the save failed");
                    },
                .peerName = "write + fsync of the same bytes",
                .peer =
                    [&] {
                        if (!writeFile(bare, bytes, true))
                            runner.fail("the bare write failed");
                    },
                .bytes = bytes.size()});
}

}

int main(int argc, char **argv)
{
    if (const auto status = ProgramStart::runAsChild(argc, argv))
        return *status;
    LibraryFile::registerTags();
    if (argc == 3 && qstrcmp(argv[1], "--peak") == 0) {
        const QCoreApplication application(argc, argv);
        return printPeakOfLoad(QFile::decodeName(argv[2]));
    }
    PairRunner runner(argc, argv);
    const QCoreApplication application(argc, argv);
    const QByteArray text = sampleLibraryText(makeSampleLibrary());
    const QString path = runner.folder() + QStringLiteral("/Photo.xml");
    if (!writeFile(path, text, false)) {
        runner.fail("the sample could not be written");
        return runner.result();
    }
    measureMemory(runner, QCoreApplication::applicationFilePath(), path);
    measureLoad(runner, path, text);
    measureSave(runner, path);
    ProgramStart::measure(runner);
    return runner.result();
}
