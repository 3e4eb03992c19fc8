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

    // What is stored on the open file fd, as Attr bits; -1 when nothing is stored (or the file
    // system keeps no user extended attributes).
    static int readStored(int fd);

    // Stores on the open file "to" the Hidden and System of stored (what readStored gave for
    // the file it is a copy of), and Archive: a copy is a changed file. Where nothing was
    // stored, nothing is stored on "to", which reads as Archive too. 0 or an errno value; a file
    // system that keeps no user extended attributes is no failure.
    static int storeCopied(int to, int stored);
};

} // namespace ondrel
