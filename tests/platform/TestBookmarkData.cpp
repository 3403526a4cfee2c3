#include "BookmarkData.h"
#include "TestRunner.h"

#include <QTest>

class TestBookmarkData : public QObject
{
    Q_OBJECT

    static BookmarkData photo();
    static BookmarkData folder();

private Q_SLOTS:
    void comesBackUnchanged();
    void isStoredAsItAlwaysWas();
    void refusesEveryOtherLength();
    void refusesOddBytes_data();
    void refusesOddBytes();
    void survivesAnyByteChanged();
    void doesNotEncodeWhatDoesNotFit();
};

BookmarkData TestBookmarkData::photo()
{
    BookmarkData data;
    data.file = {FileKind::File, 0x1122334455667788, {1, "handle"}, FileTime{-5, 999'999'999}, 7, {8, 9}};
    data.fingerprint = FileFingerprint{0xFEDCBA9876543210, 0x0123456789ABCDEF};
    data.volume = "uuid:1";
    data.volumePath = "/a\xff.jpg";
    data.mountPoint = "/mnt";
    data.givenPath = "/home/link.jpg";
    return data;
}

BookmarkData TestBookmarkData::folder()
{
    BookmarkData data;
    data.file.kind = FileKind::Folder;
    data.file.inode = 2;
    data.volume = "source:nfs4:server:/x";
    data.volumePath = "/";
    data.mountPoint = "/";
    return data;
}

void TestBookmarkData::comesBackUnchanged()
{
    for (const BookmarkData &data : {photo(), folder()})
        QCOMPARE(BookmarkData::decode(data.encode()), data);
}

void TestBookmarkData::isStoredAsItAlwaysWas()
{
    const QByteArray bytes = QByteArray::fromHex("46426d6b 01 01 03 00"
                                                 "8877665544332211"          // inode
                                                 "fbffffffffffffff ffc99a3b" // birth
                                                 "0700000000000000"          // size
                                                 "0800000000000000 09000000" // modified
                                                 "1032547698badcfe efcdab8967452301"
                                                 "01000000 0600 68616e646c65" // handle
                                                 "0600 757569643a31"          // volume
                                                 "0700 2f61ff2e6a7067"        // path on the volume
                                                 "0400 2f6d6e74"              // mount point
                                                 "0e00 2f686f6d652f6c696e6b2e6a7067");
    QCOMPARE(photo().encode().toHex(), bytes.toHex());
}

void TestBookmarkData::refusesEveryOtherLength()
{
    const QByteArray bytes = photo().encode();
    for (qsizetype length = 0; length < bytes.size(); ++length)
        QVERIFY2(!BookmarkData::decode(bytes.first(length)), QByteArray::number(length).constData());
    QVERIFY(!BookmarkData::decode(bytes + '\0'));
}

void TestBookmarkData::refusesOddBytes_data()
{
    QTest::addColumn<int>("at");
    QTest::addColumn<int>("byte");
    QTest::newRow("magic") << 0 << int('f');
    QTest::newRow("later version") << 4 << 2;
    QTest::newRow("kind that there is not") << 5 << 3;
    QTest::newRow("folder with a fingerprint") << 5 << 2;
    QTest::newRow("unknown flag") << 6 << 7;
    QTest::newRow("reserved byte") << 7 << 1;
    QTest::newRow("a second of more than its nanoseconds") << 27 << 0x3c;
    QTest::newRow("handle longer than all") << 69 << 0xff;
    QTest::newRow("relative path") << 86 << int('a');
    QTest::newRow("null character in the path") << 87 << 0;
}

void TestBookmarkData::refusesOddBytes()
{
    QFETCH(int, at);
    QFETCH(int, byte);
    QByteArray bytes = photo().encode();
    bytes[at] = static_cast<char>(byte);
    QVERIFY(!BookmarkData::decode(bytes));
}

void TestBookmarkData::survivesAnyByteChanged()
{
    const QByteArray good = photo().encode();
    int accepted = 0;
    for (qsizetype at = 0; at < good.size(); ++at)
        for (int byte = 0; byte < 256; ++byte) {
            QByteArray bytes = good;
            bytes[at] = static_cast<char>(byte);
            const auto data = BookmarkData::decode(bytes);
            accepted += data ? 1 : 0;
            // Whatever is accepted is a bookmark that says exactly that.
            if (data && data->file.birth && data->fingerprint)
                QCOMPARE(data->encode(), bytes);
        }
    QVERIFY(accepted > 0);
}

void TestBookmarkData::doesNotEncodeWhatDoesNotFit()
{
    BookmarkData data = photo();
    data.volumePath = '/' + QByteArray(65'535, 'a');
    QVERIFY(data.encode().isEmpty());
}

REGISTER_TEST(TestBookmarkData)
#include "TestBookmarkData.moc"
