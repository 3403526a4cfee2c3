#include "LibrarySupport.h"
#include "PIFolder.h"
#include "PhotoMatcher.h"
#include "PhotoWalk.h"
#include "TestRunner.h"

#include <QTest>

#include <functional>
#include <map>

Q_DECLARE_METATYPE(FindCriteria)

/// Which photos a search finds, and in which order it comes to them.
class TestFind : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void photosMatchByTheirWords_data()
    {
        QTest::addColumn<FindCriteria>("criteria");
        QTest::addColumn<QString>("found"); ///< the photos below, by their letters
        using Change = std::function<void(FindCriteria &)>;
        const auto row = [](const char *name, const Change &change, const char *found) {
            FindCriteria criteria;
            change(criteria);
            QTest::newRow(name) << criteria << QString::fromLatin1(found);
        };
        const auto exact = [](const char *text, bool captions = true, bool fileNames = true, bool keywords = true) {
            return [=](FindCriteria &criteria) {
                criteria.exactString = QString::fromUtf8(text);
                criteria.searchCaptions = captions;
                criteria.searchFileNames = fileNames;
                criteria.searchKeywords = keywords;
            };
        };
        const auto all = [](const char *text) {
            return [=](FindCriteria &criteria) { criteria.allWordsString = QString::fromUtf8(text); };
        };
        const auto oneBut = [](const char *text, const char *none) {
            return [=](FindCriteria &criteria) {
                criteria.oneWordString = QString::fromUtf8(text);
                criteria.noneWordString = QString::fromUtf8(none);
            };
        };
        row("one text, any case", exact("RED C"), "ad");
        row("all words in one text", all("car red"), "acd");
        row("all words in keywords, spread", all("car barn"), "c");
        row("words are parts of words", all("ar ed"), "acd");
        row("one of the words", oneBut("nothing BARN", ""), "c");
        row("none of the words alone finds nothing", oneBut("", "red"), "");
        row("not with an excluded word anywhere", oneBut("red", "tree"), "abc");
        row("an empty word cannot occur", all("red  car"), "");
        row("an empty word excludes nothing", oneBut("red ", "  "), "abcd");
        row("without extensions", exact("jpg"), "");
        row("file names", exact("img_7"), "b");
        row("only in captions", exact("red", true, false, false), "ab");
        row("only in file names", exact("red", false, true, false), "d");
        row("only in keywords", exact("red", false, false, true), "c");
        row("nowhere", exact("red", false, false, false), "");
        row("beyond Latin", exact("ÄRMEL"), "e");
        row("accents of their own", exact("MU\xcc\x88LLER"), "e");
        row("a tab parts words, and the last may be empty", all("red\tcar "), "");
    }
    void photosMatchByTheirWords()
    {
        TestLibrary library;
        library.addFolder();
        const auto add = [&](const char *file, const char *caption, const char *keywords) {
            const auto photo = library.addPhoto(QString::fromUtf8(file));
            photo->setCaption(QString::fromUtf8(caption));
            photo->setKeywordList(QString::fromUtf8(keywords), library.library.keywords());
            return photo;
        };
        const std::map<char, std::shared_ptr<PIPhoto>> photos{
            {'a', add("/p/1.jpg", "A red car", "")},
            {'b', add("/p/img_7.jpg", "red", "car \"in town\"")},
            {'c', add("/p/3.jpg", "", "\"red barn\" car")},
            {'d', add("/p/red car.jpg", "", "tree")},
            {'e', add("/p/mu\xcc\x88ller.jpg", "Ärmelkanal, Müller", "")},
        };
        QFETCH(FindCriteria, criteria);
        const PhotoMatcher matcher(criteria, library.library.keywords());
        QString found;
        for (const auto &[letter, photo] : photos) {
            if (matcher.matches(*photo))
                found += QLatin1Char(letter);
        }
        QTEST(found, "found");
    }

    void aWalkComesToPhotosInTheOrderOfTheTree()
    {
        TestLibrary library;
        auto &groups = library.library.groups();
        groups.clear();
        const auto addGroup = [&](GroupType type) {
            groups << std::make_shared<PIGroup>(QStringLiteral("G"));
            groups.last()->setGroupType(type);
            return groups.last();
        };
        const auto add = [&](PIGroup &above, const char *photos) {
            const auto folder = above.makeNewFolder();
            for (const char *name = photos; *name; ++name) {
                const auto photo = std::make_shared<PIPhoto>();
                photo->setCaption(QString(QLatin1Char(*name)));
                folder->photos() << photo;
            }
            return folder;
        };
        const auto first = addGroup(GroupType::Normal);
        const auto upper = add(*first, "ab");
        const auto lower = add(*upper, "");
        add(*lower, "c");
        add(*upper, "d");
        add(*first, "e");
        addGroup(GroupType::Normal);
        const auto results = add(*addGroup(GroupType::Search), "xy");
        add(*addGroup(GroupType::Normal), "f");

        const auto read = [](PhotoWalk walk) {
            QString text;
            while (const auto place = walk.next([](const PIPhoto &photo) { return photo.caption() != u"d"; }))
                text += std::as_const(*place->folder).photos().at(place->photo)->caption();
            return text;
        };
        QCOMPARE(read(PhotoWalk(groups)), QStringLiteral("abcef"));
        QCOMPARE(read(PhotoWalk(groups, {upper, 1})), QStringLiteral("bcef"));
        QCOMPARE(read(PhotoWalk(groups, {lower, 0})), QStringLiteral("cef"));
        QCOMPARE(read(PhotoWalk(groups, {results, 1})), QStringLiteral("f")); // never among results
        upper->folders().removeFirst();
        QCOMPARE(read(PhotoWalk(groups, {lower, 0})), QString()); // it is gone
        QCOMPARE(read(PhotoWalk(groups, {std::make_shared<PIFolder>(), 0})), QString());
        groups.clear();
        QCOMPARE(read(PhotoWalk(groups)), QString());
    }
};

REGISTER_TEST(TestFind)
#include "TestFind.moc"
