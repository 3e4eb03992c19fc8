#include "platform/NativePath.h"

#include <cstring>

namespace ondrel {

QByteArray NativePath::join(const QByteArray& dir, QByteArrayView name) {
    if (name.isEmpty())
        return dir;
    // One allocation, filled in place: a walk joins a path for every file it passes.
    const bool separated = dir.endsWith('/');
    QByteArray path(dir.size() + (separated ? 0 : 1) + name.size(), Qt::Uninitialized);
    char* out = path.data();
    std::memcpy(out, dir.constData(), size_t(dir.size()));
    out += dir.size();
    if (!separated)
        *out++ = '/';
    std::memcpy(out, name.data(), size_t(name.size()));
    return path;
}

QByteArray NativePath::withoutTrailingSeparator(QByteArray path) {
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path;
}

qsizetype NativePath::lastSeparator(QByteArrayView path) {
    // memrchr: the general search of QByteArray costs many times more, for every file.
    const void* at = path.isEmpty() ? nullptr : ::memrchr(path.data(), '/', size_t(path.size()));
    return at ? static_cast<const char*>(at) - path.data() : -1;
}

QByteArray NativePath::parentOf(const QByteArray& path) {
    const QByteArray p = path.endsWith('/') ? withoutTrailingSeparator(path) : path;
    const qsizetype slash = lastSeparator(p);
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : p.left(slash);
}

} // namespace ondrel
