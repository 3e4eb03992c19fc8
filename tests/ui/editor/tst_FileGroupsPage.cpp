#include "platform/ScriptedFileDialog.h"
#include "platform/ScriptedMsgBox.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/frmCESpecs.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include "tests/ui/WhenModal.h"

using namespace ondrel;

namespace {

const QString kWorkedExample =
    QDir::cleanPath(QStringLiteral(ONDREL_TEST_DATA "/../../../spec/fixtures/worked-example.spc"));

// The program as Sub Main starts it, in a program directory of its own.
struct Program {
    Program() : objects(dir.path()) {
        main = createProgramObjects(objects, FixedScreen(9600, 7200));
        objects.Settings->ReadOPTFile();
        main->Show();
    }
    ~Program() { objects.Spec->setDirty(false); }

    // Opens the worked example (source paths C:\Projects\Web with *.htm;*.html and *.gif;*.jpg,
    // and <various>) and selects its first source path.
    void openWorkedExample() {
        ScriptedFileDialog dialogs;
        const QString copy = objects.programDirectory + QStringLiteral("/Web.spc");
        QFile::copy(kWorkedExample, copy);
        dialogs.queue(copy);
        main->mnuFileOpenSpecs_Click();
        tree()->setCurrentItem(tree()->topLevelItem(0));
    }
    QTreeWidget* tree() const { return main->findChild<QTreeWidget*>(QStringLiteral("tvwSpecs")); }
    // The texts of a tree node's children.
    static QStringList children(const QTreeWidgetItem* node) {
        QStringList texts;
        for (int i = 0; i < node->childCount(); ++i)
            texts.append(node->child(i)->text(0));
        return texts;
    }
    QStringList groupsInSpec(int sp = 1) const {
        QStringList names;
        for (const auto& fg : objects.Spec->SPs().Item(sp)->FGs())
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

    template <typename T> T* find(const char* name) const {
        return dialog->findChild<T*>(QString::fromLatin1(name));
    }
    QTableWidget* grid() const { return find<QTableWidget>("grdFGGrid"); }
    QLineEdit* cellEditor() const { return find<QLineEdit>("txtFileMask"); }
    QListWidget* list() const { return find<QListWidget>("lstFGList"); }
    QPushButton* button(const char* name) const { return find<QPushButton>(name); }
    void click(const char* name) const { button(name)->click(); }

    // Keys as the user presses them, each to the widget with the focus: "\n" is Enter, "\x1b"
    // Esc, "\b" Backspace, and "[n]" a mouse click on mask cell n.
    void type(const QString& keys) const {
        for (qsizetype i = 0; i < keys.size(); ++i) {
            const QChar c = keys.at(i);
            if (c == u'[' && i + 2 < keys.size() && keys.at(i + 2) == u']') {
                clickCell(keys.at(i + 1).digitValue());
                i += 2;
                continue;
            }
            QWidget* target = QApplication::focusWidget();
            QVERIFY(target != nullptr);
            if (c == u'\n')
                QTest::keyClick(target, Qt::Key_Return);
            else if (c == u'\x1b')
                QTest::keyClick(target, Qt::Key_Escape);
            else if (c == u'\b')
                QTest::keyClick(target, Qt::Key_Backspace);
            else
                QTest::keyClick(target, c.toLatin1());
        }
    }
    void clickCell(int column) const {
        const QRect cell = grid()->visualItemRect(grid()->item(0, column - 1));
        QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, cell.center());
    }
    // Clicks entry row of the list (a click in the list, as Edit and Delete need first).
    void select(int row) const {
        QListWidget* l = list();
        QTest::mouseClick(l->viewport(), Qt::LeftButton, {},
                          l->visualItemRect(l->item(row)).center());
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
    QString rowHeader() const { return grid()->verticalHeaderItem(0)->text(); }
    bool editing() const { return dialog->EditMode == 2 && button("cmdFGEdit")->font().bold(); }
    clsFileGroups& workingGroups(int sp = 1) const { return dialog->WorkingSPs->Item(sp)->FGs(); }
};

enum class Close { OK, Cancel };

// Opens the editor on the File Groups page from the tree's file-group context entry, runs the
// script on it and closes it with OK or Cancel.
void inEditor(Program& p, Close close, const std::function<void(const Page&)>& script) {
    whenModal<frmCESpecs>([&](frmCESpecs* dialog) {
        const Page page{dialog};
        QCOMPARE(dialog->tdgCESpecs->currentIndex(), 1);
        script(page);
        page.click(close == Close::OK ? "cmdOK" : "cmdCancel");
    });
    p.main->mnuTVContextCEFGs_Click();
}

const QStringList kEmptyCells{"", "", "", "", ""};

} // namespace

class tst_FileGroupsPage : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void addsAGroupFromTypedMasks_data();
    void addsAGroupFromTypedMasks();
    void refusedAddsLeaveEverythingAsItWas_data();
    void refusedAddsLeaveEverythingAsItWas();
    void renameKeepsDestinationsAndListPosition();
    void deleteAsksFirst_data();
    void deleteAsksFirst();
    void cancelLeavesTheSpecUntouched();
    void keyboardAndScreenReaders();
};

void tst_FileGroupsPage::addsAGroupFromTypedMasks_data() {
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QStringList>("groups");
    QTest::newRow("two masks") << "*.txt\nreadme.*" << QStringList{"*.TXT;README.*"};
    QTest::newRow("forbidden characters swallowed")
        << "c:\\*.t\"x|t\n/<>*.b" << QStringList{"C*.TXT;*.B"};
    QTest::newRow("semicolon kept in a cell") << "*.a;*.b" << QStringList{"*.A;*.B"};
    QTest::newRow("Enter wraps from cell 5 to 1")
        << "a\nb\nc\nd\ne\nf" << QStringList{"AF;B;C;D;E"};
    QTest::newRow("Esc keeps what was typed") << "*.log\x1b" << QStringList{"*.LOG"};
    QTest::newRow("click past a gap opens nothing") << "*.a[3]zz" << QStringList{"*.A"};
    QTest::newRow("clicked cells, typed in") << "[1]x[2]y[1]z" << QStringList{"XZ;Y"};
    QTest::newRow("empty grid adds nothing") << "" << QStringList{};
}

void tst_FileGroupsPage::addsAGroupFromTypedMasks() {
    QFETCH(QString, keys);
    QFETCH(QStringList, groups);
    Program p;
    ScriptedMsgBox boxes;
    inEditor(p, Close::OK, [&](const Page& page) {
        QCOMPARE(page.rowHeader(), QStringLiteral("New"));
        page.grid()->setFocus();
        page.type(keys);
        page.click("cmdFGAdd");
        QCOMPARE(page.entries(), groups);
        QCOMPARE(page.cells(), kEmptyCells);
        QVERIFY(page.cellEditor()->isHidden());
    });
    QCOMPARE(boxes.shown().size(), 0);
    QCOMPARE(p.groupsInSpec(), groups);
    QCOMPARE(Program::children(p.tree()->topLevelItem(0)), groups);
    QVERIFY(p.objects.Spec->Dirty());
}

void tst_FileGroupsPage::refusedAddsLeaveEverythingAsItWas_data() {
    QTest::addColumn<int>("editRow");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("text");
    const QString erase(5, u'\b');
    const QString exists = QStringLiteral("Create/Edit File Groups");
    QTest::newRow("new group under an existing name, case aside")
        << -1 << "*.HTM\n*.HTML" << QStringList{"*.HTM", "*.HTML", "", "", ""} << exists
        << "File Group '*.HTM;*.HTML' already exists for this Source Path.";
    QTest::newRow("rename onto another group")
        << 1 << "[1]" + erase + "*.htm[2]" + erase + "*.html"
        << QStringList{"*.HTM", "*.HTML", "", "", ""} << exists
        << "File Group '*.HTM;*.HTML' already exists for this Source Path.";
    QTest::newRow("edit with the first cell emptied")
        << 0 << "[1]" + erase << QStringList{"", "*.html", "", "", ""} << "Create/Edit FileGroups"
        << "You cannot add a File Group that does not contain any file masks.";
}

void tst_FileGroupsPage::refusedAddsLeaveEverythingAsItWas() {
    QFETCH(int, editRow);
    QFETCH(QString, keys);
    QFETCH(QStringList, cells);
    QFETCH(QString, title);
    QFETCH(QString, text);
    Program p;
    p.openWorkedExample();
    const QStringList before = p.groupsInSpec();
    ScriptedMsgBox boxes;
    inEditor(p, Close::OK, [&](const Page& page) {
        QCOMPARE(page.entries(), before);
        if (editRow >= 0) {
            page.select(editRow);
            page.click("cmdFGEdit");
        }
        page.type(keys);
        page.click("cmdFGAdd");
        QCOMPARE(boxes.shown().size(), 1);
        QCOMPARE(boxes.shown().at(0).title, title);
        QCOMPARE(boxes.shown().at(0).prompt, text);
        QCOMPARE(boxes.shown().at(0).buttons, MsgButtons::OK);
        QCOMPARE(boxes.shown().at(0).icon, MsgIcon::Exclamation);
        // The masks stay for the user to correct, and an edit stays under way.
        QCOMPARE(page.cells(), cells);
        QCOMPARE(page.editing(), editRow >= 0);
        QCOMPARE(page.rowHeader(), editRow >= 0 ? QStringLiteral("Edit") : QStringLiteral("New"));
        QCOMPARE(page.entries(), before);
    });
    QCOMPARE(p.groupsInSpec(), before);
    QCOMPARE(p.objects.Spec->SPs().Item(1)->FGs().Item(2)->DPs().Count(), 1);
}

void tst_FileGroupsPage::renameKeepsDestinationsAndListPosition() {
    Program p;
    p.openWorkedExample();
    ScriptedMsgBox boxes;
    inEditor(p, Close::OK, [&](const Page& page) {
        // A second Edit, or a click in the list, ends an edit; the list click keeps the masks.
        page.select(0);
        page.click("cmdFGEdit");
        QVERIFY(page.editing());
        page.click("cmdFGEdit");
        QVERIFY(!page.editing());
        QCOMPARE(page.cells(), kEmptyCells);
        page.click("cmdFGEdit");
        page.select(1);
        QVERIFY(!page.editing());
        QCOMPARE(page.rowHeader(), QStringLiteral("New"));
        QCOMPARE(page.cells(), (QStringList{"*.htm", "*.html", "", "", ""}));

        page.select(0);
        page.click("cmdFGEdit");
        QVERIFY(page.editing());
        QCOMPARE(page.rowHeader(), QStringLiteral("Edit"));
        page.type(QStringLiteral("[3]*.php"));
        page.click("cmdFGAdd");
        QVERIFY(!page.editing());
        QCOMPARE(page.rowHeader(), QStringLiteral("New"));
        QCOMPARE(page.entries(), (QStringList{"*.htm;*.html;*.PHP", "*.gif;*.jpg"}));
        QCOMPARE(page.workingGroups().Item(QStringLiteral("*.htm;*.html;*.php"))->DPs().Count(), 2);
        // Add with the masks unchanged keeps the name.
        page.select(0);
        page.click("cmdFGEdit");
        page.click("cmdFGAdd");
        QVERIFY(!page.editing());
        QCOMPARE(page.entries().at(0), QStringLiteral("*.htm;*.html;*.PHP"));
    });
    QCOMPARE(boxes.shown().size(), 0);
    // The renamed group went to the end of its source path, with its destination paths.
    QTreeWidgetItem* web = p.tree()->topLevelItem(0);
    QCOMPARE(Program::children(web), (QStringList{"*.gif;*.jpg", "*.htm;*.html;*.PHP"}));
    QCOMPARE(Program::children(web->child(1)), (QStringList{"D:\\Stage\\Web", "E:\\Mirror\\Web"}));
}

void tst_FileGroupsPage::deleteAsksFirst_data() {
    QTest::addColumn<bool>("confirm");
    QTest::addColumn<MsgAnswer>("answer");
    QTest::addColumn<bool>("whileEditing");
    QTest::addColumn<int>("asked");
    QTest::addColumn<QStringList>("left");
    const QStringList gone{"*.gif;*.jpg"};
    const QStringList both{"*.htm;*.html", "*.gif;*.jpg"};
    QTest::newRow("confirmed") << true << MsgAnswer::OK << false << 1 << gone;
    QTest::newRow("cancelled") << true << MsgAnswer::Cancel << false << 1 << both;
    QTest::newRow("confirmations off") << false << MsgAnswer::OK << false << 0 << gone;
    QTest::newRow("while editing it") << false << MsgAnswer::OK << true << 0 << gone;
}

void tst_FileGroupsPage::deleteAsksFirst() {
    QFETCH(bool, confirm);
    QFETCH(MsgAnswer, answer);
    QFETCH(bool, whileEditing);
    QFETCH(int, asked);
    QFETCH(QStringList, left);
    Program p;
    p.openWorkedExample();
    p.objects.Settings->setShowConfirmMsgs(confirm);
    ScriptedMsgBox boxes;
    boxes.queue(answer);
    inEditor(p, Close::OK, [&](const Page& page) {
        page.click("cmdFGDelete"); // nothing selected: nothing happens
        page.select(0);
        if (whileEditing)
            page.click("cmdFGEdit");
        page.click("cmdFGDelete");
        QCOMPARE(page.entries(), left);
        QVERIFY(!page.editing());
        QCOMPARE(page.cells(), kEmptyCells);
    });
    QCOMPARE(boxes.shown().size(), asked);
    if (asked > 0) {
        const MsgBoxRequest& box = boxes.shown().at(0);
        QCOMPARE(box.prompt, QStringLiteral("OK to delete File Group '*.htm;*.html'?\r\n\r\nNOTE:  "
                                            "All associated Destination Paths will also be "
                                            "deleted."));
        QCOMPARE(box.title, QStringLiteral("Create/Edit File Groups"));
        QCOMPARE(box.buttons, MsgButtons::OKCancel);
        QCOMPARE(box.icon, MsgIcon::Question);
    }
    QCOMPARE(p.groupsInSpec(), left);
    QCOMPARE(Program::children(p.tree()->topLevelItem(0)), left);
}

void tst_FileGroupsPage::cancelLeavesTheSpecUntouched() {
    Program p;
    p.openWorkedExample();
    p.objects.Settings->setShowConfirmMsgs(false);
    const QStringList before = p.groupsInSpec();
    ScriptedMsgBox boxes;
    inEditor(p, Close::Cancel, [&](const Page& page) {
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
    QCOMPARE(boxes.shown().size(), 0);
    QCOMPARE(p.groupsInSpec(), before);
    QCOMPARE(p.objects.Spec->SPs().Item(1)->FGs().Item(1)->DPs().Count(), 2);
    QVERIFY(!p.objects.Spec->Dirty());
    QCOMPARE(Program::children(p.tree()->topLevelItem(0)), before);
}

void tst_FileGroupsPage::keyboardAndScreenReaders() {
    Program p;
    inEditor(p, Close::Cancel, [&](const Page& page) {
        QWidget* fgPage = page.dialog->tdgCESpecs->currentWidget();
        for (QWidget* w : fgPage->findChildren<QWidget*>()) {
            if (w->focusPolicy() == Qt::NoFocus)
                continue;
            QAccessibleInterface* a = QAccessible::queryAccessibleInterface(w);
            QVERIFY2(a != nullptr && !a->text(QAccessible::Name).isEmpty(),
                     qPrintable(w->objectName() + u' ' + w->metaObject()->className()));
        }
        // Tab walks the page in order, and every control has an access key of its own.
        QWidget* w = page.grid();
        w->setFocus();
        QStringList order;
        for (int i = 0; i < 5; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            order.append(QApplication::focusWidget()->objectName());
        }
        QCOMPARE(order, (QStringList{"cmdFGClearGrid", "lstFGList", "cmdFGAdd", "cmdFGEdit",
                                     "cmdFGDelete"}));
        QSet<QChar> keys;
        const QList<QAbstractButton*> buttons = page.dialog->findChildren<QAbstractButton*>();
        for (const QString& caption : {QStringLiteral("&File Groups"),
                                       QStringLiteral("Source &Path:"), QStringLiteral("&Help")})
            keys.insert(caption.at(caption.indexOf(u'&') + 1).toUpper());
        for (const char* name :
             {"cmdFGAdd", "cmdFGEdit", "cmdFGDelete", "cmdFGClearGrid", "lblFGGrid", "lblFGList"}) {
            QObject* control = page.dialog->findChild<QObject*>(QString::fromLatin1(name));
            const QString caption = control->property("text").toString();
            const qsizetype amp = caption.indexOf(u'&');
            QVERIFY2(amp >= 0, name);
            const QChar key = caption.at(amp + 1).toUpper();
            QVERIFY2(!keys.contains(key), name);
            keys.insert(key);
        }
        // Alt+M reaches the grid, and typing there opens the cell editor.
        QTest::keyClick(page.dialog, Qt::Key_M, Qt::AltModifier);
        QCOMPARE(QApplication::focusWidget(), page.grid());
        QTest::keyClick(page.grid(), Qt::Key_A);
        QVERIFY(page.cellEditor()->isVisible());
        QCOMPARE(page.cellEditor()->text(), QStringLiteral("A"));
        QCOMPARE(page.grid()->horizontalHeaderItem(4)->text(), QStringLiteral("5"));
    });
}

QTEST_MAIN(tst_FileGroupsPage)
#include "tst_FileGroupsPage.moc"
