#pragma once

#include "platform/Error.h"
#include "platform/Result.h"

#include <QByteArray>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
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

// Calls onEntry(dirFd, entry) for every entry of dir but "." and "..".
template <typename OnEntry> Result<void> readDirectory(const QByteArray& dir, OnEntry onEntry) {
    const int fd = ::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return directoryError(errno, dir);
    DIR* stream = ::fdopendir(fd);
    if (!stream) {
        const int e = errno;
        ::close(fd);
        return directoryError(e, dir);
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> closer(stream, ::closedir);
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(stream);
        if (!entry) {
            if (errno != 0)
                return directoryError(errno, dir);
            return {};
        }
        const char* n = entry->d_name;
        if (n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0')))
            continue;
        onEntry(fd, *entry);
    }
}

// The process's umask, read without changing it (umask() would, for every thread at once).
mode_t currentUmask();

} // namespace ondrel::posix
