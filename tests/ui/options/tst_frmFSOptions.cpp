// The options dialog as a user meets it: opened from the main window's Edit menu, changed, and
// what the options file holds after the program ends.

#include "platform/ScriptedHelp.h"
#include "platform/ScriptedMsgBox.h"
#include "ui/controls/DirList.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"
#include "ui/options/frmFSOptions.h"

#include <QAccessible>
#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QLineEdit>
#include <QRadioButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include "tests/ui/WhenModal.h"

using namespace ondrel;

namespace {

struct Program {
    Program(const QString& dir, const QByteArray& options) : objects(dir) {
        QFile file(dir + QStringLiteral("/ONDREL.OPT"));
        if (file.open(QIODevice::WriteOnly))
            file.write(options);
        file.close();
        main = createProgramObjects(objects, FixedScreen(9600, 7200));
        objects.Settings->ReadOPTFile();
        main->Show();
    }
    // Opens the dialog from the Edit menu on the page of menuItem, runs act on it.
    void withOptions(const char* menuItem, std::function<void(frmFSOptions*)> act) {
        whenModal<frmFSOptions>(std::move(act));
        main->findChild<QAction*>(QString::fromLatin1(menuItem))->trigger();
    }
    ProgramObjects objects;
    std::unique_ptr<frmMain> main;
};

template <typename T> T* child(QWidget* dialog, const QString& name) {
    return dialog->findChild<T*>(name);
}

} // namespace

class tst_frmFSOptions : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every setting the dialog shows is changed by a click, and the file written when the
    // program ends holds the new value; the main window's options list shows it at once. Help
    // opens the page in front.
    void editsEverySetting() {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("jobs/out")));
        Program p(dir.path(), "[FSOptions]\r\nSaveSettings=True\r\nOverwrite=3\r\n"
                              "DefaultDrive=/\r\nDefaultPath=/\r\n");
        const QString out = dir.filePath(QStringLiteral("jobs/out"));
        ScriptedHelp help;
        p.withOptions("mnuEditFSOptionsStaging", [&](frmFSOptions* d) {
            QCOMPARE(d->tdgOptions->currentIndex(), 1);
            d->cmdHelp_Click();
            QVERIFY(child<QRadioButton>(d, "optOverwrite(3)")->isChecked());
            for (const char* name :
                 {"chkResetArchive", "chkConfirmMsgs", "chkSaveSettings", "chkCreateDirs",
                  "chkCreateLog", "chkShowErrMsgs", "chkDelSource", "chkInclArc", "chkInclHid",
                  "chkInclRO", "chkInclSys"})
                child<QCheckBox>(d, name)->click();
            // SaveSettings back on, so that the file is written.
            child<QCheckBox>(d, "chkSaveSettings")->click();
            child<QRadioButton>(d, "optOverwrite(1)")->click();
            QVERIFY(child<DirList>(d, "dirDefPath")->setPath(out).ok());
            QCOMPARE(child<QLineEdit>(d, "txtDefPath")->text(), out);
            d->cmdOK_Click();
        });
        QVERIFY(help.requests() == QList<HelpRequest>({{22, HelpCommand::Context}}));
        QCOMPARE(p.objects.Settings->Overwrite(), qint16(1));
        auto* list = p.main->findChild<QTreeWidget*>(QStringLiteral("lvwSPProps"));
        QVERIFY(!list->findItems(QStringLiteral("Prompt"), Qt::MatchExactly, 1).isEmpty());

        p.main->close();
        QFile file(p.objects.programDirectory + QStringLiteral("/ONDREL.OPT"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray written = file.readAll();
        for (const char* line :
             {"Overwrite=1", "ResetArchive=True", "ShowConfirmMsgs=False", "SaveSettings=True",
              "CreateDirs=False", "CreateLog=True", "ShowErrMsgs=False", "DelSource=True",
              "InclArc=False", "InclHid=False", "InclRO=False", "InclSys=False"})
            QVERIFY2(written.contains(QByteArray(line) + "\r\n"), line);
        QVERIFY(written.contains("DefaultPath=" + out.toUtf8() + "\r\n"));
    }

    // OK stores the mode of the button that is checked, however it came to be: the arrow keys,
    // or a screen reader's Toggle action, which checks a button without a click.
    void overwriteModeFollowsTheCheckedButton_data() {
        QTest::addColumn<bool>("byScreenReader");
        QTest::newRow("arrow key") << false;
        QTest::newRow("screen reader") << true;
    }
    void overwriteModeFollowsTheCheckedButton() {
        QFETCH(bool, byScreenReader);
        QTemporaryDir dir;
        Program p(dir.path(), "[FSOptions]\r\nOverwrite=2\r\n");
        p.withOptions("mnuEditFSOptionsStaging", [&](frmFSOptions* d) {
            auto* always = child<QRadioButton>(d, "optOverwrite(2)");
            auto* never = child<QRadioButton>(d, "optOverwrite(3)");
            if (byScreenReader) {
                QAccessible::queryAccessibleInterface(never)->actionInterface()->doAction(
                    QAccessibleActionInterface::toggleAction());
            } else {
                always->setFocus();
                QTest::keyClick(always, Qt::Key_Down);
            }
            QVERIFY(never->isChecked());
            d->cmdOK_Click();
        });
        QCOMPARE(p.objects.Settings->Overwrite(), qint16(3));
    }

    // Restore Defaults takes effect at once, moves the main window home, and Cancel keeps it.
    // Help opens the page in front.
    void restoreDefaultsSurvivesCancel() {
        QTemporaryDir dir;
        Program p(dir.path(), "[FSOptions]\r\nTop=60\r\nLeft=90\r\nShowConfirmMsgs=False\r\n"
                              "Overwrite=2\r\nDelSource=True\r\n");
        const QPoint moved = p.main->pos();
        ScriptedHelp help;
        p.withOptions("mnuEditFSOptionsUser", [&](frmFSOptions* d) {
            d->cmdHelp_Click();
            d->cmdRestoreDefaults_Click();
            QVERIFY(child<QCheckBox>(d, "chkConfirmMsgs")->isChecked());
            QVERIFY(child<QRadioButton>(d, "optOverwrite(0)")->isChecked());
            d->cmdCancel_Click();
        });
        const clsOndrelApp& s = *p.objects.Settings;
        QVERIFY(s.ShowConfirmMsgs());
        QCOMPARE(s.Overwrite(), qint16(0));
        QVERIFY(!s.DelSource());
        QVERIFY(p.main->pos() != moved);
        QVERIFY(help.requests() == QList<HelpRequest>({{21, HelpCommand::Context}}));
    }

    // A default drive that is not mounted: the user is asked, Retry asks again, Cancel falls
    // back to the program's own directory.
    void missingDefaultDrive() {
        QTemporaryDir dir;
        Program p(dir.path(), "[FSOptions]\r\nDefaultDrive=/no/such/volume\r\n"
                              "DefaultPath=/no/such/volume/dir\r\n");
        ScriptedMsgBox boxes;
        boxes.queue(MsgAnswer::Retry);
        boxes.queue(MsgAnswer::Cancel);
        QString shown;
        p.withOptions("mnuEditFSOptionsUser", [&](frmFSOptions* d) {
            shown = child<DirList>(d, "dirDefPath")->Path();
            d->cmdCancel_Click();
        });
        QCOMPARE(boxes.shown().size(), 2);
        const MsgBoxRequest& box = boxes.shown().at(0);
        QCOMPARE(box.title, QStringLiteral("Device Not Found"));
        QCOMPARE(box.prompt, QStringLiteral("Drive /no/such/volume is not currently mapped or is "
                                            "otherwise unavailable."));
        QCOMPARE(box.buttons, MsgButtons::RetryCancel);
        QCOMPARE(shown, dir.path());
    }
};

QTEST_MAIN(tst_frmFSOptions)
#include "tst_frmFSOptions.moc"
