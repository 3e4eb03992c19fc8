#include "platform/WriteBackWatch.h"

#include "platform/NativePath.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel {

WriteBackWatch::~WriteBackWatch() {
    for (const auto& [device, fd] : m_watched)
        ::close(fd);
}

int WriteBackWatch::openNearest(QByteArray dir) {
    for (;;) {
        const int fd =
            ::open(dir.isEmpty() ? "/" : dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (fd >= 0 || dir.isEmpty() || dir == "/")
            return fd;
        const QByteArray parent = NativePath::parentOf(dir);
        if (parent == dir)
            return -1;
        dir = parent;
    }
}

void WriteBackWatch::keep(int fd) {
    struct stat st {};
    const bool known = ::fstat(fd, &st) != 0 ||
                       std::any_of(m_watched.cbegin(), m_watched.cend(),
                                   [&](const auto& watched) { return watched.first == st.st_dev; });
    if (known)
        ::close(fd);
    else
        m_watched.emplace_back(st.st_dev, fd);
}

void WriteBackWatch::watch(const QByteArray& dir) {
    if (const int fd = openNearest(dir); fd >= 0)
        keep(fd);
}

std::vector<dev_t> WriteBackWatch::sync(const std::vector<QByteArray>& paths) {
    for (const QByteArray& path : paths)
        watch(path);
    std::vector<dev_t> failed;
    for (const auto& [device, fd] : m_watched) {
        if (::syncfs(fd) != 0)
            failed.push_back(device);
    }
    return failed;
}

} // namespace ondrel
