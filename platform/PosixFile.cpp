#include "platform/PosixFile.h"

#include <QFile>

#include <sys/stat.h>

namespace ondrel::posix {

namespace {

const QString kSource = QStringLiteral("FileSystem");

// The path without trailing slashes, split at its last slash.
qsizetype endOfName(const QByteArray& path) {
    qsizetype end = path.size();
    while (end > 1 && path[end - 1] == '/')
        --end;
    return end;
}

} // namespace

Error error(int number) {
    return Error(number, kSource);
}

Error error(int number, QString description) {
    return Error(number, std::move(description), kSource);
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

Error errnoError(int e, const QByteArray& path) {
    if (e == ENOENT) {
        struct stat st {};
        const bool parentThere =
            ::stat(parentOf(path).constData(), &st) == 0 && S_ISDIR(st.st_mode);
        return error(parentThere ? ErrNo::FileNotFound : ErrNo::PathNotFound);
    }
    return Error::fromErrno(e, QFile::decodeName(path), kSource);
}

Error directoryError(int e, const QByteArray& path) {
    if (e == ENOENT || e == ENOTDIR)
        return error(ErrNo::PathNotFound);
    return Error::fromErrno(e, QFile::decodeName(path), kSource);
}

} // namespace ondrel::posix
