#pragma once

#include "app/ScreenMetrics.h"

#include <QString>

#include <memory>

namespace ondrel {

struct ProgramObjects;
class frmMain;

// Creates the program-wide objects in their order: the main window, the spec editor, the
// settings (at their defaults) and the current spec; the individual file selection starts empty.
// Before them it installs the accessible form of the combo boxes (installAccessibleComboBoxes).
// No window is shown and the options file is not read yet.
std::unique_ptr<frmMain> createProgramObjects(ProgramObjects& program, const ScreenMetrics& screen);

// Opens the spec file fileName (as given on the command line) through File, Open Spec File, its
// dialog answered with that file: the same load, tree, recent-files entry and reports as a file
// picked there. A name that is no file fails as the dialog would, with error 53 under "Error
// Opening Spec File", and the spec that was open stays.
void OpenSpecFileNamed(frmMain& main, const QString& fileName);

// The program's start: creates the program-wide objects, reads the options file and shows the
// main window with a new spec, opens specFile unless it is empty, then runs until the main
// window closes. An options file that cannot be read as settings ends the program with a report
// and exit status 1, the file untouched.
int SubMain(const QString& programDirectory, const QString& specFile = QString());

} // namespace ondrel
