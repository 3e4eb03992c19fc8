#include "platform/NativePath.h"

namespace ondrel {

QByteArray NativePath::join(const QByteArray& dir, const QByteArray& name) {
    if (name.isEmpty())
        return dir;
    // One allocation: a walk joins a path for every file it passes.
    const bool separated = dir.endsWith('/');
    QByteArray path;
    path.reserve(dir.size() + (separated ? 0 : 1) + name.size());
    path.append(dir);
    if (!separated)
        path.append('/');
    return path.append(name);
}

QByteArray NativePath::withoutTrailingSeparator(QByteArray path) {
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path;
}

QByteArray NativePath::parentOf(const QByteArray& path) {
    const QByteArray p = withoutTrailingSeparator(path);
    const qsizetype slash = p.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : p.left(slash);
}

} // namespace ondrel
