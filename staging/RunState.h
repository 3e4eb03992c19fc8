#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <sys/types.h>
#include <utility>
#include <vector>

namespace ondrel {

struct PlannedDestination;

// The state a staging run keeps for its whole life.
struct RunState {
    bool Cancelled = false;
    // Drives are file systems, named by their mount points: a full or failing disk marks only
    // itself bad.
    QList<QByteArray> GoodDrives; // mount points found usable
    QList<QByteArray> BadDrives;  // mount points found unusable
    QString BadSourceDirs;        // missing directories of selected files, each followed by CR LF
    QString ProblemFiles;         // source files that met a problem, each followed by CR LF
    QString UndeletedFiles;
    // 32 bits: a run of a large tree copies far more than 32767 files.
    qint32 CopiedCount = 0;
    qint32 DeletedCount = 0;
    // The bytes of the copies made so far (a progress display shows them).
    qint64 copiedBytes = 0;
    QDateTime StartTime;
    QString CurSourcePath;
    // Source files to delete at the end of a move, once per destination copied.
    std::vector<QByteArray> lstDelSource;

    // Native paths in ProblemFiles and BadSourceDirs, so that a membership test costs the same
    // however many problems a run has met.
    QSet<QByteArray> problemPaths;
    QSet<QByteArray> badSourceDirPaths;
    // Whether the run reported an error (a "***" line of the log, an error box), whether or
    // not a file became a problem file by it.
    bool errorReported = false;

    // What a move needs to know before it deletes a source: the source as its copies read it
    // (unchanged since?), and where each copy is (does it still hold the source?).
    using FileId = std::pair<dev_t, ino_t>;
    struct CopyPlace {
        const PlannedDestination* destination;
        qsizetype relativeAt; // the copy is the destination joined to the source's path from here
        dev_t device;         // the file system that holds the copy
    };
    struct Copied {
        // The file read, as it was read (for a link, the file it leads to): deleted only if it
        // is still this very file, unchanged to the nanosecond.
        FileStatus source;
        std::vector<CopyPlace> places;
    };
    QHash<QByteArray, Copied> copiedSources;
    // Which source each file the run put in place holds: the last to be copied to it. A copy
    // that a later copy of another source replaced holds nothing any more.
    QHash<FileId, QByteArray> copyHolders;
    // Directories this run has written into: stale temporary files are removed from each once.
    QSet<QByteArray> writtenDirs;
    // Directories the run has made: a destination missing when the run began may exist now.
    int madeDirectories = 0;
    // What became of each entry of lstDelSource that the deletions reached, in order: the
    // count of deletions and the list of files kept are made from these.
    enum class Deletion {
        Deleted,
        Failed,       // reported as an error; counted, as the attempt was made
        NotPermitted, // no right to delete it: kept
        Kept,         // changed since it was copied, or a copy no longer holds it: kept
        NotReached,   // the deletions were stopped before it: kept
    };
    struct DeletionRecord {
        QByteArray path;
        Deletion outcome;
    };
    std::vector<DeletionRecord> deletions;
    // Cancel came while the sources of a move were being deleted: some are gone, the rest kept.
    bool deletionsStopped = false;
};

} // namespace ondrel
