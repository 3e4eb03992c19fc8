#pragma once

#include <QDialog>

#include <array>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListView;
class QPushButton;

namespace ondrel {

struct ProgramObjects;
class DirList;
class DriveList;
class VarFileListModel;
enum class FileFilter;
namespace controls {
class FileList;
}

// The dialog in which the user picks the individual files that the "<various>" source path
// stages. The selection is program-wide and kept between openings; OK replaces it, Cancel
// leaves it as it was.
class frmVarFileSelect : public QDialog {
    Q_OBJECT

public:
    // Builds the dialog and loads it from the program-wide selection and the default path.
    explicit frmVarFileSelect(ProgramObjects& program, QWidget* parent = nullptr);

    // The number the Help button opens.
    static constexpr int kHelpContext = 31;

    void cmdGoMask_Click();
    void cmdAdd_Click();
    void cmdRemove_Click();
    void cmdSaveList_Click();
    void cmdLoadList_Click();
    void cmdOK_Click();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build();
    void Form_Load();
    void drvVarDrives_Change(const QString& drive);
    void dirVarDirs_Change();
    void filVarFiles_DblClick();
    void lstVarList_DblClick(const QModelIndex& index);
    void chkShow_Click(FileFilter which, QCheckBox* box);
    void UpdateFileCount();
    void addSelectedFiles();

    ProgramObjects& m_program;
    VarFileListModel* m_selection = nullptr;
    bool m_loading = false;
    // Whether the last mouse release on cmdAdd or cmdRemove came with Alt held.
    bool m_altRelease = false;

    DriveList* drvVarDrives = nullptr;
    DirList* dirVarDirs = nullptr;
    controls::FileList* filVarFiles = nullptr;
    QLabel* lblFileCount = nullptr;
    QLineEdit* txtFileSelMask = nullptr;
    QPushButton* cmdGoMask = nullptr;
    QCheckBox* chkShowArchive = nullptr;
    QCheckBox* chkShowHidden = nullptr;
    QCheckBox* chkShowNormal = nullptr;
    QCheckBox* chkShowRO = nullptr;
    QCheckBox* chkShowSystem = nullptr;
    QListView* lstVarList = nullptr;
    QPushButton* cmdAdd = nullptr;
    QPushButton* cmdRemove = nullptr;
    QPushButton* cmdLoadList = nullptr;
    QPushButton* cmdSaveList = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
    QPushButton* cmdHelp = nullptr;
};

} // namespace ondrel
