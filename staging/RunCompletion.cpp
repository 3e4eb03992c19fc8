#include "staging/RunCompletion.h"

#include "app/clsOndrelApp.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"
#include "staging/StagingLog.h"
#include "staging/StagingRun.h"

#include <QLocale>
#include <QSet>

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

QString RunCompletion::whyKept(const QByteArray& path, const FileStatus& now) const {
    const RunState& state = m_run.m_state;
    const auto copied = state.copiedSources.constFind(path);
    if (copied == state.copiedSources.cend())
        return {};
    // A source that changed after it was copied holds content no copy has.
    if (now.size != copied->size || now.modified != copied->modified)
        return QStringLiteral(" changed after it was copied; it was not deleted.");
    // Each copy must still be the file this run wrote for this source: not one that a later
    // copy of another source replaced, nor one changed or removed since.
    for (const RunState::CopyPlace& place : copied->places) {
        const QByteArray copy =
            NativePath::join(place.base, QByteArrayView(path).sliced(place.relativeAt));
        const Result<FileStatus> there = m_run.m_ops.status(copy, StatusDetail::WithoutAttributes);
        const bool holds = there.ok() &&
                           state.copyHolders.value({there->device, there->inode}) == path &&
                           there->size == copied->size && there->modified == copied->modified;
        if (!holds)
            return QStringLiteral(" was copied to ") + FileSystem::displayPath(copy) +
                   QStringLiteral(", which no longer holds it; it was not deleted.");
    }
    return {};
}

void RunCompletion::deleteSources() {
    RunState& state = m_run.m_state;
    const clsOndrelApp& settings = m_run.m_settings;
    if (state.lstDelSource.empty() || !settings.DelSource() || state.Cancelled)
        return;
    // The copies reach the disk before any source goes.
    m_run.m_ops.syncFileSystems(
        std::vector<QByteArray>(state.writtenDirs.cbegin(), state.writtenDirs.cend()));
    QSet<QByteArray> kept;
    QSet<RunState::FileId> deleted;
    for (const QByteArray& path : state.lstDelSource) {
        if (state.problemPaths.contains(path) || kept.contains(path))
            continue;
        ++state.DeletedCount;
        const QString shown = FileSystem::displayPath(path);
        const Result<FileStatus> now = m_run.m_ops.status(path, StatusDetail::WithoutAttributes);
        Result<void> removed;
        bool deletedBefore = false;
        if (now.ok()) {
            if (const QString why = whyKept(path, *now); !why.isEmpty()) {
                --state.DeletedCount;
                kept.insert(path);
                state.UndeletedFiles += shown + kCrLf;
                m_run.log(QStringLiteral(">>>") + shown + why);
                continue;
            }
        } else {
            // Not there: a second entry of a file deleted already, or a link to a file this run
            // deleted, which the look followed. Either is deleted as the entry itself, never
            // through it; for the second entry that reports the file as not found.
            const auto copied = state.copiedSources.constFind(path);
            deletedBefore = copied != state.copiedSources.cend() && deleted.contains(copied->id);
            if (!deletedBefore)
                removed = now.error();
        }
        if (removed.ok())
            removed = m_run.m_ops.deleteFile(path);
        if (removed.ok()) {
            if (now.ok())
                deleted.insert({now->device, now->inode});
            continue;
        }
        const int number = removed.error().number();
        if (number == ErrNo::PathFileAccess || number == ErrNo::PermissionDenied) {
            state.UndeletedFiles += shown + kCrLf;
            const QString text = QStringLiteral("Unable to delete ") + shown +
                                 QStringLiteral(".  You may not have delete rights, or the file "
                                                "may be Read-Only.");
            m_run.logError(text);
            if (m_run.showErrMsgs())
                m_run.ask(path, text, MsgButtons::OK, MsgIcon::Exclamation,
                          QStringLiteral("File Access Error"));
            --state.DeletedCount;
        } else {
            const bool errorBefore = state.errorReported;
            m_run.reportError(
                removed.error(),
                QStringLiteral(" occurred while deleting files or preparing summary info."),
                QStringLiteral("Form_Unload"), MsgButtons::OK, path);
            // A file staged to two destinations stands twice in the list; the second entry
            // finds it deleted by the first and is reported so, yet nothing went wrong.
            if (deletedBefore && number == ErrNo::FileNotFound)
                state.errorReported = errorBefore;
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
        m_run.closeLog();
    }
    m_run.m_host.showSummary(m_run.m_summaryTitle, m_run.m_summaryText);
}

} // namespace ondrel
