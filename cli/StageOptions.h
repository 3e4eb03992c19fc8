#pragma once

#include "platform/MsgBox.h"

#include <QString>
#include <QStringList>

namespace ondrel {

// What the command line of the headless stager asks for.
struct StageOptions {
    enum class Action { Stage, Help, Version };
    // How the log is chosen: by the options file's CreateLog, a named file, or none at all.
    enum class LogChoice { FromOptions, File, None };

    Action action = Action::Stage;
    QString specFile;
    QString optionsFile; // empty: the options file of the program directory
    LogChoice log = LogChoice::FromOptions;
    QString logFile;
    QString variousFile; // empty: no individually selected files
    bool dryRun = false;
    bool batch = false;
    bool quiet = false; // no progress line on the terminal
    int jobs = 0; // how many threads copy (0: as many as the machine has processors, at most 8)
    // The answers given when nobody is asked.
    MsgAnswer overwriteAnswer = MsgAnswer::No;
    MsgAnswer errorAnswer = MsgAnswer::Ignore;
    MsgAnswer questionAnswer = MsgAnswer::OK;

    // Why the command line cannot be followed (one line); empty when it can.
    QString error;

    // Reads the arguments that follow the program name.
    static StageOptions parse(const QStringList& arguments);

    static QString usage();
};

} // namespace ondrel
