#include "platform/FileSystem.h"

#include <QFile>
#include <QRandomGenerator>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/fs.h>
#endif

namespace ondrel {

namespace {

const QString kSource = QStringLiteral("FileSystem");

// Samba and Wine keep a file's DOS attributes here, as "0x" and hex digits.
constexpr char kDosAttrib[] = "user.DOSATTRIB";
constexpr int kStoredBits = Attr::Hidden | Attr::System | Attr::Archive;
constexpr int kSettableBits = Attr::ReadOnly | kStoredBits;

// copyFile's temporary files: ".ondrel~" + name + "~" + pid + "~" + kSuffixLength letters.
// (WholeFile's temporaries end in six letters, so the two never pass for each other.)
constexpr QByteArrayView kTempPrefix(".ondrel~");
constexpr qsizetype kSuffixLength = 8;

constexpr size_t kCopyBufferSize = size_t(1) << 20;

class Fd {
public:
    explicit Fd(int fd = -1) : m_fd(fd) {}
    ~Fd() { reset(); }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    void reset(int fd = -1) {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }
    int get() const { return m_fd; }
    int release() { return std::exchange(m_fd, -1); }
    explicit operator bool() const { return m_fd >= 0; }

private:
    int m_fd;
};

Error error(int number) {
    return Error(number, kSource);
}

// The path without trailing slashes, split at its last slash.
qsizetype endOfName(const QByteArray& path) {
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    return end;
}

QByteArray parentOf(const QByteArray& path) {
    const qsizetype end = endOfName(path);
    const qsizetype slash = end > 0 ? path.lastIndexOf('/', end - 1) : -1;
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

QByteArray nameOf(const QByteArray& path) {
    const qsizetype end = endOfName(path);
    const qsizetype slash = end > 0 ? path.lastIndexOf('/', end - 1) : -1;
    return path.mid(slash + 1, end - slash - 1);
}

bool isDotName(const QByteArray& name) {
    return name.startsWith('.') && name != "." && name != "..";
}

// errno as the system's number. For ENOENT the parent directory is looked up by its bytes (a
// decoded name would not find a directory whose name is not valid UTF-8).
Error errnoError(int e, const QByteArray& path) {
    if (e == ENOENT) {
        struct stat st {};
        const bool parentThere =
            ::stat(parentOf(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
        return error(parentThere ? ErrNo::FileNotFound : ErrNo::PathNotFound);
    }
    return Error::fromErrno(e, QFile::decodeName(path), kSource);
}

// A directory that cannot be listed because it is not there is a missing path, never a missing
// file: the walk tells a vanished source directory by 76.
Error directoryError(int e, const QByteArray& path) {
    if (e == ENOENT || e == ENOTDIR)
        return error(ErrNo::PathNotFound);
    return Error::fromErrno(e, QFile::decodeName(path), kSource);
}

bool unsupported(int e) {
    return e == ENOTSUP || e == EOPNOTSUPP;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetterOrDigit(char c) {
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

int hexValue(char c) {
    if (isDigit(c))
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// ----- stored attributes -----

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
template <typename Get> int readStored(Get get) {
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

int readStored(const QByteArray& path) {
    return readStored(
        [&](void* b, size_t s) { return ::getxattr(path.constData(), kDosAttrib, b, s); });
}

int readStored(int fd) {
    return readStored([&](void* b, size_t s) { return ::fgetxattr(fd, kDosAttrib, b, s); });
}

// "0x" and lower-case hex digits, as Samba writes them.
struct StoredText {
    explicit StoredText(int bits)
        : size(std::snprintf(text, sizeof text, "0x%x", unsigned(bits))) {}
    char text[16];
    int size;
};

int attributesOf(const struct stat& st, const QByteArray& name, int stored) {
    int attributes = Attr::Normal;
    if (!(st.st_mode & S_IWUSR))
        attributes |= Attr::ReadOnly;
    if (isDotName(name) || (stored >= 0 && (stored & Attr::Hidden)))
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

// The process's umask, read without changing it (umask() would, for every thread at once).
mode_t currentUmask() {
    Fd fd(::open("/proc/self/status", O_RDONLY | O_CLOEXEC));
    if (fd) {
        char buffer[4096];
        const ssize_t n = ::read(fd.get(), buffer, sizeof buffer - 1);
        if (n > 0) {
            buffer[n] = '\0';
            if (const char* line = std::strstr(buffer, "\nUmask:"))
                return mode_t(std::strtoul(line + 7, nullptr, 8));
        }
    }
    const mode_t mask = ::umask(022);
    ::umask(mask);
    return mask;
}

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

// ----- listings -----

// Calls onEntry(dirFd, entry) for every entry of dir but "." and "..".
template <typename OnEntry> Result<void> readDirectory(const QByteArray& dir, OnEntry onEntry) {
    const int fd = ::open(dir.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return directoryError(errno, dir);
    DIR* stream = ::fdopendir(fd);
    if (!stream) {
        const int e = errno;
        ::close(fd);
        return directoryError(e, dir);
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> closer(stream, ::closedir);
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(stream);
        if (!entry) {
            if (errno != 0)
                return directoryError(errno, dir);
            return {};
        }
        const char* n = entry->d_name;
        if (n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0')))
            continue;
        onEntry(fd, *entry);
    }
}

// List-box order: by the names as text without regard to case; equal texts by their bytes.
void sortForListBox(std::vector<QByteArray>& names) {
    struct Keyed {
        QString text;
        QByteArray name;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(names.size());
    for (QByteArray& name : names)
        keyed.push_back({QString::fromUtf8(name), std::move(name)});
    std::sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) {
        const int c = QString::compare(a.text, b.text, Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a.name < b.name;
    });
    for (size_t i = 0; i < names.size(); ++i)
        names[i] = std::move(keyed[i].name);
}

// ----- masks -----

bool isAscii(QByteArrayView name) {
    for (const char c : name)
        if (uchar(c) >= 0x80)
            return false;
    return true;
}

char32_t asciiLower(char32_t c) {
    return c >= U'A' && c <= U'Z' ? c + (U'a' - U'A') : c;
}

// "*" any run, "?" one character, anything else itself; name[i] is folded by fold.
template <typename Name, typename Fold>
bool wildcardMatch(std::u32string_view pattern, const Name& name, size_t length, Fold fold) {
    constexpr size_t none = size_t(-1);
    size_t p = 0, s = 0, star = none, starS = 0;
    while (s < length) {
        if (p < pattern.size() && pattern[p] == U'*') {
            star = p++;
            starS = s;
        } else if (p < pattern.size() && (pattern[p] == U'?' || pattern[p] == fold(name[s]))) {
            ++p;
            ++s;
        } else if (star != none) {
            p = star + 1;
            s = ++starS;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == U'*')
        ++p;
    return p == pattern.size();
}

// One mask, case-folded once so that every name of a listing is matched without allocating.
class CompiledMask {
public:
    explicit CompiledMask(const QString& mask) {
        const QList<uint> folded = mask.toCaseFolded().toUcs4();
        m_pattern.assign(folded.begin(), folded.end());
        // As on Windows, "abc.*" also takes "abc", and so "*.*" takes every name.
        m_withoutDotTail = m_pattern.ends_with(U".*");
    }

    bool matchesAscii(QByteArrayView name) const {
        const auto fold = [](char c) { return asciiLower(char32_t(uchar(c))); };
        return matchEither([&](std::u32string_view p) {
            return wildcardMatch(p, name, size_t(name.size()), fold);
        });
    }

    bool matchesFolded(const QList<uint>& name) const {
        const auto fold = [](uint c) { return char32_t(c); };
        return matchEither([&](std::u32string_view p) {
            return wildcardMatch(p, name, size_t(name.size()), fold);
        });
    }

private:
    template <typename Match> bool matchEither(Match match) const {
        const std::u32string_view pattern(m_pattern);
        return match(pattern) || (m_withoutDotTail && match(pattern.substr(0, pattern.size() - 2)));
    }

    std::u32string m_pattern;
    bool m_withoutDotTail = false;
};

class MaskSet {
public:
    // Blanks around a mask are dropped and empty masks ignored.
    explicit MaskSet(const QString& masks) {
        for (const QStringView mask : QStringView(masks).split(u';')) {
            const QStringView trimmed = mask.trimmed();
            if (!trimmed.isEmpty())
                m_masks.emplace_back(trimmed.toString());
        }
    }

    bool matches(QByteArrayView name) const {
        if (isAscii(name)) {
            for (const CompiledMask& mask : m_masks)
                if (mask.matchesAscii(name))
                    return true;
            return false;
        }
        // Bytes that are not UTF-8 decode as U+FFFD, so such a name still matches "*".
        const QList<uint> folded = QString::fromUtf8(name).toCaseFolded().toUcs4();
        for (const CompiledMask& mask : m_masks)
            if (mask.matchesFolded(folded))
                return true;
        return false;
    }

private:
    std::vector<CompiledMask> m_masks;
};

// ----- temporary files -----

// The process id in a temporary file's name, or -1 when name is not one.
qint64 temporaryPid(QByteArrayView name) {
    const qsizetype n = name.size();
    const qsizetype prefix = kTempPrefix.size();
    if (n < prefix + 4 + kSuffixLength || !name.startsWith(kTempPrefix))
        return -1;
    const qsizetype tilde = n - kSuffixLength - 1;
    if (name[tilde] != '~')
        return -1;
    for (qsizetype i = tilde + 1; i < n; ++i)
        if (!isLetterOrDigit(name[i]))
            return -1;
    qsizetype start = tilde;
    while (start > prefix && isDigit(name[start - 1]))
        --start;
    // The digits follow the "~" that ends a file name of at least one byte.
    if (start == tilde || tilde - start > 10 || start - 1 <= prefix || name[start - 1] != '~')
        return -1;
    qint64 pid = 0;
    for (qsizetype i = start; i < tilde; ++i)
        pid = pid * 10 + (name[i] - '0');
    return pid;
}

QByteArray temporaryName(const QByteArray& name) {
    static constexpr char kLetters[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    const QByteArray pid = QByteArray::number(qint64(::getpid()));
    const qsizetype room = NAME_MAX - kTempPrefix.size() - pid.size() - 2 - kSuffixLength;
    qsizetype keep = std::min(name.size(), room);
    // Cut at a character's start, so that a long name stays readable.
    if (keep < name.size())
        while (keep > 0 && (uchar(name[keep]) & 0xC0) == 0x80)
            --keep;
    QByteArray temp;
    temp.reserve(NAME_MAX);
    temp.append(kTempPrefix).append(name.constData(), keep).append('~').append(pid).append('~');
    QRandomGenerator* random = QRandomGenerator::global();
    for (qsizetype i = 0; i < kSuffixLength; ++i)
        temp.append(kLetters[random->bounded(int(sizeof kLetters - 1))]);
    return temp;
}

// ----- content -----

char* copyBuffer() {
    thread_local const std::unique_ptr<char[]> buffer(new char[kCopyBufferSize]);
    return buffer.get();
}

bool writeAll(int fd, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (n == 0) {
            errno = ENOSPC;
            return false;
        }
        data += n;
        size -= size_t(n);
    }
    return true;
}

// Copies up to limit bytes (all of them when limit is negative); 0 or an errno value.
int readWriteCopy(int in, int out, qint64 limit) {
    char* buffer = copyBuffer();
    while (limit != 0) {
        size_t want = kCopyBufferSize;
        if (limit > 0 && quint64(limit) < want)
            want = size_t(limit);
        const ssize_t n = ::read(in, buffer, want);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return errno;
        }
        if (n == 0)
            return 0;
        if (!writeAll(out, buffer, size_t(n)))
            return errno;
        if (limit > 0)
            limit -= n;
    }
    return 0;
}

// The first size bytes of in to out, by the cheapest means the file systems offer: a shared
// extent, an in-kernel copy, or reading and writing. 0 or an errno value.
int copyContent(int in, int out, qint64 size) {
    // A size of 0 may be a pseudo-file whose content only reading reveals.
    if (size <= 0)
        return readWriteCopy(in, out, -1);
#ifdef FICLONE
    if (::ioctl(out, FICLONE, in) == 0)
        return 0;
#endif
    qint64 copied = 0;
    while (copied < size) {
        const ssize_t n = ::copy_file_range(in, nullptr, out, nullptr, size_t(size - copied), 0);
        if (n > 0) {
            copied += n;
            continue;
        }
        if (n == 0)
            return 0; // the file shrank while being copied
        const int e = errno;
        if (e == EINTR)
            continue;
        // Both file positions have advanced by what was copied, so reading goes on from there.
        if (e == EXDEV || e == ENOSYS || unsupported(e) || e == EINVAL)
            return readWriteCopy(in, out, size - copied);
        return e;
    }
    return 0;
}

} // namespace

// ----- attributes and status -----

Result<int> FileSystem::getAttributes(const QByteArray& path) {
    struct stat st {};
    if (::stat(path.constData(), &st) != 0)
        return errnoError(errno, path);
    return attributesOf(st, nameOf(path), readStored(path));
}

Result<void> FileSystem::setAttributes(const QByteArray& path, int attributes) {
    if (attributes < 0 || (attributes & ~kSettableBits))
        return error(ErrNo::InvalidCall);
    struct stat st {};
    if (::stat(path.constData(), &st) != 0)
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
            return ::setxattr(path.constData(), kDosAttrib, value.text, size_t(value.size), 0) == 0
                       ? 0
                       : errno;
        };
        failure = store();
        // Only a process that may write a file may store its user attributes: the owner of a
        // read-only file lends himself the write bit for the moment.
        if (failure == EACCES && !(mode & S_IWUSR) && st.st_uid == ::geteuid() &&
            ::chmod(path.constData(), mode | S_IWUSR) == 0) {
            mode |= S_IWUSR;
            failure = store();
        }
        if (unsupported(failure))
            failure = 0;
    }
    if (wanted != mode && ::chmod(path.constData(), wanted) != 0 && failure == 0)
        failure = errno;
    if (failure != 0)
        return errnoError(failure, path);
    return {};
}

Result<FileStatus> FileSystem::status(const QByteArray& path) {
    struct stat st {};
    if (::stat(path.constData(), &st) != 0)
        return errnoError(errno, path);
    FileStatus s;
    s.size = st.st_size;
    s.modified = st.st_mtim.tv_sec;
    s.attributes = attributesOf(st, nameOf(path), readStored(path));
    s.device = st.st_dev;
    s.inode = st.st_ino;
    s.isDirectory = S_ISDIR(st.st_mode);
    s.isRegular = S_ISREG(st.st_mode);
    return s;
}

Result<qint64> FileSystem::fileLength(const QByteArray& path) {
    struct stat st {};
    if (::stat(path.constData(), &st) != 0)
        return errnoError(errno, path);
    return qint64(st.st_size);
}

Result<qint64> FileSystem::lastModified(const QByteArray& path) {
    struct stat st {};
    if (::stat(path.constData(), &st) != 0)
        return errnoError(errno, path);
    return qint64(st.st_mtim.tv_sec);
}

// ----- listings -----

Result<std::vector<QByteArray>> FileSystem::subDirectories(const QByteArray& dir) {
    std::vector<QByteArray> names;
    const Result<void> read = readDirectory(dir, [&](int fd, const dirent& entry) {
        bool isDir = entry.d_type == DT_DIR;
        if (entry.d_type == DT_UNKNOWN) {
            struct stat st {};
            isDir =
                ::fstatat(fd, entry.d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        if (isDir)
            names.emplace_back(entry.d_name);
    });
    if (!read)
        return read.error();
    sortForListBox(names);
    return names;
}

Result<std::vector<QByteArray>> FileSystem::matchingFiles(const QByteArray& dir,
                                                          const QString& masks) {
    if (!validMasks(masks))
        return error(ErrNo::InvalidCall);
    const MaskSet maskSet(masks);
    std::vector<QByteArray> names;
    const Result<void> read = readDirectory(dir, [&](int fd, const dirent& entry) {
        const unsigned char type = entry.d_type;
        if (type != DT_REG && type != DT_LNK && type != DT_UNKNOWN)
            return;
        const QByteArrayView name(static_cast<const char*>(entry.d_name));
        if (temporaryPid(name) >= 0 || !maskSet.matches(name))
            return;
        // A link counts as the regular file it names; a fifo is never opened.
        if (type != DT_REG) {
            struct stat st {};
            if (::fstatat(fd, entry.d_name, &st, 0) != 0 || !S_ISREG(st.st_mode))
                return;
        }
        names.emplace_back(name.toByteArray());
    });
    if (!read)
        return read.error();
    sortForListBox(names);
    return names;
}

bool FileSystem::matchesMask(const QByteArray& name, const QString& mask) {
    if (!validMasks(mask))
        return false;
    return MaskSet(mask).matches(name);
}

bool FileSystem::validMasks(const QString& masks) {
    for (const QChar c : masks)
        if (QStringView(u"\\/:<>|\"").contains(c))
            return false;
    return true;
}

// ----- directories and files -----

Result<void> FileSystem::checkDirectory(const QByteArray& path) {
    struct stat st {};
    if (::stat(path.constData(), &st) != 0)
        return directoryError(errno, path);
    if (!S_ISDIR(st.st_mode))
        return error(ErrNo::PathNotFound);
    return {};
}

Result<void> FileSystem::makeDirectory(const QByteArray& path) {
    if (::mkdir(path.constData(), 0777) == 0)
        return {};
    const int e = errno;
    if (e == EEXIST)
        return error(ErrNo::PathFileAccess);
    return directoryError(e, path);
}

Result<void> FileSystem::deleteFile(const QByteArray& path) {
    struct stat st {};
    if (::lstat(path.constData(), &st) != 0)
        return errnoError(errno, path);
    if (S_ISDIR(st.st_mode))
        return error(ErrNo::PathFileAccess);
    // Refused as Windows refuses a read-only file, whoever runs the program. A link has no write
    // bits of its own.
    if (!S_ISLNK(st.st_mode) && !(st.st_mode & S_IWUSR))
        return error(ErrNo::PermissionDenied);
    if (::unlink(path.constData()) != 0)
        return errnoError(errno, path);
    return {};
}

Result<void> FileSystem::copyFile(const QByteArray& source, const QByteArray& destination) {
    // O_NONBLOCK: a fifo given as the source must not hang the run; it is refused below.
    const Fd in(::open(source.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!in) {
        // Whatever is missing on its way, it is the source that is missing: a 76 here would
        // read as a missing destination directory.
        const int e = errno;
        if (e == ENOENT || e == ENOTDIR)
            return error(ErrNo::FileNotFound);
        return errnoError(e, source);
    }
    struct stat src {};
    if (::fstat(in.get(), &src) != 0)
        return errnoError(errno, source);
    if (!S_ISREG(src.st_mode))
        return error(ErrNo::PathFileAccess);

    const QByteArray name = nameOf(destination);
    if (name.isEmpty() || name == "." || name == ".." || destination.endsWith('/'))
        return error(ErrNo::PathFileAccess);
    const QByteArray dirPath = parentOf(destination);
    const Fd dir(::open(dirPath.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!dir)
        return directoryError(errno, dirPath);

    struct stat dst {};
    if (::fstatat(dir.get(), name.constData(), &dst, 0) == 0) {
        if (dst.st_dev == src.st_dev && dst.st_ino == src.st_ino)
            return Error(ErrNo::PathFileAccess,
                         QStringLiteral("Source and destination are the same file"), kSource);
        if (S_ISDIR(dst.st_mode))
            return error(ErrNo::PathFileAccess);
        // Renaming over a read-only file would get round its protection.
        if (!(dst.st_mode & S_IWUSR))
            return error(ErrNo::PermissionDenied);
    } else if (errno != ENOENT) {
        return errnoError(errno, destination);
    }

    QByteArray temp;
    Fd out;
    for (int attempt = 0; attempt < 100 && !out; ++attempt) {
        temp = temporaryName(name);
        out.reset(
            ::openat(dir.get(), temp.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!out && errno != EEXIST)
            break;
    }
    if (!out)
        return errnoError(errno, destination);

    const auto fail = [&](int e) -> Result<void> {
        out.reset();
        ::unlinkat(dir.get(), temp.constData(), 0);
        return errnoError(e, destination);
    };

    if (const int e = copyContent(in.get(), out.get(), src.st_size))
        return fail(e);
    // Stored Hidden and System go along; the copy is a changed file, so it reads as Archive.
    // A source with nothing stored gives a copy with nothing stored, which reads so too.
    // (Stored before the mode: without write bits its owner could no longer store it.)
    const int stored = readStored(in.get());
    if (stored >= 0) {
        const StoredText value((stored & (Attr::Hidden | Attr::System)) | Attr::Archive);
        if (::fsetxattr(out.get(), kDosAttrib, value.text, size_t(value.size), 0) != 0 &&
            !unsupported(errno))
            return fail(errno);
    }
    if (::fchmod(out.get(), src.st_mode & 0777) != 0)
        return fail(errno);
    const struct timespec times[2] = {src.st_atim, src.st_mtim};
    if (::futimens(out.get(), times) != 0)
        return fail(errno);
    // No fsync: a move syncs the destination file systems once, before its deletions.
    if (::close(out.release()) != 0 && errno != EINTR)
        return fail(errno);
    if (::renameat(dir.get(), temp.constData(), dir.get(), name.constData()) != 0)
        return fail(errno);
    return {};
}

void FileSystem::removeStaleTemporaries(const QByteArray& dir) {
    std::vector<QByteArray> stale;
    const Result<void> read = readDirectory(dir, [&](int, const dirent& entry) {
        const qint64 pid = temporaryPid(static_cast<const char*>(entry.d_name));
        if (pid <= 0 || pid > std::numeric_limits<pid_t>::max())
            return;
        // A process that exists, even one we may not signal, may still be copying.
        if (::kill(pid_t(pid), 0) != 0 && errno == ESRCH)
            stale.emplace_back(entry.d_name);
    });
    if (!read)
        return;
    for (const QByteArray& name : stale)
        ::unlink((dir + '/' + name).constData());
}

bool FileSystem::isTemporaryName(const QByteArray& name) {
    return temporaryPid(name) >= 0;
}

// ----- text -----

namespace {

// The length of the UTF-8 sequence at s (0 when it is not valid UTF-8) and its code point.
int decodeUtf8(const uchar* s, qsizetype available, char32_t& codePoint) {
    const uchar lead = s[0];
    int length;
    char32_t least;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        codePoint = lead & 0x1F;
        least = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        codePoint = lead & 0x0F;
        least = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        codePoint = lead & 0x07;
        least = 0x10000;
    } else {
        return 0;
    }
    if (available < length)
        return 0;
    for (int i = 1; i < length; ++i) {
        if ((s[i] & 0xC0) != 0x80)
            return 0;
        codePoint = codePoint << 6 | (s[i] & 0x3F);
    }
    // Overlong forms, surrogates and values beyond Unicode are not UTF-8.
    if (codePoint < least || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return 0;
    return length;
}

void appendHexByte(QString& out, uchar byte) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    out += QLatin1StringView("\\x");
    out += QLatin1Char(kHex[byte >> 4]);
    out += QLatin1Char(kHex[byte & 0xF]);
}

} // namespace

QString FileSystem::displayPath(const QByteArray& path) {
    bool printable = true;
    for (const char c : path)
        if (uchar(c) < 0x20 || uchar(c) >= 0x7F) {
            printable = false;
            break;
        }
    if (printable)
        return QString::fromLatin1(path);

    QString out;
    out.reserve(path.size() + 8);
    const auto* bytes = reinterpret_cast<const uchar*>(path.constData());
    const qsizetype size = path.size();
    for (qsizetype i = 0; i < size;) {
        const uchar b = bytes[i];
        if (b < 0x80) {
            if (b == '\n')
                out += QLatin1StringView("\\n");
            else if (b == '\r')
                out += QLatin1StringView("\\r");
            else if (b == '\t')
                out += QLatin1StringView("\\t");
            else if (b < 0x20 || b == 0x7F)
                appendHexByte(out, b);
            else
                out += QLatin1Char(char(b));
            ++i;
            continue;
        }
        char32_t codePoint = 0;
        const int length = decodeUtf8(bytes + i, size - i, codePoint);
        if (length == 0) {
            appendHexByte(out, b);
            ++i;
            continue;
        }
        if (QChar::requiresSurrogates(codePoint)) {
            out += QChar(QChar::highSurrogate(codePoint));
            out += QChar(QChar::lowSurrogate(codePoint));
        } else {
            out += QChar(char16_t(codePoint));
        }
        i += length;
    }
    return out;
}

void FileSystem::syncFileSystems(const std::vector<QByteArray>& paths) {
    std::vector<dev_t> synced;
    for (const QByteArray& path : paths) {
        Fd fd(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!fd)
            fd.reset(::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        struct stat st {};
        if (!fd || ::fstat(fd.get(), &st) != 0)
            continue;
        if (std::find(synced.begin(), synced.end(), st.st_dev) != synced.end())
            continue;
        ::syncfs(fd.get());
        synced.push_back(st.st_dev);
    }
}

} // namespace ondrel
