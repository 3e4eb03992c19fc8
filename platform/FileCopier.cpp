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
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#ifdef __linux__
#include <linux/fs.h>
#endif

namespace ondrel {

using namespace posix;

namespace {

// The temporary files: ".ondrel~" + name + "~" + pid + "~" + kSuffixLength letters.
// (WholeFile's temporaries end in six letters, so the two never pass for each other.)
constexpr QByteArrayView kTempPrefix(".ondrel~");
constexpr qsizetype kSuffixLength = 8;

constexpr size_t kCopyBufferSize = size_t(1) << 20;

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

QByteArray temporaryName(QByteArrayView name) {
    static constexpr char kLetters[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    // Taken once: a copy is made per file, and the process does not change.
    static const QByteArray pid = QByteArray::number(qint64(::getpid()));
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
    for (qsizetype i = 0; i < kSuffixLength; ++i)
        temp.append(kLetters[random.bounded(int(sizeof kLetters - 1))]);
    return temp;
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
int readWriteCopy(int in, int out, off_t offset, qint64 limit) {
    char* buffer = copyBuffer();
    while (limit != 0) {
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
int copyRange(int in, int out, off_t offset, qint64 length) {
    const off_t end = offset + length;
    while (offset < end) {
        const ssize_t n = ::copy_file_range(in, &offset, out, nullptr, size_t(end - offset), 0);
        if (n > 0)
            continue; // offset has advanced by n
        if (n == 0)
            return 0; // the file shrank while being copied
        const int e = errno;
        if (e == EINTR)
            continue;
        // The output has advanced by what was copied, so reading goes on from there.
        if (e == EXDEV || e == ENOSYS || unsupported(e) || e == EINVAL)
            return readWriteCopy(in, out, offset, end - offset);
        return e;
    }
    return 0;
}

// Copies a file with holes region by region, leaving the holes out: a 100 MiB image of a few
// blocks stays a few blocks. 0 or an errno value.
int copySparse(int in, int out, qint64 size) {
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
        if (const int e = copyRange(in, out, data, hole - data))
            return e;
        data = hole;
    }
    // A hole at the end is given by the length alone.
    return ::ftruncate(out, size) == 0 ? 0 : errno;
}

// The first size bytes of in to out, by the cheapest means the file systems offer: a shared
// extent, an in-kernel copy, or reading and writing; a file with holes keeps them. 0 or an
// errno value.
int copyContent(int in, int out, const struct stat& source) {
    const qint64 size = source.st_size;
    // A size of 0 may be a pseudo-file whose content only reading reveals.
    if (size <= 0)
        return readWriteCopy(in, out, 0, -1);
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
        return copySparse(in, out, size);
    return copyRange(in, out, 0, size);
}

// What the copy gives back: the source as it was when its content was read, and the copy.
CopiedFile copiedFile(const struct stat& src, const struct stat& copy) {
    CopiedFile copied;
    copied.source.size = src.st_size;
    copied.source.modified = src.st_mtim.tv_sec;
    copied.source.device = src.st_dev;
    copied.source.inode = src.st_ino;
    copied.source.permissions = src.st_mode & 07777;
    copied.source.isRegular = true;
    copied.device = copy.st_dev;
    copied.inode = copy.st_ino;
    return copied;
}

} // namespace

Result<CopiedFile> FileCopier::copy(const QByteArray& source, const QByteArray& destination,
                                    DestinationHint hint) {
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
        // O_NONBLOCK: a fifo given as the source must not hang the run; it is refused below.
        const DirectoryHandles::At from = DirectoryHandles::resolve(source);
        ownIn.reset(::openat(from.dir, from.name, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        if (!ownIn) {
            // Whatever is missing on its way, it is the source that is missing: a 76 here would
            // read as a missing destination directory.
            const int e = errno;
            if (e == ENOENT || e == ENOTDIR)
                return error(ErrNo::FileNotFound);
            return errnoError(e, source);
        }
        if (::fstat(ownIn.get(), &src) != 0)
            return errnoError(errno, source);
        if (!S_ISREG(src.st_mode))
            return error(ErrNo::PathFileAccess);
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

    // What stands at the destination may be replaced only if it is an ordinary, writable file
    // other than the source itself.
    const auto refusal = [&]() -> std::optional<Error> {
        struct stat dst {};
        if (::fstatat(to.dir, to.name, &dst, 0) != 0)
            return std::nullopt; // nothing there (or no directory: creating the copy tells)
        if (dst.st_dev == src.st_dev && dst.st_ino == src.st_ino)
            return error(ErrNo::PathFileAccess,
                         QStringLiteral("Source and destination are the same file"));
        if (S_ISDIR(dst.st_mode))
            return error(ErrNo::PathFileAccess);
        // Renaming over a read-only file would get round its protection.
        if (!(dst.st_mode & S_IWUSR))
            return error(ErrNo::PermissionDenied);
        return std::nullopt;
    };
    if (hint != DestinationHint::Missing) {
        if (auto refused = refusal())
            return *refused;
    }

    // Created with the source's permissions where the owner may write it (its stored attributes
    // are set through it below); otherwise owner-only until the end.
    const mode_t mode = src.st_mode & 0777;
    const mode_t createMode = (mode & S_IWUSR) ? mode : mode_t(0600);
    static const mode_t umask = currentUmask();
    const bool modeNeedsSetting = createMode != mode || (mode & umask) != 0;

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
        temp = dirPrefix + temporaryName(name);
        CrashPoint::reached();
        out.reset(::openat(to.dir, temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                           createMode));
        if (!out && errno != EEXIST)
            break;
    }
    if (const int e = errno; !out)
        return directoryError(e, dirPath());

    const auto fail = [&](int e) -> Result<CopiedFile> {
        out.reset();
        if (!temp.isEmpty())
            ::unlinkat(to.dir, temp.constData(), 0);
        return errnoError(e, destination);
    };

    CrashPoint::reached();
    if (const int e = copyContent(inFd, out.get(), src))
        return fail(e);
    // Stored before the mode: without write bits its owner could no longer store it.
    if (const int e = DosAttributes::storeCopied(out.get(), stored))
        return fail(e);
    CrashPoint::reached();
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

    bool renamed = false;
    if (unnamed) {
        CrashPoint::reached();
        int e = UnnamedFiles::link(out.get(), to.dir, to.name);
        if (e == ENOENT && !UnnamedFiles::usable()) // this system cannot name such files
            return copy(source, destination, hint);
        if (e == EEXIST) {
            // A file appeared meanwhile: looked at, then replaced in one step by way of a
            // temporary name.
            if (auto refused = refusal())
                return *refused;
            for (int attempt = 0; attempt < 100 && e == EEXIST; ++attempt) {
                temp = dirPrefix + temporaryName(name);
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

    CrashPoint::reached();
    if (hint == DestinationHint::Missing && !unnamed) {
        // Found missing a moment ago: take the name only if it is still free, and look at what
        // appeared meanwhile before replacing it.
        renamed = ::renameat2(to.dir, temp.constData(), to.dir, to.name, RENAME_NOREPLACE) == 0;
        if (!renamed && errno != EEXIST && errno != EINVAL && errno != ENOSYS)
            return fail(errno);
        if (!renamed) {
            if (auto refused = refusal()) {
                ::unlinkat(to.dir, temp.constData(), 0);
                return *refused;
            }
        }
    }
    if (!renamed && ::renameat(to.dir, temp.constData(), to.dir, to.name) != 0)
        return fail(errno);
    return copiedFile(src, made);
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
