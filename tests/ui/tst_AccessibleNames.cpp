// Every window as a screen reader meets it: the tree of accessible objects, walked from the window
// down, names every control that takes the focus; a combo box is named by its caption and reads
// its entry as its value; a label that shows a value is named by that value.
#include "platform/ScriptedFileDialog.h"
#include "platform/ScriptedMsgBox.h"
#include "staging/frmStage.h"
#include "staging/frmStageInfo.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/frmCESpecs.h"
#include "ui/help/HelpCache.h"
#include "ui/help/HelpViewer.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmAbout.h"
#include "ui/main/frmMain.h"
#include "ui/options/frmFSOptions.h"
#include "ui/select/frmVarFileSelect.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include "tests/ui/WhenModal.h"

#include <functional>

using namespace ondrel;

namespace {

// The source directory's name is longer than its line in the staging window, which shortens it.
const QString kLongName = QString(120, u'n');

void writeFile(const QString& path, const QString& text) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly) && f.write(text.toUtf8()) == text.toUtf8().size());
}

// The program as Sub Main starts it, with job.spc open: a source path (whose one file is
// already at its destination, so that staging asks before overwriting it) and <various>.
struct Program {
    QTemporaryDir dir;
    QString source = dir.filePath(kLongName);
    ProgramObjects objects{dir.path()};
    std::unique_ptr<frmMain> main;

    Program() {
        QVERIFY(QDir(dir.path()).mkpath(kLongName) && QDir(dir.path()).mkpath("dst"));
        writeFile(source + "/a.txt", "new");
        writeFile(dir.filePath("dst/a.txt"), "old");
        writeFile(
            dir.filePath("job.spc"),
            QString("[SourcePaths]\r\nSP1=%1\r\nSP2=<various>\r\n[SP1FGs]\r\nFG1=*.txt\r\n"
                    "[SP1FG1DPs]\r\nDP1=%2\r\n[SP2FGs]\r\nFG1=*.*\r\n[SP2FG1DPs]\r\nDP1=%2\r\n")
                .arg(source, dir.filePath("dst")));
        writeFile(dir.filePath("ONDREL.OPT"), "[FSOptions]\r\nOverwrite=1\r\n");
        main = createProgramObjects(objects, FixedScreen(9600, 7200));
        objects.Settings->ReadOPTFile();
        main->Show();
        ScriptedFileDialog dialogs;
        dialogs.queue(dir.filePath("job.spc"));
        main->mnuFileOpenSpecs_Click();
    }
};

// Opens a window of the program, has it looked at while it is open, and closes it.
using Look = std::function<void(QWidget*)>;
using Opener = std::function<void(Program&, const Look&)>;

// A modal window that a menu command opens, looked at once it has the keyboard.
template <typename T> Opener byMenu(const char* action) {
    return [action](Program& p, const Look& look) {
        whenModal<T>([&](T* window) {
            look(window);
            window->reject();
        });
        p.main->findChild<QAction*>(QLatin1String(action))->trigger();
    };
}

QString caption(const QWidget* w) {
    for (const QLabel* label : w->window()->findChildren<QLabel*>())
        if (label->buddy() == w)
            return QString(label->text()).remove(u'&');
    return "(no caption)";
}

// What a screen reader would miss in the window's accessible tree.
QStringList faultsIn(QWidget* window) {
    QStringList faults;
    std::function<void(QAccessibleInterface*)> visit = [&](QAccessibleInterface* a) {
        auto* w = qobject_cast<QWidget*>(a->object());
        const QString name = a->text(QAccessible::Name);
        const QString what = w ? w->objectName() + u' ' + w->metaObject()->className() : name;
        // A button is a control even where the keyboard does not stop (the tool bar's).
        const bool control = a->state().focusable || qobject_cast<QAbstractButton*>(w);
        if (w != nullptr && control && name.isEmpty())
            faults << "no name: " + what;
        if (auto* box = qobject_cast<QComboBox*>(w)) {
            if (name != caption(box))
                faults << "not named by its caption: " + what + u' ' + name;
            if (a->text(QAccessible::Value) != box->currentText())
                faults << "value is not its entry: " + what;
        }
        // The entries of lists and tables are their rows, named by their texts.
        for (int i = 0; a->tableInterface() == nullptr && i < a->childCount(); ++i)
            if (QAccessibleInterface* child = a->child(i))
                visit(child);
    };
    visit(QAccessible::queryAccessibleInterface(window));
    return faults;
}

const Opener showMain = [](Program& p, const Look& look) { look(p.main.get()); };

// Looked at while the run asks whether to overwrite: the lines show where it is.
void stageFiles(Program& p, const Look& look) {
    ScopedMsgBoxHandler answers([&](const MsgBoxRequest& box) {
        if (auto* stage = qobject_cast<frmStage*>(QApplication::activeModalWidget()))
            look(stage);
        return box.buttons == MsgButtons::YesNoCancel ? MsgAnswer::No : MsgAnswer::OK;
    });
    whenModal<frmStageInfo>([](frmStageInfo* summary) { summary->accept(); });
    p.main->mnuFileStageFiles_Click();
}

void showSummary(Program&, const Look& look) {
    frmStageInfo summary("Staging Complete!", "# of Files Copied:\t1");
    summary.show();
    look(&summary);
}

void showHelp(Program&, const Look& look) {
    QTemporaryDir cache;
    const Result<QString> collection = HelpCache::prepare(cache.path());
    QVERIFY(collection.ok());
    HelpViewer viewer(*collection);
    viewer.showRequest({0, HelpCommand::Contents});
    look(&viewer);
}

} // namespace

Q_DECLARE_METATYPE(Opener)

class tst_AccessibleNames : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    // A row names a window, and a control whose name it checks (empty: the label's own text).
    void everyWindowNamesWhatItShows_data() {
        QTest::addColumn<Opener>("open");
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("name");
        const auto row = [](const char* tag, const Opener& open, const QString& control = {},
                            const QString& name = {}) {
            QTest::newRow(tag) << open << control << name;
        };
        row("main window", showMain, "lblSpecInfo(0)", "job.spc");
        row("spec editor", byMenu<frmCESpecs>("mnuEditSpecs"), "cboSPs", "Source Path:");
        row("options", byMenu<frmFSOptions>("mnuEditFSOptionsStaging"), "drvDefPath", "Drive:");
        row("file selection", byMenu<frmVarFileSelect>("mnuEditVarFileSelect"), "lblFileCount");
        // Shortened on screen, whole for the screen reader: the source path.
        row("staging window", stageFiles, "lblCurDir", "%source");
        row("summary", showSummary, "txtInfo", "Staging Complete!");
        row("help viewer", showHelp);
        row("about", byMenu<frmAbout>("mnuHelpAbout"));
    }

    void everyWindowNamesWhatItShows() {
        QFETCH(Opener, open);
        QFETCH(QString, control);
        QFETCH(QString, name);

        Program p;
        ScriptedMsgBox boxes;
        QStringList faults{"the window was never looked at"};
        QString controlName, shown;
        open(p, [&](QWidget* window) {
            faults = faultsIn(window);
            if (control.isEmpty())
                return;
            auto* w = window->findChild<QWidget*>(control);
            QVERIFY2(w, qPrintable(control));
            controlName = QAccessible::queryAccessibleInterface(w)->text(QAccessible::Name);
            if (auto* label = qobject_cast<QLabel*>(w))
                shown = label->text();
        });
        QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
        if (name == "%source") {
            QVERIFY(shown.size() < p.source.size());
            name = p.source;
        }
        QCOMPARE(controlName, name.isEmpty() ? shown : name);
        QVERIFY(!controlName.isEmpty() || control.isEmpty());
    }
};

QTEST_MAIN(tst_AccessibleNames)
#include "tst_AccessibleNames.moc"
