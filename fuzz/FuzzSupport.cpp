#include "fuzz/FuzzSupport.h"

#include "platform/MsgBox.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace ondrel::fuzz {

QByteArray bytesOf(const std::uint8_t* data, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

const QString& scratchDirectory() {
    static const QString base = QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                                    ? QStringLiteral("/dev/shm")
                                    : QDir::tempPath();
    static QTemporaryDir dir(base + QStringLiteral("/ondrel-fuzz-XXXXXX"));
    require(dir.isValid(), "cannot create the scratch directory");
    static const QString path = dir.path();
    return path;
}

QString scratchFile(const QString& name) {
    return scratchDirectory() + QLatin1Char('/') + name;
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    require(file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
                file.write(bytes) == bytes.size(),
            "cannot write a scratch file");
}

void require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort();
}

void answerMessageBoxes() {
    setMsgBoxHandler([](const MsgBoxRequest& request) { return firstButton(request.buttons); });
}

} // namespace ondrel::fuzz
