#include "ui/main/frmAbout.h"

#include "ui/main/MainIcons.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace ondrel {

frmAbout::frmAbout(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About File Ondrel"));

    auto* icon = new QLabel(this);
    icon->setObjectName(QStringLiteral("imgIcon"));
    icon->setPixmap(programIcon().pixmap(QSize(64, 64), icon->devicePixelRatioF()));
    icon->setAccessibleName(QStringLiteral("File Ondrel icon"));

    auto* name = new QLabel(QStringLiteral("File Ondrel"), this);
    name->setObjectName(QStringLiteral("lblTitle"));
    QFont big = name->font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    big.setBold(true);
    name->setFont(big);
    auto* version = new QLabel(QStringLiteral("Version ") + QStringLiteral(ONDREL_VERSION), this);
    version->setObjectName(QStringLiteral("lblVersion"));
    auto* description = new QLabel(QStringLiteral("Customizable file copying utility"), this);
    description->setObjectName(QStringLiteral("lblDescription"));

    auto* cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto* texts = new QVBoxLayout;
    texts->addWidget(name);
    texts->addWidget(version);
    texts->addWidget(description);
    auto* top = new QHBoxLayout;
    top->addWidget(icon, 0, Qt::AlignTop);
    top->addSpacing(12);
    top->addLayout(texts, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

} // namespace ondrel
