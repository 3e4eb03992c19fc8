#pragma once

#include "platform/Result.h"

#include <QObject>
#include <QString>

class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QWidget;

namespace ondrel {

class DirList;
class DriveList;

// The browser of the Source Paths and Destination Paths pages: a drive list, the directories of
// the chosen drive, and the path box that Add takes its path from, with the caption that copies
// the browsed directory into the box. Its controls are named after the page they sit on
// ("SP": drvSPDrives, dirSPDirs, lblSPCurPath, txtSPCurPath); the page lays them out.
class PathBrowser : public QObject {
    Q_OBJECT

public:
    PathBrowser(const QString& prefix, QWidget* page);

    DriveList* drives = nullptr;
    QLabel* drivesCaption = nullptr;
    DirList* directories = nullptr;
    QLabel* directoriesCaption = nullptr;
    // The caption and the box as one row.
    QHBoxLayout* pathRow = nullptr;

    QString path() const;
    void setPath(const QString& path);

    // Opens the browser at the stored default drive and path when the dialog is made, falls
    // back to a drive when that failed, and reads drives and directories anew.
    Result<void> browseTo(const QString& drive, const QString& path);
    void fallBackTo(const QString& drive);
    void refresh();

    // Opens the browser at the entry under edit, so that the user browses on from there. When
    // it is not there the user is told, titled routine + " Error" for the unexpected, and the
    // entry's name goes into the box; what stands for the entry in the texts is what ("Source
    // Path").
    void openAtEntry(const QString& name, const QString& what, const QString& routine);

    // The caption's click: the browsed directory into the box.
    void lblCurPath_Click();

private:
    void drvDrives_Change(const QString& drive);

    QPushButton* m_caption = nullptr;
    QLineEdit* m_box = nullptr;
};

} // namespace ondrel
