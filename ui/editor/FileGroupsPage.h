#pragma once

#include "ui/editor/EditorPage.h"

namespace ondrel {

// The editor's page of the file groups of the source path chosen above: the masks, edited in a
// one-row grid.
class FileGroupsPage : public EditorPage {
    Q_OBJECT

public:
    FileGroupsPage(frmCESpecs& editor, QWidget* parent);

    void rebuild() override;
    QPushButton* editButton() const override { return cmdFGEdit; }

private:
    QPushButton* cmdFGEdit = nullptr;
};

} // namespace ondrel
