#pragma once

#include "platform/Result.h"

#include <QByteArray>

#include <sys/stat.h>

namespace ondrel {

// The system's file attributes (the Attr bits) on POSIX: Read-Only is the owner's write bit,
// Directory the file type, and Hidden, System and Archive live in the extended attribute
// user.DOSATTRIB as "0x" and hex digits, the form Samba and Wine read and write. FileSystem
// offers them to the rest of the program.
class DosAttributes {
public:
    // The attributes of the file at path, whose status (links followed) is st.
    static int fromStatus(const QByteArray& path, const struct stat& st);

    // Sets Read-Only through the write bits and stores Hidden, System and Archive; see
    // FileSystem::setAttributes.
    static Result<void> set(const QByteArray& path, int attributes);

    // Stores on the open file "to" the Hidden and System stored on the open file "from", and
    // Archive: a copy is a changed file. Where "from" has nothing stored, nothing is stored on
    // "to", which reads as Archive too. 0 or an errno value; a file system that keeps no user
    // extended attributes is no failure.
    static int copyStored(int from, int to);
};

} // namespace ondrel
