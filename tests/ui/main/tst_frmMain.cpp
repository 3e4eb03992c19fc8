#include "ui/main/frmMain.h"

#include "platform/ScriptedFileDialog.h"
#include "platform/ScriptedHelp.h"
#include "platform/ScriptedMsgBox.h"
#include "staging/frmStage.h"
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
#include <QTimer>
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

// The program as Sub Main starts it, in a program directory of its own.
struct Program {
    explicit Program(const QString& dir, const QByteArray& options = {}) : objects(dir) {
        if (!options.isEmpty())
            writeFile(optionsFile(), options);
        main = createProgramObjects(objects, FixedScreen(9600, 7200));
        objects.Settings->ReadOPTFile();
        main->Show();
    }
    QString optionsFile() const { return objects.programDirectory + QStringLiteral("/ONDREL.OPT"); }
    template <typename T> T* find(const QString& name) const { return main->findChild<T*>(name); }
    QAction* action(const QString& name) const { return find<QAction>(name); }
    QString row(const QString& key) const {
        auto* list = find<QTreeWidget>(QStringLiteral("lvwSPProps"));
        for (int i = 0; i < list->topLevelItemCount(); ++i) {
            if (list->topLevelItem(i)->data(0, Qt::UserRole).toString() == key)
                return list->topLevelItem(i)->text(1);
        }
        return QStringLiteral("(no row)");
    }
    QTreeWidget* tree() const { return find<QTreeWidget>(QStringLiteral("tvwSpecs")); }
    // Opens the worked example through File, Open; gives the dialog that was asked for.
    FileDialogRequest openWorkedExample() {
        ScriptedFileDialog dialogs;
        const QString copy = objects.programDirectory + QStringLiteral("/Web.spc");
        QFile::copy(kWorkedExample, copy);
        dialogs.queue(copy);
        main->mnuFileOpenSpecs_Click();
        return dialogs.shown().value(0);
    }
    QString specCaption() const { return find<QLabel>(QStringLiteral("lblSpecInfo(0)"))->text(); }

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
    void splitterDragStaysInBounds();
    void defaultSizeShowsEveryButtonAndLabel();
    void badOptionsFileEndsWithAReport();
    void everyMenuEntryHasAnAccessKey();
    void helpMenuOpensItsTopics();
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
                  "SaveSettings=True\r\n[MRUList]\r\nMRU0File=Web.spc\r\n"
                  "MRU0Path=/jobs/\r\n");
        const TwipsScale s = p.main->scale();
        QCOMPARE(p.main->windowTitle(), QStringLiteral("File Ondrel 3.0"));
        QCOMPARE(p.main->pos(), QPoint(s.toPixels(3000), s.toPixels(1500)));
        QCOMPARE(p.main->size(), QSize(s.toPixels(9000), s.toPixels(6000)));
        QCOMPARE(p.specCaption(), QStringLiteral("Spec1.spc"));
        QVERIFY(p.find<QToolBar>(QStringLiteral("tbrToolBar"))->isHidden());
        QVERIFY(p.find<QWidget>(QStringLiteral("lvwSPProps"))->isHidden());
        QVERIFY(!p.action(QStringLiteral("mnuViewStagingOptions"))->isChecked());
        auto* properties = p.find<QToolButton>(QStringLiteral("Properties"));
        QVERIFY(!properties->isChecked());
        QCOMPARE(properties->toolTip(), QStringLiteral("Show Staging Options"));
        // With the options hidden the tree fills the window: splitter at width - 120, on the grid.
        QCOMPARE(p.main->splitterLeft(), double((s.toTwips(p.main->width()) - 120) / 30 * 30));
        QCOMPARE(p.action(QStringLiteral("mnuFileMRU(0)"))->text(), QStringLiteral("&1 Web.spc"));
        QVERIFY(p.action(QStringLiteral("mnuFileMRU(0)"))->isVisible());
        QVERIFY(!p.action(QStringLiteral("mnuFileMRU(1)"))->isVisible());
        QVERIFY(p.action(QStringLiteral("mnuFileBar5"))->isVisible());

        p.action(QStringLiteral("mnuViewStagingOptions"))->trigger();
        p.action(QStringLiteral("mnuViewToolbar"))->trigger();
        QCOMPARE(properties->toolTip(), QStringLiteral("Hide Staging Options"));
        QCOMPARE(p.main->splitterLeft(), 2400.0);
        QVERIFY(p.main->close());
    }
    const QByteArray written = readAll(dir.filePath(QStringLiteral("ONDREL.OPT")));
    QVERIFY(written.contains("ShowStageOpts=True\r\nShowToolBar=True\r\n"));
    QVERIFY(written.contains("SplitterLoc=2400\r\n"));
    QVERIFY(written.contains("[MRUList]\r\nMRU0File=Web.spc\r\nMRU0Path=/jobs/\r\n"));

    Program again(dir.path());
    QVERIFY(!again.find<QToolBar>(QStringLiteral("tbrToolBar"))->isHidden());
    QVERIFY(!again.find<QWidget>(QStringLiteral("lvwSPProps"))->isHidden());
    QVERIFY(again.find<QToolButton>(QStringLiteral("Properties"))->isChecked());
}

void tst_frmMain::drawsTheWorkedExample_data() {
    QTest::addColumn<QList<int>>("at"); // top-level position, then child positions
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tag");
    QTest::newRow("source path") << QList<int>{0} << "C:\\Projects\\Web"
                                 << "C:\\Projects\\Web"
                                 << "SP";
    QTest::newRow("file group: parent index 1") << QList<int>{0, 0} << "1*.htm;*.html"
                                                << "*.htm;*.html"
                                                << "";
    QTest::newRow("destination: parent index 2") << QList<int>{0, 0, 1} << "2E:\\Mirror\\Web"
                                                 << "E:\\Mirror\\Web"
                                                 << "";
    QTest::newRow("second group: node 5") << QList<int>{0, 1, 0} << "5D:\\Stage\\Web\\Images"
                                          << "D:\\Stage\\Web\\Images"
                                          << "";
    QTest::newRow("<various> is node 7") << QList<int>{1, 0} << "7*.*"
                                         << "*.*"
                                         << "";
    QTest::newRow("its destination") << QList<int>{1, 0, 0} << "8D:\\Stage\\Misc"
                                     << "D:\\Stage\\Misc"
                                     << "";
}

void tst_frmMain::drawsTheWorkedExample() {
    QTemporaryDir dir;
    Program p(dir.path());
    QCOMPARE(p.openWorkedExample().title, QStringLiteral("Open Spec File"));

    QFETCH(QList<int>, at);
    QTreeWidgetItem* node = p.tree()->topLevelItem(at.takeFirst());
    for (int i : at)
        node = node->child(i);
    QFETCH(QString, key);
    QCOMPARE(node->data(0, Qt::UserRole).toString(), key);
    QFETCH(QString, text);
    QCOMPARE(node->text(0), text);
    QFETCH(QString, tag);
    QCOMPARE(node->data(0, Qt::UserRole + 1).toString(), tag);
    QVERIFY(!node->isExpanded());
    QCOMPARE(p.tree()->currentItem(), p.tree()->topLevelItem(0));
    QCOMPARE(p.specCaption(), QStringLiteral("Web.spc"));
    QCOMPARE(p.objects.Spec->Path(), dir.path() + u'/');
}

void tst_frmMain::treeClicksAndContextMenu() {
    QTemporaryDir dir;
    Program p(dir.path());
    p.openWorkedExample();
    QCOMPARE(p.row(QStringLiteral("InclSubDirs")), QStringLiteral("Yes"));
    QCOMPARE(p.row(QStringLiteral("Overwrite")), QStringLiteral("If Older"));

    QTreeWidgetItem* web = p.tree()->topLevelItem(0);
    QTreeWidgetItem* various = p.tree()->topLevelItem(1);
    p.tree()->setCurrentItem(various->child(0)->child(0));
    QCOMPARE(p.row(QStringLiteral("InclSubDirs")), QStringLiteral("No"));
    p.tree()->setCurrentItem(web->child(1)->child(0));
    QCOMPARE(p.row(QStringLiteral("InclSubDirs")), QStringLiteral("Yes"));

    // The context menu offers Include Subdirectories on a source path only.
    auto* isd = p.action(QStringLiteral("mnuTVContextISD"));
    auto* menu = p.find<QMenu>(QStringLiteral("mnuTVContext"));
    p.main->tvwSpecs_MouseUp(Qt::RightButton, QPoint(5, 5));
    QVERIFY(!isd->isVisible());
    menu->hide();
    p.tree()->setCurrentItem(web);
    p.main->tvwSpecs_MouseUp(Qt::RightButton, QPoint(5, 5));
    QVERIFY(isd->isVisible());
    QVERIFY(isd->isChecked());
    isd->trigger();
    menu->hide();
    QVERIFY(!isd->isChecked());
    QCOMPARE(p.row(QStringLiteral("InclSubDirs")), QStringLiteral("No"));
    QVERIFY(!p.objects.Spec->SPs().Item(1)->InclSubDirs());
    QVERIFY(p.objects.Spec->Dirty());

    // A click on the node already selected still shows its source path's setting, also after a
    // redraw left the row showing another one's.
    p.main->UpdtSpecList();
    p.main->UpdtISD(true);
    web = p.tree()->topLevelItem(0);
    QTest::mouseClick(p.tree()->viewport(), Qt::LeftButton, {},
                      p.tree()->visualItemRect(web).center());
    QCOMPARE(p.row(QStringLiteral("InclSubDirs")), QStringLiteral("No"));

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
    QCOMPARE(p.row(QStringLiteral("InclSubDirs")), QStringLiteral("Yes"));

    // A failure a handler lets pass is the common error report titled with its routine, not an
    // end of the program: here the context command on a source path gone from the spec.
    {
        ScriptedMsgBox boxes;
        p.objects.Spec->SPs().Remove(QStringLiteral("/tmp/x/a|b"));
        isd->trigger();
        QCOMPARE(boxes.shown().size(), 1);
        QCOMPARE(boxes.shown()[0].title, QStringLiteral("mnuTVContextISD_Click Error"));
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
        QVERIFY(QFile::exists(dir.filePath(QStringLiteral("Spec1.spc"))));
        QCOMPARE(p.action(QStringLiteral("mnuFileMRU(0)"))->text(), QStringLiteral("&1 Spec1.spc"));

        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("jobs")));
        const QString as = dir.filePath(QStringLiteral("jobs/Site.spc"));
        dialogs.queue(as);
        p.main->tbrToolBar_ButtonClick(QStringLiteral("New"));
        QCOMPARE(p.specCaption(), QStringLiteral("Spec2.spc"));
        p.main->mnuFileSaveSpecsAs_Click();
        QCOMPARE(dialogs.shown().at(0).title, QStringLiteral("Save Specs As . . ."));
        QCOMPARE(dialogs.shown().at(0).fileName, QStringLiteral("Spec2.spc"));
        QCOMPARE(readAll(as),
                 QByteArray("[SourcePaths]\r\nSP1=<various>\r\n[ISD]\r\nSP1=False\r\n"));
        QCOMPARE(p.specCaption(), QStringLiteral("Site.spc"));
        QCOMPARE(p.action(QStringLiteral("mnuFileMRU(1)"))->text(), QStringLiteral("&2 Spec1.spc"));

        dialogs.queueCancel(); // Cancel ends the command without a word
        p.main->mnuFileOpenSpecs_Click();
        QCOMPARE(p.specCaption(), QStringLiteral("Site.spc"));
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
    QCOMPARE(again.specCaption(), QStringLiteral("Site.spc"));
    QCOMPARE(again.objects.Spec->Path(), dir.filePath(QStringLiteral("jobs/")));
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
    QTemporaryDir dir;
    ScriptedMsgBox boxes;
    Program p(dir.path());
    p.objects.Spec->SPs().Add(QStringLiteral("/src"));
    p.objects.Spec->setDirty(true);
    boxes.queue(answer);
    QFETCH(bool, closed);
    QCOMPARE(p.main->close(), closed);
    QCOMPARE(boxes.shown().size(), 1);
    QCOMPARE(boxes.shown().at(0).prompt, QStringLiteral("Save changes to Spec1.spc?"));
    QCOMPARE(boxes.shown().at(0).title, QStringLiteral("Save Spec File?"));
    QCOMPARE(boxes.shown().at(0).buttons, MsgButtons::YesNoCancel);
    QCOMPARE(boxes.shown().at(0).icon, MsgIcon::Question);
    QFETCH(bool, saved);
    QCOMPARE(QFile::exists(dir.filePath(QStringLiteral("Spec1.spc"))), saved);
    QCOMPARE(QFile::exists(p.optionsFile()), answer != MsgAnswer::Cancel);
    if (answer == MsgAnswer::Cancel) {
        QVERIFY(p.objects.Spec->Dirty());
        p.objects.Spec->setDirty(false);
    }
}

void tst_frmMain::stagesWithALog() {
    QTemporaryDir dir;
    QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("src")));
    writeFile(dir.filePath(QStringLiteral("src/a.txt")), "a");
    writeFile(dir.filePath(QStringLiteral("job.spc")),
              "[SourcePaths]\r\nSP1=" + dir.filePath(QStringLiteral("src")).toUtf8() +
                  "\r\n[ISD]\r\nSP1=False\r\n[SP1FGs]\r\nFG1=*.TXT\r\n[SP1FG1DPs]\r\nDP1=" +
                  dir.filePath(QStringLiteral("dst")).toUtf8() + "\r\n");
    ScriptedMsgBox boxes;
    ScriptedFileDialog dialogs;
    Program p(dir.path(), "[FSOptions]\r\nCreateLog=True\r\n");
    dialogs.queue(dir.filePath(QStringLiteral("job.spc")));
    p.main->mnuFileOpenSpecs_Click();

    dialogs.queueCancel(); // no log name, no staging
    p.main->mnuFileStageFiles_Click();
    dialogs.queue(dir.filePath(QStringLiteral("missing/new.log")));
    p.main->mnuFileStageFiles_Click();
    QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("dst/a.txt"))));
    QCOMPARE(boxes.shown().size(), 1);
    QCOMPARE(boxes.shown().at(0).prompt,
             QStringLiteral("Error 76 occurred.  Message as follows:\r\nPath not found"));
    QCOMPARE(boxes.shown().at(0).title, QStringLiteral("Error Saving Spec File"));
    QCOMPARE(boxes.shown().at(0).icon, MsgIcon::Exclamation);
    boxes.clear();

    const QString log = dir.filePath(QStringLiteral("new.log"));
    dialogs.queue(log);
    whenModal<frmStageInfo>([](frmStageInfo* info) { info->accept(); });
    p.main->mnuFileStageFiles_Click();
    const FileDialogRequest& asked = dialogs.shown().last();
    QCOMPARE(asked.title, QStringLiteral("Specify the Staging Log Filename"));
    QCOMPARE(asked.fileName, QStringLiteral("Staging.log"));
    QCOMPARE(asked.existence, FileExistence::MayBeNew);
    QCOMPARE(readAll(dir.filePath(QStringLiteral("dst/a.txt"))), QByteArray("a"));
    QVERIFY(readAll(log).contains("Staging completed\r\n"));
    QVERIFY(boxes.shown().isEmpty());
}

void tst_frmMain::splitterDragStaysInBounds() {
    QTemporaryDir dir;
    Program p(dir.path());
    auto* splitter = p.find<QWidget>(QStringLiteral("imgSplitter"));
    QCOMPARE(p.main->splitterLeft(), 3390.0); // the default 3400, on the grid
    QTest::mousePress(splitter, Qt::LeftButton, {}, QPoint(2, 2));
    QVERIFY(p.find<QWidget>(QStringLiteral("picSplitter"))->isVisible());
    QMouseEvent move(QEvent::MouseMove, QPointF(-400, 2), splitter->mapToGlobal(QPointF(-400, 2)),
                     Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(splitter, &move);
    QCOMPARE(p.main->splitterLeft(), 3390.0); // the panes wait for the release
    QTest::mouseRelease(splitter, Qt::LeftButton, {}, QPoint(-400, 2));
    QCOMPARE(p.main->splitterLeft(), 1500.0);
    QCOMPARE(p.objects.Settings->SplitterLoc(), 1500);
    QVERIFY(!p.find<QWidget>(QStringLiteral("picSplitter"))->isVisible());

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

void tst_frmMain::defaultSizeShowsEveryButtonAndLabel() {
    QTemporaryDir dir;
    Program p(dir.path());
    QCOMPARE(p.main->size(), QSize(p.main->scale().toPixels(7005), p.main->scale().toPixels(5505)));
    auto* bar = p.find<QToolBar>(QStringLiteral("tbrToolBar"));
    QVERIFY(p.find<QToolButton>(QStringLiteral("What'sThis"))->isVisible());
    QVERIFY(!bar->findChild<QWidget*>(QStringLiteral("qt_toolbar_ext_button"))->isVisible());
    auto* list = p.find<QTreeWidget>(QStringLiteral("lvwSPProps"));
    const int longest = static_cast<QAbstractItemView*>(list)->sizeHintForColumn(0);
    QVERIFY2(list->columnWidth(0) >= longest, qPrintable(QString::number(longest)));
    QVERIFY(list->columnWidth(0) + list->columnWidth(1) <= list->viewport()->width());
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

void tst_frmMain::everyMenuEntryHasAnAccessKey() {
    QTemporaryDir dir;
    Program p(dir.path());
    for (QAction* a : p.main->findChildren<QAction*>()) {
        if (a->objectName().startsWith(QLatin1String("mnu")) && !a->isSeparator())
            QVERIFY2(a->text().contains(u'&'), qPrintable(a->objectName()));
    }
}

void tst_frmMain::helpMenuOpensItsTopics() {
    QTemporaryDir dir;
    Program p(dir.path());
    ScriptedHelp help;
    for (const char* item : {"mnuHelpContents", "mnuHelpSearch", "mnuHelpMainScreen"})
        p.action(QString::fromLatin1(item))->trigger();
    const QList<HelpRequest> expected = {
        {0, HelpCommand::Contents}, {0, HelpCommand::PartialKey}, {5, HelpCommand::Context}};
    QVERIFY(help.requests() == expected);
}

void tst_frmMain::iconsNeedNoIconTheme() {
    QTemporaryDir dir;
    Program p(dir.path());
    p.openWorkedExample();
    QList<std::pair<QString, QIcon>> icons;
    for (QAction* a : p.find<QToolBar>(QStringLiteral("tbrToolBar"))->actions()) {
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

    // Source path, file group, destination path: each level of the tree shows its own image.
    const QTreeWidgetItem* node = p.tree()->topLevelItem(0);
    for (int image :
         {SpecTreeImage::SourcePath, SpecTreeImage::FileGroup, SpecTreeImage::DestPath}) {
        QVERIFY2(drawn(node->icon(0), 16) == drawn(treeImage(image), 16),
                 qPrintable(node->text(0)));
        node = node->child(0);
    }
}

QTEST_MAIN(tst_frmMain)
#include "tst_frmMain.moc"
