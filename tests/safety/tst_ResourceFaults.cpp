// The real stager moving files when the machine says no: a full disk, a destination the user may
// not write, a read-only file system, a source the user may not read. Each time the failing
// file is a problem file with its line in the log, the old destination and the source are kept,
// no temporary is left, and nothing else is lost.
//
// Needs root (it mounts small tmpfs file systems and runs the stager as user 65534); skipped
// where that is not possible.

#include "StageProcess.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <cstring>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace safety;

namespace {

enum class Fault { DiskFull, NotWritable, ReadOnlyFileSystem, UnreadableSource };

const QByteArray kOld = "OLD destination content";
const QStringList kAsNobody = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};

} // namespace

Q_DECLARE_METATYPE(Fault)

class tst_ResourceFaults : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<QByteArray> m_mounts;

    QByteArray at(const QByteArray& relative) const {
        return QFile::encodeName(m_dir->path()) + '/' + relative;
    }

    bool mountTmpfs(const QByteArray& path) {
        if (::mkdir(path.constData(), 0755) != 0 ||
            ::mount("tmpfs", path.constData(), "tmpfs", 0, "size=2m,mode=0755") != 0)
            return false;
        m_mounts += path;
        return true;
    }

private Q_SLOTS:
    void initTestCase() {
        if (::geteuid() != 0)
            QSKIP("needs root: mounts small tmpfs file systems and runs the stager as user 65534");
        m_dir = std::make_unique<QTemporaryDir>();
        const bool mounted = mountTmpfs(at("probe"));
        const int error = errno;
        cleanup();
        if (!mounted)
            QSKIP(qPrintable("mounting is not permitted here: " +
                             QString::fromLocal8Bit(std::strerror(error))));
    }

    void init() { m_dir = std::make_unique<QTemporaryDir>(); }

    // Unmounts what the test mounted, also after a failure.
    void cleanup() {
        for (auto it = m_mounts.crbegin(); it != m_mounts.crend(); ++it)
            if (::umount2(it->constData(), MNT_DETACH) != 0)
                qWarning("cannot unmount %s: %s", it->constData(), std::strerror(errno));
        m_mounts.clear();
        m_dir.reset();
    }

    void moveFails_data() {
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<QByteArray>("logLine"); // %S: failing source, %D: its drive

        const QByteArray denied = "***Unable to stage %S.  The file may be in use by another "
                                  "application.\r\n";
        QTest::newRow("disk full")
            << Fault::DiskFull << QByteArray("***The disk in drive %D: is full.\r\n");
        QTest::newRow("destination not writable") << Fault::NotWritable << denied;
        QTest::newRow("read-only file system") << Fault::ReadOnlyFileSystem << denied;
        QTest::newRow("unreadable source") << Fault::UnreadableSource << denied;
    }

    // A move of victim.bin (over an old destination) and ok.txt.
    void moveFails() {
        QFETCH(Fault, fault);
        QFETCH(QByteArray, logLine);
        const QByteArray victim = at("src/victim.bin");
        const QByteArray big(fault == Fault::DiskFull ? 4 * 1024 * 1024 : 5000, 'v');
        QVERIFY(writeBytes(victim, big));
        QVERIFY(writeBytes(at("src/ok.txt"), "ok"));
        QVERIFY(writeBytes(at("job.spc"), specText(at("src"), {at("dst")})));
        QVERIFY(writeBytes(at("job.opt"), optionsText({{"Overwrite", "2"},
                                                       {"CreateDirs", "True"},
                                                       {"DelSource", "True"},
                                                       {"ShowErrMsgs", "True"}})));
        // Readable by all; the log directory and the sources' directory writable by all.
        QCOMPARE(::chmod(m_dir->path().toLocal8Bit().constData(), 0755), 0);
        QCOMPARE(::chmod(at("src").constData(), 0777), 0);
        QCOMPARE(::mkdir(at("logs").constData(), 0777), 0);
        QCOMPARE(::chmod(at("logs").constData(), 0777), 0);

        QStringList wrapper;
        if (fault == Fault::DiskFull || fault == Fault::ReadOnlyFileSystem) {
            QVERIFY(mountTmpfs(at("dst")));
        } else {
            QCOMPARE(::mkdir(at("dst").constData(), 0755), 0);
            wrapper = kAsNobody + QStringList{"env", "HOME=" + at("logs")};
        }
        QVERIFY(writeBytes(at("dst/victim.bin"), kOld));
        if (fault == Fault::ReadOnlyFileSystem)
            QCOMPARE(
                ::mount("tmpfs", at("dst").constData(), "tmpfs", MS_REMOUNT | MS_RDONLY, "size=2m"),
                0);
        if (fault == Fault::UnreadableSource) {
            QCOMPARE(::chmod(at("dst").constData(), 0777), 0);
            QCOMPARE(::chmod(victim.constData(), 0), 0);
        }

        const Outcome r = stage({"--batch", "--on-error=ignore", "--options", at("job.opt"),
                                 "--log", at("logs/run.log"), at("job.spc")},
                                wrapper);
        QVERIFY2(r.finished, "the stager hung or crashed");
        const QByteArray log = contentOf(at("logs/run.log"));
        QVERIFY2(log.contains(logLine.replace("%S", victim).replace("%D", at("dst"))),
                 log.constData());
        QCOMPARE(r.code, 1);
        const QByteArray problems = r.out.mid(r.out.indexOf("during staging:\n"));
        QVERIFY2(problems.contains('\n' + victim + '\n'), r.out.constData());

        QCOMPARE(::chmod(victim.constData(), 0644), 0);
        QCOMPARE(contentOf(victim), big);
        QCOMPARE(contentOf(at("dst/victim.bin")), kOld);
        QCOMPARE(temporariesBelow(at("dst")), QList<QByteArray>());
        // ok.txt is never lost: still in the source, or moved whole.
        if (fault == Fault::UnreadableSource)
            QCOMPARE(filesBelow(at("src")), QList<QByteArray>{"victim.bin"});
        QVERIFY(contentOf(at("src/ok.txt")) == "ok" || contentOf(at("dst/ok.txt")) == "ok");
    }
    // A full disk stops only the copies bound for it: the other destination, on another file
    // system, still gets every file, and no question is asked twice for the full one.
    void fullDiskStopsOnlyItself() {
        QVERIFY(writeBytes(at("src/a.bin"), QByteArray(3 * 1024 * 1024, 'a')));
        QVERIFY(writeBytes(at("src/b.txt"), "b"));
        QVERIFY(writeBytes(at("src/c.txt"), "c"));
        QVERIFY(mountTmpfs(at("usb")));
        QVERIFY(writeBytes(at("job.spc"), specText(at("src"), {at("usb/out"), at("home")})));
        QVERIFY(writeBytes(at("job.opt"), optionsText({{"CreateDirs", "True"}})));
        const Outcome r = stage({"--batch", "--on-error=ignore", "--options", at("job.opt"),
                                 "--log", at("run.log"), at("job.spc")});
        QVERIFY2(r.finished, "the stager hung or crashed");
        QCOMPARE(r.code, 1);
        QCOMPARE(filesBelow(at("home")), (QList<QByteArray>{"a.bin", "b.txt", "c.txt"}));
        const QByteArray log = contentOf(at("run.log"));
        QCOMPARE(log.count("***The disk in drive " + at("usb") + ": is full.\r\n"), 1);
        // One question, and the failure's one line.
        QCOMPARE(r.err.count("Disk Full: "), 1);
        QCOMPARE(r.err.count("ondrel-stage: The disk in drive " + at("usb") +
                             ": is full.  path: " + at("usb/out/a.bin") + "\n"),
                 1);
    }
};

QTEST_GUILESS_MAIN(tst_ResourceFaults)
#include "tst_ResourceFaults.moc"
