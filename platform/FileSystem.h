#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>

#include <ctime>
#include <functional>
#include <optional>
#include <sys/types.h>
#include <vector>

struct stat;

namespace ondrel {

// File attributes as the system counts them.
namespace Attr {
inline constexpr int Normal = 0;
inline constexpr int ReadOnly = 1;
inline constexpr int Hidden = 2;
inline constexpr int System = 4;
inline constexpr int Directory = 16;
inline constexpr int Archive = 32;
} // namespace Attr

// What the caller of a copy knows of its destination: nothing, or that it found no file there a
// moment ago (the copy then spares itself a look, and still never replaces a file that appeared
// meanwhile without the checks below).
enum class DestinationHint { Unknown, Missing };

// How much a status call finds out: with the stored attributes (one more system call per file);
// without them; or as a probe of whether the file is there, where a missing file is 53 without
// a further look at whether its directory is missing too.
enum class StatusDetail { WithAttributes, WithoutAttributes, Probe };

// What one status call tells about a file.
struct FileStatus {
    qint64 size = 0;
    qint64 modified = 0; // last-modified time in whole seconds since the epoch
    // The last-modified and last-changed times to the nanosecond: a file rewritten within the
    // same second, or replaced by another of the same size, is told apart by them.
    qint64 modifiedNs = 0;
    qint64 changedNs = 0;
    int attributes = 0; // the Attr bits, as getAttributes gives them (0 when not read)
    dev_t device = 0;
    ino_t inode = 0;
    unsigned permissions = 0; // the permission bits, setgid and sticky included
    bool isDirectory = false;
    bool isRegular = false;

    // Whether this is the very file other was, unchanged: the same file (device and inode), size
    // and times to the nanosecond.
    bool sameFileAs(const FileStatus& other) const {
        return device == other.device && inode == other.inode && size == other.size &&
               modifiedNs == other.modifiedNs && changedNs == other.changedNs;
    }
};

// What a copy did: the source as its content was read (size, times, identity; no attributes),
// and which file took the destination's name, by its identity. declined: the copy found a file
// at the destination when it came to take the name, its caller chose to keep that file, and
// the copy was discarded.
struct CopiedFile {
    FileStatus source;
    dev_t device = 0;
    ino_t inode = 0;
    bool declined = false;
};

// What a copy asks of its caller while it works.
struct CopyControl {
    // Asked between the chunks of a large file: false stops the copy, which then leaves nothing
    // behind and fails with error 32755.
    std::function<bool()> keepGoing;
    // The file the caller decided to replace (nothing when it found the destination missing).
    // When the copy comes to take the destination's name and finds any other file there, one
    // that appeared or was replaced meanwhile, it asks mayReplace about that file: true
    // replaces it, false keeps it and discards the copy. Without mayReplace it is replaced.
    std::optional<FileStatus> decidedOn;
    std::function<bool(const FileStatus& found)> mayReplace;
    // The copy takes the source's owner and group (a move run by root keeps them, as mv does);
    // otherwise it belongs to whoever copies.
    bool keepOwner = false;
    // Where a copy that goes by a temporary name may make it instead of in the destination's
    // directory (handle directory): a directory of the copying thread's own on the same file
    // system, or -1 for none.
    std::function<int(int directory)> temporariesIn;
};

// What checkAccess asks of a path: that its content can be read, or, for a directory, that
// entries can be made and removed in it.
enum class Access { Read, Write };

// The file system as the staging engine and the dialogs see it. Paths are native byte strings,
// so every name the file system holds, valid UTF-8 or not, is handled byte for byte; they become
// text only for display (displayPath). Failures come back as the system's error numbers.
class FileSystem {
public:
    // Attributes of a file or directory: Read-Only when the owner may not write, Hidden for a
    // name beginning with "." or when stored so, System when stored, Directory, and Archive when
    // stored or when nothing is stored. A missing file is error 53 (76 when its directory is
    // missing too). Symbolic links are followed.
    static Result<int> getAttributes(const QByteArray& path);

    // Sets Read-Only through the owner's (and group's and others') write bits and stores Hidden,
    // System and Archive in the extended attribute user.DOSATTRIB ("0x" and hex digits). Where
    // the file system keeps no user extended attributes, storing is silently skipped. A negative
    // value or one with other bits than 1, 2, 4, 32 is error 5.
    static Result<void> setAttributes(const QByteArray& path, int attributes);

    // Size, last-modified time, attributes and identity in one call; follows symbolic links.
    static Result<FileStatus> status(const QByteArray& path,
                                     StatusDetail detail = StatusDetail::WithAttributes);
    // A status as status() gives it without attributes, from what stat filled in.
    static FileStatus statusOf(const struct stat& st);
    static Result<qint64> fileLength(const QByteArray& path);
    static Result<qint64> lastModified(const QByteArray& path);

    // Names of the sub-directories of dir, without "." and "..", in list-box order (without
    // regard to case). Symbolic links to directories are left out: the walk never follows them.
    static Result<std::vector<QByteArray>> subDirectories(const QByteArray& dir);

    // Names of the regular files of dir (a symbolic link to a regular file counts as the file)
    // that match one of the ";"-separated masks, in list-box order. Fifos, devices, sockets
    // and links that lead nowhere are never listed: the names of those that match go to
    // skipped, when given. A mask holding any of \ / : < > | " is error 5.
    static Result<std::vector<QByteArray>>
    matchingFiles(const QByteArray& dir, const QString& masks,
                  std::vector<QByteArray>* skipped = nullptr);

    // Whether name matches one mask, without regard to case: "*" any run of characters, "?" one
    // character, and "*.*" every name, also one without a dot.
    static bool matchesMask(const QByteArray& name, const QString& mask);
    // Whether masks (";"-separated) can be used at all.
    static bool validMasks(const QString& masks);

    // Succeeds when path is an existing directory; a missing one is error 76, a device or
    // medium that does not answer 68.
    static Result<void> checkDirectory(const QByteArray& path);

    // Makes one directory; one that exists already (or a file of that name) is error 75, a
    // missing parent 76. permissions gives it those bits (setgid and sticky included, as far
    // as the system lets the caller set them) whatever the umask says; -1 leaves the default.
    static Result<void> makeDirectory(const QByteArray& path, int permissions = -1);

    // Whether this process may do what access asks on path, as the calls that do it would
    // decide: 70 when it may not (also on a read-only file system), 53 or 76 when it is missing.
    static Result<void> checkAccess(const QByteArray& path, Access access);

    // Deletes one file. A read-only file is refused (70); a missing one is error 53.
    static Result<void> deleteFile(const QByteArray& path);

    // Copies source to destination: the content goes to a file without a name, or to a
    // temporary one, in the destination's directory, which then takes the destination's name in
    // one step, so the destination is always either its old content or the whole new one. The
    // copy keeps the source's modification time, permission bits and stored Hidden/System, and
    // reads as Archive. An existing read-only destination is refused with 70; a destination that
    // is the source itself (same device and inode) is refused with 75; a missing source is 53; a
    // missing destination directory 76. A failed copy leaves no temporary file behind. Holes in
    // a sparse source stay holes. A source that is a symbolic link is followed only when the
    // link and the file it leads to have the same owner, or the link is the caller's own:
    // otherwise 75. control: see CopyControl.
    static Result<CopiedFile> copyFile(const QByteArray& source, const QByteArray& destination,
                                       DestinationHint hint = DestinationHint::Unknown,
                                       const CopyControl& control = {});

    // Removes temporary files that a copy into dir left behind when its process was killed.
    // Only files named as copyFile names them, whose process is gone, are removed.
    static void removeStaleTemporaries(const QByteArray& dir);

    // Whether name is one of copyFile's temporary files (the walk never stages them).
    static bool isTemporaryName(const QByteArray& name);

    // A path as the user reads it: its text, with bytes that are not valid UTF-8 as \xNN and
    // line breaks, controls and bidirectional controls written out (NativeText::display), so
    // that a name can never break or forge a line of the log.
    static QString displayPath(const QByteArray& path);
};

} // namespace ondrel
