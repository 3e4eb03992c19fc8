#include "staging/StagingLog.h"
#include "platform/CrashPoint.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel {

namespace {

constexpr qsizetype kBufferSize = 64 * 1024;
const QString kSource = QStringLiteral("StagingLog");
// As many links as the system itself follows in one path.
constexpr int kMaxLinks = 40;

QByteArray directoryOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

// The target of the link at path, if the link belongs to the user running the job. Read from
// the link that was looked at, not from whatever holds its name a moment later.
Result<QByteArray> ownLinkTarget(const QByteArray& path) {
    struct stat status {};
    char target[PATH_MAX];
#ifdef O_PATH
    const int link = ::open(path.constData(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (link < 0)
        return Error::fromErrno(errno, QFile::decodeName(path), kSource);
    ssize_t length = -1;
    if (::fstat(link, &status) == 0 && S_ISLNK(status.st_mode) && status.st_uid == ::geteuid())
        length = ::readlinkat(link, "", target, sizeof target);
    const int readError = errno;
    ::close(link);
#else
    if (::lstat(path.constData(), &status) != 0)
        return Error::fromErrno(errno, QFile::decodeName(path), kSource);
    ssize_t length = -1;
    if (S_ISLNK(status.st_mode) && status.st_uid == ::geteuid())
        length = ::readlink(path.constData(), target, sizeof target);
    const int readError = errno;
#endif
    if (!S_ISLNK(status.st_mode))
        return Error::fromErrno(ELOOP, {}, kSource);
    if (status.st_uid != ::geteuid())
        return Error(
            ErrNo::PermissionDenied,
            QStringLiteral("Permission denied (the log is a symbolic link owned by another user)"),
            kSource);
    if (length < 0 || length == ssize_t(sizeof target))
        return Error::fromErrno(length < 0 ? readError : ENAMETOOLONG, {}, kSource);
    const QByteArray to(target, length);
    return to.startsWith('/') ? to : directoryOf(path) + '/' + to;
}

} // namespace

StagingLog::~StagingLog() {
    (void)close();
}

Result<void> StagingLog::open(const QString& fileName) {
    (void)close();
    m_failure.reset();
    m_written = 0;
    QByteArray path = QFile::encodeName(fileName);
    int fd = -1;
    for (int links = 0; fd < 0; ++links) {
        // Opened without emptying it: only once it is known what was opened is it emptied. The
        // log may be a pipe someone reads (a terminal, a process that follows the run), but a
        // fifo that nobody reads would hold the run up for ever: opened non-blocking, it fails
        // at once (ENXIO, device unavailable).
        fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                    0666);
        if (fd >= 0)
            break;
        if (errno != ELOOP || links == kMaxLinks)
            return Error::fromErrno(errno, QFile::decodeName(path), kSource);
        Result<QByteArray> target = ownLinkTarget(path);
        if (!target.ok())
            return target.error();
        path = std::move(target).value();
    }
    struct stat status {};
    const int flags = ::fcntl(fd, F_GETFL);
    if (::fstat(fd, &status) != 0 || (S_ISREG(status.st_mode) && ::ftruncate(fd, 0) != 0) ||
        flags < 0 || ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
        const int e = errno;
        ::close(fd);
        return Error::fromErrno(e, fileName, kSource);
    }
    m_fd = fd;
    m_fileName = QDir::cleanPath(QFileInfo(fileName).absoluteFilePath());
    m_buffer.reserve(kBufferSize);
    return {};
}

Result<void> StagingLog::writeLine(const QString& text) {
    if (m_failure)
        return *m_failure;
    if (m_fd < 0)
        return Error(ErrNo::PathFileAccess, kSource);
    m_buffer.append(text.toUtf8());
    m_buffer.append("\r\n", 2);
    if (m_buffer.size() >= kBufferSize)
        return flush();
    return {};
}

Result<void> StagingLog::flush() {
    if (m_failure)
        return *m_failure;
    if (m_fd < 0)
        return {};
    qsizetype done = 0;
    while (done < m_buffer.size()) {
        CrashPoint::reached();
        const ssize_t n =
            ::write(m_fd, m_buffer.constData() + done, static_cast<size_t>(m_buffer.size() - done));
        if (n > 0) {
            done += n;
            continue;
        }
        if (n < 0 && errno == EINTR)
            continue;
        const int e = n < 0 ? errno : ENOSPC;
        // The part of a line that made it is taken back: a reader never sees half a line.
        // (A pipe or a device cannot be cut; it keeps what it got.)
        const qsizetype lastLineEnd = m_buffer.first(done).lastIndexOf("\r\n");
        [[maybe_unused]] const int cut =
            ::ftruncate(m_fd, m_written + (lastLineEnd < 0 ? 0 : lastLineEnd + 2));
        m_buffer.clear();
        m_failure = Error::fromErrno(e, m_fileName, kSource);
        return *m_failure;
    }
    m_written += done;
    m_buffer.clear();
    return {};
}

Result<void> StagingLog::close() {
    if (m_fd < 0)
        return m_failure ? Result<void>(*m_failure) : Result<void>();
    Result<void> flushed = flush();
    ::close(m_fd);
    m_fd = -1;
    m_buffer.clear();
    return flushed;
}

} // namespace ondrel
