#pragma once

#include <QByteArray>
#include <QString>

#include <deque>
#include <vector>

namespace ondrel {

class clsSpecFile;
class clsSourcePath;
class clsFileGroup;

// A destination path of the spec as the run writes to it, made once per run however many file
// groups name it.
struct PlannedDestination {
    QByteArray base;  // native, absolute, without a trailing separator
    QByteArray drive; // the mount point of the file system that holds it
};

struct PlannedSource;

// A file group of a source path and the destinations its files go to, one for each destination
// path it lists (a path listed twice is staged to twice).
struct PlannedGroup {
    const clsFileGroup* group;
    const PlannedSource* source;
    std::vector<const PlannedDestination*> destinations;
};

// A source path of the spec as the run walks it.
struct PlannedSource {
    const clsSourcePath* path;
    bool various; // "<various>": the selected files, not a directory
    // Native, absolute, without a trailing separator; empty for "<various>".
    QByteArray root;
    // Where a file's path below root begins in its whole path (root joined to it).
    qsizetype relativeAt = 0;
    std::vector<PlannedGroup> groups;
};

// What a run works on, derived from the spec once when the walk begins: the native form of
// every source and destination path, each destination's drive, and which destinations each
// file group stages to. The walk, the stager and the deletions of a move all take their paths
// from here, so a path is never normalised two ways.
class RunPlan {
public:
    explicit RunPlan(const clsSpecFile& spec);
    RunPlan(const RunPlan&) = delete;
    RunPlan& operator=(const RunPlan&) = delete;

    const std::vector<PlannedSource>& sources() const { return m_sources; }
    // Every destination of the run, each once.
    const std::deque<PlannedDestination>& destinations() const { return m_destinations; }

    // Names every source and destination path as a root of the directory handles' active
    // Scope: below them, the run never follows a link to a directory.
    void addRoots() const;

    // A source or destination path of the spec as the run works with it: native, absolute (a
    // relative path is taken from the spec file's directory), without a trailing separator.
    static QByteArray nativePath(const clsSpecFile& spec, const QString& specPath);

private:
    std::vector<PlannedSource> m_sources;
    std::deque<PlannedDestination> m_destinations;
};

} // namespace ondrel
