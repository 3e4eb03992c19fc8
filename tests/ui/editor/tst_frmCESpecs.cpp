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

// The message boxes as the user sees them: [!] exclamation with OK, [?] question with OK and
// Cancel, [ ] the common report.
QStringList describe(const QList<MsgBoxRequest>& boxes) {
    QStringList all;
    for (const MsgBoxRequest& box : boxes) {
        const QString icon = box.icon == MsgIcon::Exclamation ? "[!]"
                             : box.icon == MsgIcon::Question && box.buttons == MsgButtons::OKCancel
                                 ? "[?]"
                             : box.icon == MsgIcon::None && box.buttons == MsgButtons::OK ? "[ ]"
                                                                                          : "[bad]";
        all << icon + u' ' + box.title + QStringLiteral(": ") + box.prompt;
    }
    return all;
}

QStringList texts(const QAbstractItemModel* model) {
    QStringList all;
    for (int i = 0; i < model->rowCount(); ++i)
        all << model->index(i, 0).data().toString();
    return all;
}

void addColumns() {
    QTest::addColumn<QString>("steps");     // see act()
    QTest::addColumn<QStringList>("list");  // the page's list afterwards
    QTest::addColumn<QStringList>("boxes"); // the messages shown, in order
    QTest::addColumn<QStringList>("saved"); // the spec after OK; empty: as before
    QTest::addColumn<QString>("path");      // null: edit mode ended; else still editing, path box
}

void row(const char* name, const QString& steps, const QStringList& list,
         const QStringList& boxes = {}, const QStringList& saved = {}, const QString& path = {}) {
    QTest::newRow(name) << steps << list << boxes << saved << path;
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
    void cancelLeavesTheSpec();
    void everyControlHasAKeyAndATabStop();

private:
    void runPage(int page);
    QString here(QString text) const { return text.replace(u'~', m_dir.path()); }
    QStringList here(QStringList texts) const { return texts.replaceInStrings("~", m_dir.path()); }
    QStringList specNow() const;
    // Opens the editor from the Edit menu, lets act work in it, then closes it with OK or Cancel.
    void edit(const std::function<void(frmCESpecs&)>& act, bool ok);
    void act(frmCESpecs& e, int page, const QString& steps);

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

// What a user does on a page, steps apart by ", ": "type PATH" into the path box, "add", "edit",
// "delete", "select N" (a click on entry N of the list), "check N" (its check box), "sp N" and
// "fg N" (the source-path and file-group choosers), "cancel" (the answer to the next question).
// A first step "quiet" means ShowConfirmMsgs was off when the editor opened.
void tst_frmCESpecs::act(frmCESpecs& e, int page, const QString& steps) {
    const QString pg = page == 0 ? "SP" : "DP";
    auto* list = e.findChild<QListWidget*>("lst" + pg + "List");
    for (const QString& step : steps.split(", ")) {
        const QString verb = step.section(u' ', 0, 0);
        const QString arg = here(step.section(u' ', 1));
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
        } else if (verb != "quiet") {
            QFAIL(qPrintable("unknown step " + step));
        }
    }
}

void tst_frmCESpecs::runPage(int page) {
    QFETCH(QString, steps);
    QFETCH(QStringList, list);
    QFETCH(QStringList, boxes);
    QFETCH(QStringList, saved);
    QFETCH(QString, path);
    m_objects->Settings->setShowConfirmMsgs(!steps.startsWith("quiet"));
    const QString pg = page == 0 ? "SP" : "DP";
    edit(
        [&](frmCESpecs& e) {
            e.tdgCESpecs->setCurrentIndex(page);
            act(e, page, steps);
            QCOMPARE(texts(e.findChild<QListWidget*>("lst" + pg + "List")->model()), here(list));
            if (page == 0) // the chooser follows the list, entry for entry
                QCOMPARE(texts(e.cboSPs->model()), here(list));
            QCOMPARE(describe(m_boxes->shown()), here(boxes));
            QCOMPARE(e.EditMode != 0, !path.isNull());
            QCOMPARE(e.findChild<QPushButton*>("cmd" + pg + "Edit")->font().bold(), !path.isNull());
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
    // The spec after renaming ~/src/A to path: it keeps its flag and groups and goes last.
    auto renamedA = [](const QString& path) {
        return QStringList{kSpec[0], kSpec[2], kSpec[3],
                           path + " + {*.TXT:~/d/one,~/d/two} {*.DOC:}"};
    };
    row("Add appends an entry without sub-directories", "type ~/src/C, add",
        sps + QStringList{"~/src/C"}, {}, kSpec + QStringList{"~/src/C"});
    row("Add of a listed path", "type ~/src/B, add", sps, {exists.arg("~/src/B")});
    if (kPathsIgnoreCase)
        row("a path differing only in case is the same key", "type ~/src/b, add", sps, {caseClash});
    else
        row("a path differing only in case is another path", "type ~/src/b, add",
            sps + QStringList{"~/src/b"}, {}, kSpec + QStringList{"~/src/b"});
    row("Edit opens the browser there; Add unchanged is a duplicate", "select 1, edit, add", sps,
        {exists.arg("~/src/A")}, {}, "~/src/A");
    row("rename keeps flag, groups and place; the spec lists it last",
        "select 1, edit, type ~/src/C, add", {"<various>", "~/src/C", "~/src/B", "~/gone"}, {},
        renamedA("~/src/C"));
    if (kPathsIgnoreCase)
        row("rename onto another entry but for case loses nothing",
            "select 1, edit, type ~/src/b, add", sps, {caseClash}, {}, "~/src/b");
    else
        row("rename onto another entry but for case is another path",
            "select 1, edit, type ~/src/b, add", {"<various>", "~/src/b", "~/src/B", "~/gone"}, {},
            renamedA("~/src/b"));
    row("a second Edit ends the edit", "select 1, edit, edit", sps);
    row("a click in the list ends the edit", "select 1, edit, select 2", sps);
    row("<various> is neither edited nor deleted", "select 0, edit, delete", sps,
        {various, various});
    row("Edit of a missing directory stays in edit mode", "select 3, edit", sps,
        {"[!] Path Not Found: Source Path ~/gone does not exist."}, {}, "~/gone");
    row("Edit of a drive-letter path names its drive", "type C:\\Data, add, select 4, edit",
        sps + QStringList{"C:\\Data"},
        {"[!] Device Not Found: Drive C: is not currently mapped or is otherwise unavailable."},
        kSpec + QStringList{"C:\\Data"}, "C:\\Data");
    row("Delete asks; OK deletes with groups and destinations", "select 1, delete",
        {"<various>", "~/src/B", "~/gone"}, {ask.arg("~/src/A")}, {kSpec[0], kSpec[2], kSpec[3]});
    row("Delete answered with Cancel", "select 1, cancel, delete", sps, {ask.arg("~/src/A")});
    row("deleting the entry under edit, unasked, ends the edit", "quiet, select 2, edit, delete",
        {"<various>", "~/src/A", "~/gone"}, {}, {kSpec[0], kSpec[1], kSpec[3]});
    row("check boxes set InclSubDirs, <various> included", "check 0, check 1", sps, {},
        {"<various> + {*.*:~/d/misc}", "~/src/A {*.TXT:~/d/one,~/d/two} {*.DOC:}", kSpec[2],
         kSpec[3]});
}

void tst_frmCESpecs::destinationPaths_data() {
    addColumns();
    const QStringList dps = {"~/d/one", "~/d/two"};
    const QString ask = "[?] Create/Edit Destination Paths: OK to delete Destination Path '%1'?";
    // The spec with these destination paths for ~/src/A's groups.
    auto a = [](const QString& txt, const QString& doc = {}) {
        return QStringList{kSpec[0], "~/src/A + {*.TXT:" + txt + "} {*.DOC:" + doc + "}", kSpec[2],
                           kSpec[3]};
    };
    row("Add to the chosen group", "sp 1, type ~/d/three, add", dps + QStringList{"~/d/three"}, {},
        a("~/d/one,~/d/two,~/d/three"));
    row("Add of a listed path", "sp 1, type ~/d/one, add", dps,
        {"[!] Create/Edit Destination Paths: Destination Path '~/d/one' already exists for this "
         "File Group."});
    if (kPathsIgnoreCase)
        row("a path differing only in case is the same key", "sp 1, type ~/d/ONE, add", dps,
            {"[!] Add Destination Path Error: Error 457 occurred.  Message as follows:\r\nThis key "
             "is already associated with an element of this collection"});
    else
        row("a path differing only in case is another path", "sp 1, type ~/d/ONE, add",
            dps + QStringList{"~/d/ONE"}, {}, a("~/d/one,~/d/two,~/d/ONE"));
    row("one directory serves two groups", "sp 1, fg 1, type ~/d/one, add", {"~/d/one"}, {},
        a("~/d/one,~/d/two", "~/d/one"));
    row("a source path without groups", "sp 2, type ~/d/one, add", {},
        {"[!] No File Group: You need to create a File Group before you can add a Destination "
         "Path."});
    row("rename keeps the place; the spec lists it last",
        "sp 1, select 0, edit, type ~/d/three, add", {"~/d/three", "~/d/two"}, {},
        a("~/d/two,~/d/three"));
    row("Edit of a missing directory stays in edit mode", "sp 1, select 1, edit", dps,
        {"[!] Path Not Found: Destination Path ~/d/two does not exist."}, {}, "~/d/two");
    row("rename in a group without that position", "sp 1, select 0, edit, fg 1, type ~/d/x, add",
        {},
        {"[!] Add Destination Path Error: Invalid procedure call or argument in 'clsDestPaths'.  "
         "Contact Technical Support for assistance."},
        {}, "~/d/x");
    row("a click in the list ends the edit", "sp 1, select 0, edit, select 1", dps);
    row("Delete asks one line; OK deletes", "sp 1, select 0, delete", {"~/d/two"},
        {ask.arg("~/d/one")}, a("~/d/two"));
    row("Delete answered with Cancel", "sp 1, select 0, cancel, delete", dps, {ask.arg("~/d/one")});
    row("deleting the entry under edit, unasked, ends the edit",
        "quiet, sp 1, select 0, edit, delete", {"~/d/two"}, {}, a("~/d/two"));
}

void tst_frmCESpecs::cancelLeavesTheSpec() {
    m_objects->Settings->setShowConfirmMsgs(false);
    edit(
        [&](frmCESpecs& e) {
            act(e, 0,
                "type ~/src/C, add, select 1, edit, type ~/src/D, add, check 0, select 2, delete");
            e.tdgCESpecs->setCurrentIndex(2);
            act(e, 2, "sp 1, select 0, delete, type ~/d/new, add");
        },
        false);
    QCOMPARE(specNow(), here(kSpec));
    QVERIFY(!m_objects->Spec->Dirty());

    // The next opening starts from the spec again, not from the abandoned copy.
    edit(
        [&](frmCESpecs& e) {
            QCOMPARE(texts(e.findChild<QListWidget*>("lstSPList")->model()), here(kSourcePaths));
        },
        false);
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
