#pragma once

#include <QDialog>

#include <memory>

class QComboBox;
class QLabel;
class QPushButton;
class QTabWidget;

namespace ondrel {

class clsSourcePaths;
struct ProgramObjects;

// "Create/Edit Specs": the dialog in which the user builds the source paths, file groups and
// destination paths of the open spec. It works on a copy, WorkingSPs, that the main window fills
// before showing it; OK hands the copy to the spec, Cancel throws it away.
class frmCESpecs : public QDialog {
    Q_OBJECT

public:
    frmCESpecs(ProgramObjects& program, QWidget* parent = nullptr);

    std::shared_ptr<clsSourcePaths> WorkingSPs;

    // The source-path chooser that the File Groups and Destination Paths pages work under.
    QComboBox* cboSPs = nullptr;
    // The three pages: 0 Source Paths, 1 File Groups, 2 Destination Paths.
    QTabWidget* tdgCESpecs = nullptr;

    void cmdOK_Click();
    void cmdCancel_Click();
    void cmdHelp_Click();
    // Esc and the window's close button cancel as the Cancel button does.
    void reject() override { cmdCancel_Click(); }

private:
    ProgramObjects& m_program;
    QLabel* lblSPs = nullptr;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
    QPushButton* cmdHelp = nullptr;
};

} // namespace ondrel
