// Finding photos among 100,000 that have some three keywords each: those with one keyword, gone through between the
// events of the main thread, against a query of SQLite over the same pairs of photo and keyword, without an index and
// with one.

#include "FileFinder.h"
#include "FindMeasures.h"
#include "KeywordCounts.h"
#include "KeywordSearch.h"
#include "NotificationCenter.h"
#include "Pair.h"
#include "PhotoLibrary.h"

#include <QCoreApplication>

#include <sqlite3.h>

#include <utility>

namespace {

constexpr int kPhotos = 100'000;
constexpr int kPhotosPerFolder = 50;
constexpr quint64 kEveryTenth = 0;
constexpr quint64 kNobody = 1;
constexpr int kKeywords = 600;

/// Photos in folders, every tenth with the first keyword, none with the second, all with two or three of the others.
struct Photos
{
    PathFileFinder finder;
    NotificationCenter notifications;
    PhotoLibrary library;

    explicit Photos(const QString &folder)
        : library(folder, finder, notifications)
    {
        for (int word = 0; word < kKeywords; ++word)
            library.keywords().append(QStringLiteral("word%1").arg(word));
        library.groups().append(std::make_shared<PIGroup>());
        std::shared_ptr<PIFolder> shoot;
        for (int number = 0; number < kPhotos; ++number) {
            if (number % kPhotosPerFolder == 0)
                shoot = library.groups().last()->makeNewFolder();
            shoot->photos().append(std::make_shared<PIPhoto>());
            shoot->photos().last()->setKeywordIndexes(keywordsOf(number));
        }
    }
    static QList<quint64> keywordsOf(int number)
    {
        const auto other = [number](quint64 step) { return 2 + static_cast<quint64>(number) * step % (kKeywords - 2); };
        QList<quint64> keywords{other(7), other(31)};
        keywords.append(number % 10 == 0 ? kEveryTenth : other(101));
        return keywords;
    }
};

/// The same pairs as a table in memory.
class SqlitePairs
{
public:
    explicit SqlitePairs(bool hasIndex)
    {
        sqlite3_open(":memory:", &m_database);
        sqlite3_exec(m_database, "CREATE TABLE keywords (photo INTEGER, keyword INTEGER); BEGIN", nullptr, nullptr,
                     nullptr);
        sqlite3_stmt *insert = prepare("INSERT INTO keywords VALUES (?, ?)");
        for (int photo = 0; photo < kPhotos; ++photo) {
            for (const quint64 keyword : Photos::keywordsOf(photo)) {
                sqlite3_bind_int(insert, 1, photo);
                sqlite3_bind_int(insert, 2, static_cast<int>(keyword));
                sqlite3_step(insert);
                sqlite3_reset(insert);
            }
        }
        sqlite3_finalize(insert);
        sqlite3_exec(m_database, hasIndex ? "CREATE INDEX by_keyword ON keywords (keyword, photo); COMMIT" : "COMMIT",
                     nullptr, nullptr, nullptr);
    }
    SqlitePairs(const SqlitePairs &) = delete;
    SqlitePairs &operator=(const SqlitePairs &) = delete;
    ~SqlitePairs() { sqlite3_close(m_database); }

    qsizetype count(quint64 keyword)
    {
        sqlite3_stmt *query = prepare("SELECT photo FROM keywords WHERE keyword = ?");
        sqlite3_bind_int(query, 1, static_cast<int>(keyword));
        QList<int> photos;
        while (sqlite3_step(query) == SQLITE_ROW)
            photos.append(sqlite3_column_int(query, 0));
        sqlite3_finalize(query);
        return photos.size();
    }
    qsizetype countAll()
    {
        sqlite3_stmt *query = prepare("SELECT keyword, COUNT(*) FROM keywords GROUP BY keyword");
        qsizetype keywords = 0;
        while (sqlite3_step(query) == SQLITE_ROW)
            ++keywords;
        sqlite3_finalize(query);
        return keywords;
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

void measureSearches(PairRunner &runner, Photos &photos)
{
    PIGroup::PhotoList found;
    KeywordSearch search(std::as_const(photos.library).groups(),
                         [&found](const PIGroup::PhotoList &piece) { found += piece; });
    const auto expect = [&runner](bool isRight) {
        if (!isRight)
            runner.fail("find: not the photos that have the keyword");
    };
    const auto ours = [&](quint64 keyword, qsizetype count) {
        return [&, keyword, count] {
            found.clear();
            search.search(keyword);
            while (search.isRunning())
                QCoreApplication::processEvents();
            expect(found.size() == count);
        };
    };
    for (const bool hasIndex : {false, true}) {
        SqlitePairs pairs(hasIndex);
        const auto peer = [&](quint64 keyword, qsizetype count) {
            return [&, keyword, count] { expect(pairs.count(keyword) == count); };
        };
        const std::string peerName = hasIndex ? "SQLite with an index" : "SQLite";
        const std::string name = hasIndex ? " (again)" : "";
        runner.run({.name = "find a keyword of every tenth photo" + name,
                    .ours = ours(kEveryTenth, kPhotos / 10),
                    .peerName = peerName,
                    .peer = peer(kEveryTenth, kPhotos / 10)});
        runner.run({.name = "find a keyword of none" + name,
                    .ours = ours(kNobody, 0),
                    .peerName = peerName,
                    .peer = peer(kNobody, 0)});
    }
}

void measureCounts(PairRunner &runner, Photos &photos)
{
    SqlitePairs pairs(/*hasIndex=*/false);
    KeywordCounts counts(std::as_const(photos.library).groups(), photos.library.keywords(), [] {});
    runner.run({.name = "find how many photos each keyword has",
                .ours =
                    [&] {
                        counts.count();
                        while (counts.isRunning())
                            QCoreApplication::processEvents();
                        if (counts.photosWith(kEveryTenth) != kPhotos / 10)
                            runner.fail("find: a wrong count");
                    },
                .peerName = "SQLite",
                .peer = [&] { benchmark::DoNotOptimize(pairs.countAll()); }});
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    const QCoreApplication application(argc, argv);
    Photos photos(runner.folder());
    measureSearches(runner, photos);
    measureCounts(runner, photos);
    measureFindingWords(runner);
    return runner.result();
}
