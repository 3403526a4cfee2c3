#include "LibraryFile.h"
#include "LibrarySupport.h"
#include "PhotoClipboard.h"
#include "TestRunner.h"

#include <QTest>

class TestPhotoClipboard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { LibraryFile::registerTags(); }
    void photosComeBackAsPhotosOfTheirOwn();
    void whatIsNoPhotoIsRefused_data();
    void whatIsNoPhotoIsRefused();
};

void TestPhotoClipboard::photosComeBackAsPhotosOfTheirOwn()
{
    TestLibrary test;
    test.addFolder();
    const auto one = test.addPhoto(QStringLiteral("/pictures/one.jpg"));
    const auto two = test.addPhoto(QStringLiteral("/pictures/two.jpg"));
    test.library.keywords().setWords({QStringLiteral("sea")});
    one->setCaption(QStringLiteral("<one> & only"));
    one->setCropRect({1, 2, 30, 40});
    one->setThumbnailDate(1234);
    two->setMarked(true);
    two->setKeywordIndexes({0, 7});

    const auto three = std::make_shared<PIPhoto>(); // has no file at all

    const QByteArray xml = PhotoClipboard::archive({one, two, three});
    const auto pasted = PhotoClipboard::unarchive(xml, test.library);
    QVERIFY(pasted);
    QCOMPARE(pasted->size(), 3);
    QCOMPARE(pasted->first()->caption(), one->caption());
    QCOMPARE(pasted->first()->cropRect(), one->cropRect());
    QCOMPARE(pasted->first()->fileRef(), one->fileRef());
    QCOMPARE(pasted->first()->thumbnailDate(), quint64(0));
    QVERIFY(pasted->at(1)->isMarked());
    QCOMPARE(pasted->at(1)->keywordIndexes(), QList<quint64>{0});
    QVERIFY(pasted->first()->guid() != one->guid() && pasted->first()->guid() != pasted->last()->guid());

    TestLibrary other;
    const auto elsewhere = PhotoClipboard::unarchive(xml, other.library);
    QVERIFY(elsewhere);
    QCOMPARE(elsewhere->size(), 1); // the one that names no file
}

void TestPhotoClipboard::whatIsNoPhotoIsRefused_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no XML") << QByteArray("photos");
    QTest::newRow("other root") << QByteArray("<?xml version=\"1.0\"?>\n<folder>\n<photo id=\"a\"/>\n</folder>\n");
    QTest::newRow("other element first") << QByteArray("<?xml version=\"1.0\"?>\n<photos>\n<group/>\n</photos>\n");
    QTest::newRow("cut off") << QByteArray("<?xml version=\"1.0\"?>\n<photos>\n<photo id=\"a\" ref=\"b\">\n<caption>x");
    QTest::newRow("not UTF-8") << QByteArray(
        "<?xml version=\"1.0\"?>\n<photos>\n<photo id=\"\xff\xfe\"/>\n</photos>\n");
}

void TestPhotoClipboard::whatIsNoPhotoIsRefused()
{
    QFETCH(QByteArray, xml);
    TestLibrary test;
    QVERIFY(!PhotoClipboard::unarchive(xml, test.library));
}

REGISTER_TEST(TestPhotoClipboard)
#include "TestPhotoClipboard.moc"
