#pragma once

#include "app/MainWindowLayout.h"
#include "app/RecentFilesList.h"
#include "ui/controls/MainWindowViews.h"
#include "ui/main/MainWindowPlacement.h"

#include <QMainWindow>

#include <array>
#include <functional>

class QAction;
class QLabel;
class QMenu;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;
class QFrame;

namespace ondrel {

struct ProgramObjects;
class clsOndrelApp;
class clsSpecFile;

// The program's main window: the current spec as a tree beside the staging options, with the
// menus, tool bar and status bar that create, open, save, edit and stage specs. Its unload ends
// the program. The window is split by concern over several files: frmMain.cpp (building it,
// start-up and shut-down), frmMainTree.cpp (the spec tree and the edit commands),
// frmMainFileCommands.cpp (the File menu and the recent-files list), frmMainOptionsPane.cpp (the
// staging options, tool bar and view commands) and frmMainLayout.cpp (panes and splitter).
class frmMain : public QMainWindow, public MainWindowViews {
    Q_OBJECT

public:
    explicit frmMain(ProgramObjects& program);
    ~frmMain() override;

    // Loads the window (once) and shows it.
    void Show();

    // The spec tree.
    void UpdtSpecList() override;
    // The staging options.
    void UpdtStagePropsList() override;
    void UpdtISD(bool InclSubDirs) override;
    void ShowStageOpts();
    void HideStageOpts();
    void ShowToolbar();
    void HideToolbar();
    void ShowStatusBar();

    // The layout, in twips.
    void SizeControls(double X);
    double splitterLeft() const;
    TwipsScale scale() const { return TwipsScale::of(this); }
    MainWindowPlacement& placement() { return m_placement; }

    // What the user reaches through menus, tool bar and tree; public so that the dialogs and
    // tests can run them as the user does.
    void mnuFileNewSpecs_Click();
    void mnuFileOpenSpecs_Click();
    void mnuFileSaveSpecs_Click();
    void mnuFileSaveSpecsAs_Click();
    void mnuFileStageFiles_Click();
    void mnuFileMRU_Click(int Index);
    void mnuFileClose_Click();
    void mnuEditSpecs_Click();
    void mnuEditVarFileSelect_Click();
    void mnuEditFSOptionsUser_Click();
    void mnuEditFSOptionsStaging_Click();
    void mnuViewExpandTVW_Click();
    void mnuViewContractTVW_Click();
    void mnuViewToolbar_Click();
    void mnuViewStagingOptions_Click();
    void mnuHelpContents_Click();
    void mnuHelpSearch_Click();
    void mnuHelpMainScreen_Click();
    void mnuHelpAbout_Click();
    void mnuTVContextCESPs_Click();
    void mnuTVContextCEFGs_Click();
    void mnuTVContextCEDPs_Click();
    void mnuTVContextISD_Click();
    void tbrToolBar_ButtonClick(const QString& Key);
    void tvwSpecs_NodeClick(QTreeWidgetItem* Node);
    void tvwSpecs_MouseUp(Qt::MouseButton Button, const QPoint& at);
    // A control dropped on the tree at X (twips): the splitter lays the panes out there, without
    // storing the position as a drag's release does; anything else is ignored.
    void tvwSpecs_DragDrop(QObject* Source, double X);

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // frmMain.cpp
    void buildControls();
    void Form_Load();
    void Form_Unload(bool& Cancel);
    clsOndrelApp& settings() const;
    clsSpecFile& spec() const;

    // frmMainMenus.cpp
    void buildMenus();
    void buildToolBar();
    void buildContextMenu();
    void nameToolBarExtension();
    QAction* addAction(QMenu* menu, const QString& name, const QString& caption,
                       void (frmMain::*handler)());
    void connectToggle(QAction* action, const QString& routine,
                       const std::function<void()>& handler);

    // frmMainTree.cpp
    void LoadEditorSpecs(int RootIndex);
    void openEditor(int page);
    void openOptions(int page);
    int selectedRootIndex() const;
    void setAllExpanded(bool expanded);

    // frmMainFileCommands.cpp
    void OpenSpecFile(const QString& FileTitle, const QString& FileName);
    void RefreshMRU(const QString& Action, const QString& FileTitle, const QString& FilePath);
    void SaveMRU();
    void showRecentFiles();
    void setPathFromFileName(const QString& FileName);

    // frmMainLayout.cpp
    void Form_Resize();
    void imgSplitter_MouseDown();
    void imgSplitter_MouseMove(Qt::MouseButtons Button, double X);
    void imgSplitter_MouseUp();
    MainWindowLayout::Window layoutInputs() const;
    QSize clientSize() const;
    void place(QWidget* widget, const TwipsRect& rect) const;

    ProgramObjects& m_program;
    MainWindowPlacement m_placement;
    bool m_loaded = false;

    QWidget* m_client = nullptr;
    QToolBar* tbrToolBar = nullptr;
    QWidget* picTitles = nullptr;
    std::array<QLabel*, 2> lblSpecInfo{};
    QTreeWidget* tvwSpecs = nullptr;
    QTreeWidget* lvwSPProps = nullptr;
    QWidget* imgSplitter = nullptr;
    QFrame* picSplitter = nullptr;
    QLabel* m_statusDate = nullptr;
    QLabel* m_statusTime = nullptr;

    QMenu* mnuFile = nullptr;
    QMenu* mnuEdit = nullptr;
    QMenu* mnuView = nullptr;
    QMenu* mnuHelp = nullptr;
    QMenu* mnuTVContext = nullptr;
    std::array<QAction*, RecentFilesList::kEntries> mnuFileMRU{};
    QAction* mnuFileBar5 = nullptr;
    QAction* mnuViewToolbar = nullptr;
    QAction* mnuViewStagingOptions = nullptr;
    QAction* mnuTVContextBar1 = nullptr;
    QAction* mnuTVContextISD = nullptr;
    QAction* m_propertiesButton = nullptr;

    RecentFilesList m_recentFiles;
    QString strCurrentSP;
    qint16 intNewSpecCount = 0;
    QString m_dialogInitDir;
    bool bMoving = false;
    bool m_rebuildingTree = false;
    TwipsRect m_splitterRect;
};

} // namespace ondrel
