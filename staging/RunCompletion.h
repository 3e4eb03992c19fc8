#pragma once

#include <QByteArray>
#include <QString>

#include <sys/types.h>
#include <vector>

namespace ondrel {

class StagingRun;
struct FileStatus;

// The end of a staging run: the sources of a move deleted (only when nothing went wrong with
// them, they have not changed since they were copied, and every copy still holds them), the
// summary composed, written to the log and shown, and the log closed.
class RunCompletion {
public:
    explicit RunCompletion(StagingRun& run);
    void Unload();

private:
    void deleteSources();
    // Why a source of a move must stay (its log text after the path), or nothing when it may
    // go; now is its status as the deletions begin, unsynced the devices that failed to write.
    QString whyKept(const QByteArray& path, const FileStatus& now,
                    const std::vector<dev_t>& unsynced) const;
    // Writes the copies to the disk; gives the devices that failed to, each reported once.
    std::vector<dev_t> syncCopies();
    // Lists every source from entry from on as not deleted (the deletions were stopped).
    void keepTheRest(size_t from);
    QString summary() const;

    StagingRun& m_run;
};

} // namespace ondrel
