// The windowed program's command line: what it asks for, and a spec named on it opened as File,
// Open Spec File opens one.
#include "ui/main/ProgramCommandLine.h"

#include "platform/ScriptedMsgBox.h"
#include "platform/WholeFile.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QAction>
#include <QLabel>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

using namespace ondrel;
using Action = ProgramCommandLine::Action;

Q_DECLARE_METATYPE(ProgramCommandLine::Action)

class tst_ProgramStart : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void commandLine_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("specFile");
        QTest::addColumn<QString>("error");
        auto row = [](const char* name, const QStringList& arguments, Action action,
                      const char* specFile, const char* error = "") {
            QTest::newRow(name) << arguments << action << QString(specFile) << QString(error);
        };
        row("nothing: a new spec only", {}, Action::Start, "");
        row("a spec file", {"Web.spc"}, Action::Start, "Web.spc");
        row("after --, a name like an option", {"--", "-old.spc"}, Action::Start, "-old.spc");
        row("--help wins over a bad line", {"--bogus", "a.spc", "b.spc", "-h"}, Action::Help, "");
        row("--version", {"Web.spc", "--version"}, Action::Version, "");
        row("an unknown option", {"--options", "x.opt"}, Action::Start, "",
            "unknown option --options");
        row("two spec files", {"a.spc", "b.spc"}, Action::Start, "",
            "one spec file at a time: a.spc b.spc");
    }

    void commandLine() {
        QFETCH(QStringList, arguments);
        QFETCH(Action, action);
        QFETCH(QString, specFile);
        QFETCH(QString, error);
        const ProgramCommandLine line = ProgramCommandLine::parse(arguments);
        QCOMPARE(line.action, action);
        QCOMPARE(line.specFile, specFile);
        QCOMPARE(line.error, error);
    }

    void opensTheNamedSpec_data() {
        QTest::addColumn<QByteArray>("content"); // empty: no such file
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("firstNode");
        QTest::addColumn<QString>("recent");
        QTest::addColumn<QString>("box"); // title and the start of the text; empty: none
        auto row = [](const char* name, const char* content, const char* caption,
                      const char* firstNode, const char* recent, const char* box) {
            QTest::newRow(name) << QByteArray(content) << QString(caption) << QString(firstNode)
                                << QString(recent) << QString(box);
        };
        row("a spec: shown and first of the recent files", "[SourcePaths]\r\nSP1=/srv/web\r\n",
            "Job.spc", "/srv/web", "&1 Job.spc", "");
        row("no such file: the dialog's error, the new spec stays", "", "Spec1.spc", "<various>",
            "", "Error Opening Spec File: Error 53 occurred.");
        row("not a spec: the loader's own report", "notes\n", "Spec1.spc", "<various>", "",
            "Spec File Not Found or Invalid: The selected file does not exist");
    }

    void opensTheNamedSpec() {
        QFETCH(QByteArray, content);
        QFETCH(QString, caption);
        QFETCH(QString, firstNode);
        QFETCH(QString, recent);
        QFETCH(QString, box);
        QTemporaryDir dir;
        if (!content.isEmpty())
            QVERIFY(WholeFile::write(dir.filePath("Job.spc"), content).ok());
        ProgramObjects program(dir.path());
        const std::unique_ptr<frmMain> main =
            createProgramObjects(program, FixedScreen(9600, 7200));
        main->Show();
        ScriptedMsgBox boxes;
        // A name relative to the directory the program was started in.
        const QString started = QDir::currentPath();
        QDir::setCurrent(dir.path());
        OpenSpecFileNamed(*main, QStringLiteral("Job.spc"));
        QDir::setCurrent(started);

        QCOMPARE(main->findChild<QLabel*>("lblSpecInfo(0)")->text(), caption);
        QCOMPARE(main->findChild<QTreeWidget*>("tvwSpecs")->topLevelItem(0)->text(0), firstNode);
        QCOMPARE(main->findChild<QAction*>("mnuFileMRU(0)")->text().left(recent.size()), recent);
        QCOMPARE(boxes.shown().size(), box.isEmpty() ? 0 : 1);
        for (const MsgBoxRequest& shown : boxes.shown())
            QVERIFY2((shown.title + ": " + shown.prompt).startsWith(box),
                     qPrintable(shown.title + ": " + shown.prompt));
        if (recent.isEmpty())
            QVERIFY(!main->findChild<QAction*>("mnuFileMRU(0)")->isVisible());
        else
            QCOMPARE(program.Spec->Path(), dir.path() + u'/');
    }
};

QTEST_MAIN(tst_ProgramStart)
#include "tst_ProgramStart.moc"
