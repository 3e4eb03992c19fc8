// The staging options the next run will use, the tool bar, and the View commands that show and
// hide them.
#include "ui/main/frmMain.h"

#include "app/Module1.h"
#include "staging/basLibrary.h"
#include "ui/controls/ProgramObjects.h"

#include <QAction>
#include <QLabel>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>

namespace ondrel {

void frmMain::UpdtStagePropsList() {
    const clsOndrelApp& s = settings();
    for (int i = 0; i < lvwSPProps->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = lvwSPProps->topLevelItem(i);
        const QString key = row->data(0, Qt::UserRole).toString();
        QString value;
        if (key == QLatin1String("CreateLog"))
            value = basLibrary::YesNo(s.CreateLog());
        else if (key == QLatin1String("ShowErrMsgs"))
            value = basLibrary::YesNo(s.ShowErrMsgs());
        else if (key == QLatin1String("InclArc"))
            value = basLibrary::YesNo(s.InclArc());
        else if (key == QLatin1String("InclHid"))
            value = basLibrary::YesNo(s.InclHid());
        else if (key == QLatin1String("InclRO"))
            value = basLibrary::YesNo(s.InclRO());
        else if (key == QLatin1String("InclSys"))
            value = basLibrary::YesNo(s.InclSys());
        else if (key == QLatin1String("DelSource"))
            value = basLibrary::YesNo(s.DelSource());
        else if (key == QLatin1String("CreateDirs"))
            value = basLibrary::YesNo(s.CreateDirs());
        else if (key == QLatin1String("Overwrite"))
            value = OverwriteModeText(s.Overwrite());
        else if (key == QLatin1String("ResetArchive"))
            value = basLibrary::YesNo(s.ResetArchive());
        else
            continue; // "InclSubDirs" belongs to the selected source path
        row->setText(1, value);
    }
}

void frmMain::UpdtISD(bool InclSubDirs) {
    for (int i = 0; i < lvwSPProps->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = lvwSPProps->topLevelItem(i);
        if (row->data(0, Qt::UserRole).toString() == QLatin1String("InclSubDirs"))
            row->setText(1, basLibrary::YesNo(InclSubDirs));
    }
}

void frmMain::ShowStageOpts() {
    settings().setShowStageOpts(true);
    mnuViewStagingOptions->setChecked(true);
    m_propertiesButton->setChecked(true);
    m_propertiesButton->setToolTip(QStringLiteral("Hide Staging Options"));
    lvwSPProps->show();
    imgSplitter->show();
    lblSpecInfo[1]->show();
    SizeControls(settings().SplitterLoc());
}

void frmMain::HideStageOpts() {
    settings().setShowStageOpts(false);
    mnuViewStagingOptions->setChecked(false);
    m_propertiesButton->setChecked(false);
    m_propertiesButton->setToolTip(QStringLiteral("Show Staging Options"));
    lvwSPProps->hide();
    lblSpecInfo[1]->hide();
    imgSplitter->hide();
    SizeControls(MainWindowLayout::hiddenPaneSplitter(m_placement.Width()));
}

void frmMain::mnuViewStagingOptions_Click() {
    if (mnuViewStagingOptions->isChecked())
        HideStageOpts();
    else
        ShowStageOpts();
}

void frmMain::ShowToolbar() {
    settings().setShowToolbar(true);
    tbrToolBar->show();
    mnuViewToolbar->setChecked(true);
}

void frmMain::HideToolbar() {
    settings().setShowToolbar(false);
    tbrToolBar->hide();
    mnuViewToolbar->setChecked(false);
}

void frmMain::ShowStatusBar() {
    settings().setShowStatusBar(true);
    statusBar()->show();
}

void frmMain::mnuViewToolbar_Click() {
    if (mnuViewToolbar->isChecked())
        HideToolbar();
    else
        ShowToolbar();
    SizeControls(splitterLeft());
}

void frmMain::tbrToolBar_ButtonClick(const QString& Key) {
    using Handler = void (frmMain::*)();
    static const std::pair<const char*, Handler> kCommands[] = {
        {"New", &frmMain::mnuFileNewSpecs_Click},
        {"Open", &frmMain::mnuFileOpenSpecs_Click},
        {"Save", &frmMain::mnuFileSaveSpecs_Click},
        {"Stage", &frmMain::mnuFileStageFiles_Click},
        {"EditSpecs", &frmMain::mnuEditSpecs_Click},
        {"VarFileSelect", &frmMain::mnuEditVarFileSelect_Click},
        {"Options", &frmMain::mnuEditFSOptionsStaging_Click},
        {"ExpandTVW", &frmMain::mnuViewExpandTVW_Click},
        {"ContractTVW", &frmMain::mnuViewContractTVW_Click},
        {"Properties", &frmMain::mnuViewStagingOptions_Click},
    };
    for (const auto& [key, handler] : kCommands) {
        if (Key == QLatin1String(key)) {
            (this->*handler)();
            return;
        }
    }
}

} // namespace ondrel
