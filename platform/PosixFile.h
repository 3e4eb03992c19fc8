#pragma once

#include "platform/DirectoryHandles.h"
#include "platform/Error.h"
#include "platform/Result.h"

#include <QByteArray>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

// What the parts of the file system (FileSystem, FileCopier, DosAttributes) share: a file
// descriptor that closes itself, the errors they raise, and a directory listing by readdir.
// Platform-internal: nothing outside platform/ includes this header.
namespace ondrel::posix {

class Fd {
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    ~Fd() { reset(); }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    void reset(int fd = -1) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }
    int get() const { return m_fd; }
    int release() { return std::exchange(m_fd, -1); }
    explicit operator bool() const { return m_fd >= 0; }

private:
    int m_fd;
};

// An error raised by the file system, with the standard description or the one given.
Error error(int number);
Error error(int number, QString description);

// The directory that holds path, and its last component (trailing slashes ignored).
QByteArray parentOf(const QByteArray& path);
QByteArray nameOf(const QByteArray& path);

// errno as the system's number. For ENOENT the parent directory is looked up by its bytes (a
// decoded name would not find a directory whose name is not valid UTF-8).
Error errnoError(int e, const QByteArray& path);

// A directory that cannot be listed because it is not there is a missing path, never a missing
// file: the walk tells a vanished source directory by 76.
Error directoryError(int e, const QByteArray& path);

// The file system keeps no user extended attributes.
inline bool unsupported(int e) {
    return e == ENOTSUP || e == EOPNOTSUPP;
}

// Calls onEntry(fd, entry) for every entry of the directory of handle fd, from where its
// listing stands, but "." and ".."; dir names it in an error. Read straight from the kernel in
// large blocks: a walk lists every directory it passes, so each call saved counts.
template <typename OnEntry>
Result<void> readEntries(int fd, const QByteArray& dir, OnEntry onEntry) {
    alignas(dirent64) char buffer[32768];
    for (;;) {
        const ssize_t n = ::getdents64(fd, buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return directoryError(errno, dir);
        }
        if (n == 0)
            return {};
        for (ssize_t offset = 0; offset < n;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + offset);
            offset += entry->d_reclen;
            const char* name = entry->d_name;
            if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))
                continue;
            onEntry(fd, *entry);
        }
    }
}

// Calls onEntry(dirFd, entry) for every entry of dir but "." and "..".
template <typename OnEntry> Result<void> readDirectory(const QByteArray& dir, OnEntry onEntry) {
    Fd own;
    int fd = DirectoryHandles::handleOf(dir);
    if (fd >= 0) {
        if (::lseek(fd, 0, SEEK_SET) < 0) // listed before in this run
            return directoryError(errno, dir);
    } else {
        own.reset(::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!own)
            return directoryError(errno, dir);
        fd = own.get();
    }
    return readEntries(fd, dir, onEntry);
}

// The process's umask, read without changing it (umask() would, for every thread at once).
mode_t currentUmask();

} // namespace ondrel::posix
