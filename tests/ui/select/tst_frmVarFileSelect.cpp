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

QByteArray readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
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
        auto* box = find<QLineEdit>("txtFileSelMask");
        box->setFocus();
        box->setText(text);
        QTest::keyClick(box, Qt::Key_Return);
    }
};

// The program as Sub Main starts it, browsing dir/src on the root's volume by default.
struct Program {
    explicit Program(const QString& dir_, const QString& defaultPath = {},
                     const QString& defaultDrive = QStringLiteral("/"))
        : dir(dir_), objects(dir_) {
        QDir(dir).mkpath(QStringLiteral("src"));
        const QString path = defaultPath.isEmpty() ? src() : defaultPath;
        writeFile(dir + QStringLiteral("/ONDREL.OPT"),
                  "[FSOptions]\r\nDefaultPath=" + path.toUtf8() +
                      "\r\nDefaultDrive=" + defaultDrive.toUtf8() + "\r\n");
        main = createProgramObjects(objects, FixedScreen(9600, 7200));
        objects.Settings->ReadOPTFile();
        main->Show();
    }
    QString src(const QString& name = {}) const {
        return dir + QStringLiteral("/src") + (name.isEmpty() ? QString() : u'/' + name);
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
    void loadsAListFileItemByItem();
    void saveThenLoadRoundTrips();
    void stagingAfterOKCopiesTheSelection();
    void keyboardScreenReadersAndHelp();
};

void tst_frmVarFileSelect::selectionSurvivesReopeningCancelKeepsIt() {
    QTemporaryDir tmp;
    Program p(tmp.path());
    for (const char* name : {"a.txt", "B.txt", "c.doc", ".hidden.txt"})
        writeFile(p.src(QString::fromLatin1(name)), "x");
    const QStringList chosen = {p.src(QStringLiteral("a.txt")), p.src(QStringLiteral("B.txt"))};

    p.inDialog([&](const Dialog& d) {
        QCOMPARE(d.find<QLineEdit>("txtFileSelMask")->text(), QStringLiteral("*.*"));
        QCOMPARE(d.find<QLabel>("lblFileCount")->text(), QStringLiteral("4"));
        d.add({QStringLiteral("B.txt"), QStringLiteral("a.txt")});
        d.mask(QStringLiteral("*.TXT"));
        d.find<QCheckBox>("chkShowHidden")->click();
        d.click("cmdOK");
    });
    QCOMPARE(p.various(), chosen);
    QCOMPARE(p.objects.Selection.FileSelMask, QStringLiteral("*.TXT"));
    QCOMPARE(p.objects.Selection.ShowHidden, qint16(0));
    QCOMPARE(p.objects.Selection.ShowArchive, qint16(1));

    // Reopened: as left. Changes then cancelled leave it so.
    p.inDialog([&](const Dialog& d) {
        QCOMPARE(Dialog::rows(d.selection()), chosen);
        QCOMPARE(d.find<QLineEdit>("txtFileSelMask")->text(), QStringLiteral("*.TXT"));
        QVERIFY(!d.find<QCheckBox>("chkShowHidden")->isChecked());
        QCOMPARE(Dialog::rows(d.files()), (QStringList{"a.txt", "B.txt"}));
        d.click("cmdRemove", Qt::AltModifier);
        d.mask(QStringLiteral("*.doc"));
        d.find<QCheckBox>("chkShowSystem")->click();
        d.click("cmdCancel");
    });
    QCOMPARE(p.various(), chosen);
    QCOMPARE(p.objects.Selection.FileSelMask, QStringLiteral("*.TXT"));
    QCOMPARE(p.objects.Selection.ShowSystem, qint16(1));

    // OK on an empty list stores one empty entry, and the list opens empty.
    p.inDialog([&](const Dialog& d) {
        d.click("cmdRemove", Qt::AltModifier);
        d.click("cmdOK");
    });
    QCOMPARE(p.various(), QStringList{QString()});
    p.inDialog([&](const Dialog& d) { QVERIFY(Dialog::rows(d.selection()).isEmpty()); });
}

void tst_frmVarFileSelect::addsAndRemoves() {
    QTemporaryDir tmp;
    Program p(tmp.path());
    for (const char* name : {"a", "b", "c", "d"})
        writeFile(p.src(QString::fromLatin1(name)), "x");
    const auto paths = [&](const char* names) {
        QStringList out;
        for (const char c : QByteArray(names))
            out.append(p.src(QString(QChar::fromLatin1(c))));
        return out;
    };
    p.inDialog([&](const Dialog& d) {
        d.add({QStringLiteral("b")});
        d.add({QStringLiteral("b"), QStringLiteral("a")});
        QCOMPARE(Dialog::rows(d.selection()), paths("ab"));
        Dialog::doubleClick(d.files(), QStringLiteral("d"));
        QCOMPARE(Dialog::rows(d.selection()), paths("abd"));
        Dialog::doubleClick(d.selection(), p.src(QStringLiteral("a")));
        QCOMPARE(Dialog::rows(d.selection()), paths("bd"));
        // Alt held with the mouse adds every file; pressed from the keyboard, only the chosen.
        Dialog::select(d.files(), {QStringLiteral("a")});
        d.find("cmdAdd")->setFocus();
        QTest::keyClick(d.find("cmdAdd"), Qt::Key_Space, Qt::AltModifier);
        QCOMPARE(Dialog::rows(d.selection()), paths("abd"));
        d.click("cmdAdd", Qt::AltModifier);
        QCOMPARE(Dialog::rows(d.selection()), paths("abcd"));
        Dialog::select(d.selection(), paths("ac"));
        d.click("cmdRemove");
        QCOMPARE(Dialog::rows(d.selection()), paths("bd"));
        d.click("cmdRemove", Qt::AltModifier);
        QVERIFY(Dialog::rows(d.selection()).isEmpty());
    });
    QCOMPARE(p.various(), QStringList{QString()}); // cancelled
}

void tst_frmVarFileSelect::maskAndFilters() {
    QTemporaryDir tmp;
    Program p(tmp.path());
    for (const char* name : {"a.txt", "b.log", ".rc"})
        writeFile(p.src(QString::fromLatin1(name)), "x");
    ScriptedMsgBox boxes;
    p.inDialog([&](const Dialog& d) {
        auto* count = d.find<QLabel>("lblFileCount");
        d.mask(QStringLiteral("*.log;*.TXT"));
        QVERIFY(d.form->isVisible()); // Enter in the mask box does not press OK
        QCOMPARE(Dialog::rows(d.files()), (QStringList{"a.txt", "b.log"}));
        QCOMPARE(count->text(), QStringLiteral("2"));

        d.mask(QStringLiteral("a|b"));
        QCOMPARE(boxes.shown().size(), 1);
        QCOMPARE(boxes.shown().at(0).prompt,
                 QStringLiteral("The file mask generated an error.  Make sure it does not "
                                "contain any of the following characters:  \\ / : < > | "
                                "anywhere in the mask, or ; in the extension."));
        QCOMPARE(boxes.shown().at(0).title, QStringLiteral("Error Entering File Mask"));
        QCOMPARE(boxes.shown().at(0).icon, MsgIcon::Exclamation);
        QCOMPARE(d.find<QLineEdit>("txtFileSelMask")->text(), QStringLiteral("*.log;*.TXT"));

        d.find<QLineEdit>("txtFileSelMask")->setText(QStringLiteral("*"));
        d.click("cmdGoMask");
        QCOMPARE(count->text(), QStringLiteral("3"));
        d.find<QCheckBox>("chkShowHidden")->click();
        QCOMPARE(Dialog::rows(d.files()), (QStringList{"a.txt", "b.log"}));
        QCOMPARE(count->text(), QStringLiteral("2"));
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
    QTemporaryDir tmp;
    // A directory that is no mount point stands for a disk that was pulled.
    const QString drive = driveMounted ? QStringLiteral("/") : tmp.path();
    Program p(tmp.path(), tmp.filePath(path), drive);
    ScriptedMsgBox boxes;
    for (MsgAnswer answer : answers)
        boxes.queue(answer);
    p.inDialog([&](const Dialog& d) { QVERIFY(d.form->isVisible()); });
    QCOMPARE(boxes.shown().size(), answers.size());
    for (const MsgBoxRequest& box : boxes.shown()) {
        QCOMPARE(box.prompt, QStringLiteral("Drive ") + drive +
                                 QStringLiteral(" is not currently mapped or is otherwise "
                                                "unavailable."));
        QCOMPARE(box.title, QStringLiteral("Device Not Found"));
        QCOMPARE(box.buttons, MsgButtons::RetryCancel);
        QCOMPARE(box.icon, MsgIcon::Exclamation);
    }
}

void tst_frmVarFileSelect::loadsAListFileItemByItem() {
    QTemporaryDir tmp;
    Program p(tmp.path());
    writeFile(p.src(QStringLiteral("m.txt")), "x");
    const QString list = tmp.filePath(QStringLiteral("mine.txt"));
    writeFile(list, "; my files\r\nrelative/x.txt\r\n/d/b.txt,/d/a.txt\r\n\"/d/c, d.txt\"\r\n"
                    "  /d/a.txt  \n/d/Z.txt");
    ScriptedFileDialog dialogs;
    ScriptedMsgBox boxes;
    p.inDialog([&](const Dialog& d) {
        d.add({QStringLiteral("m.txt")});
        dialogs.queueCancel();
        d.click("cmdLoadList");
        QCOMPARE(Dialog::rows(d.selection()).size(), 1);
        dialogs.queue(list);
        d.click("cmdLoadList");
        // Appended to what was there, sorted, each once.
        QCOMPARE(Dialog::rows(d.selection()),
                 (QStringList{"/d/a.txt", "/d/b.txt", "/d/c, d.txt", "/d/Z.txt",
                              p.src(QStringLiteral("m.txt"))}));
        dialogs.queue(tmp.filePath(QStringLiteral("none.txt")));
        d.click("cmdLoadList");
    });
    const FileDialogRequest& asked = dialogs.shown().at(0);
    QCOMPARE(asked.kind, FileDialogKind::Open);
    QCOMPARE(asked.title, QStringLiteral("Load File List"));
    QCOMPARE(asked.filter, QStringLiteral("Text Files (*.txt)|*.txt"));
    QCOMPARE(asked.defaultExt, QStringLiteral("*.txt"));
    QCOMPARE(asked.fileName, QString());
    QCOMPARE(boxes.shown().size(), 1);
    QCOMPARE(boxes.shown().at(0).title, QStringLiteral("Error Saving Spec File"));
    QCOMPARE(boxes.shown().at(0).prompt,
             QStringLiteral("Error 53 occurred.  Message as follows:\r\nFile not found"));
}

void tst_frmVarFileSelect::saveThenLoadRoundTrips() {
    QTemporaryDir tmp;
    Program p(tmp.path());
    for (const char* name : {"one, two.txt", "Report.TXT", "b"})
        writeFile(p.src(QString::fromLatin1(name)), "x");
    const QString list = tmp.filePath(QStringLiteral("saved.txt"));
    ScriptedFileDialog dialogs;
    ScriptedMsgBox boxes;
    QStringList saved;
    p.inDialog([&](const Dialog& d) {
        d.click("cmdAdd", Qt::AltModifier);
        saved = Dialog::rows(d.selection());
        QCOMPARE(saved.size(), 3);
        dialogs.queueCancel();
        d.click("cmdSaveList");
        QVERIFY(!QFile::exists(list));
        dialogs.queue(list);
        d.click("cmdSaveList");
        d.click("cmdRemove", Qt::AltModifier);
        dialogs.queue(list);
        d.click("cmdLoadList");
        QCOMPARE(Dialog::rows(d.selection()), saved);
        dialogs.queue(tmp.filePath(QStringLiteral("no/such/dir/x.txt")));
        d.click("cmdSaveList");
        d.click("cmdOK");
    });
    QCOMPARE(p.various(), saved);
    QCOMPARE(dialogs.shown().at(1).kind, FileDialogKind::Save);
    QCOMPARE(dialogs.shown().at(1).title, QStringLiteral("Save File List"));
    QCOMPARE(boxes.shown().size(), 1);
    QCOMPARE(boxes.shown().at(0).prompt,
             QStringLiteral("Error 76 occurred.  Message as follows:\r\nPath not found"));
}

void tst_frmVarFileSelect::stagingAfterOKCopiesTheSelection() {
    QTemporaryDir tmp;
    Program p(tmp.path());
    const QByteArray src = QFile::encodeName(p.src());
    for (const QByteArray& name : {QByteArray("a.txt"), QByteArray("b.txt"), QByteArray("c.doc"),
                                   QByteArray("caf\xe9.txt")}) {
        const int fd = ::open((src + '/' + name).constData(), O_CREAT | O_WRONLY, 0644);
        QVERIFY(fd >= 0 && ::write(fd, name.constData(), size_t(name.size())) == name.size());
        ::close(fd);
    }
    const QString dst = tmp.filePath(QStringLiteral("dst"));
    writeFile(tmp.filePath(QStringLiteral("job.spc")),
              "[SourcePaths]\r\nSP1=<various>\r\n[ISD]\r\nSP1=False\r\n[SP1FGs]\r\nFG1=*.TXT\r\n"
              "[SP1FG1DPs]\r\nDP1=" +
                  dst.toUtf8() + "\r\n");
    ScriptedFileDialog dialogs;
    ScriptedMsgBox boxes;
    dialogs.queue(tmp.filePath(QStringLiteral("job.spc")));
    p.main->mnuFileOpenSpecs_Click();

    p.inDialog([&](const Dialog& d) {
        d.add({QStringLiteral("a.txt"), QStringLiteral("c.doc"), QStringLiteral("caf\\xE9.txt")});
        d.click("cmdOK");
    });
    whenModal<frmStageInfo>([](frmStageInfo* info) { info->accept(); });
    p.main->mnuFileStageFiles_Click();
    const Result<std::vector<QByteArray>> copied =
        FileSystem::matchingFiles(QFile::encodeName(dst), QStringLiteral("*"));
    QVERIFY(copied.ok());
    QCOMPARE(copied.value(), (std::vector<QByteArray>{"a.txt", "caf\xe9.txt"}));
    QCOMPARE(readAll(dst + QStringLiteral("/a.txt")), QByteArray("a.txt"));
    // QTemporaryDir cannot see the names that are not UTF-8, so cannot remove them.
    for (const QByteArray& dir : {src, QFile::encodeName(dst)})
        ::unlink((dir + "/caf\xe9.txt").constData());
    QVERIFY(boxes.shown().isEmpty());
}

void tst_frmVarFileSelect::keyboardScreenReadersAndHelp() {
    QTemporaryDir tmp;
    Program p(tmp.path());
    ScriptedHelp help;
    p.inDialog([&](const Dialog& d) {
        QMap<QChar, QWidget*> byKey;
        for (QWidget* w : d.form->findChildren<QWidget*>()) {
            static const QRegularExpression control(
                QStringLiteral("^(drv|dir|fil|txt|cmd|chk|lst)"));
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
