#include "staging/FileStager.h"

#include "app/Module1.h"
#include "app/clsOndrelApp.h"
#include "platform/NativePath.h"
#include "platform/NativeText.h"
#include "staging/RunContext.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"
#include "staging/StagingRun.h"
#include "staging/TransferAhead.h"
#include "staging/basLibrary.h"

#include <QFile>

#include <algorithm>

#include <unistd.h>

namespace ondrel {

FileStager::FileStager(RunContext& run) : m_run(run) {}

QString FileStager::taskName(Task task) {
    switch (task) {
    case Task::CheckVarSP:
        return QStringLiteral("CheckVarSP");
    case Task::CheckDPDrive:
        return QStringLiteral("CheckDPDrive");
    case Task::GetSPAttr:
        return QStringLiteral("GetSPAttr");
    case Task::GetDPAttr:
        return QStringLiteral("GetDPAttr");
    case Task::FileCopy:
        return QStringLiteral("FileCopy");
    case Task::ProcessDP:
        return QStringLiteral("ProcessDP");
    }
    return {};
}

void FileStager::StageFile(const PlannedGroup& FileGroup, const QByteArray& SourceFile,
                           qsizetype relativeAt) {
    RunState& state = m_run.state();
    StagingHost& host = m_run.host();
    m_copied = false;
    host.yield();
    if (state.Cancelled)
        return;

    Call call;
    call.from = FileGroup.source;
    call.source = SourceFile;
    call.relativeAt = relativeAt;
    const QByteArrayView relative = QByteArrayView(SourceFile).sliced(relativeAt);
    if (call.from->various) {
        call.task = Task::CheckVarSP;
        call.sourceDir = relativeAt > 1 ? SourceFile.left(relativeAt - 1) : QByteArray("/");
        if (state.badSourceDirPaths.contains(call.sourceDir)) {
            m_run.addProblemFile(SourceFile);
            return;
        }
        for (;;) {
            const Result<void> exists = FileSystem::checkDirectory(call.sourceDir);
            if (exists.ok())
                break;
            if (handleError(exists.error(), call) != Next::Retry)
                return;
        }
    }

    host.showSourceFile(SourceFile);
    for (const PlannedDestination* to : FileGroup.destinations) {
        if (toDestination(call, *to, relative) == Next::Return)
            return;
    }
}

void FileStager::expect(const PlannedGroup& FileGroup, const QByteArray& SourceFile,
                        qsizetype relativeAt) {
    TransferAhead* ahead = m_run.ahead();
    const QByteArrayView relative = QByteArrayView(SourceFile).sliced(relativeAt);
    for (const PlannedDestination* to : FileGroup.destinations)
        ahead->submit(SourceFile, NativePath::join(to->base, relative), to->base);
}

bool FileStager::looksAreSlow() const {
    // A look at a file whose status the system holds in memory takes a few microseconds; one
    // that waits for a disk or a server takes far longer.
    constexpr auto slow = std::chrono::microseconds(50);
    return m_looks >= 8 && m_lookTime > slow * m_looks;
}

const QString& FileStager::Call::shownSource() {
    if (shownSourceText.isNull())
        shownSourceText = FileSystem::displayPath(source);
    return shownSourceText;
}

const QByteArray& FileStager::Call::drive() const {
    static const QByteArray none;
    return to ? to->drive : none;
}

const QByteArray& FileStager::Call::concerned(const Error& error) const {
    if (task == Task::CheckVarSP)
        return sourceDir;
    if (task == Task::GetSPAttr || destFile.isEmpty())
        return source;
    // A copy fails on either side: the source is named when it is the one that is missing or
    // cannot be read.
    if (task == Task::FileCopy && (error.number() == ErrNo::FileNotFound ||
                                   !FileSystem::checkAccess(source, Access::Read).ok()))
        return source;
    return destFile;
}

FileStager::Next FileStager::toDestination(Call& call, const PlannedDestination& to,
                                           QByteArrayView relative) {
    RunState& state = m_run.state();
    StagingHost& host = m_run.host();
    const clsOndrelApp& settings = m_run.settings();

    call.to = &to;
    call.destFile = NativePath::join(to.base, relative);
    const QByteArray& destFile = call.destFile;
    host.showDestFile(destFile);

    call.task = Task::CheckDPDrive;
    if (const auto next = checkDrive(call))
        return *next;

    // The source's status is read only where a decision needs it: its stored attributes when a
    // filter could leave it out, its time when an older destination is to be replaced. A fresh
    // copy of an unfiltered tree reads nothing of the source before copying it.
    const bool filtered =
        !settings.InclArc() || !settings.InclHid() || !settings.InclRO() || !settings.InclSys();
    if (filtered) {
        if (const auto next = readSourceStatus(call, StatusDetail::WithAttributes))
            return *next;
        const int attributes = call.sourceStatus->attributes;
        if (attributes != Attr::Normal && (((attributes & Attr::Archive) && !settings.InclArc()) ||
                                           ((attributes & Attr::Hidden) && !settings.InclHid()) ||
                                           ((attributes & Attr::ReadOnly) && !settings.InclRO()) ||
                                           ((attributes & Attr::System) && !settings.InclSys())))
            return Next::Return;
    }

    call.task = Task::GetDPAttr;
    std::optional<FileStatus> dest;
    // A copy made ahead is complete only where a worker found the destination missing a moment
    // ago: the run does not look again (on a network file system each look is a round trip),
    // since taking the name judges whatever stands there by then, as for a file that appears
    // while it is copied.
    const bool readyAhead = m_run.ahead() && m_run.ahead()->isReady(call.source, destFile);
    while (!readyAhead) {
        const auto lookStart = std::chrono::steady_clock::now();
        Result<FileStatus> status = m_run.ops().status(destFile, StatusDetail::Probe);
        m_lookTime += std::chrono::steady_clock::now() - lookStart;
        ++m_looks;
        if (status.ok()) {
            dest = status.value();
            break;
        }
        const int number = status.error().number();
        // A destination that is not there yet (nor its directory) is simply copied.
        if (number == ErrNo::FileNotFound || number == ErrNo::PathNotFound)
            break;
        if (const Next next = handleError(status.error(), call); next != Next::Retry)
            return next;
    }

    if (dest) {
        if (const auto next = decideOverwrite(call, *dest))
            return *next;
    }

    if (const auto next = copy(call, dest))
        return *next;
    host.yield();
    ++state.CopiedCount;
    host.showCopiedCount(state.CopiedCount);

    if (settings.ResetArchive()) {
        if (const auto next = resetArchive(call))
            return *next;
    }
    if (settings.DelSource())
        state.lstDelSource.push_back(call.source);
    call.task = Task::ProcessDP;
    return Next::NextDestination;
}

std::optional<FileStager::Next> FileStager::decideOverwrite(Call& call, const FileStatus& dest) {
    StagingHost& host = m_run.host();
    switch (m_run.settings().Overwrite()) {
    case OverwriteMode::IfOlder:
        if (const auto next = readSourceStatus(call, StatusDetail::WithoutAttributes))
            return next;
        call.task = Task::GetDPAttr;
        if (call.sourceStatus->modified <= dest.modified)
            return Next::NextDestination;
        return std::nullopt;
    case OverwriteMode::Prompt: {
        const QString text =
            FileSystem::displayPath(call.destFile) + QStringLiteral(" already exists.");
        m_run.log(QStringLiteral(">>>") + text);
        const MsgAnswer answer = host.ask(text + QStringLiteral("  Do you want to overwrite it?"),
                                          MsgButtons::YesNoCancel, MsgIcon::Question,
                                          QStringLiteral("Overwrite Existing File?"));
        if (answer == MsgAnswer::Cancel) {
            m_run.cancel();
            return Next::Return;
        }
        if (answer != MsgAnswer::Yes) {
            m_run.log(QStringLiteral(">>>Ignoring file . . ."));
            return Next::NextDestination;
        }
        m_run.log(QStringLiteral(">>>Overwriting . . ."));
        return std::nullopt;
    }
    case OverwriteMode::Always:
        return std::nullopt;
    default:
        // Never, and any value that is no mode, leaves the existing file alone.
        return Next::NextDestination;
    }
}

std::optional<FileStager::Next> FileStager::readSourceStatus(Call& call, StatusDetail detail) {
    if (call.sourceStatus && (detail == StatusDetail::WithoutAttributes || call.attributesRead))
        return std::nullopt;
    call.task = Task::GetSPAttr;
    for (;;) {
        Result<FileStatus> status = m_run.ops().status(call.source, detail);
        if (status.ok()) {
            call.sourceStatus = status.value();
            call.attributesRead = detail == StatusDetail::WithAttributes;
            return std::nullopt;
        }
        if (const Next next = handleError(status.error(), call); next != Next::Retry)
            return next;
    }
}

std::optional<FileStager::Next> FileStager::checkDrive(Call& call) {
    RunState& state = m_run.state();
    if (state.GoodDrives.contains(call.drive()))
        return std::nullopt;
    if (state.BadDrives.contains(call.drive())) {
        m_run.addProblemFile(call.source);
        return Next::NextDestination;
    }
    for (;;) {
        if (FileSystem::checkDirectory(call.drive()).ok()) {
            state.GoodDrives.append(call.drive());
            if (m_run.settings().DelSource())
                m_run.ops().watchWrites(call.drive());
            return std::nullopt;
        }
        if (const Next next = handleError(Error(ErrNo::DeviceUnavailable), call);
            next != Next::Retry)
            return next;
    }
}

std::optional<FileStager::Next> FileStager::copy(Call& call,
                                                 const std::optional<FileStatus>& dest) {
    RunState& state = m_run.state();
    const clsOndrelApp& settings = m_run.settings();
    const QByteArray& destFile = call.destFile;
    StagingHost& host = m_run.host();
    host.showDestFile(destFile);
    host.yield();
    call.task = Task::FileCopy;
    if (m_run.logging())
        m_run.log(QStringLiteral("Copying ") + call.shownSource() + QStringLiteral(" to ") +
                  FileSystem::displayPath(destFile));
    const QByteArray destDir = NativePath::parentOf(destFile);

    // The rule is decided again on any file that stands at the destination when the copy
    // takes its name and is not the one it was decided on: one may appear while a large file
    // is copied.
    std::optional<Next> declinedNext;
    CopyControl control;
    control.decidedOn = dest;
    control.mayReplace = [&](const FileStatus& found) {
        declinedNext = decideOverwrite(call, found);
        call.task = Task::FileCopy;
        if (declinedNext && settings.Overwrite() != OverwriteMode::Prompt && !state.Cancelled)
            m_run.log(QStringLiteral(">>>") + FileSystem::displayPath(destFile) +
                      QStringLiteral(" appeared while it was being copied; it was not replaced."));
        return !declinedNext;
    };
    control.keepGoing = [&] {
        host.yield();
        return !state.Cancelled;
    };
    // A move run by root leaves each file its owner, as mv does; a copy belongs to whoever runs
    // it, as with cp.
    control.keepOwner = settings.DelSource() && ::geteuid() == 0;

    bool madeDirs = false;
    bool firstTry = true;
    for (;;) {
        // What a killed run left: temporaries beside the files, and the directories its
        // threads made for their own at the top of the destination path.
        if (!state.writtenDirs.contains(destDir)) {
            for (const QByteArray* dir : {&destDir, &call.to->base}) {
                if (!state.writtenDirs.contains(*dir)) {
                    state.writtenDirs.insert(*dir);
                    m_run.ops().removeStaleTemporaries(*dir);
                }
            }
        }
        // A copy made ahead is taken once: a Retry copies the file here.
        std::optional<Result<CopiedFile>> ahead;
        if (firstTry)
            ahead = commitAhead(call, control);
        firstTry = false;
        const Result<CopiedFile> copied =
            ahead ? std::move(*ahead)
                  : m_run.ops().copyFile(call.source, destFile,
                                         dest ? DestinationHint::Unknown : DestinationHint::Missing,
                                         control);
        if (copied.ok() && copied->declined)
            return declinedNext.value_or(Next::NextDestination);
        // The disk may be full of transfers made ahead: they are given up and the copy is
        // tried again before the disk counts as full.
        if (!copied.ok() && copied.error().number() == ErrNo::DiskFull && m_run.ahead() &&
            m_run.ahead()->discardAll())
            continue;
        if (copied.ok()) {
            m_copied = true;
            state.copiedBytes += copied->source.size;
            if (settings.DelSource())
                rememberCopy(call, copied.value());
            if (!call.sourceStatus)
                call.sourceStatus = copied->source;
            return std::nullopt;
        }
        // Stopped by Cancel or Ctrl-C in the middle of a file: nothing of it is left.
        if (copied.error().number() == ErrNo::CancelSelected && state.Cancelled)
            return Next::Return;
        if (copied.error().number() == ErrNo::PathNotFound) {
            // The destination directory is missing: made when the options say so, then the
            // copy is tried once more.
            if (!m_run.settings().CreateDirs())
                return Next::NextDestination;
            const auto permissions = [&](const QByteArray& dir) {
                return permissionsFor(call, dir);
            };
            if (madeDirs || !basLibrary::MakeDirTree(destDir, m_run.ops(), host,
                                                     m_run.showErrMsgs(), permissions)) {
                m_run.addProblemFile(call.source);
                return Next::NextDestination;
            }
            madeDirs = true;
            ++state.madeDirectories;
            host.showDestFile(destFile);
            host.yield();
            continue;
        }
        if (const Next next = handleError(copied.error(), call); next != Next::Retry)
            return next;
    }
}

std::optional<Result<CopiedFile>> FileStager::commitAhead(const Call& call,
                                                          const CopyControl& control) {
    TransferAhead* ahead = m_run.ahead();
    if (!ahead)
        return std::nullopt;
    bool cancelled = false;
    const std::shared_ptr<TransferAhead::Entry> entry =
        ahead->take(call.source, call.destFile, control.keepGoing, cancelled);
    // A Cancel while the transfer was made stops it before it takes its name.
    if (cancelled)
        return Result<CopiedFile>(Error(ErrNo::CancelSelected));
    // A source written to since its transfer is copied again, as it is now: as the run with
    // one thread would have read it.
    if (!entry || entry->job->sourceChanged())
        return std::nullopt;
    entry->control.decidedOn = control.decidedOn;
    entry->control.mayReplace = control.mayReplace;
    entry->control.keepGoing = control.keepGoing;
    entry->control.keepOwner = control.keepOwner;
    Result<CopiedFile> committed = m_run.ops().commitFile(*entry->job);
    // This system cannot name a file made without one after all: copied again, by name.
    if (entry->job->mustRedoNamed())
        return std::nullopt;
    return committed;
}

void FileStager::rememberCopy(const Call& call, const CopiedFile& copied) {
    RunState& state = m_run.state();
    // The source as this copy read it: a move deletes it only if it is still so.
    RunState::Copied& entry = state.copiedSources[call.source];
    entry.source = copied.source;
    const bool known = std::any_of(entry.places.cbegin(), entry.places.cend(), [&](const auto& p) {
        return p.relativeAt == call.relativeAt && p.destination == call.to;
    });
    if (!known)
        entry.places.push_back({call.to, call.relativeAt, copied.device});
    // The file now at the destination holds this source, until another copy replaces it.
    state.copyHolders.insert({copied.device, copied.inode}, call.source);
}

int FileStager::permissionsFor(const Call& call, const QByteArray& dir) {
    // A selected file's directory is no counterpart of the destination's.
    if (call.from->various)
        return -1;
    const QByteArray& base = call.to->base;
    QByteArrayView below;
    if (dir != base) {
        const qsizetype start = base.endsWith('/') ? base.size() : base.size() + 1;
        if (!dir.startsWith(base) || dir.size() <= start || dir[start - 1] != '/')
            return -1; // above the destination path: the default
        below = QByteArrayView(dir).sliced(start);
    }
    const QByteArray source = NativePath::join(call.from->root, below);
    const Result<FileStatus> status = m_run.ops().status(source, StatusDetail::WithoutAttributes);
    if (!status.ok() || !status->isDirectory)
        return -1;
    // The bits of the source directory it stands for, so that a private directory stays
    // private, with setgid and sticky. Its owner may always enter and write it: a later run
    // copies into it again.
    return int((status->permissions & 03777) | 0700);
}

std::optional<FileStager::Next> FileStager::resetArchive(Call& call) {
    for (;;) {
        const Result<int> attributes = m_run.ops().getAttributes(call.source);
        Result<void> reset;
        // Taken off without looking: a source whose attributes lack Archive gets a value the
        // file system refuses, and the user hears of it.
        if (attributes.ok() && attributes.value() != Attr::Normal)
            reset = m_run.ops().setAttributes(call.source, attributes.value() - Attr::Archive);
        const Error& failure = attributes.ok() ? reset.error() : attributes.error();
        if (attributes.ok() && reset.ok()) {
            noteArchiveReset(call);
            return std::nullopt;
        }
        if (const Next next = handleError(failure, call); next != Next::Retry)
            return next;
    }
}

void FileStager::noteArchiveReset(const Call& call) {
    // Storing the attribute changed the source's change time: a move compares the source with
    // what it was after this, not before. Anything else that changed still keeps it.
    RunState& state = m_run.state();
    const auto entry = state.copiedSources.find(call.source);
    if (entry == state.copiedSources.end())
        return;
    const Result<FileStatus> now = m_run.ops().status(call.source, StatusDetail::WithoutAttributes);
    FileStatus& was = entry->source;
    if (now.ok() && now->device == was.device && now->inode == was.inode && now->size == was.size &&
        now->modifiedNs == was.modifiedNs)
        was.changedNs = now->changedNs;
}

FileStager::Next FileStager::handleError(const Error& error, Call& call) {
    RunState& state = m_run.state();
    const int number = error.number();
    QString message;
    QString boxText;
    QString title;
    MsgButtons buttons = MsgButtons::AbortRetryIgnore;
    switch (number) {
    case ErrNo::InvalidCall:
        message = QStringLiteral("Invalid procedure call or argument during task '") +
                  (call.task ? taskName(*call.task) : QString()) +
                  QStringLiteral("' in ''.  Contact Technical Support for assistance.");
        title = QStringLiteral("Invalid Procedure Call or Argument");
        break;
    case ErrNo::FileNotFound:
        message = call.shownSource() + QStringLiteral(" could not be found.");
        title = QStringLiteral("File Not Found");
        break;
    case ErrNo::FileAlreadyOpen:
    case ErrNo::PermissionDenied:
        message = QStringLiteral("Unable to stage ") + call.shownSource() +
                  QStringLiteral(".  The file may be in use by another application.");
        title = QStringLiteral("File Access Permission Denied");
        break;
    case ErrNo::DiskFull:
        message = QStringLiteral("The disk in drive ") + FileSystem::displayPath(call.drive()) +
                  QStringLiteral(": is full.");
        boxText = message + QStringLiteral("  The file currently being copied is ") +
                  StagingRun::formatCount(call.sourceStatus
                                              ? call.sourceStatus->size
                                              : FileSystem::fileLength(call.source).value_or(0)) +
                  QStringLiteral(" bytes.  If you are using a removable disk and want to continue "
                                 "with another disk, replace the current disk and then click "
                                 "'Retry'.");
        title = QStringLiteral("Disk Full");
        break;
    case ErrNo::DeviceUnavailable:
        message = QStringLiteral("Drive ") + FileSystem::displayPath(call.drive()) +
                  QStringLiteral(": is not currently mapped or is otherwise unavailable.");
        title = QStringLiteral("Device Not Found");
        break;
    case ErrNo::PathNotFound:
        message = QStringLiteral("Source Path ") +
                  (call.task == Task::CheckVarSP ? FileSystem::displayPath(call.sourceDir)
                                                 : NativeText::display(state.CurSourcePath)) +
                  QStringLiteral(" does not exist.");
        title = QStringLiteral("Source Path Not Found");
        buttons = MsgButtons::OKCancel;
        break;
    default:
        m_run.reportError(error, QStringLiteral(" occurred while staging."),
                          QStringLiteral("StageFile"), MsgButtons::OK, call.concerned(error));
        m_run.addProblemFile(call.source);
        return Next::NextDestination;
    }

    m_run.logError(message, call.concerned(error));
    MsgAnswer answer = buttons == MsgButtons::OKCancel ? MsgAnswer::OK : MsgAnswer::Ignore;
    if (m_run.showErrMsgs())
        answer = m_run.ask(call.concerned(error), boxText.isEmpty() ? message : boxText, buttons,
                           MsgIcon::Exclamation, title);

    if (number == ErrNo::PathNotFound) {
        // The source's directory is gone: the file is abandoned for every destination.
        if (call.task == Task::CheckVarSP) {
            state.BadSourceDirs += FileSystem::displayPath(call.sourceDir) + QStringLiteral("\r\n");
            state.badSourceDirPaths.insert(call.sourceDir);
        }
        m_run.addProblemFile(call.source);
        if (answer == MsgAnswer::Cancel)
            m_run.cancel();
        return Next::Return;
    }
    switch (answer) {
    case MsgAnswer::Abort:
    case MsgAnswer::Cancel:
        m_run.cancel();
        m_run.addProblemFile(call.source);
        return Next::Return;
    case MsgAnswer::Retry:
        m_run.logError(QStringLiteral("Retrying . . ."));
        return Next::Retry;
    default:
        if (number == ErrNo::DiskFull || number == ErrNo::DeviceUnavailable) {
            // Later files bound for this drive go straight to the problem list.
            state.GoodDrives.removeAll(call.drive());
            state.BadDrives.append(call.drive());
        }
        m_run.addProblemFile(call.source);
        return call.task == Task::CheckVarSP ? Next::Return : Next::NextDestination;
    }
}

} // namespace ondrel
