#pragma once

#include "staging/FileStager.h"

#include <QByteArray>
#include <QSet>
#include <QString>

namespace ondrel {

class StagingRun;
class clsSourcePath;

// The walk of a staging run: every source path in turn, its directory tree (or, for
// "<various>", the list of selected files), and in each directory the files each file group's
// masks select, each handed to the file stager.
class DirWalker {
public:
    explicit DirWalker(StagingRun& run);

    // The whole walk; returns when it is done or cancelled.
    void Activate();

private:
    // Walks Dir (sub-directories first, the last listed first, then Dir's own files); false when
    // the user ended the walk.
    bool DirWalk(const clsSourcePath& SourcePath, const QByteArray& Dir);
    // One source path; false when the user ended the walk.
    bool walkSourcePath(const clsSourcePath& sp);
    void walkVariousFiles(const clsSourcePath& sp);
    // Asks text + "  Click 'OK' to continue staging." (OK/Cancel) when error messages are on;
    // false when the user chose Cancel, which cancels the run.
    bool askToContinue(const QString& text, const QString& title);
    // Reports a source directory that is not there: name as the texts show it, path native.
    bool sourcePathNotFound(const QString& name, const QByteArray& path);
    bool isOwnDestination(const QByteArray& dir) const;

    StagingRun& m_run;
    FileStager m_stager;
    QSet<QByteArray> m_destinations; // every destination path of the spec, cleaned
};

} // namespace ondrel
