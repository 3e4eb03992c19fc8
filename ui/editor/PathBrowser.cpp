#include "ui/editor/PathBrowser.h"

#include "platform/MsgBox.h"
#include "platform/NativeText.h"
#include "platform/SlotBarrier.h"
#include "platform/Volumes.h"
#include "ui/controls/DirList.h"
#include "ui/controls/DriveList.h"

#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace ondrel {

namespace {

// The drive of a path as the messages name it: the mount point of the file system that holds
// it, or, for a name that is not an absolute path here (a drive-letter path of a spec written
// on Windows), its drive letter.
QString driveOf(const QString& path) {
    if (!QDir::isAbsolutePath(path))
        return path.left(1) + u':';
    return NativeText::toText(Volumes::mountPointOf(NativeText::toNative(path)));
}

} // namespace

PathBrowser::PathBrowser(const QString& prefix, QWidget* page) : QObject(page) {
    drives = new DriveList(page);
    drives->setObjectName(QStringLiteral("drv") + prefix + QStringLiteral("Drives"));
    drivesCaption = new QLabel(QStringLiteral("Dri&ve:"), page);
    drivesCaption->setBuddy(drives);

    directories = new DirList(page);
    directories->setObjectName(QStringLiteral("dir") + prefix + QStringLiteral("Dirs"));
    directories->setAccessibleName(QStringLiteral("Directories"));
    directoriesCaption = new QLabel(QStringLiteral("Director&ies:"), page);
    directoriesCaption->setBuddy(directories);

    // A click on the caption copies the browsed directory into the path box; as a flat button
    // it is also reached by Tab and by its access key, which then leaves the user in the box.
    m_caption = new QPushButton(QStringLiteral("C&urrent Path:"), page);
    m_caption->setObjectName(QStringLiteral("lbl") + prefix + QStringLiteral("CurPath"));
    m_caption->setFlat(true);
    m_caption->setAutoDefault(false);
    m_caption->setAccessibleName(QStringLiteral("Current Path"));
    m_caption->setAccessibleDescription(
        QStringLiteral("Copies the directory shown in the browser into the path to add"));
    m_box = new QLineEdit(page);
    m_box->setObjectName(QStringLiteral("txt") + prefix + QStringLiteral("CurPath"));
    m_box->setAccessibleName(QStringLiteral("Path to add"));
    pathRow = new QHBoxLayout;
    pathRow->addWidget(m_caption);
    pathRow->addWidget(m_box, 1);

    connect(drives, &DriveList::driveChanged, this,
            guarded(QStringLiteral("drvDrives_Change"), this, &PathBrowser::drvDrives_Change));
    connect(directories, &DirList::pathChanged, this,
            guarded(QStringLiteral("lblCurPath_Click"), this, &PathBrowser::lblCurPath_Click));
    connect(m_caption, &QPushButton::clicked, this,
            guarded(QStringLiteral("lblCurPath_Click"), [this] {
                lblCurPath_Click();
                m_box->setFocus();
            }));
}

QString PathBrowser::path() const {
    return m_box->text();
}

void PathBrowser::setPath(const QString& path) {
    m_box->setText(path);
}

Result<void> PathBrowser::browseTo(const QString& drive, const QString& path) {
    if (Result<void> r = drives->setMountedDrive(drive); !r)
        return r;
    if (Result<void> r = directories->setPath(path); !r)
        return r;
    m_box->setText(path);
    return {};
}

void PathBrowser::fallBackTo(const QString& drive) {
    (void)drives->setDrive(drive);
    lblCurPath_Click();
}

void PathBrowser::refresh() {
    drives->refresh();
    directories->refresh();
}

void PathBrowser::lblCurPath_Click() {
    m_box->setText(directories->Path());
}

void PathBrowser::drvDrives_Change(const QString& drive) {
    const Result<void> opened = directories->setPath(drive);
    if (opened || opened.error().number() != ErrNo::DeviceUnavailable)
        return;
    MsgBox(QStringLiteral("Drive ") + drive + QStringLiteral(" is unavailable or is not ready."),
           MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Device Not Available"));
    (void)drives->setDrive(directories->Path());
}

void PathBrowser::openAtEntry(const QString& name, const QString& what, const QString& routine) {
    Result<void> opened = drives->setDrive(name);
    if (opened)
        opened = directories->setPath(name);
    if (opened)
        return;
    switch (opened.error().number()) {
    case ErrNo::PathNotFound:
        MsgBox(what + u' ' + name + QStringLiteral(" does not exist."), MsgButtons::OK,
               MsgIcon::Exclamation, QStringLiteral("Path Not Found"));
        break;
    case ErrNo::DeviceUnavailable:
        MsgBox(QStringLiteral("Drive ") + driveOf(name) +
                   QStringLiteral(" is not currently mapped or is otherwise unavailable."),
               MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Device Not Found"));
        break;
    default:
        ShowErrorReport(opened.error(), routine);
        return;
    }
    m_box->setText(name);
}

} // namespace ondrel
