#include "platform/ScriptedFileDialog.h"
#include "platform/ScriptedMsgBox.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/frmCESpecs.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include "tests/ui/WhenModal.h"

using namespace ondrel;

namespace {

const QStringList kEmptyCells{"", "", "", "", ""};

// The texts of count things, each given by its position.
QStringList texts(int count, const std::function<QString(int)>& text) {
    QStringList all;
    for (int i = 0; i < count; ++i)
        all.append(text(i));
    return all;
}

// The program as Sub Main starts it, in a program directory of its own.
struct Program {
    Program() : objects(dir.path()) {
        main = createProgramObjects(objects, FixedScreen(9600, 7200));
        objects.Settings->ReadOPTFile();
        main->Show();
    }
    ~Program() { objects.Spec->setDirty(false); }

    // The spec tests' worked example: C:\Projects\Web with *.htm;*.html (two destinations) and
    // *.gif;*.jpg (one), then <various>. Its first source path is selected.
    void openWorkedExample() {
        ScriptedFileDialog dialogs;
        const QString copy = dir.filePath(QStringLiteral("Web.spc"));
        QFile::copy(QDir::cleanPath(QStringLiteral(ONDREL_TEST_DATA
                                                   "/../../../spec/fixtures/worked-example.spc")),
                    copy);
        dialogs.queue(copy);
        main->mnuFileOpenSpecs_Click();
        tree()->setCurrentItem(tree()->topLevelItem(0));
    }
    QTreeWidget* tree() const { return main->findChild<QTreeWidget*>(QStringLiteral("tvwSpecs")); }
    static QStringList children(const QTreeWidgetItem* node) {
        return texts(node->childCount(), [node](int i) { return node->child(i)->text(0); });
    }
    // The groups of the first source path as the tree shows them, and as the spec holds them.
    QStringList groups() const { return children(tree()->topLevelItem(0)); }
    QStringList groupsInSpec() const {
        const auto& FGs = objects.Spec->SPs().Item(1)->FGs();
        return texts(FGs.Count(), [&](int i) { return FGs.Item(i + 1)->Name(); });
    }

    QTemporaryDir dir;
    ProgramObjects objects;
    std::unique_ptr<frmMain> main;
};

// The File Groups page of the open editor, worked as a user works it.
struct Page {
    frmCESpecs* dialog;

    template <typename T = QPushButton> T* find(const char* name) const {
        return dialog->findChild<T*>(name);
    }
    QTableWidget* grid() const { return find<QTableWidget>("grdFGGrid"); }
    QListWidget* list() const { return find<QListWidget>("lstFGList"); }
    void click(const char* button) const { find(button)->click(); }

    // Keys pressed on whatever has the focus: "\r" Enter, "\x1b" Esc, "\b" Backspace, "\t" Tab;
    // "[n]" is a mouse click on mask cell n.
    void type(const QString& keys) const {
        for (qsizetype i = 0; i < keys.size(); ++i) {
            if (keys.at(i) != u'[') {
                QTest::keyClick(QApplication::focusWidget(), keys.at(i).toLatin1());
                continue;
            }
            const QRect cell =
                grid()->visualItemRect(grid()->item(0, keys.at(++i).digitValue() - 1));
            QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
            ++i;
        }
    }
    void select(int row) const {
        const QRect entry = list()->visualItemRect(list()->item(row));
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, entry.center());
    }
    void edit(int row) const {
        select(row);
        click("cmdFGEdit");
    }
    void add(const QString& keys) const {
        type(keys);
        click("cmdFGAdd");
    }
    QStringList cells() const {
        return texts(5, [&](int c) { return grid()->item(0, c)->text(); });
    }
    QStringList entries() const {
        return texts(list()->count(), [&](int i) { return list()->item(i)->text(); });
    }
    // "Edit" while an edit is under way as the user sees it (bold Edit caption, "Edit" in the
    // row header), "New" while none is, "mixed" when the signs disagree.
    QString mode() const {
        const bool bold = find("cmdFGEdit")->font().bold();
        const QString header = grid()->verticalHeaderItem(0)->text();
        const bool agree = bold == (header == u"Edit") && bold == (dialog->EditMode == 2);
        return agree ? header : QStringLiteral("mixed");
    }
};

// Opens the editor from the tree's file-group context entry, runs the script on its File Groups
// page and closes it with the button named.
void inEditor(Program& p, const char* close, const std::function<void(const Page&)>& script) {
    whenModal<frmCESpecs>([&](frmCESpecs* dialog) {
        const Page page{dialog};
        QCOMPARE(dialog->tdgCESpecs->currentIndex(), 1);
        script(page);
        page.click(close);
    });
    p.main->mnuTVContextCEFGs_Click();
}

} // namespace

class tst_FileGroupsPage : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Add with the masks typed makes a group of them, or refuses, leaving the masks for the user
    // to correct and an edit under way.
    void addsAGroupFromTypedMasks_data() {
        QTest::addColumn<int>("editRow");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QStringList>("added");
        QTest::addColumn<QStringList>("cells");
        QTest::addColumn<QStringList>("box");
        const auto adds = [](const char* row, const char* keys, const QStringList& added) {
            QTest::newRow(row) << -1 << QString(keys) << added << kEmptyCells << QStringList{};
        };
        adds("two masks", "*.txt\rreadme.*", {"*.TXT;README.*"});
        adds("forbidden characters", "c:\\*.t\"x|t\r/<>*.b", {"C*.TXT;*.B"});
        adds("semicolon kept", "*.a;*.b", {"*.A;*.B"});
        adds("Enter wraps from 5 to 1", "a\rb\rc\rd\re\rf", {"AF;B;C;D;E"});
        adds("Esc keeps the typing", "*.log\x1b", {"*.LOG"});
        adds("no cell past a gap", "*.a[3]zz", {"*.A"});
        adds("cells clicked", "[2]y[1]x[2]y", {"X;Y"});
        adds("empty grid adds nothing", "", {});
        const QString erase(5, u'\b');
        const QStringList typed{"*.HTM", "*.HTML", "", "", ""};
        const QStringList exists{"Create/Edit File Groups",
                                 "File Group '*.HTM;*.HTML' already exists for this Source Path."};
        QTest::newRow("refused: new, case aside")
            << -1 << "*.HTM\r*.html" << QStringList{} << typed << exists;
        QTest::newRow("refused: renamed onto another")
            << 1 << "[1]" + erase + "*.htm[2]" + erase + "*.html" << QStringList{} << typed
            << exists;
        QTest::newRow("refused: edited empty")
            << 0 << "[1]" + erase << QStringList{} << QStringList{"", "*.html", "", "", ""}
            << QStringList{"Create/Edit FileGroups",
                           "You cannot add a File Group that does not contain any file masks."};
    }
    void addsAGroupFromTypedMasks() {
        QFETCH(int, editRow);
        QFETCH(QString, keys);
        QFETCH(QStringList, added);
        QFETCH(QStringList, cells);
        QFETCH(QStringList, box);
        Program p;
        p.openWorkedExample();
        const QStringList groups = p.groups() + added;
        ScriptedMsgBox boxes;
        inEditor(p, "cmdOK", [&](const Page& page) {
            if (editRow >= 0)
                page.edit(editRow);
            page.add(keys);
            QCOMPARE(boxes.shown().size(), box.isEmpty() ? 0 : 1);
            for (const MsgBoxRequest& shown : boxes.shown()) {
                QCOMPARE((QStringList{shown.title, shown.prompt}), box);
                QVERIFY(shown.buttons == MsgButtons::OK && shown.icon == MsgIcon::Exclamation);
            }
            QCOMPARE(page.cells(), cells);
            QCOMPARE(page.mode(), editRow >= 0 ? "Edit" : "New");
            QCOMPARE(page.entries(), groups);
        });
        QCOMPARE(p.groups(), groups);
        QCOMPARE(p.objects.Spec->SPs().Item(1)->FGs().Item(2)->DPs().Count(), 1);
        QVERIFY(p.objects.Spec->Dirty());
    }

    void editRenamesKeepingDestinations() {
        Program p;
        p.openWorkedExample();
        inEditor(p, "cmdOK", [&](const Page& page) {
            // A second Edit ends the edit and empties the grid; a click in the list ends it too
            // (the caption is plain again) but leaves the masks and the row header's "Edit".
            page.edit(0);
            QCOMPARE(page.mode(), "Edit");
            page.click("cmdFGEdit");
            QCOMPARE(page.mode(), "New");
            QCOMPARE(page.cells(), kEmptyCells);
            page.click("cmdFGEdit");
            page.select(1);
            QCOMPARE(page.mode(), "mixed");
            QCOMPARE(page.dialog->EditMode, 0);
            QCOMPARE(page.cells(), (QStringList{"*.htm", "*.html", "", "", ""}));

            page.edit(0);
            QCOMPARE(page.mode(), "Edit");
            page.add(QStringLiteral("[3]*.php"));
            QCOMPARE(page.mode(), "New");
            // The list keeps the entry's place; Add with the masks unchanged keeps the name.
            page.click("cmdFGEdit");
            page.click("cmdFGAdd");
            QCOMPARE(page.entries(), (QStringList{"*.htm;*.html;*.PHP", "*.gif;*.jpg"}));
        });
        // In the spec the renamed group went to the end, with its destination paths.
        QCOMPARE(p.groups(), (QStringList{"*.gif;*.jpg", "*.htm;*.html;*.PHP"}));
        QCOMPARE(Program::children(p.tree()->topLevelItem(0)->child(1)),
                 (QStringList{"D:\\Stage\\Web", "E:\\Mirror\\Web"}));
    }

    void deleteAsksFirst_data() {
        QTest::addColumn<bool>("confirm");
        QTest::addColumn<MsgAnswer>("answer");
        QTest::addColumn<bool>("whileEditing");
        QTest::addColumn<QStringList>("left");
        const QStringList gone{"*.gif;*.jpg"};
        QTest::newRow("confirmed") << true << MsgAnswer::OK << false << gone;
        QTest::newRow("cancelled")
            << true << MsgAnswer::Cancel << false << QStringList{"*.htm;*.html", "*.gif;*.jpg"};
        QTest::newRow("confirmations off") << false << MsgAnswer::OK << false << gone;
        QTest::newRow("while editing it") << false << MsgAnswer::OK << true << gone;
    }
    void deleteAsksFirst() {
        QFETCH(bool, confirm);
        QFETCH(MsgAnswer, answer);
        QFETCH(bool, whileEditing);
        QFETCH(QStringList, left);
        Program p;
        p.openWorkedExample();
        p.objects.Settings->setShowConfirmMsgs(confirm);
        ScriptedMsgBox boxes;
        boxes.queue(answer);
        inEditor(p, "cmdOK", [&](const Page& page) {
            page.click("cmdFGDelete"); // nothing selected yet
            page.select(0);
            if (whileEditing)
                page.click("cmdFGEdit");
            page.click("cmdFGDelete");
            QCOMPARE(page.entries(), left);
            QCOMPARE(page.mode(), "New");
            QCOMPARE(page.cells(), kEmptyCells);
        });
        QCOMPARE(boxes.shown().size(), confirm ? 1 : 0);
        if (confirm) {
            const MsgBoxRequest& box = boxes.shown().at(0);
            QCOMPARE(box.prompt, "OK to delete File Group '*.htm;*.html'?\r\n\r\nNOTE:  All "
                                 "associated Destination Paths will also be deleted.");
            QCOMPARE(box.title, "Create/Edit File Groups");
            QVERIFY(box.buttons == MsgButtons::OKCancel && box.icon == MsgIcon::Question);
        }
        QCOMPARE(p.groups(), left);
    }

    void cancelLeavesTheSpecUntouched() {
        Program p;
        p.openWorkedExample();
        p.objects.Settings->setShowConfirmMsgs(false);
        const QStringList before = p.groups();
        inEditor(p, "cmdCancel", [&](const Page& page) {
            page.add(QStringLiteral("*.css"));
            page.edit(0);
            page.add(QStringLiteral("[3]*.php"));
            page.select(0);
            page.click("cmdFGDelete");
            QCOMPARE(page.entries(), (QStringList{"*.gif;*.jpg", "*.CSS"}));
        });
        QCOMPARE(p.groupsInSpec(), before);
        QCOMPARE(p.objects.Spec->SPs().Item(1)->FGs().Item(1)->DPs().Count(), 2);
        QVERIFY(!p.objects.Spec->Dirty());
    }

    // Tab from the tabs and Alt+M reach the grid, typing there opens the cell editor, Tab leaves
    // it for Clear Grid.
    void keyboard() {
        Program p;
        inEditor(p, "cmdCancel", [&](const Page& page) {
            page.dialog->findChild<QTabBar*>()->setFocus();
            page.type(QStringLiteral("\t"));
            QCOMPARE(QApplication::focusWidget(), page.grid());
            page.find("cmdFGAdd")->setFocus();
            QTest::keyClick(page.dialog, Qt::Key_M, Qt::AltModifier);
            page.type(QStringLiteral("a"));
            QCOMPARE(page.find<QLineEdit>("txtFileMask")->text(), "A");
            page.type(QStringLiteral("\t"));
            QCOMPARE(QApplication::focusWidget(), page.find("cmdFGClearGrid"));
            QVERIFY(page.find<QLineEdit>("txtFileMask")->isHidden());
        });
    }
};

QTEST_MAIN(tst_FileGroupsPage)
#include "tst_FileGroupsPage.moc"
