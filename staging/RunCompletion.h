#pragma once

#include <QByteArray>
#include <QString>

#include <sys/types.h>
#include <vector>

namespace ondrel {

class RunContext;
struct FileStatus;

// What the end of a run shows: frmStageInfo's title and text.
struct RunSummary {
    QString title;
    QString text;
};

// The end of a staging run: the sources of a move deleted (only when nothing went wrong with
// them, they have not changed since they were copied, and every copy still holds them), the
// summary composed, written to the log and shown, and the log closed.
class RunCompletion {
public:
    explicit RunCompletion(RunContext& run);
    RunSummary Unload();

private:
    // Deletes what it may, and records what became of each entry of the delete list.
    void deleteSources();
    // The count of deletions and the list of files kept, from the records.
    void tallyDeletions();
    // Why a source of a move must stay (its log text after the path), or nothing when it may
    // go; now is its status as the deletions begin, unsynced the devices that failed to write.
    QString whyKept(const QByteArray& path, const FileStatus& now,
                    const std::vector<dev_t>& unsynced) const;
    // Writes the copies to the disk; gives the devices that failed to, each reported once.
    std::vector<dev_t> syncCopies();
    // Records every source from entry from on as not reached (the deletions were stopped).
    void keepTheRest(size_t from);
    QString summary() const;

    RunContext& m_run;
};

} // namespace ondrel
