#pragma once

#include <QString>

namespace ondrel {

// The program's own directory, where its options file and new specs live: the directory of the
// executable when it can be written to (a portable install), otherwise the user's application
// data directory, created on first use.
QString ProgramDirectory();

// The options file in directory dir: dir, a separator unless dir already ends in one, and
// "ONDREL.OPT".
QString OptionsFileName(const QString& dir);

} // namespace ondrel
