#include "staging/StagingLog.h"
#include "platform/CrashPoint.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
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
    m_failure.reset();
    m_written = 0;
    const QByteArray path = QFile::encodeName(fileName);
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return Error::fromErrno(errno, fileName, kSource);
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
