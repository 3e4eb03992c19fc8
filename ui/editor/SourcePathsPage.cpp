#include "ui/editor/SourcePathsPage.h"

#include "ui/editor/frmCESpecs.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace ondrel {

SourcePathsPage::SourcePathsPage(frmCESpecs& editor, QWidget* parent) : EditorPage(editor, parent) {
    cmdSPEdit = new QPushButton(QStringLiteral("&Edit"), this);
    cmdSPEdit->setObjectName(QStringLiteral("cmdSPEdit"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(cmdSPEdit);
    layout->addStretch(1);
}

void SourcePathsPage::rebuild() {}

} // namespace ondrel
