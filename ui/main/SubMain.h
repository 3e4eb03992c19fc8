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

// The program's start: creates the program-wide objects, reads the options file and shows the
// main window, then runs until the main window closes. An options file that cannot be read as
// settings ends the program with a report and exit status 1, the file untouched.
int SubMain(const QString& programDirectory);

} // namespace ondrel
