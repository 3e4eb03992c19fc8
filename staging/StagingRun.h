#pragma once

#include "staging/RunContext.h"
#include "staging/RunState.h"

#include <QString>
#include <QStringList>

namespace ondrel {

class clsSpecFile;
class clsOndrelApp;

// One staging run: copies (or moves) every file the spec selects to every destination of its
// file group, under the staging options of the settings. It is driven in three steps, as the
// staging window drives it: Load (start, log header), Activate (the walk), Unload (deletion of
// moved sources, summary, log closed). The run reads the spec, the settings and the selected
// files and changes none of them.
class StagingRun {
public:
    // log is the open staging log, or nullptr for a run without a log. programDirectory gives
    // the first known good drive.
    StagingRun(const clsSpecFile& spec, const clsOndrelApp& settings,
               const QStringList& VariousFiles, StagingHost& host, StagingFileOps& ops,
               StagingLog* log, const QString& programDirectory);
    ~StagingRun();
    StagingRun(const StagingRun&) = delete;
    StagingRun& operator=(const StagingRun&) = delete;

    void Load();
    void Activate();
    void Unload();
    // Load, Activate and Unload in turn.
    void run();

    // The Cancel button: the run stops at its next yield.
    void Cancel() { m_context.cancel(); }
    // How many threads copy: with more than one, files are copied ahead of the walk and each
    // takes its name when the walk reaches it, in the same order, with the same decisions,
    // questions and log as with one. A dry run, a move, attribute filters and the Archive reset
    // copy each file in turn whatever this says.
    void setWorkers(int workers) { m_context.setWorkers(workers); }
    // As many threads as the machine has processors, at most 8: the programs' default.
    static int defaultWorkers();

    const RunState& state() const { return m_context.state(); }
    // A count as the summary shows it, "#,##0": with thousands separators.
    static QString formatCount(qint64 count);
    const QString& summaryTitle() const { return m_summaryTitle; }
    const QString& summaryText() const { return m_summaryText; }

private:
    bool copiesAhead() const;

    RunContext m_context;
    QString m_programDirectory;
    QString m_summaryTitle;
    QString m_summaryText;
};

} // namespace ondrel
