#include "StagingFixture.h"

#include "platform/FileCopier.h"
#include "platform/FileSystem.h"

#include <QtTest>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ondrel;
using namespace ondrel::test;

static bool setMode(const QString& p, int mode) {
    return ::chmod(QFile::encodeName(p).constData(), mode_t(mode)) == 0;
}

class tst_StagingRun : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void logHeader() {
        StagingFixture f;
        f.settings.setDelSource(true);
        f.settings.setResetArchive(true);
        const QStringList log = f.stage();
        QVERIFY(log[0].startsWith("Staging started:  "));
        const QStringList expected = {"",
                                      "Staging Options:",
                                      "Incl. files w/ Archive attribute:\tTrue",
                                      "Incl. files w/ Hidden attribute:\tTrue",
                                      "Incl. files w/ Read-Only attribute:\tTrue",
                                      "Incl. files w/ System attribute:\tTrue",
                                      "Move source files:\t\t\tTrue",
                                      "Create directories:\t\t\tTrue",
                                      "Overwrite existing files:\t\tIf Older",
                                      "Reset Archive attribute:\t\tTrue",
                                      "",
                                      "Staging completed"};
        QCOMPARE(log.mid(1, 12), expected);
        for (const QString& line : expected.mid(2, 8)) { // each value at column 40, tabs every 8
            QString expanded;
            for (const QChar c : line.left(line.lastIndexOf('\t') + 1))
                expanded += c == '\t' ? QString(8 - expanded.size() % 8, ' ') : QString(c);
            QCOMPARE(expanded.size(), 40);
        }
    }

    void overwriteModes_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<qint64>("destTime"); // 0: no destination; the source is at 1,000,000
        QTest::addColumn<int>("answer");      // to the overwrite question, -1 for none asked
        QTest::addColumn<bool>("copied");

        QTest::newRow("If Older, missing") << 0 << qint64(0) << -1 << true;
        QTest::newRow("If Older, older") << 0 << qint64(999999) << -1 << true;
        QTest::newRow("If Older, same time") << 0 << qint64(1000000) << -1 << false;
        QTest::newRow("If Older, newer") << 0 << qint64(1000001) << -1 << false;
        QTest::newRow("Prompt, Yes") << 1 << qint64(2000000) << int(MsgAnswer::Yes) << true;
        QTest::newRow("Prompt, No") << 1 << qint64(1) << int(MsgAnswer::No) << false;
        QTest::newRow("Prompt, missing asks nothing") << 1 << qint64(0) << -1 << true;
        QTest::newRow("Always, newer") << 2 << qint64(2000000) << -1 << true;
        QTest::newRow("Never, older") << 3 << qint64(1) << -1 << false;
        QTest::newRow("no mode, older") << 9 << qint64(1) << -1 << false;
    }

    void overwriteModes() {
        QFETCH(int, mode);
        QFETCH(qint64, destTime);
        QFETCH(int, answer);
        QFETCH(bool, copied);
        StagingFixture f;
        f.settings.setOverwrite(qint16(mode));
        f.file("src/a.txt", "new");
        if (destTime)
            f.file("dst/a.txt", "old", destTime);
        f.group("src", "*.txt", {"dst"});
        if (answer >= 0)
            f.host.answers.push_back(MsgAnswer(answer));
        const QStringList log = f.stage();
        QCOMPARE(f.read("dst/a.txt"), copied ? QByteArray("new") : QByteArray("old"));
        QCOMPARE(f.host.questions.size(), answer >= 0 ? 1 : 0);
        if (answer >= 0) {
            const auto& q = f.host.questions.first();
            QCOMPARE(q.prompt,
                     f.path("dst/a.txt") + " already exists.  Do you want to overwrite it?");
            QCOMPARE(q.title, QString("Overwrite Existing File?"));
            QCOMPARE(q.buttons, MsgButtons::YesNoCancel);
            QCOMPARE(q.icon, MsgIcon::Question);
            QVERIFY(log.contains(">>>" + f.path("dst/a.txt") + " already exists."));
            QVERIFY(log.contains(copied ? ">>>Overwriting . . ." : ">>>Ignoring file . . ."));
        }
        QCOMPARE(f.run->state().CopiedCount, copied ? 1 : 0);
        if (copied) // the copy keeps the source's time
            QCOMPARE(QFileInfo(f.path("dst/a.txt")).lastModified().toSecsSinceEpoch(), 1000000);
    }

    // Cancel to any question ends the run there: at the overwrite question before the file's
    // other destinations, at a missing source path before the next source path.
    void cancelAnswerAbortsTheRun_data() {
        QTest::addColumn<QString>("question");
        QTest::newRow("overwrite prompt") << "Overwrite Existing File?";
        QTest::newRow("missing source path") << "Source Path Not Found";
    }

    void cancelAnswerAbortsTheRun() {
        QFETCH(QString, question);
        const bool missingSource = question == "Source Path Not Found";
        StagingFixture f;
        f.settings.setOverwrite(1);
        if (missingSource)
            f.group("nowhere", "*.*", {"d1"});
        else
            f.file("d1/a.txt", "old");
        f.file("src/a.txt", "new");
        f.group("src", "*.*", {"d1", "d2"});
        f.host.answers.push_back(MsgAnswer::Cancel);
        f.stage();
        QCOMPARE(f.host.titles(), QStringList{question});
        QCOMPARE(f.read("d1/a.txt"), missingSource ? QByteArray("<missing>") : QByteArray("old"));
        QVERIFY(!f.exists("d2/a.txt"));
        QCOMPARE(f.host.summaryTitle, QString("Staging Aborted!"));
    }

    // Deepest first, a later-listed sub-directory before an earlier one; without
    // sub-directories, the top only.
    void walkOrder_data() {
        QTest::addColumn<bool>("subDirs");
        QTest::addColumn<QStringList>("copies");
        QTest::newRow("sub-directories: deepest last, listed first")
            << true
            << QStringList{"Copying src/B/C/c.c to dst/B/C/c.c", "Copying src/B/b.c to dst/B/b.c",
                           "Copying src/A/a.c to dst/A/a.c", "Copying src/top.c to dst/top.c"};
        QTest::newRow("no sub-directories: top only")
            << false << QStringList{"Copying src/top.c to dst/top.c"};
    }

    void walkOrder() {
        QFETCH(bool, subDirs);
        QFETCH(QStringList, copies);
        StagingFixture f;
        for (const char* p : {"src/top.c", "src/A/a.c", "src/B/b.c", "src/B/C/c.c", "src/b2/x.h"})
            f.file(p);
        f.group("src", "*.C", {"dst"}, subDirs);
        const QStringList log = f.stage();
        QCOMPARE(f.copies(log), copies);
        QCOMPARE(f.exists("dst/A"), subDirs);
        QVERIFY(log.contains(QString("Include sub-directories:  ") + (subDirs ? "True" : "False")));
        QVERIFY(log.contains("Source Path:\t" + f.path("src")));
    }

    void attributeFilters_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<bool>("copied");
        QTest::addColumn<QString>("option"); // the one turned off
        QTest::newRow("hidden, InclHid off") << ".hidden" << false << "InclHid";
        QTest::newRow("hidden, InclRO off") << ".hidden" << true << "InclRO";
        QTest::newRow("read-only, InclRO off") << "ro.txt" << false << "InclRO";
        QTest::newRow("plain, InclArc off") << "plain.txt" << false << "InclArc";
        QTest::newRow("plain, InclSys off") << "plain.txt" << true << "InclSys";
    }

    void attributeFilters() {
        QFETCH(QString, file);
        QFETCH(bool, copied);
        QFETCH(QString, option);
        StagingFixture f;
        f.file("src/" + file);
        if (file == "ro.txt")
            QVERIFY(setMode(f.path("src/ro.txt"), 0444));
        const QHash<QString, void (clsOndrelApp::*)(bool)> setters = {
            {"InclHid", &clsOndrelApp::setInclHid},
            {"InclRO", &clsOndrelApp::setInclRO},
            {"InclArc", &clsOndrelApp::setInclArc},
            {"InclSys", &clsOndrelApp::setInclSys}};
        (f.settings.*setters.value(option))(false);
        f.group("src", "*.*", {"dst"});
        const QStringList log = f.stage();
        QCOMPARE(f.exists("dst/" + file), copied);
        QCOMPARE(f.copies(log).size(), copied ? 1 : 0);
        QVERIFY(f.host.questions.isEmpty());
        QVERIFY(f.run->state().ProblemFiles.isEmpty());
    }

    void variousFiles() {
        StagingFixture f;
        f.file("sel/B.TXT");
        f.file("sel/c.doc");
        f.various = {f.path("sel/B.TXT"), f.path("sel/c.doc"), f.path("gone/x.txt"),
                     f.path("gone/y.txt")};
        f.group("<various>", "*.txt", {"dst"});
        const QStringList log = f.stage();
        QVERIFY(f.exists("dst/B.TXT"));
        QVERIFY(!f.exists("dst/c.doc"));
        // The missing directory is asked about once; its second file is a problem unasked.
        QCOMPARE(f.host.titles(), QStringList{"Source Path Not Found"});
        QCOMPARE(f.host.questions.first().prompt,
                 "Source Path " + f.path("gone") + " does not exist.");
        QCOMPARE(f.run->state().ProblemFiles,
                 f.path("gone/x.txt") + "\r\n" + f.path("gone/y.txt") + "\r\n");
        QVERIFY(!log.contains("Include sub-directories:  False"));
    }

    void missingSourceAndEmptyGroups() {
        StagingFixture f;
        f.spec.SPs().Add(f.path("nowhere"))->FGs().Add("*.*")->DPs().Add(f.path("dst"));
        f.spec.SPs().Add(f.path("nogroups"));
        f.spec.SPs().Add("<various>");
        QDir().mkpath(f.path("nogroups"));
        QDir().mkpath(f.path("nodests"));
        f.spec.SPs().Add(f.path("nodests"))->FGs().Add("*.a");
        const QStringList log = f.stage();
        QCOMPARE(f.host.titles(),
                 (QStringList{"Source Path Not Found", "No File Groups", "No Destination Paths"}));
        QCOMPARE(f.host.questions[1].prompt,
                 "Source Path " + f.path("nogroups") +
                     " did not have any File Groups.  Click 'OK' to continue staging.");
        QVERIFY(log.contains("***Source Path " + f.path("nowhere") + " does not exist."));
        QVERIFY(log.contains(">>>Source Path <various> did not have any File Groups."));
        QVERIFY(log.contains(">>>None of the File Groups for Source Path " + f.path("nodests") +
                             " had any Destination Paths."));
        QVERIFY(log.contains("File Group(s):\t*.a"));
    }

    // Directories the run makes take the bits of the source directories they stand for, so a
    // private one stays private; its owner may always write into it. The levels above the
    // destination path keep the default.
    void missingDestinationDirectories_data() {
        QTest::addColumn<bool>("createDirs");
        QTest::addColumn<int>("mode");     // of src/sub
        QTest::addColumn<int>("expected"); // of the copy of src/sub
        QTest::newRow("CreateDirs on, private") << true << 0700 << 0700;
        QTest::newRow("CreateDirs off") << false << 0700 << 0;
        QTest::newRow("setgid") << true << 02775 << 02775;
        QTest::newRow("sticky") << true << 01777 << 01777;
        QTest::newRow("read-only") << true << 0555 << 0755;
    }

    void missingDestinationDirectories() {
        QFETCH(bool, createDirs);
        QFETCH(int, mode);
        QFETCH(int, expected);
        StagingFixture f;
        f.settings.setCreateDirs(createDirs);
        f.file("src/sub/deep/a.txt", "A");
        QVERIFY(setMode(f.path("src/sub"), mode) && setMode(f.path("src"), 0750));
        f.group("src", "*.txt", {"out/level1/level2"}, true);
        f.stage();
        QCOMPARE(f.read("out/level1/level2/sub/deep/a.txt"),
                 createDirs ? QByteArray("A") : QByteArray("<missing>"));
        QVERIFY(f.run->state().ProblemFiles.isEmpty());
        QVERIFY(f.host.questions.isEmpty());
        if (!createDirs)
            return;
        const auto modeOf = [&](const QString& dir) {
            struct stat st {};
            ::stat(QFile::encodeName(f.path(dir)).constData(), &st);
            return int(st.st_mode & 07777);
        };
        const mode_t umask = ::umask(0);
        ::umask(umask);
        QCOMPARE(modeOf("out/level1/level2/sub"), expected);
        QCOMPARE(modeOf("out/level1/level2"), 0750);
        QCOMPARE(modeOf("out/level1"), int(0777 & ~umask));
    }

    void retryRepeatsTheFailedCopy() {
        StagingFixture f;
        f.settings.setOverwrite(2);
        f.file("src/a.txt", "new");
        f.file("dst/a.txt", "old");
        QVERIFY(setMode(f.path("dst/a.txt"), 0444));
        f.group("src", "*.txt", {"dst"});
        f.host.answers = {MsgAnswer::Retry};
        f.host.onAsk = [&](const ScriptedHost::Question&) { setMode(f.path("dst/a.txt"), 0644); };
        const QStringList log = f.stage();
        QCOMPARE(f.host.titles(), QStringList{"File Access Permission Denied"});
        QCOMPARE(f.host.questions.first().prompt,
                 "Unable to stage " + f.path("src/a.txt") +
                     ".  The file may be in use by another application.");
        QCOMPARE(f.host.questions.first().buttons, MsgButtons::AbortRetryIgnore);
        QVERIFY(log.contains("***Retrying . . ."));
        QCOMPARE(f.read("dst/a.txt"), QByteArray("new"));
        QVERIFY(f.run->state().ProblemFiles.isEmpty());
    }

    void moveKeepsSourcesThatMetProblems() {
        StagingFixture f;
        f.settings.setDelSource(true);
        f.settings.setOverwrite(2);
        f.settings.setShowErrMsgs(false);
        f.file("src/ok.txt", "1");
        f.file("src/bad.txt", "2");
        f.file("d2/bad.txt", "locked");
        QVERIFY(setMode(f.path("d2/bad.txt"), 0444));
        f.group("src", "*.txt", {"d1", "d2"});
        const QStringList log = f.stage();
        QVERIFY(!f.exists("src/ok.txt"));
        QCOMPARE(f.read("d1/ok.txt"), QByteArray("1"));
        QCOMPARE(f.read("d2/ok.txt"), QByteArray("1"));
        QVERIFY(f.exists("src/bad.txt"));
        QCOMPARE(f.read("d2/bad.txt"), QByteArray("locked"));
        QVERIFY(f.host.questions.isEmpty());
        QVERIFY(log.contains("***Unable to stage " + f.path("src/bad.txt") +
                             ".  The file may be in use by another application."));
        // ok.txt stands twice in the delete list: the second deletion finds it gone, which is
        // reported, and both count.
        QVERIFY(log.contains("***Error 53, File not found occurred while deleting files or "
                             "preparing summary info."));
        QVERIFY(f.host.summaryText.contains(
            "The following files encountered problems during staging:\r\n" + f.path("src/bad.txt") +
            "\r\n"));
        QVERIFY(f.host.summaryText.contains("# of Files Deleted:\t2\r\n# of Files Copied:\t3\r\n"));
    }

    // Two sources whose copies meet in one destination file: the one replaced by the later
    // copy keeps its source, however the second copy gets there. A file copied twice over its
    // own copy is no loss and goes.
    void moveKeepsSourcesWhoseCopyWasReplaced_data() {
        QTest::addColumn<QStringList>("sources"); // files, "name=content"
        QTest::addColumn<QStringList>("groups");  // "path masks destination", " +" with subDirs
        QTest::addColumn<QStringList>("kept");    // sources left, "name=content"
        QTest::addColumn<QStringList>("copies");  // destination files, "name=content"
        const QStringList two = {"s1/x.txt=one", "s2/x.txt=two"};
        const QStringList tree = {"t/x.txt=top", "t/sub/x.txt=sub"};
        QTest::newRow("two source paths")
            << two << QStringList{"s1 *.* d", "s2 *.* d"} << QStringList{"s1/x.txt=one"}
            << QStringList{"d/x.txt=two"};
        QTest::newRow("two file groups")
            << tree << QStringList{"t *.txt d +", "t x.* d/sub +"} << QStringList{"t/sub/x.txt=sub"}
            << QStringList{"d/x.txt=top", "d/sub/x.txt=top", "d/sub/sub/x.txt=sub"};
        QTest::newRow("overlapping source trees")
            << tree << QStringList{"t *.* d +", "t/sub *.* d"} << QStringList{"t/x.txt=top"}
            << QStringList{"d/x.txt=sub", "d/sub/x.txt=sub"};
        // <various> lists the first source file.
        QTest::newRow("<various> and a walked tree")
            << two << QStringList{"<various> *.* d", "s2 *.* d"} << QStringList{"s1/x.txt=one"}
            << QStringList{"d/x.txt=two"};
        QTest::newRow("one file twice")
            << QStringList{"s1/x.txt=one"} << QStringList{"s1 *.txt d", "s1 x.* d"} << QStringList{}
            << QStringList{"d/x.txt=one"};
    }

    void moveKeepsSourcesWhoseCopyWasReplaced() {
        QFETCH(QStringList, sources);
        QFETCH(QStringList, groups);
        QFETCH(QStringList, kept);
        QFETCH(QStringList, copies);
        StagingFixture f;
        f.settings.setDelSource(true);
        f.settings.setOverwrite(2);
        for (const QString& source : sources)
            f.file(source.section('=', 0, 0), source.section('=', 1).toUtf8());
        f.various = {f.path(sources.first().section('=', 0, 0))};
        for (const QString& g : groups)
            f.group(g.section(' ', 0, 0), g.section(' ', 1, 1), {g.section(' ', 2, 2)},
                    g.endsWith(" +"));
        const QStringList log = f.stage();
        QStringList left;
        for (const QString& source : sources)
            if (const QString name = source.section('=', 0, 0); f.exists(name))
                left << name + "=" + f.read(name);
        QCOMPARE(left, kept);
        for (const QString& copy : copies)
            QCOMPARE(f.read(copy.section('=', 0, 0)), copy.section('=', 1).toUtf8());
        QString undeleted;
        for (const QString& source : kept) {
            const QString path = f.path(source.section('=', 0, 0));
            undeleted += path + "\r\n";
            const QRegularExpression line("^>>>" + QRegularExpression::escape(path) +
                                          " was copied to .*, which no longer holds it; it was "
                                          "not deleted\\.$");
            QVERIFY2(log.indexOf(line) >= 0, qPrintable(log.join('\n')));
        }
        QCOMPARE(f.run->state().UndeletedFiles, undeleted);
        QVERIFY(f.run->state().ProblemFiles.isEmpty());
    }

    // A link staged as the file it leads to is moved as the link: removing it never goes
    // through it to the file, which the same run may already have moved.
    void moveOfALinkRemovesTheLink_data() {
        QTest::addColumn<QString>("link");
        QTest::newRow("link listed before its file") << "a-link.txt";
        QTest::newRow("link listed after its file") << "z-link.txt";
    }

    void moveOfALinkRemovesTheLink() {
        QFETCH(QString, link);
        StagingFixture f;
        f.settings.setDelSource(true);
        f.file("src/m-file.txt", "content");
        QVERIFY(QFile::link("m-file.txt", f.path("src/" + link)));
        f.group("src", "*.txt", {"dst"});
        f.stage();
        QCOMPARE(f.read("dst/m-file.txt"), QByteArray("content"));
        QCOMPARE(f.read("dst/" + link), QByteArray("content"));
        QVERIFY(QDir(f.path("src"))
                    .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                    .isEmpty());
        QVERIFY(f.run->state().ProblemFiles.isEmpty());
        QVERIFY(f.run->state().UndeletedFiles.isEmpty());
        QVERIFY(!f.run->state().errorReported);
    }

    void resetArchive() {
        StagingFixture f;
        f.settings.setResetArchive(true);
        f.file("src/plain.txt");
        f.file("src/ro.txt");
        const QByteArray ro = QFile::encodeName(f.path("src/ro.txt"));
        if (!FileSystem::setAttributes(ro, Attr::ReadOnly).ok())
            QSKIP("this file system keeps no stored attributes");
        f.group("src", "*.txt", {"dst"});
        f.host.answers = {MsgAnswer::Ignore};
        f.stage();
        QCOMPARE(FileSystem::getAttributes(QFile::encodeName(f.path("src/plain.txt"))).value(), 0);
        // Taking Archive off a read-only file without it gives an impossible value.
        QCOMPARE(f.host.titles(), QStringList{"Invalid Procedure Call or Argument"});
        QCOMPARE(f.host.questions.first().prompt,
                 QString("Invalid procedure call or argument during task 'FileCopy' in ''.  "
                         "Contact Technical Support for assistance."));
        QVERIFY(f.exists("dst/ro.txt"));
        QCOMPARE(f.run->state().ProblemFiles, f.path("src/ro.txt") + "\r\n");
    }

    // What a killed run left in a destination goes with the next run there: its temporaries
    // beside the files, and the directories of its threads' own at the top of the destination
    // path, even where nothing is copied to the top itself.
    void removesWhatAKilledRunLeft() {
        const pid_t gone = ::fork();
        if (gone == 0)
            ::_exit(0);
        QVERIFY(gone > 0 && ::waitpid(gone, nullptr, 0) == gone);
        const auto temporary = [&](const char* name) {
            return QFile::decodeName(FileCopier::temporaryName(name, gone));
        };
        StagingFixture f;
        f.file("src/sub/a.txt");
        f.group("src", "*.txt", {"dst"}, true);
        f.file("dst/" + temporary("copies") + "/" + temporary("a.txt"), "half");
        f.file("dst/sub/" + temporary("a.txt"), "half");
        f.stage();
        QCOMPARE(
            QDir(f.path("dst")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList{"sub"});
        QCOMPARE(QDir(f.path("dst/sub"))
                     .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{"a.txt"});
    }

    // Without a log the run writes none, and the summary is whole all the same.
    void summaryWithoutLogOrProblems() {
        StagingFixture f;
        f.file("src/a");
        f.group("src", "*", {"dst"});
        StagingRun run(f.spec, f.settings, f.various, f.host, f.ops, nullptr, f.dir.path());
        run.run();
        QVERIFY(f.exists("dst/a") && !f.exists("Staging.log"));
        QCOMPARE(f.host.summaryTitle, QString("Staging Complete!"));
        const QStringList lines = f.host.summaryText.split("\r\n");
        QVERIFY(QRegularExpression("^Start Date/Time:\t[A-Z][a-z]+day, [A-Z][a-z]{2} \\d{1,2} "
                                   "\\d{4}  \\d\\d:\\d\\d:\\d\\d [AP]M$")
                    .match(lines[0])
                    .hasMatch());
        QVERIFY(lines[1].startsWith("End Date/Time:\t"));
        QCOMPARE(lines.mid(2), (QStringList{"Staging completed.", "",
                                            "The following files encountered problems during "
                                            "staging:",
                                            "NONE", "", "# of Files Copied:\t1", ""}));
        QCOMPARE(StagingRun::formatCount(1234567), QString("1,234,567"));
    }
};

QTEST_GUILESS_MAIN(tst_StagingRun)
#include "tst_StagingRun.moc"
