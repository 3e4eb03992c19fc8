#include "staging/RunCompletion.h"

#include "app/clsOndrelApp.h"
#include "platform/DirectoryHandles.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "platform/Volumes.h"
#include "staging/RunContext.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"
#include "staging/StagingLog.h"
#include "staging/StagingRun.h"

#include <QLocale>
#include <QSet>

#include <algorithm>
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

RunCompletion::RunCompletion(RunContext& run) : m_run(run) {}

QString RunCompletion::whyKept(const QByteArray& path, const FileStatus& now,
                               const std::vector<dev_t>& unsynced) const {
    const RunState& state = m_run.state();
    const auto copied = state.copiedSources.constFind(path);
    if (copied == state.copiedSources.cend())
        return {};
    // A source that changed after it was copied, even within the same second and to the same
    // size, or that another file has replaced, holds content no copy has.
    if (!now.sameFileAs(copied->source))
        return QStringLiteral(" changed after it was copied; it was not deleted.");
    // Each copy must have reached the disk, and still be the file this run wrote for this
    // source: not one that a later copy of another source replaced, nor one changed or removed
    // since.
    for (const RunState::CopyPlace& place : copied->places) {
        const QByteArray copy = NativePath::join(place.destination->base,
                                                 QByteArrayView(path).sliced(place.relativeAt));
        if (std::find(unsynced.cbegin(), unsynced.cend(), place.device) != unsynced.cend())
            return QStringLiteral(" was copied to ") + FileSystem::displayPath(copy) +
                   QStringLiteral(", which the disk failed to write; it was not deleted.");
        const Result<FileStatus> there = m_run.ops().status(copy, StatusDetail::WithoutAttributes);
        const bool holds =
            there.ok() && state.copyHolders.value({there->device, there->inode}) == path &&
            there->size == copied->source.size && there->modified == copied->source.modified;
        if (!holds)
            return QStringLiteral(" was copied to ") + FileSystem::displayPath(copy) +
                   QStringLiteral(", which no longer holds it; it was not deleted.");
    }
    return {};
}

std::vector<dev_t> RunCompletion::syncCopies() {
    RunState& state = m_run.state();
    const std::vector<dev_t> failed = m_run.ops().syncFileSystems();
    for (const dev_t device : failed) {
        // Named by the drive as the run knows it: the mount point of a copy on that device.
        QByteArray drive;
        for (const RunState::Copied& copied : std::as_const(state.copiedSources)) {
            for (const RunState::CopyPlace& place : copied.places)
                if (place.device == device && drive.isEmpty())
                    drive = place.destination->drive;
        }
        m_run.logError(QStringLiteral("The disk in drive ") + FileSystem::displayPath(drive) +
                       QStringLiteral(": failed to write the copies made on it.  Their source "
                                      "files were not deleted."));
    }
    return failed;
}

void RunCompletion::keepTheRest(size_t from) {
    RunState& state = m_run.state();
    QSet<QByteArray> listed;
    for (size_t i = from; i < state.lstDelSource.size(); ++i) {
        const QByteArray& path = state.lstDelSource[i];
        if (state.problemPaths.contains(path) || listed.contains(path))
            continue;
        listed.insert(path);
        state.deletions.push_back({path, RunState::Deletion::NotReached});
    }
}

void RunCompletion::tallyDeletions() {
    RunState& state = m_run.state();
    using Deletion = RunState::Deletion;
    for (const RunState::DeletionRecord& record : state.deletions) {
        switch (record.outcome) {
        case Deletion::Deleted:
        case Deletion::Failed:
            ++state.DeletedCount;
            break;
        case Deletion::NotPermitted:
        case Deletion::Kept:
        case Deletion::NotReached:
            state.UndeletedFiles += FileSystem::displayPath(record.path) + kCrLf;
            break;
        }
    }
}

void RunCompletion::deleteSources() {
    RunState& state = m_run.state();
    const clsOndrelApp& settings = m_run.settings();
    if (state.lstDelSource.empty() || !settings.DelSource() || state.Cancelled)
        return;
    // The sources are reached as the walk reached them: below a source path, never through a
    // link to a directory that someone put there since.
    const DirectoryHandles::Scope handles;
    m_run.plan().addRoots();
    // The copies reach the disk before any source goes.
    const std::vector<dev_t> unsynced = syncCopies();
    QSet<QByteArray> kept;
    QSet<RunState::FileId> deleted;
    for (size_t i = 0; i < state.lstDelSource.size(); ++i) {
        const QByteArray& path = state.lstDelSource[i];
        if (state.problemPaths.contains(path) || kept.contains(path))
            continue;
        // Cancel and Ctrl-C stop the deletions too: what is not yet deleted stays.
        m_run.host().yield();
        if (state.Cancelled) {
            state.deletionsStopped = true;
            keepTheRest(i);
            return;
        }
        const QString shown = FileSystem::displayPath(path);
        const Result<FileStatus> now = m_run.ops().status(path, StatusDetail::WithoutAttributes);
        Result<void> removed;
        bool deletedBefore = false;
        if (now.ok()) {
            if (const QString why = whyKept(path, *now, unsynced); !why.isEmpty()) {
                kept.insert(path);
                state.deletions.push_back({path, RunState::Deletion::Kept});
                m_run.log(QStringLiteral(">>>") + shown + why);
                continue;
            }
        } else {
            // Not there: a second entry of a file deleted already, or a link to a file this run
            // deleted, which the look followed. Either is deleted as the entry itself, never
            // through it; for the second entry that reports the file as not found.
            const auto copied = state.copiedSources.constFind(path);
            deletedBefore = copied != state.copiedSources.cend() &&
                            deleted.contains({copied->source.device, copied->source.inode});
            if (now.error().number() == ErrNo::PathFileAccess) {
                // A directory on its way was swapped for a link since the walk: what the path
                // leads to now is not what was copied.
                kept.insert(path);
                state.deletions.push_back({path, RunState::Deletion::Kept});
                m_run.logError(shown + QStringLiteral(" is reached through a link to a directory "
                                                      "now; it was not deleted."));
                continue;
            }
            if (!deletedBefore)
                removed = now.error();
        }
        if (removed.ok())
            removed = m_run.ops().deleteFile(path);
        if (removed.ok()) {
            if (now.ok())
                deleted.insert({now->device, now->inode});
            state.deletions.push_back({path, RunState::Deletion::Deleted});
            continue;
        }
        const int number = removed.error().number();
        if (number == ErrNo::PathFileAccess || number == ErrNo::PermissionDenied) {
            state.deletions.push_back({path, RunState::Deletion::NotPermitted});
            const QString text = QStringLiteral("Unable to delete ") + shown +
                                 QStringLiteral(".  You may not have delete rights, or the file "
                                                "may be Read-Only.");
            m_run.logError(text);
            if (m_run.showErrMsgs())
                m_run.ask(path, text, MsgButtons::OK, MsgIcon::Exclamation,
                          QStringLiteral("File Access Error"));
        } else {
            state.deletions.push_back({path, RunState::Deletion::Failed});
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
    const RunState& state = m_run.state();
    const bool move = m_run.settings().DelSource();
    QString text;
    text += QStringLiteral("Start Date/Time:\t") + summaryDateTime(state.StartTime) + kCrLf;
    text +=
        QStringLiteral("End Date/Time:\t") + summaryDateTime(QDateTime::currentDateTime()) + kCrLf;
    text += (state.Cancelled ? QStringLiteral("Staging aborted.")
                             : QStringLiteral("Staging completed.")) +
            kCrLf + kCrLf;
    // A run cancelled while its sources were being deleted has deleted some: it says which
    // stayed and how many went, as a completed move does.
    const bool deletionsDone = !state.Cancelled || state.deletionsStopped;
    if (!deletionsDone && move)
        text +=
            QStringLiteral("No files were deleted from their source directories.") + kCrLf + kCrLf;
    text += QStringLiteral("The following files encountered problems during staging:") + kCrLf;
    text += state.ProblemFiles.isEmpty() ? QStringLiteral("NONE") + kCrLf : state.ProblemFiles;
    if (deletionsDone && move && !state.UndeletedFiles.isEmpty())
        text += kCrLf + state.UndeletedFiles +
                QStringLiteral("They were not deleted from their source directories.") + kCrLf;
    text += kCrLf;
    if (deletionsDone && move)
        text += QStringLiteral("# of Files Deleted:\t") +
                StagingRun::formatCount(state.DeletedCount) + kCrLf;
    text +=
        QStringLiteral("# of Files Copied:\t") + StagingRun::formatCount(state.CopiedCount) + kCrLf;
    return text;
}

RunSummary RunCompletion::Unload() {
    deleteSources();
    tallyDeletions();
    const bool cancelled = m_run.state().Cancelled;
    RunSummary shown;
    shown.text = summary();
    shown.title =
        cancelled ? QStringLiteral("Staging Aborted!") : QStringLiteral("Staging Complete!");
    if (m_run.logFile()) {
        m_run.log(cancelled ? QStringLiteral("Staging aborted")
                            : QStringLiteral("Staging completed"));
        QString text = shown.text;
        if (text.endsWith(kCrLf))
            text.chop(2);
        for (const QString& line : text.split(kCrLf))
            m_run.log(line);
        m_run.closeLog();
    }
    m_run.host().showSummary(shown.title, shown.text);
    return shown;
}

} // namespace ondrel
