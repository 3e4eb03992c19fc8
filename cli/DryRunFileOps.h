#pragma once

#include "staging/StagingFileOps.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <functional>

namespace ondrel {

// The disk as a dry run sees it: every change is reported instead of made, and a directory the
// run would have made counts as made from then on. Each operation fails where the real one
// would fail on the disk as it stands (a read-only destination, a missing directory, a source
// this user may not read, a directory he may not write), so the run decides everything as a
// real run would. Each copy it would make is a file of its own, so that a move sees which copy
// a later one would replace.
class DryRunFileOps : public StagingFileOps {
public:
    // report receives one line per change that a real run would make.
    explicit DryRunFileOps(std::function<void(const QString&)> report);

    Result<FileStatus> status(const QByteArray& path,
                              StatusDetail detail = StatusDetail::WithAttributes) override;
    Result<int> getAttributes(const QByteArray& path) override;
    Result<void> makeDirectory(const QByteArray& path, int permissions) override;
    Result<CopiedFile> copyFile(const QByteArray& source, const QByteArray& destination,
                                DestinationHint hint, const CopyControl& control) override;
    Result<void> setAttributes(const QByteArray& path, int attributes) override;
    Result<void> deleteFile(const QByteArray& path) override;
    void watchWrites(const QByteArray& drive) override { (void)drive; }
    std::vector<dev_t> syncFileSystems() override { return {}; }
    void removeStaleTemporaries(const QByteArray& dir) override { (void)dir; }

private:
    // Whether dir is a directory on disk or one this run has made.
    bool directoryExists(const QByteArray& dir) const;

    std::function<void(const QString&)> m_report;
    QSet<QByteArray> m_made;
    QSet<QByteArray> m_deleted;
    // What the run would have written: the copies' status and attributes it would have set.
    QHash<QByteArray, FileStatus> m_copied;
    QHash<QByteArray, int> m_attributes;
    ino_t m_lastCopy = 0; // the copies are numbered as files of a device no disk has
};

} // namespace ondrel
