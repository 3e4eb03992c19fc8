#include "ui/editor/FileGroupsPage.h"

#include "ui/editor/frmCESpecs.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace ondrel {

FileGroupsPage::FileGroupsPage(frmCESpecs& editor, QWidget* parent) : EditorPage(editor, parent) {
    cmdFGEdit = new QPushButton(QStringLiteral("&Edit"), this);
    cmdFGEdit->setObjectName(QStringLiteral("cmdFGEdit"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(cmdFGEdit);
    layout->addStretch(1);
}

void FileGroupsPage::rebuild() {}

} // namespace ondrel
