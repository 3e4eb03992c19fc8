#pragma once

#include "platform/PosixFile.h"

#include <QByteArray>

#include <memory>

#include <sys/types.h>

namespace ondrel {

// A directory of one copying thread's own, made inside a destination path, where that thread
// writes the copies that go by a temporary name (on a file system without unnamed files, such
// as a network share). Each then takes its name by one rename from here. The directory a copy
// lands in is so held only for that rename, and not also for making the temporary: on a network
// file system each is a round trip, during which no other file can be made or renamed in that
// directory, and the run's renames, which come one after the other, would wait for the workers'.
//
// It is named as a temporary of this process: one left behind by a process that was killed is
// removed with its temporaries by the next run (FileSystem::removeStaleTemporaries). It is
// removed, empty, when it is given up.
class WorkDirectory {
public:
    // Made, readable by its owner only, in the directory of handle parent; nothing when it
    // cannot be.
    static std::unique_ptr<WorkDirectory> make(int parent);
    ~WorkDirectory();
    WorkDirectory(const WorkDirectory&) = delete;
    WorkDirectory& operator=(const WorkDirectory&) = delete;

    int handle() const { return m_dir.get(); }
    dev_t device() const { return m_device; }

private:
    WorkDirectory() = default;

    posix::Fd m_parent; // a handle of its own on the directory it is in
    QByteArray m_name;
    posix::Fd m_dir;
    dev_t m_device = 0;
};

} // namespace ondrel
