#pragma once

#include <QDialog>

#include <array>
#include <memory>

class QComboBox;
class QLabel;
class QPushButton;
class QTabWidget;
class QVBoxLayout;

namespace ondrel {

class EditorPage;
class clsSourcePaths;
struct ProgramObjects;

// "Create/Edit Specs": the dialog in which the user builds the source paths, file groups and
// destination paths of the open spec. It works on a copy, WorkingSPs, that the main window fills
// before showing it; OK hands the copy to the spec, Cancel throws it away. The pages live in
// classes of their own (SourcePathsPage, FileGroupsPage, DestPathsPage); this frame switches
// between them and keeps what they share.
class frmCESpecs : public QDialog {
    Q_OBJECT

public:
    frmCESpecs(ProgramObjects& program, QWidget* parent = nullptr);

    std::shared_ptr<clsSourcePaths> WorkingSPs;

    // Which page's entry is under edit (0 none, 1 a source path, 2 a file group, 3 a destination
    // path) and its position in that page's list.
    int EditMode = 0;
    int EditIndex = 0;

    // The source-path chooser that the File Groups and Destination Paths pages work under.
    QComboBox* cboSPs = nullptr;
    // The three pages: 0 Source Paths, 1 File Groups, 2 Destination Paths.
    QTabWidget* tdgCESpecs = nullptr;

    ProgramObjects& program() const { return m_program; }
    // The pages are made when first needed: the program makes the dialog at start-up, before
    // the main window is shown, and the pages' browsers read the disk.
    EditorPage* page(int index);

    // The page switch: the chooser serves pages 1 and 2 only, an edit is abandoned, and the
    // page in front is rebuilt from the working copy.
    void tdgCESpecs_Click();
    void cboSPs_Click() { tdgCESpecs_Click(); }
    // Ends an edit of any page: its Edit caption is no longer bold.
    void EndEditMode();
    // Starts an edit of entry index of the page of mode (1, 2 or 3): its Edit caption turns bold.
    void beginEdit(int mode, int index);

    void cmdOK_Click();
    void cmdCancel_Click();
    void cmdHelp_Click();
    // Esc and the window's close button cancel as the Cancel button does.
    void reject() override { cmdCancel_Click(); }

protected:
    void showEvent(QShowEvent* event) override;
    // A double click on the dialog's background reads the drives and directories again.
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void Form_Load();
    void makePages();

    ProgramObjects& m_program;
    bool m_loaded = false;
    QVBoxLayout* m_layout = nullptr;
    std::array<EditorPage*, 3> m_pages{};
    QLabel* lblSPs = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
    QPushButton* cmdHelp = nullptr;
};

} // namespace ondrel
