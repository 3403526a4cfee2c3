#include "TestRunner.h"

#include "EmbeddedThumbnails.h"

#include <QTest>

#include <condition_variable>
#include <mutex>

namespace {

/// Reads pictures only when it is let; both of the reading threads can be held at the door, one of them for longer.
struct Gate
{
    std::mutex mutex;
    std::condition_variable changed;
    bool open = false;
    QString held; // stays at the door until everything is let
    QStringList arrived;

    QImage read(const QString &path)
    {
        std::unique_lock lock(mutex);
        arrived << path;
        changed.notify_all();
        changed.wait(lock, [&] { return open && path != held; });
        if (path.startsWith(QLatin1String("without")))
            return {};
        QImage picture(16, 12, QImage::Format_RGB32);
        picture.fill(Qt::red);
        return picture;
    }
    void waitForReaders(int count)
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return arrived.size() >= count; });
    }
    void letAll(const QString &except = {})
    {
        const std::lock_guard lock(mutex);
        open = true;
        held = except;
        changed.notify_all();
    }
    QStringList seen()
    {
        const std::lock_guard lock(mutex);
        return arrived;
    }
};

std::vector<EmbeddedThumbnails::File> files(const QStringList &names)
{
    std::vector<EmbeddedThumbnails::File> list;
    for (const QString &name : names)
        list.push_back({name, name});
    return list;
}

QStringList names(const QString &stem, int count)
{
    QStringList list;
    for (int number = 0; number < count; ++number)
        list << stem + QString::number(number);
    return list;
}

}

class TestEmbeddedThumbnails : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyWantedPictureComes()
    {
        Gate gate;
        gate.letAll();
        QStringList ready;
        EmbeddedThumbnails pictures([&](const QString &guid) { ready << guid; },
                                    [&](const QString &path) { return gate.read(path); });
        const QStringList wanted = names(QStringLiteral("photo"), 50);
        pictures.want(files(wanted.mid(0, 3)));
        pictures.want(files(wanted));
        QTRY_COMPARE(ready.size(), 50);
        for (const QString &name : wanted)
            QCOMPARE(pictures.find(name).size(), QSize(16, 12));
        QCOMPARE(gate.seen().size(), 50); // none twice
    }

    void whatScrolledAwayIsDroppedAndTheTopComesFirst()
    {
        Gate gate;
        EmbeddedThumbnails pictures([](const QString &) {}, [&](const QString &path) { return gate.read(path); });
        pictures.want(files(names(QStringLiteral("old"), 20)));
        gate.waitForReaders(2);
        const QStringList newNames = names(QStringLiteral("new"), 3);
        pictures.want(files(newNames));
        gate.letAll(gate.seen().first()); // with one reader left, files are taken in one order only
        QTRY_COMPARE(gate.seen().size(), 5);
        QCOMPARE(gate.seen().mid(2), newNames);
        gate.letAll();
    }

    void aFileWithoutAPictureIsReadOnceUntilItChanges()
    {
        Gate gate;
        gate.letAll();
        QStringList ready;
        EmbeddedThumbnails pictures([&](const QString &guid) { ready << guid; },
                                    [&](const QString &path) { return gate.read(path); });
        pictures.want(files({QStringLiteral("without"), QStringLiteral("with")}));
        QTRY_COMPARE(ready, QStringList(QStringLiteral("with")));
        QTRY_COMPARE(gate.seen().size(), 2);
        const auto wantAgain = [&] { pictures.want(files({QStringLiteral("without"), QStringLiteral("with")})); };
        wantAgain();
        pictures.want(files({QStringLiteral("last")}));
        QTRY_COMPARE(ready.size(), 2);
        QCOMPARE(gate.seen().size(), 3);

        pictures.forget(QStringLiteral("without"));
        pictures.forget(QStringLiteral("with"));
        QVERIFY(pictures.find(QStringLiteral("with")).isNull());
        wantAgain();
        QTRY_COMPARE(gate.seen().size(), 5);
    }

    void nothingIsToldAfterTheEnd()
    {
        Gate gate;
        bool told = false;
        {
            EmbeddedThumbnails pictures([&](const QString &) { told = true; },
                                        [&](const QString &path) { return gate.read(path); });
            pictures.want(files({QStringLiteral("photo")}));
            gate.waitForReaders(1);
            gate.letAll();
        }
        QCoreApplication::processEvents();
        QVERIFY(!told);
    }
};

REGISTER_TEST(TestEmbeddedThumbnails)
#include "TestEmbeddedThumbnails.moc"
