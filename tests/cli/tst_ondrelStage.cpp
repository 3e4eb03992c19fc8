// The headless stager as a user runs it: the real program on real trees.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Outcome {
    int code = -1;
    QString out;
    QString err;
};

using Options = QList<QPair<QByteArray, QByteArray>>;

QByteArray optionsText(const Options& options) {
    QByteArray text = "[FSOptions]\r\n";
    for (const auto& [key, value] : options)
        text += key + '=' + value + "\r\n";
    return text;
}

// A spec of one source path with one file group.
QByteArray specText(const QString& source, const QString& masks, const QStringList& dests) {
    QByteArray text = "[SourcePaths]\r\nSP1=" + source.toUtf8() + "\r\n[ISD]\r\nSP1=True\r\n" +
                      "[SP1FGs]\r\nFG1=" + masks.toUtf8() + "\r\n[SP1FG1DPs]\r\n";
    for (int k = 0; k < dests.size(); ++k)
        text += "DP" + QByteArray::number(k + 1) + '=' + dests[k].toUtf8() + "\r\n";
    return text;
}

bool writeFile(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

} // namespace

class tst_ondrelStage : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;

    QString at(const QString& relative) const { return m_dir->filePath(relative); }

    // %T in an argument stands for the test's directory. inChild runs in the child before the
    // program starts.
    Outcome stage(QStringList args, const QString& workDir = {},
                  const QString& program = QStringLiteral(ONDREL_STAGE),
                  const std::function<void()>& inChild = {}) {
        for (QString& arg : args)
            arg.replace(QStringLiteral("%T"), m_dir->path());
        QProcess process;
        if (inChild)
            process.setChildProcessModifier(inChild);
        process.setWorkingDirectory(workDir.isEmpty() ? m_dir->path() : workDir);
        process.start(program, args);
        process.closeWriteChannel();
        if (!process.waitForFinished(30000) || process.exitStatus() != QProcess::NormalExit)
            return {};
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    // src/ with three text files in two levels and one other file; a spec staging *.txt to dst/.
    void makeTree(const Options& options) {
        QVERIFY(writeFile(at("src/a.txt"), "A"));
        QVERIFY(writeFile(at("src/sub/b.txt"), "B"));
        QVERIFY(writeFile(at("src/sub/deeper/c.txt"), "C"));
        QVERIFY(writeFile(at("src/skip.bin"), "X"));
        QVERIFY(writeFile(at("job.spc"), specText(at("src"), "*.txt", {at("dst")})));
        QVERIFY(writeFile(at("job.opt"), optionsText(options)));
    }

private Q_SLOTS:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }

    void commandLine_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("expected"); // in standard error, or standard output for 0
        // None of them stages anything or touches the log.
        QTest::addColumn<bool>("usage"); // the usage follows the error

        const QString spec = "%T/job.spc";
        QTest::newRow("no spec file") << QStringList{"--batch"} << 64 << "no spec file" << true;
        QTest::newRow("two spec files") << QStringList{spec, spec} << 64 << "only one" << true;
        QTest::newRow("unknown option")
            << QStringList{"--frobnicate", spec} << 64 << "unknown option --frobnicate" << true;
        QTest::newRow("bad overwrite answer")
            << QStringList{"--overwrite=maybe", spec} << 64 << "yes|no|cancel" << true;
        QTest::newRow("retry is no unattended answer")
            << QStringList{"--on-error", "retry", spec} << 64 << "abort|ignore" << true;
        QTest::newRow("log and no log")
            << QStringList{"--log", "%T/run.log", "--no-log", spec} << 64 << "--no-log" << true;
        QTest::newRow("log without a name")
            << QStringList{spec, "--log"} << 64 << "--log needs a value" << true;
        QTest::newRow("flag with a value")
            << QStringList{"--batch=yes", spec} << 64 << "takes no value" << true;
        QTest::newRow("no workers") << QStringList{"--jobs", "0", spec} << 64
                                    << "--jobs must be a number from 1 to 64" << true;
        QTest::newRow("workers that are no number")
            << QStringList{"--jobs=many", spec} << 64 << "not \"many\"" << true;
        QTest::newRow("missing file list") << QStringList{"--various", "%T/none.txt", spec} << 64
                                           << "cannot read the file list" << false;
        QTest::newRow("missing options file") << QStringList{"--options", "%T/none.opt", spec} << 64
                                              << "cannot read the options file" << false;
        QTest::newRow("options value of the wrong type")
            << QStringList{"--options", "%T/type.opt", spec} << 64
            << "error 13 reading the options file %T/type.opt: CreateDirs=maybe: Type mismatch"
            << false;
        QTest::newRow("options value out of range")
            << QStringList{"--options", "%T/range.opt", spec} << 64
            << "error 6 reading the options file" << false;
        QTest::newRow("log in a missing directory")
            << QStringList{"--options", "%T/job.opt", "--log", "%T/no/such/x.log", spec} << 64
            << "cannot open the log file" << false;
        QTest::newRow("missing spec file")
            << QStringList{"--batch", "--log", "%T/run.log", "%T/none.spc"} << 65
            << "Spec File Not Found or Invalid: The selected file does not exist" << false;
        QTest::newRow("spec with a bad include-subdirectories value")
            << QStringList{"--batch", "--log", "%T/run.log", "%T/bad.spc"} << 65
            << "Error Loading Spec File: Error 13 occurred while loading Spec File " << false;
        // What is not a file, or too large to be one of ours, is refused at once (each kind for
        // each reader is tst_WholeFile's).
        QTest::newRow("device as options file")
            << QStringList{"--options", "/dev/zero", spec} << 64
            << "cannot read the options file /dev/zero: Not a regular file" << false;
        QTest::newRow("64 MiB and one byte as file list")
            << QStringList{"--various", "%T/big", spec} << 64
            << "cannot read the file list %T/big: File too large" << false;
        QTest::newRow("fifo as spec file")
            << QStringList{"--batch", "%T/fifo"} << 65
            << "Error 75 occurred while loading Spec File %T/fifo." << false;
        QTest::newRow("fifo as log, nobody reading")
            << QStringList{"--options", "%T/job.opt", "--log", "%T/fifo", spec} << 64
            << "cannot open the log file %T/fifo: Device unavailable" << false;
        QTest::newRow("help") << QStringList{"--help"} << 0 << "Usage: ondrel-stage" << false;
        QTest::newRow("help wins over a bad option")
            << QStringList{"--bogus", "-h"} << 0 << "--on-error=abort|ignore" << false;
        QTest::newRow("version") << QStringList{"--version"} << 0
                                 << "ondrel-stage " ONDREL_VERSION "\n"
                                 << false;
    }

    void commandLine() {
        QFETCH(QStringList, args);
        QFETCH(int, code);
        QFETCH(QString, expected);
        QFETCH(bool, usage);
        makeTree({});
        QVERIFY(writeFile(at("type.opt"), optionsText({{"CreateDirs", "maybe"}})));
        QVERIFY(writeFile(at("range.opt"), optionsText({{"Overwrite", "40000"}})));
        QVERIFY(writeFile(at("bad.spc"), "[SourcePaths]\r\nSP1=/tmp\r\n[ISD]\r\nSP1=yes\r\n"));
        QVERIFY(::mkfifo(QFile::encodeName(at("fifo")).constData(), 0600) == 0);
        QFile big(at("big")); // sparse: costs no disk
        QVERIFY(big.open(QIODevice::WriteOnly) && big.resize((qint64(64) << 20) + 1));

        const Outcome r = stage(args);
        QCOMPARE(r.code, code);
        QVERIFY2((code ? r.err : r.out).contains(expected.replace("%T", m_dir->path())),
                 qPrintable(r.err + r.out));
        QCOMPARE(r.err.contains("Usage: ondrel-stage"), usage);
        QVERIFY(!QFileInfo::exists(at("dst")));
        QVERIFY(!QFileInfo::exists(at("run.log")));
    }

    void copiesTree_data() {
        QTest::addColumn<QStringList>("extra");
        QTest::newRow("plain") << QStringList{};
        QTest::newRow("quiet") << QStringList{"--quiet"};
        QTest::newRow("four workers") << QStringList{"--jobs", "4"};
    }

    void copiesTree() {
        QFETCH(QStringList, extra);
        makeTree({});
        const Outcome r = stage(extra + QStringList{"--batch", "--options", "%T/job.opt", "--log",
                                                    "%T/run.log", "%T/job.spc"});
        QCOMPARE(r.code, 0);
        // Standard error is no terminal here: no progress line, nor anything else.
        QCOMPARE(r.err, QString());
        QCOMPARE(readFile(at("dst/a.txt")), QByteArray("A"));
        QCOMPARE(readFile(at("dst/sub/b.txt")), QByteArray("B"));
        QCOMPARE(readFile(at("dst/sub/deeper/c.txt")), QByteArray("C"));
        QVERIFY(!QFileInfo::exists(at("dst/skip.bin")));
        QVERIFY2(r.out.startsWith("Staging Complete!\n"), qPrintable(r.out));
        QVERIFY(r.out.contains("during staging:\nNONE\n"));
        QVERIFY(r.out.contains("# of Files Copied:\t3\n"));
        QVERIFY(!r.out.contains('\r'));

        const QByteArray log = readFile(at("run.log"));
        QVERIFY(log.startsWith("Staging started:  "));
        QVERIFY(log.contains("Copying " + at("src/sub/b.txt").toUtf8() + " to " +
                             at("dst/sub/b.txt").toUtf8() + "\r\n"));
        QVERIFY(log.contains("\r\nStaging completed\r\n"));
    }

    void logChoice_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QByteArray>("createLog");
        QTest::addColumn<QString>("log"); // the log expected, relative; empty: none anywhere

        QTest::newRow("named") << QStringList{"--log", "%T/named.log"} << QByteArray("False")
                               << "named.log";
        QTest::newRow("CreateLog: Staging.log in the current directory")
            << QStringList{} << QByteArray("True") << "work/Staging.log";
        QTest::newRow("no CreateLog") << QStringList{} << QByteArray("False") << "";
        QTest::newRow("no-log overrides CreateLog")
            << QStringList{"--no-log"} << QByteArray("True") << "";
        QTest::newRow("dry run ignores CreateLog")
            << QStringList{"--dry-run"} << QByteArray("True") << "";
    }

    void logChoice() {
        QFETCH(QStringList, args);
        QFETCH(QByteArray, createLog);
        QFETCH(QString, log);
        makeTree({{"CreateLog", createLog}});
        QVERIFY(QDir().mkpath(at("work")));
        const Outcome r = stage(
            args + QStringList{"--batch", "--options", "%T/job.opt", "%T/job.spc"}, at("work"));
        QCOMPARE(r.code, 0);
        for (const QString& candidate : QStringList{"named.log", "work/Staging.log", "Staging.log"})
            QCOMPARE(QFileInfo::exists(at(candidate)), candidate == log);
    }

    // A log that cannot be written (a file-size limit stands in for a full disk) is an error of
    // the run, said once; the staging goes on, and the log holds whole lines only.
    void logWriteFailure_data() {
        QTest::addColumn<int>("files");    // more than the three of the tree
        QTest::addColumn<int>("limit");    // bytes the log may take
        QTest::addColumn<QString>("also"); // another message in standard error
        QTest::newRow("while staging") << 800 << 8192 << QString();
        QTest::newRow("at the end") << 0 << 600 << QString();
        QTest::newRow("in the header") << 0 << 100 << "Form_Load Error: Error 61 occurred.";
    }

    void logWriteFailure() {
        QFETCH(int, files);
        QFETCH(int, limit);
        QFETCH(QString, also);
        makeTree({});
        for (int i = 0; i < files; ++i)
            QVERIFY(writeFile(at("src/many/f" + QString::number(i) + ".txt"), "x"));
        const Outcome r =
            stage({"--batch", "--options", "%T/job.opt", "--log", "%T/run.log", "%T/job.spc"}, {},
                  ONDREL_STAGE, [limit] {
                      const rlimit size{rlim_t(limit), rlim_t(limit)};
                      ::setrlimit(RLIMIT_FSIZE, &size);
                      std::signal(SIGXFSZ, SIG_IGN);
                  });
        QCOMPARE(r.code, 1);
        QCOMPARE(r.err.count("Staging Log Error: Unable to write the staging log " + at("run.log") +
                             ".  Disk full\n"),
                 1);
        QVERIFY2(r.err.contains(also), qPrintable(r.err));
        QCOMPARE(readFile(at("dst/sub/deeper/c.txt")), QByteArray("C"));
        if (files)
            QCOMPARE(readFile(at("dst/many/f" + QString::number(files - 1) + ".txt")), "x");
        const QByteArray log = readFile(at("run.log"));
        QVERIFY(log.size() <= limit);
        QVERIFY2(log.isEmpty() || log.endsWith("\r\n"), log.right(200).constData());
    }

    // A log is opened through a symbolic link only when the link is the user's own: one that
    // another user planted where the log goes would have the job overwrite its target.
    void logThroughLink_data() {
        QTest::addColumn<bool>("foreign");
        QTest::newRow("the user's own link") << false;
        QTest::newRow("another user's link") << true;
    }

    void logThroughLink() {
        QFETCH(bool, foreign);
        if (foreign && ::geteuid() != 0)
            QSKIP("needs root to give the link to another user");
        makeTree({{"CreateLog", "True"}});
        QVERIFY(writeFile(at("target"), "precious"));
        const QByteArray link = QFile::encodeName(at("Staging.log"));
        QCOMPARE(::symlink("target", link.constData()), 0);
        if (foreign)
            QCOMPARE(::lchown(link.constData(), 65534, 65534), 0);
        const Outcome r = stage({"--batch", "--options", "%T/job.opt", "%T/job.spc"});
        QCOMPARE(r.code, foreign ? 64 : 0);
        if (foreign) {
            QVERIFY2(r.err.contains("cannot open the log file Staging.log: Permission denied (the "
                                    "log is a symbolic link owned by another user)"),
                     qPrintable(r.err));
            QCOMPARE(readFile(at("target")), QByteArray("precious"));
            QVERIFY(!QFileInfo::exists(at("dst")));
        } else {
            QVERIFY(readFile(at("target")).startsWith("Staging started:  "));
        }
    }

    // With no --options the options file beside the program is read.
    void optionsFileBesideProgram() {
        makeTree({});
        QVERIFY(QDir().mkpath(at("bin")));
        QVERIFY(QFile::copy(ONDREL_STAGE, at("bin/ondrel-stage")));
        QVERIFY(writeFile(at("bin/ONDREL.OPT"), optionsText({{"CreateLog", "True"}})));
        const Outcome r = stage({"--batch", "%T/job.spc"}, {}, at("bin/ondrel-stage"));
        QCOMPARE(r.code, 0);
        QVERIFY(readFile(at("Staging.log")).startsWith("Staging started:  "));
    }

    void dryRun_data() {
        QTest::addColumn<Options>("options");
        QTest::addColumn<bool>("readOnlyDest"); // dst/a.txt exists, read-only
        QTest::addColumn<int>("code");
        QTest::addColumn<QStringList>("printed");
        QTest::addColumn<QStringList>("notPrinted");

        const QString c = "copy %T/src/sub/deeper/c.txt -> %T/dst/sub/deeper/c.txt";
        const QString a = "copy %T/src/a.txt -> %T/dst/a.txt";
        QTest::newRow("missing tree made")
            << Options{} << false << 0 << QStringList{c, a, "make directory %T/dst/sub/deeper"}
            << QStringList{"delete "};
        QTest::newRow("missing tree skipped without CreateDirs")
            << Options{{"CreateDirs", "False"}} << false << 0 << QStringList{}
            << QStringList{"copy ", "make directory "};
        QTest::newRow("move") << Options{{"DelSource", "True"}} << false << 0
                              << QStringList{c, a, "delete %T/src/a.txt"} << QStringList{};
        QTest::newRow("read-only destination refused")
            << Options{{"Overwrite", "2"}} << true << 1 << QStringList{c} << QStringList{a};
    }

    void dryRun() {
        QFETCH(Options, options);
        QFETCH(bool, readOnlyDest);
        QFETCH(int, code);
        QFETCH(QStringList, printed);
        QFETCH(QStringList, notPrinted);
        makeTree(options);
        if (readOnlyDest) {
            QVERIFY(writeFile(at("dst/a.txt"), "old"));
            QVERIFY(QFile::setPermissions(at("dst/a.txt"), QFile::ReadOwner));
        }
        const Outcome r = stage({"--dry-run", "--batch", "--options", "%T/job.opt", "%T/job.spc"});
        QCOMPARE(r.code, code);
        for (QString line : printed)
            QVERIFY2(r.out.contains(line.replace("%T", m_dir->path()) + '\n'), qPrintable(r.out));
        for (QString text : notPrinted)
            QVERIFY2(!r.out.contains(text.replace("%T", m_dir->path())), qPrintable(r.out));
        QVERIFY(r.out.contains("Staging Complete!"));
        QVERIFY(r.out.endsWith("dry run: nothing was changed\n"));
        QVERIFY(!QFileInfo::exists(at("dst/sub")));
        QCOMPARE(readFile(at("dst/a.txt")), readOnlyDest ? QByteArray("old") : "<missing>");
        QCOMPARE(readFile(at("src/a.txt")), QByteArray("A"));
    }

    // Whatever went wrong, the exit status says so, and the terminal names the path: after the
    // message, and on one line per failure whether or not messages are shown. A dry run meets
    // the same failures as the run. As root, the stager is run as user 65534 so that
    // permissions hold.
    void failuresEndWithStatusOne_data() {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<bool>("dryRun");
        QTest::addColumn<bool>("showErrMsgs");
        QTest::addColumn<QString>("message"); // in standard error
        QTest::addColumn<QString>("path");    // the path line after it, and in the failure's line

        QTest::newRow("missing source path")
            << "missing" << false << true
            << "Source Path Not Found: Source Path %T/none does not exist."
            << "%T/none";
        QTest::newRow("unreadable directory")
            << "private" << false << true << "DirWalk Error: Error 70 occurred."
            << "%T/src/private";
        QTest::newRow("unreadable directory, no messages")
            << "private" << false << false
            << "ondrel-stage: Error 70, Permission denied occurred during the directory search.  "
               "path: %T/src/private\n"
            << "%T/src/private";
        QTest::newRow("unreadable file")
            << "mode 000" << false << true << "File Access Permission Denied"
            << "%T/src/a.txt";
        QTest::newRow("unreadable file, dry run, no messages")
            << "mode 000" << true << false
            << "ondrel-stage: Unable to stage %T/src/a.txt.  The file may be in use by another "
               "application.\n"
            << "%T/src/a.txt";
    }

    void failuresEndWithStatusOne() {
        QFETCH(QString, setup);
        QFETCH(bool, dryRun);
        QFETCH(bool, showErrMsgs);
        QFETCH(QString, message);
        QFETCH(QString, path);
        makeTree({{"ShowErrMsgs", showErrMsgs ? "True" : "False"}});
        QStringList args = {"--batch", "--on-error=ignore", "--options", "%T/job.opt",
                            "%T/job.spc"};
        if (dryRun)
            args.prepend("--dry-run");
        if (setup == "missing") {
            QVERIFY(writeFile(at("job.spc"), specText(at("none"), "*.txt", {at("dst")})));
        } else if (setup == "private") {
            QVERIFY(writeFile(at("src/private/p.txt"), "P"));
            QVERIFY(QFile::setPermissions(at("src/private"),
                                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        } else if (setup == "mode 000") {
            QVERIFY(QFile::setPermissions(at("src/a.txt"), {}));
        }
        QString program = QStringLiteral(ONDREL_STAGE);
        if (::geteuid() == 0) {
            QVERIFY(::chmod(QFile::encodeName(m_dir->path()).constData(), 0777) == 0);
            args = QStringList{"--reuid=65534", "--regid=65534", "--clear-groups", ONDREL_STAGE} +
                   args;
            program = "setpriv";
        }
        const Outcome r = stage(args, {}, program);
        QVERIFY2(r.code == 1, qPrintable(r.out + r.err));
        QVERIFY2(r.err.contains(message.replace("%T", m_dir->path())), qPrintable(r.err));
        path.replace("%T", m_dir->path());
        QCOMPARE(r.err.contains("\n  path: " + path), showErrMsgs);
        const QStringList failures =
            r.err.split('\n').filter(QRegularExpression("^ondrel-stage: "));
        QCOMPARE(failures.size(), 1);
        QVERIFY2(failures.first().contains(path), qPrintable(r.err));
        // The rest of the tree is staged all the same.
        if (setup == "private" || setup == "mode 000")
            QCOMPARE(readFile(at("dst/sub/b.txt")), dryRun ? "<missing>" : QByteArray("B"));
    }

    // An existing destination answered from the command line: under "Prompt" the overwrite
    // question; under "Always", on a read-only file, the problem's question.
    void unattendedAnswers_data() {
        QTest::addColumn<Options>("options");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("asked"); // in standard error; empty: no question

        const QString overwrite = "Overwrite Existing File?: %T/dst/a.txt already exists.  "
                                  "Do you want to overwrite it?";
        const QString denied = "File Access Permission Denied";
        const Options prompt{{"Overwrite", "1"}};
        const Options always{{"Overwrite", "2"}};
        QTest::newRow("yes") << prompt << "--overwrite=yes" << 0 << QByteArray("A") << overwrite;
        QTest::newRow("no") << prompt << "--overwrite=no" << 0 << QByteArray("old") << overwrite;
        QTest::newRow("cancel") << prompt << "--overwrite=cancel" << 2 << QByteArray("old")
                                << overwrite;
        QTest::newRow("read-only, ignore")
            << always << "--on-error=ignore" << 1 << QByteArray("old") << denied;
        QTest::newRow("read-only, abort")
            << always << "--on-error=abort" << 2 << QByteArray("old") << denied;
        QTest::newRow("read-only, no question without ShowErrMsgs")
            << (always + Options{{"ShowErrMsgs", "False"}}) << "--on-error=abort" << 1
            << QByteArray("old") << QString();
    }

    void unattendedAnswers() {
        QFETCH(Options, options);
        QFETCH(QString, answer);
        QFETCH(int, code);
        QFETCH(QByteArray, content);
        QFETCH(QString, asked);
        makeTree(options);
        QVERIFY(writeFile(at("dst/a.txt"), "old"));
        const bool readOnly = options.first().second == "2";
        if (readOnly)
            QVERIFY(QFile::setPermissions(at("dst/a.txt"), QFile::ReadOwner | QFile::ReadGroup));
        const Outcome r = stage({"--batch", answer, "--options", "%T/job.opt", "%T/job.spc"});
        QCOMPARE(r.code, code);
        QCOMPARE(readFile(at("dst/a.txt")), content);
        QVERIFY2(asked.isEmpty() ? !r.err.contains("File Access Permission Denied")
                                 : r.err.contains(asked.replace("%T", m_dir->path())),
                 qPrintable(r.err));
        QVERIFY2(r.out.startsWith(code == 2 ? "Staging Aborted!" : "Staging Complete!"),
                 qPrintable(r.out));
        QCOMPARE(r.out.contains("during staging:\n" + at("src/a.txt") + '\n'), readOnly);
    }

    void variousFiles() {
        QVERIFY(writeFile(at("in/one.txt"), "1"));
        QVERIFY(writeFile(at("in/a,b.txt"), "2"));
        QVERIFY(writeFile(at("in/skip.dat"), "3"));
        QVERIFY(writeFile(at("job.spc"), specText("<various>", "*.txt", {at("dst")})));
        QVERIFY(writeFile(at("job.opt"), optionsText({})));
        const QString in = at("in/");
        QVERIFY(writeFile(at("list.txt"), ('"' + in + "a,b.txt\"\r\n" + in + "one.txt\r\n" +
                                           "one.txt\r\n" + in + "skip.dat\r\n")
                                              .toUtf8()));
        const Outcome r =
            stage({"--batch", "--options", "%T/job.opt", "--various", "%T/list.txt", "%T/job.spc"});
        QCOMPARE(r.code, 0);
        QCOMPARE(readFile(at("dst/one.txt")), QByteArray("1"));
        QCOMPARE(readFile(at("dst/a,b.txt")), QByteArray("2"));
        QVERIFY(!QFileInfo::exists(at("dst/skip.dat")));
    }

    // Ctrl-C: the run stops, deletes no source, and finishes its log and summary. The log is a
    // fifo that the test stops reading, so the run is surely under way when the signal comes.
    void interruptCancelsRun() {
        const int count = 1500;
        const QString name(60, u'n');
        for (int i = 0; i < count; ++i)
            QVERIFY(writeFile(at("src/" + name + QString::number(i) + ".txt"), "x"));
        QVERIFY(writeFile(at("job.spc"), specText(at("src"), "*.txt", {at("dst")})));
        QVERIFY(writeFile(at("job.opt"), optionsText({{"DelSource", "True"}})));
        QCOMPARE(::mkfifo(QFile::encodeName(at("run.log")).constData(), 0600), 0);
        const int fd = ::open(QFile::encodeName(at("run.log")).constData(), O_RDONLY | O_NONBLOCK);
        QVERIFY(fd >= 0);

        QProcess process;
        process.start(ONDREL_STAGE, {"--batch", "--options", at("job.opt"), "--log", at("run.log"),
                                     at("job.spc")});
        QVERIFY(process.waitForStarted());
        QByteArray log;
        // Reads what the fifo holds; false once the writer has closed it.
        auto drain = [&] {
            pollfd p{fd, POLLIN, 0};
            ::poll(&p, 1, 100);
            char buffer[65536];
            const ssize_t n = ::read(fd, buffer, sizeof buffer);
            if (n > 0)
                log.append(buffer, n);
            return n != 0;
        };
        QDeadlineTimer deadline(30000);
        while (log.isEmpty() && process.state() == QProcess::Running && !deadline.hasExpired())
            drain();
        QVERIFY2(!log.isEmpty(), "the run never began its log");
        ::kill(pid_t(process.processId()), SIGINT);
        while (drain() && !deadline.hasExpired()) {
        }
        ::close(fd);
        QVERIFY(process.waitForFinished(30000));

        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 2);
        const QString out = QString::fromUtf8(process.readAllStandardOutput());
        QVERIFY2(out.startsWith("Staging Aborted!\n"), qPrintable(out));
        QVERIFY(out.contains("No files were deleted from their source directories."));
        QVERIFY(log.contains("\r\nStaging aborted\r\n"));
        QVERIFY2(QRegularExpression("# of Files Copied:\t[0-9,]+\r\n$")
                     .match(QString::fromUtf8(log))
                     .hasMatch(),
                 log.right(200).constData());
        QCOMPARE(QDir(at("src")).entryList(QDir::Files).size(), count);
        QVERIFY(QDir(at("dst")).entryList(QDir::Files).size() < count);
    }

    // Runs the program on a terminal of its own with args (after the program), typing typed
    // once the overwrite question is asked; what it showed on the terminal. status: how it
    // ended (waitpid's).
    QByteArray onTerminal(const QStringList& args, const QByteArray& typed, int& status) {
        QList<QByteArray> words = {ONDREL_STAGE};
        for (const QString& arg : args)
            words << QFile::encodeName(QString(arg).replace("%T", m_dir->path()));
        std::vector<char*> argv;
        for (const QByteArray& a : words)
            argv.push_back(const_cast<char*>(a.constData()));
        argv.push_back(nullptr);

        int master = -1;
        const pid_t pid = ::forkpty(&master, nullptr, nullptr, nullptr);
        if (pid < 0)
            return {};
        if (pid == 0) {
            ::execv(argv[0], argv.data());
            ::_exit(127);
        }
        QByteArray transcript;
        bool typedIn = typed.isEmpty();
        bool ended = false;
        for (QDeadlineTimer deadline(30000); !ended && !deadline.hasExpired();) {
            pollfd p{master, POLLIN, 0};
            if (::poll(&p, 1, 100) <= 0)
                continue;
            char buffer[4096];
            const ssize_t n = ::read(master, buffer, sizeof buffer);
            ended = n <= 0; // the program has ended and closed its terminal
            if (n > 0)
                transcript.append(buffer, n);
            if (!typedIn && transcript.contains("(Enter: No)? "))
                typedIn = ::write(master, typed.constData(), size_t(typed.size())) > 0;
        }
        if (!ended)
            ::kill(pid, SIGKILL);
        ::waitpid(pid, &status, 0);
        ::close(master);
        return transcript;
    }

    // On a terminal the question is asked, with the answers from the command line as the
    // default; an answer that names no button is asked again.
    void questionOnTerminal_data() {
        QTest::addColumn<QByteArray>("typed");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("content");

        QTest::newRow("yes") << QByteArray("y\n") << 0 << QByteArray("A");
        QTest::newRow("Enter takes the default") << QByteArray("\n") << 0 << QByteArray("old");
        QTest::newRow("nonsense, then cancel")
            << QByteArray("perhaps\nCancel\n") << 2 << QByteArray("old");
        QTest::newRow("end of input takes the default")
            << QByteArray("\x04") << 0 << QByteArray("old");
    }

    void questionOnTerminal() {
        QFETCH(QByteArray, typed);
        QFETCH(int, code);
        QFETCH(QByteArray, content);
        makeTree({{"Overwrite", "1"}});
        QVERIFY(writeFile(at("dst/a.txt"), "old"));
        int status = 0;
        const QByteArray transcript =
            onTerminal({"--options", "%T/job.opt", "%T/job.spc"}, typed, status);
        QVERIFY2(transcript.contains("(Enter: No)? "), transcript.constData());
        QVERIFY(transcript.contains("Overwrite Existing File?"));
        QVERIFY(transcript.contains("already exists.  Do you want to overwrite it?"));
        // The progress line is taken away before the question.
        QVERIFY(transcript.contains("\r\x1b[K\r\nOverwrite Existing File?"));
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), code);
        QCOMPARE(readFile(at("dst/a.txt")), content);
    }

    // On a terminal the progress line is drawn (the first look at the run draws it at once),
    // and cleared before the summary; --quiet leaves it out.
    void progressOnTerminal_data() {
        QTest::addColumn<QStringList>("extra");
        QTest::addColumn<bool>("shown");
        QTest::newRow("shown") << QStringList{} << true;
        QTest::newRow("quiet") << QStringList{"--quiet"} << false;
    }

    void progressOnTerminal() {
        QFETCH(QStringList, extra);
        QFETCH(bool, shown);
        makeTree({});
        int status = 0;
        const QByteArray transcript = onTerminal(
            extra + QStringList{"--batch", "--options", "%T/job.opt", "%T/job.spc"}, {}, status);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), 0);
        QVERIFY2(transcript.contains("# of Files Copied:\t3"), transcript.constData());
        QCOMPARE(transcript.contains("0 files  0 B  searching "), shown);
        QCOMPARE(transcript.contains("\r\x1b[KStaging Complete!"), shown);
    }
};

QTEST_GUILESS_MAIN(tst_ondrelStage)
#include "tst_ondrelStage.moc"
