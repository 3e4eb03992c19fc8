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
    QString out, err;
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
    // %T in a text stands for the test's directory.
    QString t(QString text) const { return text.replace(QStringLiteral("%T"), m_dir->path()); }

    // The job of makeTree, unattended, after extra.
    static QStringList job(const QStringList& extra = {}) {
        return extra + QStringList{"--batch", "--options", "%T/job.opt", "%T/job.spc"};
    }

    // Each of wants holds for text, %T in it the test's directory: "^x" it starts with x, "$x" it
    // ends with x, "!x" it does not contain x, anything else it contains.
    void expect(const QString& text, const QStringList& wants) const {
        for (const QString& want : wants) {
            const QString x = t(want.mid(1));
            const QChar how = want.isEmpty() ? QChar() : want[0];
            QVERIFY2(how == '^'   ? text.startsWith(x)
                     : how == '$' ? text.endsWith(x)
                     : how == '!' ? !text.contains(x)
                                  : text.contains(t(want)),
                     qPrintable("not " + want + " in:\n" + text));
        }
    }
    void expect(const QByteArray& text, const QStringList& wants) const {
        expect(QString::fromUtf8(text), wants);
    }

    // Each of wants holds on disk: "path=content" (content <missing>: no file there), "!path"
    // nothing at all there.
    void expectFiles(const QStringList& wants) const {
        for (const QString& want : wants) {
            if (want.startsWith('!'))
                QVERIFY2(!QFileInfo::exists(at(want.mid(1))), qPrintable(want));
            else
                QCOMPARE(readFile(at(want.section('=', 0, 0))), want.section('=', 1).toUtf8());
        }
    }

    // inChild runs in the child before the program starts.
    Outcome stage(QStringList args, const QString& workDir = {},
                  const QString& program = QStringLiteral(ONDREL_STAGE),
                  const std::function<void()>& inChild = {}) {
        for (QString& arg : args)
            arg = t(arg);
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

    // None of them stages anything or touches the log.
    void commandLine_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("expected"); // in standard error, or standard output for 0
        QTest::addColumn<bool>("usage");       // the usage follows the error
        // A command line that makes no sense: status 64 and the usage after the error.
        const auto misuse = [](const char* name, const QStringList& args, const QString& error) {
            QTest::newRow(name) << args << 64 << error << true;
        };
        const auto row = [](const char* name, const QStringList& args, int code,
                            const QString& expected) {
            QTest::newRow(name) << args << code << expected << false;
        };
        const QString spec = "%T/job.spc";
        misuse("no spec file", {"--batch"}, "no spec file");
        misuse("two spec files", {spec, spec}, "only one");
        misuse("unknown option", {"--frobnicate", spec}, "unknown option --frobnicate");
        misuse("bad overwrite answer", {"--overwrite=maybe", spec}, "yes|no|cancel");
        misuse("retry is no unattended answer", {"--on-error", "retry", spec}, "abort|ignore");
        misuse("log and no log", {"--log", "%T/run.log", "--no-log", spec}, "--no-log");
        misuse("log without a name", {spec, "--log"}, "--log needs a value");
        misuse("flag with a value", {"--batch=yes", spec}, "takes no value");
        misuse("no workers", {"--jobs", "0", spec}, "--jobs must be a number from 1 to 64");
        misuse("workers that are no number", {"--jobs=many", spec}, "not \"many\"");
        row("missing file list", {"--various", "%T/none.txt", spec}, 64,
            "cannot read the file list");
        row("missing options file", {"--options", "%T/none.opt", spec}, 64,
            "cannot read the options file");
        row("options value of the wrong type", {"--options", "%T/type.opt", spec}, 64,
            "error 13 reading the options file %T/type.opt: CreateDirs=maybe: Type mismatch");
        row("options value out of range", {"--options", "%T/range.opt", spec}, 64,
            "error 6 reading the options file");
        row("log in a missing directory",
            {"--options", "%T/job.opt", "--log", "%T/no/such/x.log", spec}, 64,
            "cannot open the log file");
        row("missing spec file", {"--batch", "--log", "%T/run.log", "%T/none.spc"}, 65,
            "Spec File Not Found or Invalid: The selected file does not exist");
        row("spec with a bad include-subdirectories value",
            {"--batch", "--log", "%T/run.log", "%T/bad.spc"}, 65,
            "Error Loading Spec File: Error 13 occurred while loading Spec File ");
        // What is not a file, or too large to be one of ours, is refused at once (each kind for
        // each reader is tst_WholeFile's).
        row("device as options file", {"--options", "/dev/zero", spec}, 64,
            "cannot read the options file /dev/zero: Not a regular file");
        row("64 MiB and one byte as file list", {"--various", "%T/big", spec}, 64,
            "cannot read the file list %T/big: File too large");
        row("fifo as spec file", {"--batch", "%T/fifo"}, 65,
            "Error 75 occurred while loading Spec File %T/fifo.");
        row("fifo as log, nobody reading", {"--options", "%T/job.opt", "--log", "%T/fifo", spec},
            64, "cannot open the log file %T/fifo: Device unavailable");
        row("help", {"--help"}, 0, "Usage: ondrel-stage");
        row("help wins over a bad option", {"--bogus", "-h"}, 0, "--on-error=abort|ignore");
        row("version", {"--version"}, 0, "ondrel-stage " ONDREL_VERSION "\n");
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
        QVERIFY2((code ? r.err : r.out).contains(t(expected)), qPrintable(r.err + r.out));
        QCOMPARE(r.err.contains("Usage: ondrel-stage"), usage);
        expectFiles({"!dst", "!run.log"});
    }

    // The tree staged, its summary on standard output and nothing on standard error (no terminal
    // here: no progress line either); the log where --log, or else CreateLog, puts it.
    void copiesTree_data() {
        QTest::addColumn<QStringList>("extra");
        QTest::addColumn<bool>("createLog");
        QTest::addColumn<QString>("log"); // the log expected, relative; empty: none anywhere

        const QStringList named{"--log", "%T/run.log"};
        QTest::newRow("named log") << named << false << "run.log";
        QTest::newRow("four workers") << QStringList{"--jobs", "4"} + named << false << "run.log";
        QTest::newRow("CreateLog: Staging.log in the current directory")
            << QStringList{} << true << "work/Staging.log";
        QTest::newRow("no CreateLog") << QStringList{} << false << "";
        QTest::newRow("no-log overrides CreateLog") << QStringList{"--no-log"} << true << "";
    }

    void copiesTree() {
        QFETCH(QStringList, extra);
        QFETCH(bool, createLog);
        QFETCH(QString, log);
        makeTree({{"CreateLog", createLog ? "True" : "False"}});
        QVERIFY(QDir().mkpath(at("work")));
        const Outcome r = stage(job(extra), at("work"));
        QCOMPARE(r.code, 0);
        QCOMPARE(r.err, QString());
        expectFiles({"dst/a.txt=A", "dst/sub/b.txt=B", "dst/sub/deeper/c.txt=C", "!dst/skip.bin"});
        expect(r.out, {"^Staging Complete!\n", "during staging:\nNONE\n", "# of Files Copied:\t3\n",
                       "!\r"});
        for (const char* candidate : {"run.log", "work/Staging.log", "Staging.log"})
            QCOMPARE(QFileInfo::exists(at(candidate)), candidate == log);
        if (!log.isEmpty())
            expect(readFile(at(log)),
                   {"^Staging started:  ", "Copying %T/src/sub/b.txt to %T/dst/sub/b.txt\r\n",
                    "\r\nStaging completed\r\n"});
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
        const Outcome r = stage(job({"--log", "%T/run.log"}), {}, ONDREL_STAGE, [limit] {
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
        const Outcome r = stage(job());
        QCOMPARE(r.code, foreign ? 64 : 0);
        QVERIFY2(!foreign || r.err.contains("cannot open the log file Staging.log: Permission "
                                            "denied (the log is a symbolic link owned by another "
                                            "user)"),
                 qPrintable(r.err));
        const QByteArray target = readFile(at("target"));
        QVERIFY(foreign ? target == "precious" : target.startsWith("Staging started:  "));
        QCOMPARE(QFileInfo::exists(at("dst")), !foreign);
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

    // A dry run says what it would do, changes nothing and writes no log, CreateLog or not.
    void dryRun_data() {
        QTest::addColumn<Options>("options");
        QTest::addColumn<QStringList>("out"); // see expect()

        const QString c = "copy %T/src/sub/deeper/c.txt -> %T/dst/sub/deeper/c.txt\n";
        const QString a = "copy %T/src/a.txt -> %T/dst/a.txt";
        QTest::newRow("missing tree made")
            << Options{}
            << QStringList{c, a + '\n', "make directory %T/dst/sub/deeper\n", "!delete "};
        QTest::newRow("missing tree skipped without CreateDirs")
            << Options{{"CreateDirs", "False"}} << QStringList{"!copy ", "!make directory "};
        QTest::newRow("move") << Options{{"DelSource", "True"}}
                              << QStringList{c, a + '\n', "delete %T/src/a.txt\n"};
        QTest::newRow("read-only destination refused")
            << Options{{"Overwrite", "2"}} << QStringList{c, '!' + a};
    }

    void dryRun() {
        QFETCH(Options, options);
        QFETCH(QStringList, out);
        makeTree(options + Options{{"CreateLog", "True"}});
        // Under "Always" dst/a.txt is there, read-only, and refused: status 1.
        const bool readOnlyDest = options.contains({"Overwrite", "2"});
        if (readOnlyDest) {
            QVERIFY(writeFile(at("dst/a.txt"), "old"));
            QVERIFY(QFile::setPermissions(at("dst/a.txt"), QFile::ReadOwner));
        }
        const Outcome r = stage(job({"--dry-run"}));
        QCOMPARE(r.code, readOnlyDest ? 1 : 0);
        expect(r.out, out + QStringList{"Staging Complete!", "$dry run: nothing was changed\n"});
        expectFiles({"!dst/sub", "src/a.txt=A", "!Staging.log",
                     readOnlyDest ? "dst/a.txt=old" : "dst/a.txt=<missing>"});
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
        QStringList args = job({"--on-error=ignore"});
        if (dryRun)
            args.prepend("--dry-run");
        if (setup == "missing")
            QVERIFY(writeFile(at("job.spc"), specText(at("none"), "*.txt", {at("dst")})));
        if (setup == "private") {
            QVERIFY(writeFile(at("src/private/p.txt"), "P"));
            QVERIFY(QFile::setPermissions(at("src/private"),
                                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        }
        if (setup == "mode 000")
            QVERIFY(QFile::setPermissions(at("src/a.txt"), {}));
        QString program = QStringLiteral(ONDREL_STAGE);
        if (::geteuid() == 0) {
            QVERIFY(::chmod(QFile::encodeName(m_dir->path()).constData(), 0777) == 0);
            args = QStringList{"--reuid=65534", "--regid=65534", "--clear-groups", program} + args;
            program = "setpriv";
        }
        const Outcome r = stage(args, {}, program);
        QVERIFY2(r.code == 1, qPrintable(r.out + r.err));
        expect(r.err, {message, (showErrMsgs ? "" : "!") + QString("\n  path: ") + path});
        const QStringList failures =
            r.err.split('\n').filter(QRegularExpression("^ondrel-stage: "));
        QCOMPARE(failures.size(), 1);
        expect(failures.first(), {path});
        // The rest of the tree is staged all the same.
        if (setup != "missing")
            QCOMPARE(readFile(at("dst/sub/b.txt")), dryRun ? "<missing>" : QByteArray("B"));
    }

    // An existing destination answered from the command line: under "Prompt" the overwrite
    // question; under "Always", on a read-only file, the problem's question.
    void unattendedAnswers_data() {
        QTest::addColumn<Options>("options");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("asked"); // in standard error, "!" first: not asked

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
            << QByteArray("old") << '!' + denied;
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
        const Outcome r = stage(job({answer}));
        QCOMPARE(r.code, code);
        QCOMPARE(readFile(at("dst/a.txt")), content);
        expect(r.err, {asked});
        expect(r.out, {code == 2 ? "^Staging Aborted!" : "^Staging Complete!",
                       (readOnly ? "" : "!") + QString("during staging:\n%T/src/a.txt\n")});
    }

    void variousFiles() {
        makeTree({});
        QVERIFY(writeFile(at("job.spc"), specText("<various>", "*.txt", {at("dst")})));
        QVERIFY(writeFile(at("in/one.txt"), "1"));
        QVERIFY(writeFile(at("in/a,b.txt"), "2"));
        QVERIFY(writeFile(at("in/skip.dat"), "3"));
        QVERIFY(writeFile(at("list.txt"), t("\"%T/in/a,b.txt\"\r\n%T/in/one.txt\r\none.txt\r\n"
                                            "%T/in/skip.dat\r\n")
                                              .toUtf8()));
        QCOMPARE(stage(job({"--various", "%T/list.txt"})).code, 0);
        expectFiles({"dst/one.txt=1", "dst/a,b.txt=2", "!dst/skip.dat"});
    }

    // Ctrl-C: the run stops, deletes no source, and finishes its log and summary. The log is a
    // fifo that the test stops reading, so the run is surely under way when the signal comes.
    void interruptCancelsRun() {
        const int count = 1500;
        const QString name(60, u'n');
        makeTree({{"DelSource", "True"}});
        for (int i = 0; i < count; ++i)
            QVERIFY(writeFile(at("src/" + name + QString::number(i) + ".txt"), "x"));
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
        expect(process.readAllStandardOutput(),
               {"^Staging Aborted!\n", "No files were deleted from their source directories."});
        expect(log, {"\r\nStaging aborted\r\n"});
        QVERIFY2(QRegularExpression("# of Files Copied:\t[0-9,]+\r\n$")
                     .match(QString::fromUtf8(log))
                     .hasMatch(),
                 log.right(200).constData());
        // With makeTree's a.txt and skip.bin beside them.
        QCOMPARE(QDir(at("src")).entryList(QDir::Files).size(), count + 2);
        QVERIFY(QDir(at("dst")).entryList(QDir::Files).size() < count + 1);
    }

    // Runs the program on a terminal of its own with args (after the program), typing typed
    // once the overwrite question is asked; what it showed on the terminal. status: how it
    // ended (waitpid's).
    QByteArray onTerminal(const QStringList& args, const QByteArray& typed, int& status) {
        QList<QByteArray> words = {ONDREL_STAGE};
        for (const QString& arg : args)
            words << QFile::encodeName(t(arg));
        std::vector<char*> argv;
        for (QByteArray& word : words)
            argv.push_back(word.data());
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

    // On a terminal the progress line is drawn (the first look at the run draws it at once) and
    // taken away before a question and before the summary; --quiet leaves it out. The overwrite
    // question takes the answers from the command line as its default; an answer that names no
    // button is asked again.
    void terminal_data() {
        QTest::addColumn<QStringList>("extra");
        QTest::addColumn<QByteArray>("typed"); // empty: unattended, and no file in the way
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("content"); // of dst/a.txt afterwards

        QTest::newRow("progress") << QStringList{"--batch"} << QByteArray() << 0 << QByteArray("A");
        QTest::newRow("quiet") << QStringList{"--batch", "--quiet"} << QByteArray() << 0
                               << QByteArray("A");
        QTest::newRow("yes") << QStringList{} << QByteArray("y\n") << 0 << QByteArray("A");
        QTest::newRow("Enter takes the default")
            << QStringList{} << QByteArray("\n") << 0 << QByteArray("old");
        QTest::newRow("nonsense, then cancel")
            << QStringList{} << QByteArray("perhaps\nCancel\n") << 2 << QByteArray("old");
        QTest::newRow("end of input takes the default")
            << QStringList{} << QByteArray("\x04") << 0 << QByteArray("old");
    }

    void terminal() {
        QFETCH(QStringList, extra);
        QFETCH(QByteArray, typed);
        QFETCH(int, code);
        QFETCH(QByteArray, content);
        makeTree({{"Overwrite", "1"}});
        if (!typed.isEmpty())
            QVERIFY(writeFile(at("dst/a.txt"), "old"));
        int status = 0;
        const QByteArray transcript =
            onTerminal(extra + QStringList{"--options", "%T/job.opt", "%T/job.spc"}, typed, status);
        QVERIFY(WIFEXITED(status));
        QCOMPARE(WEXITSTATUS(status), code);
        QCOMPARE(readFile(at("dst/a.txt")), content);
        const QString shown = extra.contains("--quiet") ? "!" : "";
        expect(transcript, typed.isEmpty() ? QStringList{"# of Files Copied:\t3",
                                                         shown + "0 files  0 B  searching ",
                                                         shown + "\r\x1b[KStaging Complete!"}
                                           : QStringList{"(Enter: No)? ",
                                                         "already exists.  Do you want to "
                                                         "overwrite it?",
                                                         "\r\x1b[K\r\nOverwrite Existing File?"});
    }
};

QTEST_GUILESS_MAIN(tst_ondrelStage)
#include "tst_ondrelStage.moc"
