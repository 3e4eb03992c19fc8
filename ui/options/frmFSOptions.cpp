#include "ui/options/frmFSOptions.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace ondrel {

frmFSOptions::frmFSOptions(ProgramObjects& program, QWidget* parent)
    : QDialog(parent), m_program(program) {
    setObjectName(QStringLiteral("frmFSOptions"));
    setWindowTitle(QStringLiteral("File Ondrel Options"));

    tdgOptions = new QTabWidget(this);
    tdgOptions->setObjectName(QStringLiteral("tdgOptions"));
    tdgOptions->setAccessibleName(QStringLiteral("Option pages"));
    tdgOptions->addTab(new QWidget(tdgOptions), QStringLiteral("&User Options"));
    tdgOptions->addTab(new QWidget(tdgOptions), QStringLiteral("&Staging Options"));

    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tdgOptions, 1);
    layout->addWidget(buttons);
    resize(520, 400);
}

} // namespace ondrel
