// Finding the image files that the library does not know among 200,000, against `find` listing the same files.

#include "OrphanSearch.h"
#include "Pair.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kFiles = 200'000;
constexpr int kFilesPerFolder = 100;

/// Nine files in ten are pictures, as where a camera or a program leaves notes beside them.
QString nameOf(int number)
{
    return number % 10 == 9 ? QStringLiteral("IMG_%1.xmp").arg(number, 6, 10, QLatin1Char('0'))
                            : QStringLiteral("IMG_%1.JPG").arg(number, 6, 10, QLatin1Char('0'));
}

bool makeFiles(const QString &root, QStringList &pictures)
{
    for (int number = 0; number < kFiles; ++number) {
        const int folder = number / kFilesPerFolder;
        const QString path = root + QStringLiteral("/%1/Holidays %2").arg(folder / 50).arg(folder);
        if (number % kFilesPerFolder == 0 && !QDir().mkpath(path))
            return false;
        const QString file = path + u'/' + nameOf(number);
        const int made = ::open(QFile::encodeName(file).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (made < 0 || ::close(made) != 0)
            return false;
        if (file.endsWith(QLatin1String(".JPG")))
            pictures.append(file);
    }
    return true;
}

/// Lists the files to nowhere; whether the program could be run.
bool runFind(const QByteArray &root)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    QByteArray words[] = {"find", root, "-type", "f"};
    char *arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
    pid_t child = 0;
    const bool isStarted = ::posix_spawnp(&child, "find", &actions, nullptr, arguments, environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    return isStarted && ::waitpid(child, &status, 0) == child && status == 0;
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    const QString root = runner.folder() + QStringLiteral("/Pictures");
    QStringList pictures;
    if (!makeFiles(root, pictures) || !runFind(QFile::encodeName(root))) {
        runner.fail("the files cannot be made and found");
        return runner.result();
    }
    const auto measure = [&](const std::string &name, qsizetype orphans) {
        const OrphanRequest request{root, pictures.sliced(orphans)};
        if (findOrphans(request, {}).orphans.count() != orphans)
            return runner.fail(name + ": not exactly the orphans were found");
        runner.run({.name = name,
                    .ours = [&] { benchmark::DoNotOptimize(findOrphans(request, {}).orphans.count()); },
                    .peerName = "find -type f",
                    .peer = [&] { benchmark::DoNotOptimize(runFind(QFile::encodeName(root))); }});
    };
    measure("orphans, none among 200,000 files", 0);
    measure("orphans, 2,000 among 200,000 files", 2'000);
    measure("orphans, every picture of 200,000 files", pictures.size());
    return runner.result();
}
