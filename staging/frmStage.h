#pragma once

#include "staging/StagingHost.h"
#include "staging/StagingRun.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QString>
#include <QStringList>

#include <array>

class QLabel;
class QProgressBar;
class QPushButton;

namespace ondrel {

class clsSpecFile;
class clsOndrelApp;
class StagingFileOps;
class StagingLog;

// The staging window: runs one staging run while it is open and shows its progress. The run
// starts when the window is built, does its walk on the first activation and ends when the
// window closes; the only input the user has is the Cancel button.
class frmStage : public QDialog, public StagingHost {
    Q_OBJECT

public:
    frmStage(const clsSpecFile& spec, const clsOndrelApp& settings, const QStringList& VariousFiles,
             StagingFileOps& ops, StagingLog* log, const QString& programDirectory,
             QWidget* parent = nullptr);
    ~frmStage() override;

    const StagingRun& run() const { return m_run; }

    // StagingHost
    MsgAnswer ask(const QString& prompt, MsgButtons buttons, MsgIcon icon,
                  const QString& title) override;
    void showSourcePath(const QString& text) override;
    void showFileGroup(const QString& text) override;
    void showDirectory(const QString& text) override;
    void showSourceFile(const QByteArray& path) override;
    void showDestFile(const QByteArray& path) override;
    void setProgressRange(int count) override;
    void advanceProgress() override;
    void showCopiedCount(int count) override;
    void yield() override;
    void setBusy(bool busy) override;
    void showSummary(const QString& title, const QString& text) override;

    // Closing ends the run (once). While the walk runs, closing (the window's close button,
    // Escape) cancels instead: the window closes when the walk has returned.
    void done(int result) override;

private Q_SLOTS:
    void cmdCancel_Click();

protected:
    void showEvent(QShowEvent* event) override;

private:
    // What the labels show, in the order of the window.
    enum Line { SourcePath, FileGroup, Directory, SourceFile, DestFile, LineCount };

    void Form_Activate();
    void setLine(Line line, const QString& text);
    void setPathLine(Line line, const QByteArray& path);
    // Puts what the run reported since the last real yield on screen. Kept apart from the
    // reports themselves because eliding and repainting cost far more than the copy of a small
    // file; done at most every few tens of milliseconds, and before anything is shown on top.
    void applyPending();

    QLabel* lblSP = nullptr;
    QLabel* lblFG = nullptr;
    QLabel* lblCurDir = nullptr;
    QLabel* lblSourceFile = nullptr;
    QLabel* lblDestFile = nullptr;
    QLabel* lblCopiedCount = nullptr;
    QProgressBar* pbrProgress = nullptr;
    QPushButton* cmdCancel = nullptr;
    std::array<QLabel*, LineCount> m_lineLabels{};

    std::array<QString, LineCount> m_pendingText;
    std::array<QByteArray, LineCount> m_pendingPath; // for a line that shows a native path
    std::array<bool, LineCount> m_lineIsPath{};
    std::array<bool, LineCount> m_textChanged{};
    int m_progressMax = 0;
    int m_progressValue = 0;
    bool m_progressChanged = false;
    int m_copiedCount = -1;
    bool m_copiedChanged = false;
    QElapsedTimer m_sinceYield;

    bool m_activated = false;
    bool m_walking = false;
    bool m_unloaded = false;
    bool m_busy = false;

    StagingRun m_run;
};

} // namespace ondrel
