#pragma once

#include "ui/editor/EditorPage.h"

class QComboBox;
class QLineEdit;
class QListWidget;

namespace ondrel {

class DirList;
class DriveList;
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
    void lblDPCurPath_Click();

private:
    void drvDPDrives_Change(const QString& drive);
    void dirDPDirs_Change();
    void lstDPList_Click();
    // The group chosen in cboDPFGs, of the source path chosen in the editor's chooser.
    clsFileGroup& chosenGroup() const;

    QComboBox* cboDPFGs = nullptr;
    DriveList* drvDPDrives = nullptr;
    DirList* dirDPDirs = nullptr;
    QLineEdit* txtDPCurPath = nullptr;
    QPushButton* lblDPCurPath = nullptr;
    QListWidget* lstDPList = nullptr;
    QPushButton* cmdDPAdd = nullptr;
    QPushButton* cmdDPEdit = nullptr;
    QPushButton* cmdDPDelete = nullptr;
};

} // namespace ondrel
