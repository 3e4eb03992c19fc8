#include "StagingFixture.h"

#include "platform/UnnamedFiles.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QRegularExpression>
#include <QtTest>

#include <mutex>
#include <optional>

#include <sys/mount.h>
#include <sys/stat.h>

using namespace ondrel;
using namespace ondrel::test;

namespace {

// What a run shows and leaves, with the scratch directory and the clock taken out.
struct Outcome {
    QStringList log;
    QString summary;
    QStringList questions;
    int status = 0;
    int yields = 0; // where a Cancel button is looked at
    QStringList tree;
    bool workDirectorySeen = false; // a worker's own, in d1, as a copy made ahead took its name
};

QStringList treeOf(const QString& root) {
    QStringList tree;
    QDirIterator it(root, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString name = path.mid(root.size() + 1);
        if (name == "Staging.log")
            continue;
        struct stat st {};
        ::lstat(QFile::encodeName(path).constData(), &st);
        QString line = name + QString::asprintf(" %o", unsigned(st.st_mode));
        if (S_ISREG(st.st_mode)) {
            QFile f(path);
            f.open(QIODevice::ReadOnly);
            line +=
                QString::asprintf(" %lld.%09ld ", qint64(st.st_mtim.tv_sec), st.st_mtim.tv_nsec) +
                QCryptographicHash::hash(f.readAll(), QCryptographicHash::Md5).toHex();
        }
        tree << line;
    }
    tree.sort();
    return tree;
}

QString masked(QString text, const QString& root) {
    static const QRegularExpression clock(QStringLiteral("(Date/Time:|started:)[^\\r\\n]*"));
    return text.replace(root, QStringLiteral("<dir>")).replace(clock, QStringLiteral("\\1 <time>"));
}

// Makes writable the destination file a permission question is about.
void repairFirst(StagingFixture& f) {
    f.host.onAsk = [&f](const ScriptedHost::Question& q) {
        static const QRegularExpression source(QStringLiteral("^Unable to stage (.*)\\.  "));
        if (f.host.questions.size() != 1)
            return;
        const QString path = source.match(q.prompt).captured(1).replace("/src/", "/d1/");
        ::chmod(QFile::encodeName(path).constData(), 0644);
    };
}

// The source tree: 3 directories of 30 files, of 0 bytes to 3 MiB.
void sourceTree(StagingFixture& f) {
    for (int d = 0; d < 3; ++d)
        for (int i = 0; i < 30; ++i) {
            const int size = i % 10 == 9 ? (3 << 20) + i : i * 37;
            f.file(QString("src/s%1/f%2.txt").arg(d).arg(i, 2, 10, QChar('0')),
                   QByteArray(size, char('a' + (i + d) % 26)), 1000000 + i);
        }
}

// Copies of every third source file at the destination, older, as old, or newer.
void earlierCopies(StagingFixture& f, const QString& dest) {
    for (int d = 0; d < 3; ++d)
        for (int i = 0; i < 30; i += 3)
            f.file(QString("%1/s%2/f%3.txt").arg(dest).arg(d).arg(i, 2, 10, QChar('0')), "old",
                   1000000 + i + (i % 9) / 3 - 1);
}

// false: the case cannot be made here.
bool arrange(StagingFixture& f, const QString& kind) {
    sourceTree(f);
    f.group("src", "*.txt", {"d1", "d2"}, true);
    f.settings.setOverwrite(2);
    if (kind == "fresh") {
        return true;
    } else if (kind == "if older") {
        f.settings.setOverwrite(0);
        earlierCopies(f, "d1");
        earlierCopies(f, "d2");
    } else if (kind == "prompt") {
        f.settings.setOverwrite(1);
        earlierCopies(f, "d2");
        for (int i = 0; i < 40; ++i)
            f.host.answers.push_back(i % 3 == 1 ? MsgAnswer::No : MsgAnswer::Yes);
    } else if (kind == "prompt, cancel") {
        f.settings.setOverwrite(1);
        earlierCopies(f, "d1");
        f.host.answers = {MsgAnswer::Yes, MsgAnswer::No, MsgAnswer::Yes, MsgAnswer::Cancel};
    } else if (kind == "never") {
        f.settings.setOverwrite(3);
        earlierCopies(f, "d1");
    } else if (kind == "retry, ignore, abort") {
        earlierCopies(f, "d1");
        for (int d = 0; d < 3; ++d)
            ::chmod(QFile::encodeName(f.path(QString("d1/s%1/f06.txt").arg(d))).constData(), 0444);
        f.host.answers = {MsgAnswer::Retry, MsgAnswer::Ignore, MsgAnswer::Abort};
        repairFirst(f);
    } else if (kind == "cancel") {
        f.host.onYield = [&f] {
            if (f.host.yields == 140)
                f.run->Cancel();
        };
    } else if (kind == "no directories made") {
        f.settings.setCreateDirs(false);
        QDir().mkpath(f.path("d1/s1"));
    } else if (kind == "move") {
        f.settings.setDelSource(true);
        earlierCopies(f, "d2");
    } else if (kind == "disk full") {
        // d1 holds the small files but none of 3 MiB.
        QDir().mkpath(f.path("d1"));
        if (::mount("tmpfs", QFile::encodeName(f.path("d1")).constData(), "tmpfs", 0,
                    "size=2m,mode=0755") != 0)
            return false;
        f.host.answers = {MsgAnswer::Ignore};
    } else if (kind == "two sources, one destination") {
        f.settings.setOverwrite(1);
        f.file("src2/s1/f03.txt", "second", 2000000);
        f.group("src2", "*.txt", {"d1"}, true);
        f.host.answers = {MsgAnswer::No, MsgAnswer::Yes};
    }
    return true;
}

// named: every copy goes by a temporary name, as on a network file system.
std::optional<Outcome> stage(const QString& kind, int workers, bool named) {
    StagingFixture f;
    f.workers = workers;
    if (!arrange(f, kind))
        return std::nullopt;
    const QString root = f.dir.path();
    Outcome out;
    f.ops.onCommit = [&](const CopyJob&) {
        out.workDirectorySeen = out.workDirectorySeen ||
                                !QDir(f.path("d1"))
                                     .entryList({".ondrel~copies~*"}, QDir::Dirs | QDir::Hidden)
                                     .isEmpty();
    };
    UnnamedFiles::setUsable(!named);
    const QStringList log = f.stage();
    UnnamedFiles::setUsable(true);
    for (const QString& line : log)
        out.log << masked(line, root);
    out.summary = masked(f.host.summaryTitle + "\n" + f.host.summaryText, root);
    for (const ScriptedHost::Question& q : f.host.questions)
        out.questions << masked(q.title + ": " + q.prompt, root);
    const RunState& state = f.run->state();
    out.status =
        state.Cancelled ? 2
        : state.errorReported || !state.ProblemFiles.isEmpty() || !state.UndeletedFiles.isEmpty()
            ? 1
            : 0;
    out.tree = treeOf(root);
    out.yields = f.host.yields;
    if (kind == "disk full")
        ::umount2(QFile::encodeName(f.path("d1")).constData(), MNT_DETACH);
    return out;
}

} // namespace

// A run with workers copies ahead of itself: it must ask, log, count and leave on disk
// exactly what the same run with one thread does.
class tst_ParallelStaging : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void sameAsOneThread_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("named");
        for (const char* kind :
             {"fresh", "if older", "prompt", "prompt, cancel", "never", "retry, ignore, abort",
              "cancel", "no directories made", "move", "two sources, one destination", "disk full"})
            QTest::newRow(kind) << QString(kind) << false;
        // Workers then write in directories of their own, which are gone when the run ends.
        for (const char* kind :
             {"fresh", "if older", "retry, ignore, abort", "cancel", "disk full"})
            QTest::newRow(qPrintable(QString(kind) + ", temporary names")) << QString(kind) << true;
    }

    void sameAsOneThread() {
        QFETCH(QString, kind);
        QFETCH(bool, named);
        const std::optional<Outcome> one = stage(kind, 1, named);
        if (!one)
            QSKIP("needs a small file system of its own: mounting is not permitted here");
        const std::optional<Outcome> four = stage(kind, 4, named);
        QVERIFY(four);
        QCOMPARE(four->questions, one->questions);
        QCOMPARE(four->log, one->log);
        QCOMPARE(four->summary, one->summary);
        QCOMPARE(four->status, one->status);
        QCOMPARE(four->tree, one->tree); // no worker's directory of its own left either
        if (kind == "fresh")
            QCOMPARE(four->workDirectorySeen, named);
        // A transfer that fails for lack of space is made again by the run once the window has
        // drained: the looks at Cancel it made before failing come on top.
        if (kind != "disk full")
            QCOMPARE(four->yields, one->yields);
        QVERIFY(one->log.size() > 20);
    }

    // A source written to after its copy was made ahead is copied again when the run reaches
    // it: the destination holds the file as it is then, as with one thread.
    void sourceChangedAfterItsTransfer() {
        StagingFixture f;
        f.workers = 4;
        sourceTree(f);
        f.group("src", "*.txt", {"d1"}, true);
        QStringList changed;
        std::mutex mutex;
        f.ops.onTransfer = [&](const QByteArray& path, bool begins) {
            const QString source = QFile::decodeName(path);
            QFile file(source);
            if (!begins && source.endsWith("5.txt") && file.open(QIODevice::Append)) {
                file.write(" and more");
                const std::lock_guard lock(mutex);
                changed << source;
            }
        };
        f.stage();
        QVERIFY(!changed.isEmpty());
        for (const QString& source : changed) {
            const QString relative = source.mid(f.dir.path().size() + 1);
            QVERIFY(f.read(relative).endsWith(" and more"));
            QCOMPARE(f.read(QString(relative).replace("src/", "d1/")), f.read(relative));
        }
    }

    // The window holds at most 64 MiB of copies made ahead, those being written included: a
    // few large files must not fill the disk with copies the run has not reached.
    void windowBoundsTheBytesBeingWritten() {
        StagingFixture f;
        f.workers = 4;
        for (int i = 0; i < 5; ++i)
            f.file(QString("src/big%1.bin").arg(i), QByteArray(24 << 20, char('a' + i)));
        f.file("src/a.txt", "first");
        f.group("src", "*", {"d1"});
        std::mutex mutex;
        qint64 writing = 0, most = 0;
        f.ops.onTransfer = [&](const QByteArray& source, bool begins) {
            const qint64 size = QFileInfo(QFile::decodeName(source)).size();
            const std::lock_guard lock(mutex);
            writing += begins ? size : -size;
            most = std::max(most, writing);
        };
        f.stage();
        QVERIFY(most >= 24 << 20);
        QVERIFY(most <= 64 << 20);
        QCOMPARE(f.read("d1/big4.bin"), QByteArray(24 << 20, 'e'));
    }

    // Copies made ahead take their names without the run looking at their destinations again
    // (Never: found missing), or after the run decided to replace the file it found there (If
    // Older: earlier copies): a file that stands there by then, and is not the one decided on,
    // is judged by the overwrite rule all the same.
    void fileAppearsBeforeTheNameIsTaken_data() {
        QTest::addColumn<int>("overwrite");
        QTest::newRow("never") << 3;
        QTest::newRow("if older") << 0;
    }
    void fileAppearsBeforeTheNameIsTaken() {
        QFETCH(int, overwrite);
        StagingFixture f;
        f.workers = 4;
        sourceTree(f);
        f.group("src", "*.txt", {"d1"}, true);
        f.settings.setOverwrite(qint16(overwrite));
        if (overwrite == 0)
            earlierCopies(f, "d1");
        QStringList planted;
        f.ops.onCommit = [&](const CopyJob& job) {
            const QString path = QFile::decodeName(job.destination());
            if ((path.endsWith("1.txt") || path.endsWith("18.txt")) && !planted.contains(path)) {
                planted << path;
                f.file(path.mid(f.dir.path().size() + 1), "planted", 3000000);
            }
        };
        const QStringList log = f.stage();
        QVERIFY(planted.size() >= 3);
        // Under If Older, f18 is one whose older copy stood there.
        QVERIFY(std::any_of(planted.cbegin(), planted.cend(),
                            [](const QString& path) { return path.endsWith("18.txt"); }));
        for (const QString& path : planted) {
            QCOMPARE(f.read(path.mid(f.dir.path().size() + 1)), QByteArray("planted"));
            QVERIFY(log.contains(">>>" + path +
                                 " appeared while it was being copied; it was not replaced."));
        }
        QCOMPARE(f.read("d1/s2/f00.txt"), QByteArray());
        QCOMPARE(f.read("d1/s2/f02.txt").size(), 2 * 37);
        QVERIFY(f.run->state().ProblemFiles.isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_ParallelStaging)
#include "tst_ParallelStaging.moc"
