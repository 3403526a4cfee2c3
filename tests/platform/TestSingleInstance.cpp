#include "HandOverMessage.h"
#include "SingleInstance.h"
#include "TestRunner.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <atomic>
#include <thread>

using Claim = SingleInstance::Claim;

class TestSingleInstance : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    /// A claim by "another process": it blocks, so that it has a thread of its own while this one answers.
    [[nodiscard]] Claim claimElsewhere(const QString &folder, const QStringList &paths) const
    {
        std::atomic<bool> ended = false;
        Claim claim = Claim::Failed;
        std::thread other([&] {
            claim = SingleInstance(folder).claim(paths);
            ended = true;
        });
        while (!ended)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        other.join();
        return claim;
    }
    [[nodiscard]] static QStringList sockets()
    {
        const QDir runtime(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation));
        return runtime.entryList({QStringLiteral("tamsel-photo-*")}, QDir::System);
    }
    [[nodiscard]] static QString socketPath()
    {
        return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QLatin1Char('/') +
               sockets().value(0);
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void secondStartHandsItsFilesOver();
    void filesThatCameEarlyWaitForTheHandler();
    void anotherFolderIsAnotherLibrary();
    void folderIsFreeAfterTheFirstHasEnded();
    void remainsOfACrashDoNotBlock();
    void holderThatDoesNotAnswerFailsTheClaim();
    void folderThatCannotBeLockedFailsTheClaim();
    void strangeMessagesAreRefused_data();
    void strangeMessagesAreRefused();
    void messageKeepsPaths();
};

void TestSingleInstance::secondStartHandsItsFilesOver()
{
    SingleInstance first(m_folder->path());
    QVERIFY(first.claim({}) == Claim::First);
    QList<QStringList> received;
    first.setHandler([&](const QStringList &paths) { received.append(paths); });
    QStringList paths = {QStringLiteral("/a/ü 1.jpg"), QStringLiteral("/b\nc")};
    for (int i = 0; i < 20'000; ++i) // more than one socket buffer
        paths.append(QStringLiteral("/photos/%1.jpg").arg(i));
    QVERIFY(claimElsewhere(m_folder->path() + QStringLiteral("/."), paths) == Claim::HandedOver);
    QVERIFY(claimElsewhere(m_folder->path(), {}) == Claim::HandedOver);
    QTRY_COMPARE(received.size(), 2);
    QCOMPARE(received.first(), paths);
    QCOMPARE(received.last(), QStringList());
}

void TestSingleInstance::filesThatCameEarlyWaitForTheHandler()
{
    SingleInstance first(m_folder->path());
    QVERIFY(first.claim({}) == Claim::First);
    QVERIFY(claimElsewhere(m_folder->path(), {QStringLiteral("/early.jpg")}) == Claim::HandedOver);
    QStringList received;
    first.setHandler([&](const QStringList &paths) { received = paths; });
    QTRY_COMPARE(received, QStringList({QStringLiteral("/early.jpg")}));
}

void TestSingleInstance::anotherFolderIsAnotherLibrary()
{
    const QTemporaryDir other;
    SingleInstance first(m_folder->path());
    SingleInstance second(other.path());
    QVERIFY(first.claim({}) == Claim::First);
    QVERIFY(second.claim({}) == Claim::First);
}

void TestSingleInstance::folderIsFreeAfterTheFirstHasEnded()
{
    {
        SingleInstance first(m_folder->path());
        QVERIFY(first.claim({}) == Claim::First);
    }
    QCOMPARE(sockets(), QStringList());
    SingleInstance second(m_folder->path());
    QVERIFY(second.claim({}) == Claim::First);
}

void TestSingleInstance::remainsOfACrashDoNotBlock()
{
    QString path;
    {
        SingleInstance first(m_folder->path());
        QVERIFY(first.claim({}) == Claim::First);
        path = socketPath();
    }
    QVERIFY(QFile::exists(m_folder->filePath(QStringLiteral("Photo.lock"))));
    QFile remains(path);
    QVERIFY(remains.open(QFile::WriteOnly));
    SingleInstance second(m_folder->path());
    QVERIFY(second.claim({}) == Claim::First);
    QVERIFY(claimElsewhere(m_folder->path(), {}) == Claim::HandedOver);
}

void TestSingleInstance::holderThatDoesNotAnswerFailsTheClaim()
{
    SingleInstance hung(m_folder->path());
    QVERIFY(hung.claim({}) == Claim::First);
    SingleInstance second(m_folder->path(), std::chrono::milliseconds(200));
    QVERIFY(second.claim({}) == Claim::NoAnswer); // on this very thread, so that the first cannot answer
}

void TestSingleInstance::folderThatCannotBeLockedFailsTheClaim()
{
    SingleInstance missing(m_folder->filePath(QStringLiteral("missing")));
    QVERIFY(missing.claim({}) == Claim::Failed);
    QVERIFY(QFile::link(QStringLiteral("/dev/null"), m_folder->filePath(QStringLiteral("Photo.lock"))));
    SingleInstance linked(m_folder->path());
    QVERIFY(linked.claim({}) == Claim::Failed);
}

void TestSingleInstance::strangeMessagesAreRefused_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("another protocol") << QByteArray("GET / HTTP/1.1\r\n\r\n");
    QTest::newRow("length beyond the limit") << QByteArray::fromHex("54506831ffffffff");
    QTest::newRow("more than announced") << QByteArray::fromHex("5450683100000002410041");
    QTest::newRow("path without its end") << QByteArray::fromHex("54506831000000024142");
}

void TestSingleInstance::strangeMessagesAreRefused()
{
    QFETCH(QByteArray, message);
    SingleInstance first(m_folder->path());
    QVERIFY(first.claim({}) == Claim::First);
    bool called = false;
    first.setHandler([&](const QStringList &) { called = true; });
    QLocalSocket socket;
    socket.connectToServer(socketPath());
    QVERIFY(socket.waitForConnected());
    socket.write(message);
    socket.flush();
    QTRY_COMPARE(socket.state(), QLocalSocket::UnconnectedState);
    QCOMPARE(socket.readAll(), QByteArray());
    QVERIFY(!called);
    QVERIFY(claimElsewhere(m_folder->path(), {}) == Claim::HandedOver);
}

void TestSingleInstance::messageKeepsPaths()
{
    const QStringList paths = {QString(), QStringLiteral("/ü"), QStringLiteral("")};
    const auto message = HandOverMessage::encode(paths);
    QVERIFY(message.has_value());
    QCOMPARE(HandOverMessage::decode(*message)->size(), 3);
    QCOMPARE(HandOverMessage::decode(*message)->at(1), paths.at(1));
    const QString half(HandOverMessage::kMaxLength / 2, QLatin1Char('x'));
    QVERIFY(!HandOverMessage::encode({half, half}));
    for (qsizetype length = 0; length < message->size(); ++length)
        QVERIFY(!HandOverMessage::decode(message->left(length)));
}

REGISTER_TEST(TestSingleInstance)
#include "TestSingleInstance.moc"
