#include "staging/DirWalker.h"

#include "app/clsOndrelApp.h"
#include "platform/Convert.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "platform/NativeText.h"
#include "spec/clsSpecFile.h"
#include "staging/RunContext.h"
#include "staging/StagingHost.h"
#include "staging/TransferAhead.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace ondrel {

namespace {

int groupsWithDestinations(const clsSourcePath& sp) {
    int n = 0;
    for (const auto& fg : sp.FGs())
        n += fg->DPs().Count() > 0 ? 1 : 0;
    return n;
}

} // namespace

DirWalker::DirWalker(RunContext& run) : m_run(run), m_stager(run) {
    for (const PlannedDestination& destination : run.plan().destinations())
        m_missingDestinations.push_back(destination.base);
    m_madeDirectoriesSeen = -1;
    findMadeDestinations();
}

void DirWalker::findMadeDestinations() {
    if (m_madeDirectoriesSeen == m_run.state().madeDirectories)
        return;
    m_madeDirectoriesSeen = m_run.state().madeDirectories;
    std::erase_if(m_missingDestinations, [&](const QByteArray& path) {
        const Result<FileStatus> found = FileSystem::status(path, StatusDetail::WithoutAttributes);
        if (!found.ok() || !found->isDirectory)
            return false;
        m_destinationIds.insert({found->device, found->inode});
        return true;
    });
}

bool DirWalker::askToContinue(const QString& text, const QString& title) {
    if (!m_run.showErrMsgs())
        return true;
    const MsgAnswer answer =
        m_run.host().ask(text + QStringLiteral("  Click 'OK' to continue staging."),
                         MsgButtons::OKCancel, MsgIcon::Exclamation, title);
    if (answer == MsgAnswer::Cancel) {
        m_run.cancel();
        return false;
    }
    return true;
}

bool DirWalker::sourcePathNotFound(const QString& name, const QByteArray& path) {
    const QString text = QStringLiteral("Source Path ") + name + QStringLiteral(" does not exist.");
    m_run.logError(text);
    if (!m_run.showErrMsgs())
        return true;
    if (m_run.ask(path, text, MsgButtons::OKCancel, MsgIcon::Exclamation,
                  QStringLiteral("Source Path Not Found")) == MsgAnswer::Cancel) {
        m_run.cancel();
        return false;
    }
    return true;
}

void DirWalker::Activate() {
    for (const PlannedSource& source : m_run.plan().sources()) {
        if (!walkSourcePath(source) || m_run.state().Cancelled)
            break;
    }
}

bool DirWalker::walkSourcePath(const PlannedSource& source) {
    StagingHost& host = m_run.host();
    const clsSourcePath& sp = *source.path;
    const QString& name = sp.Name();
    const bool various = source.various;
    m_run.state().CurSourcePath = name;
    host.showSourcePath(name);
    // Names from the spec file are shown as file names are: they may hold anything.
    const QString shown = NativeText::display(name);
    m_run.log(QStringLiteral("Source Path:\t") + shown);
    if (!various)
        m_run.log(QStringLiteral("Include sub-directories:  ") +
                  Convert::booleanText(sp.InclSubDirs()));

    const QByteArray& dir = source.root;
    if (!various) {
        host.showDirectory(name);
        const Result<void> exists = FileSystem::checkDirectory(dir);
        if (!exists.ok()) {
            if (exists.error().number() == ErrNo::PathNotFound)
                return sourcePathNotFound(shown, dir);
            const MsgAnswer answer = m_run.reportError(
                exists.error(), QStringLiteral(" occurred while processing Source Paths."),
                QStringLiteral("Form_Activate"), MsgButtons::OKCancel, dir);
            if (answer == MsgAnswer::Cancel) {
                m_run.cancel();
                return false;
            }
            return true;
        }
    }

    if (sp.FGs().Count() == 0) {
        const QString text = QStringLiteral("Source Path ") + shown +
                             QStringLiteral(" did not have any File Groups.");
        m_run.log(QStringLiteral(">>>") + text);
        return various || askToContinue(text, QStringLiteral("No File Groups"));
    }

    QString groups;
    for (const auto& fg : sp.FGs())
        groups += fg->Name();
    m_run.log(QStringLiteral("File Group(s):\t") + NativeText::display(groups));

    if (groupsWithDestinations(sp) == 0) {
        const QString text = QStringLiteral("None of the File Groups for Source Path ") + shown +
                             QStringLiteral(" had any Destination Paths.");
        m_run.log(QStringLiteral(">>>") + text);
        return askToContinue(text, QStringLiteral("No Destination Paths"));
    }

    if (various)
        walkVariousFiles(source);
    else
        DirWalk(source, dir);
    return true;
}

void DirWalker::walkVariousFiles(const PlannedSource& source) {
    StagingHost& host = m_run.host();
    host.setProgressRange(int(m_run.variousFiles().size()));
    for (const QString& entry : m_run.variousFiles()) {
        // The list holds native names as NativeText gives them, odd bytes included.
        const QByteArray path = NativeText::toNative(entry);
        const qsizetype nameAt = path.lastIndexOf('/') + 1;
        const QByteArray fileName = path.mid(nameAt);
        for (const PlannedGroup& group : source.groups) {
            if (group.destinations.empty())
                continue;
            const clsFileGroup* fg = group.group;
            host.showFileGroup(fg->Name());
            // Each mask is matched against the file's name, without regard to case, as the
            // directory walk matches it; a path that is no file name matches nothing.
            for (const QString& mask : fg->Name().split(u';')) {
                if (entry.isEmpty() || fileName.isEmpty() ||
                    !FileSystem::matchesMask(fileName, mask.trimmed()))
                    continue;
                m_stager.StageFile(group, path, nameAt);
                if (m_run.state().Cancelled)
                    return;
            }
        }
        host.advanceProgress();
    }
}

bool DirWalker::isOwnDestination(const QByteArray& dir) {
    findMadeDestinations();
    if (m_destinationIds.isEmpty())
        return false;
    const Result<FileStatus> status = FileSystem::status(dir, StatusDetail::WithoutAttributes);
    return status.ok() && m_destinationIds.contains({status->device, status->inode});
}

bool DirWalker::DirWalk(const PlannedSource& SourcePath, const QByteArray& Dir) {
    StagingHost& host = m_run.host();
    RunState& state = m_run.state();
    host.yield();
    if (state.Cancelled)
        return false;

    if (SourcePath.path->InclSubDirs()) {
        const Result<std::vector<QByteArray>> subDirs = FileSystem::subDirectories(Dir);
        if (!subDirs.ok()) {
            if (subDirs.error().number() == ErrNo::PathNotFound)
                return sourcePathNotFound(FileSystem::displayPath(Dir), Dir);
            m_run.reportError(subDirs.error(),
                              QStringLiteral(" occurred during the directory search."),
                              QStringLiteral("DirWalk"), MsgButtons::OK, Dir);
            return true;
        }
        // The last listed first, depth first, before the files of Dir itself.
        for (auto it = subDirs->rbegin(); it != subDirs->rend() && !state.Cancelled; ++it) {
            const QByteArray sub = NativePath::join(Dir, *it);
            // A destination inside the source tree is never walked into: its files are this
            // run's own copies.
            if (isOwnDestination(sub))
                continue;
            if (!DirWalk(SourcePath, sub))
                return false;
        }
    }

    const QString shownDir = FileSystem::displayPath(Dir);
    host.showDirectory(shownDir);
    for (const PlannedGroup& group : SourcePath.groups) {
        const clsFileGroup* fg = group.group;
        if (group.destinations.empty()) {
            const QString text = QStringLiteral("File Group ") + NativeText::display(fg->Name()) +
                                 QStringLiteral(" does not have any Destination Paths.");
            m_run.log(QStringLiteral(">>>") + text);
            if (!askToContinue(text, QStringLiteral("No Destination Paths")))
                return false;
            continue;
        }
        host.showFileGroup(fg->Name());
        std::vector<QByteArray> skipped;
        const Result<std::vector<QByteArray>> files =
            FileSystem::matchingFiles(Dir, fg->Name(), &skipped);
        if (!files.ok()) {
            if (files.error().number() == ErrNo::PathNotFound)
                return sourcePathNotFound(shownDir, Dir);
            m_run.reportError(files.error(),
                              QStringLiteral(" occurred while listing a directory's files."),
                              QStringLiteral("Dir_Change"), MsgButtons::OK, Dir);
            continue;
        }
        for (const QByteArray& name : skipped) {
            const QByteArray path = NativePath::join(Dir, name);
            const QString text = FileSystem::displayPath(path) +
                                 QStringLiteral(" is not a regular file; it was not staged.");
            m_run.log(QStringLiteral(">>>") + text);
            m_run.host().reportFailure(text, path);
        }
        if (files->empty())
            continue;
        host.setProgressRange(int(files->size()));
        // With workers, the files after the one being staged are looked at and transferred
        // ahead of it, once one was copied here (the first may make the destination's
        // directory) or where looking at a destination is slow. A re-run that copies nothing
        // to a local disk looks ahead at nothing: handing the looks over would cost more.
        size_t ahead = 1;
        for (size_t i = 0; i < files->size(); ++i) {
            m_stager.StageFile(group, NativePath::join(Dir, (*files)[i]), SourcePath.relativeAt);
            if (state.Cancelled)
                return false;
            TransferAhead* transfers = m_run.ahead();
            if (transfers && (m_stager.copied() || ahead > i + 1 || m_stager.looksAreSlow()) &&
                transfers->wantsMore()) {
                for (ahead = std::max(ahead, i + 1); ahead < files->size() && transfers->hasRoom();
                     ++ahead)
                    m_stager.expect(group, NativePath::join(Dir, (*files)[ahead]),
                                    SourcePath.relativeAt);
            }
            host.advanceProgress();
        }
        if (TransferAhead* transfers = m_run.ahead())
            transfers->discardAll();
    }
    return true;
}

} // namespace ondrel
