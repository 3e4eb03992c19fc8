// Kills the real stager (SIGKILL) at random moments while it copies or moves files from 0 bytes to
// 64 MiB, and checks after each kill what a user relies on: no destination is ever half written,
// no source of a move is gone before its copies are whole, and the next run finishes the job and
// leaves no temporary file behind.

#include "StageProcess.h"

#include <QElapsedTimer>
#include <QMap>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

using namespace safety;

namespace {

constexpr qsizetype MiB = 1024 * 1024;

// Fixed start value for the content and the kill delays, so that a failure reproduces.
constexpr quint32 kFixedStart = 20240611u;

// Source files by size; the old destinations of about half of them have another size.
const QList<QPair<QByteArray, qsizetype>> kFiles = {
    {"empty.bin", 0},
    {"a.txt", 1},
    {"b.txt", 4096},
    {"c.dat", 100000},
    {"sub/d.dat", 65537},
    {"sub/e.bin", MiB},
    {"sub/f.bin", 3 * MiB + 7},
    {"sub/deeper/g.bin", 8 * MiB},
    {"sub/deeper/h.txt", 10},
    {"big.bin", 64 * MiB},
};
const QList<QPair<QByteArray, qsizetype>> kOld = {
    {"a.txt", 3000},         {"c.dat", 10},    {"sub/e.bin", 2 * MiB},
    {"sub/deeper/h.txt", 0}, {"big.bin", MiB},
};

} // namespace

class tst_KillSafety : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QMap<QByteArray, QByteArray> m_new; // relative path -> source content
    QMap<QByteArray, QByteArray> m_old; // relative path -> old destination content
    QString m_jobs = "1";               // the stager's --jobs

    QByteArray at(const QByteArray& relative) const {
        return QFile::encodeName(m_dir.path()) + '/' + relative;
    }

    QStringList args(const QByteArray& job) const {
        return {"--batch", "--on-error=ignore", "--jobs",
                m_jobs,    "--options",         at(job + ".opt"),
                "--log",   at(job + ".log"),    at(job + ".spc")};
    }

    void writeJob(const QByteArray& job, const QByteArray& source, const QList<QByteArray>& dests,
                  const Options& options) {
        QList<QByteArray> paths;
        for (const QByteArray& dest : dests)
            paths += at(dest);
        if (!writeBytes(at(job + ".spc"), specText(at(source), paths)) ||
            !writeBytes(at(job + ".opt"), optionsText(options)))
            qFatal("cannot write the job %s", job.constData());
    }

    void writeSources(const QByteArray& source) {
        for (auto it = m_new.cbegin(); it != m_new.cend(); ++it)
            if (!writeBytes(at(source + '/' + it.key()), it.value()))
                qFatal("cannot write the source %s", it.key().constData());
    }

    // Every file of dest is absent (when it had no old content), old or whole; anything else
    // there is one of our temporaries.
    void checkDestination(const QByteArray& dest, const QByteArray& when, bool prefilled) {
        for (auto it = m_new.cbegin(); it != m_new.cend(); ++it) {
            const auto content = readBytes(at(dest + '/' + it.key()));
            const QByteArray what = when + ": " + dest + '/' + it.key();
            if (!content)
                QVERIFY2(!prefilled || !m_old.contains(it.key()),
                         qPrintable(what + " old file is gone"));
            else
                QVERIFY2(*content == it.value() || *content == m_old.value(it.key(), "\1"),
                         qPrintable(what + " half written, " + QByteArray::number(content->size()) +
                                    " bytes"));
        }
        for (const QByteArray& path : filesBelow(at(dest)))
            QVERIFY2(m_new.contains(path) || isTemporary(path),
                     qPrintable(when + ": stray file " + dest + '/' + path));
    }

    void checkComplete(const QByteArray& dest) {
        for (auto it = m_new.cbegin(); it != m_new.cend(); ++it)
            QVERIFY2(readBytes(at(dest + '/' + it.key())) == it.value(),
                     qPrintable(dest + '/' + it.key()));
        QCOMPARE(filesBelow(at(dest)), m_new.keys());
    }

    // Starts the stager and kills it after delayUs; true when it was killed before it ended.
    bool runKilledAfter(const QByteArray& job, qint64 delayUs) {
        QProcess process;
        process.start(QStringLiteral(ONDREL_STAGE), args(job));
        process.closeWriteChannel();
        if (!process.waitForStarted())
            qFatal("cannot start the stager");
        QThread::usleep(quint64(delayUs));
        process.kill();
        process.waitForFinished();
        return process.exitStatus() == QProcess::CrashExit;
    }

    // The time from start to end of an uninterrupted run, in microseconds.
    qint64 timedRun(const QByteArray& job) {
        QElapsedTimer timer;
        timer.start();
        const Outcome r = stage(args(job));
        const qint64 us = timer.nsecsElapsed() / 1000;
        if (!r.finished || r.code != 0)
            qFatal("an uninterrupted run failed: %s", r.err.constData());
        return us;
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        QRandomGenerator random(kFixedStart);
        QByteArray block(MiB, Qt::Uninitialized);
        random.fillRange(reinterpret_cast<quint32*>(block.data()), MiB / 4);
        for (qsizetype i = 0; i < kFiles.size(); ++i) {
            // Each file starts elsewhere in the block, so that no two files are alike.
            const QByteArray turned = block.mid(i * 4099) + block.left(i * 4099);
            QByteArray content;
            content.reserve(kFiles[i].second + MiB);
            while (content.size() < kFiles[i].second)
                content += turned;
            content.truncate(kFiles[i].second);
            m_new.insert(kFiles[i].first, content);
        }
        for (const auto& [path, size] : kOld)
            m_old.insert(path, ("OLD " + path).leftJustified(size, 'o', true));
        writeSources("src");
    }

    // With workers, files are written ahead of the run: killed, it leaves nothing more.
    void copyKilledAtRandom_data() {
        QTest::addColumn<QString>("jobs");
        QTest::newRow("one thread") << "1";
        QTest::newRow("four threads") << "4";
    }

    void copyKilledAtRandom() {
        QFETCH(QString, jobs);
        m_jobs = jobs;
        const QByteArray dst = "dst" + jobs.toUtf8();
        writeJob("copy", "src", {dst},
                 {{"Overwrite", "2"}, {"CreateDirs", "True"}, {"ShowErrMsgs", "True"}});
        writeJob("full", "src", {"timing" + jobs.toUtf8()},
                 {{"Overwrite", "2"}, {"CreateDirs", "True"}});
        const qint64 fullUs = timedRun("full");

        QRandomGenerator delays(kFixedStart);
        int killed = 0;
        for (int trial = 0; trial < 50; ++trial) {
            for (auto it = m_old.cbegin(); it != m_old.cend(); ++it)
                QVERIFY(writeBytes(at(dst + '/' + it.key()), it.value()));
            const qint64 delayUs = qint64(delays.bounded(quint64(fullUs) + 1));
            killed += runKilledAfter("copy", delayUs);
            checkDestination(dst,
                             "trial " + QByteArray::number(trial) + " killed after " +
                                 QByteArray::number(delayUs) + " us",
                             true);
            if (QTest::currentTestFailed())
                return;
        }
        qInfo("%d of 50 runs killed before their end (a full run: %lld ms)", killed, fullUs / 1000);

        const Outcome last = stage(args("copy"));
        QVERIFY(last.finished);
        QCOMPARE(last.code, 0);
        checkComplete(dst);
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(temporariesBelow(at(dst)), QList<QByteArray>());
    }

    // A move to two destinations: a source may be gone only when both its copies are whole.
    void moveKilledAtRandom() {
        // A move syncs its destinations before it deletes; without the 64 MiB file (copied
        // above) the trials stay quick.
        m_new.remove("big.bin");
        m_jobs = "4"; // a move copies one file at a time whatever it says
        const Options move = {{"Overwrite", "2"}, {"CreateDirs", "True"}, {"DelSource", "True"}};
        writeJob("timedMove", "msrc", {"mtiming"}, move);
        writeSources("msrc");
        const qint64 fullUs = timedRun("timedMove");
        QCOMPARE(filesBelow(at("msrc")), QList<QByteArray>());

        writeJob("move", "msrc", {"m1", "m2"}, move);
        QRandomGenerator delays(kFixedStart + 1);
        for (int trial = 0; trial < 5; ++trial) {
            writeSources("msrc");
            const qint64 delayUs = qint64(delays.bounded(quint64(fullUs) + 1));
            runKilledAfter("move", delayUs);
            const QByteArray when = "move trial " + QByteArray::number(trial) + " killed after " +
                                    QByteArray::number(delayUs) + " us";
            for (auto it = m_new.cbegin(); it != m_new.cend(); ++it) {
                const auto source = readBytes(at("msrc/" + it.key()));
                if (source) {
                    QVERIFY2(*source == it.value(), qPrintable(when + ": source changed"));
                    continue;
                }
                for (const QByteArray dest : {"m1/", "m2/"})
                    QVERIFY2(readBytes(at(dest + it.key())) == it.value(),
                             qPrintable(when + ": source " + it.key() + " gone, copy in " + dest +
                                        " not whole"));
            }
            checkDestination("m1", when, false);
            checkDestination("m2", when, false);
            if (QTest::currentTestFailed())
                return;
        }

        const Outcome last = stage(args("move"));
        QVERIFY(last.finished);
        QCOMPARE(last.code, 0);
        checkComplete("m1");
        checkComplete("m2");
        if (QTest::currentTestFailed())
            return;
        QCOMPARE(filesBelow(at("msrc")), QList<QByteArray>());
        QCOMPARE(temporariesBelow(at("m1")) + temporariesBelow(at("m2")), QList<QByteArray>());
    }
};

QTEST_GUILESS_MAIN(tst_KillSafety)
#include "tst_KillSafety.moc"
