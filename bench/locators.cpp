// Storing and reading the locators of 100,000 files, against SQLite with the same names and bytes; and looking at
// all of them at the start of the program when nothing was lost, against one stat for each of the same paths.

#include "BookmarkService.h"
#include "LocatorCheck.h"
#include "LocatorFileFinder.h"
#include "PILocatorManager.h"
#include "Pair.h"
#include "StringUtilities.h"

#include <QDir>
#include <QFile>

#include <sqlite3.h>
#include <sys/stat.h>

#include <vector>

namespace {

constexpr int kFiles = 100'000;

struct Entry
{
    QString guid;
    QVFileLocator locator;
};

bool makeFile(const QString &path, int number)
{
    QFile file(path);
    const QByteArray content = QByteArray::number(number);
    return (number % 100 != 0 || QDir().mkpath(QFileInfo(path).path())) && file.open(QIODevice::WriteOnly) &&
           file.write(content) == content.size();
}

/// Locators with bookmarks of real files.
std::vector<Entry> makeEntries(const QString &folder)
{
    FileBookmarkService bookmarks;
    std::vector<Entry> entries;
    entries.reserve(kFiles);
    for (int number = 0; number < kFiles; ++number) {
        const QString path = folder + QStringLiteral("/Pictures/Holidays %1/IMG_%2.jpg").arg(number / 100).arg(number);
        if (!makeFile(path, number))
            return {};
        entries.push_back({QVString::guidString(), QVFileLocator(path, bookmarks)});
    }
    return entries;
}

/// A table of the same names and bytes in SQLite, with its own defaults.
class SqliteTable
{
public:
    explicit SqliteTable(const QString &path)
    {
        sqlite3_open(path.toUtf8().constData(), &m_database);
        sqlite3_exec(m_database, "CREATE TABLE IF NOT EXISTS locators (guid TEXT PRIMARY KEY, data BLOB)", nullptr,
                     nullptr, nullptr);
    }
    SqliteTable(const SqliteTable &) = delete;
    SqliteTable &operator=(const SqliteTable &) = delete;
    ~SqliteTable() { sqlite3_close(m_database); }

    bool store(const std::vector<Entry> &entries)
    {
        sqlite3_stmt *statement = prepare("INSERT OR REPLACE INTO locators VALUES (?, ?)");
        bool done = sqlite3_exec(m_database, "BEGIN", nullptr, nullptr, nullptr) == SQLITE_OK;
        for (const Entry &entry : entries) {
            const QByteArray guid = entry.guid.toUtf8();
            const QByteArray data = entry.locator.createBinaryArchive();
            sqlite3_bind_text(statement, 1, guid.constData(), static_cast<int>(guid.size()), SQLITE_STATIC);
            sqlite3_bind_blob(statement, 2, data.constData(), static_cast<int>(data.size()), SQLITE_STATIC);
            done &= sqlite3_step(statement) == SQLITE_DONE;
            sqlite3_reset(statement);
        }
        sqlite3_finalize(statement);
        return sqlite3_exec(m_database, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK && done;
    }

    int read(const std::vector<Entry> &entries)
    {
        sqlite3_stmt *statement = prepare("SELECT data FROM locators WHERE guid = ?");
        int read = 0;
        for (const Entry &entry : entries) {
            const QByteArray guid = entry.guid.toUtf8();
            sqlite3_bind_text(statement, 1, guid.constData(), static_cast<int>(guid.size()), SQLITE_STATIC);
            if (sqlite3_step(statement) == SQLITE_ROW) {
                const QByteArrayView data(static_cast<const char *>(sqlite3_column_blob(statement, 0)),
                                          sqlite3_column_bytes(statement, 0));
                read += QVFileLocator::fromBinaryArchive(data).has_value() ? 1 : 0;
            }
            sqlite3_reset(statement);
        }
        sqlite3_finalize(statement);
        return read;
    }

private:
    sqlite3_stmt *prepare(const char *text)
    {
        sqlite3_stmt *statement = nullptr;
        sqlite3_prepare_v2(m_database, text, -1, &statement, nullptr);
        return statement;
    }

    sqlite3 *m_database = nullptr;
};

bool storeOurs(const QString &folder, const std::vector<Entry> &entries)
{
    const auto manager = PILocatorManager::open(folder);
    for (const Entry &entry : entries)
        manager->setLocator(entry.locator, entry.guid);
    manager->close();
    return QFile::exists(folder + QStringLiteral("/locators.plist"));
}

int readOurs(const QString &folder, const std::vector<Entry> &entries)
{
    const auto manager = PILocatorManager::open(folder);
    const LocatorSnapshot snapshot = manager->snapshot();
    const LocatorSnapshot::Reader reader(snapshot);
    int read = 0;
    for (const Entry &entry : entries)
        read += reader.locatorForGuid(entry.guid).has_value() ? 1 : 0;
    return read;
}

/// Whether every file was told to be where its reference has it.
bool checkAll(const QString &folder, const std::vector<Entry> &entries)
{
    const auto manager = PILocatorManager::open(folder);
    FileBookmarkService bookmarks;
    LocatorFileFinder finder(manager.get(), bookmarks, LocatorFileFinder::Search::Later);
    finder.postpone();
    for (const Entry &entry : entries)
        (void)finder.locate(entry.guid, entry.locator.path());
    qsizetype told = 0;
    finder.takePostponed().run({}, [&](const QList<CheckedFile> &files) { told += files.size(); });
    return told == 0;
}

int statAll(const std::vector<Entry> &entries)
{
    int found = 0;
    for (const Entry &entry : entries) {
        struct stat facts = {};
        found += ::stat(QFile::encodeName(entry.locator.path()).constData(), &facts) == 0 ? 1 : 0;
    }
    return found;
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    const QString folder = runner.folder();
    const QString library = folder + QStringLiteral("/library");
    const QString table = library + QStringLiteral("/table.sqlite");
    const std::vector<Entry> entries = makeEntries(folder);
    if (entries.empty() || !QDir().mkpath(library)) {
        runner.fail("the files cannot be made");
        return runner.result();
    }
    const auto expect = [&runner](bool isRight, const char *what) {
        if (!isRight)
            runner.fail(what);
    };
    const auto empty = [&] {
        for (const char *name : {"locators.database", "locators.plist", "table.sqlite"})
            QFile::remove(library + QLatin1Char('/') + QLatin1String(name));
    };
    runner.run({.name = "locators store 100,000",
                .ours = [&] { expect(storeOurs(library, entries), "locators were not stored"); },
                .peerName = "SQLite",
                .peer = [&] { expect(SqliteTable(table).store(entries), "SQLite did not store"); },
                .prepare = empty});
    expect(storeOurs(library, entries) && SqliteTable(table).store(entries), "not stored");
    runner.run({.name = "locators rewrite 100,000",
                .ours = [&] { expect(storeOurs(library, entries), "locators were not rewritten"); },
                .peerName = "SQLite",
                .peer = [&] { expect(SqliteTable(table).store(entries), "SQLite did not rewrite"); }});
    runner.run({.name = "locators read 100,000",
                .ours = [&] { expect(readOurs(library, entries) == kFiles, "locators were not read"); },
                .peerName = "SQLite",
                .peer = [&] { expect(SqliteTable(table).read(entries) == kFiles, "SQLite did not read"); }});
    runner.run({.name = "locators launch with 100,000 references",
                .ours = [&] { expect(checkAll(library, entries), "files were not where they are"); },
                .peerName = "stat of each path",
                .peer = [&] { expect(statAll(entries) == kFiles, "files do not exist"); }});
    return runner.result();
}
