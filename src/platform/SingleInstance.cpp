#include "SingleInstance.h"

#include "HandOverMessage.h"
#include "OpenFile.h"
#include "PosixSupport.h"
#include "SystemLog.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QList>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>

#include <fcntl.h>
#include <sys/file.h>

#include <cstring>
#include <utility>

namespace {

constexpr std::chrono::seconds kLongestConnection(4);
constexpr unsigned long kRetryPause = 50; // milliseconds

enum class Lock { Taken, HeldByAnother, Impossible };
enum class Delivery { Taken, NobodyThere, NoAnswer };

/// One path for all ways of naming the folder, short enough for a socket's address.
QString socketPath(const QString &folder)
{
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    const QByteArray hash = QCryptographicHash::hash(canonical.toUtf8(), QCryptographicHash::Sha256).toHex().left(24);
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QLatin1String("/tamsel-photo-") +
           QLatin1String(hash);
}

Delivery deliver(const QString &path, const QByteArray &message, const QDeadlineTimer &deadline)
{
    const auto left = [&] { return static_cast<int>(deadline.remainingTime()); };
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(left()))
        return Delivery::NobodyThere;
    socket.write(message);
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(left())) {
    }
    if (socket.bytesAvailable() == 0)
        (void)socket.waitForReadyRead(left());
    if (socket.read(1) == QByteArray(1, HandOverMessage::kAnswer))
        return Delivery::Taken;
    return socket.state() == QLocalSocket::ConnectedState ? Delivery::NoAnswer : Delivery::NobodyThere;
}

/// Collects one message from a later process and answers it. Ends with the connection.
class HandOverReceiver final : public QObject
{
public:
    using Handler = std::function<void(const QStringList &)>;

    HandOverReceiver(QLocalSocket *socket, Handler handler)
        : QObject(socket)
        , m_socket(socket)
        , m_handler(std::move(handler))
    {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, &HandOverReceiver::read);
        QTimer::singleShot(kLongestConnection, socket, &QLocalSocket::abort);
        read();
    }

private:
    void read()
    {
        if (m_done)
            return;
        m_received += m_socket->readAll();
        if (m_received.size() < HandOverMessage::kHeaderLength)
            return;
        const auto length = HandOverMessage::totalLength(m_received);
        if (length && m_received.size() < *length)
            return;
        m_done = true;
        const auto paths = HandOverMessage::decode(m_received);
        if (!paths) {
            m_socket->abort();
            return;
        }
        m_socket->write(QByteArray(1, HandOverMessage::kAnswer));
        m_socket->disconnectFromServer();
        m_handler(*paths);
    }

    QLocalSocket *m_socket;
    Handler m_handler;
    QByteArray m_received;
    bool m_done = false;
};

}

struct SingleInstance::Private
{
    [[nodiscard]] Lock takeLock();
    void listen();
    void received(const QStringList &paths);
    void passOn();

    QString folder;
    std::chrono::milliseconds patience = {};
    FileDescriptor lockFile;
    std::function<void(const QStringList &)> handler;
    QList<QStringList> pending;           ///< arrived, and not handed to the handler yet
    std::unique_ptr<QLocalServer> server; // last, so that it goes before the lock does
};

/// The kernel drops the lock with the process, however that ends. The file stays: removing it would let a third
/// process lock a new one while a second waits for this.
Lock SingleInstance::Private::takeLock()
{
    if (!lockFile.isValid()) {
        const QByteArray path = Posix::nativePath(folder + QLatin1String("/Photo.lock"));
        lockFile = FileDescriptor(
            Posix::retry([&] { return ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600); }));
    }
    if (!lockFile.isValid())
        return Lock::Impossible;
    if (Posix::retry([&] { return ::flock(lockFile.number(), LOCK_EX | LOCK_NB); }) == 0)
        return Lock::Taken;
    return errno == EWOULDBLOCK ? Lock::HeldByAnother : Lock::Impossible;
}

void SingleInstance::Private::listen()
{
    const QString path = socketPath(folder);
    QLocalServer::removeServer(path); // left behind by a crash; whoever holds the lock may
    server = std::make_unique<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(server.get(), &QLocalServer::newConnection, server.get(), [this] {
        while (QLocalSocket *socket = server->nextPendingConnection())
            new HandOverReceiver(socket, [this](const QStringList &paths) { received(paths); });
    });
    if (!server->listen(path))
        SystemLog::write(QLatin1String("Can't listen for later starts at ") + path + QLatin1String(": ") +
                         server->errorString());
}

void SingleInstance::Private::received(const QStringList &paths)
{
    pending.append(paths);
    // In a turn of its own: the handler may well show an alert, and the connection has to end meanwhile.
    QTimer::singleShot(0, server.get(), [this] { passOn(); });
}

void SingleInstance::Private::passOn()
{
    while (handler && !pending.isEmpty())
        handler(pending.takeFirst());
}

SingleInstance::SingleInstance(const QString &folder, std::chrono::milliseconds patience)
    : d(std::make_unique<Private>())
{
    d->folder = folder;
    d->patience = patience;
}

SingleInstance::~SingleInstance() = default;

SingleInstance::Claim SingleInstance::claim(const QStringList &paths)
{
    const QDeadlineTimer deadline(d->patience);
    const auto message = HandOverMessage::encode(paths);
    for (;;) {
        const Lock lock = d->takeLock();
        if (lock == Lock::Taken) {
            d->listen();
            return Claim::First;
        }
        if (lock == Lock::Impossible || !message) {
            SystemLog::write(QLatin1String("Can't claim ") + d->folder + QLatin1String(": ") +
                             (message ? QString::fromLocal8Bit(std::strerror(errno))
                                      : QStringLiteral("too many files to hand over")));
            return Claim::Failed;
        }
        if (deadline.hasExpired())
            return Claim::NoAnswer;
        const Delivery delivery = deliver(socketPath(d->folder), *message, deadline);
        if (delivery != Delivery::NobodyThere)
            return delivery == Delivery::Taken ? Claim::HandedOver : Claim::NoAnswer;
        QThread::msleep(kRetryPause); // the other process is just starting, or just ending
    }
}

void SingleInstance::setHandler(std::function<void(const QStringList &)> handler)
{
    d->handler = std::move(handler);
    d->passOn();
}
