// Shared by the safety suites: runs the real headless stager as a user does, and reads trees by
// their native names (bytes), which need not be valid text.

#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QProcess>
#include <QStringList>

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace safety {

using Options = QList<QPair<QByteArray, QByteArray>>;

inline QByteArray optionsText(const Options& options) {
    QByteArray text = "[FSOptions]\r\n";
    for (const auto& [key, value] : options)
        text += key + '=' + value + "\r\n";
    return text;
}

// A spec of one source path (sub-directories included) with one group "*.*".
inline QByteArray specText(const QByteArray& source, const QList<QByteArray>& dests) {
    QByteArray text = "[SourcePaths]\r\nSP1=" + source +
                      "\r\n[ISD]\r\nSP1=True\r\n[SP1FGs]\r\nFG1=*.*\r\n[SP1FG1DPs]\r\n";
    for (qsizetype k = 0; k < dests.size(); ++k)
        text += "DP" + QByteArray::number(k + 1) + '=' + dests[k] + "\r\n";
    return text;
}

inline bool makeParents(const QByteArray& path) {
    for (qsizetype slash = path.indexOf('/', 1); slash > 0; slash = path.indexOf('/', slash + 1))
        if (::mkdir(path.left(slash).constData(), 0755) != 0 && errno != EEXIST)
            return false;
    return true;
}

// Writes by native name, making the missing parent directories.
inline bool writeBytes(const QByteArray& path, const QByteArray& content) {
    if (!makeParents(path))
        return false;
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    qsizetype done = 0;
    while (done < content.size()) {
        const ssize_t n = ::write(fd, content.constData() + done, size_t(content.size() - done));
        if (n <= 0)
            break;
        done += n;
    }
    return ::close(fd) == 0 && done == content.size();
}

inline std::optional<QByteArray> readBytes(const QByteArray& path) {
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    QByteArray content;
    char buffer[1 << 16];
    ssize_t n;
    while ((n = ::read(fd, buffer, sizeof buffer)) > 0)
        content.append(buffer, n);
    ::close(fd);
    return n == 0 ? std::optional(content) : std::nullopt;
}

// The content, or "<missing>" when the file cannot be read.
inline QByteArray contentOf(const QByteArray& path) {
    return readBytes(path).value_or("<missing>");
}

// Every entry that is not a directory below root, relative and sorted; links are not followed.
inline QList<QByteArray> filesBelow(const QByteArray& root, const QByteArray& relative = {}) {
    QList<QByteArray> files;
    DIR* dir = ::opendir((relative.isEmpty() ? root : root + '/' + relative).constData());
    if (!dir)
        return files;
    while (const dirent* entry = ::readdir(dir)) {
        const QByteArray name(entry->d_name);
        if (name == "." || name == "..")
            continue;
        const QByteArray path = relative.isEmpty() ? name : relative + '/' + name;
        struct stat status {};
        if (::lstat((root + '/' + path).constData(), &status) == 0 && S_ISDIR(status.st_mode))
            files += filesBelow(root, path);
        else
            files += path;
    }
    ::closedir(dir);
    std::sort(files.begin(), files.end());
    return files;
}

// Removes a tree by native names (QDir cannot remove a name that is not valid UTF-8).
inline void removeTree(const QByteArray& root) {
    ::nftw(
        root.constData(),
        [](const char* path, const struct stat*, int, FTW*) {
            ::remove(path); // what cannot be removed is left; the walk goes on
            return 0;
        },
        16, FTW_DEPTH | FTW_PHYS);
}

inline bool isTemporary(const QByteArray& relative) {
    return relative.mid(relative.lastIndexOf('/') + 1).startsWith(".ondrel~");
}

inline QList<QByteArray> temporariesBelow(const QByteArray& root) {
    QList<QByteArray> found = filesBelow(root);
    found.removeIf([](const QByteArray& path) { return !isTemporary(path); });
    return found;
}

struct Outcome {
    bool finished = false; // false: it hung and was killed, or it crashed
    int code = -1;
    QByteArray out;
    QByteArray err;
};

// Runs the stager (behind `wrapper`, such as a change of user, when given); one that has not
// finished after `limitMs` is killed.
inline Outcome stage(const QStringList& args, const QStringList& wrapper = {},
                     int limitMs = 30000) {
    QProcess process;
    if (wrapper.isEmpty())
        process.start(QStringLiteral(ONDREL_STAGE), args);
    else
        process.start(wrapper.first(), wrapper.mid(1) + QStringList{ONDREL_STAGE} + args);
    process.closeWriteChannel();
    if (!process.waitForFinished(limitMs)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitStatus() == QProcess::NormalExit, process.exitCode(),
            process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace safety
