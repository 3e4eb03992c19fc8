#include "platform/DirectoryHandles.h"
#include "platform/NativePath.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace ondrel {

// The most recently used directories first. A run works in one source directory and one
// directory per destination at a time, so a handful is enough.
class DirectoryHandleCache {
public:
    ~DirectoryHandleCache() {
        for (int i = 0; i < m_count; ++i)
            ::close(m_entries[i].fd);
        if (held.fd >= 0)
            ::close(held.fd);
    }

    DirectoryHandles::HeldSource held;

    // The handle of the directory named by the first length bytes of path, or -1.
    int find(const QByteArray& path, qsizetype length) {
        for (int i = 0; i < m_count; ++i) {
            const Entry& e = m_entries[i];
            if (e.dir.size() == length &&
                std::memcmp(e.dir.constData(), path.constData(), size_t(length)) == 0) {
                const int fd = e.fd;
                // To the front: the two directories of a copy are never the ones given up for
                // a third.
                std::rotate(m_entries, m_entries + i, m_entries + i + 1);
                return fd;
            }
        }
        const QByteArray dir = length == 0 ? QByteArrayLiteral("/") : path.left(length);
        // Opened for reading, so that the same handle also lists the directory.
        const int fd = ::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        // A directory that is not there now may be made in a moment: it is not remembered.
        if (fd < 0)
            return -1;
        if (m_count == kSize)
            ::close(m_entries[--m_count].fd);
        for (int i = m_count; i > 0; --i)
            m_entries[i] = std::move(m_entries[i - 1]);
        m_entries[0] = {path.left(length), fd};
        ++m_count;
        return fd;
    }

private:
    struct Entry {
        QByteArray dir;
        int fd = -1;
    };
    static constexpr int kSize = 8;
    Entry m_entries[kSize];
    int m_count = 0;
};

namespace {

thread_local DirectoryHandleCache* active = nullptr;

} // namespace

DirectoryHandles::Scope::Scope() : m_outer(active) {
    active = new DirectoryHandleCache;
}

DirectoryHandles::Scope::~Scope() {
    delete active;
    active = m_outer;
}

void DirectoryHandles::HeldSource::hold(const QByteArray& heldPath, int heldFd,
                                        const struct stat& st, int heldStored) {
    if (fd >= 0)
        ::close(fd);
    path = heldPath;
    fd = heldFd;
    status = st;
    stored = heldStored;
}

DirectoryHandles::HeldSource* DirectoryHandles::heldSource() {
    return active ? &active->held : nullptr;
}

int DirectoryHandles::handleOf(const QByteArray& dir) {
    if (!active) {
        errno = 0;
        return -1;
    }
    qsizetype length = dir.size();
    while (length > 0 && dir[length - 1] == '/')
        --length;
    if (length == 0 && dir.isEmpty()) {
        errno = ENOENT;
        return -1;
    }
    return active->find(dir, length);
}

DirectoryHandles::At DirectoryHandles::resolve(const QByteArray& path) {
    const At whole{AT_FDCWD, path.constData()};
    if (!active)
        return whole;
    const qsizetype slash = NativePath::lastSeparator(path);
    // Relative paths and names ending in a slash are left to the whole-path calls.
    if (slash < 0 || slash == path.size() - 1)
        return whole;
    const int fd = active->find(path, slash);
    if (fd < 0)
        return whole;
    return {fd, path.constData() + slash + 1};
}

} // namespace ondrel
