// Which file system holds a path, and which mounts a drive list offers.

#include "platform/Volumes.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

class tst_Volumes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void realVolumes_data() {
        QTest::addColumn<QByteArray>("mountInfo");
        QTest::addColumn<QByteArrayList>("mountPoints");

        const QByteArray root = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n";
        QTest::newRow("kernel file systems left out")
            << root + "23 22 0:5 / /proc rw - proc proc rw\n"
                      "24 22 0:6 / /sys rw - sysfs sysfs rw\n"
                      "25 24 0:7 / /sys/fs/cgroup rw - cgroup2 cgroup2 rw\n"
                      "26 22 0:8 / /dev/shm rw - tmpfs tmpfs rw\n"
                      "27 22 0:9 / /run/user/1000 rw - tmpfs tmpfs rw\n"
                      "28 22 7:1 / /snap/core/1 ro - squashfs /dev/loop1 ro\n"
            << QByteArrayList{"/"};
        QTest::newRow("disks, a share and a /tmp in memory kept")
            << root + "30 22 8:17 / /run/media/ann/USB\\040STICK rw - vfat /dev/sdb1 rw\n"
                      "31 22 0:40 / /mnt/share rw - nfs4 srv:/export rw\n"
                      "32 22 0:41 / /tmp rw - tmpfs tmpfs rw\n"
            << QByteArrayList{"/", "/run/media/ann/USB STICK", "/mnt/share", "/tmp"};
        QTest::newRow("a mount point mounted twice shows the last")
            << root + "40 22 8:33 / /data rw - ext4 /dev/sdc1 rw\n"
                      "41 22 8:49 / /data rw - xfs /dev/sdd1 rw\n"
            << QByteArrayList{"/", "/data"};
        QTest::newRow("optional fields and garbage lines")
            << QByteArray("nonsense\n\n") +
                   "50 1 8:1 / / rw shared:1 master:2 - btrfs /dev/sda2 rw\n"
            << QByteArrayList{"/"};
    }

    void realVolumes() {
        QFETCH(QByteArray, mountInfo);
        QFETCH(QByteArrayList, mountPoints);
        QByteArrayList found;
        for (const Volume& volume : Volumes::realVolumes(mountInfo))
            found << volume.mountPoint;
        QCOMPARE(found, mountPoints);
    }

    // A path that does not exist yet belongs to the file system of its nearest existing
    // ancestor, so a run can tell which disk a destination it will make lands on.
    void mountPointOf_data() {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("mountPoint");
        QTest::newRow("the root") << QByteArray("/") << QByteArray("/");
        QTest::newRow("a kernel file system")
            << QByteArray("/proc/self/status") << QByteArray("/proc");
        QTest::newRow("below it, not yet made")
            << QByteArray("/proc/no/such/dir") << QByteArray("/proc");
        QTest::newRow("relative path of nothing") << QByteArray("no/such") << QByteArray("/");
    }

    void mountPointOf() {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, mountPoint);
        if (path.startsWith("/proc") && !QFileInfo::exists("/proc/self/status"))
            QSKIP("no /proc here");
        QCOMPARE(Volumes::mountPointOf(path), mountPoint);
    }

    void mountedVolumesHoldTheRoot() {
        QByteArrayList points;
        for (const Volume& volume : Volumes::mountedVolumes())
            points << volume.mountPoint;
        QVERIFY2(points.contains("/"), points.join(' ').constData());
        QVERIFY(!points.contains("/proc"));
    }
};

QTEST_GUILESS_MAIN(tst_Volumes)
#include "tst_Volumes.moc"
