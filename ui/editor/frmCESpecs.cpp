#include "ui/editor/frmCESpecs.h"

#include "platform/Help.h"
#include "platform/MsgBox.h"
#include "platform/SlotBarrier.h"
#include "ui/controls/MainWindowViews.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/DestPathsPage.h"
#include "ui/editor/FileGroupsPage.h"
#include "ui/editor/SourcePathsPage.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

namespace ondrel {

namespace {

// The drive every system has, where the editor's browsers go when the default one is not there.
const QString kFallbackDrive = QStringLiteral("/");

void setBold(QPushButton* button, bool bold) {
    QFont font = button->font();
    font.setBold(bold);
    button->setFont(font);
}

} // namespace

frmCESpecs::frmCESpecs(ProgramObjects& program, QWidget* parent)
    : QDialog(parent), m_program(program) {
    setObjectName(QStringLiteral("frmCESpecs"));
    setWindowTitle(QStringLiteral("Create/Edit Specs"));

    lblSPs = new QLabel(QStringLiteral("S&ource Path:"), this);
    lblSPs->setObjectName(QStringLiteral("lblSPs"));
    cboSPs = new QComboBox(this);
    cboSPs->setObjectName(QStringLiteral("cboSPs"));
    cboSPs->view()->setAccessibleName(QStringLiteral("Source paths"));
    lblSPs->setBuddy(cboSPs);

    tdgCESpecs = new QTabWidget(this);
    tdgCESpecs->setObjectName(QStringLiteral("tdgCESpecs"));
    tdgCESpecs->setAccessibleName(QStringLiteral("Spec levels"));
    // Each tab holds a place for its page until the page is made.
    for (const QString& caption : {QStringLiteral("&Source Paths"), QStringLiteral("&File Groups"),
                                   QStringLiteral("Destination &Paths")}) {
        tdgCESpecs->addTab(new QWidget(tdgCESpecs), caption);
    }

    auto* chooser = new QHBoxLayout;
    chooser->addWidget(lblSPs);
    chooser->addWidget(cboSPs, 1);
    m_layout = new QVBoxLayout(this);
    m_layout->addLayout(chooser);
    m_layout->addWidget(tdgCESpecs, 1);
    resize(600, 480);

    connect(tdgCESpecs, &QTabWidget::currentChanged, this,
            guarded(QStringLiteral("tdgCESpecs_Click"), this, &frmCESpecs::tdgCESpecs_Click));
    connect(cboSPs, &QComboBox::activated, this,
            guarded(QStringLiteral("cboSPs_Click"), this, &frmCESpecs::cboSPs_Click));
}

void frmCESpecs::makePages() {
    if (m_pages[0] != nullptr)
        return;
    m_pages = {new SourcePathsPage(*this, tdgCESpecs), new FileGroupsPage(*this, tdgCESpecs),
               new DestPathsPage(*this, tdgCESpecs)};
    // The pages take their tabs' places, the tab in front staying in front.
    const QSignalBlocker quiet(tdgCESpecs);
    const int current = tdgCESpecs->currentIndex();
    for (int p = 0; p < 3; ++p) {
        QWidget* place = tdgCESpecs->widget(p);
        const QString caption = tdgCESpecs->tabText(p);
        tdgCESpecs->removeTab(p);
        tdgCESpecs->insertTab(p, m_pages[size_t(p)], caption);
        delete place;
    }
    tdgCESpecs->setCurrentIndex(current);

    // The buttons come after the pages, so that Tab reaches them last.
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    cmdHelp = new QPushButton(QStringLiteral("&Help"), this);
    cmdHelp->setObjectName(QStringLiteral("cmdHelp"));
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);
    buttons->addButton(cmdHelp, QDialogButtonBox::HelpRole);
    m_layout->addWidget(buttons);
    connect(cmdOK, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdOK_Click"), this, &frmCESpecs::cmdOK_Click));
    connect(cmdCancel, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdCancel_Click"), this, &frmCESpecs::cmdCancel_Click));
    connect(cmdHelp, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdHelp_Click"), this, &frmCESpecs::cmdHelp_Click));
}

EditorPage* frmCESpecs::page(int index) {
    makePages();
    return m_pages.at(size_t(index));
}

void frmCESpecs::Form_Load() {
    const clsOndrelApp& settings = *m_program.Settings;
    const QString drive = settings.DefaultDrive();
    bool failed = false;
    for (int p : {2, 0})
        failed = !m_pages[size_t(p)]->browseTo(drive, settings.DefaultPath()).ok() || failed;
    if (!failed || drive == kFallbackDrive)
        return;
    MsgBox(QStringLiteral("Error occurred while changing to default directory.  Check network "
                          "connections and drive mappings."),
           MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Network or Drive Error"));
    for (EditorPage* page : m_pages)
        page->fallBackTo(kFallbackDrive);
}

void frmCESpecs::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    // The program makes the dialog before it reads the settings; it loads when first shown.
    if (!m_loaded) {
        m_loaded = true;
        makePages();
        Form_Load();
    }
    tdgCESpecs_Click();
}

void frmCESpecs::mouseDoubleClickEvent(QMouseEvent* event) {
    QDialog::mouseDoubleClickEvent(event);
    for (int p : {2, 0})
        page(p)->refreshBrowser();
}

void frmCESpecs::tdgCESpecs_Click() {
    const int tab = tdgCESpecs->currentIndex();
    if (tab == 0 && cboSPs->isEnabled()) {
        cboSPs->setEnabled(false);
        lblSPs->setEnabled(false);
    } else if (tab > 0 && !cboSPs->isEnabled()) {
        cboSPs->setEnabled(true);
        lblSPs->setEnabled(true);
    }
    if (EditMode != 0)
        EndEditMode();
    if (WorkingSPs)
        page(tab)->rebuild();
}

void frmCESpecs::EndEditMode() {
    if (EditMode >= 1 && EditMode <= 3)
        setBold(page(EditMode - 1)->editButton(), false);
    EditMode = 0;
}

void frmCESpecs::beginEdit(int mode, int index) {
    EditMode = mode;
    EditIndex = index;
    setBold(page(mode - 1)->editButton(), true);
}

void frmCESpecs::cmdOK_Click() {
    clsSpecFile& spec = *m_program.Spec;
    spec.setSPs(WorkingSPs);
    spec.setDirty(true);
    WorkingSPs.reset();
    m_program.MainViews->UpdtSpecList();
    // A spec whose every source path was deleted shows no sub-directories.
    m_program.MainViews->UpdtISD(spec.SPs().Count() > 0 && spec.SPs().Item(1)->InclSubDirs());
    accept();
}

void frmCESpecs::cmdCancel_Click() {
    WorkingSPs.reset();
    QDialog::reject();
}

void frmCESpecs::cmdHelp_Click() {
    ShowHelp(11 + tdgCESpecs->currentIndex(), HelpCommand::Context);
}

} // namespace ondrel
