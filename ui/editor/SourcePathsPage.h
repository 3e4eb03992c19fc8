#pragma once

#include "ui/editor/EditorPage.h"

namespace ondrel {

// The editor's page of the source paths of the spec, with a browser to pick them and a check box
// per entry for its sub-directories.
class SourcePathsPage : public EditorPage {
    Q_OBJECT

public:
    SourcePathsPage(frmCESpecs& editor, QWidget* parent);

    void rebuild() override;
    QPushButton* editButton() const override { return cmdSPEdit; }

private:
    QPushButton* cmdSPEdit = nullptr;
};

} // namespace ondrel
