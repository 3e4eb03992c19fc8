// Another user of the machine, or another program, acting on a job's trees while a run works on
// them: links planted and swapped, files rewritten and appearing, a disk that fails to write, a
// run stopped in the middle. Each case acts at one exact moment through the run's own hooks, and
// checks what is left on disk: nothing lost, nothing written, deleted or revealed outside the
// job's paths.

#include "../staging/StagingFixture.h"

#include "platform/UnnamedFiles.h"

#include <QtTest>

#include <condition_variable>
#include <mutex>

#include <sys/stat.h>
#include <unistd.h>

using namespace ondrel;
using namespace ondrel::test;

namespace {

struct stat statOf(const QString& path) {
    struct stat st {};
    ::lstat(QFile::encodeName(path).constData(), &st);
    return st;
}

} // namespace

class tst_Attacks : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // A move keeps every source it cannot vouch for at the moment of deletion, and says so. A
    // source directory swapped for a link after it was listed and before it is walked: the walk
    // does not go where the link leads, so a move takes nothing from there.
    void moveKeepsWhatItCannotVouchFor_data() {
        QTest::addColumn<QString>("why"); // the row's name is the attack
        QTest::newRow("sync fails") << "which the disk failed to write; it was not deleted.";
        QTest::newRow("source rewritten") << "changed after it was copied; it was not deleted.";
        QTest::newRow("source replaced") << "changed after it was copied; it was not deleted.";
        QTest::newRow("directory swapped")
            << "is reached through a link to a directory now; it was not deleted.";
        QTest::newRow("directory swapped during the walk")
            << "***Error 75, Path/File access error (a symbolic link to a directory on the way";
    }
    void moveKeepsWhatItCannotVouchFor() {
        const QString attack = QTest::currentDataTag();
        QFETCH(QString, why);
        StagingFixture f;
        f.file("src/sub/a.txt", "mine");
        f.file("victim/a.txt", "VICT");
        f.group("src", "*.*", {"dst"}, true);
        f.settings.setDelSource(true);
        f.settings.setShowErrMsgs(false);
        const bool walking = attack == "directory swapped during the walk";
        const auto swap = [&] {
            QFile::rename(f.path("src/sub"), f.path("src/moved"));
            QFile::link(f.path("victim"), f.path("src/sub"));
        };
        f.host.onYield = [&] { // yield 2: the walk has listed src and is about to enter sub
            if (walking && f.host.yields == 2)
                swap();
        };
        f.ops.onSync = [&] {
            if (attack == "sync fails") {
                f.ops.failingDevices.push_back(statOf(f.path("dst/sub/a.txt")).st_dev);
            } else if (attack == "source rewritten") {
                f.file("src/sub/a.txt", "XXXX"); // same size and second
            } else if (attack == "source replaced") {
                f.file("src/sub/new", "mine"); // same size and time, another file
                ::rename(QFile::encodeName(f.path("src/sub/new")).constData(),
                         QFile::encodeName(f.path("src/sub/a.txt")).constData());
            } else if (attack == "directory swapped") {
                swap();
            }
        };
        const QString log = f.stage().join('\n');
        QVERIFY2(log.contains(why), qPrintable(log));
        QCOMPARE(f.run->state().DeletedCount, 0);
        QVERIFY(f.run->state().errorReported || attack.startsWith("source"));
        QCOMPARE(f.read("victim/a.txt"), QByteArray("VICT"));
        QCOMPARE(f.read("dst/sub/a.txt"), walking ? "<missing>" : "mine");
        QCOMPARE(f.read(attack.startsWith("directory") ? "src/moved/a.txt" : "src/sub/a.txt"),
                 attack == "source rewritten" ? "XXXX" : "mine");
        QCOMPARE(f.host.summaryText.contains("They were not deleted from their source"), !walking);
    }

    // Below a destination path no link to a directory is followed, whether it was planted
    // before the run or the run's own directories were swapped for one; the destination path
    // itself, as the user wrote it, may be a link.
    void destinationLinks_data() {
        QTest::addColumn<QString>("dest");
        QTest::addColumn<bool>("refused");
        QTest::newRow("a link below the destination path") << "dst" << true;
        QTest::newRow("a link in the destination path as written") << "dst/sub" << false;
    }
    void destinationLinks() {
        QFETCH(QString, dest);
        QFETCH(bool, refused);
        StagingFixture f;
        f.file("src/sub/passwd", "attacker's");
        f.file("victim/passwd", "root:x:0:0");
        QDir().mkpath(f.path("dst"));
        QFile::link(f.path("victim"), f.path("dst/sub"));
        f.group("src", "*.*", {dest}, true);
        f.settings.setOverwrite(2);
        f.settings.setShowErrMsgs(false);
        const QString log = f.stage().join('\n');
        QCOMPARE(f.read("victim/passwd"), QByteArray("root:x:0:0"));
        QCOMPARE(f.read("victim/sub/passwd"), refused ? "<missing>" : "attacker's");
        QCOMPARE(log.contains("***Error 75, Path/File access error (a symbolic link"), refused);
        QCOMPARE(f.run->state().ProblemFiles.contains("passwd"), refused);
        QVERIFY(S_ISLNK(statOf(f.path("dst/sub")).st_mode));
    }

    // Where copies go by temporary names (a network file system), each worker writes them in a
    // directory of its own at the top of the destination. Another user who may write there and
    // moves that directory away in the middle of a run gets nothing from it: it is its owner's
    // alone, every copy still reaches its destination, and nothing is left in it.
    void workersDirectoryMovedAway() {
        StagingFixture f;
        f.workers = 4;
        for (int i = 0; i < 40; ++i)
            f.file(QString("src/s/f%1.txt").arg(i), QByteArray((200 << 10) + i, 'x'));
        QVERIFY(QDir().mkpath(f.path("dst")) && QDir().mkpath(f.path("elsewhere")));
        ::chmod(QFile::encodeName(f.path("dst")).constData(), 0777);
        f.group("src", "*.txt", {"dst"}, true);
        std::mutex mutex;
        std::condition_variable begun;
        bool anyBegun = false;
        QString moved;
        // The run waits for the workers' first transfer, so that it cannot copy every file
        // itself before they start.
        f.host.onYield = [&] {
            std::unique_lock lock(mutex);
            if (f.run->state().CopiedCount >= 1)
                begun.wait_for(lock, std::chrono::seconds(30), [&] { return anyBegun; });
        };
        f.ops.onTransfer = [&](const QByteArray&, bool begins) {
            const std::lock_guard lock(mutex);
            anyBegun = true;
            begun.notify_all();
            const QStringList own =
                QDir(f.path("dst")).entryList({".ondrel~copies~*"}, QDir::Dirs | QDir::Hidden);
            if (begins || !moved.isEmpty() || own.isEmpty())
                return;
            moved = f.path("elsewhere/" + own.first());
            ::rename(QFile::encodeName(f.path("dst/" + own.first())).constData(),
                     QFile::encodeName(moved).constData());
        };
        UnnamedFiles::setUsable(false);
        f.stage();
        UnnamedFiles::setUsable(true);
        QVERIFY(!moved.isEmpty());
        QCOMPARE(statOf(moved).st_mode & 0777, mode_t(0700));
        QVERIFY(QDir(moved)
                    .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                    .isEmpty());
        for (int i = 0; i < 40; ++i)
            QCOMPARE(f.read(QString("dst/s/f%1.txt").arg(i)), QByteArray((200 << 10) + i, 'x'));
        QVERIFY(f.run->state().ProblemFiles.isEmpty());
    }

    // A file that appears at a missing destination while the copy is written is judged by the
    // overwrite rule when the copy comes to take its name, never silently replaced.
    void fileAppearsWhileCopied_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("logged");
        QTest::newRow("Never") << 3 << "appeared while it was being copied";
        QTest::newRow("If Older, newer file appears") << 0 << "appeared while it was being copied";
        QTest::newRow("Prompt, answered No") << 1 << ">>>Ignoring file";
        QTest::newRow("Always") << 2 << "Copying ";
    }
    void fileAppearsWhileCopied() {
        QFETCH(int, mode);
        QFETCH(QString, logged);
        StagingFixture f;
        f.file("src/a.txt", "ours");
        f.group("src", "*.*", {"dst"});
        f.settings.setOverwrite(qint16(mode));
        f.host.answers = {MsgAnswer::No};
        f.ops.onCopy = [&](const QByteArray&, const QByteArray&) {
            f.file("dst/a.txt", "theirs", 2000000);
        };
        const QString log = f.stage().join('\n');
        QCOMPARE(f.read("dst/a.txt"), mode == 2 ? "ours" : "theirs"); // only Always replaces it
        QVERIFY2(log.contains(logged), qPrintable(log));
        QCOMPARE(f.run->state().CopiedCount, mode == 2 ? 1 : 0);
        QCOMPARE(f.host.titles(),
                 mode == 1 ? QStringList{"Overwrite Existing File?"} : QStringList{});
    }

    // Cancel (and Ctrl-C, which sets the same flag) stops a large copy between its chunks, and
    // the deletions of a move at the next file.
    void cancel_data() {
        QTest::addColumn<QString>("when");
        QTest::newRow("during the walk: nothing is deleted") << "walk";
        QTest::newRow("during a large copy") << "copy";
        QTest::newRow("during the deletions") << "deletions";
    }
    void cancel() {
        QFETCH(QString, when);
        StagingFixture f;
        if (when == "copy")
            f.file("src/big.bin", QByteArray(20 << 20, 'b'));
        else
            for (const char* name : {"a.txt", "b.txt", "c.txt"})
                f.file(QStringLiteral("src/") + name, name);
        f.group("src", "*.*", {"dst"});
        f.settings.setDelSource(true);
        bool armed = when == "walk";
        int yieldsSinceArmed = 0;
        f.ops.onCopy = [&](const QByteArray&, const QByteArray&) { armed |= when == "copy"; };
        f.ops.onSync = [&] { armed = true; };
        f.host.onYield = [&] {
            if (armed && ++yieldsSinceArmed == 2)
                f.run->Cancel();
        };
        f.stage();
        const RunState& state = f.run->state();
        QVERIFY(state.Cancelled);
        QCOMPARE(f.host.summaryTitle, QString("Staging Aborted!"));
        if (when == "copy") { // no part of the copy is left
            QCOMPARE(QDir(f.path("dst")).entryList(QDir::Files | QDir::Hidden), QStringList{});
            QCOMPARE(f.read("src/big.bin").size(), 20 << 20);
        }
        const bool deleting = when == "deletions"; // the first file was deleted before Cancel
        QCOMPARE(state.DeletedCount, deleting ? 1 : 0);
        QCOMPARE(QDir(f.path("src")).entryList(QDir::Files).size() + state.DeletedCount,
                 when == "copy" ? 1 : 3);
        QCOMPARE(state.UndeletedFiles.count("\r\n"), deleting ? 2 : 0);
        // Nothing deleted: the summary says so and gives no count; else the count, and not that.
        const QString& summary = f.host.summaryText;
        QCOMPARE(summary.contains(deleting ? "No files were deleted"
                                           : "Staging aborted.\r\n\r\nNo files were deleted from "
                                             "their source directories.\r\n\r\n"),
                 !deleting);
        QCOMPARE(summary.contains(deleting ? "# of Files Deleted:\t1" : "# of Files Deleted"),
                 deleting);
    }

    // As root: a link to a file is followed only if its owner owns the file too (or runs the
    // job); a move keeps each file's owner, as mv does, and a copy belongs to root, as with cp.
    void owners_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<bool>("move");
        QTest::addColumn<int>("owner"); // of the copy; -1: no copy
        QTest::newRow("another user's link to root's file") << "link" << false << -1;
        QTest::newRow("root's own link to that file") << "own link" << false << 0;
        QTest::newRow("another user's file, moved") << "file" << true << 65534;
        QTest::newRow("another user's file, copied") << "file" << false << 0;
    }
    void owners() {
        if (::geteuid() != 0)
            QSKIP("needs root");
        QFETCH(QString, source);
        QFETCH(bool, move);
        QFETCH(int, owner);
        StagingFixture f;
        f.file("secret", "root only");
        if (source == "file")
            f.file("src/a.txt", "theirs");
        else
            QVERIFY(QDir().mkpath(f.path("src")) &&
                    QFile::link(f.path("secret"), f.path("src/a.txt")));
        const QByteArray a = QFile::encodeName(f.path("src/a.txt"));
        ::chmod(a.constData(), 0600); // through a link, the secret's
        if (source != "own link")
            QCOMPARE(::lchown(a.constData(), 65534, 65534), 0);
        f.group("src", "*.*", {"dst"});
        f.settings.setDelSource(move);
        f.settings.setShowErrMsgs(false);
        f.stage();
        QCOMPARE(f.exists("dst/a.txt") ? int(statOf(f.path("dst/a.txt")).st_uid) : -1, owner);
        QCOMPARE(f.run->state().ProblemFiles.contains("a.txt"), owner < 0);
        QCOMPARE(f.read("secret"), QByteArray("root only"));
    }
};

QTEST_GUILESS_MAIN(tst_Attacks)
#include "tst_Attacks.moc"
