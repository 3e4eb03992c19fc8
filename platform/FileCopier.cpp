#include "platform/FileCopier.h"
#include "platform/CrashPoint.h"

#include "platform/DirectoryHandles.h"
#include "platform/DosAttributes.h"
#include "platform/NativePath.h"
#include "platform/PosixFile.h"
#include "platform/UnnamedFiles.h"

#include <QRandomGenerator>

#include <algorithm>
#include <climits>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#ifdef __linux__
#include <linux/fs.h>
#endif

namespace ondrel {

using namespace posix;

namespace {

// The temporary files: ".ondrel~" + name + "~" + pid + "~" + kSuffixLength letters, the last
// kCheckLength of which are a check over all before them, so that a file of the user's that
// merely looks like one is never taken for a temporary and removed.
// (WholeFile's temporaries end in six letters, so the two never pass for each other.)
constexpr QByteArrayView kTempPrefix(".ondrel~");
constexpr qsizetype kSuffixLength = 8;
constexpr qsizetype kCheckLength = 3;
constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr int kLetterCount = int(sizeof kLetters - 1);

// The check letters of a temporary name's first part (all but the check).
void appendCheck(QByteArray& out, QByteArrayView head) {
    // FNV-1a: any change of a byte changes the check.
    quint32 hash = 2166136261u;
    for (const char c : head)
        hash = (hash ^ uchar(c)) * 16777619u;
    for (qsizetype i = 0; i < kCheckLength; ++i) {
        out.append(kLetters[hash % kLetterCount]);
        hash /= kLetterCount;
    }
}

constexpr size_t kCopyBufferSize = size_t(1) << 20;
// How much an in-kernel copy moves between two looks at whether the copy is still wanted: a
// fraction of a second on any disk, so that Cancel and Ctrl-C are not kept waiting by a huge
// file.
constexpr qint64 kKernelCopyChunk = qint64(8) << 20;

// Whether the caller still wants the copy; asked between chunks, never before the first, so
// that a file that fits in one chunk is always finished. A copy stopped this way fails with
// ECANCELED.
struct Stop {
    const std::function<bool()>& keepGoing;
    mutable bool started = false;
    bool requested() const { return std::exchange(started, true) && keepGoing && !keepGoing(); }
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetterOrDigit(char c) {
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// ----- temporary files -----

// The process id in a temporary file's name, or -1 when name is not one.
qint64 temporaryPid(QByteArrayView name) {
    const qsizetype n = name.size();
    const qsizetype prefix = kTempPrefix.size();
    if (n < prefix + 4 + kSuffixLength || !name.startsWith(kTempPrefix))
        return -1;
    const qsizetype tilde = n - kSuffixLength - 1;
    if (name[tilde] != '~')
        return -1;
    for (qsizetype i = tilde + 1; i < n; ++i)
        if (!isLetterOrDigit(name[i]))
            return -1;
    QByteArray check;
    appendCheck(check, name.first(n - kCheckLength));
    if (name.last(kCheckLength) != check)
        return -1;
    qsizetype start = tilde;
    while (start > prefix && isDigit(name[start - 1]))
        --start;
    // The digits follow the "~" that ends a file name of at least one byte.
    if (start == tilde || tilde - start > 10 || start - 1 <= prefix || name[start - 1] != '~')
        return -1;
    qint64 pid = 0;
    for (qsizetype i = start; i < tilde; ++i)
        pid = pid * 10 + (name[i] - '0');
    return pid;
}

} // namespace

QByteArray FileCopier::temporaryName(QByteArrayView name, qint64 processId) {
    const QByteArray pid = QByteArray::number(processId);
    const qsizetype room = NAME_MAX - kTempPrefix.size() - pid.size() - 2 - kSuffixLength;
    qsizetype keep = std::min(name.size(), room);
    // Cut at a character's start, so that a long name stays readable.
    if (keep < name.size())
        while (keep > 0 && (uchar(name[keep]) & 0xC0) == 0x80)
            --keep;
    QByteArray temp;
    temp.reserve(NAME_MAX);
    temp.append(kTempPrefix).append(name.data(), keep).append('~').append(pid).append('~');
    // A generator of this thread's own: the global one is locked and costs more per file than
    // the rest of the name.
    thread_local QRandomGenerator random(QRandomGenerator::global()->generate());
    for (qsizetype i = 0; i < kSuffixLength - kCheckLength; ++i)
        temp.append(kLetters[random.bounded(kLetterCount)]);
    const QByteArray head = temp;
    appendCheck(temp, head);
    return temp;
}

namespace {

// Taken once: a copy is made per file, and the process does not change.
QByteArray ownTemporaryName(QByteArrayView name) {
    static const qint64 pid = ::getpid();
    return FileCopier::temporaryName(name, pid);
}

// ----- content -----

char* copyBuffer() {
    thread_local const std::unique_ptr<char[]> buffer(new char[kCopyBufferSize]);
    return buffer.get();
}

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (n == 0) {
            errno = ENOSPC;
            return false;
        }
        data += n;
        size -= size_t(n);
    }
    return true;
}

// Copies up to limit bytes (all of them when limit is negative) from offset on; 0 or an errno
// value. The source's file position is left alone, so that an open source can be copied again.
int readWriteCopy(int in, int out, off_t offset, qint64 limit, const Stop& stop) {
    char* buffer = copyBuffer();
    while (limit != 0) {
        if (stop.requested())
            return ECANCELED;
        size_t want = kCopyBufferSize;
        if (limit > 0 && quint64(limit) < want)
            want = size_t(limit);
        const ssize_t n = ::pread(in, buffer, want, offset);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (n == 0)
            return 0;
        if (!writeAll(out, buffer, size_t(n)))
            return errno;
        offset += n;
        if (limit > 0)
            limit -= n;
    }
    return 0;
}

// Copies length bytes from offset on, at out's file position, by an in-kernel copy where the
// file systems allow it, otherwise by reading and writing. 0 or an errno value.
int copyRange(int in, int out, off_t offset, qint64 length, const Stop& stop) {
    const off_t end = offset + length;
    while (offset < end) {
        if (stop.requested())
            return ECANCELED;
        const ssize_t n = ::copy_file_range(
            in, &offset, out, nullptr, size_t(std::min<qint64>(end - offset, kKernelCopyChunk)), 0);
        if (n > 0)
            continue; // offset has advanced by n
        if (n == 0)
            return 0; // the file shrank while being copied
        const int e = errno;
        if (e == EINTR)
            continue;
        // The output has advanced by what was copied, so reading goes on from there.
        if (e == EXDEV || e == ENOSYS || unsupported(e) || e == EINVAL)
            return readWriteCopy(in, out, offset, end - offset, stop);
        return e;
    }
    return 0;
}

// Copies a file with holes region by region, leaving the holes out: a 100 MiB image of a few
// blocks stays a few blocks. 0 or an errno value.
int copySparse(int in, int out, qint64 size, const Stop& stop) {
    off_t data = 0;
    for (;;) {
        data = ::lseek(in, data, SEEK_DATA);
        if (data < 0) {
            if (errno == ENXIO)
                break; // only a hole is left
            return errno;
        }
        if (data >= size)
            break;
        off_t hole = ::lseek(in, data, SEEK_HOLE);
        if (hole < 0)
            return errno;
        hole = std::min<off_t>(hole, size);
        if (::lseek(out, data, SEEK_SET) < 0)
            return errno;
        if (const int e = copyRange(in, out, data, hole - data, stop))
            return e;
        data = hole;
    }
    // A hole at the end is given by the length alone.
    return ::ftruncate(out, size) == 0 ? 0 : errno;
}

// The first size bytes of in to out, by the cheapest means the file systems offer: a shared
// extent, an in-kernel copy, or reading and writing; a file with holes keeps them. 0 or an
// errno value.
int copyContent(int in, int out, const struct stat& source, const Stop& stop) {
    const qint64 size = source.st_size;
    // A size of 0 may be a pseudo-file whose content only reading reveals.
    if (size <= 0)
        return readWriteCopy(in, out, 0, -1, stop);
#ifdef FICLONE
    // Most file systems cannot share extents; once one has said so, it is not asked per file.
    thread_local dev_t noCloneDevice = 0;
    thread_local bool noCloneKnown = false;
    if (!noCloneKnown || noCloneDevice != source.st_dev) {
        if (::ioctl(out, FICLONE, in) == 0)
            return 0;
        if (unsupported(errno) || errno == EINVAL || errno == EXDEV || errno == ENOTTY) {
            noCloneDevice = source.st_dev;
            noCloneKnown = true;
        }
    }
#endif
    // Fewer blocks than the length needs: there are holes to keep. A dense file is copied
    // without a look for them.
    if (qint64(source.st_blocks) * 512 < size)
        return copySparse(in, out, size, stop);
    return copyRange(in, out, 0, size, stop);
}

// What the copy gives back: the source as it was when its content was read, and the copy.
CopiedFile copiedFile(const struct stat& src, const struct stat& copy) {
    CopiedFile copied;
    copied.source = FileSystem::statusOf(src);
    copied.device = copy.st_dev;
    copied.inode = copy.st_ino;
    return copied;
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

// Opens source for reading and gives its status. A source that is not a regular file, or a
// link that may not be followed, is refused with 75.
Result<void> openSource(const QByteArray& source, Fd& in, struct stat& src) {
    const DirectoryHandles::At from = DirectoryHandles::resolve(source);
    int e = from.error;
    if (!from.refused()) {
        // O_NONBLOCK: a fifo given as the source must not hang the run; it is refused below.
        constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
        in.reset(::openat(from.dir, from.name, kFlags | O_NOFOLLOW));
        e = errno;
        if (!in && e == ELOOP) {
            struct stat link {};
            if (::fstatat(from.dir, from.name, &link, AT_SYMLINK_NOFOLLOW) != 0)
                return errnoError(errno, source);
            in.reset(::openat(from.dir, from.name, kFlags));
            e = errno;
            if (in && (::fstat(in.get(), &src) != 0 || !linkMayBeFollowed(link, src)))
                return error(ErrNo::PathFileAccess,
                             QStringLiteral("Path/File access error (a symbolic link to a file "
                                            "of another owner is not followed)"));
        }
    }
    if (!in) {
        // Whatever is missing on its way, it is the source that is missing: a 76 here would
        // read as a missing destination directory.
        if (e == ENOENT || e == ENOTDIR)
            return error(ErrNo::FileNotFound);
        return errnoError(e, source);
    }
    if (::fstat(in.get(), &src) != 0)
        return errnoError(errno, source);
    if (!S_ISREG(src.st_mode) || isPseudoFile(in.get(), src))
        return error(ErrNo::PathFileAccess,
                     QStringLiteral("Path/File access error (not a regular file)"));
    return {};
}

} // namespace

Result<CopiedFile> FileCopier::copy(const QByteArray& source, const QByteArray& destination,
                                    DestinationHint hint, const CopyControl& control) {
    // Copied to several destinations, a file is opened and examined once: the content of each
    // copy is then the file as it was when first opened.
    DirectoryHandles::HeldSource* held = DirectoryHandles::heldSource();
    Fd ownIn;
    int inFd;
    struct stat src {};
    int stored;
    if (held && held->fd >= 0 && held->path == source) {
        inFd = held->fd;
        src = held->status;
        stored = held->stored;
    } else {
        if (const Result<void> opened = openSource(source, ownIn, src); !opened)
            return opened.error();
        stored = DosAttributes::readStored(ownIn.get());
        inFd = ownIn.get();
        if (held)
            held->hold(source, ownIn.release(), src, stored);
    }

    if (destination.isEmpty() || destination.endsWith('/'))
        return error(ErrNo::PathFileAccess);
    const QByteArrayView name =
        QByteArrayView(destination).sliced(NativePath::lastSeparator(destination) + 1);
    if (name == "." || name == "..")
        return error(ErrNo::PathFileAccess);
    // The directory's path is wanted only where there is no handle on it, or for an error.
    const auto dirPath = [&] { return parentOf(destination); };
    const DirectoryHandles::At to = DirectoryHandles::resolve(destination);
    if (to.refused())
        return to.error == ELOOP ? errnoError(ELOOP, destination)
                                 : directoryError(to.error, dirPath());

    // What stands at the destination may be replaced only if it is an ordinary, writable file
    // other than the source itself.
    const auto refusalOf = [&](const struct stat& dst) -> std::optional<Error> {
        if (dst.st_dev == src.st_dev && dst.st_ino == src.st_ino)
            return error(ErrNo::PathFileAccess,
                         QStringLiteral("Source and destination are the same file"));
        if (S_ISDIR(dst.st_mode))
            return error(ErrNo::PathFileAccess);
        // Renaming over a read-only file would get round its protection. A link in the file's
        // place is replaced itself, never written through, whatever its target's bits say.
        struct stat entry {};
        if (!(dst.st_mode & S_IWUSR) &&
            !(::fstatat(to.dir, to.name, &entry, AT_SYMLINK_NOFOLLOW) == 0 &&
              S_ISLNK(entry.st_mode)))
            return error(ErrNo::PermissionDenied);
        return std::nullopt;
    };
    if (hint != DestinationHint::Missing) {
        struct stat dst {};
        // Nothing there (or no directory: creating the copy tells) is no refusal.
        if (::fstatat(to.dir, to.name, &dst, 0) == 0) {
            if (auto refused = refusalOf(dst))
                return *refused;
        }
    }

    // Created with the source's permissions where the owner may write it (its stored attributes
    // are set through it below); otherwise owner-only until the end.
    const mode_t mode = src.st_mode & 0777;
    const mode_t createMode = (mode & S_IWUSR) ? mode : mode_t(0600);
    static const mode_t umask = currentUmask();
    // A change of owner clears the set-id bits: the mode is set again after it.
    const bool modeNeedsSetting = createMode != mode || (mode & umask) != 0 || control.keepOwner;

    // A destination found missing is written as a file without a name, which takes the
    // destination's name only when it is complete: a copy that is stopped, however, leaves
    // nothing behind. Otherwise, and where the file system has no such files, the content goes
    // to a named temporary, which then takes the destination's name in one step.
    Fd out;
    bool unnamed = false;
    if (hint == DestinationHint::Missing && UnnamedFiles::usable()) {
        CrashPoint::reached();
        out.reset(::openat(to.dir, to.dir == AT_FDCWD ? dirPath().constData() : ".",
                           O_TMPFILE | O_WRONLY | O_CLOEXEC, createMode));
        if (const int e = errno; !out && !UnnamedFiles::unsupported(e))
            return directoryError(e, dirPath());
        unnamed = bool(out);
    }
    // The temporary is named within the destination's directory handle where there is one.
    QByteArray dirPrefix;
    if (to.dir == AT_FDCWD) {
        dirPrefix = dirPath();
        if (!dirPrefix.endsWith('/'))
            dirPrefix += '/';
    }
    QByteArray temp;
    for (int attempt = 0; attempt < 100 && !out; ++attempt) {
        temp = dirPrefix + ownTemporaryName(name);
        CrashPoint::reached();
        out.reset(::openat(to.dir, temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                           createMode));
        if (!out && errno != EEXIST)
            break;
    }
    if (const int e = errno; !out)
        return directoryError(e, dirPath());

    const auto discard = [&] {
        out.reset();
        if (!temp.isEmpty())
            ::unlinkat(to.dir, temp.constData(), 0);
    };
    const auto fail = [&](int e) -> Result<CopiedFile> {
        discard();
        if (e == ECANCELED)
            return error(ErrNo::CancelSelected);
        return errnoError(e, destination);
    };

    CrashPoint::reached();
    if (const int e = copyContent(inFd, out.get(), src, Stop{control.keepGoing}))
        return fail(e);
    // Stored before the mode: without write bits its owner could no longer store it.
    if (const int e = DosAttributes::storeCopied(out.get(), stored))
        return fail(e);
    CrashPoint::reached();
    if (control.keepOwner && ::fchown(out.get(), src.st_uid, src.st_gid) != 0)
        return fail(errno);
    if (modeNeedsSetting && ::fchmod(out.get(), mode) != 0)
        return fail(errno);
    const struct timespec times[2] = {src.st_atim, src.st_mtim};
    CrashPoint::reached();
    if (::futimens(out.get(), times) != 0)
        return fail(errno);
    // Which file the destination's name will stand for: a move later checks that it still does.
    struct stat made {};
    if (::fstat(out.get(), &made) != 0)
        return fail(errno);

    // The rule that let the copy replace what stood at the destination was decided on the file
    // that stood there then. A file found there now that is not that one (it appeared, or was
    // replaced, while the copy was written) is judged afresh: refused as before, or kept when
    // the caller says so, the copy then discarded.
    std::optional<FileStatus> accepted = control.decidedOn;
    const auto judge = [&](const struct stat& found) -> std::optional<Result<CopiedFile>> {
        const FileStatus status = FileSystem::statusOf(found);
        if (accepted && status.sameFileAs(*accepted))
            return std::nullopt;
        if (auto refused = refusalOf(found)) {
            discard();
            return Result<CopiedFile>(*refused);
        }
        if (control.mayReplace && !control.mayReplace(status)) {
            discard();
            CopiedFile declined = copiedFile(src, made);
            declined.declined = true;
            return Result<CopiedFile>(declined);
        }
        accepted = status;
        return std::nullopt;
    };

    bool renamed = false;
    if (unnamed) {
        CrashPoint::reached();
        int e = UnnamedFiles::link(out.get(), to.dir, to.name);
        if (e == ENOENT && !UnnamedFiles::usable()) // this system cannot name such files
            return copy(source, destination, hint, control);
        if (e == EEXIST) {
            // A file appeared meanwhile: judged, then replaced in one step by way of a temporary
            // name.
            struct stat found {};
            if (::fstatat(to.dir, to.name, &found, 0) == 0) {
                if (auto judged = judge(found))
                    return *judged;
            }
            for (int attempt = 0; attempt < 100 && e == EEXIST; ++attempt) {
                temp = dirPrefix + ownTemporaryName(name);
                e = UnnamedFiles::link(out.get(), to.dir, temp.constData());
            }
            if (e != 0)
                temp.clear();
        } else if (e == 0) {
            renamed = true;
            temp = QByteArray(to.name); // what to take back if closing fails
        }
        if (e != 0)
            return fail(e);
    }
    // No fsync: a move syncs the destination file systems once, before its deletions.
    if (::close(out.release()) != 0 && errno != EINTR)
        return fail(errno);
    if (renamed)
        return copiedFile(src, made);

    // The temporary takes the destination's name: where nothing stands, only if nothing has
    // appeared meanwhile; where a file stands, only once it is judged.
    for (int attempt = 0; attempt < 100; ++attempt) {
        // Found missing a moment ago: the first try takes the name only if it is still free.
        struct stat found {};
        bool there = false;
        if (hint != DestinationHint::Missing || attempt > 0) {
            there = ::fstatat(to.dir, to.name, &found, 0) == 0;
            if (!there && errno != ENOENT)
                return fail(errno);
        }
        CrashPoint::reached();
        if (there) {
            if (auto judged = judge(found))
                return *judged;
            if (::renameat(to.dir, temp.constData(), to.dir, to.name) != 0)
                return fail(errno);
            return copiedFile(src, made);
        }
        if (::renameat2(to.dir, temp.constData(), to.dir, to.name, RENAME_NOREPLACE) == 0)
            return copiedFile(src, made);
        if (errno == EINVAL || errno == ENOSYS) {
            // A file system that cannot refuse to replace: the name is taken as it stands.
            if (::renameat(to.dir, temp.constData(), to.dir, to.name) != 0)
                return fail(errno);
            return copiedFile(src, made);
        }
        if (errno != EEXIST)
            return fail(errno);
    }
    return fail(EEXIST);
}

void FileCopier::removeStaleTemporaries(const QByteArray& dir) {
    std::vector<QByteArray> stale;
    const Result<void> read = readDirectory(dir, [&](int, const dirent64& entry) {
        const qint64 pid = temporaryPid(static_cast<const char*>(entry.d_name));
        if (pid <= 0 || pid > std::numeric_limits<pid_t>::max())
            return;
        // A process that exists, even one we may not signal, may still be copying.
        if (::kill(pid_t(pid), 0) != 0 && errno == ESRCH)
            stale.emplace_back(entry.d_name);
    });
    if (!read)
        return;
    for (const QByteArray& name : stale)
        ::unlink((dir + '/' + name).constData());
}

bool FileCopier::isTemporaryName(QByteArrayView name) {
    return temporaryPid(name) >= 0;
}

} // namespace ondrel
