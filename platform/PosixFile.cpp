#include "platform/PosixFile.h"

#include <QFile>

#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel::posix {

namespace {

const QString kSource = QStringLiteral("FileSystem");

// The path without trailing slashes, split at its last slash.
qsizetype endOfName(const QByteArray& path) {
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    return end;
}

} // namespace

Error error(int number) {
    return Error(number, kSource);
}

Error error(int number, QString description) {
    return Error(number, std::move(description), kSource);
}

QByteArray parentOf(const QByteArray& path) {
    const qsizetype end = endOfName(path);
    const qsizetype slash = end > 0 ? path.lastIndexOf('/', end - 1) : -1;
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

QByteArray nameOf(const QByteArray& path) {
    const qsizetype end = endOfName(path);
    const qsizetype slash = end > 0 ? path.lastIndexOf('/', end - 1) : -1;
    return path.mid(slash + 1, end - slash - 1);
}

Error errnoError(int e, const QByteArray& path) {
    if (e == ENOENT) {
        struct stat st {};
        const bool parentThere =
            ::stat(parentOf(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
        return error(parentThere ? ErrNo::FileNotFound : ErrNo::PathNotFound);
    }
    if (e == ELOOP)
        return error(ErrNo::PathFileAccess,
                     QStringLiteral("Path/File access error (a symbolic link to a directory on "
                                    "the way is not followed)"));
    return Error::fromErrno(e, QFile::decodeName(path), kSource);
}

Error directoryError(int e, const QByteArray& path) {
    if (e == ENOENT || e == ENOTDIR)
        return error(ErrNo::PathNotFound);
    return Error::fromErrno(e, QFile::decodeName(path), kSource);
}

mode_t currentUmask() {
    Fd fd(::open("/proc/self/status", O_RDONLY | O_CLOEXEC));
    if (fd) {
        char buffer[4096];
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer - 1);
        if (n > 0) {
            buffer[n] = '\0';
            if (const char* line = std::strstr(buffer, "\nUmask:"))
                return mode_t(std::strtoul(line + 7, nullptr, 8));
        }
    }
    const mode_t mask = ::umask(022);
    ::umask(mask);
    return mask;
}

} // namespace ondrel::posix
