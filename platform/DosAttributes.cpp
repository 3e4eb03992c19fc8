#include "platform/DosAttributes.h"

#include "platform/DirectoryHandles.h"

#include "platform/FileSystem.h"
#include "platform/PosixFile.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/xattr.h>

namespace ondrel {

using namespace posix;

namespace {

// Samba and Wine keep a file's DOS attributes here, as "0x" and hex digits.
constexpr char kDosAttrib[] = "user.DOSATTRIB";
constexpr int kStoredBits = Attr::Hidden | Attr::System | Attr::Archive;
constexpr int kSettableBits = Attr::ReadOnly | kStoredBits;

bool isDotName(const QByteArray& name) {
    return name.startsWith('.') && name != "." && name != "..";
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// The stored bits, or -1 when nothing usable is stored. Only the text form counts; whatever
// follows its hex digits (a NUL, Samba's binary record) is ignored.
int parseStored(const char* data, ssize_t size) {
    if (size < 3 || data[0] != '0' || (data[1] != 'x' && data[1] != 'X'))
        return -1;
    unsigned value = 0;
    ssize_t i = 2;
    for (; i < size && i < 10; ++i) {
        const int digit = hexValue(data[i]);
        if (digit < 0)
            break;
        value = value << 4 | unsigned(digit);
    }
    return i == 2 ? -1 : int(value & kStoredBits);
}

// get(buffer, size) behaves as getxattr for user.DOSATTRIB.
template <typename Get> int readStoredWith(Get get) {
    char buffer[64];
    ssize_t n = get(buffer, sizeof buffer);
    if (n >= 0)
        return parseStored(buffer, n);
    if (errno != ERANGE)
        return -1;
    // Samba's binary record is longer than any text form.
    const ssize_t size = get(nullptr, 0);
    if (size <= 0)
        return -1;
    QByteArray big(size, Qt::Uninitialized);
    n = get(big.data(), size_t(size));
    return n >= 0 ? parseStored(big.constData(), n) : -1;
}

int readStoredAt(const QByteArray& path) {
    return readStoredWith(
        [&](void* b, size_t s) { return ::getxattr(path.constData(), kDosAttrib, b, s); });
}

int readStoredOn(int fd) {
    return readStoredWith([&](void* b, size_t s) { return ::fgetxattr(fd, kDosAttrib, b, s); });
}

// "0x" and lower-case hex digits, as Samba writes them.
struct StoredText {
    explicit StoredText(int bits)
        : size(std::snprintf(text, sizeof text, "0x%x", unsigned(bits))) {}
    char text[16];
    int size;
};

// Clearing Read-Only gives the owner the write bit back, and group and others theirs where they
// may read and the umask would have let a new file have it.
mode_t writeBitsToRestore(mode_t mode) {
    const mode_t mask = currentUmask();
    mode_t bits = S_IWUSR;
    if ((mode & S_IRGRP) && !(mask & S_IWGRP))
        bits |= S_IWGRP;
    if ((mode & S_IROTH) && !(mask & S_IWOTH))
        bits |= S_IWOTH;
    return bits;
}

} // namespace

int DosAttributes::fromStatus(const QByteArray& path, const struct stat& st) {
    const int stored = readStoredAt(path);
    int attributes = Attr::Normal;
    if (!(st.st_mode & S_IWUSR))
        attributes |= Attr::ReadOnly;
    if (isDotName(nameOf(path)) || (stored >= 0 && (stored & Attr::Hidden)))
        attributes |= Attr::Hidden;
    if (stored >= 0 && (stored & Attr::System))
        attributes |= Attr::System;
    if (S_ISDIR(st.st_mode))
        attributes |= Attr::Directory;
    // Nothing stored: a new or changed file, due for archiving.
    if (stored < 0 || (stored & Attr::Archive))
        attributes |= Attr::Archive;
    return attributes;
}

Result<void> DosAttributes::set(const QByteArray& path, int attributes) {
    if (attributes < 0 || (attributes & ~kSettableBits))
        return error(ErrNo::InvalidCall);
    // Reached through the run's directory handles where it has them, so that a directory on
    // the way swapped for a link since the walk leads nowhere: the file is opened as a path of
    // its own, and changed through its entry in /proc, which names that very file.
    const DirectoryHandles::At at = DirectoryHandles::resolve(path);
    if (at.refused())
        return errnoError(at.error, path);
    Fd file;
    QByteArray target = path;
    static const bool procThere = ::access("/proc/self/fd", F_OK) == 0;
    if (at.dir != AT_FDCWD && procThere) {
        file.reset(::openat(at.dir, at.name, O_PATH | O_CLOEXEC));
        if (!file)
            return errnoError(errno, path);
        target = "/proc/self/fd/" + QByteArray::number(file.get());
    }
    struct stat st {};
    if (::stat(target.constData(), &st) != 0)
        return errnoError(errno, path);

    mode_t mode = st.st_mode & 07777;
    mode_t wanted = mode;
    if (attributes & Attr::ReadOnly)
        wanted &= ~mode_t(S_IWUSR | S_IWGRP | S_IWOTH);
    else if (!(mode & S_IWUSR))
        wanted |= writeBitsToRestore(mode);

    int failure = 0;
    // User attributes exist on files and directories only.
    if (S_ISREG(st.st_mode) || S_ISDIR(st.st_mode)) {
        const StoredText value(attributes & kStoredBits);
        const auto store = [&] {
            return ::setxattr(target.constData(), kDosAttrib, value.text, size_t(value.size), 0) ==
                           0
                       ? 0
                       : errno;
        };
        failure = store();
        // Only a process that may write a file may store its user attributes: the owner of a
        // read-only file lends himself the write bit for the moment.
        if (failure == EACCES && !(mode & S_IWUSR) && st.st_uid == ::geteuid() &&
            ::chmod(target.constData(), mode | S_IWUSR) == 0) {
            mode |= S_IWUSR;
            failure = store();
        }
        if (unsupported(failure))
            failure = 0;
    }
    if (wanted != mode && ::chmod(target.constData(), wanted) != 0 && failure == 0)
        failure = errno;
    if (failure != 0)
        return errnoError(failure, path);
    return {};
}

int DosAttributes::readStored(int fd) {
    return readStoredOn(fd);
}

int DosAttributes::storeCopied(int to, int stored) {
    if (stored < 0)
        return 0;
    const StoredText value((stored & (Attr::Hidden | Attr::System)) | Attr::Archive);
    if (::fsetxattr(to, kDosAttrib, value.text, size_t(value.size), 0) != 0 && !unsupported(errno))
        return errno;
    return 0;
}

} // namespace ondrel
