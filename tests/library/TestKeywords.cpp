#include "KeywordCounts.h"
#include "KeywordSearch.h"
#include "KeywordText.h"
#include "LibrarySupport.h"
#include "TestRunner.h"

#include <QTest>

#include <functional>
#include <utility>

/// Keywords as they are typed, and the search for the photos that have one.
class TestKeywords : public QObject
{
    Q_OBJECT

    /// One folder with photos "a" to "e", all with the keyword "all" and every other one with "odd"; beneath it another
    /// with "a" once more.
    struct Scene : TestLibrary
    {
        std::shared_ptr<PIFolder> folder = addFolder();
        PIGroup::PhotoList photos;
        QString found;
        std::function<void()> onFirstPiece; ///< called once
        KeywordSearch search{std::as_const(library).groups(),
                             [this](const PIGroup::PhotoList &piece) {
                                 found += captions(piece);
                                 if (const auto act = std::exchange(onFirstPiece, {}))
                                     act();
                             },
                             /*photosPerPiece=*/2};

        Scene()
        {
            for (const QChar name : QStringLiteral("abcde")) {
                photos << addPhoto(path(name));
                photos.last()->setCaption(name);
                const bool isOdd = name.unicode() % 2 == 1;
                photos.last()->setKeywordList(isOdd ? QStringLiteral("all odd odd") : QStringLiteral("all"),
                                              library.keywords());
            }
            folder->makeNewFolder()->photos() << photos.first();
        }
        static QString captions(const PIGroup::PhotoList &photos)
        {
            QString text;
            for (const auto &photo : photos)
                text += photo->caption();
            return text;
        }
        [[nodiscard]] quint64 index(const char *word) const
        {
            return library.keywords().indexOf(QString::fromLatin1(word)).value();
        }
    };

private Q_SLOTS:
    void aWordBeingTypedIsCompleted_data()
    {
        QTest::addColumn<QString>("typed");   // with the cursor at the bar
        QTest::addColumn<QString>("outcome"); // what each candidate makes of it
        const auto row = [](const char *typed, const char *outcome) {
            QTest::newRow(typed) << QString::fromUtf8(typed) << QString::fromUtf8(outcome);
        };
        row("n|", "\"New <b>York\"/news/night");
        row("ne|", "\"New <b>York\"/news");
        row("boat, NE| sea", "boat, \"New <b>York\" sea/boat, news sea");
        row("news ne|", "news \"New <b>York\""); // nothing twice
        row("\"new |", "\"New <b>York\"");
        row("\"new | boat", "\"New <b>York\" boat"); // a quote that was just begun takes nothing away
        row("news|", "");                            // is one already
        row("n|ew", "");
        row("\"new\"|", "");
        row("boat |", "");
        row("\"|", "");
        row("\"|\"", "");
        row("|", "");
        row("ol|", "\"old town\""); // was renamed without quotes
        row("x|", "");
    }
    void aWordBeingTypedIsCompleted()
    {
        KeywordVocabulary vocabulary;
        vocabulary.setWords({QStringLiteral("night"), QStringLiteral("news"), QStringLiteral("\"New <b>York\""),
                             QStringLiteral("old town"), QStringLiteral("News")});
        QFETCH(QString, typed);
        const qsizetype cursor = typed.indexOf(u'|');
        typed.remove(cursor, 1);
        const auto completion = KeywordText::completionAt(typed, cursor, vocabulary);
        QStringList outcomes;
        for (const QString &candidate : completion.candidates)
            outcomes << QString(typed).replace(completion.typed.begin, completion.typed.length, candidate);
        QTEST(outcomes.join(u'/'), "outcome");
    }

    void oneKeywordStaysOne_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("keyword");
        const auto row = [](const char *text, const char *keyword) {
            QTest::newRow(text) << QString::fromUtf8(text) << QString::fromUtf8(keyword);
        };
        row("boat", "boat");
        row("O'Neil", "O'Neil");
        row("\"new york\"", "\"new york\"");
        row("new york", "\"new york\"");
        row("a-b", "\"a-b\"");
        row("x", "\"x\"");
        row("\"open", "\"open\"");
        row("\"a\" b", "\"a b\"");
        row("\"", "");
        row("\" \"\"", "");
    }
    void oneKeywordStaysOne()
    {
        QFETCH(QString, text);
        QFETCH(QString, keyword);
        QCOMPARE(KeywordText::asOneKeyword(text), keyword);
        if (keyword.isEmpty())
            return;
        KeywordVocabulary vocabulary;
        PIPhoto photo;
        photo.setKeywordList(QStringLiteral("boat ") + keyword + QStringLiteral(" sea"), vocabulary);
        QCOMPARE(vocabulary.words().value(1, keyword), text == u"boat" ? QStringLiteral("sea") : keyword);
    }

    void aSearchFindsEveryPlaceOfEveryPhoto()
    {
        Scene scene;
        scene.search.search(scene.index("odd"));
        QTRY_VERIFY(!scene.search.isRunning());
        QCOMPARE(scene.found, QStringLiteral("acea"));
        scene.search.search(99);
        QTRY_VERIFY(!scene.search.isRunning());
        QCOMPARE(scene.found, QStringLiteral("acea"));
    }

    void anotherSearchEndsTheOneUnderWay()
    {
        Scene scene;
        scene.onFirstPiece = [&scene] {
            QCOMPARE(scene.found, QStringLiteral("ab"));
            scene.found.clear();
            scene.search.search(scene.index("odd"));
        };
        scene.search.search(scene.index("all"));
        QTRY_VERIFY(!scene.search.isRunning());
        QCOMPARE(scene.found, QStringLiteral("acea"));

        scene.onFirstPiece = [&scene] { scene.search.cancel(); };
        scene.search.search(scene.index("all"));
        QTRY_VERIFY(!scene.search.isRunning());
        QCOMPARE(scene.found, QStringLiteral("aceaab"));
    }

    void theLibraryMayChangeWhileItIsSearched()
    {
        Scene scene;
        scene.onFirstPiece = [&scene] {
            scene.folder->photos().prepend(std::make_shared<PIPhoto>());
            scene.photos.at(3)->setKeywordIndexes({});
            scene.photos.clear();
            scene.folder.reset();
            scene.library.groups().clear();
        };
        scene.search.search(scene.index("all"));
        QTRY_VERIFY(!scene.search.isRunning());
        QCOMPARE(scene.found, QStringLiteral("abcea"));
    }

    void photosAreCountedByTheirKeywords()
    {
        Scene scene;
        int told = 0;
        KeywordCounts counts(
            std::as_const(scene.library).groups(), scene.library.keywords(), [&told] { ++told; }, 2);
        const quint64 odd = scene.index("odd");
        counts.count();
        QVERIFY(!counts.photosWith(odd));
        QTRY_COMPARE(told, 1);
        QCOMPARE(counts.photosWith(odd), 4); // "odd odd" is one photo with it
        QCOMPARE(counts.photosWith(scene.index("all")), 6);

        counts.count();
        QCoreApplication::processEvents(); // some have been counted
        scene.photos.first()->setKeywordList(QStringLiteral("late"), scene.library.keywords());
        scene.photos.last()->setKeywordIndexes({1'000'000'000'000}); // damaged
        counts.count();
        QCOMPARE(counts.photosWith(odd), 4);
        QTRY_VERIFY(!counts.isRunning());
        QCOMPARE(told, 3);
        QCOMPARE(counts.photosWith(odd), 1);
        QCOMPARE(counts.photosWith(scene.index("late")), 2);
        QCOMPARE(counts.photosWith(99), 0);
    }
};

REGISTER_TEST(TestKeywords)
#include "TestKeywords.moc"
