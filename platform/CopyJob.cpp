#include "platform/CopyJob.h"

#include "platform/CopyContent.h"
#include "platform/CrashPoint.h"
#include "platform/DosAttributes.h"
#include "platform/FileCopier.h"
#include "platform/NativePath.h"
#include "platform/UnnamedFiles.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/statfs.h>
#include <unistd.h>

namespace ondrel {

using namespace posix;

namespace {

// Taken once: a copy is made per file, and the process does not change.
QByteArray ownTemporaryName(QByteArrayView name) {
    static const qint64 pid = ::getpid();
    return FileCopier::temporaryName(name, pid);
}

// A link is followed only when it and the file it leads to have the same owner, or it is the
// running user's own: otherwise whoever may plant a link in a tree that another user (root, say)
// stages could have that user copy out a file that only he may read.
bool linkMayBeFollowed(const struct stat& link, const struct stat& target) {
    return link.st_uid == target.st_uid || link.st_uid == ::geteuid();
}

// The kernel's pseudo-files claim a size of 0 and make their content as they are read, some of
// it without end: no file to copy.
bool isPseudoFile(int fd, const struct stat& st) {
    if (st.st_size != 0)
        return false;
    struct statfs fs {};
    if (::fstatfs(fd, &fs) != 0)
        return false;
    constexpr unsigned long kProc = 0x9fa0, kSysfs = 0x62656572, kDebugfs = 0x64626720,
                            kTracefs = 0x74726163, kSecurityfs = 0x73636673;
    const auto type = static_cast<unsigned long>(fs.f_type);
    return type == kProc || type == kSysfs || type == kDebugfs || type == kTracefs ||
           type == kSecurityfs;
}

} // namespace

CopyJob::CopyJob(const QByteArray& source, const QByteArray& destination, DestinationHint hint,
                 const CopyControl& control)
    : m_source(source), m_destination(destination), m_hint(hint), m_control(control) {}

CopyJob::~CopyJob() {
    discard();
}

QByteArray CopyJob::dirPath() const {
    // Wanted only where there is no handle on the directory, or for an error.
    return parentOf(m_destination);
}

Result<void> CopyJob::transfer() {
    if (const Result<void> opened = openSource(); !opened)
        return opened;
    if (const Result<void> opened = openDestinationDirectory(); !opened)
        return opened;
    if (const Result<void> refused = refuseWhatStands(); !refused)
        return refused;

    // Created with the source's permissions where the owner may write it (its stored attributes
    // are set through it below); otherwise owner-only until the end.
    m_mode = m_src.st_mode & 0777;
    static const mode_t umask = currentUmask();
    // A change of owner clears the set-id bits: the mode is set again after it.
    m_modeNeedsSetting = !(m_mode & S_IWUSR) || (m_mode & umask) != 0 || m_control.keepOwner;

    // A destination found missing is written as a file without a name, which takes the
    // destination's name only when it is complete: a copy that is stopped, however, leaves
    // nothing behind. Otherwise, and where the file system has no such files, the content goes
    // to a named temporary, which then takes the destination's name in one step.
    if (m_hint == DestinationHint::Missing && UnnamedFiles::usable()) {
        if (const Result<void> made = makeUnnamed(); !made)
            return made;
    }
    if (!m_out) {
        if (const Result<void> made = makeTemporary(); !made)
            return made;
    }

    CrashPoint::reached();
    if (const int e = copyData())
        return fail(e).error();
    if (const int e = setTimesAndBits())
        return fail(e).error();
    // A temporary is closed here, not when it takes its name: on a network file system closing
    // writes the file back, which is the transfer's work (on a worker's thread), not the
    // commit's. A file without a name needs its handle to be named.
    if (!m_unnamed && ::close(m_out.release()) != 0 && errno != EINTR)
        return fail(errno).error();
    return {};
}

Result<void> CopyJob::openSource() {
    // Copied to several destinations, a file is opened and examined once: the content of each
    // copy is then the file as it was when first opened.
    DirectoryHandles::HeldSource* held = DirectoryHandles::heldSource();
    if (held && held->fd >= 0 && held->path == m_source) {
        m_in = held->fd;
        m_src = held->status;
        m_stored = held->stored;
        return {};
    }

    const DirectoryHandles::At from = DirectoryHandles::resolve(m_source);
    int e = from.error;
    if (!from.refused()) {
        // O_NONBLOCK: a fifo given as the source must not hang the run; it is refused below.
        constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
        m_ownIn.reset(::openat(from.dir, from.name, kFlags | O_NOFOLLOW));
        e = errno;
        if (!m_ownIn && e == ELOOP) {
            struct stat link {};
            if (::fstatat(from.dir, from.name, &link, AT_SYMLINK_NOFOLLOW) != 0)
                return errnoError(errno, m_source);
            m_ownIn.reset(::openat(from.dir, from.name, kFlags));
            e = errno;
            if (m_ownIn && (::fstat(m_ownIn.get(), &m_src) != 0 || !linkMayBeFollowed(link, m_src)))
                return error(ErrNo::PathFileAccess,
                             QStringLiteral("Path/File access error (a symbolic link to a file "
                                            "of another owner is not followed)"));
        }
    }
    if (!m_ownIn) {
        // Whatever is missing on its way, it is the source that is missing: a 76 here would
        // read as a missing destination directory.
        if (e == ENOENT || e == ENOTDIR)
            return error(ErrNo::FileNotFound);
        return errnoError(e, m_source);
    }
    if (::fstat(m_ownIn.get(), &m_src) != 0)
        return errnoError(errno, m_source);
    if (!S_ISREG(m_src.st_mode) || isPseudoFile(m_ownIn.get(), m_src))
        return error(ErrNo::PathFileAccess,
                     QStringLiteral("Path/File access error (not a regular file)"));

    m_stored = DosAttributes::readStored(m_ownIn.get());
    m_in = m_ownIn.get();
    if (held)
        held->hold(m_source, m_ownIn.release(), m_src, m_stored);
    return {};
}

Result<void> CopyJob::openDestinationDirectory() {
    if (m_destination.isEmpty() || m_destination.endsWith('/'))
        return error(ErrNo::PathFileAccess);
    m_name = QByteArrayView(m_destination).sliced(NativePath::lastSeparator(m_destination) + 1);
    if (m_name == "." || m_name == "..")
        return error(ErrNo::PathFileAccess);
    m_to = DirectoryHandles::resolve(m_destination);
    if (m_to.refused())
        return m_to.error == ELOOP ? errnoError(ELOOP, m_destination)
                                   : directoryError(m_to.error, dirPath());
    // The temporary is named within the destination's directory handle where there is one.
    if (m_to.dir == AT_FDCWD) {
        m_dirPrefix = dirPath();
        if (!m_dirPrefix.endsWith('/'))
            m_dirPrefix += '/';
    }
    return {};
}

std::optional<Error> CopyJob::refusalOf(const struct stat& found) const {
    // What stands at the destination may be replaced only if it is an ordinary, writable file
    // other than the source itself.
    if (found.st_dev == m_src.st_dev && found.st_ino == m_src.st_ino)
        return error(ErrNo::PathFileAccess,
                     QStringLiteral("Source and destination are the same file"));
    if (S_ISDIR(found.st_mode))
        return error(ErrNo::PathFileAccess);
    // Renaming over a read-only file would get round its protection. A link in the file's
    // place is replaced itself, never written through, whatever its target's bits say.
    struct stat entry {};
    if (!(found.st_mode & S_IWUSR) &&
        !(::fstatat(m_to.dir, m_to.name, &entry, AT_SYMLINK_NOFOLLOW) == 0 &&
          S_ISLNK(entry.st_mode)))
        return error(ErrNo::PermissionDenied);
    return std::nullopt;
}

Result<void> CopyJob::refuseWhatStands() const {
    if (m_hint == DestinationHint::Missing)
        return {};
    struct stat found {};
    // Nothing there (or no directory: creating the copy tells) is no refusal.
    if (::fstatat(m_to.dir, m_to.name, &found, 0) == 0) {
        if (auto refused = refusalOf(found))
            return *refused;
    }
    return {};
}

Result<void> CopyJob::makeUnnamed() {
    const mode_t createMode = (m_mode & S_IWUSR) ? m_mode : mode_t(0600);
    CrashPoint::reached();
    m_out.reset(::openat(m_to.dir, m_to.dir == AT_FDCWD ? dirPath().constData() : ".",
                         O_TMPFILE | O_WRONLY | O_CLOEXEC, createMode));
    if (const int e = errno; !m_out && !UnnamedFiles::unsupported(e))
        return directoryError(e, dirPath());
    m_unnamed = bool(m_out);
    return {};
}

Result<void> CopyJob::makeTemporary() {
    const mode_t createMode = (m_mode & S_IWUSR) ? m_mode : mode_t(0600);
    if (m_control.temporariesIn && m_to.dir != AT_FDCWD)
        m_temporaryDir = m_control.temporariesIn(m_to.dir);
    for (int attempt = 0; attempt < 100 && !m_out; ++attempt) {
        m_temp = (m_temporaryDir >= 0 ? QByteArray() : m_dirPrefix) + ownTemporaryName(m_name);
        CrashPoint::reached();
        m_out.reset(::openat(temporaryDir(), m_temp.constData(),
                             O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, createMode));
        if (!m_out && errno != EEXIST)
            break;
    }
    if (const int e = errno; !m_out) {
        m_temp.clear(); // never made: nothing to take back
        return directoryError(e, dirPath());
    }
    return {};
}

int CopyJob::copyData() {
    return CopyContent::copy(m_in, m_out.get(), m_src, CopyContent::Stop{m_control.keepGoing});
}

int CopyJob::setTimesAndBits() {
    // Stored before the mode: without write bits its owner could no longer store it.
    if (const int e = DosAttributes::storeCopied(m_out.get(), m_stored))
        return e;
    CrashPoint::reached();
    if (m_control.keepOwner && ::fchown(m_out.get(), m_src.st_uid, m_src.st_gid) != 0)
        return errno;
    if (m_modeNeedsSetting && ::fchmod(m_out.get(), m_mode) != 0)
        return errno;
    const struct timespec times[2] = {m_src.st_atim, m_src.st_mtim};
    CrashPoint::reached();
    if (::futimens(m_out.get(), times) != 0)
        return errno;
    // Which file the destination's name will stand for: a move later checks that it still does.
    if (::fstat(m_out.get(), &m_made) != 0)
        return errno;
    return 0;
}

Result<void> CopyJob::holdDirectory() {
    // A file without a name is tied to no directory: the thread that commits it names it
    // through its own handle on the destination's directory, reached from the roots as every
    // handle is. Only a temporary name needs the directory it was made in.
    if (m_unnamed) {
        m_resolveAtCommit = true;
        m_to = {-1, nullptr};
        return {};
    }
    if (m_to.dir < 0 || m_ownTo)
        return {};
    m_ownTo.reset(::fcntl(m_to.dir, F_DUPFD_CLOEXEC, 0));
    if (!m_ownTo)
        return errnoError(errno, dirPath());
    m_to.dir = m_ownTo.get();
    return {};
}

void CopyJob::watchSource() {
    // A handle of the job's own: the one it read through may be the worker's, closed once the
    // worker goes on to another file.
    m_watchedSource.reset(::fcntl(m_in, F_DUPFD_CLOEXEC, 0));
}

bool CopyJob::sourceChanged() const {
    struct stat now {};
    if (!m_watchedSource || ::fstat(m_watchedSource.get(), &now) != 0)
        return false;
    return !FileSystem::statusOf(now).sameFileAs(FileSystem::statusOf(m_src));
}

Result<CopiedFile> CopyJob::commit() {
    // The rule that let the copy replace what stood at the destination was decided on the file
    // that stood there then. A file found there now that is not that one (it appeared, or was
    // replaced, while the copy was written) is judged afresh.
    m_accepted = m_control.decidedOn;
    if (m_resolveAtCommit) {
        m_resolveAtCommit = false;
        if (const Result<void> opened = openDestinationDirectory(); !opened) {
            discard();
            return opened.error();
        }
    }
    if (m_unnamed)
        return linkUnnamed();
    return renameTemporary();
}

std::optional<Result<CopiedFile>> CopyJob::judge(const struct stat& found) {
    // Refused as before, or kept when the caller says so, the copy then discarded.
    const FileStatus status = FileSystem::statusOf(found);
    if (m_accepted && status.sameFileAs(*m_accepted))
        return std::nullopt;
    if (auto refused = refusalOf(found)) {
        discard();
        return Result<CopiedFile>(*refused);
    }
    if (m_control.mayReplace && !m_control.mayReplace(status)) {
        discard();
        CopiedFile declined = copied();
        declined.declined = true;
        return Result<CopiedFile>(declined);
    }
    m_accepted = status;
    return std::nullopt;
}

Result<CopiedFile> CopyJob::linkUnnamed() {
    CrashPoint::reached();
    int e = UnnamedFiles::link(m_out.get(), m_to.dir, m_to.name);
    bool named = false;
    if (e == ENOENT && !UnnamedFiles::usable()) { // this system cannot name such files
        discard();
        m_redoNamed = true;
        return errnoError(e, m_destination);
    }
    if (e == EEXIST) {
        // A file appeared meanwhile: judged, then replaced in one step by way of a temporary
        // name.
        struct stat found {};
        if (::fstatat(m_to.dir, m_to.name, &found, 0) == 0) {
            if (auto judged = judge(found))
                return *judged;
        }
        for (int attempt = 0; attempt < 100 && e == EEXIST; ++attempt) {
            m_temp = m_dirPrefix + ownTemporaryName(m_name);
            e = UnnamedFiles::link(m_out.get(), m_to.dir, m_temp.constData());
        }
        if (e != 0)
            m_temp.clear();
    } else if (e == 0) {
        named = true;
        m_temp = QByteArray(m_to.name); // what to take back if closing fails
    }
    if (e != 0)
        return fail(e);
    // No fsync: a move syncs the destination file systems once, before its deletions.
    if (::close(m_out.release()) != 0 && errno != EINTR)
        return fail(errno);
    if (!named)
        return renameTemporary();
    m_temp.clear();
    return copied();
}

Result<CopiedFile> CopyJob::renameTemporary() {
    if (m_out && ::close(m_out.release()) != 0 && errno != EINTR)
        return fail(errno);
    // The temporary takes the destination's name: where nothing stands, only if nothing has
    // appeared meanwhile; where a file stands, only once it is judged.
    for (int attempt = 0; attempt < 100; ++attempt) {
        // Found missing a moment ago: the first try takes the name only if it is still free.
        struct stat found {};
        bool there = false;
        if (m_hint != DestinationHint::Missing || attempt > 0) {
            there = ::fstatat(m_to.dir, m_to.name, &found, 0) == 0;
            if (!there && errno != ENOENT)
                return fail(errno);
        }
        CrashPoint::reached();
        if (there) {
            if (auto judged = judge(found))
                return *judged;
            if (::renameat(temporaryDir(), m_temp.constData(), m_to.dir, m_to.name) != 0)
                return fail(errno);
            m_temp.clear();
            return copied();
        }
        if (::renameat2(temporaryDir(), m_temp.constData(), m_to.dir, m_to.name,
                        RENAME_NOREPLACE) == 0) {
            m_temp.clear();
            return copied();
        }
        if (errno == EINVAL || errno == ENOSYS) {
            // A file system that cannot refuse to replace: the name is taken as it stands.
            if (::renameat(temporaryDir(), m_temp.constData(), m_to.dir, m_to.name) != 0)
                return fail(errno);
            m_temp.clear();
            return copied();
        }
        if (errno != EEXIST)
            return fail(errno);
    }
    return fail(EEXIST);
}

CopiedFile CopyJob::copied() const {
    // The source as it was when its content was read, and the copy.
    CopiedFile copied;
    copied.source = FileSystem::statusOf(m_src);
    copied.device = m_made.st_dev;
    copied.inode = m_made.st_ino;
    return copied;
}

void CopyJob::discard() {
    m_out.reset();
    if (!m_temp.isEmpty())
        ::unlinkat(temporaryDir(), m_temp.constData(), 0);
    m_temp.clear();
}

Result<CopiedFile> CopyJob::fail(int e) {
    discard();
    if (e == ECANCELED)
        return error(ErrNo::CancelSelected);
    return errnoError(e, m_destination);
}

} // namespace ondrel
