#pragma once

#include "platform/Error.h"
#include "platform/Result.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace ondrel {

// The staging log: text lines ended by CR LF, written through a buffer that is flushed when the
// run ends or stops, so a long run costs one write per buffer-full and nothing is lost on Cancel.
// The file only ever holds whole lines: a write that fails halfway (a full disk) is taken back
// to the last whole line, and the log then writes nothing more.
class StagingLog {
public:
    StagingLog() = default;
    ~StagingLog();
    StagingLog(const StagingLog&) = delete;
    StagingLog& operator=(const StagingLog&) = delete;

    // Creates the file, or empties an existing one. A symbolic link is followed only when it
    // belongs to the user running the job (each link of a chain): a link someone else planted
    // where the log goes would otherwise have the job empty and overwrite the file it points to.
    Result<void> open(const QString& fileName);
    bool isOpen() const { return m_fd >= 0; }
    // The log's full path, for messages about it.
    const QString& fileName() const { return m_fileName; }

    // Writes text and CR LF. A failed write (a full disk) is returned, also by every later call:
    // after it the log takes no more lines.
    Result<void> writeLine(const QString& text);
    Result<void> flush();
    Result<void> close();

private:
    int m_fd = -1;
    QByteArray m_buffer;
    QString m_fileName;
    qint64 m_written = 0; // bytes of whole lines in the file
    std::optional<Error> m_failure;
};

} // namespace ondrel
