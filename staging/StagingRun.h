#pragma once

#include "platform/MsgBox.h"
#include "staging/RunState.h"

#include <QString>
#include <QStringList>

namespace ondrel {

class clsSpecFile;
class clsOndrelApp;
class StagingHost;
class StagingFileOps;
class StagingLog;

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
    void Cancel() { m_state.Cancelled = true; }

    const RunState& state() const { return m_state; }
    // A count as the summary shows it, "#,##0": with thousands separators.
    static QString formatCount(qint64 count);
    const QString& summaryTitle() const { return m_summaryTitle; }
    const QString& summaryText() const { return m_summaryText; }

private:
    friend class DirWalker;
    friend class FileStager;
    friend class RunCompletion;

    // Writes one line to the log when the run has one, with whatever it quotes shown as
    // NativeText::display shows it (a record is one line whatever a name holds). The first
    // write that fails is an error of the run, told to the user once; the log then takes no
    // more lines.
    void log(const QString& line);
    bool logging() const { return m_log != nullptr && !m_logFailed; }
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
    // A source or destination path of the spec as the run works with it: native, absolute (a
    // relative path is taken from the spec file's directory), without a trailing separator.
    QByteArray nativePath(const QString& specPath) const;
    // Names every source and destination path of the spec as a root of the directory handles'
    // active Scope: below them, the run never follows a link to a directory.
    void addRoots() const;
    void logFailed(const Error& error);

    const clsSpecFile& m_spec;
    const clsOndrelApp& m_settings;
    const QStringList& m_variousFiles;
    StagingHost& m_host;
    StagingFileOps& m_ops;
    StagingLog* m_log;
    bool m_logFailed = false;
    QString m_programDirectory;
    RunState m_state;
    QString m_summaryTitle;
    QString m_summaryText;
};

} // namespace ondrel
