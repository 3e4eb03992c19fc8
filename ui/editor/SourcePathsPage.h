#pragma once

#include "ui/editor/EditorPage.h"

class QListWidget;
class QListWidgetItem;

namespace ondrel {

class PathBrowser;

// The editor's page of the source paths of the spec, with a browser to pick them and a check box
// per entry for its sub-directories. The list holds the chooser's names in the chooser's order,
// so a position in one is the same position in the other.
class SourcePathsPage : public EditorPage {
    Q_OBJECT

public:
    SourcePathsPage(frmCESpecs& editor, QWidget* parent);

    void rebuild() override;
    QPushButton* editButton() const override { return cmdSPEdit; }
    Result<void> browseTo(const QString& drive, const QString& path) override;
    void fallBackTo(const QString& drive) override;
    void refreshBrowser() override;

    void cmdSPAdd_Click();
    void cmdSPEdit_Click();
    void cmdSPDelete_Click();

private:
    void lstSPList_Click();
    void lstSPList_ItemCheck(QListWidgetItem* item);
    void addEntry(const QString& name, bool checked);
    // The selected entry's row, -1 when none is or it is "<various>" (the user is told so).
    int editableRow() const;

    PathBrowser* m_browser = nullptr;
    QListWidget* lstSPList = nullptr;
    QPushButton* cmdSPAdd = nullptr;
    QPushButton* cmdSPEdit = nullptr;
    QPushButton* cmdSPDelete = nullptr;
    bool m_filling = false;
};

} // namespace ondrel
