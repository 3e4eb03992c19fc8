#pragma once

#include "platform/MsgBox.h"
#include "staging/RunPlan.h"
#include "staging/RunState.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace ondrel {

class clsSpecFile;
class clsOndrelApp;
class Error;
class StagingHost;
class StagingFileOps;
class StagingLog;
class TransferAhead;

// What the parts of a staging run (the walk, the stager, the completion) are handed: the job,
// the host, the door to the disk, the run's state and plan, and the run's ways of logging,
// reporting and asking.
class RunContext {
public:
    // log is the open staging log, or nullptr for a run without a log.
    RunContext(const clsSpecFile& spec, const clsOndrelApp& settings,
               const QStringList& VariousFiles, StagingHost& host, StagingFileOps& ops,
               StagingLog* log);
    RunContext(const RunContext&) = delete;
    RunContext& operator=(const RunContext&) = delete;

    const clsSpecFile& spec() const { return m_spec; }
    const clsOndrelApp& settings() const { return m_settings; }
    const QStringList& variousFiles() const { return m_variousFiles; }
    StagingHost& host() const { return m_host; }
    StagingFileOps& ops() const { return m_ops; }
    RunState& state() { return m_state; }
    const RunState& state() const { return m_state; }

    // Made from the spec when the walk begins.
    void makePlan() { m_plan.emplace(m_spec); }
    bool hasPlan() const { return m_plan.has_value(); }
    const RunPlan& plan() const { return *m_plan; }

    // The Cancel button: the run stops at its next yield.
    void cancel() { m_state.Cancelled = true; }

    // How many threads may copy ahead of the run (1: the run copies each file itself).
    int workers() const { return m_workers; }
    void setWorkers(int workers) { m_workers = workers < 1 ? 1 : workers; }
    // The copies made ahead of the walk, while it works; nullptr when the run copies each file
    // itself.
    TransferAhead* ahead() const { return m_ahead; }
    void setAhead(TransferAhead* ahead) { m_ahead = ahead; }

    // Writes one line to the log when the run has one, with whatever it quotes shown as
    // NativeText::display shows it (a record is one line whatever a name holds). The first
    // write that fails is an error of the run, told to the user once; the log then takes no
    // more lines.
    void log(const QString& line);
    bool logging() const { return m_log != nullptr && !m_logFailed; }
    // The open log, for the header the run writes itself; nullptr when there is none.
    StagingLog* logFile() const { return m_log; }
    // Writes what is left and closes the log; a failure there is told as one while writing.
    void closeLog();
    // An error line: "***" + text in the log, and the failure told to the host about path
    // (native) when it concerns one; the run has then reported an error, whether or not it has
    // a log.
    void logError(const QString& text, const QByteArray& path = {});
    // The shared failure report: "***Error N, description" + stage in the log, and the standard
    // error box titled routine + " Error" when ShowErrMsgs is on, about path (native) when it
    // concerns one. Returns the answer (OK when no box was shown).
    MsgAnswer reportError(const Error& error, const QString& stage, const QString& routine,
                          MsgButtons buttons = MsgButtons::OK, const QByteArray& path = {});
    // A box about path when there is one, a plain one otherwise.
    MsgAnswer ask(const QByteArray& path, const QString& prompt, MsgButtons buttons, MsgIcon icon,
                  const QString& title);
    bool showErrMsgs() const;
    void addProblemFile(const QByteArray& path);

private:
    void logFailed(const Error& error);

    const clsSpecFile& m_spec;
    const clsOndrelApp& m_settings;
    const QStringList& m_variousFiles;
    StagingHost& m_host;
    StagingFileOps& m_ops;
    StagingLog* m_log;
    bool m_logFailed = false;
    RunState m_state;
    std::optional<RunPlan> m_plan;
    int m_workers = 1;
    TransferAhead* m_ahead = nullptr;
};

} // namespace ondrel
