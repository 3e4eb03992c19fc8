#include "platform/FileSystem.h"
#include "platform/CrashPoint.h"

#include "platform/DirectoryHandles.h"
#include "platform/DosAttributes.h"
#include "platform/FileCopier.h"
#include "platform/FileMask.h"
#include "platform/NativeText.h"
#include "platform/PosixFile.h"

#include <algorithm>
#include <utility>

#include <sys/stat.h>

namespace ondrel {

using namespace posix;

namespace {

bool isAscii(const QByteArray& name) {
    for (const char c : name)
        if (uchar(c) >= 0x80)
            return false;
    return true;
}

uchar foldAscii(char c) {
    return c >= 'A' && c <= 'Z' ? uchar(c - 'A' + 'a') : uchar(c);
}

// Without regard to case, as QString compares: for ASCII that folds A-Z alone.
int compareAsciiWithoutCase(const QByteArray& a, const QByteArray& b) {
    const qsizetype n = std::min(a.size(), b.size());
    for (qsizetype i = 0; i < n; ++i) {
        const uchar x = foldAscii(a[i]);
        const uchar y = foldAscii(b[i]);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

// List-box order: by the names as text without regard to case; equal texts by their bytes.
// Most names are ASCII and are compared as they stand; the others as text.
void sortForListBox(std::vector<QByteArray>& names) {
    struct Keyed {
        QByteArray name;
        QString text; // only for a name that is not ASCII
        bool ascii;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(names.size());
    for (QByteArray& name : names) {
        const bool ascii = isAscii(name);
        QString text = ascii ? QString() : QString::fromUtf8(name);
        keyed.push_back({std::move(name), std::move(text), ascii});
    }
    std::sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) {
        int c;
        if (a.ascii && b.ascii)
            c = compareAsciiWithoutCase(a.name, b.name);
        else if (a.ascii)
            c = -QString::compare(b.text, QLatin1StringView(a.name), Qt::CaseInsensitive);
        else if (b.ascii)
            c = QString::compare(a.text, QLatin1StringView(b.name), Qt::CaseInsensitive);
        else
            c = QString::compare(a.text, b.text, Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a.name < b.name;
    });
    for (size_t i = 0; i < names.size(); ++i)
        names[i] = std::move(keyed[i].name);
}

} // namespace

// ----- attributes and status -----

Result<int> FileSystem::getAttributes(const QByteArray& path) {
    const DirectoryHandles::At at = DirectoryHandles::resolve(path);
    if (at.refused())
        return errnoError(at.error, path);
    struct stat st {};
    if (::fstatat(at.dir, at.name, &st, 0) != 0)
        return errnoError(errno, path);
    return DosAttributes::fromStatus(path, st);
}

Result<void> FileSystem::setAttributes(const QByteArray& path, int attributes) {
    CrashPoint::reached();
    return DosAttributes::set(path, attributes);
}

Result<FileStatus> FileSystem::status(const QByteArray& path, StatusDetail detail) {
    const DirectoryHandles::At at = DirectoryHandles::resolve(path);
    struct stat st {};
    if (at.refused() || ::fstatat(at.dir, at.name, &st, 0) != 0) {
        const int e = at.refused() ? at.error : errno;
        if (detail == StatusDetail::Probe && e == ENOENT)
            return error(ErrNo::FileNotFound);
        return errnoError(e, path);
    }
    FileStatus s = statusOf(st);
    if (detail == StatusDetail::WithAttributes)
        s.attributes = DosAttributes::fromStatus(path, st);
    return s;
}

FileStatus FileSystem::statusOf(const struct stat& st) {
    FileStatus s;
    s.size = st.st_size;
    s.modified = st.st_mtim.tv_sec;
    s.modifiedNs = qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
    s.changedNs = qint64(st.st_ctim.tv_sec) * 1000000000 + st.st_ctim.tv_nsec;
    s.device = st.st_dev;
    s.inode = st.st_ino;
    s.permissions = st.st_mode & 07777;
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
    const Result<void> read = readDirectory(dir, [&](int fd, const dirent64& entry) {
        bool isDir = entry.d_type == DT_DIR;
        if (entry.d_type == DT_UNKNOWN) {
            struct stat st {};
            isDir =
                ::fstatat(fd, entry.d_name, &st, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(st.st_mode);
        }
        // A copying thread's directory of its own, like a temporary, is nobody's to see.
        if (isDir && !FileCopier::isTemporaryName(static_cast<const char*>(entry.d_name)))
            names.emplace_back(entry.d_name);
    });
    if (!read)
        return read.error();
    sortForListBox(names);
    return names;
}

Result<std::vector<QByteArray>> FileSystem::matchingFiles(const QByteArray& dir,
                                                          const QString& masks,
                                                          std::vector<QByteArray>* skipped) {
    const Result<FileMask> mask = FileMask::compile(masks);
    if (!mask) // reported, like every failure of a listing, as the file system's
        return error(ErrNo::InvalidCall);
    std::vector<QByteArray> names;
    const Result<void> read = readDirectory(dir, [&](int fd, const dirent64& entry) {
        const unsigned char type = entry.d_type;
        if (type == DT_DIR)
            return;
        const QByteArrayView name(static_cast<const char*>(entry.d_name));
        if (FileCopier::isTemporaryName(name) || !mask->matches(name))
            return;
        // A link counts as the regular file it names; a fifo is never opened.
        if (type != DT_REG) {
            struct stat st {};
            const bool followed = ::fstatat(fd, entry.d_name, &st, 0) == 0;
            if (!followed || !S_ISREG(st.st_mode)) {
                // A link to a directory is a directory, never walked; the rest is no file.
                if (skipped && !(followed && S_ISDIR(st.st_mode)))
                    skipped->push_back(name.toByteArray());
                return;
            }
        }
        names.emplace_back(name.toByteArray());
    });
    if (!read)
        return read.error();
    sortForListBox(names);
    return names;
}

bool FileSystem::matchesMask(const QByteArray& name, const QString& mask) {
    const Result<FileMask> compiled = FileMask::compile(mask);
    return compiled.ok() && compiled->matches(name);
}

bool FileSystem::validMasks(const QString& masks) {
    return FileMask::compile(masks).ok();
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

Result<void> FileSystem::makeDirectory(const QByteArray& path, int permissions) {
    const mode_t wanted = permissions < 0 ? mode_t(0777) : mode_t(permissions) & 07777;
    const DirectoryHandles::At at = DirectoryHandles::resolve(path);
    if (at.refused())
        return at.error == ELOOP ? errnoError(ELOOP, path) : directoryError(at.error, path);
    CrashPoint::reached();
    // Made with at most the bits wanted (the umask only takes some away), then given exactly
    // those: a private directory is never open to others, not even for a moment.
    if (::mkdirat(at.dir, at.name, wanted & 01777) != 0) {
        const int e = errno;
        if (e == EEXIST)
            return error(ErrNo::PathFileAccess);
        return directoryError(e, path);
    }
    static const mode_t umask = currentUmask();
    // The bits the system refuses stay cleared.
    if (permissions >= 0 && ((wanted & 06000) || (wanted & umask)))
        (void)::fchmodat(at.dir, at.name, wanted, 0);
    return {};
}

Result<void> FileSystem::checkAccess(const QByteArray& path, Access access) {
    const int mode = access == Access::Read ? R_OK : (W_OK | X_OK);
    if (::faccessat(AT_FDCWD, path.constData(), mode, AT_EACCESS) != 0)
        return errnoError(errno, path);
    return {};
}

Result<void> FileSystem::deleteFile(const QByteArray& path) {
    const DirectoryHandles::At at = DirectoryHandles::resolve(path);
    if (at.refused())
        return errnoError(at.error, path);
    struct stat st {};
    if (::fstatat(at.dir, at.name, &st, AT_SYMLINK_NOFOLLOW) != 0)
        return errnoError(errno, path);
    if (S_ISDIR(st.st_mode))
        return error(ErrNo::PathFileAccess);
    // Refused as Windows refuses a read-only file, whoever runs the program. A link has no write
    // bits of its own.
    if (!S_ISLNK(st.st_mode) && !(st.st_mode & S_IWUSR))
        return error(ErrNo::PermissionDenied);
    CrashPoint::reached();
    if (::unlinkat(at.dir, at.name, 0) != 0)
        return errnoError(errno, path);
    return {};
}

Result<CopiedFile> FileSystem::copyFile(const QByteArray& source, const QByteArray& destination,
                                        DestinationHint hint, const CopyControl& control) {
    return FileCopier::copy(source, destination, hint, control);
}

void FileSystem::removeStaleTemporaries(const QByteArray& dir) {
    FileCopier::removeStaleTemporaries(dir);
}

bool FileSystem::isTemporaryName(const QByteArray& name) {
    return FileCopier::isTemporaryName(name);
}

// ----- text -----

QString FileSystem::displayPath(const QByteArray& path) {
    return NativeText::display(path);
}

} // namespace ondrel
