// The default path frame of the options dialog: its drive list, directory list and text box.
#include "ui/options/frmFSOptions.h"

#include "platform/MsgBox.h"
#include "ui/controls/DirList.h"
#include "ui/controls/DriveList.h"
#include "ui/controls/ProgramObjects.h"

#include <QEvent>
#include <QLineEdit>
#include <QTabBar>
#include <QTabWidget>

namespace ondrel {

void frmFSOptions::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    Form_Activate();
}

bool frmFSOptions::showDefaultPath() {
    const clsOndrelApp& settings = *m_program.Settings;
    if (const Result<void> drive = drvDefPath->setMountedDrive(settings.DefaultDrive());
        !drive.ok())
        return drive.error().number() != ErrNo::DeviceUnavailable;
    if (dirDefPath->setPath(settings.DefaultPath()).ok())
        txtDefPath->setText(settings.DefaultPath());
    return true;
}

void frmFSOptions::Form_Activate() {
    while (!showDefaultPath()) {
        const MsgAnswer answer = MsgBox(
            QStringLiteral("Drive ") + m_program.Settings->DefaultDrive() +
                QStringLiteral(" is not currently mapped or is otherwise unavailable."),
            MsgButtons::RetryCancel, MsgIcon::Exclamation, QStringLiteral("Device Not Found"));
        if (answer != MsgAnswer::Retry) {
            // The program's own directory is always there to fall back to.
            (void)drvDefPath->setDrive(m_program.programDirectory);
            (void)dirDefPath->setPath(m_program.programDirectory);
            return;
        }
    }
}

void frmFSOptions::drvDefPath_Change() {
    (void)dirDefPath->setPath(drvDefPath->Drive());
}

void frmFSOptions::dirDefPath_Change() {
    txtDefPath->setText(dirDefPath->Path());
}

void frmFSOptions::refreshLists() {
    drvDefPath->refresh();
    dirDefPath->refresh();
}

void frmFSOptions::mouseDoubleClickEvent(QMouseEvent* event) {
    QDialog::mouseDoubleClickEvent(event);
    refreshLists();
}

bool frmFSOptions::eventFilter(QObject* watched, QEvent* event) {
    if (watched == tdgOptions->tabBar() && event->type() == QEvent::MouseButtonDblClick)
        refreshLists();
    return QDialog::eventFilter(watched, event);
}

} // namespace ondrel
