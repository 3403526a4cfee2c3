#include "Decoder.h"
#include "FakeFileFinder.h"
#include "FileDates.h"
#include "FileFinder.h"
#include "ImageCache.h"
#include "PIFileRef.h"
#include "TestRunner.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

bool writePicture(const QString &path, QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(0xff335577);
    return image.save(path, "PNG");
}

}

class TestPIFileRef : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    FakeFileFinder m_finder;
    std::unique_ptr<ImageCache> m_cache;
    PIFileRef::Environment m_environment;

    QString path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }

private Q_SLOTS:
    void initTestCase() { Decoder::initialize(); }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_finder = {};
        m_cache = std::make_unique<ImageCache>();
        m_environment = {&m_finder, m_cache.get()};
    }

    void aNewReferenceIsLocatedUnderAGuidOfItsOwn()
    {
        const PIFileRef a(QStringLiteral("/p/a.jpg"), m_environment);
        const PIFileRef b(QStringLiteral("/p/a.jpg"), m_environment);
        QCOMPARE(a.guid().size(), 36);
        QVERIFY(a.guid() != b.guid());
        QCOMPARE(m_finder.calls, QStringList(2, QStringLiteral("locate /p/a.jpg")));
        QVERIFY(!a.isFileLost());
        QCOMPARE(a.saveIndex(), quint64(0));
    }

    void aLostReferenceKeepsItsPath()
    {
        m_finder.finds = false;
        m_finder.movedTo = QStringLiteral("/q/b.jpg");
        PIFileRef ref(QStringLiteral("/p/a.jpg"), m_environment);
        QVERIFY(ref.isFileLost());
        QCOMPARE(ref.path(), QStringLiteral("/p/a.jpg"));
        m_finder.finds = true;
        ref.setPath(QStringLiteral("/p/c.jpg"));
        QVERIFY(!ref.isFileLost());
        QCOMPARE(ref.path(), QStringLiteral("/q/b.jpg")); // found elsewhere
        QCOMPARE(m_finder.calls.last(), QStringLiteral("relocate /p/c.jpg"));
    }

    void factsAreReadOnceAndAgainAfterAChangeOfPath()
    {
        QVERIFY(writeFile(path("a.jpg"), QByteArray(100, 'a')) && writeFile(path("b.jpg"), QByteArray(7, 'b')));
        QVERIFY(FileDates::setDate(path("a.jpg"), 1'000'000'007) && FileDates::setDate(path("b.jpg"), 86'400));
        PIFileRef ref(path("a.jpg"), m_environment);
        QCOMPARE(ref.creationTime(), 1'000'000'007.0);
        QCOMPARE(ref.fileSize(), quint64(100));
        QVERIFY(writeFile(path("a.jpg"), "shorter"));
        QCOMPARE(ref.fileSize(), quint64(100));
        ref.setPath(path("b.jpg"));
        QCOMPARE(ref.fileSize(), quint64(7));
        QCOMPARE(ref.creationTime(), 86'400.0);
        ref.setPath(path("a.jpg"));
        ref.setFileLost(true); // what cannot be found has no facts, even if something stands there
        QCOMPARE(ref.fileSize(), quint64(0));
        QCOMPARE(ref.creationTime(), 0.0);
    }

    void theImageComesFromTheCacheFirst()
    {
        PIFileRef ref(path("gone.png"), m_environment);
        QVERIFY(ref.image().isNull());
        const Image stored = Image::fromPixels(QImage(3, 2, QImage::Format_RGB32));
        m_cache->storeImage(stored, ref.guid());
        m_finder.calls.clear();
        QVERIFY(ref.image().isSameAs(stored));
        QVERIFY(m_finder.calls.isEmpty());
    }

    void theImageIsReadFromThePlaceWhereTheFileIsFound()
    {
        QVERIFY(writePicture(path("a.png"), {30, 20}) && writePicture(path("moved.png"), {50, 40}));
        PIFileRef ref(path("a.png"), m_environment);
        QCOMPARE(ref.knownPhotoSize(), QSizeF(0, 0));
        QCOMPARE(ref.photoSize(), QSizeF(30, 20));
        QCOMPARE(m_cache->imageForGuid(ref.guid()).path(), path("a.png"));

        const quint64 oldSize = ref.fileSize();
        m_cache->storeImage({}, ref.guid());
        m_finder.movedTo = path("moved.png");
        QCOMPARE(ref.image().size(), QSize(50, 40));
        QCOMPARE(ref.path(), path("moved.png"));
        QCOMPARE(ref.knownPhotoSize(), QSizeF(50, 40));
        QVERIFY(ref.fileSize() != oldSize);
    }

    void aHandleOnTheFormerPlaceIsNotAnswered()
    {
        QVERIFY(writePicture(path("a.png"), {30, 20}));
        PIFileRef ref(path("a.png"), m_environment);
        QVERIFY(!ref.image().isNull());
        QVERIFY(QFile::rename(path("a.png"), path("b.png")));
        ref.setPath(path("b.png"));
        QCOMPARE(ref.image().path(), path("b.png"));
        QVERIFY(ref.image().pixels());
    }

    void aLostFileHasNoImageUntilItIsBack()
    {
        QVERIFY(writePicture(path("a.png"), {30, 20}));
        PIFileRef ref(path("a.png"), m_environment);
        m_finder.finds = false;
        QVERIFY(ref.image().isNull());
        QVERIFY(ref.isFileLost());
        m_finder.finds = true;
        QVERIFY(!ref.image().isNull());
        QVERIFY(!ref.isFileLost());
        QVERIFY(writeFile(path("b.png"), "no picture"));
        ref.setPath(path("b.png"));
        QVERIFY(ref.image().isNull());
        QVERIFY(!ref.isFileLost());
    }

    void thePathAloneFindsOnlyFiles_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("found");
        QTest::newRow("file") << QStringLiteral("a file ü.jpg") << true;
        QTest::newRow("link to a file") << QStringLiteral("link.jpg") << true;
        QTest::newRow("link to nothing") << QStringLiteral("broken.jpg") << false;
        QTest::newRow("folder") << QStringLiteral("folder.jpg") << false;
        QTest::newRow("pipe") << QStringLiteral("pipe.jpg") << false;
        QTest::newRow("nothing") << QStringLiteral("nothing.jpg") << false;
        QTest::newRow("another case") << QStringLiteral("A file ü.jpg") << false;
        QTest::newRow("NUL behind a file's name") << QStringLiteral("a file ü.jpg") + QChar(u'\0') + u'x' << false;
    }
    void thePathAloneFindsOnlyFiles()
    {
        QFETCH(QString, name);
        QFETCH(bool, found);
        QVERIFY(writeFile(path("a file ü.jpg"), "a"));
        QVERIFY(QFile::link(path("a file ü.jpg"), path("link.jpg")));
        QVERIFY(QFile::link(path("nowhere"), path("broken.jpg")));
        QVERIFY(::mkdir(QFile::encodeName(path("folder.jpg")).constData(), 0700) == 0);
        QVERIFY(::mkfifo(QFile::encodeName(path("pipe.jpg")).constData(), 0600) == 0);
        PathFileFinder finder;
        const QString whole = m_dir->path() + u'/' + name;
        for (const FoundFile &file : {finder.locate(QStringLiteral("G"), whole), finder.relocate({}, whole)}) {
            QCOMPARE(file.found, found);
            QCOMPARE(file.path, whole);
        }
    }

    void aFileThatChangedGetsANewHandle()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("a.png"));
        QImage picture(6, 4, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(picture.save(path));
        ImageCache cache;
        PathFileFinder finder;
        const PIFileRef::Environment environment{&finder, &cache};
        PIFileRef ref(path, environment);
        const Image before = ref.image();
        QVERIFY(before.pixels());
        QVERIFY(FileDates::setDate(path, 1000000000));
        QVERIFY(!before.isCurrent());
        QVERIFY(ref.image().pixels());
        QVERIFY(QImage(9, 9, QImage::Format_RGB32).save(path));
        QVERIFY(FileDates::setDate(path, 1000000001));
        QCOMPARE(ref.image().size(), QSize(9, 9));
    }
};

REGISTER_TEST(TestPIFileRef)
#include "TestPIFileRef.moc"
