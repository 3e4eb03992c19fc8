#include "platform/Volumes.h"

#include "platform/NativePath.h"
#include "platform/PosixFile.h"

#include <QDir>
#include <QFile>

#include <climits>
#include <cstdlib>
#include <dirent.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace ondrel {

using namespace posix;

namespace {

// One line of the mount table.
struct Mount {
    dev_t device = 0;
    QByteArray mountPoint;
    QByteArray type;
    QByteArray source;
};

// The mount table writes a space, tab, line break or backslash in a name as "\" and three
// octal digits.
QByteArray unescapeOctal(QByteArrayView field) {
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        const auto isOctal = [&](qsizetype k) {
            return k < field.size() && field[k] >= '0' && field[k] <= '7';
        };
        if (field[i] == '\\' && isOctal(i + 1) && isOctal(i + 2) && isOctal(i + 3)) {
            out +=
                char((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 + (field[i + 3] - '0'));
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

// The lines of /proc/self/mountinfo: "id parent major:minor root mountpoint options
// [optional fields] - type source super-options".
QList<Mount> parseMountInfo(const QByteArray& text) {
    QList<Mount> mounts;
    for (const QByteArray& line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype dash = fields.indexOf(QByteArrayLiteral("-"), 6);
        if (fields.size() < 6 || dash < 0 || dash + 2 >= fields.size())
            continue;
        const QList<QByteArray> numbers = fields[2].split(':');
        if (numbers.size() != 2)
            continue;
        Mount mount;
        mount.device = makedev(numbers[0].toUInt(), numbers[1].toUInt());
        mount.mountPoint = unescapeOctal(fields[4]);
        mount.type = unescapeOctal(fields[dash + 1]);
        mount.source = unescapeOctal(fields[dash + 2]);
        mounts.append(mount);
    }
    return mounts;
}

QByteArray readMountInfo() {
    QByteArray text;
    Fd fd(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC));
    if (!fd)
        return text;
    char buffer[16384];
    for (;;) {
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        text.append(buffer, n);
    }
    return text;
}

// Whether path is at or below dir, component by component.
bool isWithin(QByteArrayView path, QByteArrayView dir) {
    if (dir == "/")
        return path.startsWith('/');
    return path.startsWith(dir) && (path.size() == dir.size() || path[dir.size()] == '/');
}

// File systems that only show the kernel's state: never a place for anyone's files.
bool isPseudo(QByteArrayView type) {
    static const QByteArrayView kPseudo[] = {
        "proc",        "sysfs",  "cgroup",          "cgroup2",     "devpts",
        "devtmpfs",    "mqueue", "securityfs",      "debugfs",     "tracefs",
        "pstore",      "bpf",    "configfs",        "fusectl",     "hugetlbfs",
        "binfmt_misc", "autofs", "efivarfs",        "rpc_pipefs",  "nsfs",
        "selinuxfs",   "nfsd",   "fuse.gvfsd-fuse", "fuse.portal", "fuse.lxcfs",
    };
    for (const QByteArrayView pseudo : kPseudo)
        if (type == pseudo)
            return true;
    return false;
}

// Whether a mount is a file system a user keeps files on. Memory-backed file systems (tmpfs,
// ramfs) are kept where a user puts them, above all a /tmp on tmpfs, which is where scratch copies
// go; the ones below /run and /dev hold the system's own state (sockets, locks, the session's
// runtime directory) and are left out, as is everything below /proc, /sys and /dev. Removable
// disks mounted below /run/media are real file systems and stay. The read-only package images
// below /snap are left out: there are dozens of them and nothing can be staged to them.
bool isReal(const Mount& mount) {
    if (isPseudo(mount.type))
        return false;
    for (const QByteArrayView system : {"/proc", "/sys", "/dev"})
        if (isWithin(mount.mountPoint, system))
            return false;
    const bool inMemory = mount.type == "tmpfs" || mount.type == "ramfs";
    if (inMemory && (isWithin(mount.mountPoint, "/run") || isWithin(mount.mountPoint, "/var/run")))
        return false;
    if (mount.type == "squashfs" && isWithin(mount.mountPoint, "/snap"))
        return false;
    return true;
}

// The mounts that can be seen: of several on one mount point, the last hides the others.
QList<Mount> visibleMounts(const QList<Mount>& mounts) {
    QList<Mount> visible;
    for (const Mount& mount : mounts) {
        visible.removeIf([&](const Mount& m) { return m.mountPoint == mount.mountPoint; });
        visible.append(mount);
    }
    return visible;
}

Volume volumeOf(const Mount& mount) {
    return {mount.mountPoint, QString(), QString::fromUtf8(mount.type), mount.source};
}

QByteArray canonical(const QByteArray& path) {
    char resolved[PATH_MAX];
    return ::realpath(path.constData(), resolved) ? QByteArray(resolved) : path;
}

// udev writes unsafe characters of a label as "\x" and two hex digits.
QString labelFromLinkName(QByteArrayView name) {
    QByteArray out;
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (name[i] == '\\' && i + 3 < name.size() && name[i + 1] == 'x') {
            bool ok = false;
            const int value = name.sliced(i + 2, 2).toByteArray().toInt(&ok, 16);
            if (ok) {
                out += char(value);
                i += 3;
                continue;
            }
        }
        out += name[i];
    }
    return QString::fromUtf8(out);
}

// Device node -> label, from the links of /dev/disk/by-label.
QList<QPair<QByteArray, QString>> labelsByDevice() {
    QList<QPair<QByteArray, QString>> labels;
    const QByteArray dir = QByteArrayLiteral("/dev/disk/by-label");
    DIR* listing = ::opendir(dir.constData());
    if (!listing)
        return labels;
    while (const dirent* entry = ::readdir(listing)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        labels.append({canonical(dir + '/' + name), labelFromLinkName(name)});
    }
    ::closedir(listing);
    return labels;
}

// Without a mount table: the highest ancestor still on path's device.
QByteArray mountPointByDevice(const QByteArray& path, dev_t device) {
    QByteArray mountPoint = path;
    while (mountPoint != "/") {
        const QByteArray parent = NativePath::parentOf(mountPoint);
        struct stat st {};
        if (::stat(parent.constData(), &st) != 0 || st.st_dev != device)
            break;
        mountPoint = parent;
    }
    return mountPoint;
}

} // namespace

QByteArray Volumes::mountPointOf(const QByteArray& path) {
    QByteArray existing = path;
    if (!existing.startsWith('/'))
        existing = NativePath::join(QFile::encodeName(QDir::currentPath()), existing);
    existing = NativePath::withoutTrailingSeparator(existing);
    struct stat st {};
    while (::stat(existing.constData(), &st) != 0) {
        if (existing == "/")
            return existing;
        existing = NativePath::parentOf(existing);
    }
    const QByteArray resolved = canonical(existing);

    const QList<Mount> mounts = parseMountInfo(readMountInfo());
    if (mounts.isEmpty())
        return mountPointByDevice(resolved, st.st_dev);
    // The deepest mount point on the way that has the file's device; a file system whose
    // files show another device than its mount (a btrfs subvolume) falls back to the deepest
    // mount point on the way. Of mounts on one point, the last is the one seen.
    const Mount* byDevice = nullptr;
    const Mount* byPath = nullptr;
    for (const Mount& mount : mounts) {
        if (!isWithin(resolved, mount.mountPoint))
            continue;
        if (!byPath || mount.mountPoint.size() >= byPath->mountPoint.size())
            byPath = &mount;
        if (mount.device == st.st_dev &&
            (!byDevice || mount.mountPoint.size() >= byDevice->mountPoint.size()))
            byDevice = &mount;
    }
    if (byDevice)
        return byDevice->mountPoint;
    return byPath ? byPath->mountPoint : QByteArrayLiteral("/");
}

QList<Volume> Volumes::realVolumes(const QByteArray& mountInfo) {
    QList<Volume> volumes;
    for (const Mount& mount : visibleMounts(parseMountInfo(mountInfo)))
        if (isReal(mount))
            volumes.append(volumeOf(mount));
    return volumes;
}

QList<Volume> Volumes::mountedVolumes() {
    QList<Volume> volumes = realVolumes(readMountInfo());
    // A file bind-mounted over another (as containers do with /etc/hosts) is no volume.
    volumes.removeIf([](const Volume& volume) {
        struct stat st {};
        return ::stat(volume.mountPoint.constData(), &st) != 0 || !S_ISDIR(st.st_mode);
    });
    const QList<QPair<QByteArray, QString>> labels = labelsByDevice();
    for (Volume& volume : volumes) {
        if (!volume.device.startsWith("/dev/"))
            continue;
        const QByteArray node = canonical(volume.device);
        for (const auto& [device, label] : labels)
            if (device == node)
                volume.label = label;
    }
    return volumes;
}

} // namespace ondrel
