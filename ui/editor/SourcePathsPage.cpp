#include "ui/editor/SourcePathsPage.h"

#include "platform/MsgBox.h"
#include "platform/SlotBarrier.h"
#include "ui/controls/DirList.h"
#include "ui/controls/DriveList.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/PathBrowser.h"
#include "ui/editor/frmCESpecs.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>

#include <utility>

namespace ondrel {

namespace {

const QString kVarious = QStringLiteral("<various>");
const QString kTitle = QStringLiteral("Create/Edit Source Paths");

} // namespace

SourcePathsPage::SourcePathsPage(frmCESpecs& editor, QWidget* parent) : EditorPage(editor, parent) {
    m_browser = new PathBrowser(QStringLiteral("SP"), this);

    lstSPList = new QListWidget(this);
    lstSPList->setObjectName(QStringLiteral("lstSPList"));
    lstSPList->setAccessibleName(QStringLiteral("Source paths"));
    lstSPList->setAccessibleDescription(
        QStringLiteral("Checked source paths include their subdirectories"));
    auto* lblList = new QLabel(QStringLiteral("Source Path &List:"), this);
    lblList->setBuddy(lstSPList);

    QHBoxLayout* buttons = makeEntryButtons(QStringLiteral("SP"), cmdSPAdd, cmdSPEdit, cmdSPDelete);
    auto* layout = new QGridLayout(this);
    layout->addWidget(m_browser->drivesCaption, 0, 0);
    layout->addWidget(m_browser->drives, 1, 0);
    layout->addWidget(m_browser->directoriesCaption, 2, 0);
    layout->addWidget(m_browser->directories, 3, 0);
    layout->addWidget(lblList, 0, 1);
    layout->addWidget(lstSPList, 1, 1, 3, 1);
    layout->addLayout(buttons, 4, 1);
    layout->addLayout(m_browser->pathRow, 5, 0, 1, 2);
    layout->setRowStretch(3, 1);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(1, 1);

    connect(lstSPList, &QListWidget::itemChanged, this,
            guarded(QStringLiteral("lstSPList_ItemCheck"), this,
                    &SourcePathsPage::lstSPList_ItemCheck));
    connect(lstSPList, &QListWidget::clicked, this,
            guarded(QStringLiteral("lstSPList_Click"), this, &SourcePathsPage::lstSPList_Click));
    connect(lstSPList, &QListWidget::currentRowChanged, this,
            guarded(QStringLiteral("lstSPList_Click"), this, &SourcePathsPage::lstSPList_Click));
    connect(cmdSPAdd, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdSPAdd_Click"), this, &SourcePathsPage::cmdSPAdd_Click));
    connect(cmdSPEdit, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdSPEdit_Click"), this, &SourcePathsPage::cmdSPEdit_Click));
    connect(
        cmdSPDelete, &QPushButton::clicked, this,
        guarded(QStringLiteral("cmdSPDelete_Click"), this, &SourcePathsPage::cmdSPDelete_Click));
}

void SourcePathsPage::rebuild() {
    const QComboBox& chooser = *m_editor.cboSPs;
    m_filling = true;
    lstSPList->clear();
    for (int i = 0; i < chooser.count(); ++i)
        addEntry(chooser.itemText(i),
                 m_editor.WorkingSPs->Item(chooser.itemText(i))->InclSubDirs());
    m_filling = false;
}

void SourcePathsPage::addEntry(const QString& name, bool checked) {
    const bool filling = std::exchange(m_filling, true);
    auto* item = new QListWidgetItem(name, lstSPList);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
    m_filling = filling;
}

Result<void> SourcePathsPage::browseTo(const QString& drive, const QString& path) {
    return m_browser->browseTo(drive, path);
}

void SourcePathsPage::fallBackTo(const QString& drive) {
    m_browser->fallBackTo(drive);
}

void SourcePathsPage::refreshBrowser() {
    m_browser->refresh();
}

void SourcePathsPage::lstSPList_Click() {
    if (!m_filling && m_editor.EditMode != 0)
        m_editor.EndEditMode();
}

void SourcePathsPage::lstSPList_ItemCheck(QListWidgetItem* item) {
    if (m_filling)
        return;
    m_editor.WorkingSPs->Item(item->text())->setInclSubDirs(item->checkState() == Qt::Checked);
}

void SourcePathsPage::cmdSPAdd_Click() {
    const QString path = m_browser->path();
    for (int i = 0; i < lstSPList->count(); ++i) {
        if (lstSPList->item(i)->text() == path) {
            MsgBox(QStringLiteral("Source Path '") + path +
                       QStringLiteral("' already exists for this Spec File."),
                   MsgButtons::OK, MsgIcon::Exclamation, kTitle);
            return;
        }
    }
    clsSourcePaths& sps = *m_editor.WorkingSPs;
    try {
        if (m_editor.EditMode == 1) {
            const int at = m_editor.EditIndex;
            const auto sp = sps.Item(lstSPList->item(at)->text());
            sps.Rename(sp->Name(), path, sp);
            lstSPList->item(at)->setText(path);
            m_editor.cboSPs->setItemText(at, path);
            m_editor.EndEditMode();
        } else {
            sps.Add(path);
            addEntry(path, false);
            m_editor.cboSPs->addItem(path);
        }
    } catch (const Error& error) {
        ShowErrorReport(error, QStringLiteral("Add Source Path"));
    }
}

int SourcePathsPage::editableRow() const {
    const int row = selectedRow(lstSPList);
    if (row >= 0 && lstSPList->item(row)->text() == kVarious) {
        MsgBox(QStringLiteral("You cannot edit or delete the Source Path '<various>'."),
               MsgButtons::OK, MsgIcon::Exclamation, kTitle);
        return -1;
    }
    return row;
}

void SourcePathsPage::cmdSPEdit_Click() {
    if (m_editor.EditMode == 1) {
        m_editor.EndEditMode();
        return;
    }
    const int row = editableRow();
    if (row < 0)
        return;
    const QString name = lstSPList->item(row)->text();
    m_editor.beginEdit(1, row);
    m_browser->openAtEntry(name, QStringLiteral("Source Path"), QStringLiteral("Edit Source Path"));
}

void SourcePathsPage::cmdSPDelete_Click() {
    const int row = editableRow();
    if (row < 0)
        return;
    const QString name = lstSPList->item(row)->text();
    if (m_editor.program().Settings->ShowConfirmMsgs() &&
        MsgBox(QStringLiteral("OK to delete Source Path '") + name +
                   QStringLiteral("'?\r\n\r\nNOTE:  All associated File Groups and Destination "
                                  "Paths will also be deleted."),
               MsgButtons::OKCancel, MsgIcon::Question, kTitle) != MsgAnswer::OK)
        return;
    m_editor.WorkingSPs->Remove(name);
    delete lstSPList->takeItem(row);
    m_editor.cboSPs->removeItem(row);
    m_editor.cboSPs->setCurrentIndex(0);
    if (m_editor.EditMode == 1)
        m_editor.EndEditMode();
}

} // namespace ondrel
