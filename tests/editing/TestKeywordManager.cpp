#include "TestRunner.h"

#include "UndoHouse.h"

#include "KeywordEdits.h"
#include "KeywordManager.h"
#include "LibraryNotifications.h"

#include <QTest>

/// Keywords of many photos changed in one go.
class TestKeywordManager : public QObject
{
    Q_OBJECT

    /// Photos "1" and "2" in folder A, "2" also in folder B; what was told.
    struct Scene : UndoHouse
    {
        PIGroup::PhotoList both = photos({QStringLiteral("1"), QStringLiteral("2")});
        QStringList told;
        std::vector<NotificationCenter::Observer> observers;

        Scene(const char *first, const char *second)
        {
            both.first()->setKeywordList(QString::fromUtf8(first), library.keywords());
            both.last()->setKeywordList(QString::fromUtf8(second), library.keywords());
            a->photos() = both;
            b->photos() << both.last();
            view.folder = a;
            for (const QString &name : {kKeywordsNotification, kRedetailNotification})
                observers.push_back(notifications.observe(name, [this, name](const auto &) { told << name; }));
        }
        [[nodiscard]] QString words() const
        {
            return both.first()->keywordList(library.keywords()) + u'|' + both.last()->keywordList(library.keywords());
        }
        static QString text(const KeywordManager &keywords)
        {
            QStringList rows;
            for (const auto &row : keywords.rows())
                rows << row.key + (row.isRenamed ? u"*" : u"") + (row.isToBeDeleted ? u"!" : u"");
            return rows.join(u' ');
        }
    };
    static QString both() { return kKeywordsNotification + kRedetailNotification; }

private Q_SLOTS:
    void rowsFollowWhatIsMeantWithThem()
    {
        Scene scene("zoo \"beach hut\"", "cat");
        KeywordManager keywords(scene.undoable, scene.manager);
        QCOMPARE(Scene::text(keywords), QStringLiteral("\"beach hut\" cat zoo"));
        keywords.setKey(1, QStringLiteral("dog"));
        keywords.setKey(1, {});
        keywords.setKey(2, QStringLiteral("ZOO"));
        keywords.toggleDeleted(0);
        QCOMPARE(Scene::text(keywords), QStringLiteral("\"beach hut\"! dog*! ZOO*"));
        keywords.setKey(2, QStringLiteral("zoo"));
        keywords.toggleDeleted(0);
        QCOMPARE(Scene::text(keywords), QStringLiteral("\"beach hut\" dog*! zoo"));

        scene.library.keywords().append(QStringLiteral("\"camp\""));
        scene.library.keywords().append(QStringLiteral("yak"));
        while (const auto place = keywords.placeOfNewKeyword())
            keywords.insertNewKeyword(*place);
        QCOMPARE(Scene::text(keywords), QStringLiteral("\"beach hut\" \"camp\" dog*! yak zoo"));
        scene.library.keywords().append(QStringLiteral("late")); // nobody has told yet
        QVERIFY(keywords.commitChanges());
        QCOMPARE(scene.library.keywords().words().join(u' '),
                 QStringLiteral("zoo \"beach hut\" dog \"camp\" yak late"));
        QCOMPARE(scene.words(), QStringLiteral("zoo \"beach hut\"|"));
    }

    void aCommitChangesEveryPhotoForGood()
    {
        Scene scene("cat dog cat", "dog sea cat");
        QVERIFY(scene.record(UndoAction::PhotoList, UndoName::SortFolder, scene.a));
        scene.library.setDirty(false);
        KeywordManager keywords(scene.undoable, scene.manager);
        keywords.toggleDeleted(0);
        keywords.setKey(2, QStringLiteral("Dog"));
        QVERIFY(keywords.commitChanges());
        QCOMPARE(scene.words(), QStringLiteral("dog|dog Dog")); // equal texts are not merged
        QCOMPARE(scene.library.keywords().words().join(u' '), QStringLiteral("cat dog Dog"));
        QCOMPARE(scene.library.keywords().indexOf(QStringLiteral("DOG")), 1);
        QVERIFY(!scene.library.keywords().indexOf(QStringLiteral("sea")));
        QVERIFY(!scene.manager.isUndoAvailable());
        QVERIFY(scene.library.isDirty());
        QCOMPARE(scene.told.join(QString()), both());
    }

    void whatChangesNothingKeepsTheHistory()
    {
        Scene scene("cat", "cat");
        scene.library.keywords().append(QStringLiteral("unused"));
        QVERIFY(scene.record(UndoAction::PhotoList, UndoName::SortFolder, scene.a));
        KeywordManager keywords(scene.undoable, scene.manager);
        keywords.setKey(0, QStringLiteral("cat"));
        keywords.toggleDeleted(1);
        QVERIFY(keywords.commitChanges());
        QVERIFY(scene.manager.isUndoAvailable() && scene.told.isEmpty());

        keywords.toggleDeleted(0);
        keywords.setKey(1, QStringLiteral("used"));
        scene.manager.setDelegate(nullptr);
        QVERIFY(!keywords.commitChanges());
        QCOMPARE(scene.words(), QStringLiteral("cat|cat"));
        QCOMPARE(scene.library.keywords().words().last(), QStringLiteral("unused"));
        QVERIFY(scene.told.isEmpty());
    }

    void aKeywordIsAddedWhereItIsMissing_data()
    {
        QTest::addColumn<QString>("keyword");
        QTest::addColumn<QString>("words");
        QTest::addColumn<QString>("undo");
        const auto row = [](const char *name, const char *keyword, const char *words, const char *undo) {
            QTest::newRow(name) << QString::fromUtf8(keyword) << QString::fromUtf8(words) << QString::fromUtf8(undo);
        };
        row("a new one", "sea", "category sea|boat sea", "Undo Keywords");
        row("part of another, any case", " Cat ", "category|boat Cat", "Undo Keywords");
        row("several", "new york", "category new york|boat new york", "Undo Keywords");
        row("a phrase", "\"new york\"", "category \"new york\"|boat \"new york\"", "Undo Keywords");
        row("a quote without end", "\"new york", "category \"new york|boat \"new york", "Undo Keywords");
        row("markup", "<b>x</b>", "category <b>x< b>|boat <b>x< b>", "Undo Keywords");
        row("nothing", "", "category|boat", "Undo");
        row("blanks", " \t\n", "category|boat", "Undo");
        row("nothing that could be one", "\"\" x !", "category|boat", "Undo");
    }
    void aKeywordIsAddedWhereItIsMissing()
    {
        Scene scene("category", "boat");
        QFETCH(QString, keyword);
        QVERIFY(KeywordEdits::addKeyword(scene.undoable, scene.both, scene.a, keyword));
        QTEST(scene.words(), "words");
        QTEST(scene.manager.validateState(UndoDirection::Undo).title, "undo");
        const bool isChanged = scene.manager.isUndoAvailable();
        QCOMPARE(scene.told.join(QString()), isChanged ? both() : QString());
        if (isChanged)
            scene.manager.undo();
        QCOMPARE(scene.words(), QStringLiteral("category|boat"));
        QVERIFY(!scene.manager.isUndoAvailable()); // it was one step
    }

    void onlyPhotosStillThereGetTheKeyword()
    {
        Scene scene("", "");
        scene.a->photos().removeFirst();
        QVERIFY(KeywordEdits::addKeyword(scene.undoable, scene.both, scene.a, QStringLiteral("sea")));
        QCOMPARE(scene.words(), QStringLiteral("|sea"));
        QVERIFY(KeywordEdits::addKeyword(scene.editor, {scene.both.last()}, scene.a, QStringLiteral("one")));
        QCOMPARE(scene.recorder.asked, QStringList{QStringLiteral("0/16/")});
        scene.recorder.refuses = true;
        QVERIFY(!KeywordEdits::addKeyword(scene.editor, scene.both, scene.a, QStringLiteral("two")));
        QCOMPARE(scene.recorder.asked.last(), QStringLiteral("4/16/A"));
        QCOMPARE(scene.words(), QStringLiteral("|sea one"));
    }

    void aThousandKeywordsOnAPhoto()
    {
        QStringList many;
        for (int i = 0; i < 1000; ++i)
            many << QStringLiteral("word%1").arg(i) + QString(i == 500 ? 10'000 : 0, u'o');
        Scene scene("", "");
        QVERIFY(KeywordEdits::addKeyword(scene.undoable, scene.both, scene.a, many.join(u' ')));
        QCOMPARE(scene.both.last()->keywordIndexes().size(), 1000);
        KeywordManager keywords(scene.undoable, scene.manager);
        for (qsizetype row = 1; row < keywords.rows().size(); ++row)
            keywords.toggleDeleted(row);
        QVERIFY(keywords.commitChanges());
        QCOMPARE(scene.words(), QStringLiteral("word0|word0"));
    }
};

REGISTER_TEST(TestKeywordManager)
#include "TestKeywordManager.moc"
