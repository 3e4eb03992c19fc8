#pragma once

#include <QByteArray>
#include <QString>

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
    // go; now is its status as the deletions begin.
    QString whyKept(const QByteArray& path, const FileStatus& now) const;
    QString summary() const;

    StagingRun& m_run;
};

} // namespace ondrel
