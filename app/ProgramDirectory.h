#pragma once

#include <QString>

namespace ondrel {

// The program's own directory, where its options file and new specs live.
// - An installed program keeps them in the user's configuration directory,
//   $XDG_CONFIG_HOME/ondrel (~/.config/ondrel), created on first use, whoever runs it: nothing is
//   ever written into the system's program directory. A program counts as installed when its
//   executable lies in the bin folder of an install, told by the desktop entry that every
//   install puts at a place known at build time beside it (../share/applications/...), whatever
//   the prefix.
// - Any other copy (the build tree, a portable folder) keeps them beside the executable when
//   that directory can be written to, otherwise in the user's application data directory
//   (~/.local/share/FileOndrel), created on first use.
QString ProgramDirectory();

// The same rule for an executable in exeDir.
QString ProgramDirectoryFor(const QString& exeDir);

// Whether an executable in exeDir is an installed one (see above).
bool IsInstalledProgramDirectory(const QString& exeDir);

// The options file in directory dir: dir, a separator unless dir already ends in one, and
// "ONDREL.OPT".
QString OptionsFileName(const QString& dir);

} // namespace ondrel
