#include "ui/editor/DestPathsPage.h"

#include "ui/editor/frmCESpecs.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace ondrel {

DestPathsPage::DestPathsPage(frmCESpecs& editor, QWidget* parent) : EditorPage(editor, parent) {
    cmdDPEdit = new QPushButton(QStringLiteral("&Edit"), this);
    cmdDPEdit->setObjectName(QStringLiteral("cmdDPEdit"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(cmdDPEdit);
    layout->addStretch(1);
}

void DestPathsPage::rebuild() {}

} // namespace ondrel
