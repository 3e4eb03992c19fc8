#pragma once

#include <QDialog>

class QPushButton;

namespace ondrel {

struct ProgramObjects;

// The dialog in which the user picks the individual files that the "<various>" source path
// stages. The selection is program-wide and kept between openings; OK replaces it.
class frmVarFileSelect : public QDialog {
    Q_OBJECT

public:
    explicit frmVarFileSelect(ProgramObjects& program, QWidget* parent = nullptr);

private:
    ProgramObjects& m_program;
    QPushButton* cmdOK = nullptr;
    QPushButton* cmdCancel = nullptr;
};

} // namespace ondrel
