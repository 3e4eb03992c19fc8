#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <vector>

namespace ondrel {

// The state a staging run keeps for its whole life.
struct RunState {
    bool Cancelled = false;
    QString GoodDrives;    // upper-cased drive letters found usable
    QString BadDrives;     // drive letters found unusable
    QString BadSourceDirs; // missing directories of selected files, each followed by CR LF
    QString ProblemFiles;  // source files that met a problem, each followed by CR LF
    QString UndeletedFiles;
    // 32 bits: a run of a large tree copies far more than 32767 files.
    qint32 CopiedCount = 0;
    qint32 DeletedCount = 0;
    QDateTime StartTime;
    QString CurSourcePath;
    // Source files to delete at the end of a move, once per destination copied.
    std::vector<QByteArray> lstDelSource;

    // Native paths in ProblemFiles and BadSourceDirs, so that a membership test costs the same
    // however many problems a run has met.
    QSet<QByteArray> problemPaths;
    QSet<QByteArray> badSourceDirPaths;
    // Each file's size and time when it was copied, so a move deletes only unchanged sources.
    struct Copied {
        qint64 size;
        qint64 modified;
    };
    QHash<QByteArray, Copied> copiedSources;
    // Directories this run has written into: stale temporary files are removed from each once,
    // and their file systems are synced before a move deletes its sources.
    QSet<QByteArray> writtenDirs;
};

} // namespace ondrel
