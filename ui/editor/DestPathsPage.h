#pragma once

#include "ui/editor/EditorPage.h"

namespace ondrel {

// The editor's page of the destination paths of one file group of the source path chosen above,
// with a browser to pick them.
class DestPathsPage : public EditorPage {
    Q_OBJECT

public:
    DestPathsPage(frmCESpecs& editor, QWidget* parent);

    void rebuild() override;
    QPushButton* editButton() const override { return cmdDPEdit; }

private:
    QPushButton* cmdDPEdit = nullptr;
};

} // namespace ondrel
