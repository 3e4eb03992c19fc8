#include "ui/select/frmVarFileSelect.h"

#include "platform/FileSystem.h"
#include "platform/ScriptedFileDialog.h"
#include "platform/ScriptedHelp.h"
#include "platform/ScriptedMsgBox.h"
#include "staging/frmStageInfo.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

#include "tests/ui/WhenModal.h"

using namespace ondrel;

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

// The dialog as the user sees it while it is open.
struct Dialog {
    frmVarFileSelect* form;

    template <typename T = QWidget> T* find(const char* name) const {
        T* widget = form->findChild<T*>(QString::fromLatin1(name));
        if (!widget)
            qFatal("no control %s", name);
        return widget;
    }
    QListView* files() const { return find<QListView>("filVarFiles"); }
    QListView* selection() const { return find<QListView>("lstVarList"); }
    QStringList chosen() const { return rows(selection()); }
    QLineEdit* maskBox() const { return find<QLineEdit>("txtFileSelMask"); }
    void click(const char* button, Qt::KeyboardModifiers keys = {}) const {
        QTest::mouseClick(find<QAbstractButton>(button), Qt::LeftButton, keys);
    }
    static QStringList rows(const QListView* view) {
        QStringList out;
        for (int row = 0; row < view->model()->rowCount(); ++row)
            out.append(view->model()->index(row, 0).data().toString());
        return out;
    }
    static void select(QListView* view, const QStringList& texts) {
        view->clearSelection();
        for (int row = 0; row < view->model()->rowCount(); ++row) {
            const QModelIndex index = view->model()->index(row, 0);
            if (texts.contains(index.data().toString()))
                view->selectionModel()->select(index, QItemSelectionModel::Select);
        }
    }
    static void doubleClick(QListView* view, const QString& text) {
        const int row = int(rows(view).indexOf(text));
        QVERIFY(row >= 0);
        QApplication::processEvents(); // the view lays its rows out when idle
        const QRect rect = view->visualRect(view->model()->index(row, 0));
        // A press before the double click, as a real one begins.
        QTest::mousePress(view->viewport(), Qt::LeftButton, {}, rect.center());
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, rect.center());
    }
    void add(const QStringList& names) const {
        select(files(), names);
        click("cmdAdd");
    }
    void mask(const QString& text) const {
        maskBox()->setFocus();
        maskBox()->setText(text);
        QTest::keyClick(maskBox(), Qt::Key_Return);
    }
};

// The program as Sub Main starts it in a directory of its own, by default browsing src there on
// the root's volume. The default path is relative to that directory; an empty drive is the
// directory itself, which is no mount point: it stands for a disk that was pulled.
struct Program {
    explicit Program(const QString& path = QStringLiteral("src"), const QString& drive = "/")
        : dir(tmp.path()), objects(dir) {
        QDir(dir).mkpath(QStringLiteral("src"));
        writeFile(at("ONDREL.OPT"),
                  "[FSOptions]\r\nDefaultPath=" + at(path).toUtf8() +
                      "\r\nDefaultDrive=" + (drive.isEmpty() ? dir : drive).toUtf8() + "\r\n");
        main = createProgramObjects(objects, FixedScreen(9600, 7200));
        objects.Settings->ReadOPTFile();
        main->Show();
    }
    QString at(const QString& name) const { return dir + u'/' + name; }
    QString src(const QString& name = {}) const {
        return at(name.isEmpty() ? QStringLiteral("src") : "src/" + name);
    }
    void write(const QStringList& names) const {
        for (const QString& name : names)
            writeFile(src(name), "x");
    }
    // Opens the dialog from the Edit menu, lets work use it, and cancels it unless work closed it.
    void inDialog(const std::function<void(const Dialog&)>& work) {
        bool ran = false;
        whenModal<frmVarFileSelect>([&](frmVarFileSelect* form) {
            work(Dialog{form});
            ran = true;
            if (form->isVisible())
                form->reject();
        });
        main->findChild<QAction*>(QStringLiteral("mnuEditVarFileSelect"))->trigger();
        QVERIFY(ran);
    }
    const QStringList& various() const { return objects.Selection.VariousFiles; }

    QTemporaryDir tmp;
    QString dir;
    ProgramObjects objects;
    std::unique_ptr<frmMain> main;
};

} // namespace

class tst_frmVarFileSelect : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void selectionSurvivesReopeningCancelKeepsIt();
    void addsAndRemoves();
    void maskAndFilters();
    void defaultPathMissingAsksRetryOrCancel_data();
    void defaultPathMissingAsksRetryOrCancel();
    void savesAndLoadsListFiles();
    void stagingAfterOKCopiesTheSelection();
    void keyboardScreenReadersAndHelp();
};

void tst_frmVarFileSelect::selectionSurvivesReopeningCancelKeepsIt() {
    Program p;
    p.write({"a.txt", "B.txt", "c.doc", ".hidden.txt"});
    const QStringList chosen = {p.src("a.txt"), p.src("B.txt")};

    p.inDialog([&](const Dialog& d) {
        QCOMPARE(d.maskBox()->text(), "*.*");
        QCOMPARE(d.find<QLabel>("lblFileCount")->text(), "4");
        d.add({"B.txt", "a.txt"});
        d.mask("*.TXT");
        d.find<QCheckBox>("chkShowHidden")->click();
        d.click("cmdOK");
    });
    QCOMPARE(p.various(), chosen);
    QCOMPARE(p.objects.Selection.FileSelMask, "*.TXT");
    QCOMPARE(p.objects.Selection.ShowHidden, qint16(0));
    QCOMPARE(p.objects.Selection.ShowArchive, qint16(1));

    // Reopened: as left. Changes then cancelled leave it so.
    p.inDialog([&](const Dialog& d) {
        QCOMPARE(d.chosen(), chosen);
        QCOMPARE(d.maskBox()->text(), "*.TXT");
        QVERIFY(!d.find<QCheckBox>("chkShowHidden")->isChecked());
        QCOMPARE(Dialog::rows(d.files()), (QStringList{"a.txt", "B.txt"}));
        d.click("cmdRemove", Qt::AltModifier);
        d.mask("*.doc");
        d.find<QCheckBox>("chkShowSystem")->click();
        d.click("cmdCancel");
    });
    QCOMPARE(p.various(), chosen);
    QCOMPARE(p.objects.Selection.FileSelMask, "*.TXT");
    QCOMPARE(p.objects.Selection.ShowSystem, qint16(1));

    // OK on an empty list stores one empty entry, and the list opens empty.
    p.inDialog([&](const Dialog& d) {
        d.click("cmdRemove", Qt::AltModifier);
        d.click("cmdOK");
    });
    QCOMPARE(p.various(), QStringList{QString()});
    p.inDialog([&](const Dialog& d) { QVERIFY(d.chosen().isEmpty()); });
}

void tst_frmVarFileSelect::addsAndRemoves() {
    Program p;
    p.write({"a", "b", "c", "d"});
    const auto paths = [&](const char* names) {
        QStringList out;
        for (const char c : QByteArray(names))
            out.append(p.src(QChar::fromLatin1(c)));
        return out;
    };
    p.inDialog([&](const Dialog& d) {
        d.add({"b"});
        d.add({"b", "a"});
        QCOMPARE(d.chosen(), paths("ab"));
        Dialog::doubleClick(d.files(), "d");
        QCOMPARE(d.chosen(), paths("abd"));
        Dialog::doubleClick(d.selection(), p.src("a"));
        QCOMPARE(d.chosen(), paths("bd"));
        // Alt held with the mouse adds every file; pressed from the keyboard, only the chosen.
        Dialog::select(d.files(), {"a"});
        d.find("cmdAdd")->setFocus();
        QTest::keyClick(d.find("cmdAdd"), Qt::Key_Space, Qt::AltModifier);
        QCOMPARE(d.chosen(), paths("abd"));
        d.click("cmdAdd", Qt::AltModifier);
        QCOMPARE(d.chosen(), paths("abcd"));
        Dialog::select(d.selection(), paths("ac"));
        d.click("cmdRemove");
        QCOMPARE(d.chosen(), paths("bd"));
        d.click("cmdRemove", Qt::AltModifier);
        QVERIFY(d.chosen().isEmpty());
    });
    QCOMPARE(p.various(), QStringList{QString()}); // cancelled
}

void tst_frmVarFileSelect::maskAndFilters() {
    Program p;
    p.write({"a.txt", "b.log", ".rc"});
    ScriptedMsgBox boxes;
    p.inDialog([&](const Dialog& d) {
        auto* count = d.find<QLabel>("lblFileCount");
        d.mask("*.log;*.TXT");
        QVERIFY(d.form->isVisible()); // Enter in the mask box does not press OK
        QCOMPARE(Dialog::rows(d.files()), (QStringList{"a.txt", "b.log"}));
        QCOMPARE(count->text(), "2");

        d.mask("a|b");
        QCOMPARE(boxes.shown().size(), 1);
        QCOMPARE(
            boxes.shown().at(0).prompt,
            "The file mask generated an error.  Make sure it does not contain any of the "
            "following characters:  \\ / : < > | anywhere in the mask, or ; in the extension.");
        QCOMPARE(boxes.shown().at(0).title, "Error Entering File Mask");
        QCOMPARE(boxes.shown().at(0).icon, MsgIcon::Exclamation);
        QCOMPARE(d.maskBox()->text(), "*.log;*.TXT");

        d.maskBox()->setText("*");
        d.click("cmdGoMask");
        QCOMPARE(count->text(), "3");
        d.find<QCheckBox>("chkShowHidden")->click();
        QCOMPARE(Dialog::rows(d.files()), (QStringList{"a.txt", "b.log"}));
        QCOMPARE(count->text(), "2");
    });
}

void tst_frmVarFileSelect::defaultPathMissingAsksRetryOrCancel_data() {
    QTest::addColumn<bool>("driveMounted");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QList<MsgAnswer>>("answers");
    QTest::newRow("path gone, cancel") << true << "gone" << QList<MsgAnswer>{MsgAnswer::Cancel};
    QTest::newRow("path gone, retry, cancel")
        << true << "gone" << QList<MsgAnswer>{MsgAnswer::Retry, MsgAnswer::Cancel};
    QTest::newRow("drive not mounted") << false << "src" << QList<MsgAnswer>{MsgAnswer::Cancel};
}

void tst_frmVarFileSelect::defaultPathMissingAsksRetryOrCancel() {
    QFETCH(bool, driveMounted);
    QFETCH(QString, path);
    QFETCH(QList<MsgAnswer>, answers);
    Program p(path, driveMounted ? "/" : "");
    const QString drive = driveMounted ? QStringLiteral("/") : p.dir;
    ScriptedMsgBox boxes;
    for (MsgAnswer answer : answers)
        boxes.queue(answer);
    p.inDialog([&](const Dialog& d) { QVERIFY(d.form->isVisible()); });
    QCOMPARE(boxes.shown().size(), answers.size());
    for (const MsgBoxRequest& box : boxes.shown()) {
        QCOMPARE(box.prompt,
                 "Drive " + drive + " is not currently mapped or is otherwise unavailable.");
        QCOMPARE(box.title, "Device Not Found");
        QCOMPARE(box.buttons, MsgButtons::RetryCancel);
        QCOMPARE(box.icon, MsgIcon::Exclamation);
    }
}

// Saved lists load back as they were; a list written by hand loads item by item, appended to
// what is there, sorted, each once.
void tst_frmVarFileSelect::savesAndLoadsListFiles() {
    Program p;
    p.write({"one, two.txt", "Report.TXT", "b"});
    const QString saved = p.at("saved.txt"), mine = p.at("mine.txt");
    writeFile(mine, "; my files\r\nrelative/x.txt\r\n/d/b.txt,/d/a.txt\r\n\"/d/c, d.txt\"\r\n"
                    "  /d/a.txt  \n/d/Z.txt");
    ScriptedFileDialog dialogs;
    ScriptedMsgBox boxes;
    QStringList all, loaded;
    p.inDialog([&](const Dialog& d) {
        d.click("cmdAdd", Qt::AltModifier);
        all = d.chosen();
        QCOMPARE(all.size(), 3);
        dialogs.queueCancel();
        d.click("cmdLoadList");
        QCOMPARE(d.chosen(), all);
        dialogs.queueCancel();
        d.click("cmdSaveList");
        QVERIFY(!QFile::exists(saved));
        dialogs.queue(saved);
        d.click("cmdSaveList");
        d.click("cmdRemove", Qt::AltModifier);
        dialogs.queue(saved);
        d.click("cmdLoadList");
        QCOMPARE(d.chosen(), all);
        dialogs.queue(mine);
        d.click("cmdLoadList");
        loaded = QStringList{"/d/a.txt", "/d/b.txt", "/d/c, d.txt", "/d/Z.txt"} + all;
        QCOMPARE(d.chosen(), loaded);
        dialogs.queue(p.at("none.txt"));
        d.click("cmdLoadList");
        dialogs.queue(p.at("no/such/dir/x.txt"));
        d.click("cmdSaveList");
        d.click("cmdOK");
    });
    QCOMPARE(p.various(), loaded);
    const FileDialogRequest& load = dialogs.shown().at(0);
    QCOMPARE(load.kind, FileDialogKind::Open);
    QCOMPARE(load.title, "Load File List");
    QCOMPARE(load.filter, "Text Files (*.txt)|*.txt");
    QCOMPARE(load.defaultExt, "*.txt");
    QCOMPARE(load.fileName, QString());
    QCOMPARE(dialogs.shown().at(2).kind, FileDialogKind::Save);
    QCOMPARE(dialogs.shown().at(2).title, "Save File List");
    QCOMPARE(boxes.shown().size(), 2);
    QCOMPARE(boxes.shown().at(0).title, "Error Saving Spec File");
    QCOMPARE(boxes.shown().at(0).prompt,
             "Error 53 occurred.  Message as follows:\r\nFile not found");
    QCOMPARE(boxes.shown().at(1).prompt,
             "Error 76 occurred.  Message as follows:\r\nPath not found");
}

void tst_frmVarFileSelect::stagingAfterOKCopiesTheSelection() {
    Program p;
    const QByteArray src = QFile::encodeName(p.src());
    for (const QByteArray& name : QByteArrayList{"a.txt", "b.txt", "c.doc", "caf\xe9.txt"}) {
        const int fd = ::open((src + '/' + name).constData(), O_CREAT | O_WRONLY, 0644);
        QVERIFY(fd >= 0 && ::write(fd, name.constData(), size_t(name.size())) == name.size());
        ::close(fd);
    }
    const QString dst = p.at("dst");
    writeFile(p.at("job.spc"),
              "[SourcePaths]\r\nSP1=<various>\r\n[ISD]\r\nSP1=False\r\n[SP1FGs]\r\n"
              "FG1=*.TXT\r\n[SP1FG1DPs]\r\nDP1=" +
                  dst.toUtf8() + "\r\n");
    ScriptedFileDialog dialogs;
    ScriptedMsgBox boxes;
    dialogs.queue(p.at("job.spc"));
    p.main->mnuFileOpenSpecs_Click();

    p.inDialog([&](const Dialog& d) {
        d.add({"a.txt", "c.doc", "caf\\xE9.txt"});
        d.click("cmdOK");
    });
    whenModal<frmStageInfo>([](frmStageInfo* info) { info->accept(); });
    p.main->mnuFileStageFiles_Click();
    const Result<std::vector<QByteArray>> copied =
        FileSystem::matchingFiles(QFile::encodeName(dst), QStringLiteral("*"));
    QVERIFY(copied.ok());
    QCOMPARE(copied.value(), (std::vector<QByteArray>{"a.txt", "caf\xe9.txt"}));
    QFile a(dst + "/a.txt");
    QVERIFY(a.open(QIODevice::ReadOnly));
    QCOMPARE(a.readAll(), QByteArray("a.txt"));
    // QTemporaryDir cannot see the names that are not UTF-8, so cannot remove them.
    for (const QByteArray& dir : {src, QFile::encodeName(dst)})
        ::unlink((dir + "/caf\xe9.txt").constData());
    QVERIFY(boxes.shown().isEmpty());
}

void tst_frmVarFileSelect::keyboardScreenReadersAndHelp() {
    Program p;
    ScriptedHelp help;
    p.inDialog([&](const Dialog& d) {
        QMap<QChar, QWidget*> byKey;
        for (QWidget* w : d.form->findChildren<QWidget*>()) {
            static const QRegularExpression control("^(drv|dir|fil|txt|cmd|chk|lst)");
            if (w->focusPolicy() == Qt::NoFocus || !control.match(w->objectName()).hasMatch())
                continue;
            // Its access key: its own caption's, or its label's.
            QString caption;
            if (auto* b = qobject_cast<QAbstractButton*>(w))
                caption = b->text();
            for (QLabel* l : d.form->findChildren<QLabel*>())
                caption = l->buddy() == w ? l->text() : caption;
            const qsizetype amp = caption.indexOf(u'&');
            QVERIFY2(amp >= 0 && !byKey.contains(caption.at(amp + 1).toUpper()),
                     qPrintable(w->objectName()));
            byKey.insert(caption.at(amp + 1).toUpper(), w);
        }
        QCOMPARE(byKey.size(), 18);
        // Tab visits each control once.
        QSet<QWidget*> visited;
        d.find("drvVarDrives")->setFocus();
        for (int i = 0; i < byKey.size(); ++i) {
            visited.insert(QApplication::focusWidget());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(visited.size(), byKey.size());
        // Its access key presses each button (OK and Cancel would end the test) and takes the
        // focus to each other control.
        for (auto [key, w] : byKey.asKeyValueRange()) {
            if (w == d.find("cmdOK") || w == d.find("cmdCancel"))
                continue;
            auto* button = qobject_cast<QAbstractButton*>(w);
            QSignalSpy clicked(button ? button : d.find<QAbstractButton>("cmdOK"),
                               &QAbstractButton::clicked);
            QTest::keyClick(QApplication::focusWidget(), Qt::Key(key.unicode()), Qt::AltModifier);
            if (button)
                QTRY_COMPARE(clicked.count(), 1);
            else
                QVERIFY2(QApplication::focusWidget() == w, qPrintable(w->objectName()));
        }
        QTRY_COMPARE(help.requests(), (QList<HelpRequest>{{31, HelpCommand::Context}}));
    });
}

QTEST_MAIN(tst_frmVarFileSelect)
#include "tst_frmVarFileSelect.moc"
