#include "LibraryFile.h"
#include "LibrarySupport.h"
#include "TestRunner.h"

#include <QProcess>
#include <QStandardPaths>

/// Reading files written by hand, and saving what was read.
class TestLibraryFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { LibraryFile::registerTags(); }

    void readsWhatItCan_data()
    {
        QTest::addColumn<QString>("failure");
        QTest::addColumn<bool>("cutShort");
        QTest::addColumn<QString>("expected"); // groups, photos on show, guids told of, effect sets
        const QString fine;
        const QString corrupt = QStringLiteral("The database contents have been corrupted.");
        const QString later = QStringLiteral("The database was created by a leter version of Tamsel Photo. Please go "
                                             "to our website for an update.");
        const QString nothing = QStringLiteral("/0/0/");
        const QString all = QStringLiteral("First/2/2/");

        QTest::newRow("no-such-file") << fine << false << nothing;
        QTest::newRow("no-xml") << QStringLiteral("The database could not be opened. (null)") << false << nothing;
        QTest::newRow("version-one") << later << false << nothing;
        QTest::newRow("no-version") << fine << false << all;
        QTest::newRow("strange-root") << corrupt << false << nothing;
        QTest::newRow("empty-root") << fine << false << nothing;
        QTest::newRow("unknown-sections") << fine << false << all;
        QTest::newRow("effects-before-structure") << fine << false << QStringLiteral("/0/2/Warm");
        QTest::newRow("effects-that-end-early") << fine << false << QStringLiteral("First/0/0/Warm");
        QTest::newRow("effect-of-unknown-type") << fine << false << QStringLiteral("First/0/0/Warm");
        QTest::newRow("photos-end-midway") << corrupt << false << nothing;
        QTest::newRow("photos-cut-in-a-tag") << corrupt << false << nothing;
        QTest::newRow("keys-end-midway") << corrupt << false << nothing;
        QTest::newRow("refs-end-midway") << corrupt << false << nothing;
        QTest::newRow("ref-out-of-range") << corrupt << false << nothing;
        QTest::newRow("ref-negative") << corrupt << false << nothing;
        QTest::newRow("photo-without-ref") << fine << false << all;
        QTest::newRow("photo-position-out-of-range") << corrupt << false << QStringLiteral("First/2/0/");
        QTest::newRow("photo-position-negative") << corrupt << false << QStringLiteral("First/2/0/");
        QTest::newRow("structure-with-a-stranger") << corrupt << false << QStringLiteral("First/2/0/");
        QTest::newRow("structure-ends-midway") << corrupt << false << nothing;
        QTest::newRow("cut-between-sections") << fine << true << QStringLiteral("/0/2/");
        QTest::newRow("no-closing-root") << fine << true << all;
        QTest::newRow("no-last-line-feed") << fine << false << all;
        QTest::newRow("empty-elements") << fine << false << QStringLiteral("Empty,First/2/2/");
        QTest::newRow("hostile-guid") << fine << false << all;
        QTest::newRow("hostile-numbers") << fine << false << all;
    }
    void readsWhatItCan()
    {
        QFETCH(QString, failure);
        QFETCH(bool, cutShort);
        QFETCH(QString, expected);
        TestLibrary test;
        const auto result =
            LibraryFile::load(dataFile(QLatin1String(QTest::currentDataTag()) + QLatin1String(".xml")), test.library);
        QStringList groups;
        for (const auto &group : std::as_const(test.library.groups()))
            groups.append(group->name());
        int photos = 0;
        test.library.forEachPhoto([&](const auto &) { ++photos; });
        const QString found =
            QStringList{groups.join(u','), QString::number(photos), QString::number(result.photoGuids.size()),
                        QStringList(test.library.effectSets().keys()).join(u',')}
                .join(u'/');
        QCOMPARE(result.failure, failure);
        QCOMPARE(result.cutShort, cutShort);
        QCOMPARE(found, expected);
    }

    void harmlessWhateverTheNumbers()
    {
        TestLibrary test;
        const auto result = LibraryFile::load(dataFile(QStringLiteral("hostile-numbers.xml")), test.library);
        QVERIFY(!result.restore.folder && !result.restore.photo);
        const auto &photo = test.library.groups().first()->lastFolder()->photos().first();
        QVERIFY(photo->cropRect().isEmpty());
        QCOMPARE(photo->thumbnailDate(), quint64(0));
        QCOMPARE(photo->keywordList(test.library.keywords()), QString());
        QVERIFY(LibraryFile::save(test.path(QStringLiteral("Photo.xml")), test.library, {}));
    }

    void guidsFromOutsideCannotLeaveTheCacheFolder()
    {
        TestLibrary test;
        const auto result = LibraryFile::load(dataFile(QStringLiteral("hostile-guid.xml")), test.library);
        QVERIFY(result.failure.isEmpty());
        test.library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) {
            QCOMPARE(photo->guid().size(), 36);
            QCOMPARE(QFileInfo(test.library.thumbnails().thumbnailPath(*photo)).absolutePath(), test.folder.path());
        });
    }

    void refusesFoldersNestedWithoutEnd()
    {
        QByteArray text = "<?xml version=\"1.0\"?>\n<Photo>\n<structure>\n<group>\n";
        for (int i = 0; i < 100'000; ++i)
            text += "<folders>\n<folder id=\"x\">\n";
        TestLibrary test;
        const QString path = test.path(QStringLiteral("deep.xml"));
        QFile file(path);
        QVERIFY(file.open(QFile::WriteOnly) && file.write(text) == text.size() && file.flush());
        QCOMPARE(LibraryFile::load(path, test.library).failure,
                 QStringLiteral("The database contents have been corrupted."));
    }

    void keepsFoldersAsDeepAsADiskHasThem()
    {
        TestLibrary test;
        std::shared_ptr<PIGroup> innermost = test.addFolder();
        for (int i = 1; i < 2048; ++i)
            innermost = innermost->makeNewFolder();
        const QString path = test.path(QStringLiteral("Photo.xml"));
        QVERIFY(LibraryFile::save(path, test.library, {}));
        TestLibrary again;
        QCOMPARE(LibraryFile::load(path, again.library).failure, QString());
        QCOMPARE(describe(again.library), describe(test.library));
    }

    void savesByteForByteWhatItRead()
    {
        TestLibrary test;
        const QString original = dataFile(QStringLiteral("whole.xml"));
        const auto result = LibraryFile::load(original, test.library);
        QCOMPARE(result.failure, QString());
        QVERIFY(!result.cutShort);
        QCOMPARE(test.finder.kept, QStringList({QStringLiteral("R-FJORD"), QStringLiteral("R-CAT")}));
        const auto &restore = result.restore;
        QVERIFY(restore.folder && restore.photo && restore.selection);
        QCOMPARE(restore.folder->name(), QStringLiteral("Boats"));
        QCOMPARE(restore.photo, restore.folder->photos().last());
        QCOMPARE(restore.photo, test.library.groups().first()->lastFolder()->photos().last());
        QCOMPARE(restore.photo->guid(), QStringLiteral("P-TWO"));

        const QString path = test.path(QStringLiteral("Photo.xml"));
        test.library.setDirty(true);
        QVERIFY(LibraryFile::save(path, test.library, {restore.folder, restore.photo, *restore.selection}));
        QVERIFY(!test.library.isDirty());
        QCOMPARE(contentOf(path), contentOf(original));
    }

    void acceptedByAnXmlParser()
    {
        const QString xmllint = QStandardPaths::findExecutable(QStringLiteral("xmllint"));
        if (xmllint.isEmpty())
            QSKIP("xmllint is not installed");
        TestLibrary test;
        const auto photo = test.addPhoto(QStringLiteral("/pictures/a\"b'<>&\x01\u00e4.jpg"));
        photo->setCaption(QStringLiteral("]]> \x1f <!-- ") + QChar(0xD800));
        const QString path = test.path(QStringLiteral("Photo.xml"));
        QVERIFY(LibraryFile::save(path, test.library, {}));
        QCOMPARE(QProcess::execute(xmllint, {QStringLiteral("--noout"), path}), 0);
    }

    void onlyKeywordsInUseAreSaved()
    {
        TestLibrary test;
        test.library.keywords().setWords({QStringLiteral("a1"), QStringLiteral("b2"), QStringLiteral("c3")});
        const auto photo = test.addPhoto(QStringLiteral("/pictures/a.jpg"));
        const QString path = test.path(QStringLiteral("Photo.xml"));
        QVERIFY(LibraryFile::save(path, test.library, {}));
        QVERIFY(contentOf(path).contains("\t<keys></keys>\n"));
        photo->setKeywordIndexes({2, 7});
        QVERIFY(LibraryFile::save(path, test.library, {}));
        QVERIFY(contentOf(path).contains("<key seq=\"0\" keyword=\"c3\"></key>\n\t</keys>"));
        QVERIFY(contentOf(path).contains("\t\t\t<keys>0</keys>\n"));
    }

    void windowMayShowWhatIsNotInTheLibrary()
    {
        TestLibrary test;
        test.addPhoto(QStringLiteral("/pictures/a.jpg"));
        const QString path = test.path(QStringLiteral("Photo.xml"));
        const auto folder = std::make_shared<PIFolder>();
        QVERIFY(LibraryFile::save(path, test.library, {folder, std::make_shared<PIPhoto>(), {}}));
        QVERIFY(contentOf(path).contains("\t\t<folder>-1</folder>\n\t\t<photo>-1</photo>\n\t</window>"));
        TestLibrary again;
        const auto restore = LibraryFile::load(path, again.library).restore;
        QVERIFY(!restore.folder && !restore.photo);
    }
};

REGISTER_TEST(TestLibraryFile)
#include "TestLibraryFile.moc"
