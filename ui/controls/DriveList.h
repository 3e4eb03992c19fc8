#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QComboBox>
#include <QString>

namespace ondrel {

// The drive list of the browse dialogs: the mounted volumes (real file systems, by mount point,
// with their labels), one of which is the drive being browsed.
class DriveList : public QComboBox {
    Q_OBJECT
    Q_PROPERTY(QString Drive READ Drive NOTIFY driveChanged)

public:
    // Lists the volumes and chooses the one that holds the current directory.
    explicit DriveList(QWidget* parent = nullptr);

    // The chosen volume's mount point ("/", "/media/ann/STICK").
    QString Drive() const;
    const QByteArray& nativeDrive() const { return m_drive; }

    // Chooses the volume drive names: a mount point, an entry's text, or any absolute path, which
    // stands for the volume that holds it (that of its nearest existing ancestor, as for a
    // destination). Error 68 when that is no mounted volume (a relative or empty name, a
    // pseudo file system) or the volume does not answer. Emits driveChanged when the drive
    // changes.
    Result<void> setDrive(const QString& drive);

    // Chooses the volume mounted at mountPoint, as a stored drive names it: error 68 when no
    // volume is mounted there now (a disk that was pulled leaves its mount point an ordinary
    // directory of the volume above it).
    Result<void> setMountedDrive(const QString& mountPoint);

    // Lists the volumes anew, for those mounted or unmounted since. When the chosen one is
    // gone, the volume that now holds its mount point is chosen and driveChanged emitted.
    void refresh();

Q_SIGNALS:
    // The drive changed: chosen by the user or set by setDrive or refresh.
    void driveChanged(const QString& drive);

private:
    void fill();
    int indexOf(const QByteArray& mountPoint) const;
    int indexFor(const QString& drive) const;
    void choose(int index);
    void userChose(int index);

    QByteArray m_drive;
    bool m_filling = false;
};

} // namespace ondrel
