#include "platform/DirectoryHandles.h"
#include "platform/NativePath.h"

#include <QSet>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
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

    // The handle of the directory named by the first length bytes of path, or -1 (errno says
    // why).
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
        const int fd =
            rootBelow(path, length) < 0 ? openWhole(path, length) : openLevel(path, length);
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

    void addRoot(const QByteArray& root) {
        if (!root.isEmpty())
            m_roots.insert(root);
    }

    // The length of the longest root that the first length bytes of path lie strictly below,
    // or -1; also -1 for a root itself, which is opened as the user wrote it. A run may have
    // thousands of roots: each is looked up by the path's own prefixes.
    qsizetype rootBelow(const QByteArray& path, qsizetype length) const {
        if (m_roots.isEmpty() || m_roots.contains(path.left(length)))
            return -1;
        for (qsizetype i = length - 1; i >= 0; --i) {
            if (path[i] == '/' && m_roots.contains(i == 0 ? QByteArrayLiteral("/") : path.left(i)))
                return i;
        }
        return -1;
    }

private:
    static int openWhole(const QByteArray& path, qsizetype length) {
        const QByteArray dir = length == 0 ? QByteArrayLiteral("/") : path.left(length);
        // Opened for reading, so that the same handle also lists the directory.
        return ::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }

    // A directory below a root: its last level opened from its parent's handle, refusing a
    // symbolic link (ELOOP), so that no level between the root and it can be a link either.
    int openLevel(const QByteArray& path, qsizetype length) {
        qsizetype slash = length - 1;
        while (slash > 0 && path[slash] != '/')
            --slash;
        qsizetype parent = slash;
        while (parent > 1 && path[parent - 1] == '/')
            --parent;
        const int parentFd = find(path, parent);
        if (parentFd < 0)
            return -1;
        const QByteArray name = path.mid(slash + 1, length - slash - 1);
        const int fd =
            ::openat(parentFd, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0 && (errno == ENOTDIR || errno == ELOOP)) {
            struct stat st {};
            const bool link =
                ::fstatat(parentFd, name.constData(), &st, AT_SYMLINK_NOFOLLOW) == 0 &&
                S_ISLNK(st.st_mode);
            errno = link ? ELOOP : ENOTDIR;
        }
        return fd;
    }

private:
    struct Entry {
        QByteArray dir;
        int fd = -1;
    };
    static constexpr int kSize = 16;
    Entry m_entries[kSize];
    int m_count = 0;
    QSet<QByteArray> m_roots;
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
    // A buffer of its own: the path it was given may belong to another thread.
    path = QByteArray(heldPath.constData(), heldPath.size());
    fd = heldFd;
    status = st;
    stored = heldStored;
}

void DirectoryHandles::addRoot(const QByteArray& root) {
    if (active)
        active->addRoot(root);
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
    const char* name = path.constData() + slash + 1;
    const int fd = active->find(path, slash);
    if (fd >= 0)
        return {fd, name};
    // Below a root, the whole path could pass through the very link that was refused.
    if (active->rootBelow(path, path.size()) >= 0)
        return {-1, name, errno == 0 ? ENOENT : errno};
    return whole;
}

} // namespace ondrel
