#include "TestRunner.h"
#include "UndoHouse.h"

#include "PIFolder.h"
#include "PhotoFinder.h"
#include "TypedSearch.h"

#include <QSignalSpy>
#include <QTest>
#include <QTimer>

namespace {

/// Two folders in a group, one beneath the first, and a folder of search results; "x" is searched for.
struct FindHouse : UndoHouse
{
    std::shared_ptr<PIFolder> under = a->makeNewFolder();
    std::shared_ptr<PIGroup> resultGroup = std::make_shared<PIGroup>(QStringLiteral("Search Results"));
    std::shared_ptr<PIFolder> results = resultGroup->makeNewFolder();
    PhotoFinder finder{undoable};

    FindHouse()
    {
        under->setName(QStringLiteral("Under"));
        results->setName(QStringLiteral("Results"));
        resultGroup->setGroupType(GroupType::Search);
        library.groups() << resultGroup;
        a->photos() = photosOf("x0 1 x2 x3");
        under->photos() = photosOf("4 x5");
        b->photos() = photosOf("6 x7 8");
        results->photos() = photosOf("x9");
    }
    PIGroup::PhotoList photosOf(const char *captions) { return photos(QString::fromLatin1(captions).split(u' ')); }
    std::shared_ptr<PIFolder> folderNamed(const QString &name) const
    {
        for (const auto &each : {a, under, b, results}) {
            if (each->name() == name)
                return each;
        }
        return nullptr;
    }
    void search(FindCriteria::Start start, bool makeFolder = false)
    {
        FindCriteria criteria;
        criteria.exactString = QStringLiteral("X");
        criteria.startOption = start;
        criteria.makeFolder = makeFolder;
        finder.setCurrentFindCriteria(criteria);
    }
    QString shown() const
    {
        const auto photo = view.currentPhoto();
        return photo && view.selection.count() == 1 ? photo->caption() : QString();
    }
};

using Start = FindCriteria::Start;
enum class Do { Find, Again, Previous };

}
Q_DECLARE_METATYPE(Start)
Q_DECLARE_METATYPE(Do)

/// Where searches begin, and what becomes of what they find.
class TestPhotoFinder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aSearchBeginsWhereItIsTold_data()
    {
        QTest::addColumn<Do>("what");
        QTest::addColumn<Start>("start");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("selection");
        QTest::addColumn<QString>("found"); ///< empty: nothing
        const auto row = [](const char *name, Do what, Start start, const char *folder, const char *selection,
                            const char *found) {
            QTest::newRow(name) << what << start << QString::fromLatin1(folder) << QString::fromLatin1(selection)
                                << QString::fromLatin1(found);
        };
        row("the library", Do::Find, Start::Library, "B", "0", "x0");
        row("the folder, whatever is selected", Do::Find, Start::Folder, "B", "2", "x7");
        row("the selection", Do::Find, Start::Selection, "A", "0 2", "x3");
        row("nothing is selected", Do::Find, Start::Selection, "A", "", "x0");
        row("no folder is shown", Do::Find, Start::Folder, "", "", "x0");
        row("again, whatever the option", Do::Again, Start::Library, "A", "3", "x5");
        row("again, over to the next folder", Do::Again, Start::Library, "Under", "1", "x7");
        row("again after the last one, never around", Do::Again, Start::Library, "B", "1", "");
        row("results are never searched", Do::Find, Start::Folder, "Results", "", "x0");
        row("previous", Do::Previous, Start::Library, "A", "2-3", "x0");
        row("previous, out of a folder", Do::Previous, Start::Library, "B", "1", "x5");
        row("previous, before the first one", Do::Previous, Start::Library, "A", "0", "");
        row("previous, where no match is shown", Do::Previous, Start::Library, "Under", "0", "x3");
        row("previous, from among results", Do::Previous, Start::Library, "Results", "0", "x7");
        row("previous, without a folder", Do::Previous, Start::Library, "", "", "x7");
    }
    void aSearchBeginsWhereItIsTold()
    {
        QFETCH(Do, what);
        QFETCH(Start, start);
        QFETCH(QString, folder);
        QFETCH(QString, selection);
        QFETCH(QString, found);
        FindHouse house;
        house.view.folder = house.folderNamed(folder);
        house.view.selection = IndexSet::fromArchive(selection);
        house.search(start);
        const PhotoFinder::Outcome outcome = what == Do::Find    ? house.finder.find()
                                             : what == Do::Again ? house.finder.findAgain()
                                                                 : house.finder.findPrevious();
        if (found.isEmpty()) {
            QCOMPARE(outcome, PhotoFinder::Outcome::NothingFound);
            QCOMPARE(house.view.resets, 0);
            QCOMPARE(house.view.selection.archive(), selection);
        } else {
            QCOMPARE(outcome, PhotoFinder::Outcome::Found);
            QCOMPARE(house.shown(), found);
        }
    }

    void matchesAreCollectedAsCopies()
    {
        FindHouse house;
        house.view.folder = house.a;
        house.view.selection = IndexSet::single(0);
        house.search(Start::Selection, /*makeFolder=*/true);
        const QString before = house.text();
        QCOMPARE(house.finder.find(), PhotoFinder::Outcome::Found);
        const auto folder = house.view.folder;
        QCOMPARE(folder->parent(), house.resultGroup);
        QCOMPARE(House::captions(*folder), QStringLiteral("x2x3x5x7"));
        QVERIFY(folder->photos().first() != house.a->photos().at(2));
        QCOMPARE(folder->photos().first()->guid(), house.a->photos().at(2)->guid());

        const QString after = house.text();
        house.manager.undo();
        QCOMPARE(house.text(), before);
        house.manager.redo();
        QCOMPARE(house.text(), after);
    }
    void aFolderOfNoResultsStays()
    {
        FindHouse house;
        house.b->photos().clear();
        house.view.folder = house.b;
        house.search(Start::Folder, /*makeFolder=*/true);
        QCOMPARE(house.finder.find(), PhotoFinder::Outcome::Found);
        QCOMPARE(house.view.folder->parent(), house.resultGroup);
        QVERIFY(house.view.folder->photos().isEmpty());
        house.manager.setDelegate(nullptr); // refuses everything from now on
        QCOMPARE(house.finder.find(), PhotoFinder::Outcome::Refused);
        QCOMPARE(house.resultGroup->folders().size(), 2);
    }

    /// Only the last search runs, some photos at a time, whatever becomes of the tree in between.
    void aSearchInSlicesOutlivesChanges()
    {
        FindHouse house;
        house.a->photos() += house.photos(QStringList(10'000, QStringLiteral("y")));
        SearchRun run(nullptr, std::chrono::milliseconds(0));
        QSignalSpy ended(&run, &SearchRun::ended);
        int first = 0;
        int turnsAfterIt = 0;
        QTimer turns;
        connect(&turns, &QTimer::timeout, this, [&] {
            if (++turnsAfterIt == 1)
                house.library.groups().clear(); // the walk holds on to the folder
        });
        connect(&run, &SearchRun::foundFirst, this, [&] {
            ++first;
            turns.start(0);
        });
        for (const char *text : {"nowhere", "X"}) {
            run.start([&house, text] {
                FindCriteria criteria;
                criteria.exactString = QString::fromLatin1(text);
                return house.finder.search(criteria, {});
            });
        }
        QTRY_COMPARE(ended.size(), 1);
        QCOMPARE(first, 1);
        QVERIFY(turnsAfterIt > 1);
        QCOMPARE(ended.first().first().toLongLong(), 4); // those of the folder it was in and beneath
        QVERIFY(!run.isRunning());
    }

    void typingLooksFromWhereItBegan_data()
    {
        QTest::addColumn<QString>("typed"); ///< each in turn: "" gives up, "!" accepts, "#" does not wait, "-" deletes
        QTest::addColumn<QString>("found");
        const auto row = [](const char *name, const char *typed, const char *found) {
            QTest::newRow(name) << QString::fromLatin1(typed) << QString::fromLatin1(found);
        };
        row("a longer text may stay", "x,x2", "x2");
        row("a shorter one goes back", "x3,x", "x2");
        row("after a text that is nowhere", "x,x?,x", "x2");
        row("another text begins anew", "x,5", "x5");
        row("the same text again, once it was given up", "x,,x", "x3");
        row("accepting stays with what was found", "x,!", "x2");
        row("accepting again goes on", "x,!,!", "x3");
        row("accepting what was not looked for yet", "#x,!", "x2");
        row("accepting more than what was looked for", "x,#x3,!", "x3");
        row("the folder where it began is gone", "5,-,x", "x7");
    }
    void typingLooksFromWhereItBegan()
    {
        QFETCH(QString, typed);
        FindHouse house;
        house.view.folder = house.a;
        house.view.selection = IndexSet::single(1);
        TypedSearch search(house.finder);
        QSignalSpy ended(&search, &TypedSearch::ended);
        QString text;
        const auto criteria = [&text] {
            FindCriteria result;
            result.exactString = text;
            return result;
        };
        for (QString step : typed.split(u',')) {
            const bool waits = !step.startsWith(u'#');
            if (step.isEmpty()) {
                search.forget();
            } else if (step == u"!") {
                QCOMPARE(search.accept(text, criteria()), PhotoFinder::Outcome::Found);
            } else if (step == u"-") {
                QVERIFY(house.tree.deleteItem(house.a));
                house.view.folder = house.b;
                house.view.selection = IndexSet::single(0);
            } else {
                ended.clear();
                text = step.remove(u'#');
                search.type(text, criteria());
                if (waits)
                    QTRY_COMPARE(ended.size(), 1);
            }
        }
        QTEST(house.shown(), "found");
    }
};

REGISTER_TEST(TestPhotoFinder)
#include "TestPhotoFinder.moc"
