#pragma once

#include "platform/Result.h"

#include <QString>

namespace ondrel {

// The compiled help travels inside the program, so that the program is one file that runs from
// any directory; the help engine, though, reads files. HelpCache writes them into a directory of
// the user's cache the first time help is asked for, and again only when the program carries
// other help than the files there (a newer or older program ran before).
class HelpCache {
public:
    // The directory in the user's cache where the help is written.
    static QString defaultDirectory();

    // Makes the directory hold this program's help and returns the help collection file to open.
    static Result<QString> prepare(const QString& directory);
};

} // namespace ondrel
