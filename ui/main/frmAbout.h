#pragma once

#include <QDialog>

namespace ondrel {

// The about box: the program's name, version and what it is for.
class frmAbout : public QDialog {
    Q_OBJECT

public:
    explicit frmAbout(QWidget* parent = nullptr);
};

} // namespace ondrel
