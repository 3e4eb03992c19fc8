#pragma once

#include "platform/CopyJob.h"
#include "platform/FileSystem.h"
#include "platform/WriteBackWatch.h"

#include <memory>

namespace ondrel {

// Everything a staging run changes on disk passes through here, so that a dry run can decide
// all as a real run would and change nothing, and tests can stop a run at any change. What the
// run reads of the files it may have changed comes through here too, so that a dry run sees its
// own simulated changes.
class StagingFileOps {
public:
    virtual ~StagingFileOps() = default;

    virtual Result<FileStatus> status(const QByteArray& path, StatusDetail detail) = 0;
    virtual Result<int> getAttributes(const QByteArray& path) = 0;

    // permissions: the bits the new directory takes, or -1 for the default.
    virtual Result<void> makeDirectory(const QByteArray& path, int permissions) = 0;
    // Gives the status the source had when it was copied, and the copy's identity.
    virtual Result<CopiedFile> copyFile(const QByteArray& source, const QByteArray& destination,
                                        DestinationHint hint, const CopyControl& control) = 0;
    // A copy in two steps, for a run that copies ahead of itself on other threads: the transfer
    // (any thread; nothing is named), then its commit on the run's thread, which judges what
    // stands at the destination by then. Only where transfersAhead(): a dry run and a test that
    // watches each copy see every copy through copyFile.
    virtual bool transfersAhead() const { return false; }
    virtual Result<std::unique_ptr<CopyJob>> transferFile(const QByteArray& source,
                                                          const QByteArray& destination,
                                                          DestinationHint hint,
                                                          const CopyControl& control) {
        (void)source, (void)destination, (void)hint, (void)control;
        return Error(ErrNo::InvalidCall);
    }
    virtual Result<CopiedFile> commitFile(CopyJob& job) { return job.commit(); }
    virtual Result<void> setAttributes(const QByteArray& path, int attributes) = 0;
    virtual Result<void> deleteFile(const QByteArray& path) = 0;
    // Called once for each drive (a mount point) a move will write to, before it writes there:
    // from then on its file system is watched for writes that fail on their way to the disk.
    virtual void watchWrites(const QByteArray& drive) = 0;
    // Called once before the sources of a move are deleted: makes the copies on the watched
    // drives durable. Gives the devices of the file systems that failed to write them.
    virtual std::vector<dev_t> syncFileSystems() = 0;
    // Called the first time a run writes into a directory.
    virtual void removeStaleTemporaries(const QByteArray& dir) = 0;
};

// The real disk.
class DiskFileOps : public StagingFileOps {
public:
    Result<FileStatus> status(const QByteArray& path, StatusDetail detail) override {
        return FileSystem::status(path, detail);
    }
    Result<int> getAttributes(const QByteArray& path) override {
        return FileSystem::getAttributes(path);
    }
    Result<void> makeDirectory(const QByteArray& path, int permissions) override {
        return FileSystem::makeDirectory(path, permissions);
    }
    Result<CopiedFile> copyFile(const QByteArray& source, const QByteArray& destination,
                                DestinationHint hint, const CopyControl& control) override {
        return FileSystem::copyFile(source, destination, hint, control);
    }
    bool transfersAhead() const override { return true; }
    Result<std::unique_ptr<CopyJob>> transferFile(const QByteArray& source,
                                                  const QByteArray& destination,
                                                  DestinationHint hint,
                                                  const CopyControl& control) override {
        auto job = std::make_unique<CopyJob>(source, destination, hint, control);
        if (Result<void> done = job->transfer(); !done)
            return done.error();
        if (Result<void> held = job->holdDirectory(); !held)
            return held.error();
        job->watchSource();
        return job;
    }
    Result<void> setAttributes(const QByteArray& path, int attributes) override {
        return FileSystem::setAttributes(path, attributes);
    }
    Result<void> deleteFile(const QByteArray& path) override {
        return FileSystem::deleteFile(path);
    }
    void watchWrites(const QByteArray& drive) override { m_watch.watch(drive); }
    std::vector<dev_t> syncFileSystems() override { return m_watch.sync(); }
    void removeStaleTemporaries(const QByteArray& dir) override {
        FileSystem::removeStaleTemporaries(dir);
    }

private:
    WriteBackWatch m_watch;
};

} // namespace ondrel
