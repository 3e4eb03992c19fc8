#include "staging/StagingLog.h"
#include "platform/CrashPoint.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel {

namespace {

constexpr qsizetype kBufferSize = 64 * 1024;
const QString kSource = QStringLiteral("StagingLog");

} // namespace

StagingLog::~StagingLog() {
    (void)close();
}

Result<void> StagingLog::open(const QString& fileName) {
    (void)close();
    const QByteArray path = QFile::encodeName(fileName);
    // The log may be a pipe someone reads (a terminal, a process that follows the run), but a
    // fifo that nobody reads would hold the run up for ever: opened non-blocking, it fails at
    // once (ENXIO, device unavailable). Only a regular file is emptied.
    m_fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666);
    if (m_fd < 0)
        return Error::fromErrno(errno, fileName, kSource);
    struct stat st {};
    const int flags = ::fcntl(m_fd, F_GETFL);
    if (::fstat(m_fd, &st) != 0 || (S_ISREG(st.st_mode) && ::ftruncate(m_fd, 0) != 0) ||
        flags < 0 || ::fcntl(m_fd, F_SETFL, flags & ~O_NONBLOCK) != 0) {
        const int e = errno;
        ::close(m_fd);
        m_fd = -1;
        return Error::fromErrno(e, fileName, kSource);
    }
    m_fileName = fileName;
    m_buffer.reserve(kBufferSize);
    return {};
}

Result<void> StagingLog::writeLine(const QString& text) {
    if (m_fd < 0)
        return Error(ErrNo::PathFileAccess, kSource);
    m_buffer.append(text.toUtf8());
    m_buffer.append("\r\n", 2);
    if (m_buffer.size() >= kBufferSize)
        return flush();
    return {};
}

Result<void> StagingLog::flush() {
    if (m_fd < 0)
        return {};
    qsizetype done = 0;
    while (done < m_buffer.size()) {
        CrashPoint::reached();
        const ssize_t n =
            ::write(m_fd, m_buffer.constData() + done, static_cast<size_t>(m_buffer.size() - done));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            const int e = errno;
            m_buffer.remove(0, done);
            return Error::fromErrno(e, m_fileName, kSource);
        }
        done += n;
    }
    m_buffer.clear();
    return {};
}

Result<void> StagingLog::close() {
    if (m_fd < 0)
        return {};
    Result<void> flushed = flush();
    ::close(m_fd);
    m_fd = -1;
    m_buffer.clear();
    return flushed;
}

} // namespace ondrel
