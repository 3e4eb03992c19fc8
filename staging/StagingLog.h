#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>

namespace ondrel {

// The staging log: text lines ended by CR LF, written through a buffer that is flushed when the
// run ends or stops, so a long run costs one write per buffer-full and nothing is lost on Cancel.
class StagingLog {
public:
    StagingLog() = default;
    ~StagingLog();
    StagingLog(const StagingLog&) = delete;
    StagingLog& operator=(const StagingLog&) = delete;

    // Creates the file, or empties an existing one.
    Result<void> open(const QString& fileName);
    bool isOpen() const { return m_fd >= 0; }

    // Writes text and CR LF. A failed write is returned (a full disk); the text stays unwritten.
    Result<void> writeLine(const QString& text);
    Result<void> flush();
    Result<void> close();

private:
    int m_fd = -1;
    QByteArray m_buffer;
    QString m_fileName;
};

} // namespace ondrel
