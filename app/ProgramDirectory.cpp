#include "app/ProgramDirectory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <unistd.h>

namespace ondrel {

namespace {

QString executableDirectory() {
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    return QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
}

} // namespace

QString ProgramDirectory() {
    const QString exeDir = executableDirectory();
    if (!exeDir.isEmpty() && ::access(QFile::encodeName(exeDir).constData(), W_OK) == 0)
        return exeDir;
    const QString dataDir = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                            QStringLiteral("/FileOndrel");
    QDir().mkpath(dataDir);
    return dataDir;
}

QString OptionsFileName(const QString& dir) {
    const QString separator = dir.endsWith(u'/') ? QString() : QStringLiteral("/");
    return dir + separator + QStringLiteral("ONDREL.OPT");
}

} // namespace ondrel
