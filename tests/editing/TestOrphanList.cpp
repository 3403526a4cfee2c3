#include "House.h"
#include "TestRunner.h"

#include "FileCommands.h"
#include "OrphanList.h"

#include <QTest>

/// Picking from a list of orphans of which some are missing files.
class TestOrphanList : public QObject
{
    Q_OBJECT

    House m_house;
    std::shared_ptr<PIFileRef> m_lost;

    static OrphanSearchResult resultOf(const QList<QByteArray> &names, const QMultiMap<qsizetype, QString> &missing)
    {
        OrphanSearchResult result;
        for (const QByteArray &name : names)
            if (!result.orphans.add("sub", name.constData()))
                qFatal("no name: %s", name.constData());
        result.missing = missing;
        return result;
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_house.a->photos() = m_house.photos({QStringLiteral("gone.jpg"), QStringLiteral("away.jpg")});
        m_lost = m_house.a->photos()[0]->fileRef();
        m_house.a->photos()[1]->fileRef()->setVolumeAway(true);
        m_house.finder.bookmarks = {{m_lost->guid(), "g"}, {m_house.a->photos()[1]->fileRef()->guid(), "a"}};
    }

    void whatIsSoughtIsMissingOrAway()
    {
        const auto request = orphanRequest(m_house.library, QStringLiteral("/f"));
        QCOMPARE(request.missing.size(), 1);
        QCOMPARE(request.missing[0].guid, m_lost->guid());
        QCOMPARE(request.away.size(), 1);
        QCOMPARE(request.away[0].bookmark, QByteArray("a"));
        QCOMPARE(QSet<QString>(request.knownPaths.cbegin(), request.knownPaths.cend()),
                 QSet<QString>({QStringLiteral("/gone.jpg"), QStringLiteral("/away.jpg")}));
    }

    void missingFilesAreGivenBackAndOthersAdded()
    {
        OrphanList list(m_house.library, QStringLiteral("/f"),
                        resultOf({"1.jpg", "2.jpg", "3.jpg"}, {{1, m_lost->guid()}}));
        QCOMPARE(list.missingCount(), 1);
        QCOMPARE(list.startRow(), 1);
        QCOMPARE(list.photoText(1), QString::fromUtf8("This is the missing photo “gone.jpg” of “A”."));
        QVERIFY(list.photoText(0).isEmpty());
        auto likely = resultOf({"1.jpg"}, {{0, m_lost->guid()}});
        likely.byContent = {0}; // another copy may stand elsewhere
        QCOMPARE(OrphanList(m_house.library, QStringLiteral("/f"), likely).photoText(0),
                 QString::fromUtf8("This is probably the missing photo “gone.jpg” of “A”."));
        QCOMPARE(list.filesToAdd(), QStringList());
        QCOMPARE(list.filesToReattach().size(), 1);
        QCOMPARE(list.filesToReattach()[0].path, QStringLiteral("/f/sub/2.jpg"));

        list.setAllAdd(true);
        list.setReattached(0, true); // nothing misses that one
        QCOMPARE(list.filesToAdd(), QStringList({QStringLiteral("/f/sub/1.jpg"), QStringLiteral("/f/sub/3.jpg")}));
        list.setReattached(1, false);
        QCOMPARE(list.filesToAdd().size(), 3);
        QVERIFY(list.filesToReattach().isEmpty());
        list.setAdd(2, false);
        QCOMPARE(list.filesToAdd().size(), 2);
    }

    void aCopyOfAPhotoThatIsAwayIsToldAndNotTaken()
    {
        auto result = resultOf({"1.jpg", "2.jpg"}, {{1, m_lost->guid()}});
        result.copiesOfAway = {{0, m_house.a->photos()[1]->fileRef()->guid()}};
        OrphanList list(m_house.library, QStringLiteral("/f"), result);
        QCOMPARE(list.missingCount(), 1);
        QCOMPARE(list.startRow(), 1);
        QCOMPARE(list.photoText(0), QString::fromUtf8("This is probably a copy of the photo “away.jpg” of “A”, the "
                                                      "file of which is on a volume that is not mounted."));
        QCOMPARE(list.filesToReattach().size(), 1);
        list.setAllAdd(true);
        QCOMPARE(list.filesToAdd(), QStringList{QStringLiteral("/f/sub/1.jpg")});
        list.setReattached(0, true); // asked for
        QCOMPARE(list.filesToReattach().size(), 2);
    }

    void allPhotosOfAReattachedFileFollow()
    {
        QTemporaryDir dir;
        QVERIFY(QFile(dir.filePath(QStringLiteral("found.jpg"))).open(QFile::WriteOnly));
        m_house.b->photos() << std::make_shared<PIPhoto>(m_lost);
        OrphanSearchResult result;
        QVERIFY(result.orphans.add({}, "found.jpg"));
        result.missing = {{0, m_lost->guid()}};
        const OrphanList list(m_house.library, dir.path(), result);
        m_house.library.setDirty(false);
        FileCommands::takeMovedFiles(m_house.library, list.filesToReattach());
        QVERIFY(m_house.library.isDirty());
        for (const auto &photo : {m_house.a->photos()[0], m_house.b->photos()[0]})
            QVERIFY(!photo->isFileLost() && photo->fileRef()->path() == dir.filePath(QStringLiteral("found.jpg")));
        // A file that was found while the search ran is missing no more.
        QCOMPARE(OrphanList(m_house.library, dir.path(), result).missingCount(), 0);
    }
};

REGISTER_TEST(TestOrphanList)
#include "TestOrphanList.moc"
