#include "ui/editor/frmCESpecs.h"

#include "platform/ScriptedMsgBox.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/DestPathsPage.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QtTest>

#include "tests/ui/WhenModal.h"

using namespace ondrel;

namespace {

// The tests' spec, one entry a source path: its name, " +" when it takes its sub-directories,
// then each file group with its destination paths. "~" is the test's directory.
const QStringList kSpec = {"<various> {*.*:~/d/misc}", "~/src/A + {*.TXT:~/d/one,~/d/two} {*.DOC:}",
                           "~/src/B", "~/gone"};
const QStringList kSourcePaths = {"<various>", "~/src/A", "~/src/B", "~/gone"};

// Where file names ignore case, two spellings of a path are one key of the spec.
#ifdef Q_OS_WIN
constexpr bool kPathsIgnoreCase = true;
#else
constexpr bool kPathsIgnoreCase = false;
#endif

// A message box as the user sees it: [!] exclamation with OK, [?] question with OK and Cancel,
// [ ] the common report.
QString describe(const MsgBoxRequest& box) {
    const QString icon = box.icon == MsgIcon::Exclamation ? "[!]"
                         : box.icon == MsgIcon::Question && box.buttons == MsgButtons::OKCancel
                             ? "[?]"
                         : box.icon == MsgIcon::None && box.buttons == MsgButtons::OK ? "[ ]"
                                                                                      : "[bad]";
    return icon + u' ' + box.title + QStringLiteral(": ") + box.prompt;
}

QStringList texts(const QListWidget* list) {
    QStringList all;
    for (int i = 0; i < list->count(); ++i)
        all << list->item(i)->text();
    return all;
}

} // namespace

class tst_frmCESpecs : public QObject {
    Q_OBJECT

public:
    tst_frmCESpecs() {
        for (const char* dir : {"src/A", "src/B", "d/one", "d/misc"})
            QDir(m_dir.path()).mkpath(QString::fromLatin1(dir));
    }

private Q_SLOTS:
    void init();
    void cleanup();
    void sourcePaths_data();
    void sourcePaths() { runPage(0); }
    void destinationPaths_data();
    void destinationPaths() { runPage(2); }
    void cancelLeavesTheSpecAndOKMarksItDirty();
    void everyControlHasAKeyAndATabStop();

private:
    static void addColumns();
    void runPage(int page);
    QString here(QString text) const { return text.replace(u'~', m_dir.path()); }
    QStringList here(QStringList texts) const {
        for (QString& t : texts)
            t = here(t);
        return texts;
    }
    QStringList specNow() const;
    // Opens the editor from the Edit menu, lets act work in it, then closes it with OK or Cancel.
    void edit(const std::function<void(frmCESpecs&)>& act, bool ok);
    void step(frmCESpecs& e, int page, const QString& step);

    QTemporaryDir m_dir;
    std::unique_ptr<ProgramObjects> m_objects;
    std::unique_ptr<frmMain> m_main;
    std::unique_ptr<ScriptedMsgBox> m_boxes;
};

void tst_frmCESpecs::init() {
    m_boxes = std::make_unique<ScriptedMsgBox>();
    m_objects = std::make_unique<ProgramObjects>(m_dir.path());
    m_main = createProgramObjects(*m_objects, FixedScreen(9600, 7200));
    m_objects->Settings->ReadOPTFile();
    m_main->Show();
    clsSourcePaths& sps = m_objects->Spec->SPs();
    sps.Item(1)->FGs().Add("*.*")->DPs().Add(here("~/d/misc"));
    auto a = sps.Add(here("~/src/A"));
    a->setInclSubDirs(true);
    auto txt = a->FGs().Add("*.TXT");
    txt->DPs().Add(here("~/d/one"));
    txt->DPs().Add(here("~/d/two"));
    a->FGs().Add("*.DOC");
    sps.Add(here("~/src/B"));
    sps.Add(here("~/gone"));
    m_main->UpdtSpecList();
    QCOMPARE(specNow(), here(kSpec));
}

void tst_frmCESpecs::cleanup() {
    m_objects->Spec->setDirty(false); // no question at shut-down
    m_main.reset();
    m_objects.reset();
    m_boxes.reset();
}

QStringList tst_frmCESpecs::specNow() const {
    QStringList all;
    for (const auto& sp : m_objects->Spec->SPs()) {
        QString s = sp->Name() + (sp->InclSubDirs() ? " +" : "");
        for (const auto& fg : sp->FGs()) {
            QStringList dps;
            for (const auto& dp : fg->DPs())
                dps << dp->Name();
            s += " {" + fg->Name() + u':' + dps.join(u',') + u'}';
        }
        all << s;
    }
    return all;
}

void tst_frmCESpecs::edit(const std::function<void(frmCESpecs&)>& act, bool ok) {
    bool shown = false;
    whenModal<frmCESpecs>([&](frmCESpecs* e) {
        shown = true;
        act(*e);
        ok ? e->cmdOK_Click() : e->cmdCancel_Click();
    });
    m_main->mnuEditSpecs_Click();
    QVERIFY(shown);
}

// One thing a user does on a page: "type PATH" into the path box, "add", "edit", "delete",
// "select N" (a click on entry N of the list), "check N" (its check box), "sp N" and "fg N" (the
// source-path and file-group choosers), "cancel" (the answer to the next question).
void tst_frmCESpecs::step(frmCESpecs& e, int page, const QString& step) {
    const QString pg = page == 0 ? "SP" : "DP";
    const QString verb = step.section(u' ', 0, 0);
    const QString arg = here(step.section(u' ', 1));
    auto* list = e.findChild<QListWidget*>("lst" + pg + "List");
    if (verb == "type") {
        e.findChild<QLineEdit*>("txt" + pg + "CurPath")->setText(arg);
    } else if (verb == "add" || verb == "edit" || verb == "delete") {
        const QString button = "cmd" + pg + verb.left(1).toUpper() + verb.mid(1);
        QTest::mouseClick(e.findChild<QPushButton*>(button), Qt::LeftButton);
    } else if (verb == "select") {
        const QRect at = list->visualItemRect(list->item(arg.toInt()));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at.center());
    } else if (verb == "check") {
        QListWidgetItem* item = list->item(arg.toInt());
        item->setCheckState(item->checkState() == Qt::Checked ? Qt::Unchecked : Qt::Checked);
    } else if (verb == "sp") {
        e.cboSPs->setCurrentIndex(arg.toInt());
        e.cboSPs_Click();
    } else if (verb == "fg") {
        e.findChild<QComboBox*>("cboDPFGs")->setCurrentIndex(arg.toInt());
        static_cast<DestPathsPage*>(e.page(2))->cboDPFGs_Click();
    } else if (verb == "cancel") {
        m_boxes->queue(MsgAnswer::Cancel);
    } else {
        QFAIL(qPrintable("unknown step " + step));
    }
}

void tst_frmCESpecs::addColumns() {
    QTest::addColumn<QStringList>("steps");
    QTest::addColumn<bool>("confirm");      // ShowConfirmMsgs
    QTest::addColumn<QStringList>("list");  // the page's list afterwards
    QTest::addColumn<QStringList>("boxes"); // the messages shown, in order
    QTest::addColumn<bool>("editing");      // still in edit mode
    QTest::addColumn<QString>("path");      // the path box afterwards; null: not looked at
    QTest::addColumn<QStringList>("saved"); // the spec after OK; empty: as before
}

void tst_frmCESpecs::runPage(int page) {
    QFETCH(QStringList, steps);
    QFETCH(bool, confirm);
    QFETCH(QStringList, list);
    QFETCH(QStringList, boxes);
    QFETCH(bool, editing);
    QFETCH(QString, path);
    QFETCH(QStringList, saved);
    m_objects->Settings->setShowConfirmMsgs(confirm);
    const QString pg = page == 0 ? "SP" : "DP";
    edit(
        [&](frmCESpecs& e) {
            e.tdgCESpecs->setCurrentIndex(page);
            for (const QString& s : steps)
                step(e, page, s);
            auto* shownList = e.findChild<QListWidget*>("lst" + pg + "List");
            QCOMPARE(texts(shownList), here(list));
            if (page == 0) { // the chooser follows the list, entry for entry
                QStringList chooser;
                for (int i = 0; i < e.cboSPs->count(); ++i)
                    chooser << e.cboSPs->itemText(i);
                QCOMPARE(chooser, here(list));
            }
            QStringList shown;
            for (const MsgBoxRequest& box : m_boxes->shown())
                shown << describe(box);
            QCOMPARE(shown, here(boxes));
            QCOMPARE(e.EditMode != 0, editing);
            QCOMPARE(e.findChild<QPushButton*>("cmd" + pg + "Edit")->font().bold(), editing);
            if (!path.isNull())
                QCOMPARE(e.findChild<QLineEdit*>("txt" + pg + "CurPath")->text(), here(path));
        },
        true);
    QCOMPARE(specNow(), here(saved.isEmpty() ? kSpec : saved));
    QVERIFY(m_objects->Spec->Dirty());
    QTreeWidget* tree = m_main->findChild<QTreeWidget*>("tvwSpecs");
    QCOMPARE(tree->topLevelItemCount(), m_objects->Spec->SPs().Count());
    QCOMPARE(tree->topLevelItem(tree->topLevelItemCount() - 1)->text(0),
             m_objects->Spec->SPs().Item(m_objects->Spec->SPs().Count())->Name());
}

void tst_frmCESpecs::sourcePaths_data() {
    addColumns();
    const QStringList sps = kSourcePaths;
    const QString exists = "[!] Create/Edit Source Paths: Source Path '%1' already exists for "
                           "this Spec File.";
    const QString various = "[!] Create/Edit Source Paths: You cannot edit or delete the Source "
                            "Path '<various>'.";
    const QString ask = "[?] Create/Edit Source Paths: OK to delete Source Path '%1'?\r\n\r\n"
                        "NOTE:  All associated File Groups and Destination Paths will also be "
                        "deleted.";
    const QString caseClash = "[ ] Add Source Path Error: Error 457 occurred.  Message as "
                              "follows:\r\nThis key is already associated with an element of "
                              "this collection";
    const QString null;
    QTest::newRow("Add appends an entry without sub-directories")
        << QStringList{"type ~/src/C", "add"} << true << sps + QStringList{"~/src/C"}
        << QStringList{} << false << null << kSpec + QStringList{"~/src/C"};
    QTest::newRow("Add of a listed path")
        << QStringList{"type ~/src/B", "add"} << true << sps << QStringList{exists.arg("~/src/B")}
        << false << null << QStringList{};
    if (kPathsIgnoreCase)
        QTest::newRow("a path differing only in case is the same key")
            << QStringList{"type ~/src/b", "add"} << true << sps << QStringList{caseClash} << false
            << null << QStringList{};
    else
        QTest::newRow("a path differing only in case is another path")
            << QStringList{"type ~/src/b", "add"} << true << sps + QStringList{"~/src/b"}
            << QStringList{} << false << null << kSpec + QStringList{"~/src/b"};
    QTest::newRow("Edit opens the browser there; Add unchanged is a duplicate")
        << QStringList{"select 1", "edit", "add"} << true << sps
        << QStringList{exists.arg("~/src/A")} << true << "~/src/A" << QStringList{};
    QTest::newRow("rename keeps flag, groups and place; the spec lists it last")
        << QStringList{"select 1", "edit", "type ~/src/C", "add"} << true
        << QStringList{"<various>", "~/src/C", "~/src/B", "~/gone"} << QStringList{} << false
        << null
        << QStringList{kSpec[0], kSpec[2], kSpec[3], "~/src/C + {*.TXT:~/d/one,~/d/two} {*.DOC:}"};
    if (kPathsIgnoreCase)
        QTest::newRow("rename onto another entry but for case loses nothing")
            << QStringList{"select 1", "edit", "type ~/src/b", "add"} << true << sps
            << QStringList{caseClash} << true << null << QStringList{};
    else
        QTest::newRow("rename onto another entry but for case is another path")
            << QStringList{"select 1", "edit", "type ~/src/b", "add"} << true
            << QStringList{"<various>", "~/src/b", "~/src/B", "~/gone"} << QStringList{} << false
            << null
            << QStringList{kSpec[0], kSpec[2], kSpec[3],
                           "~/src/b + {*.TXT:~/d/one,~/d/two} {*.DOC:}"};
    QTest::newRow("a second Edit ends the edit")
        << QStringList{"select 1", "edit", "edit"} << true << sps << QStringList{} << false << null
        << QStringList{};
    QTest::newRow("a click in the list ends the edit")
        << QStringList{"select 1", "edit", "select 2"} << true << sps << QStringList{} << false
        << null << QStringList{};
    QTest::newRow("<various> is neither edited nor deleted")
        << QStringList{"select 0", "edit", "delete"} << true << sps << QStringList{various, various}
        << false << null << QStringList{};
    QTest::newRow("Edit of a missing directory stays in edit mode")
        << QStringList{"select 3", "edit"} << true << sps
        << QStringList{"[!] Path Not Found: Source Path ~/gone does not exist."} << true << "~/gone"
        << QStringList{};
    QTest::newRow("Edit of a drive-letter path names its drive")
        << QStringList{"type C:\\Data", "add", "select 4", "edit"} << true
        << sps + QStringList{"C:\\Data"}
        << QStringList{"[!] Device Not Found: Drive C: is not currently mapped or is otherwise "
                       "unavailable."}
        << true << "C:\\Data" << kSpec + QStringList{"C:\\Data"};
    QTest::newRow("Delete asks; OK deletes with groups and destinations")
        << QStringList{"select 1", "delete"} << true
        << QStringList{"<various>", "~/src/B", "~/gone"} << QStringList{ask.arg("~/src/A")} << false
        << null << QStringList{kSpec[0], kSpec[2], kSpec[3]};
    QTest::newRow("Delete answered with Cancel")
        << QStringList{"select 1", "cancel", "delete"} << true << sps
        << QStringList{ask.arg("~/src/A")} << false << null << QStringList{};
    QTest::newRow("Delete without confirmations asks nothing")
        << QStringList{"select 2", "delete"} << false
        << QStringList{"<various>", "~/src/A", "~/gone"} << QStringList{} << false << null
        << QStringList{kSpec[0], kSpec[1], kSpec[3]};
    QTest::newRow("deleting the entry under edit ends the edit")
        << QStringList{"select 2", "edit", "delete"} << false
        << QStringList{"<various>", "~/src/A", "~/gone"} << QStringList{} << false << null
        << QStringList{kSpec[0], kSpec[1], kSpec[3]};
    QTest::newRow("check boxes set InclSubDirs, <various> included")
        << QStringList{"check 0", "check 1"} << true << sps << QStringList{} << false << null
        << QStringList{"<various> + {*.*:~/d/misc}", "~/src/A {*.TXT:~/d/one,~/d/two} {*.DOC:}",
                       kSpec[2], kSpec[3]};
}

void tst_frmCESpecs::destinationPaths_data() {
    addColumns();
    const QStringList dps = {"~/d/one", "~/d/two"};
    const QString ask = "[?] Create/Edit Destination Paths: OK to delete Destination Path '%1'?";
    const QString null;
    auto a = [](const QString& txt, const QString& doc = {}) {
        return QStringList{kSpec[0], "~/src/A + {*.TXT:" + txt + "} {*.DOC:" + doc + "}", kSpec[2],
                           kSpec[3]};
    };
    QTest::newRow("Add to the chosen group")
        << QStringList{"sp 1", "type ~/d/three", "add"} << true << dps + QStringList{"~/d/three"}
        << QStringList{} << false << null << a("~/d/one,~/d/two,~/d/three");
    QTest::newRow("Add of a listed path")
        << QStringList{"sp 1", "type ~/d/one", "add"} << true << dps
        << QStringList{"[!] Create/Edit Destination Paths: Destination Path '~/d/one' already "
                       "exists for this File Group."}
        << false << null << QStringList{};
    if (kPathsIgnoreCase)
        QTest::newRow("a path differing only in case is the same key")
            << QStringList{"sp 1", "type ~/d/ONE", "add"} << true << dps
            << QStringList{"[!] Add Destination Path Error: Error 457 occurred.  Message as "
                           "follows:\r\nThis key is already associated with an element of this "
                           "collection"}
            << false << null << QStringList{};
    else
        QTest::newRow("a path differing only in case is another path")
            << QStringList{"sp 1", "type ~/d/ONE", "add"} << true << dps + QStringList{"~/d/ONE"}
            << QStringList{} << false << null << a("~/d/one,~/d/two,~/d/ONE");
    QTest::newRow("one directory serves two groups")
        << QStringList{"sp 1", "fg 1", "type ~/d/one", "add"} << true << QStringList{"~/d/one"}
        << QStringList{} << false << null << a("~/d/one,~/d/two", "~/d/one");
    QTest::newRow("a source path without groups")
        << QStringList{"sp 2", "type ~/d/one", "add"} << true << QStringList{}
        << QStringList{"[!] No File Group: You need to create a File Group before you can add a "
                       "Destination Path."}
        << false << null << QStringList{};
    QTest::newRow("rename keeps the place; the spec lists it last")
        << QStringList{"sp 1", "select 0", "edit", "type ~/d/three", "add"} << true
        << QStringList{"~/d/three", "~/d/two"} << QStringList{} << false << null
        << a("~/d/two,~/d/three");
    QTest::newRow("Edit of a missing directory stays in edit mode")
        << QStringList{"sp 1", "select 1", "edit"} << true << dps
        << QStringList{"[!] Path Not Found: Destination Path ~/d/two does not exist."} << true
        << "~/d/two" << QStringList{};
    QTest::newRow("rename in a group without that position")
        << QStringList{"sp 1", "select 0", "edit", "fg 1", "type ~/d/x", "add"} << true
        << QStringList{}
        << QStringList{"[!] Add Destination Path Error: Invalid procedure call or argument in "
                       "'clsDestPaths'.  Contact Technical Support for assistance."}
        << true << null << QStringList{};
    QTest::newRow("a click in the list ends the edit")
        << QStringList{"sp 1", "select 0", "edit", "select 1"} << true << dps << QStringList{}
        << false << null << QStringList{};
    QTest::newRow("Delete asks one line; OK deletes")
        << QStringList{"sp 1", "select 0", "delete"} << true << QStringList{"~/d/two"}
        << QStringList{ask.arg("~/d/one")} << false << null << a("~/d/two");
    QTest::newRow("Delete answered with Cancel")
        << QStringList{"sp 1", "select 0", "cancel", "delete"} << true << dps
        << QStringList{ask.arg("~/d/one")} << false << null << QStringList{};
    QTest::newRow("deleting the entry under edit, unasked, ends the edit")
        << QStringList{"sp 1", "select 0", "edit", "delete"} << false << QStringList{"~/d/two"}
        << QStringList{} << false << null << a("~/d/two");
}

void tst_frmCESpecs::cancelLeavesTheSpecAndOKMarksItDirty() {
    m_objects->Settings->setShowConfirmMsgs(false);
    edit(
        [&](frmCESpecs& e) {
            for (const char* s : {"type ~/src/C", "add", "select 1", "edit", "type ~/src/D", "add",
                                  "check 0", "select 2", "delete"})
                step(e, 0, QString::fromLatin1(s));
            e.tdgCESpecs->setCurrentIndex(2);
            for (const char* s : {"sp 1", "select 0", "delete", "type ~/d/new", "add"})
                step(e, 2, QString::fromLatin1(s));
        },
        false);
    QCOMPARE(specNow(), here(kSpec));
    QVERIFY(!m_objects->Spec->Dirty());

    // The next opening starts from the spec again, not from the abandoned copy.
    edit(
        [&](frmCESpecs& e) {
            QCOMPARE(texts(e.findChild<QListWidget*>("lstSPList")), here(kSourcePaths));
        },
        true);
    QCOMPARE(specNow(), here(kSpec));
    QVERIFY(m_objects->Spec->Dirty());
    QVERIFY(m_boxes->shown().isEmpty());
}

void tst_frmCESpecs::everyControlHasAKeyAndATabStop() {
    edit(
        [&](frmCESpecs& e) {
            for (int page : {0, 2}) {
                e.tdgCESpecs->setCurrentIndex(page);
                for (QWidget* w : e.page(page)->findChildren<QWidget*>()) {
                    const QString name = w->objectName() + u' ' + w->metaObject()->className();
                    if (auto* label = qobject_cast<QLabel*>(w)) {
                        QVERIFY2(label->text().contains(u'&') && label->buddy(), qPrintable(name));
                        continue;
                    }
                    if (w->focusPolicy() == Qt::NoFocus ||
                        !w->parentWidget()->inherits("ondrel::EditorPage"))
                        continue;
                    QVERIFY2(w->focusPolicy() & Qt::TabFocus, qPrintable(name));
                    if (auto* button = qobject_cast<QAbstractButton*>(w))
                        QVERIFY2(button->text().contains(u'&'), qPrintable(name));
                }
            }
        },
        false);
}

QTEST_MAIN(tst_frmCESpecs)
#include "tst_frmCESpecs.moc"
