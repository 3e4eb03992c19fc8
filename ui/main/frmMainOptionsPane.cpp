// The staging options the next run will use, the tool bar, and the View commands that show and
// hide them.
#include "ui/main/frmMain.h"

#include "app/Module1.h"
#include "staging/basLibrary.h"
#include "ui/controls/ProgramObjects.h"

#include <QAction>
#include <QHash>
#include <QLabel>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>

namespace ondrel {

namespace {

QString yes(bool value) {
    return basLibrary::YesNo(value);
}

} // namespace

void frmMain::UpdtStagePropsList() {
    using Value = QString (*)(const clsOndrelApp&);
    static const QHash<QString, Value> kValues = {
        {QStringLiteral("CreateLog"), [](const clsOndrelApp& s) { return yes(s.CreateLog()); }},
        {QStringLiteral("ShowErrMsgs"), [](const clsOndrelApp& s) { return yes(s.ShowErrMsgs()); }},
        {QStringLiteral("InclArc"), [](const clsOndrelApp& s) { return yes(s.InclArc()); }},
        {QStringLiteral("InclHid"), [](const clsOndrelApp& s) { return yes(s.InclHid()); }},
        {QStringLiteral("InclRO"), [](const clsOndrelApp& s) { return yes(s.InclRO()); }},
        {QStringLiteral("InclSys"), [](const clsOndrelApp& s) { return yes(s.InclSys()); }},
        {QStringLiteral("DelSource"), [](const clsOndrelApp& s) { return yes(s.DelSource()); }},
        {QStringLiteral("CreateDirs"), [](const clsOndrelApp& s) { return yes(s.CreateDirs()); }},
        {QStringLiteral("Overwrite"),
         [](const clsOndrelApp& s) { return OverwriteModeText(s.Overwrite()); }},
        {QStringLiteral("ResetArchive"),
         [](const clsOndrelApp& s) { return yes(s.ResetArchive()); }},
    };
    // "InclSubDirs" has no entry: its value belongs to the selected source path.
    for (int i = 0; i < lvwSPProps->topLevelItemCount(); ++i) {
        QTreeWidgetItem* row = lvwSPProps->topLevelItem(i);
        if (const Value value = kValues.value(row->data(0, Qt::UserRole).toString())) {
            row->setText(1, value(settings()));
            row->setToolTip(1, row->text(1));
        }
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
