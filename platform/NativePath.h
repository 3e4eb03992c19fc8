#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace ondrel {

// Composing native paths (byte strings) without ever doubling or dropping a separator.
class NativePath {
public:
    // dir and name with exactly one separator between them; dir alone when name is empty.
    static QByteArray join(const QByteArray& dir, QByteArrayView name);
    // path without separators at its end (the root stays "/").
    static QByteArray withoutTrailingSeparator(QByteArray path);
    // Where the last separator of path is, or -1.
    static qsizetype lastSeparator(QByteArrayView path);
    // The directory that holds path ("/" for a name in the root, "." for a bare name).
    static QByteArray parentOf(const QByteArray& path);
};

} // namespace ondrel
