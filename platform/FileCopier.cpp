#include "platform/FileCopier.h"

#include "platform/CopyJob.h"
#include "platform/PosixFile.h"

#include <QRandomGenerator>

#include <algorithm>
#include <climits>
#include <limits>
#include <vector>

#include <signal.h>

namespace ondrel {

using namespace posix;

namespace {

// The temporary files: ".ondrel~" + name + "~" + pid + "~" + kSuffixLength letters, the last
// kCheckLength of which are a check over all before them, so that a file of the user's that
// merely looks like one is never taken for a temporary and removed.
// (WholeFile's temporaries end in six letters, so the two never pass for each other.)
constexpr QByteArrayView kTempPrefix(".ondrel~");
constexpr qsizetype kSuffixLength = 8;
constexpr qsizetype kCheckLength = 3;
constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
constexpr int kLetterCount = int(sizeof kLetters - 1);

// The check letters of a temporary name's first part (all but the check).
void appendCheck(QByteArray& out, QByteArrayView head) {
    // FNV-1a: any change of a byte changes the check.
    quint32 hash = 2166136261u;
    for (const char c : head)
        hash = (hash ^ uchar(c)) * 16777619u;
    for (qsizetype i = 0; i < kCheckLength; ++i) {
        out.append(kLetters[hash % kLetterCount]);
        hash /= kLetterCount;
    }
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetterOrDigit(char c) {
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// ----- temporary files -----

// The process id in a temporary file's name, or -1 when name is not one.
qint64 temporaryPid(QByteArrayView name) {
    const qsizetype n = name.size();
    const qsizetype prefix = kTempPrefix.size();
    if (n < prefix + 4 + kSuffixLength || !name.startsWith(kTempPrefix))
        return -1;
    const qsizetype tilde = n - kSuffixLength - 1;
    if (name[tilde] != '~')
        return -1;
    for (qsizetype i = tilde + 1; i < n; ++i)
        if (!isLetterOrDigit(name[i]))
            return -1;
    QByteArray check;
    appendCheck(check, name.first(n - kCheckLength));
    if (name.last(kCheckLength) != check)
        return -1;
    qsizetype start = tilde;
    while (start > prefix && isDigit(name[start - 1]))
        --start;
    // The digits follow the "~" that ends a file name of at least one byte.
    if (start == tilde || tilde - start > 10 || start - 1 <= prefix || name[start - 1] != '~')
        return -1;
    qint64 pid = 0;
    for (qsizetype i = start; i < tilde; ++i)
        pid = pid * 10 + (name[i] - '0');
    return pid;
}

} // namespace

QByteArray FileCopier::temporaryName(QByteArrayView name, qint64 processId) {
    const QByteArray pid = QByteArray::number(processId);
    const qsizetype room = NAME_MAX - kTempPrefix.size() - pid.size() - 2 - kSuffixLength;
    qsizetype keep = std::min(name.size(), room);
    // Cut at a character's start, so that a long name stays readable.
    if (keep < name.size())
        while (keep > 0 && (uchar(name[keep]) & 0xC0) == 0x80)
            --keep;
    QByteArray temp;
    temp.reserve(NAME_MAX);
    temp.append(kTempPrefix).append(name.data(), keep).append('~').append(pid).append('~');
    // A generator of this thread's own: the global one is locked and costs more per file than
    // the rest of the name.
    thread_local QRandomGenerator random(QRandomGenerator::global()->generate());
    for (qsizetype i = 0; i < kSuffixLength - kCheckLength; ++i)
        temp.append(kLetters[random.bounded(kLetterCount)]);
    const QByteArray head = temp;
    appendCheck(temp, head);
    return temp;
}

Result<CopiedFile> FileCopier::copy(const QByteArray& source, const QByteArray& destination,
                                    DestinationHint hint, const CopyControl& control) {
    CopyJob job(source, destination, hint, control);
    if (const Result<void> transferred = job.transfer(); !transferred)
        return transferred.error();
    Result<CopiedFile> committed = job.commit();
    // This system turned out unable to name files made without one: the copy is made again,
    // under a temporary name this time.
    if (job.mustRedoNamed())
        return copy(source, destination, hint, control);
    return committed;
}

namespace {

// The temporaries of process pid in directory name of handle dir (a copying thread's
// directory of its own), then the directory itself once empty. Nothing else in it is touched.
void removeStaleWorkDirectory(int dir, const char* name, qint64 pid) {
    const posix::Fd work(::openat(dir, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!work)
        return;
    (void)readEntries(work.get(), QByteArray(name), [&](int fd, const dirent64& entry) {
        if (temporaryPid(static_cast<const char*>(entry.d_name)) == pid)
            ::unlinkat(fd, entry.d_name, 0);
    });
    ::unlinkat(dir, name, AT_REMOVEDIR);
}

} // namespace

void FileCopier::removeStaleTemporaries(const QByteArray& dir) {
    // Removed through the handle being listed, never by a path that a link swapped in since
    // could send elsewhere. One missed because the listing moved on is removed next time.
    (void)readDirectory(dir, [&](int fd, const dirent64& entry) {
        const qint64 pid = temporaryPid(static_cast<const char*>(entry.d_name));
        if (pid <= 0 || pid > std::numeric_limits<pid_t>::max())
            return;
        // A process that exists, even one we may not signal, may still be copying.
        if (::kill(pid_t(pid), 0) != 0 && errno == ESRCH && ::unlinkat(fd, entry.d_name, 0) != 0 &&
            (errno == EISDIR || errno == EPERM))
            removeStaleWorkDirectory(fd, entry.d_name, pid);
    });
}

bool FileCopier::isTemporaryName(QByteArrayView name) {
    return temporaryPid(name) >= 0;
}

} // namespace ondrel
