#pragma once

#include "app/VarFileSelection.h"
#include "app/clsOndrelApp.h"
#include "spec/clsSpecFile.h"

#include <QString>

#include <memory>

class QWidget;

namespace ondrel {

class MainWindowInterface;
class MainWindowViews;
class frmCESpecs;

// The program-wide objects that every window reaches: the main window (as the dialogs' owner,
// the views they redraw and the placement they reset), the spec editor, the settings, the
// current spec and the individual file selection. They live as long as the program.
struct ProgramObjects {
    explicit ProgramObjects(QString programDirectory_)
        : programDirectory(std::move(programDirectory_)) {}
    ProgramObjects(const ProgramObjects&) = delete;
    ProgramObjects& operator=(const ProgramObjects&) = delete;

    QString programDirectory;
    QWidget* MainForm = nullptr;
    MainWindowViews* MainViews = nullptr;
    MainWindowInterface* MainPlacement = nullptr;
    frmCESpecs* CESpecs = nullptr; // owned by the main window
    std::unique_ptr<clsOndrelApp> Settings;
    std::unique_ptr<clsSpecFile> Spec;
    VarFileSelection Selection;
};

} // namespace ondrel
