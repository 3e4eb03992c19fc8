#include "platform/Error.h"

#include <QFileInfo>

#include <cerrno>

namespace ondrel {

Error::Error(int number, QString source)
    : m_number(number), m_description(standardDescription(number)), m_source(std::move(source)) {}

Error::Error(int number, QString description, QString source)
    : m_number(number), m_description(std::move(description)), m_source(std::move(source)) {}

QString Error::standardDescription(int number) {
    switch (number) {
    case ErrNo::InvalidCall:
        return QStringLiteral("Invalid procedure call or argument");
    case ErrNo::Overflow:
        return QStringLiteral("Overflow");
    case ErrNo::OutOfMemory:
        return QStringLiteral("Out of memory");
    case ErrNo::SubscriptOutOfRange:
        return QStringLiteral("Subscript out of range");
    case ErrNo::TypeMismatch:
        return QStringLiteral("Type mismatch");
    case ErrNo::FileNotFound:
        return QStringLiteral("File not found");
    case ErrNo::FileAlreadyOpen:
        return QStringLiteral("File already open");
    case ErrNo::DiskFull:
        return QStringLiteral("Disk full");
    case ErrNo::DeviceUnavailable:
        return QStringLiteral("Device unavailable");
    case ErrNo::PermissionDenied:
        return QStringLiteral("Permission denied");
    case ErrNo::PathFileAccess:
        return QStringLiteral("Path/File access error");
    case ErrNo::PathNotFound:
        return QStringLiteral("Path not found");
    case ErrNo::DuplicateKey:
        return QStringLiteral("This key is already associated with an element of this collection");
    case ErrNo::CancelSelected:
        return QStringLiteral("Cancel was selected.");
    default:
        return QStringLiteral("Application-defined or object-defined error");
    }
}

int Error::numberForErrno(int errnoValue, const QString& path) {
    switch (errnoValue) {
    case ENOENT: {
        // A missing file in an existing directory is "file not found"; a missing directory on
        // the way is "path not found".
        if (path.isEmpty())
            return ErrNo::FileNotFound;
        const QFileInfo parent(QFileInfo(path).absolutePath());
        return parent.isDir() ? ErrNo::FileNotFound : ErrNo::PathNotFound;
    }
    case ENOTDIR:
        return ErrNo::PathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
        return ErrNo::PermissionDenied;
    case ETXTBSY:
    case EBUSY:
        return ErrNo::FileAlreadyOpen;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return ErrNo::DiskFull;
    case ENXIO:
    case ENODEV:
    case ENOMEDIUM:
    case EIO:
    case ESTALE:
    case ENOTCONN:
        return ErrNo::DeviceUnavailable;
    default:
        return ErrNo::PathFileAccess;
    }
}

Error Error::fromErrno(int errnoValue, const QString& path, const QString& source) {
    return Error(numberForErrno(errnoValue, path), source);
}

} // namespace ondrel
