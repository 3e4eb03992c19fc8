#include "ui/main/frmMain.h"

#include "platform/ScriptedFileDialog.h"
#include "platform/ScriptedHelp.h"
#include "platform/ScriptedMsgBox.h"
#include "staging/frmStageInfo.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/main/MainIcons.h"
#include "ui/main/SpecTreeNodes.h"
#include "ui/main/SubMain.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QtTest>

#include "tests/ui/WhenModal.h"

using namespace ondrel;

namespace {

// The spec tests' worked example (the path is cleaned as text: this suite has no fixtures).
const QString kWorkedExample =
    QDir::cleanPath(QStringLiteral(ONDREL_TEST_DATA "/../../../spec/fixtures/worked-example.spc"));

QByteArray readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

// The program as Sub Main starts it, in the program directory given or in a new one of its own.
struct Program {
    explicit Program(const QString& dir = {}, const QByteArray& options = {})
        : objects(dir.isEmpty() ? own.path() : dir) {
        if (!options.isEmpty())
            writeFile(file("ONDREL.OPT"), options);
        main = createProgramObjects(objects, FixedScreen(9600, 7200));
        objects.Settings->ReadOPTFile();
        main->Show();
    }
    QString file(const char* name) const { return objects.programDirectory + u'/' + name; }
    template <typename T = QWidget> T* find(const char* n) const { return main->findChild<T*>(n); }
    QAction* action(const char* name) const { return find<QAction>(name); }
    // The value the staging options list shows in the row of the key.
    QString row(const char* key) const {
        const QAbstractItemModel* rows = find<QTreeWidget>("lvwSPProps")->model();
        const QModelIndexList found =
            rows->match(rows->index(0, 0), Qt::UserRole, QLatin1String(key), 1, Qt::MatchExactly);
        return found.value(0).siblingAtColumn(1).data().toString();
    }
    QTreeWidget* tree() const { return find<QTreeWidget>("tvwSpecs"); }
    // Opens the worked example through File, Open; gives the dialog that was asked for.
    FileDialogRequest openWorkedExample() {
        ScriptedFileDialog dialogs;
        QFile::copy(kWorkedExample, file("Web.spc"));
        dialogs.queue(file("Web.spc"));
        main->mnuFileOpenSpecs_Click();
        return dialogs.shown().value(0);
    }
    QString specCaption() const { return find<QLabel>("lblSpecInfo(0)")->text(); }

    QTemporaryDir own;
    ProgramObjects objects;
    std::unique_ptr<frmMain> main;
};

// An icon drawn at a size, or a null image if it draws nothing there.
QImage drawn(const QIcon& icon, int size) {
    const QImage image = icon.pixmap(size, size).toImage().convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 0)
                return image;
        }
    }
    return QImage();
}

} // namespace

class tst_frmMain : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void startsAndRestartsFromTheOptionsFile();
    void drawsTheWorkedExample_data();
    void drawsTheWorkedExample();
    void treeClicksAndContextMenu();
    void fileCommandsWriteFilesAndTheRecentList();
    void closingAsksToSaveFirst_data();
    void closingAsksToSaveFirst();
    void stagesWithALog();
    void defaultLayoutAndSplitterDrag();
    void badOptionsFileEndsWithAReport();
    void menuAccessKeysAndHelpTopics();
    void iconsNeedNoIconTheme();
};

void tst_frmMain::initTestCase() {
    // As on a machine without a desktop: no icon theme to take icons from.
    QIcon::setThemeSearchPaths({});
    QIcon::setThemeName(QStringLiteral("none"));
}

void tst_frmMain::startsAndRestartsFromTheOptionsFile() {
    QTemporaryDir dir;
    {
        Program p(dir.path(),
                  "[FSOptions]\r\nTop=1500\r\nLeft=3000\r\nHeight=6000\r\nWidth=9000\r\n"
                  "ShowStageOpts=False\r\nShowToolbar=False\r\nSplitterLoc=2400\r\n"
                  "SaveSettings=True\r\n[MRUList]\r\nMRU0File=Web.spc\r\nMRU0Path=/jobs/\r\n");
        const TwipsScale s = p.main->scale();
        QCOMPARE(p.main->windowTitle(), "File Ondrel 3.0");
        QCOMPARE(p.main->pos(), QPoint(s.toPixels(3000), s.toPixels(1500)));
        QCOMPARE(p.main->size(), QSize(s.toPixels(9000), s.toPixels(6000)));
        QCOMPARE(p.specCaption(), "Spec1.spc");
        QVERIFY(p.find("tbrToolBar")->isHidden());
        QVERIFY(p.find("lvwSPProps")->isHidden());
        QVERIFY(!p.action("mnuViewStagingOptions")->isChecked());
        auto* properties = p.find<QToolButton>("Properties");
        QVERIFY(!properties->isChecked());
        QCOMPARE(properties->toolTip(), "Show Staging Options");
        // With the options hidden the tree fills the window: splitter at width - 120, on the grid.
        QCOMPARE(p.main->splitterLeft(), double((s.toTwips(p.main->width()) - 120) / 30 * 30));
        QCOMPARE(p.action("mnuFileMRU(0)")->text(), "&1 Web.spc");
        QVERIFY(p.action("mnuFileMRU(0)")->isVisible());
        QVERIFY(!p.action("mnuFileMRU(1)")->isVisible());
        QVERIFY(p.action("mnuFileBar5")->isVisible());

        p.action("mnuViewStagingOptions")->trigger();
        p.action("mnuViewToolbar")->trigger();
        QCOMPARE(properties->toolTip(), "Hide Staging Options");
        QCOMPARE(p.main->splitterLeft(), 2400.0);
        QVERIFY(p.main->close());
    }
    const QByteArray written = readAll(dir.filePath(QStringLiteral("ONDREL.OPT")));
    QVERIFY(written.contains("ShowStageOpts=True\r\nShowToolBar=True\r\n"));
    QVERIFY(written.contains("SplitterLoc=2400\r\n"));
    QVERIFY(written.contains("[MRUList]\r\nMRU0File=Web.spc\r\nMRU0Path=/jobs/\r\n"));

    Program again(dir.path());
    QVERIFY(!again.find("tbrToolBar")->isHidden());
    QVERIFY(!again.find("lvwSPProps")->isHidden());
    QVERIFY(again.find<QToolButton>("Properties")->isChecked());
}

void tst_frmMain::drawsTheWorkedExample_data() {
    QTest::addColumn<QList<int>>("at");  // top-level position, then child positions
    QTest::addColumn<QString>("parent"); // the parent's index, which begins a child's key
    QTest::addColumn<QString>("text");
    QTest::newRow("source path") << QList<int>{0} << ""
                                 << "C:\\Projects\\Web";
    QTest::newRow("file group: parent index 1") << QList<int>{0, 0} << "1"
                                                << "*.htm;*.html";
    QTest::newRow("destination: parent index 2") << QList<int>{0, 0, 1} << "2"
                                                 << "E:\\Mirror\\Web";
    QTest::newRow("second group: node 5") << QList<int>{0, 1, 0} << "5"
                                          << "D:\\Stage\\Web\\Images";
    QTest::newRow("<various> is node 7") << QList<int>{1, 0} << "7"
                                         << "*.*";
    QTest::newRow("its destination") << QList<int>{1, 0, 0} << "8"
                                     << "D:\\Stage\\Misc";
}

void tst_frmMain::drawsTheWorkedExample() {
    QFETCH(QList<int>, at);
    QFETCH(QString, parent);
    QFETCH(QString, text);
    Program p;
    QCOMPARE(p.openWorkedExample().title, "Open Spec File");

    // Source path, file group, destination path: each level of the tree shows its own image.
    const int image = QList<int>{SpecTreeImage::SourcePath, SpecTreeImage::FileGroup,
                                 SpecTreeImage::DestPath}[at.size() - 1];
    QTreeWidgetItem* node = p.tree()->topLevelItem(at.takeFirst());
    for (int i : at)
        node = node->child(i);
    QCOMPARE(node->data(0, Qt::UserRole).toString(), parent + text);
    QCOMPARE(node->text(0), text);
    QCOMPARE(node->data(0, Qt::UserRole + 1).toString(), parent.isEmpty() ? "SP" : "");
    QVERIFY(drawn(node->icon(0), 16) == drawn(treeImage(image), 16));
    QVERIFY(!node->isExpanded());
    QCOMPARE(p.tree()->currentItem(), p.tree()->topLevelItem(0));
    QCOMPARE(p.specCaption(), "Web.spc");
    QCOMPARE(p.objects.Spec->Path(), p.file(""));
}

void tst_frmMain::treeClicksAndContextMenu() {
    Program p;
    p.openWorkedExample();
    QCOMPARE(p.row("InclSubDirs"), "Yes");
    QCOMPARE(p.row("Overwrite"), "If Older");

    QTreeWidgetItem* web = p.tree()->topLevelItem(0);
    p.tree()->setCurrentItem(p.tree()->topLevelItem(1)->child(0)->child(0));
    QCOMPARE(p.row("InclSubDirs"), "No");
    p.tree()->setCurrentItem(web->child(1)->child(0));
    QCOMPARE(p.row("InclSubDirs"), "Yes");

    // The context menu offers Include Subdirectories on a source path only.
    auto* isd = p.action("mnuTVContextISD");
    auto* menu = p.find<QMenu>("mnuTVContext");
    p.main->tvwSpecs_MouseUp(Qt::RightButton, QPoint(5, 5));
    QVERIFY(!isd->isVisible());
    menu->hide();
    p.tree()->setCurrentItem(web);
    p.main->tvwSpecs_MouseUp(Qt::RightButton, QPoint(5, 5));
    QVERIFY(isd->isVisible() && isd->isChecked());
    isd->trigger();
    menu->hide();
    QVERIFY(!isd->isChecked());
    QCOMPARE(p.row("InclSubDirs"), "No");
    QVERIFY(!p.objects.Spec->SPs().Item(1)->InclSubDirs());
    QVERIFY(p.objects.Spec->Dirty());

    // A click on the node already selected still shows its source path's setting, also after a
    // redraw left the row showing another one's.
    p.main->UpdtSpecList();
    p.main->UpdtISD(true);
    web = p.tree()->topLevelItem(0);
    QTest::mouseClick(p.tree()->viewport(), Qt::LeftButton, {},
                      p.tree()->visualItemRect(web).center());
    QCOMPARE(p.row("InclSubDirs"), "No");

    // A source path whose name holds the "|" between a node's levels.
    auto barred = p.objects.Spec->SPs().Add(QStringLiteral("/tmp/x/a|b"));
    barred->setInclSubDirs(true);
    barred->FGs().Add(QStringLiteral("*.TXT"))->DPs().Add(QStringLiteral("/tmp/y"));
    p.main->UpdtSpecList();
    QTreeWidgetItem* group = p.tree()->topLevelItem(2)->child(0);
    p.tree()->expandAll();
    QTest::mouseClick(p.tree()->viewport(), Qt::LeftButton, {},
                      p.tree()->visualItemRect(group).center());
    QCOMPARE(p.tree()->currentItem(), group);
    QCOMPARE(p.row("InclSubDirs"), "Yes");

    // A failure a handler lets pass is the common error report titled with its routine, not an
    // end of the program: here the context command on a source path gone from the spec.
    {
        ScriptedMsgBox boxes;
        p.objects.Spec->SPs().Remove(QStringLiteral("/tmp/x/a|b"));
        isd->trigger();
        QCOMPARE(boxes.shown().size(), 1);
        QCOMPARE(boxes.shown()[0].title, "mnuTVContextISD_Click Error");
        QVERIFY(boxes.shown()[0].prompt.startsWith(QStringLiteral("Error ")));
    }

    web = p.tree()->topLevelItem(0);
    p.main->mnuViewExpandTVW_Click();
    QVERIFY(web->child(1)->isExpanded());
    p.main->mnuViewContractTVW_Click();
    QVERIFY(!web->isExpanded() && !web->child(1)->isExpanded());
    p.objects.Spec->setDirty(false);
}

void tst_frmMain::fileCommandsWriteFilesAndTheRecentList() {
    QTemporaryDir dir;
    ScriptedMsgBox boxes;
    ScriptedFileDialog dialogs;
    {
        Program p(dir.path());
        p.main->mnuFileSaveSpecs_Click(); // a new spec goes to the program's directory
        QVERIFY(QFile::exists(p.file("Spec1.spc")));
        QCOMPARE(p.action("mnuFileMRU(0)")->text(), "&1 Spec1.spc");

        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("jobs")));
        dialogs.queue(p.file("jobs/Site.spc"));
        p.main->tbrToolBar_ButtonClick(QStringLiteral("New"));
        QCOMPARE(p.specCaption(), "Spec2.spc");
        p.main->mnuFileSaveSpecsAs_Click();
        QCOMPARE(dialogs.shown().at(0).title, "Save Specs As . . .");
        QCOMPARE(dialogs.shown().at(0).fileName, "Spec2.spc");
        QCOMPARE(readAll(p.file("jobs/Site.spc")),
                 QByteArray("[SourcePaths]\r\nSP1=<various>\r\n[ISD]\r\nSP1=False\r\n"));
        QCOMPARE(p.specCaption(), "Site.spc");
        QCOMPARE(p.action("mnuFileMRU(1)")->text(), "&2 Spec1.spc");

        dialogs.queueCancel(); // Cancel ends the command without a word
        p.main->mnuFileOpenSpecs_Click();
        QCOMPARE(p.specCaption(), "Site.spc");
        QVERIFY(p.main->close());
    }
    QVERIFY(boxes.shown().isEmpty());
    // The list is written at every shut-down, the settings only as SaveSettings says.
    QCOMPARE(readAll(dir.filePath(QStringLiteral("ONDREL.OPT"))),
             QByteArray("[MRUList]\r\nMRU0File=Site.spc\r\nMRU0Path=") +
                 dir.filePath(QStringLiteral("jobs/")).toUtf8() +
                 "\r\nMRU1File=Spec1.spc\r\nMRU1Path=" + dir.path().toUtf8() +
                 "/\r\nMRU2File=\r\nMRU2Path=\r\nMRU3File=\r\nMRU3Path=\r\n"
                 "[FSOptions]\r\nSaveSettings=False\r\n");

    Program again(dir.path());
    again.main->mnuFileMRU_Click(0);
    QCOMPARE(again.specCaption(), "Site.spc");
    QCOMPARE(again.objects.Spec->Path(), again.file("jobs/"));
}

void tst_frmMain::closingAsksToSaveFirst_data() {
    QTest::addColumn<MsgAnswer>("answer");
    QTest::addColumn<bool>("closed");
    QTest::addColumn<bool>("saved");
    QTest::newRow("Cancel keeps everything") << MsgAnswer::Cancel << false << false;
    QTest::newRow("No closes without saving") << MsgAnswer::No << true << false;
    QTest::newRow("Yes saves, then closes") << MsgAnswer::Yes << true << true;
}

void tst_frmMain::closingAsksToSaveFirst() {
    QFETCH(MsgAnswer, answer);
    QFETCH(bool, closed);
    QFETCH(bool, saved);
    ScriptedMsgBox boxes;
    Program p;
    p.objects.Spec->SPs().Add(QStringLiteral("/src"));
    p.objects.Spec->setDirty(true);
    boxes.queue(answer);
    QCOMPARE(p.main->close(), closed);
    QCOMPARE(boxes.shown().size(), 1);
    const MsgBoxRequest& box = boxes.shown().at(0);
    QCOMPARE(box.prompt, "Save changes to Spec1.spc?");
    QCOMPARE(box.title, "Save Spec File?");
    QVERIFY(box.buttons == MsgButtons::YesNoCancel && box.icon == MsgIcon::Question);
    QCOMPARE(QFile::exists(p.file("Spec1.spc")), saved);
    QCOMPARE(QFile::exists(p.file("ONDREL.OPT")), closed); // the settings go at shut-down
    if (!closed) {
        QVERIFY(p.objects.Spec->Dirty());
        p.objects.Spec->setDirty(false);
    }
}

void tst_frmMain::stagesWithALog() {
    ScriptedMsgBox boxes;
    ScriptedFileDialog dialogs;
    Program p({}, "[FSOptions]\r\nCreateLog=True\r\n");
    QVERIFY(QDir(p.file("")).mkpath(QStringLiteral("src")));
    writeFile(p.file("src/a.txt"), "a");
    writeFile(p.file("job.spc"), "[SourcePaths]\r\nSP1=" + p.file("src").toUtf8() +
                                     "\r\n[ISD]\r\nSP1=False\r\n[SP1FGs]\r\nFG1=*.TXT\r\n"
                                     "[SP1FG1DPs]\r\nDP1=" +
                                     p.file("dst").toUtf8() + "\r\n");
    dialogs.queue(p.file("job.spc"));
    p.main->mnuFileOpenSpecs_Click();

    dialogs.queueCancel(); // no log name, no staging
    p.main->mnuFileStageFiles_Click();
    dialogs.queue(p.file("missing/new.log"));
    p.main->mnuFileStageFiles_Click();
    QVERIFY(!QFile::exists(p.file("dst/a.txt")));
    QCOMPARE(boxes.shown().size(), 1);
    QCOMPARE(boxes.shown().at(0).prompt,
             "Error 76 occurred.  Message as follows:\r\nPath not found");
    QCOMPARE(boxes.shown().at(0).title, "Error Saving Spec File");
    QCOMPARE(boxes.shown().at(0).icon, MsgIcon::Exclamation);
    boxes.clear();

    dialogs.queue(p.file("new.log"));
    whenModal<frmStageInfo>([](frmStageInfo* info) { info->accept(); });
    p.main->mnuFileStageFiles_Click();
    const FileDialogRequest& asked = dialogs.shown().last();
    QCOMPARE(asked.title, "Specify the Staging Log Filename");
    QCOMPARE(asked.fileName, "Staging.log");
    QCOMPARE(asked.existence, FileExistence::MayBeNew);
    QCOMPARE(readAll(p.file("dst/a.txt")), QByteArray("a"));
    QVERIFY(readAll(p.file("new.log")).contains("Staging completed\r\n"));
    QVERIFY(boxes.shown().isEmpty());
}

void tst_frmMain::defaultLayoutAndSplitterDrag() {
    Program p;
    // The default size shows every tool-bar button and the whole of each option's label.
    QCOMPARE(p.main->size(), QSize(p.main->scale().toPixels(7005), p.main->scale().toPixels(5505)));
    QVERIFY(p.find("What'sThis")->isVisible());
    QVERIFY(!p.find("tbrToolBar")->findChild<QWidget*>("qt_toolbar_ext_button")->isVisible());
    auto* list = p.find<QTreeWidget>("lvwSPProps");
    const int longest = static_cast<QAbstractItemView*>(list)->sizeHintForColumn(0);
    QVERIFY2(list->columnWidth(0) >= longest, qPrintable(QString::number(longest)));
    QVERIFY(list->columnWidth(0) + list->columnWidth(1) <= list->viewport()->width());

    auto* splitter = p.find("imgSplitter");
    QCOMPARE(p.main->splitterLeft(), 3390.0); // the default 3400, on the grid
    QTest::mousePress(splitter, Qt::LeftButton, {}, QPoint(2, 2));
    QVERIFY(p.find("picSplitter")->isVisible());
    QMouseEvent move(QEvent::MouseMove, QPointF(-400, 2), splitter->mapToGlobal(QPointF(-400, 2)),
                     Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(splitter, &move);
    QCOMPARE(p.main->splitterLeft(), 3390.0); // the panes wait for the release
    QTest::mouseRelease(splitter, Qt::LeftButton, {}, QPoint(-400, 2));
    QCOMPARE(p.main->splitterLeft(), 1500.0);
    QCOMPARE(p.objects.Settings->SplitterLoc(), 1500);
    QVERIFY(!p.find("picSplitter")->isVisible());

    // Dropped on the tree, the splitter lays the panes out there but stores nothing; a drop of
    // anything else changes nothing.
    QWidget* tree = p.tree()->viewport();
    const int at =
        tree->mapFrom(p.main->centralWidget(), QPoint(p.main->scale().toPixels(2400), 0)).x();
    for (const QByteArray& carried : {QByteArray("imgSplitter"), QByteArray("tvwSpecs.other")}) {
        QMimeData data;
        data.setData(QStringLiteral("application/x-ondrel-control"), carried);
        QDragEnterEvent enter(QPoint(at, 5), Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(tree, &enter);
        QCOMPARE(enter.isAccepted(), carried == "imgSplitter");
        QDropEvent drop(QPointF(at, 5), Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(tree, &drop);
    }
    QCOMPARE(p.main->splitterLeft(), 2400.0);
    QCOMPARE(p.objects.Settings->SplitterLoc(), 1500);
}

void tst_frmMain::badOptionsFileEndsWithAReport() {
    QTemporaryDir dir;
    const QByteArray bad = "[FSOptions]\r\nTop=abc\r\n";
    writeFile(dir.filePath(QStringLiteral("ONDREL.OPT")), bad);
    ScriptedMsgBox boxes;
    QCOMPARE(SubMain(dir.path()), 1);
    QCOMPARE(boxes.shown().size(), 1);
    QVERIFY(boxes.shown().at(0).prompt.startsWith(QStringLiteral("Run-time error '13':")));
    QCOMPARE(readAll(dir.filePath(QStringLiteral("ONDREL.OPT"))), bad);
}

void tst_frmMain::menuAccessKeysAndHelpTopics() {
    Program p;
    for (QAction* a : p.main->findChildren<QAction*>()) {
        if (a->objectName().startsWith(QLatin1String("mnu")) && !a->isSeparator())
            QVERIFY2(a->text().contains(u'&'), qPrintable(a->objectName()));
    }
    ScriptedHelp help;
    for (const char* item : {"mnuHelpContents", "mnuHelpSearch", "mnuHelpMainScreen"})
        p.action(item)->trigger();
    const QList<HelpRequest> expected = {
        {0, HelpCommand::Contents}, {0, HelpCommand::PartialKey}, {5, HelpCommand::Context}};
    QVERIFY(help.requests() == expected);
}

void tst_frmMain::iconsNeedNoIconTheme() {
    Program p;
    QList<std::pair<QString, QIcon>> icons;
    for (QAction* a : p.find("tbrToolBar")->actions()) {
        if (!a->isSeparator())
            icons.append({a->data().toString(), a->icon()});
    }
    QCOMPARE(icons.size(), 14);
    for (int i = SpecTreeImage::SourcePath; i <= SpecTreeImage::DestPath; ++i)
        icons.append({QStringLiteral("tree image %1").arg(i), treeImage(i)});
    icons.append({QStringLiteral("window"), p.main->windowIcon()});

    // Each draws something at both sizes (the 32-pixel one scaled up, not padded), no two alike.
    QSet<QByteArray> looks;
    for (const auto& [name, icon] : icons) {
        for (int size : {16, 32})
            QVERIFY2(drawn(icon, size).size() == QSize(size, size), qPrintable(name));
        const QImage small = drawn(icon, 16);
        looks.insert(
            QByteArray(reinterpret_cast<const char*>(small.constBits()), small.sizeInBytes()));
    }
    QCOMPARE(looks.size(), icons.size());
}

QTEST_MAIN(tst_frmMain)
#include "tst_frmMain.moc"
