#pragma once

#include <QString>

namespace ondrel {

class StagingRun;

// The end of a staging run: the sources of a move deleted (only when nothing went wrong with
// them and they have not changed since they were copied), the summary composed, written to the
// log and shown, and the log closed.
class RunCompletion {
public:
    explicit RunCompletion(StagingRun& run);
    void Unload();

private:
    void deleteSources();
    QString summary() const;

    StagingRun& m_run;
};

} // namespace ondrel
