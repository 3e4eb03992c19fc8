#include "platform/WholeFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace ondrel;

class tst_WholeFile : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void replacesContentAndKeepsMode() {
        QTemporaryDir dir;
        const QString name = dir.filePath("a.spc");
        QVERIFY(WholeFile::write(name, "old content that is longer").ok());
        QVERIFY(::chmod(QFile::encodeName(name).constData(), 0640) == 0);
        QVERIFY(WholeFile::write(name, "new").ok());
        QCOMPARE(WholeFile::read(name).value(), QByteArray("new"));
        struct stat st {};
        QVERIFY(::stat(QFile::encodeName(name).constData(), &st) == 0);
        QCOMPARE(int(st.st_mode & 0777), 0640);
        // No temporary file is left beside it.
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"a.spc"});
    }

    void writesThroughSymbolicLink() {
        QTemporaryDir dir;
        const QString target = dir.filePath("real.opt");
        const QString link = dir.filePath("link.opt");
        QVERIFY(WholeFile::write(target, "1").ok());
        QVERIFY(QFile::link(target, link));
        QVERIFY(WholeFile::write(link, "2").ok());
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(WholeFile::read(target).value(), QByteArray("2"));
    }

    // Nothing waits on a fifo or reads a device or a huge file whole; a name that holds no
    // regular file is left as it is. Truncation fails exactly where writing does.
    void failures_data() {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<int>("readError");
        QTest::addColumn<int>("writeError");
        QTest::newRow("missing file") << "none.spc" << 53 << 0;
        QTest::newRow("missing directory") << "no/such/dir/x.spc" << 76 << 76;
        QTest::newRow("a directory") << "sub" << 75 << 75;
        QTest::newRow("a fifo") << "fifo" << 75 << 75;
        QTest::newRow("a device") << "/dev/zero" << 75 << 75;
        QTest::newRow("64 MiB") << "bound" << 0 << 0;
        QTest::newRow("64 MiB and one byte") << "over" << 75 << 0;
    }

    void failures() {
        QFETCH(QString, relative);
        QFETCH(int, readError);
        QFETCH(int, writeError);
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir("sub"));
        QVERIFY(::mkfifo(QFile::encodeName(dir.filePath("fifo")).constData(), 0600) == 0);
        // Sparse: they cost no disk.
        for (const auto& [file, size] : {std::pair{"bound", 0}, std::pair{"over", 1}}) {
            QFile sparse(dir.filePath(file));
            QVERIFY(sparse.open(QIODevice::WriteOnly) && sparse.resize((qint64(64) << 20) + size));
        }
        const QString name = QDir(dir.path()).filePath(relative);
        const QFileInfo before(name);
        const Result<QByteArray> r = WholeFile::read(name);
        QCOMPARE(r.ok() ? 0 : r.error().number(), readError);
        const Result<void> t = WholeFile::truncate(name);
        QCOMPARE(t.ok() ? 0 : t.error().number(), writeError);
        const Result<void> w = WholeFile::write(name, "x");
        QCOMPARE(w.ok() ? 0 : w.error().number(), writeError);
        if (writeError)
            QCOMPARE(QFileInfo(name).isFile(), before.isFile());
    }

    void readOnlyFileIsRefused() {
        QTemporaryDir dir;
        const QString name = dir.filePath("ro.spc");
        QVERIFY(WholeFile::write(name, "keep").ok());
        QVERIFY(::chmod(QFile::encodeName(name).constData(), 0444) == 0);
        const Result<void> w = WholeFile::write(name, "lost");
        QVERIFY(!w.ok());
        QCOMPARE(w.error().number(), 70);
        QCOMPARE(WholeFile::read(name).value(), QByteArray("keep"));
    }
};

QTEST_GUILESS_MAIN(tst_WholeFile)
#include "tst_WholeFile.moc"
