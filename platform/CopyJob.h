#pragma once

#include "platform/DirectoryHandles.h"
#include "platform/FileSystem.h"
#include "platform/PosixFile.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

#include <sys/stat.h>

namespace ondrel {

// One copy of a file, in the two steps a destination sees it in. The transfer makes the new
// file complete beside the destination, without a name (or under a temporary one where the
// file system cannot make unnamed files): the source opened, the file made, the data copied,
// its times and bits set. The commit gives it the destination's name, judging afresh what
// stands there. A job given up before its commit leaves nothing behind: an unnamed file is
// gone when closed, a temporary is removed.
//
// The destination's directory handle is the calling thread's (DirectoryHandles): a job is
// made, transferred and committed on one thread, unless holdDirectory was called after its
// transfer, after which it may be committed or given up on any thread.
class CopyJob {
public:
    // source, destination: see FileSystem::copyFile; both outlive the job.
    CopyJob(const QByteArray& source, const QByteArray& destination, DestinationHint hint,
            const CopyControl& control);
    ~CopyJob();
    CopyJob(const CopyJob&) = delete;
    CopyJob& operator=(const CopyJob&) = delete;

    // Everything but the name; a failure leaves nothing behind.
    Result<void> transfer();
    // After a transfer that succeeded: the job no longer depends on the transferring thread's
    // handle on the destination's directory (a file without a name is named through the
    // committing thread's; a temporary keeps a handle of its own), so that thread may go on to
    // other directories.
    Result<void> holdDirectory();
    // After a transfer that succeeded, for a commit that comes later: keeps a handle on the
    // source, so that sourceChanged() can tell whether it was written to since it was read.
    void watchSource();
    // Whether the watched source's size or times differ from those it had when it was read:
    // the copy is then no longer the file the run reaches, and is made again.
    bool sourceChanged() const;
    // The name, after a transfer that succeeded.
    Result<CopiedFile> commit();
    const QByteArray& destination() const { return m_destination; }
    // The size of the source, as the transfer read it.
    qint64 sourceSize() const { return qint64(m_src.st_size); }
    // After commit: this system cannot name a file made without one after all, and the copy is
    // to be made again (it then goes by a temporary name).
    bool mustRedoNamed() const { return m_redoNamed; }

private:
    // The steps of the transfer, in order.
    Result<void> openSource();
    Result<void> openDestinationDirectory();
    Result<void> refuseWhatStands() const;
    Result<void> makeUnnamed();
    Result<void> makeTemporary();
    int copyData();
    int setTimesAndBits();
    // The steps of the commit.
    Result<CopiedFile> linkUnnamed();
    Result<CopiedFile> renameTemporary();
    // nothing: found (at the destination) may be replaced; otherwise the outcome of the copy.
    std::optional<Result<CopiedFile>> judge(const struct stat& found);
    // Why what stands at the destination may not be replaced, if it may not.
    std::optional<Error> refusalOf(const struct stat& found) const;
    CopiedFile copied() const;
    // Takes back the new file (closes it, removes its temporary name).
    void discard();
    Result<CopiedFile> fail(int e);
    QByteArray dirPath() const;
    // Where the temporary is: the destination's directory, or the one control.temporariesIn
    // gave.
    int temporaryDir() const { return m_temporaryDir >= 0 ? m_temporaryDir : m_to.dir; }

    const QByteArray& m_source;
    const QByteArray& m_destination;
    const DestinationHint m_hint;
    const CopyControl& m_control;

    posix::Fd m_ownIn;
    int m_in = -1;
    struct stat m_src {};
    int m_stored = -1; // the source's stored attributes
    QByteArrayView m_name;
    DirectoryHandles::At m_to{-1, nullptr};
    posix::Fd m_ownTo;      // the handle m_to.dir stands for, once the job holds one
    QByteArray m_dirPrefix; // where there is no handle on the destination's directory
    posix::Fd m_out;
    bool m_unnamed = false;
    QByteArray m_temp;       // the temporary name, or the destination's once the copy has taken it
    int m_temporaryDir = -1; // a directory other than the destination's it is made in
    mode_t m_mode = 0;
    bool m_modeNeedsSetting = false;
    struct stat m_made {};
    std::optional<FileStatus> m_accepted;
    bool m_redoNamed = false;
    bool m_resolveAtCommit = false; // the directory handle is the committing thread's
    posix::Fd m_watchedSource;
};

} // namespace ondrel
