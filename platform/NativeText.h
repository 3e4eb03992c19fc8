#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace ondrel {

// Native paths held as text without losing a byte. Valid UTF-8 reads as itself; each byte that
// is not part of valid UTF-8 becomes the lone surrogate U+DC80..U+DCFF (no valid text holds
// one), so a name the file system holds survives a trip through a QString, such as the
// program-wide list of individually selected files, and comes back byte for byte.
class NativeText {
public:
    static QString toText(QByteArrayView native);
    static QByteArray toNative(QStringView text);
};

} // namespace ondrel
