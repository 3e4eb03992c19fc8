#include "ui/controls/DriveList.h"

#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "platform/SlotBarrier.h"
#include "platform/Volumes.h"

#include <QAbstractItemView>
#include <QDir>
#include <QFile>

namespace ondrel {

namespace {

const QString kSource = QStringLiteral("DriveList");

constexpr int kMountPointRole = Qt::UserRole;

Error deviceUnavailable() {
    return Error(ErrNo::DeviceUnavailable, kSource);
}

} // namespace

DriveList::DriveList(QWidget* parent) : QComboBox(parent) {
    // The list is named by its caption ("Drive:"), the label whose buddy it is; what drops down
    // by what it holds.
    view()->setAccessibleName(QStringLiteral("Drives"));
    setFocusPolicy(Qt::StrongFocus);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    fill();
    const int current = indexOf(Volumes::mountPointOf(QFile::encodeName(QDir::currentPath())));
    choose(current >= 0 ? current : 0);
    connect(this, &QComboBox::currentIndexChanged, this,
            guarded(QStringLiteral("userChose"), this, &DriveList::userChose));
}

QString DriveList::Drive() const {
    return QFile::decodeName(m_drive);
}

void DriveList::fill() {
    m_filling = true;
    clear();
    for (const Volume& volume : Volumes::mountedVolumes()) {
        QString text = FileSystem::displayPath(volume.mountPoint);
        if (!volume.label.isEmpty())
            text += QStringLiteral(" [") + volume.label + QLatin1Char(']');
        addItem(text, volume.mountPoint);
        setItemData(count() - 1,
                    volume.type + QStringLiteral(" on ") + FileSystem::displayPath(volume.device),
                    Qt::ToolTipRole);
    }
    setCurrentIndex(indexOf(m_drive));
    m_filling = false;
}

int DriveList::indexOf(const QByteArray& mountPoint) const {
    for (int i = 0; i < count(); ++i)
        if (itemData(i, kMountPointRole).toByteArray() == mountPoint)
            return i;
    return -1;
}

int DriveList::indexFor(const QString& drive) const {
    const int byText = findText(drive, Qt::MatchExactly);
    if (byText >= 0)
        return byText;
    const QByteArray path = NativePath::withoutTrailingSeparator(QFile::encodeName(drive));
    const int byMountPoint = indexOf(path);
    return byMountPoint >= 0 ? byMountPoint : indexOf(Volumes::mountPointOf(path));
}

void DriveList::choose(int index) {
    m_filling = true;
    setCurrentIndex(index);
    m_filling = false;
    const QByteArray previous = m_drive;
    m_drive = index >= 0 ? itemData(index, kMountPointRole).toByteArray() : QByteArray();
    if (m_drive != previous)
        Q_EMIT driveChanged(Drive());
}

void DriveList::userChose(int index) {
    if (m_filling)
        return;
    m_drive = index >= 0 ? itemData(index, kMountPointRole).toByteArray() : QByteArray();
    Q_EMIT driveChanged(Drive());
}

Result<void> DriveList::setDrive(const QString& drive) {
    if (!drive.startsWith(QLatin1Char('/')) && findText(drive, Qt::MatchExactly) < 0)
        return deviceUnavailable();
    int index = indexFor(drive);
    if (index < 0) { // mounted since the list was made?
        refresh();
        index = indexFor(drive);
    }
    if (index < 0)
        return deviceUnavailable();
    // A volume that no longer answers (a server gone, a disk pulled without unmounting).
    const Result<void> reachable =
        FileSystem::checkDirectory(itemData(index, kMountPointRole).toByteArray());
    if (!reachable && reachable.error().number() == ErrNo::DeviceUnavailable)
        return deviceUnavailable();
    choose(index);
    return {};
}

Result<void> DriveList::setMountedDrive(const QString& mountPoint) {
    const QByteArray native = QFile::encodeName(mountPoint);
    if (indexOf(native) < 0)
        refresh();
    if (indexOf(native) < 0)
        return deviceUnavailable();
    return setDrive(mountPoint);
}

void DriveList::refresh() {
    fill();
    if (indexOf(m_drive) >= 0)
        return;
    const int holder = indexOf(Volumes::mountPointOf(m_drive));
    choose(holder >= 0 ? holder : 0);
}

} // namespace ondrel
