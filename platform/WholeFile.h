#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>

namespace ondrel {

// Reads and writes small text files (spec files, the options file, file lists) in one piece.
class WholeFile {
public:
    // The file's bytes; a missing file is error 53 (or 76 when its directory is missing too).
    // Only a regular file of at most 64 MiB is read: anything else (a directory, a fifo, a
    // device, a larger file) is error 75, and nothing waits on a fifo or reads a device.
    static Result<QByteArray> read(const QString& fileName);

    // Replaces the file's content. The bytes go to a temporary file beside it that is then
    // renamed over it, so a reader never sees half a file; where the directory cannot take a
    // new file but the file itself is writable, the file is rewritten in place. A name that
    // holds something other than a regular file is error 75 and stays as it is.
    static Result<void> write(const QString& fileName, const QByteArray& bytes);

    // Creates the file empty, or cuts an existing one to zero length; error 75, as for write,
    // when the name holds something other than a regular file.
    static Result<void> truncate(const QString& fileName);
};

} // namespace ondrel
