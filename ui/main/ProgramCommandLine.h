#pragma once

#include <QString>
#include <QStringList>

namespace ondrel {

// What the windowed program's command line asks for: its help, its version, or a start that
// opens one spec file (what a desktop's "Open With" and a double click pass). Nothing on it
// changes a setting.
struct ProgramCommandLine {
    enum class Action { Start, Help, Version };

    Action action = Action::Start;
    QString specFile; // empty: the start with a new spec only
    // Why the line cannot be followed (one line); empty when it can.
    QString error;

    // Reads the arguments that follow the program name. --help and --version win over anything
    // else on the line, as with the stager.
    static ProgramCommandLine parse(const QStringList& arguments);

    static QString usage();
};

} // namespace ondrel
