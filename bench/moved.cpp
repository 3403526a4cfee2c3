// Finding moved files again: as many bookmarks as the name says, against a bare walk of the same folders with
// getdents64 and one look at each moved file, which is what any program would have to do at the least.

#include "FileBookmark.h"
#include "Pair.h"
#include "Volumes.h"

#include <QDir>
#include <QFile>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <unordered_set>

namespace {

constexpr int kFilesPerFolder = 100;

/// Files in folders of a hundred in folders of a hundred, and bookmarks of the first ones.
struct Tree
{
    QString root; ///< holds the folder that is moved
    QList<QByteArray> bookmarks;
    std::unordered_set<quint64> inodes; ///< of the bookmarked files
    int files = 0;
};

QString fileIn(const QString &root, int number)
{
    const int folder = number / kFilesPerFolder;
    return root + QStringLiteral("/%1/%2/IMG_%3.jpg").arg(folder / 100).arg(folder % 100).arg(number);
}

bool writeFile(const QString &path, int number)
{
    const QByteArray content = QByteArray::number(number).repeated(10);
    const int file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    const bool written = ::write(file, content.constData(), static_cast<size_t>(content.size())) == content.size();
    return file >= 0 && ::close(file) == 0 && written;
}

bool addBookmark(Tree &tree, const QString &path, const Volumes &volumes)
{
    struct stat facts = {};
    const auto bookmark = FileBookmark::create(path, volumes);
    if (!bookmark || ::stat(QFile::encodeName(path).constData(), &facts) != 0)
        return false;
    tree.bookmarks.append(*bookmark);
    tree.inodes.insert(facts.st_ino);
    return true;
}

bool makeTree(Tree &tree, const QString &root, int files, int bookmarks)
{
    tree.root = root;
    tree.files = files;
    const QString before = root + QStringLiteral("/Pictures");
    const auto volumes = Volumes::current();
    for (int number = 0; number < files; ++number) {
        const QString path = fileIn(before, number);
        if (number % kFilesPerFolder == 0 && !QDir().mkpath(QFileInfo(path).path()))
            return false;
        if (!writeFile(path, number) || (number < bookmarks && !addBookmark(tree, path, *volumes)))
            return false;
    }
    return true;
}

bool renameRoot(const Tree &tree)
{
    return QDir(tree.root).rename(QStringLiteral("Pictures"), QStringLiteral("Photographs"));
}

/// Every bookmarked file into the folder after its own, under a new name.
bool shuffle(const Tree &tree)
{
    const QString root = tree.root + QStringLiteral("/Pictures");
    for (int number = 0; number < tree.bookmarks.size(); ++number) {
        const QString to = fileIn(root, (number + kFilesPerFolder) % tree.files) + QStringLiteral(".new.jpg");
        if (!QFile::rename(fileIn(root, number), to))
            return false;
    }
    return true;
}

qsizetype findOurs(const Tree &tree)
{
    qsizetype found = 0;
    BookmarkOptions options;
    options.resolved = [&](const QList<BookmarkResolution> &resolved) {
        for (const BookmarkResolution &resolution : resolved)
            found += resolution.status == BookmarkResolution::Status::Found && resolution.stale ? 1 : 0;
    };
    FileBookmark::resolveMany(tree.bookmarks, options);
    return found;
}

/// Reads one folder and all beneath it; looks at the entries whose inode numbers are wanted.
class BareWalk
{
public:
    explicit BareWalk(const std::unordered_set<quint64> &wanted)
        : m_wanted(wanted)
    {}

    qsizetype run(int parent, const char *name)
    {
        const int folder = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        std::array<char, 32 * 1024> room;
        std::vector<std::string> subfolders;
        qsizetype looks = 0;
        for (ssize_t got; (got = ::getdents64(folder, room.data(), room.size())) > 0;)
            for (ssize_t at = 0; at < got;) {
                const auto *record = reinterpret_cast<const dirent64 *>(room.data() + at);
                at += record->d_reclen;
                if (record->d_type == DT_DIR && record->d_name[0] != '.')
                    subfolders.emplace_back(record->d_name);
                else if (m_wanted.contains(record->d_ino))
                    looks += look(folder, record->d_name);
            }
        for (const std::string &subfolder : subfolders)
            looks += run(folder, subfolder.c_str());
        ::close(folder);
        return looks;
    }

private:
    static int look(int folder, const char *name)
    {
        struct statx facts = {};
        return ::statx(folder, name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &facts) == 0 ? 1 : 0;
    }

    const std::unordered_set<quint64> &m_wanted;
};

void measure(PairRunner &runner, const std::string &name, int files, int bookmarks, bool (*change)(const Tree &))
{
    Tree tree;
    if (!makeTree(tree, runner.folder() + u'/' + QString::fromStdString(name), files, bookmarks) || !change(tree)) {
        runner.fail(name + ": the files could not be made");
        return;
    }
    const QByteArray root = QFile::encodeName(tree.root);
    if (findOurs(tree) != bookmarks || BareWalk(tree.inodes).run(AT_FDCWD, root.constData()) != bookmarks) {
        runner.fail(name + ": not all files were found");
        return;
    }
    runner.run({.name = name,
                .ours = [&] { benchmark::DoNotOptimize(findOurs(tree)); },
                .peerName = "bare walk and one statx each",
                .peer = [&] { benchmark::DoNotOptimize(BareWalk(tree.inodes).run(AT_FDCWD, root.constData())); }});
    QDir(tree.root).removeRecursively();
}

constexpr int kPhotos = 300;
constexpr qsizetype kPhotoSize = 300'000;
constexpr size_t kPieceSize = 64 * 1024;

bool readBothEnds(const QByteArray &path)
{
    static std::array<char, kPieceSize> piece;
    const int file = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    struct stat facts = {};
    const bool isRead = ::fstat(file, &facts) == 0 && ::pread(file, piece.data(), kPieceSize, 0) > 0 &&
                        ::pread(file, piece.data(), kPieceSize, facts.st_size - static_cast<off_t>(kPieceSize)) > 0;
    ::close(file);
    return isRead;
}

void measureMaking(PairRunner &runner)
{
    QStringList paths;
    for (int number = 0; number < kPhotos; ++number) {
        paths.append(runner.folder() + QStringLiteral("/%1.jpg").arg(number));
        QFile file(paths.last());
        if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(kPhotoSize, 'x')) != kPhotoSize)
            return runner.fail("the photos could not be made");
    }
    const auto ours = [&] {
        for (const QString &path : paths)
            benchmark::DoNotOptimize(FileBookmark::create(path));
    };
    const auto peer = [&] {
        for (const QString &path : paths)
            benchmark::DoNotOptimize(readBothEnds(QFile::encodeName(path)));
    };
    runner.run(
        {.name = "moved, 300 bookmarks made", .ours = ours, .peerName = "open and two reads each", .peer = peer});
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    measureMaking(runner);
    measure(runner, "moved 10000 with their root", 10'000, 10'000, renameRoot);
    measure(runner, "moved 100000 with their root", 100'000, 100'000, renameRoot);
    measure(runner, "moved 100000 among their folders", 100'000, 100'000, shuffle);
    measure(runner, "moved 10000 of 200000", 200'000, 10'000, shuffle);
    return runner.result();
}
