#include "platform/CopyContent.h"

#include "platform/PosixFile.h"

#include <algorithm>
#include <memory>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/fs.h>
#endif

namespace ondrel::CopyContent {

namespace {

constexpr size_t kCopyBufferSize = size_t(1) << 20;
// How much an in-kernel copy moves between two looks at whether the copy is still wanted: a
// fraction of a second on any disk, so that Cancel and Ctrl-C are not kept waiting by a huge
// file.
constexpr qint64 kKernelCopyChunk = qint64(8) << 20;

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
int readWrite(int in, int out, off_t offset, qint64 limit, const Stop& stop) {
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
int inKernel(int in, int out, off_t offset, qint64 length, const Stop& stop) {
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
        if (e == EXDEV || e == ENOSYS || posix::unsupported(e) || e == EINVAL)
            return readWrite(in, out, offset, end - offset, stop);
        return e;
    }
    return 0;
}

// Copies a file with holes region by region, leaving the holes out: a 100 MiB image of a few
// blocks stays a few blocks. 0 or an errno value.
int sparse(int in, int out, qint64 size, const Stop& stop) {
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
        if (const int e = inKernel(in, out, data, hole - data, stop))
            return e;
        data = hole;
    }
    // A hole at the end is given by the length alone.
    return ::ftruncate(out, size) == 0 ? 0 : errno;
}

// Shares the source's extents with the copy; false where the file systems cannot (most cannot:
// once one has said so, it is not asked per file).
bool clone(int in, int out, dev_t device) {
#ifdef FICLONE
    thread_local dev_t noCloneDevice = 0;
    thread_local bool noCloneKnown = false;
    if (noCloneKnown && noCloneDevice == device)
        return false;
    if (::ioctl(out, FICLONE, in) == 0)
        return true;
    if (posix::unsupported(errno) || errno == EINVAL || errno == EXDEV || errno == ENOTTY) {
        noCloneDevice = device;
        noCloneKnown = true;
    }
#else
    (void)in;
    (void)out;
    (void)device;
#endif
    return false;
}

} // namespace

int copy(int in, int out, const struct stat& source, const Stop& stop) {
    const qint64 size = source.st_size;
    // A size of 0 may be a pseudo-file whose content only reading reveals.
    if (size <= 0)
        return readWrite(in, out, 0, -1, stop);
    if (clone(in, out, source.st_dev))
        return 0;
    // Fewer blocks than the length needs: there are holes to keep. A dense file is copied
    // without a look for them.
    if (qint64(source.st_blocks) * 512 < size)
        return sparse(in, out, size, stop);
    return inKernel(in, out, 0, size, stop);
}

} // namespace ondrel::CopyContent
