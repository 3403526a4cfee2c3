#include "NativePath.h"
#include "TestRunner.h"
#include "VolumeMounter.h"
#include "Volumes.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusObjectPath>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

/// The desktop's disk service as far as it is asked here.
class FakeDiskService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.UDisks2.Manager")

public:
    QStringList asked;

public Q_SLOTS:
    Q_SCRIPTABLE QList<QDBusObjectPath> ResolveDevice(const QVariantMap &device, const QVariantMap &)
    {
        asked.append(device.value(QStringLiteral("uuid")).toString());
        if (asked.last() != QLatin1String("here"))
            return {};
        return {QDBusObjectPath(QStringLiteral("/busy")), QDBusObjectPath(QStringLiteral("/disk"))};
    }
};

class FakeDisk : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.UDisks2.Filesystem")

public:
    bool isBusy = false;
    int mounts = 0;

public Q_SLOTS:
    Q_SCRIPTABLE QString Mount(const QVariantMap &)
    {
        if (isBusy)
            sendErrorReply(QDBusError::Failed, QStringLiteral("Device is busy"));
        ++mounts;
        return QStringLiteral("/media/disk");
    }
};

class TestVolumes : public QObject
{
    Q_OBJECT

    static Volumes from(const QByteArray &mountInfo);

private Q_SLOTS:
    void readsWhatTheKernelLists();
    void tellsADiskFromItsClone();
    void leavesOutWhatHoldsNoFiles();
    void translatesPaths_data();
    void translatesPaths();
    void prefersTheMountThatIsKnown();
    void walksNoPartTwice();
    void tellsKindsOfVolumes_data();
    void tellsKindsOfVolumes();
    void systemTellsWhereAFileStands();
    void mountsThroughTheDiskService();
};

namespace {

const char kMounts[] = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                       "23 22 0:21 / /proc rw - proc proc rw\n"
                       "24 22 0:39 /@home /home rw shared:2 master:1 - btrfs /dev/sdb1 rw,subvol=/@home\n"
                       "25 22 0:40 /@photos /mnt/my\\040photos rw - btrfs /dev/sdb1 rw\n"
                       "26 22 0:41 / /net/nas rw - nfs4 nas:/export rw\n"
                       "27 22 8:1 /srv/data /data rw - ext4 /dev/sda1 rw\n";

}

/// A volume is known by its source.
Volumes TestVolumes::from(const QByteArray &mountInfo)
{
    return Volumes(mountInfo, [](const Mount &mount) { return mount.source; });
}

void TestVolumes::readsWhatTheKernelLists()
{
    const Volumes volumes = from(kMounts);
    QCOMPARE(volumes.all().size(), 3);
    const Volume *btrfs = volumes.withIdentity("/dev/sdb1");
    QVERIFY(btrfs);
    QCOMPARE(btrfs->mounts.size(), 2);
    const Mount photos{25, 22, "/@photos", "/mnt/my photos", "btrfs", "/dev/sdb1", "0:40"};
    QCOMPARE(btrfs->mounts.last(), photos);
    QCOMPARE(volumes.withMountId(25).mount->point, "/mnt/my photos");
    QCOMPARE(volumes.withMountId(25).volume, btrfs);
    QVERIFY(!volumes.withMountId(23).mount);
    QVERIFY(!volumes.withIdentity("/dev/sdc1"));
}

void TestVolumes::tellsADiskFromItsClone()
{
    const Volumes volumes("1 9 8:1 / /clone rw - ext4 one rw\n"
                          "2 9 8:2 / /media/disk rw - ext4 one rw\n"
                          "3 9 8:2 /srv /srv rw - ext4 one rw\n",
                          [](const Mount &mount) { return mount.source; });
    QCOMPARE(volumes.all().size(), 2);
    QCOMPARE(volumes.withIdentity("one", "/srv")->mounts.first().point, "/media/disk");
    QCOMPARE(volumes.withIdentity("one", "/clone")->mounts.size(), 1);
    QVERIFY(volumes.withIdentity("one", "/elsewhere"));
}

void TestVolumes::leavesOutWhatHoldsNoFiles()
{
    const QByteArray odd = "\nx 1 8:1 / / rw - ext4 /dev/a rw\n" // no number
                           "1 1 8:1 / / rw ext4 /dev/a rw\n"     // no dash
                           "1 1 8:1 / / rw - ext4\n"             // cut short
                           "1 1 8:1 relative / rw - ext4 /dev/a rw\n"
                           "1 1 8:1 / relative rw - ext4 /dev/a rw\n"
                           "1 1 8:1 / /a rw - autofs systemd-1 rw\n"
                           "1 1 8:1 / /a rw - cgroup2 cgroup rw";
    QVERIFY(from(odd).all().isEmpty());
    const Volumes unreachable(kMounts, [](const Mount &) { return std::nullopt; });
    QVERIFY(unreachable.all().isEmpty());
    QCOMPARE(from("1 1 8:1 / /\\303\\274\\134\\04 rw - ext4 a rw").all().first().mounts.first().point, "/ü\\\\04");
}

void TestVolumes::translatesPaths_data()
{
    QTest::addColumn<QByteArray>("identity");
    QTest::addColumn<QByteArray>("volumePath");
    QTest::addColumn<QByteArray>("path"); ///< empty: it cannot be seen
    const auto row = [](const char *name, const char *identity, const char *volumePath, const char *path) {
        QTest::newRow(name) << QByteArray(identity) << QByteArray(volumePath) << QByteArray(path);
    };
    row("whole volume", "/dev/sda1", "/home/a.jpg", "/home/a.jpg");
    row("the root itself", "/dev/sda1", "/", "/");
    row("part of a volume", "/dev/sdb1", "/@home/me/a.jpg", "/home/me/a.jpg");
    row("the root of the part", "/dev/sdb1", "/@photos", "/mnt/my photos");
    row("a part that is not mounted", "/dev/sdb1", "/@other/a.jpg", "");
    row("a part whose name only begins alike", "/dev/sdb1", "/@home2/a.jpg", "");
    row("network", "nas:/export", "/a.jpg", "/net/nas/a.jpg");
}

void TestVolumes::translatesPaths()
{
    QFETCH(QByteArray, identity);
    QFETCH(QByteArray, volumePath);
    QFETCH(QByteArray, path);
    const Volumes volumes = from(kMounts);
    const Volume *volume = volumes.withIdentity(identity);
    const Mount *mount = volume->mountFor(volumePath, {});
    QCOMPARE(mount == nullptr, path.isEmpty());
    if (!mount)
        return;
    QCOMPARE(mount->pathFor(volumePath).value_or("nowhere"), path);
    QCOMPARE(mount->volumePathFor(path), volumePath);
    QCOMPARE(volume->mountHolding(path), mount);
}

void TestVolumes::prefersTheMountThatIsKnown()
{
    const Volumes volumes = from(kMounts);
    const Volume *volume = volumes.withIdentity("/dev/sda1");
    QCOMPARE(volume->mountFor("/srv/data/a.jpg", {})->point, "/");
    QCOMPARE(volume->mountFor("/srv/data/a.jpg", "/data")->point, "/data");
    QCOMPARE(volume->mountFor("/etc/a.jpg", "/data")->point, "/");
    QCOMPARE(volume->mountHolding("/data/a.jpg")->point, "/data");
    QCOMPARE(volume->mountHolding("/data2/a.jpg")->point, "/");
}

void TestVolumes::walksNoPartTwice()
{
    const Volumes volumes = from(kMounts);
    QCOMPARE(volumes.withIdentity("/dev/sda1")->widestMounts().size(), 1);
    QCOMPARE(volumes.withIdentity("/dev/sda1")->widestMounts().first().point, "/");
    QCOMPARE(volumes.withIdentity("/dev/sdb1")->widestMounts().size(), 2);
    const Volumes turned = from("1 1 8:1 /a /a rw - ext4 x rw\n2 1 8:1 / /b rw - ext4 x rw");
    QCOMPARE(turned.all().first().widestMounts().size(), 1);
    QCOMPARE(turned.all().first().widestMounts().first().point, "/b");
}

void TestVolumes::tellsKindsOfVolumes_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("point");
    QTest::addColumn<bool>("network");
    QTest::addColumn<bool>("system");
    QTest::addColumn<bool>("stable");
    const auto row = [](const char *type, const char *point, bool network, bool system, bool stable) {
        QTest::addRow("%s at %s", type, point) << QByteArray(type) << QByteArray(point) << network << system << stable;
    };
    row("ext4", "/", false, false, true);
    row("ext4", "/boot", false, true, true);
    row("ext4", "/bootleg", false, false, true);
    row("exfat", "/run/media/me/CARD", false, false, false);
    row("tmpfs", "/run/user/1000", false, true, true);
    row("squashfs", "/mnt", false, true, false);
    row("nfs4", "/mnt", true, false, true);
    row("fuse.sshfs", "/mnt", true, false, false);
    row("fuse", "/mnt", true, false, false);
    row("fuse.mergerfs", "/mnt", false, false, false);
    row("fuseblk", "/mnt", false, false, false);
}

void TestVolumes::tellsKindsOfVolumes()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, point);
    const Volume volume{"id", {Mount{1, 1, "/", point, type, "x"}}};
    QTEST(volume.isNetwork(), "network");
    QTEST(volume.mounts.first().isSystem(), "system");
    QTEST(volume.inodeTrust() == InodeTrust::Stable, "stable");
}

void TestVolumes::systemTellsWhereAFileStands()
{
    const QTemporaryDir folder;
    const QByteArray path = QFile::encodeName(QFileInfo(folder.path()).canonicalFilePath());
    const auto present = examineFile(kNoFolder, path.constData());
    QVERIFY(present);
    const auto volumes = Volumes::current();
    const Volumes::Place place = volumes->withMountId(present->mountId);
    QVERIFY(place.mount);
    QVERIFY(NativePath::isWithin(path, place.mount->point));
    QVERIFY(!place.volume->identity.isEmpty());
    // Nothing was mounted in between: it is not even read again.
    QCOMPARE(Volumes::current(), volumes);
}

void TestVolumes::mountsThroughTheDiskService()
{
    QProcess daemon;
    daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    if (!daemon.waitForStarted() || !daemon.waitForReadyRead())
        QSKIP("no message bus can be started here");
    const QString address = QString::fromLatin1(daemon.readLine().trimmed());

    FakeDiskService service;
    FakeDisk busy;
    FakeDisk disk;
    busy.isBusy = true;
    QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("disk service"));
    const auto slots = QDBusConnection::ExportScriptableSlots;
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/UDisks2/Manager"), &service, slots));
    QVERIFY(bus.registerObject(QStringLiteral("/busy"), &busy, slots));
    QVERIFY(bus.registerObject(QStringLiteral("/disk"), &disk, slots));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.UDisks2")));

    // From a thread of its own, as it is used: the service answers on this one.
    const auto mount = [&](const QByteArray &identity, QString *reason) {
        bool mounted = false;
        const std::unique_ptr<QThread> thread(QThread::create([&] {
            VolumeMounter mounter(QDBusConnection::connectToBus(address, QStringLiteral("asker")));
            mounted = mounter.mount(identity, reason);
            QDBusConnection::disconnectFromBus(QStringLiteral("asker"));
        }));
        thread->start();
        return QTest::qWaitFor([&] { return thread->isFinished(); }) && mounted;
    };
    QString reason;
    QVERIFY(mount("uuid:here", &reason));
    QCOMPARE(disk.mounts, 1);
    QVERIFY(!mount("uuid:away", &reason));
    QVERIFY(!mount("source:nfs4:nas", &reason));
    QCOMPARE(service.asked, QStringList({QStringLiteral("here"), QStringLiteral("away")}));
    disk.isBusy = true;
    QVERIFY(!mount("uuid:here", &reason));
    QCOMPARE(reason, QStringLiteral("Device is busy"));
    bus.unregisterService(QStringLiteral("org.freedesktop.UDisks2"));
    QVERIFY(!mount("uuid:here", &reason));
    QDBusConnection::disconnectFromBus(QStringLiteral("disk service"));
    daemon.terminate();
    daemon.waitForFinished();
}

REGISTER_TEST(TestVolumes)
#include "TestVolumes.moc"
