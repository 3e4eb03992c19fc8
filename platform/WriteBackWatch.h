#pragma once

#include <QByteArray>

#include <sys/types.h>
#include <utility>
#include <vector>

namespace ondrel {

// Watches the file systems a move writes its copies to, so that a disk that fails to write
// them keeps their sources. A file system reports a write error only to handles opened on it
// before the error happened: each is watched from before its first copy on.
class WriteBackWatch {
public:
    WriteBackWatch() = default;
    ~WriteBackWatch();
    WriteBackWatch(const WriteBackWatch&) = delete;
    WriteBackWatch& operator=(const WriteBackWatch&) = delete;

    // Starts watching the file system that holds dir (once per file system).
    void watch(const QByteArray& dir);

    // Writes each watched file system to the disk; gives the devices of those that failed to,
    // or that lost a write since watching began.
    std::vector<dev_t> sync();

private:
    std::vector<std::pair<dev_t, int>> m_watched;
};

} // namespace ondrel
