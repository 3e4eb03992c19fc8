#include "ui/editor/frmCESpecs.h"

#include "platform/Help.h"
#include "ui/controls/MainWindowViews.h"
#include "ui/controls/ProgramObjects.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace ondrel {

frmCESpecs::frmCESpecs(ProgramObjects& program, QWidget* parent)
    : QDialog(parent), m_program(program) {
    setObjectName(QStringLiteral("frmCESpecs"));
    setWindowTitle(QStringLiteral("Create/Edit Specs"));

    lblSPs = new QLabel(QStringLiteral("Source &Path:"), this);
    lblSPs->setObjectName(QStringLiteral("lblSPs"));
    cboSPs = new QComboBox(this);
    cboSPs->setObjectName(QStringLiteral("cboSPs"));
    cboSPs->setAccessibleName(QStringLiteral("Source path"));
    lblSPs->setBuddy(cboSPs);

    tdgCESpecs = new QTabWidget(this);
    tdgCESpecs->setObjectName(QStringLiteral("tdgCESpecs"));
    tdgCESpecs->setAccessibleName(QStringLiteral("Spec levels"));
    for (const QString& caption : {QStringLiteral("&Source Paths"), QStringLiteral("&File Groups"),
                                   QStringLiteral("Destination &Paths")})
        tdgCESpecs->addTab(new QWidget(tdgCESpecs), caption);

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

    auto* chooser = new QHBoxLayout;
    chooser->addWidget(lblSPs);
    chooser->addWidget(cboSPs, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(chooser);
    layout->addWidget(tdgCESpecs, 1);
    layout->addWidget(buttons);
    resize(560, 420);

    connect(cmdOK, &QPushButton::clicked, this, &frmCESpecs::cmdOK_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &frmCESpecs::cmdCancel_Click);
    connect(cmdHelp, &QPushButton::clicked, this, &frmCESpecs::cmdHelp_Click);
}

void frmCESpecs::cmdOK_Click() {
    clsSpecFile& spec = *m_program.Spec;
    spec.setSPs(WorkingSPs);
    spec.setDirty(true);
    WorkingSPs.reset();
    m_program.MainViews->UpdtSpecList();
    m_program.MainViews->UpdtISD(spec.SPs().Item(1)->InclSubDirs());
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
