// The main window's menu bar, tool bar and the spec tree's context menu. A tool-bar button runs
// the same command as its menu entry.
#include "ui/main/frmMain.h"

#include "platform/SlotBarrier.h"
#include "ui/main/MainIcons.h"

#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>

namespace ondrel {

QAction* frmMain::addAction(QMenu* menu, const QString& name, const QString& caption,
                            void (frmMain::*handler)()) {
    auto* action = new QAction(caption, this);
    action->setObjectName(name);
    menu->addAction(action);
    if (handler != nullptr)
        connect(action, &QAction::triggered, this,
                guarded(name + QStringLiteral("_Click"), this, handler));
    return action;
}

void frmMain::connectToggle(QAction* action, const QString& routine,
                            const std::function<void()>& handler) {
    // A check mark shows a state that the handlers keep; a click alone must not flip it, since
    // the handlers decide by the mark as it stood when the user clicked.
    action->setCheckable(true);
    connect(action, &QAction::triggered, this, [action, routine, handler](bool checked) {
        action->setChecked(!checked);
        runBehindBarrier(routine, handler);
    });
}

void frmMain::buildMenus() {
    QMenuBar* bar = menuBar();
    mnuFile = bar->addMenu(QStringLiteral("&File"));
    mnuFile->setObjectName(QStringLiteral("mnuFile"));
    addAction(mnuFile, QStringLiteral("mnuFileNewSpecs"), QStringLiteral("&New Specs"),
              &frmMain::mnuFileNewSpecs_Click)
        ->setShortcut(QKeySequence::New);
    addAction(mnuFile, QStringLiteral("mnuFileOpenSpecs"), QStringLiteral("&Open Spec File"),
              &frmMain::mnuFileOpenSpecs_Click)
        ->setShortcut(QKeySequence::Open);
    addAction(mnuFile, QStringLiteral("mnuFileSaveSpecs"), QStringLiteral("&Save Specs"),
              &frmMain::mnuFileSaveSpecs_Click)
        ->setShortcut(QKeySequence::Save);
    addAction(mnuFile, QStringLiteral("mnuFileSaveSpecsAs"), QStringLiteral("Save Specs &As..."),
              &frmMain::mnuFileSaveSpecsAs_Click)
        ->setShortcut(QKeySequence::SaveAs);
    mnuFile->addSeparator();
    addAction(mnuFile, QStringLiteral("mnuFileStageFiles"), QStringLiteral("Stage &Files"),
              &frmMain::mnuFileStageFiles_Click);
    mnuFile->addSeparator();
    for (int i = 0; i < RecentFilesList::kEntries; ++i) {
        mnuFileMRU[i] =
            addAction(mnuFile, QStringLiteral("mnuFileMRU(%1)").arg(i), QString(), nullptr);
        connect(mnuFileMRU[i], &QAction::triggered, this,
                guarded(QStringLiteral("mnuFileMRU_Click"), [this, i] { mnuFileMRU_Click(i); }));
        mnuFileMRU[i]->setVisible(false);
    }
    mnuFileBar5 = mnuFile->addSeparator();
    mnuFileBar5->setObjectName(QStringLiteral("mnuFileBar5"));
    mnuFileBar5->setVisible(false);
    addAction(mnuFile, QStringLiteral("mnuFileClose"), QStringLiteral("&Close"),
              &frmMain::mnuFileClose_Click)
        ->setShortcut(QKeySequence::Quit);

    mnuEdit = bar->addMenu(QStringLiteral("&Edit"));
    mnuEdit->setObjectName(QStringLiteral("mnuEdit"));
    addAction(mnuEdit, QStringLiteral("mnuEditSpecs"), QStringLiteral("&Edit Specs"),
              &frmMain::mnuEditSpecs_Click);
    addAction(mnuEdit, QStringLiteral("mnuEditVarFileSelect"),
              QStringLiteral("&Select Files For SP <various>"),
              &frmMain::mnuEditVarFileSelect_Click);
    mnuEdit->addSeparator();
    QMenu* options = mnuEdit->addMenu(QStringLiteral("File Ondrel &Options"));
    options->menuAction()->setObjectName(QStringLiteral("mnuEditFSOptions"));
    addAction(options, QStringLiteral("mnuEditFSOptionsUser"), QStringLiteral("&User Options"),
              &frmMain::mnuEditFSOptionsUser_Click);
    addAction(options, QStringLiteral("mnuEditFSOptionsStaging"),
              QStringLiteral("&Staging Options"), &frmMain::mnuEditFSOptionsStaging_Click);
    mnuEdit->addSeparator();
    // Cut, Copy, Paste and Delete are there to be seen; they do nothing.
    addAction(mnuEdit, QStringLiteral("mnuEditCut"), QStringLiteral("Cu&t"), nullptr);
    addAction(mnuEdit, QStringLiteral("mnuEditCopy"), QStringLiteral("&Copy"), nullptr);
    addAction(mnuEdit, QStringLiteral("mnuEditPaste"), QStringLiteral("&Paste"), nullptr);
    addAction(mnuEdit, QStringLiteral("mnuEditDelete"), QStringLiteral("&Delete"), nullptr);

    mnuView = bar->addMenu(QStringLiteral("&View"));
    mnuView->setObjectName(QStringLiteral("mnuView"));
    addAction(mnuView, QStringLiteral("mnuViewExpandTVW"), QStringLiteral("&Expand Spec Listing"),
              &frmMain::mnuViewExpandTVW_Click);
    addAction(mnuView, QStringLiteral("mnuViewContractTVW"),
              QStringLiteral("&Contract Spec Listing"), &frmMain::mnuViewContractTVW_Click);
    mnuView->addSeparator();
    mnuViewToolbar =
        addAction(mnuView, QStringLiteral("mnuViewToolbar"), QStringLiteral("&Toolbar"), nullptr);
    connectToggle(mnuViewToolbar, QStringLiteral("mnuViewToolbar_Click"),
                  [this] { mnuViewToolbar_Click(); });
    QAction* statusBarEntry = addAction(mnuView, QStringLiteral("mnuViewStatusBar"),
                                        QStringLiteral("Status &Bar"), nullptr);
    // Nothing hides the status bar: its entry stays checked.
    connectToggle(statusBarEntry, QStringLiteral("mnuViewStatusBar_Click"), [] {});
    statusBarEntry->setChecked(true);
    mnuViewStagingOptions = addAction(mnuView, QStringLiteral("mnuViewStagingOptions"),
                                      QStringLiteral("&Staging Options"), nullptr);
    connectToggle(mnuViewStagingOptions, QStringLiteral("mnuViewStagingOptions_Click"),
                  [this] { mnuViewStagingOptions_Click(); });

    mnuHelp = bar->addMenu(QStringLiteral("&Help"));
    mnuHelp->setObjectName(QStringLiteral("mnuHelp"));
    addAction(mnuHelp, QStringLiteral("mnuHelpContents"), QStringLiteral("&Contents"),
              &frmMain::mnuHelpContents_Click);
    addAction(mnuHelp, QStringLiteral("mnuHelpSearch"), QStringLiteral("&Search For Help On..."),
              &frmMain::mnuHelpSearch_Click);
    addAction(mnuHelp, QStringLiteral("mnuHelpMainScreen"), QStringLiteral("&Main Screen"),
              &frmMain::mnuHelpMainScreen_Click)
        ->setShortcut(QKeySequence::HelpContents);
    addAction(mnuHelp, QStringLiteral("mnuHelpWhatsThis"), QStringLiteral("&What's This Help"),
              nullptr);
    mnuHelp->addSeparator();
    addAction(mnuHelp, QStringLiteral("mnuHelpAbout"), QStringLiteral("&About File Ondrel..."),
              &frmMain::mnuHelpAbout_Click);
}

void frmMain::buildToolBar() {
    struct Button {
        const char* key;
        const char* toolTip;
        const char* accessibleName;
    };
    // In tool-bar order; a button without a tool tip has no command.
    static const Button kButtons[] = {
        {"New", "New Specs", "New Specs"},
        {"Open", "Open Specs", "Open Specs"},
        {"Save", "Save Specs", "Save Specs"},
        {"Stage", "Stage Files", "Stage Files"},
        {nullptr, nullptr, nullptr},
        {"EditSpecs", "Edit Specs", "Edit Specs"},
        {"VarFileSelect", "Select files for Source Path <various>",
         "Select files for Source Path <various>"},
        {"Options", "Edit Staging Options", "Edit Staging Options"},
        {nullptr, nullptr, nullptr},
        {"Copy", "", "Copy"},
        {"Paste", "", "Paste"},
        {"Delete", "", "Delete"},
        {nullptr, nullptr, nullptr},
        {"ExpandTVW", "Expand Spec Listing", "Expand Spec Listing"},
        {"ContractTVW", "Contract Spec Listing", "Contract Spec Listing"},
        {"Properties", "Show/Hide Staging Options", "Staging Options"},
        {nullptr, nullptr, nullptr},
        {"What'sThis", "Activate What's This? Help", "What's This Help"},
    };
    for (const Button& b : kButtons) {
        if (b.key == nullptr) {
            tbrToolBar->addSeparator();
            continue;
        }
        const QString key = QString::fromLatin1(b.key);
        auto* action = new QAction(mainIcon(key), QString::fromLatin1(b.accessibleName), this);
        action->setObjectName(QStringLiteral("tbrToolBar.") + key);
        action->setData(key);
        action->setToolTip(QString::fromLatin1(b.toolTip));
        tbrToolBar->addAction(action);
        QWidget* button = tbrToolBar->widgetForAction(action);
        button->setObjectName(key);
        button->setAccessibleName(QString::fromLatin1(b.accessibleName));
        if (*b.toolTip == '\0')
            button->setToolTip(QString());
        if (key == QLatin1String("Properties")) {
            connectToggle(action, QStringLiteral("tbrToolBar_ButtonClick"),
                          [this, key] { tbrToolBar_ButtonClick(key); });
            m_propertiesButton = action;
        } else {
            connect(action, &QAction::triggered, this,
                    guarded(QStringLiteral("tbrToolBar_ButtonClick"),
                            [this, key] { tbrToolBar_ButtonClick(key); }));
        }
    }
    nameToolBarExtension();
}

void frmMain::nameToolBarExtension() {
    // The button that shows the buttons a narrow window has no room for.
    if (auto* more = tbrToolBar->findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button")))
        more->setAccessibleName(QStringLiteral("More buttons"));
    // And the one that shows the menus a narrow window has no room for.
    if (auto* more = menuBar()->findChild<QToolButton*>(QStringLiteral("qt_menubar_ext_button")))
        more->setAccessibleName(QStringLiteral("More menus"));
}

void frmMain::buildContextMenu() {
    mnuTVContext = new QMenu(QStringLiteral("TVContext"), this);
    mnuTVContext->setObjectName(QStringLiteral("mnuTVContext"));
    QMenu* ce = mnuTVContext->addMenu(QStringLiteral("&Create/Edit"));
    ce->menuAction()->setObjectName(QStringLiteral("mnuTVContextCE"));
    addAction(ce, QStringLiteral("mnuTVContextCESPs"), QStringLiteral("&Source Paths"),
              &frmMain::mnuTVContextCESPs_Click);
    addAction(ce, QStringLiteral("mnuTVContextCEFGs"), QStringLiteral("&File Groups"),
              &frmMain::mnuTVContextCEFGs_Click);
    addAction(ce, QStringLiteral("mnuTVContextCEDPs"), QStringLiteral("Destination &Paths"),
              &frmMain::mnuTVContextCEDPs_Click);
    addAction(mnuTVContext, QStringLiteral("mnuTVContextDelete"), QStringLiteral("&Delete"),
              nullptr);
    mnuTVContextBar1 = mnuTVContext->addSeparator();
    mnuTVContextBar1->setObjectName(QStringLiteral("mnuTVContextBar1"));
    mnuTVContextISD = addAction(mnuTVContext, QStringLiteral("mnuTVContextISD"),
                                QStringLiteral("&Include Subdirectories"), nullptr);
    connectToggle(mnuTVContextISD, QStringLiteral("mnuTVContextISD_Click"),
                  [this] { mnuTVContextISD_Click(); });
    QAction* bar2 = mnuTVContext->addSeparator();
    bar2->setObjectName(QStringLiteral("mnuTVContextBar2"));
    QMenu* options = mnuTVContext->addMenu(QStringLiteral("File Ondrel &Options"));
    options->menuAction()->setObjectName(QStringLiteral("mnuTVContextOptions"));
    addAction(options, QStringLiteral("mnuTVContextOptionsUser"), QStringLiteral("&User Options"),
              &frmMain::mnuEditFSOptionsUser_Click);
    addAction(options, QStringLiteral("mnuTVContextOptionsStaging"),
              QStringLiteral("&Staging Options"), &frmMain::mnuEditFSOptionsStaging_Click);
}

} // namespace ondrel
