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

QString madeDirectory(const QString& dir) {
    QDir().mkpath(dir);
    return dir;
}

} // namespace

bool IsInstalledProgramDirectory(const QString& exeDir) {
    // ONDREL_INSTALLED_MARKER: the desktop entry's path relative to the install's bin folder.
    return !exeDir.isEmpty() &&
           QFileInfo(exeDir + QStringLiteral("/" ONDREL_INSTALLED_MARKER)).isFile();
}

QString ProgramDirectoryFor(const QString& exeDir) {
    if (IsInstalledProgramDirectory(exeDir))
        return madeDirectory(
            QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
            QStringLiteral("/ondrel"));
    if (!exeDir.isEmpty() && ::access(QFile::encodeName(exeDir).constData(), W_OK) == 0)
        return exeDir;
    return madeDirectory(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                         QStringLiteral("/FileOndrel"));
}

QString ProgramDirectory() {
    return ProgramDirectoryFor(executableDirectory());
}

QString OptionsFileName(const QString& dir) {
    const QString separator = dir.endsWith(u'/') ? QString() : QStringLiteral("/");
    return dir + separator + QStringLiteral("ONDREL.OPT");
}

} // namespace ondrel
