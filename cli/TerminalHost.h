#pragma once

#include "staging/StagingHost.h"

#include <QString>

#include <ctime>

namespace ondrel {

class StagingRun;

// The staging window of the headless stager: asks the run's questions on the terminal (or
// answers them from the command line), keeps a one-line progress display on standard error,
// turns Ctrl-C into the Cancel button, and prints the summary on standard output.
class TerminalHost : public StagingHost {
public:
    struct Answers {
        MsgAnswer overwrite = MsgAnswer::No;   // Yes/No/Cancel questions
        MsgAnswer onError = MsgAnswer::Ignore; // Abort/Retry/Ignore questions
        MsgAnswer onQuestion = MsgAnswer::OK;  // OK/Cancel questions
    };
    enum class Asking { OnTerminal, FromAnswers };
    enum class Progress { Shown, Hidden };

    TerminalHost(Answers answers, Asking asking, Progress progress);

    // The run whose Cancel an interrupt presses.
    void attach(StagingRun& run) { m_run = &run; }

    // SIGINT and SIGTERM set a flag that the next yield turns into Cancel; a second one ends the
    // program at once, by the signal itself.
    static void installInterruptHandlers();
    static bool interrupted();

    // A line for standard output, kept apart from the progress line.
    void printLine(const QString& line);

    // A message for the terminal: lines end with LF, and nothing in them (a name from the spec
    // file or the disk) can start a line of its own or drive the terminal.
    static QString terminalText(const QString& text);

    // The progress line without its current file: "1,234 files  5.6 MiB  7.8 MiB/s  ".
    static QString progressHead(qint64 files, qint64 bytes, double seconds);

    MsgAnswer ask(const QString& prompt, MsgButtons buttons, MsgIcon icon,
                  const QString& title) override;
    // The question as ask() puts it, followed by a line naming the path it concerns.
    MsgAnswer askAbout(const QByteArray& path, const QString& prompt, MsgButtons buttons,
                       MsgIcon icon, const QString& title) override;
    // One line on standard error, whatever the options say: the text of the log's error line,
    // and the path when the text does not name it already.
    void reportFailure(const QString& text, const QByteArray& path) override;
    void showSourcePath(const QString& text) override { (void)text; }
    void showFileGroup(const QString& text) override { (void)text; }
    void showDirectory(const QString& text) override;
    void showSourceFile(const QByteArray& path) override;
    void showDestFile(const QByteArray& path) override { (void)path; }
    void setProgressRange(int count) override { (void)count; }
    void advanceProgress() override {}
    void yield() override;
    void showSummary(const QString& title, const QString& text) override;

private:
    struct Reply {
        enum class Kind { Line, EndOfInput, Interrupted } kind;
        QString line;
    };
    MsgAnswer answerFromOptions(MsgButtons buttons) const;
    MsgAnswer askOnTerminal(const QString& prompt, const QString& pathLine, MsgButtons buttons,
                            const QString& title);
    static Reply readLine();
    void drawProgress(const timespec& now);
    void clearProgress();

    Answers m_answers;
    Asking m_asking;
    Progress m_progress;
    StagingRun* m_run = nullptr;
    QString m_current;        // the directory being worked on
    QByteArray m_currentFile; // or the file, when m_currentIsDirectory is false
    timespec m_lastDrawn{};
    timespec m_started{}; // the first draw: the rate is counted from there
    bool m_startedKnown = false;
    bool m_stdoutIsTerminal;
    bool m_progressShown = false;
    bool m_currentIsDirectory = false;
    bool m_cancelNoted = false;
};

} // namespace ondrel
