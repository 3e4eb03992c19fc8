#pragma once

#include <QDialog>

class QPushButton;
class QTabWidget;

namespace ondrel {

struct ProgramObjects;

// "File Ondrel Options": the user options and the default staging options, edited in memory;
// they reach the options file when the main window closes.
class frmFSOptions : public QDialog {
    Q_OBJECT

public:
    explicit frmFSOptions(ProgramObjects& program, QWidget* parent = nullptr);

    // The two pages: 0 User Options, 1 Staging Options.
    QTabWidget* tdgOptions = nullptr;

private:
    ProgramObjects& m_program;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
};

} // namespace ondrel
