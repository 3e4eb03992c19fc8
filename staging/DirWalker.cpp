#include "staging/DirWalker.h"

#include "app/clsOndrelApp.h"
#include "platform/Convert.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "platform/NativeText.h"
#include "spec/clsSpecFile.h"
#include "staging/StagingHost.h"
#include "staging/StagingRun.h"

#include <QDir>
#include <QFile>

namespace ondrel {

namespace {

const QString kVarious = QStringLiteral("<various>");

int groupsWithDestinations(const clsSourcePath& sp) {
    int n = 0;
    for (const auto& fg : sp.FGs())
        n += fg->DPs().Count() > 0 ? 1 : 0;
    return n;
}

} // namespace

DirWalker::DirWalker(StagingRun& run) : m_run(run), m_stager(run) {
    QSet<QByteArray> seen;
    for (const auto& sp : run.m_spec.SPs())
        for (const auto& fg : sp->FGs())
            for (const auto& dp : fg->DPs()) {
                QByteArray path = run.nativePath(dp->Name());
                if (!seen.contains(path)) {
                    seen.insert(path);
                    m_missingDestinations.push_back(std::move(path));
                }
            }
    m_madeDirectoriesSeen = -1;
    findMadeDestinations();
}

void DirWalker::findMadeDestinations() {
    if (m_madeDirectoriesSeen == m_run.m_state.madeDirectories)
        return;
    m_madeDirectoriesSeen = m_run.m_state.madeDirectories;
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
        m_run.m_host.ask(text + QStringLiteral("  Click 'OK' to continue staging."),
                         MsgButtons::OKCancel, MsgIcon::Exclamation, title);
    if (answer == MsgAnswer::Cancel) {
        m_run.Cancel();
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
        m_run.Cancel();
        return false;
    }
    return true;
}

void DirWalker::Activate() {
    for (const auto& sp : m_run.m_spec.SPs()) {
        if (!walkSourcePath(*sp) || m_run.m_state.Cancelled)
            break;
    }
}

bool DirWalker::walkSourcePath(const clsSourcePath& sp) {
    StagingHost& host = m_run.m_host;
    const QString& name = sp.Name();
    const bool various = name == kVarious;
    m_run.m_state.CurSourcePath = name;
    host.showSourcePath(name);
    // Names from the spec file are shown as file names are: they may hold anything.
    const QString shown = NativeText::display(name);
    m_run.log(QStringLiteral("Source Path:\t") + shown);
    if (!various)
        m_run.log(QStringLiteral("Include sub-directories:  ") +
                  Convert::booleanText(sp.InclSubDirs()));

    const QByteArray dir = various ? QByteArray() : m_run.nativePath(name);
    m_run.m_state.curSourceRoot = dir;
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
                m_run.Cancel();
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
        walkVariousFiles(sp);
    else
        DirWalk(sp, dir);
    return true;
}

void DirWalker::walkVariousFiles(const clsSourcePath& sp) {
    StagingHost& host = m_run.m_host;
    host.setProgressRange(int(m_run.m_variousFiles.size()));
    for (const QString& entry : m_run.m_variousFiles) {
        // The list holds native names as NativeText gives them, odd bytes included.
        const QByteArray path = NativeText::toNative(entry);
        const QByteArray fileName = path.mid(path.lastIndexOf('/') + 1);
        for (const auto& fg : sp.FGs()) {
            if (fg->DPs().Count() == 0)
                continue;
            host.showFileGroup(fg->Name());
            // Each mask is matched against the file's name, without regard to case, as the
            // directory walk matches it; a path that is no file name matches nothing.
            for (const QString& mask : fg->Name().split(u';')) {
                if (entry.isEmpty() || fileName.isEmpty() ||
                    !FileSystem::matchesMask(fileName, mask.trimmed()))
                    continue;
                m_stager.StageFile(*fg, path);
                if (m_run.m_state.Cancelled)
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

bool DirWalker::DirWalk(const clsSourcePath& SourcePath, const QByteArray& Dir) {
    StagingHost& host = m_run.m_host;
    RunState& state = m_run.m_state;
    host.yield();
    if (state.Cancelled)
        return false;

    if (SourcePath.InclSubDirs()) {
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
    for (const auto& fg : SourcePath.FGs()) {
        if (fg->DPs().Count() == 0) {
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
            m_run.m_host.reportFailure(text, path);
        }
        if (files->empty())
            continue;
        host.setProgressRange(int(files->size()));
        for (const QByteArray& name : *files) {
            m_stager.StageFile(*fg, NativePath::join(Dir, name));
            if (state.Cancelled)
                return false;
            host.advanceProgress();
        }
    }
    return true;
}

} // namespace ondrel
