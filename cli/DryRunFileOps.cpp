#include "cli/DryRunFileOps.h"

#include "platform/NativePath.h"

#include <utility>

namespace ondrel {

namespace {

const QString kSource = QStringLiteral("DryRunFileOps");

constexpr int kSettableAttributes = Attr::ReadOnly | Attr::Hidden | Attr::System | Attr::Archive;

// The device of the copies a dry run would make.
constexpr dev_t kNoDisk = dev_t(-1);

} // namespace

DryRunFileOps::DryRunFileOps(std::function<void(const QString&)> report)
    : m_report(std::move(report)) {}

Result<FileStatus> DryRunFileOps::status(const QByteArray& path, StatusDetail) {
    if (m_deleted.contains(path))
        return Error(ErrNo::FileNotFound, kSource);
    Result<FileStatus> result = FileSystem::status(path);
    if (const auto copied = m_copied.constFind(path); copied != m_copied.cend())
        result = *copied;
    if (result.ok()) {
        if (const auto set = m_attributes.constFind(path); set != m_attributes.cend())
            result->attributes = *set;
    }
    return result;
}

Result<int> DryRunFileOps::getAttributes(const QByteArray& path) {
    const Result<FileStatus> s = status(path);
    if (!s.ok())
        return s.error();
    return s->attributes;
}

bool DryRunFileOps::directoryExists(const QByteArray& dir) const {
    const QByteArray d = NativePath::withoutTrailingSeparator(dir);
    return m_made.contains(d) || FileSystem::checkDirectory(d).ok();
}

Result<void> DryRunFileOps::makeDirectory(const QByteArray& path, int) {
    const QByteArray dir = NativePath::withoutTrailingSeparator(path);
    // Anything of that name, a directory or a file, keeps the directory from being made.
    if (m_made.contains(dir) || FileSystem::status(dir).ok())
        return Error(ErrNo::PathFileAccess, kSource);
    const QByteArray parent = NativePath::parentOf(dir);
    if (!directoryExists(parent))
        return Error(ErrNo::PathNotFound, kSource);
    if (!m_made.contains(parent)) {
        if (const Result<void> writable = FileSystem::checkAccess(parent, Access::Write);
            !writable.ok())
            return writable.error();
    }
    m_made.insert(dir);
    m_report(QStringLiteral("make directory ") + FileSystem::displayPath(dir));
    return {};
}

Result<CopiedFile> DryRunFileOps::copyFile(const QByteArray& source, const QByteArray& destination,
                                           DestinationHint, const CopyControl&) {
    const QByteArray dir = NativePath::parentOf(destination);
    if (!directoryExists(dir))
        return Error(ErrNo::PathNotFound, kSource);
    const Result<FileStatus> from = status(source);
    if (!from.ok())
        return from.error();
    // The real copy opens the source for reading and writes beside the destination.
    if (const Result<void> readable = FileSystem::checkAccess(source, Access::Read); !readable.ok())
        return readable.error();
    const Result<FileStatus> to = status(destination);
    if (to.ok()) {
        // The same refusals as the real copy: a read-only destination, the source itself, a
        // directory in the file's place.
        if (to->attributes & Attr::ReadOnly)
            return Error(ErrNo::PermissionDenied, kSource);
        if ((to->device == from->device && to->inode == from->inode) || to->isDirectory)
            return Error(ErrNo::PathFileAccess, kSource);
    }
    if (!m_made.contains(dir)) {
        if (const Result<void> writable = FileSystem::checkAccess(dir, Access::Write);
            !writable.ok())
            return writable.error();
    }
    m_report(QStringLiteral("copy ") + FileSystem::displayPath(source) + QStringLiteral(" -> ") +
             FileSystem::displayPath(destination));
    // The copy reads as the source does, a new file due for archiving.
    FileStatus copy = from.value();
    copy.attributes =
        (copy.attributes & (Attr::ReadOnly | Attr::Hidden | Attr::System)) | Attr::Archive;
    copy.device = kNoDisk;
    copy.inode = ++m_lastCopy;
    m_copied.insert(destination, copy);
    m_attributes.remove(destination);
    return CopiedFile{from.value(), copy.device, copy.inode};
}

Result<void> DryRunFileOps::setAttributes(const QByteArray& path, int attributes) {
    if (attributes < 0 || (attributes & ~kSettableAttributes))
        return Error(ErrNo::InvalidCall, kSource);
    const Result<FileStatus> current = status(path);
    if (!current.ok())
        return current.error();
    if (current->attributes != attributes)
        m_report(QStringLiteral("set attributes ") + QString::number(attributes) +
                 QStringLiteral(" ") + FileSystem::displayPath(path));
    m_attributes.insert(path, attributes);
    return {};
}

Result<void> DryRunFileOps::deleteFile(const QByteArray& path) {
    // A file the run has deleted already is gone for the second attempt.
    const Result<FileStatus> current = status(path);
    if (!current.ok())
        return current.error();
    if (current->attributes & Attr::ReadOnly)
        return Error(ErrNo::PermissionDenied, kSource);
    const QByteArray dir = NativePath::parentOf(path);
    if (!m_made.contains(dir)) {
        if (const Result<void> writable = FileSystem::checkAccess(dir, Access::Write);
            !writable.ok())
            return writable.error();
    }
    m_deleted.insert(path);
    m_report(QStringLiteral("delete ") + FileSystem::displayPath(path));
    return {};
}

} // namespace ondrel
