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
        QStringList texts;
        for (int i = 0; i < node->childCount(); ++i)
            texts.append(node->child(i)->text(0));
        return texts;
    }
    // The groups of the first source path as the tree shows them, and as the spec holds them.
    QStringList groups() const { return children(tree()->topLevelItem(0)); }
    QStringList groupsInSpec() const {
        QStringList names;
        for (const auto& fg : objects.Spec->SPs().Item(1)->FGs())
            names.append(fg->Name());
        return names;
    }

    QTemporaryDir dir;
    ProgramObjects objects;
    std::unique_ptr<frmMain> main;
};

// The File Groups page of the open editor, worked as a user works it.
struct Page {
    frmCESpecs* dialog;

    template <typename T = QPushButton> T* find(const char* name) const {
        return dialog->findChild<T*>(QString::fromLatin1(name));
    }
    QTableWidget* grid() const { return find<QTableWidget>("grdFGGrid"); }
    QListWidget* list() const { return find<QListWidget>("lstFGList"); }
    void click(const char* button) const { find(button)->click(); }

    // Keys pressed on whatever has the focus: "\n" Enter, "\x1b" Esc, "\b" Backspace; "[n]" is a
    // mouse click on mask cell n.
    void type(const QString& keys) const {
        for (qsizetype i = 0; i < keys.size(); ++i) {
            if (keys.at(i) == u'[') {
                const QRect cell =
                    grid()->visualItemRect(grid()->item(0, keys.at(++i).digitValue() - 1));
                QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
                ++i;
                continue;
            }
            static const QHash<QChar, Qt::Key> special{{u'\n', Qt::Key_Return},
                                                       {u'\x1b', Qt::Key_Escape},
                                                       {u'\b', Qt::Key_Backspace},
                                                       {u'\t', Qt::Key_Tab}};
            QWidget* target = QApplication::focusWidget();
            if (special.contains(keys.at(i)))
                QTest::keyClick(target, special.value(keys.at(i)));
            else
                QTest::keyClick(target, keys.at(i).toLatin1());
        }
    }
    void select(int row) const {
        const QRect entry = list()->visualItemRect(list()->item(row));
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, entry.center());
    }
    QStringList cells() const {
        QStringList texts;
        for (int c = 0; c < 5; ++c)
            texts.append(grid()->item(0, c)->text());
        return texts;
    }
    QStringList entries() const {
        QStringList texts;
        for (int i = 0; i < list()->count(); ++i)
            texts.append(list()->item(i)->text());
        return texts;
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
    void addsAGroupFromTypedMasks_data() {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QStringList>("groups");
        QTest::newRow("two masks") << "*.txt\nreadme.*" << QStringList{"*.TXT;README.*"};
        QTest::newRow("forbidden characters")
            << "c:\\*.t\"x|t\n/<>*.b" << QStringList{"C*.TXT;*.B"};
        QTest::newRow("semicolon kept") << "*.a;*.b" << QStringList{"*.A;*.B"};
        QTest::newRow("Enter wraps from 5 to 1") << "a\nb\nc\nd\ne\nf" << QStringList{"AF;B;C;D;E"};
        QTest::newRow("Esc keeps the typing") << "*.log\x1b" << QStringList{"*.LOG"};
        QTest::newRow("no cell past a gap") << "*.a[3]zz" << QStringList{"*.A"};
        QTest::newRow("cells clicked") << "[2]y[1]x[2]y" << QStringList{"X;Y"};
        QTest::newRow("empty grid adds nothing") << "" << QStringList{};
    }
    void addsAGroupFromTypedMasks() {
        QFETCH(QString, keys);
        QFETCH(QStringList, groups);
        Program p;
        ScriptedMsgBox boxes;
        inEditor(p, "cmdOK", [&](const Page& page) {
            page.type(keys);
            page.click("cmdFGAdd");
            QCOMPARE(page.entries(), groups);
            QCOMPARE(page.cells(), kEmptyCells);
        });
        QCOMPARE(boxes.shown().size(), 0);
        QCOMPARE(p.groups(), groups);
        QVERIFY(p.objects.Spec->Dirty());
    }

    // A refused Add leaves the masks for the user to correct, and an edit under way.
    void refusedAdds_data() {
        QTest::addColumn<int>("editRow");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QStringList>("cells");
        QTest::addColumn<QStringList>("box");
        const QString erase(5, u'\b');
        const QStringList exists{"Create/Edit File Groups",
                                 "File Group '*.HTM;*.HTML' already exists for this Source Path."};
        QTest::newRow("new, case aside")
            << -1 << "*.HTM\n*.html" << QStringList{"*.HTM", "*.HTML", "", "", ""} << exists;
        QTest::newRow("renamed onto another")
            << 1 << "[1]" + erase + "*.htm[2]" + erase + "*.html"
            << QStringList{"*.HTM", "*.HTML", "", "", ""} << exists;
        QTest::newRow("edited empty")
            << 0 << "[1]" + erase << QStringList{"", "*.html", "", "", ""}
            << QStringList{"Create/Edit FileGroups",
                           "You cannot add a File Group that does not contain any file masks."};
    }
    void refusedAdds() {
        QFETCH(int, editRow);
        QFETCH(QString, keys);
        QFETCH(QStringList, cells);
        QFETCH(QStringList, box);
        Program p;
        p.openWorkedExample();
        const QStringList before = p.groups();
        ScriptedMsgBox boxes;
        inEditor(p, "cmdOK", [&](const Page& page) {
            if (editRow >= 0) {
                page.select(editRow);
                page.click("cmdFGEdit");
            }
            page.type(keys);
            page.click("cmdFGAdd");
            QCOMPARE(boxes.shown().size(), 1);
            const MsgBoxRequest& shown = boxes.shown().at(0);
            QCOMPARE((QStringList{shown.title, shown.prompt}), box);
            QVERIFY(shown.buttons == MsgButtons::OK && shown.icon == MsgIcon::Exclamation);
            QCOMPARE(page.cells(), cells);
            QCOMPARE(page.mode(), editRow >= 0 ? "Edit" : "New");
            QCOMPARE(page.entries(), before);
        });
        QCOMPARE(p.groups(), before);
        QCOMPARE(p.objects.Spec->SPs().Item(1)->FGs().Item(2)->DPs().Count(), 1);
    }

    void editRenamesKeepingDestinations() {
        Program p;
        p.openWorkedExample();
        inEditor(p, "cmdOK", [&](const Page& page) {
            // A second Edit ends the edit and empties the grid; a click in the list ends it too
            // (the caption is plain again) but leaves the masks and the row header's "Edit".
            page.select(0);
            page.click("cmdFGEdit");
            QCOMPARE(page.mode(), "Edit");
            page.click("cmdFGEdit");
            QCOMPARE(page.mode(), "New");
            QCOMPARE(page.cells(), kEmptyCells);
            page.click("cmdFGEdit");
            page.select(1);
            QCOMPARE(page.mode(), "mixed");
            QCOMPARE(page.dialog->EditMode, 0);
            QCOMPARE(page.cells(), (QStringList{"*.htm", "*.html", "", "", ""}));

            page.select(0);
            page.click("cmdFGEdit");
            QCOMPARE(page.mode(), "Edit");
            page.type(QStringLiteral("[3]*.php"));
            page.click("cmdFGAdd");
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
            page.type(QStringLiteral("*.css"));
            page.click("cmdFGAdd");
            page.select(0);
            page.click("cmdFGEdit");
            page.type(QStringLiteral("[3]*.php"));
            page.click("cmdFGAdd");
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
