#pragma once

#include <QByteArray>

#include <sys/stat.h>

namespace ondrel {

// Open handles on the few directories a staging run is working in, so that a file there is
// reached by its name alone instead of by walking its whole path again for every look, copy
// and rename. Handles are kept only while a Scope lives on the calling thread: a run opens one
// for its length, so nothing that happens to the directories between runs is hidden by an old
// handle.
//
// A run also names its trees' roots (its source and destination paths, as the user wrote them,
// links allowed). A directory below a root is opened level by level from the root's handle,
// and never through a symbolic link: a link planted or swapped in below a root, by whoever can
// write there, leads nowhere instead of out of the job's paths.
class DirectoryHandles {
public:
    class Scope {
    public:
        Scope();
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        class DirectoryHandleCache* m_outer;
    };

    // Names root as the top of a tree the active Scope works in (no trailing separator).
    static void addRoot(const QByteArray& root);

    // A path as a directory handle and the name within it.
    struct At {
        int dir;          // a directory handle, AT_FDCWD, or -1 when the directory is refused
        const char* name; // points into the path given
        int error = 0;    // why dir is -1 (ELOOP: a level below a root is a symbolic link)
        bool refused() const { return dir == -1; }
    };

    // The handle of path's directory and path's last component, when a Scope is active and the
    // directory can be opened; otherwise (AT_FDCWD, the whole path). A path below a root never
    // falls back to the whole path: dir is then -1 with the reason in error.
    static At resolve(const QByteArray& path);

    // The handle of directory dir itself, opened for reading, while a Scope is active; it
    // stays the Scope's (never closed by the caller). -1 when it cannot be opened (errno tells
    // why: ELOOP for a level below a root that is a link), and -1 with errno 0 when no Scope is
    // active.
    static int handleOf(const QByteArray& dir);

    // The file a copy last read, kept open while a Scope is active, so that copying it to its
    // next destination does not open and examine it again.
    struct HeldSource {
        QByteArray path;
        int fd = -1; // the Scope's: closed when another file is held or the Scope ends
        struct stat status {};
        int stored = -1; // what DosAttributes::readStored gave
        void hold(const QByteArray& heldPath, int heldFd, const struct stat& st, int heldStored);
    };
    // nullptr when no Scope is active.
    static HeldSource* heldSource();
};

} // namespace ondrel
