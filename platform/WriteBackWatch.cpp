#include "platform/WriteBackWatch.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel {

WriteBackWatch::~WriteBackWatch() {
    for (const auto& [device, fd] : m_watched)
        ::close(fd);
}

void WriteBackWatch::watch(const QByteArray& dir) {
    const int fd = ::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    struct stat st {};
    const bool known = ::fstat(fd, &st) != 0 ||
                       std::any_of(m_watched.cbegin(), m_watched.cend(),
                                   [&](const auto& watched) { return watched.first == st.st_dev; });
    if (known)
        ::close(fd);
    else
        m_watched.emplace_back(st.st_dev, fd);
}

std::vector<dev_t> WriteBackWatch::sync() {
    std::vector<dev_t> failed;
    for (const auto& [device, fd] : m_watched) {
        if (::syncfs(fd) != 0)
            failed.push_back(device);
    }
    return failed;
}

} // namespace ondrel
