#include "ui/select/frmVarFileSelect.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ondrel {

frmVarFileSelect::frmVarFileSelect(ProgramObjects& program, QWidget* parent)
    : QDialog(parent), m_program(program) {
    setObjectName(QStringLiteral("frmVarFileSelect"));
    setWindowTitle(QStringLiteral("Select Files For Source Path <various>"));

    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addStretch(1);
    layout->addWidget(buttons);
    resize(560, 420);
}

} // namespace ondrel
