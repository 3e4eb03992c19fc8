#pragma once

#include "platform/FileSystem.h"
#include "platform/Result.h"

#include <QByteArray>
#include <QByteArrayView>

namespace ondrel {

// Copies a file so that the destination is always either its old content or the whole new one:
// the content goes to a file beside the destination, without a name or under a temporary one,
// which then takes the destination's name in one step. FileSystem offers it to the rest of the
// program.
class FileCopier {
public:
    // See FileSystem::copyFile.
    static Result<CopiedFile> copy(const QByteArray& source, const QByteArray& destination,
                                   DestinationHint hint, const CopyControl& control);

    // Removes the temporary files in dir whose copying process is gone.
    static void removeStaleTemporaries(const QByteArray& dir);

    // Whether name is one of copy's temporary files.
    static bool isTemporaryName(QByteArrayView name);
    // A temporary name for a copy to name by process processId: the name and process, random
    // letters and a check over all of it.
    static QByteArray temporaryName(QByteArrayView name, qint64 processId);
};

} // namespace ondrel
