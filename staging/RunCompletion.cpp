#include "staging/RunCompletion.h"

#include "app/clsOndrelApp.h"
#include "platform/FileSystem.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"
#include "staging/StagingLog.h"
#include "staging/StagingRun.h"

#include <QLocale>

#include <vector>

namespace ondrel {

namespace {

const QString kCrLf = QStringLiteral("\r\n");

// "dddd, mmm d yyyy  hh:mm:ss AMPM", with English day and month names.
QString summaryDateTime(const QDateTime& when) {
    return QLocale(QLocale::English, QLocale::UnitedStates)
        .toString(when, QStringLiteral("dddd, MMM d yyyy  hh:mm:ss AP"));
}

} // namespace

QString StagingRun::formatCount(qint64 count) {
    QLocale locale = QLocale::system();
    // The plain C locale has no thousands separator; the summary always shows one.
    if (locale.language() == QLocale::C)
        locale = QLocale(QLocale::English, QLocale::UnitedStates);
    locale.setNumberOptions(locale.numberOptions() & ~QLocale::OmitGroupSeparator);
    return locale.toString(count);
}

RunCompletion::RunCompletion(StagingRun& run) : m_run(run) {}

void RunCompletion::deleteSources() {
    RunState& state = m_run.m_state;
    const clsOndrelApp& settings = m_run.m_settings;
    if (state.lstDelSource.empty() || !settings.DelSource() || state.Cancelled)
        return;
    // The copies reach the disk before any source goes.
    m_run.m_ops.syncFileSystems(
        std::vector<QByteArray>(state.writtenDirs.cbegin(), state.writtenDirs.cend()));
    for (const QByteArray& path : state.lstDelSource) {
        if (state.problemPaths.contains(path))
            continue;
        ++state.DeletedCount;
        const QString shown = FileSystem::displayPath(path);
        // A source that changed after it was copied holds content no copy has: it stays.
        const Result<FileStatus> now = m_run.m_ops.status(path, StatusDetail::WithoutAttributes);
        const auto copied = state.copiedSources.constFind(path);
        Result<void> deleted = now.ok() ? Result<void>() : Result<void>(now.error());
        if (now.ok() && copied != state.copiedSources.cend() &&
            (now->size != copied->size || now->modified != copied->modified)) {
            --state.DeletedCount;
            state.UndeletedFiles += shown + kCrLf;
            m_run.log(QStringLiteral(">>>") + shown +
                      QStringLiteral(" changed after it was copied; it was not deleted."));
            continue;
        }
        if (deleted.ok())
            deleted = m_run.m_ops.deleteFile(path);
        if (deleted.ok())
            continue;
        const int number = deleted.error().number();
        if (number == ErrNo::PathFileAccess || number == ErrNo::PermissionDenied) {
            state.UndeletedFiles += shown + kCrLf;
            const QString text = QStringLiteral("Unable to delete ") + shown +
                                 QStringLiteral(".  You may not have delete rights, or the file "
                                                "may be Read-Only.");
            m_run.log(QStringLiteral("***") + text);
            if (m_run.showErrMsgs())
                m_run.m_host.ask(text, MsgButtons::OK, MsgIcon::Exclamation,
                                 QStringLiteral("File Access Error"));
            --state.DeletedCount;
        } else {
            m_run.reportError(
                deleted.error(),
                QStringLiteral(" occurred while deleting files or preparing summary info."),
                QStringLiteral("Form_Unload"));
        }
    }
}

QString RunCompletion::summary() const {
    const RunState& state = m_run.m_state;
    const bool move = m_run.m_settings.DelSource();
    QString text;
    text += QStringLiteral("Start Date/Time:\t") + summaryDateTime(state.StartTime) + kCrLf;
    text +=
        QStringLiteral("End Date/Time:\t") + summaryDateTime(QDateTime::currentDateTime()) + kCrLf;
    text += (state.Cancelled ? QStringLiteral("Staging aborted.")
                             : QStringLiteral("Staging completed.")) +
            kCrLf + kCrLf;
    if (state.Cancelled && move)
        text +=
            QStringLiteral("No files were deleted from their source directories.") + kCrLf + kCrLf;
    text += QStringLiteral("The following files encountered problems during staging:") + kCrLf;
    text += state.ProblemFiles.isEmpty() ? QStringLiteral("NONE") + kCrLf : state.ProblemFiles;
    if (!state.Cancelled && move && !state.UndeletedFiles.isEmpty())
        text += kCrLf + state.UndeletedFiles +
                QStringLiteral("They were not deleted from their source directories.") + kCrLf;
    text += kCrLf;
    if (!state.Cancelled && move)
        text += QStringLiteral("# of Files Deleted:\t") +
                StagingRun::formatCount(state.DeletedCount) + kCrLf;
    text +=
        QStringLiteral("# of Files Copied:\t") + StagingRun::formatCount(state.CopiedCount) + kCrLf;
    return text;
}

void RunCompletion::Unload() {
    deleteSources();
    const bool cancelled = m_run.m_state.Cancelled;
    m_run.m_summaryText = summary();
    m_run.m_summaryTitle =
        cancelled ? QStringLiteral("Staging Aborted!") : QStringLiteral("Staging Complete!");
    if (m_run.m_log) {
        m_run.log(cancelled ? QStringLiteral("Staging aborted")
                            : QStringLiteral("Staging completed"));
        QString text = m_run.m_summaryText;
        if (text.endsWith(kCrLf))
            text.chop(2);
        for (const QString& line : text.split(kCrLf))
            m_run.log(line);
        (void)m_run.m_log->close();
        m_run.m_log = nullptr;
    }
    m_run.m_host.showSummary(m_run.m_summaryTitle, m_run.m_summaryText);
}

} // namespace ondrel
