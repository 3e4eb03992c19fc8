#pragma once

#include <QDialog>

#include <array>

class QButtonGroup;
class QCheckBox;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace ondrel {

class DirList;
class DriveList;
struct ProgramObjects;

// "File Ondrel Options": the user options and the default staging options, edited in memory;
// they reach the options file when the main window closes.
class frmFSOptions : public QDialog {
    Q_OBJECT

public:
    explicit frmFSOptions(ProgramObjects& program, QWidget* parent = nullptr);

    // The two pages: 0 User Options, 1 Staging Options.
    QTabWidget* tdgOptions = nullptr;

    void cmdOK_Click();
    void cmdCancel_Click() { reject(); }
    void cmdHelp_Click();
    void cmdRestoreDefaults_Click();

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QWidget* buildUserOptions();
    QWidget* buildStagingOptions();
    QCheckBox* addCheckBox(const char* name, const QString& caption, QWidget* parent);

    // Shows the settings in the check boxes and the overwrite buttons.
    void Form_Load();
    // Opens the default path's lists at the stored drive and path.
    void Form_Activate();
    // Sets the lists and the text box from the stored drive and path; false when the drive is
    // not there (error 68); other failures are let go.
    bool showDefaultPath();
    void drvDefPath_Change();
    void dirDefPath_Change();
    void refreshLists();

    ProgramObjects& m_program;
    std::array<QCheckBox*, 11> m_checkBoxes{};
    std::array<QRadioButton*, 4> optOverwrite{};
    QButtonGroup* m_overwriteGroup = nullptr;
    // The overwrite button clicked last: what OK stores.
    int m_overwriteIndex = 0;
    DriveList* drvDefPath = nullptr;
    DirList* dirDefPath = nullptr;
    QLineEdit* txtDefPath = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
    QPushButton* cmdHelp = nullptr;
    QPushButton* cmdRestoreDefaults = nullptr;
};

} // namespace ondrel
