#include "ui/editor/DestPathsPage.h"

#include "platform/MsgBox.h"
#include "platform/SlotBarrier.h"
#include "ui/controls/DirList.h"
#include "ui/controls/DriveList.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/PathBrowser.h"
#include "ui/editor/frmCESpecs.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>

namespace ondrel {

namespace {

const QString kTitle = QStringLiteral("Create/Edit Destination Paths");
const QString kAddError = QStringLiteral("Add Destination Path Error");

} // namespace

DestPathsPage::DestPathsPage(frmCESpecs& editor, QWidget* parent) : EditorPage(editor, parent) {
    cboDPFGs = new QComboBox(this);
    cboDPFGs->setObjectName(QStringLiteral("cboDPFGs"));
    cboDPFGs->view()->setAccessibleName(QStringLiteral("File groups"));
    auto* lblGroups = new QLabel(QStringLiteral("File &Group:"), this);
    lblGroups->setBuddy(cboDPFGs);

    m_browser = new PathBrowser(QStringLiteral("DP"), this);

    lstDPList = new QListWidget(this);
    lstDPList->setObjectName(QStringLiteral("lstDPList"));
    lstDPList->setAccessibleName(QStringLiteral("Destination paths"));
    auto* lblList = new QLabel(QStringLiteral("Destination Path &List:"), this);
    lblList->setBuddy(lstDPList);

    QHBoxLayout* buttons = makeEntryButtons(QStringLiteral("DP"), cmdDPAdd, cmdDPEdit, cmdDPDelete);
    auto* layout = new QGridLayout(this);
    layout->addWidget(m_browser->drivesCaption, 0, 0);
    layout->addWidget(m_browser->drives, 1, 0);
    layout->addWidget(m_browser->directoriesCaption, 2, 0);
    layout->addWidget(m_browser->directories, 3, 0, 3, 1);
    layout->addWidget(lblGroups, 0, 1);
    layout->addWidget(cboDPFGs, 1, 1);
    layout->addWidget(lblList, 2, 1);
    layout->addWidget(lstDPList, 3, 1, 3, 1);
    layout->addLayout(buttons, 6, 1);
    layout->addLayout(m_browser->pathRow, 7, 0, 1, 2);
    layout->setRowStretch(5, 1);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(1, 1);

    connect(cboDPFGs, &QComboBox::activated, this,
            guarded(QStringLiteral("cboDPFGs_Click"), this, &DestPathsPage::cboDPFGs_Click));
    connect(lstDPList, &QListWidget::clicked, this,
            guarded(QStringLiteral("lstDPList_Click"), this, &DestPathsPage::lstDPList_Click));
    connect(lstDPList, &QListWidget::currentRowChanged, this,
            guarded(QStringLiteral("lstDPList_Click"), this, &DestPathsPage::lstDPList_Click));
    connect(cmdDPAdd, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdDPAdd_Click"), this, &DestPathsPage::cmdDPAdd_Click));
    connect(cmdDPEdit, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdDPEdit_Click"), this, &DestPathsPage::cmdDPEdit_Click));
    connect(cmdDPDelete, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdDPDelete_Click"), this, &DestPathsPage::cmdDPDelete_Click));
}

void DestPathsPage::rebuild() {
    lstDPList->clear(); // the page switch has already ended any edit
    {
        const QSignalBlocker quiet(cboDPFGs);
        cboDPFGs->clear();
        if (m_editor.cboSPs->currentIndex() < 0) // every source path was deleted
            return;
        for (const auto& fg : m_editor.WorkingSPs->Item(m_editor.cboSPs->currentText())->FGs())
            cboDPFGs->addItem(fg->Name());
    }
    if (cboDPFGs->count() > 0) {
        cboDPFGs->setCurrentIndex(0);
        cboDPFGs_Click();
    }
}

clsFileGroup& DestPathsPage::chosenGroup() const {
    return *m_editor.WorkingSPs->Item(m_editor.cboSPs->currentText())
                ->FGs()
                .Item(cboDPFGs->currentText());
}

void DestPathsPage::cboDPFGs_Click() {
    // Listing another group is no click in the list: an edit under way goes on.
    const QSignalBlocker quiet(lstDPList);
    lstDPList->clear();
    for (const auto& dp : chosenGroup().DPs())
        lstDPList->addItem(dp->Name());
}

Result<void> DestPathsPage::browseTo(const QString& drive, const QString& path) {
    return m_browser->browseTo(drive, path);
}

void DestPathsPage::fallBackTo(const QString& drive) {
    m_browser->fallBackTo(drive);
}

void DestPathsPage::refreshBrowser() {
    m_browser->refresh();
}

void DestPathsPage::lstDPList_Click() {
    if (m_editor.EditMode != 0)
        m_editor.EndEditMode();
}

void DestPathsPage::cmdDPAdd_Click() {
    if (cboDPFGs->currentText().isEmpty()) {
        MsgBox(QStringLiteral(
                   "You need to create a File Group before you can add a Destination Path."),
               MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("No File Group"));
        return;
    }
    const QString path = m_browser->path();
    for (int i = 0; i < lstDPList->count(); ++i) {
        if (lstDPList->item(i)->text() == path) {
            MsgBox(QStringLiteral("Destination Path '") + path +
                       QStringLiteral("' already exists for this File Group."),
                   MsgButtons::OK, MsgIcon::Exclamation, kTitle);
            return;
        }
    }
    try {
        clsDestPaths& dps = chosenGroup().DPs();
        if (m_editor.EditMode == 3) {
            // After another group was chosen the position may lie past its list: no such entry.
            const int at = m_editor.EditIndex;
            const auto dp =
                dps.Item(at < lstDPList->count() ? lstDPList->item(at)->text() : QString());
            dps.Rename(dp->Name(), path, dp);
            lstDPList->item(at)->setText(path);
            m_editor.EndEditMode();
        } else {
            dps.Add(path);
            lstDPList->addItem(path);
        }
    } catch (const Error& error) {
        if (error.number() == ErrNo::InvalidCall)
            MsgBox(QStringLiteral("Invalid procedure call or argument in '") + error.source() +
                       QStringLiteral("'.  Contact Technical Support for assistance."),
                   MsgButtons::OK, MsgIcon::Exclamation, kAddError);
        else
            MsgBox(ErrorReportText(error), MsgButtons::OK, MsgIcon::Exclamation, kAddError);
    }
}

void DestPathsPage::cmdDPEdit_Click() {
    if (m_editor.EditMode == 3) {
        m_editor.EndEditMode();
        return;
    }
    const int row = selectedRow(lstDPList);
    if (row < 0)
        return;
    const QString name = lstDPList->item(row)->text();
    m_editor.beginEdit(3, row);
    m_browser->openAtEntry(name, QStringLiteral("Destination Path"),
                           QStringLiteral("Edit Destination Path"));
}

void DestPathsPage::cmdDPDelete_Click() {
    const int row = selectedRow(lstDPList);
    if (row < 0)
        return;
    const QString name = lstDPList->item(row)->text();
    if (m_editor.program().Settings->ShowConfirmMsgs() &&
        MsgBox(QStringLiteral("OK to delete Destination Path '") + name + QStringLiteral("'?"),
               MsgButtons::OKCancel, MsgIcon::Question, kTitle) != MsgAnswer::OK)
        return;
    chosenGroup().DPs().Remove(name);
    delete lstDPList->takeItem(row);
    if (m_editor.EditMode == 3)
        m_editor.EndEditMode();
}

} // namespace ondrel
