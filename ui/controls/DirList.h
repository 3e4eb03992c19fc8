#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QListView>
#include <QString>
#include <QTimer>

namespace ondrel {

class DirListModel;

// The directory list of the browse dialogs: the open directories from the drive's root down to
// the current one, and the current one's sub-directories, listed with the platform's own listing
// so that it shows what a staging run will see. Enter or a double click opens the chosen
// directory, Backspace its parent. It follows directories made or removed while it is shown.
class DirList : public QListView {
    Q_OBJECT
    Q_PROPERTY(QString Path READ Path NOTIFY pathChanged)

public:
    // Opens at the current directory.
    explicit DirList(QWidget* parent = nullptr);
    ~DirList() override;

    // The current directory, without a trailing separator (except the root).
    QString Path() const;
    const QByteArray& nativePath() const { return m_path; }

    // Opens the list at path (absolute, or relative to the current directory). A path that is
    // not an existing directory is error 76; a volume that does not answer 68; a directory that
    // cannot be listed gives its listing's error. On failure the list stays where it was.
    // Emits pathChanged when the directory changes.
    Result<void> setPath(const QString& path);

    // Lists the current directory anew; when it is gone, opens its nearest existing ancestor.
    void refresh();

Q_SIGNALS:
    // The current directory changed: opened by the user, set by setPath, or left because it was
    // removed.
    void pathChanged(const QString& path);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    Result<void> open(const QByteArray& dir);
    void openRow(int row);
    void watch(const QByteArray& dir);

    DirListModel* m_model;
    QByteArray m_path;
    QFileSystemWatcher m_watcher;
    QTimer m_changedOnDisk;
};

} // namespace ondrel
