// Ends a staging run at every change it makes on disk, one run per change, and checks after each
// stop that no destination is half written and no source of a move is gone before its copies
// are whole; then a second run must finish the job.

#include "../staging/StagingFixture.h"

#include "app/ScreenMetrics.h"
#include "app/clsOndrelApp.h"
#include "platform/CrashPoint.h"
#include "spec/clsSpecFile.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"
#include "staging/StagingLog.h"
#include "staging/StagingRun.h"

#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

namespace {

struct Case {
    const char* name;
    qint16 overwrite;
    bool move;
};

const Case kCases[] = {{"Always", 2, false},
                       {"If Older", 0, false},
                       {"Never", 3, false},
                       {"move to two destinations", 2, true}};

// The source files and what each holds; destinations get older content of another size.
const QStringList kFiles = {"empty.txt", "small.txt", "sub/big.bin", "sub/deeper/mid.dat"};

QByteArray newContent(const QString& file) {
    if (file == "empty.txt")
        return {};
    const int size = file.startsWith("sub/big") ? 300 * 1024 : 5000;
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = char('a' + (i * 7 + file.size()) % 26);
    return bytes;
}

QByteArray oldContent(const QString& file) {
    return "old " + file.toUtf8();
}

void write(const QString& path, const QByteArray& bytes, qint64 mtime) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    f.flush(); // before the time is set: a later write would set it to now
    f.setFileTime(QDateTime::fromSecsSinceEpoch(mtime), QFileDevice::FileModificationTime);
}

QByteArray read(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
}

QStringList destinations(const Case& c) {
    return c.move ? QStringList{"d1", "d2"} : QStringList{"d1"};
}

// Sources at time 2,000,000. Destinations: the first file absent, the others old content, half
// of them older and half newer than their source.
void makeFixture(const QString& root, const Case& c) {
    for (int i = 0; i < kFiles.size(); ++i) {
        write(root + "/src/" + kFiles[i], newContent(kFiles[i]), 2000000);
        if (i == 0)
            continue;
        for (const QString& d : destinations(c))
            write(root + "/" + d + "/" + kFiles[i], oldContent(kFiles[i]),
                  i % 2 ? 1000000 : 3000000);
    }
}

// What a destination holds once the job is done.
QByteArray finalContent(const Case& c, int i) {
    const bool copied = i == 0 || c.overwrite == 2 || (c.overwrite == 0 && i % 2);
    return copied ? newContent(kFiles[i]) : oldContent(kFiles[i]);
}

QStringList temporaries(const QString& root) {
    QStringList found;
    QDirIterator it(root, {".ondrel~*"}, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        found << it.next();
    return found;
}

// The run in the child process: stops at change n (0: runs to its end).
int runChild(const QString& root, const Case& c, int n) {
    FixedScreen screen(9600, 7200);
    clsOndrelApp settings(screen, root);
    settings.setOverwrite(c.overwrite);
    settings.setDelSource(c.move);
    settings.setShowErrMsgs(false);
    clsSpecFile spec;
    auto sp = spec.SPs().Add(root + "/src");
    sp->setInclSubDirs(true);
    auto fg = sp->FGs().Add("*.*");
    for (const QString& d : destinations(c))
        fg->DPs().Add(root + "/" + d);
    const QStringList various{QString()};
    test::ScriptedHost host; // error messages are off: it is asked nothing
    DiskFileOps ops;
    StagingLog log;
    if (!log.open(root + "/Staging.log").ok())
        return 3;
    CrashPoint::arm(n);
    StagingRun run(spec, settings, various, host, ops, &log, root);
    run.run();
    return run.state().ProblemFiles.isEmpty() ? 0 : 1;
}

int startChild(const QString& root, int caseIndex, int n) {
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(),
                {"--child", root, QString::number(caseIndex), QString::number(n)});
    if (!child.waitForFinished(30000)) {
        child.kill();
        return -1;
    }
    return child.exitStatus() == QProcess::NormalExit ? child.exitCode() : -2;
}

} // namespace

class tst_CrashPoints : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void stopAtEveryChange_data() {
        QTest::addColumn<int>("caseIndex");
        for (int i = 0; i < int(std::size(kCases)); ++i)
            QTest::newRow(kCases[i].name) << i;
    }

    void stopAtEveryChange() {
        QFETCH(int, caseIndex);
        const Case& c = kCases[caseIndex];
        int stops = 0;
        for (int n = 1; n < 1000; ++n) {
            QTemporaryDir scratch;
            const QString root = scratch.path();
            makeFixture(root, c);
            const int first = startChild(root, caseIndex, n);
            if (first == 0)
                break; // the run makes fewer than n changes: every stop has been tried
            QCOMPARE(first, int(CrashPoint::kExitStatus));
            ++stops;

            // No destination half written; no source of a move gone before its copies.
            for (int i = 0; i < kFiles.size(); ++i) {
                const QByteArray source = read(root + "/src/" + kFiles[i]);
                for (const QString& d : destinations(c)) {
                    const QByteArray dest = read(root + "/" + d + "/" + kFiles[i]);
                    const bool whole = dest == newContent(kFiles[i]);
                    const bool untouched = dest == (i ? oldContent(kFiles[i]) : "<missing>");
                    const QString what = QString("stop %1: %2/%3").arg(n).arg(d, kFiles[i]);
                    QVERIFY2(whole || untouched, qPrintable(what + " is half written"));
                    QVERIFY2(whole || source != "<missing>",
                             qPrintable(what + " not whole, its source gone"));
                }
            }

            // A second run finishes the job and leaves nothing of the first behind.
            QCOMPARE(startChild(root, caseIndex, 0), 0);
            for (int i = 0; i < kFiles.size(); ++i) {
                for (const QString& d : destinations(c))
                    QCOMPARE(read(root + "/" + d + "/" + kFiles[i]), finalContent(c, i));
                QCOMPARE(QFile::exists(root + "/src/" + kFiles[i]), !c.move);
            }
            QCOMPARE(temporaries(root), QStringList());
        }
        QVERIFY2(stops > 5, "the run made too few changes to test");
        qInfo("%d stops", stops);
    }
};

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    if (argc == 5 && QByteArray(argv[1]) == "--child")
        return runChild(QString::fromLocal8Bit(argv[2]), kCases[atoi(argv[3])], atoi(argv[4]));
    tst_CrashPoints test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_CrashPoints.moc"
