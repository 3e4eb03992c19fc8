#include "platform/WholeFile.h"
#include "platform/CrashPoint.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel {

namespace {

const QString kSource = QStringLiteral("WholeFile");

// No spec file, options file or file list comes near this; anything larger is not one of them,
// and reading it whole would only exhaust memory.
constexpr qsizetype kMaxBytes = qsizetype(64) * 1024 * 1024;

Error notRegularFile() {
    return Error(ErrNo::PathFileAccess, QStringLiteral("Not a regular file"), kSource);
}

Error tooLarge() {
    return Error(ErrNo::PathFileAccess, QStringLiteral("File too large"), kSource);
}

class FdGuard {
public:
    explicit FdGuard(int fd) : m_fd(fd) {}
    ~FdGuard() {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    FdGuard(const FdGuard&) = delete;
    FdGuard& operator=(const FdGuard&) = delete;
    int get() const { return m_fd; }
    int release() { return std::exchange(m_fd, -1); }

private:
    int m_fd;
};

Error errnoError(int e, const QString& fileName) {
    return Error::fromErrno(e, fileName, kSource);
}

bool writeAll(int fd, const QByteArray& bytes) {
    const char* p = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, p, static_cast<size_t>(left));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        p += n;
        left -= n;
    }
    return true;
}

// Ordinary reads and writes again, once the file is known to be a regular one: the descriptor
// was opened non-blocking only so that a fifo could not hold up the open.
bool blocking(int fd) {
    const int flags = ::fcntl(fd, F_GETFL);
    return flags >= 0 && ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

// Whether the path names something other than a regular file (a missing one is not).
bool existsAsOther(const QByteArray& path) {
    struct stat st {};
    return ::stat(path.constData(), &st) == 0 && !S_ISREG(st.st_mode);
}

// The file emptied and open for writing; the descriptor is the caller's to close. Something
// other than a regular file is refused, also a fifo that nobody reads, and stays as it was.
Result<int> openEmptied(const QString& fileName) {
    const QByteArray path = QFile::encodeName(fileName);
    // Opened without O_TRUNC and without waiting for a reader: only once the file is known to be
    // a regular one is it cut, so a fifo or a device named here is refused, never written to.
    FdGuard fd(::open(path.constData(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666));
    if (fd.get() < 0) {
        const int e = errno;
        // A fifo that nobody reads refuses a non-blocking open for writing (ENXIO), a directory
        // any open for writing (EISDIR).
        if ((e == ENXIO || e == EISDIR) && existsAsOther(path))
            return notRegularFile();
        return errnoError(e, fileName);
    }
    struct stat st {};
    if (::fstat(fd.get(), &st) != 0)
        return errnoError(errno, fileName);
    if (!S_ISREG(st.st_mode))
        return notRegularFile();
    if (::ftruncate(fd.get(), 0) != 0 || !blocking(fd.get()))
        return errnoError(errno, fileName);
    return fd.release();
}

Result<void> writeInPlace(const QString& fileName, const QByteArray& bytes) {
    CrashPoint::reached();
    Result<int> opened = openEmptied(fileName);
    if (!opened.ok())
        return opened.error();
    FdGuard fd(opened.value());
    if (!writeAll(fd.get(), bytes))
        return errnoError(errno, fileName);
    if (::close(fd.release()) != 0)
        return errnoError(errno, fileName);
    return {};
}

} // namespace

Result<QByteArray> WholeFile::read(const QString& fileName) {
    const QByteArray path = QFile::encodeName(fileName);
    // O_NONBLOCK so that a fifo is opened at once instead of waiting for a writer; it is then
    // refused with everything else that is not a regular file.
    FdGuard fd(::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (fd.get() < 0)
        return errnoError(errno, fileName);
    struct stat st {};
    if (::fstat(fd.get(), &st) != 0)
        return errnoError(errno, fileName);
    if (!S_ISREG(st.st_mode))
        return notRegularFile();
    if (st.st_size > kMaxBytes)
        return tooLarge();
    if (!blocking(fd.get()))
        return errnoError(errno, fileName);

    QByteArray bytes;
    bytes.reserve(static_cast<qsizetype>(st.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return errnoError(errno, fileName);
        }
        if (n == 0)
            break;
        // The file may grow while it is read: the bound holds for what is read, not only for
        // the size it had when opened.
        if (n > kMaxBytes - bytes.size())
            return tooLarge();
        bytes.append(buffer, n);
    }
    return bytes;
}

Result<void> WholeFile::write(const QString& fileName, const QByteArray& bytes) {
    // Write through a symbolic link to the file it names, so the link stays a link.
    QString target = fileName;
    const QFileInfo info(fileName);
    if (info.isSymLink())
        target = info.symLinkTarget();
    const QByteArray path = QFile::encodeName(target);

    struct stat old {};
    const bool exists = ::stat(path.constData(), &old) == 0;
    // A fifo, a device or a directory under the name is not replaced by a file, nor written to.
    if (exists && !S_ISREG(old.st_mode))
        return notRegularFile();
    // A read-only file is not rewritten, whoever runs the program; renaming over it would get
    // round its protection.
    if (exists && !(old.st_mode & S_IWUSR))
        return Error(ErrNo::PermissionDenied, kSource);

    const QFileInfo targetInfo(target);
    QByteArray tempPath =
        QFile::encodeName(targetInfo.absolutePath() + QStringLiteral("/.ondrel~") +
                          targetInfo.fileName() + QStringLiteral("~XXXXXX"));
    CrashPoint::reached();
    FdGuard fd(::mkostemp(tempPath.data(), O_CLOEXEC));
    if (fd.get() < 0) {
        const int e = errno;
        if (e == EACCES || e == EPERM)
            return writeInPlace(fileName, bytes);
        return errnoError(e, fileName);
    }

    mode_t mode = old.st_mode & 07777;
    if (!exists) {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0666 & ~mask;
    }
    ::fchmod(fd.get(), mode);

    if (!writeAll(fd.get(), bytes) || ::fsync(fd.get()) != 0 || ::close(fd.release()) != 0) {
        const int e = errno;
        ::unlink(tempPath.constData());
        return errnoError(e, fileName);
    }
    CrashPoint::reached();
    if (::rename(tempPath.constData(), path.constData()) != 0) {
        const int e = errno;
        ::unlink(tempPath.constData());
        return errnoError(e, fileName);
    }
    return {};
}

Result<void> WholeFile::truncate(const QString& fileName) {
    Result<int> opened = openEmptied(fileName);
    if (!opened.ok())
        return opened.error();
    if (::close(opened.value()) != 0)
        return errnoError(errno, fileName);
    return {};
}

} // namespace ondrel
