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

Result<void> writeInPlace(const QByteArray& path, const QString& fileName,
                          const QByteArray& bytes) {
    CrashPoint::reached();
    FdGuard fd(::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (fd.get() < 0)
        return errnoError(errno, fileName);
    if (!writeAll(fd.get(), bytes))
        return errnoError(errno, fileName);
    if (::close(fd.release()) != 0)
        return errnoError(errno, fileName);
    return {};
}

} // namespace

Result<QByteArray> WholeFile::read(const QString& fileName) {
    const QByteArray path = QFile::encodeName(fileName);
    FdGuard fd(::open(path.constData(), O_RDONLY | O_CLOEXEC));
    if (fd.get() < 0)
        return errnoError(errno, fileName);
    struct stat st {};
    if (::fstat(fd.get(), &st) != 0)
        return errnoError(errno, fileName);
    if (S_ISDIR(st.st_mode))
        return Error(ErrNo::PathFileAccess, kSource);
    QByteArray bytes;
    if (S_ISREG(st.st_mode))
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

    // A read-only file is not rewritten, whoever runs the program; renaming over it would get
    // round its protection.
    struct stat old {};
    const bool exists = ::stat(path.constData(), &old) == 0;
    if (exists && S_ISREG(old.st_mode) && !(old.st_mode & S_IWUSR))
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
            return writeInPlace(path, fileName, bytes);
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
    return writeInPlace(QFile::encodeName(fileName), fileName, QByteArray());
}

} // namespace ondrel
