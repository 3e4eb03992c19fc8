#pragma once

#include "ui/editor/EditorPage.h"

class QComboBox;
class QListWidget;

namespace ondrel {

class PathBrowser;
class clsFileGroup;

// The editor's page of the destination paths of one file group of the source path chosen above,
// with a browser to pick them.
class DestPathsPage : public EditorPage {
    Q_OBJECT

public:
    DestPathsPage(frmCESpecs& editor, QWidget* parent);

    void rebuild() override;
    QPushButton* editButton() const override { return cmdDPEdit; }
    Result<void> browseTo(const QString& drive, const QString& path) override;
    void fallBackTo(const QString& drive) override;
    void refreshBrowser() override;

    void cboDPFGs_Click();
    void cmdDPAdd_Click();
    void cmdDPEdit_Click();
    void cmdDPDelete_Click();

private:
    void lstDPList_Click();
    // The group chosen in cboDPFGs, of the source path chosen in the editor's chooser.
    clsFileGroup& chosenGroup() const;

    QComboBox* cboDPFGs = nullptr;
    PathBrowser* m_browser = nullptr;
    QListWidget* lstDPList = nullptr;
    QPushButton* cmdDPAdd = nullptr;
    QPushButton* cmdDPEdit = nullptr;
    QPushButton* cmdDPDelete = nullptr;
};

} // namespace ondrel
