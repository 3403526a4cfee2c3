#include "FindMeasures.h"

#include "LibraryFile.h"
#include "Pair.h"
#include "PhotoLibrary.h"
#include "PhotoSearch.h"
#include "SampleLibrary.h"
#include "StringUtilities.h"
#include "TrustingFinder.h"

#include <QFile>

#include <sqlite3.h>

namespace {

/// A library such as a photographer has, read from its file.
struct PhotographersLibrary
{
    TrustingFinder finder;
    NotificationCenter notifications;
    PhotoLibrary library;

    explicit PhotographersLibrary(const QString &folder)
        : library(folder, finder, notifications)
    {
        const QString path = folder + QStringLiteral("/Photo.xml");
        QFile file(path);
        if (!file.open(QFile::WriteOnly) || file.write(sampleLibraryText(makeSampleLibrary())) <= 0)
            return;
        file.close();
        LibraryFile::registerTags();
        (void)LibraryFile::load(path, library);
    }
    /// How many photos have the text anywhere.
    [[nodiscard]] int count(const char *text) const
    {
        FindCriteria criteria;
        criteria.exactString = QString::fromLatin1(text);
        PhotoSearch search(criteria, library, PhotoWalk(library.groups()));
        int matches = 0;
        while (search.next())
            ++matches;
        return matches;
    }
};

/// The texts of each photo as rows of a table.
class SqliteTexts
{
public:
    explicit SqliteTexts(const PhotoLibrary &library)
    {
        sqlite3_open(":memory:", &m_database);
        sqlite3_exec(m_database, "CREATE TABLE texts (photo INTEGER, text TEXT); BEGIN", nullptr, nullptr, nullptr);
        sqlite3_prepare_v2(m_database, "INSERT INTO texts VALUES (?, ?)", -1, &m_statement, nullptr);
        int number = 0;
        library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
            ++number;
            insert(number, photo->caption());
            insert(number, QVString::fileNameMinusExtension(photo->fileRef()->path()));
            for (const quint64 keyword : photo->keywordIndexes())
                insert(number, library.keywords().words().at(static_cast<qsizetype>(keyword)));
        });
        sqlite3_exec(m_database, "COMMIT", nullptr, nullptr, nullptr);
        sqlite3_finalize(m_statement);
        sqlite3_prepare_v2(m_database, "SELECT COUNT(DISTINCT photo) FROM texts WHERE text LIKE '%' || ? || '%'", -1,
                           &m_statement, nullptr);
    }
    SqliteTexts(const SqliteTexts &) = delete;
    SqliteTexts &operator=(const SqliteTexts &) = delete;
    ~SqliteTexts()
    {
        sqlite3_finalize(m_statement);
        sqlite3_close(m_database);
    }
    int count(const char *text)
    {
        sqlite3_bind_text(m_statement, 1, text, -1, SQLITE_STATIC);
        const int matches = sqlite3_step(m_statement) == SQLITE_ROW ? sqlite3_column_int(m_statement, 0) : -1;
        sqlite3_reset(m_statement);
        return matches;
    }

private:
    void insert(int photo, const QString &text)
    {
        const QByteArray utf8 = text.toUtf8();
        sqlite3_bind_int(m_statement, 1, photo);
        sqlite3_bind_text(m_statement, 2, utf8.constData(), static_cast<int>(utf8.size()), SQLITE_TRANSIENT);
        sqlite3_step(m_statement);
        sqlite3_reset(m_statement);
    }

    sqlite3 *m_database = nullptr;
    sqlite3_stmt *m_statement = nullptr;
};

}

void measureFindingWords(PairRunner &runner)
{
    const PhotographersLibrary photos(runner.folder());
    SqliteTexts texts(photos.library);
    const auto measure = [&](const char *name, const char *text) {
        const int expected = texts.count(text);
        const auto expect = [&runner, expected](int found) {
            if (found != expected)
                runner.fail("find: other photos than SQLite finds");
        };
        runner.run({.name = name,
                    .ours = [&, text] { expect(photos.count(text)); },
                    .peerName = "SQLite",
                    .peer = [&, text] { expect(texts.count(text)); }});
    };
    measure("find words that no photo has", "such as none has");
    measure("find a letter that most photos have", "e");
}
