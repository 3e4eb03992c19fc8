#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace ondrel {

// One mounted file system, as a drive list shows it.
struct Volume {
    QByteArray mountPoint; // native path
    QString label;         // the file system's label; empty when it has none
    QString type;          // ext4, vfat, tmpfs, ...
    QByteArray device;     // what is mounted: /dev/sdb1, a server's share, "tmpfs"
};

// The mounted file systems, which stand for the drives of a system without drive letters: a
// staging run's drive is the file system that holds the destination, and the drive lists show
// the mounted volumes.
class Volumes {
public:
    // The mount point of the file system that holds path: that of path's nearest existing
    // ancestor (path itself when it exists), found by its device. Links on the way are
    // resolved, so a link into a USB disk names the disk. "/" when nothing better is known.
    [[nodiscard]] static QByteArray mountPointOf(const QByteArray& path);

    // The real file systems mounted now, in mount order, each mount point once (the one
    // mounted last, which hides the others); with their labels where /dev/disk/by-label knows
    // them.
    [[nodiscard]] static QList<Volume> mountedVolumes();

    // The real file systems of a mount table in the form of /proc/self/mountinfo, without
    // labels and without looking at the mount points: the rule mountedVolumes applies.
    [[nodiscard]] static QList<Volume> realVolumes(const QByteArray& mountInfo);
};

} // namespace ondrel
