#pragma once

#include "platform/MsgBox.h"

#include <QByteArray>
#include <QString>

namespace ondrel {

class StagingRun;

// What a staging run needs of whoever shows it: the staging window, the headless stager's
// terminal, or a test. The run knows no widgets; it shows its progress and asks its questions
// only through this.
class StagingHost {
public:
    virtual ~StagingHost() = default;

    // Asks the user; the same texts, titles, buttons and icons as the message boxes of the run.
    virtual MsgAnswer ask(const QString& prompt, MsgButtons buttons, MsgIcon icon,
                          const QString& title) = 0;

    // Asks as ask() does a question about one file or directory, path (native). The texts of
    // the questions are fixed and do not always name it; a host that can show it beside them
    // does (the terminal prints it after the question).
    virtual MsgAnswer askAbout(const QByteArray& path, const QString& prompt, MsgButtons buttons,
                               MsgIcon icon, const QString& title) {
        (void)path;
        return ask(prompt, buttons, icon, title);
    }

    // A failure the run met (the text of its "***" line in the log), or an entry it passed over
    // (a fifo, a device, a link that leads nowhere), about path (native) when it concerns one.
    // Told whatever the options say and whether or not a box follows: a host
    // that keeps no record of its own, such as the terminal, says which file failed; the window
    // leaves it to its boxes and the log.
    virtual void reportFailure(const QString& text, const QByteArray& path) {
        (void)text;
        (void)path;
    }

    // The run in progress: what is being worked on (lblSP, lblFG, lblCurDir, lblSourceFile,
    // lblDestFile of the staging window). The files come as native paths, shown as
    // FileSystem::displayPath shows them: they change with every file, and a host makes their
    // text only when it draws them.
    virtual void showSourcePath(const QString& text) = 0;
    virtual void showFileGroup(const QString& text) = 0;
    virtual void showDirectory(const QString& text) = 0;
    virtual void showSourceFile(const QByteArray& path) = 0;
    virtual void showDestFile(const QByteArray& path) = 0;

    // Progress through the entries of the current directory or selected-file list.
    virtual void setProgressRange(int count) = 0;
    virtual void advanceProgress() = 0;

    // Called after each copy with the run's count of copies so far.
    virtual void showCopiedCount(int count) { (void)count; }

    // Lets the user interface serve pending events (the Cancel button, which calls
    // StagingRun::Cancel). Called before each directory, before each file and around each
    // copy, so it must cost next to nothing when no event is waiting.
    virtual void yield() = 0;

    // The busy pointer while the walk runs.
    virtual void setBusy(bool busy) { (void)busy; }

    // The summary at the end of the run (frmStageInfo).
    virtual void showSummary(const QString& title, const QString& text) = 0;
};

} // namespace ondrel
