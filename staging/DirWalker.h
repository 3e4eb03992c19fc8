#pragma once

#include "staging/FileStager.h"
#include "staging/RunState.h"

#include <QByteArray>
#include <QSet>
#include <QString>

#include <vector>

namespace ondrel {

class RunContext;
struct PlannedSource;

// The walk of a staging run: every source path in turn, its directory tree (or, for
// "<various>", the list of selected files), and in each directory the files each file group's
// masks select, each handed to the file stager.
class DirWalker {
public:
    explicit DirWalker(RunContext& run);

    // The whole walk; returns when it is done or cancelled.
    void Activate();

private:
    // Walks Dir (sub-directories first, the last listed first, then Dir's own files); false when
    // the user ended the walk.
    bool DirWalk(const PlannedSource& SourcePath, const QByteArray& Dir);
    // One source path; false when the user ended the walk.
    bool walkSourcePath(const PlannedSource& source);
    void walkVariousFiles(const PlannedSource& source);
    // Asks text + "  Click 'OK' to continue staging." (OK/Cancel) when error messages are on;
    // false when the user chose Cancel, which cancels the run.
    bool askToContinue(const QString& text, const QString& title);
    // Reports a source directory that is not there: name as the texts show it, path native.
    bool sourcePathNotFound(const QString& name, const QByteArray& path);
    // Whether dir is one of the run's destination paths, by device and inode, however its path
    // reaches it (aliases, links, relative paths).
    bool isOwnDestination(const QByteArray& dir);
    // Looks again for the destination paths that were missing, once the run has made
    // directories since the last look.
    void findMadeDestinations();

    RunContext& m_run;
    FileStager m_stager;
    QSet<RunState::FileId> m_destinationIds;
    std::vector<QByteArray> m_missingDestinations;
    int m_madeDirectoriesSeen = 0;
};

} // namespace ondrel
