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
    // there is one of our temporaries. The source of a move (movedFrom) is unchanged, or gone
    // only when its copy is whole.
    void checkDestination(const QByteArray& dest, const QByteArray& when,
                          const QByteArray& movedFrom) {
        for (auto it = m_new.cbegin(); it != m_new.cend(); ++it) {
            const auto content = readBytes(at(dest + '/' + it.key()));
            const QByteArray what = when + ": " + dest + '/' + it.key();
            if (!content)
                QVERIFY2(!movedFrom.isEmpty() || !m_old.contains(it.key()),
                         qPrintable(what + " old file is gone"));
            else
                QVERIFY2(*content == it.value() || *content == m_old.value(it.key(), "\1"),
                         qPrintable(what + " half written, " + QByteArray::number(content->size()) +
                                    " bytes"));
            if (movedFrom.isEmpty())
                continue;
            const auto source = readBytes(at(movedFrom + '/' + it.key()));
            QVERIFY2(!source || *source == it.value(), qPrintable(what + ": source changed"));
            QVERIFY2(source || content == it.value(), qPrintable(what + ": source gone first"));
        }
        for (const QByteArray& path : filesBelow(at(dest)))
            QVERIFY2(m_new.contains(path) || isTemporary(path),
                     qPrintable(when + ": stray file " + dest + '/' + path));
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
            const auto& [path, size] = kFiles[i];
            m_new.insert(path, turned.repeated(size / MiB + 1).left(size));
        }
        for (const auto& [path, size] : kOld)
            m_old.insert(path, ("OLD " + path).leftJustified(size, 'o', true));
    }

    // A copy over old destinations (with workers, files are written ahead of the run: killed,
    // it leaves nothing more), and a move to two destinations, where a source may be gone only
    // when both its copies are whole. Each kill comes at a random moment of a full run's time.
    void killedAtRandom_data() {
        QTest::addColumn<QString>("jobs");
        QTest::addColumn<bool>("move");
        QTest::newRow("copy, one thread") << "1" << false;
        QTest::newRow("copy, four threads") << "4" << false;
        // A move copies one file at a time whatever it says, and syncs its destinations before
        // it deletes: without the 64 MiB file (copied above) the trials stay quick.
        QTest::newRow("move to two destinations") << "4" << true;
    }

    void killedAtRandom() {
        QFETCH(QString, jobs);
        QFETCH(bool, move);
        m_jobs = jobs;
        if (move)
            m_new.remove("big.bin");
        const QByteArray tag = (move ? "move" : "copy") + jobs.toUtf8();
        const QByteArray src = move ? "msrc" : "src";
        const QList<QByteArray> dests =
            move ? QList<QByteArray>{"m1", "m2"} : QList<QByteArray>{"dst" + jobs.toUtf8()};
        const Options options = {{"Overwrite", "2"},
                                 {"CreateDirs", "True"},
                                 {move ? "DelSource" : "ShowErrMsgs", "True"}};
        writeJob(tag, src, dests, options);
        writeJob("timing" + tag, src, {"timing" + tag}, options);
        writeSources(src);
        QElapsedTimer timer;
        timer.start();
        const Outcome full = stage(args("timing" + tag));
        const qint64 fullUs = timer.nsecsElapsed() / 1000;
        QVERIFY2(full.finished && full.code == 0, full.err.constData());

        QRandomGenerator delays(kFixedStart + move);
        const int trials = move ? 5 : 50;
        int killed = 0;
        for (int trial = 0; trial < trials; ++trial) {
            if (move)
                writeSources(src);
            else
                for (auto it = m_old.cbegin(); it != m_old.cend(); ++it)
                    QVERIFY(writeBytes(at(dests[0] + '/' + it.key()), it.value()));
            const qint64 delayUs = qint64(delays.bounded(quint64(fullUs) + 1));
            QProcess process;
            process.start(QStringLiteral(ONDREL_STAGE), args(tag));
            process.closeWriteChannel();
            QVERIFY(process.waitForStarted());
            QThread::usleep(quint64(delayUs));
            process.kill();
            process.waitForFinished();
            killed += process.exitStatus() == QProcess::CrashExit; // not ended by itself
            const QByteArray when = "trial " + QByteArray::number(trial) + " killed after " +
                                    QByteArray::number(delayUs) + " us";
            for (const QByteArray& dest : dests)
                checkDestination(dest, when, move ? src : QByteArray());
            if (QTest::currentTestFailed())
                return;
        }
        qInfo("%d of %d runs killed before their end (a full run: %lld ms)", killed, trials,
              fullUs / 1000);

        const Outcome last = stage(args(tag));
        QVERIFY(last.finished);
        QCOMPARE(last.code, 0);
        // Every file whole, and nothing else: no temporary is left.
        for (const QByteArray& dest : dests) {
            for (auto it = m_new.cbegin(); it != m_new.cend(); ++it)
                QVERIFY2(readBytes(at(dest + '/' + it.key())) == it.value(),
                         qPrintable(dest + '/' + it.key()));
            QCOMPARE(filesBelow(at(dest)), m_new.keys());
        }
        if (move)
            QCOMPARE(filesBelow(at(src)), QList<QByteArray>());
    }
};

QTEST_GUILESS_MAIN(tst_KillSafety)
#include "tst_KillSafety.moc"
