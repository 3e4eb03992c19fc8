#include "platform/UnnamedFiles.h"

#include <atomic>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace ondrel {

namespace {

// How this process names an unnamed file: by the file itself (a privileged process may), by
// its entry in /proc, or not at all.
enum class Way { ByHandle, ByProc, None };
std::atomic<Way> way{Way::ByHandle};

int linkByProc(int fd, int dir, const char* name) {
    char path[48];
    std::snprintf(path, sizeof path, "/proc/self/fd/%d", fd);
    if (::linkat(AT_FDCWD, path, dir, name, AT_SYMLINK_FOLLOW) == 0)
        return 0;
    const int e = errno;
    // Without /proc there is no way left; otherwise it is the directory that is gone.
    if (e == ENOENT && ::access("/proc/self/fd", F_OK) != 0) {
        way = Way::None;
        return ENOENT;
    }
    return e;
}

} // namespace

bool UnnamedFiles::usable() {
    return way != Way::None;
}

void UnnamedFiles::setUsable(bool usable) {
    way = usable ? Way::ByHandle : Way::None;
}

bool UnnamedFiles::unsupported(int e) {
    // EISDIR: a kernel that does not know these files opens the directory itself.
    return e == EOPNOTSUPP || e == ENOTSUP || e == EISDIR || e == EINVAL;
}

int UnnamedFiles::link(int fd, int dir, const char* name) {
    if (way == Way::ByHandle) {
        if (::linkat(fd, "", dir, name, AT_EMPTY_PATH) == 0)
            return 0;
        const int e = errno;
        // Refused to an unprivileged process as if the file were not there.
        if (e != ENOENT && e != EPERM)
            return e;
        const int byProc = linkByProc(fd, dir, name);
        if (byProc == 0)
            way = Way::ByProc;
        return byProc;
    }
    if (way == Way::ByProc)
        return linkByProc(fd, dir, name);
    return ENOENT;
}

} // namespace ondrel
