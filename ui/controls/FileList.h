#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QListView>
#include <QString>
#include <QTimer>

#include <vector>

namespace ondrel {

// Which files the file list shows, by attribute.
enum class FileFilter { Archive, Hidden, Normal, ReadOnly, System };

// The platform layer has a FileList of its own (the text form of a selection), so the widget
// lives in a namespace of the browse controls.
namespace controls {

class FileListModel;

// The file list of the browse dialogs: the regular files of one directory that match the
// pattern (";"-separated masks, matched as a staging run matches them) and the attribute
// filters, in list-box order, several of which can be selected. The files are listed with the
// platform's own listing, so every name is there; one that is not valid UTF-8 is shown with its
// odd bytes as \xNN and kept byte for byte.
class FileList : public QListView {
    Q_OBJECT
    Q_PROPERTY(QString Path READ Path NOTIFY pathChanged)
    Q_PROPERTY(QString Pattern READ Pattern NOTIFY patternChanged)

public:
    // Lists nothing until a directory is set; the pattern is "*.*" and every filter is on.
    explicit FileList(QWidget* parent = nullptr);

    // The directory listed, as shown and as the file system spells it.
    QString Path() const;
    const QByteArray& nativePath() const { return m_path; }
    // Lists dir. A missing directory is error 76, one that cannot be read gives its listing's
    // error; on failure the list stays as it was. Emits pathChanged when the directory changes.
    Result<void> setPath(const QByteArray& dir);

    const QString& Pattern() const { return m_pattern; }
    // Lists the files that match pattern. A pattern holding any of \ / : < > | " is error 5,
    // and the list keeps its previous pattern; that is its only failure. Emits patternChanged.
    Result<void> setPattern(const QString& pattern);

    // A file is listed when each of its attributes (Archive, Hidden, Read-Only, System) is
    // ticked; one with none of them when Normal is ticked. So unticking Hidden hides the dot
    // files and those stored as hidden, whatever else they are.
    bool filter(FileFilter which) const;
    void setFilter(FileFilter which, bool shown);

    // How many files are listed (ListCount), a file's name and full path.
    int count() const;
    const QByteArray& fileName(int row) const;
    QByteArray filePath(int row) const;
    // The selected rows, in list order.
    std::vector<int> selectedRows() const;

    // Lists the directory anew, for files made or removed since. Files made or removed while the
    // list is shown are noticed by themselves; the files selected stay selected.
    void refresh();

Q_SIGNALS:
    void pathChanged(const QString& path);
    void patternChanged(const QString& pattern);
    // The files listed changed: another directory, pattern or filter, or the disk changed.
    void listChanged();

private:
    Result<void> list(const QByteArray& dir, const QString& pattern);
    void followDisk();

    QFileSystemWatcher m_watcher;
    QTimer m_changedOnDisk;
    FileListModel* m_model;
    QByteArray m_path;
    QString m_pattern = QStringLiteral("*.*");
    int m_hiddenAttributes = 0; // the Attr bits whose files are not shown
    bool m_normal = true;
};

} // namespace controls
} // namespace ondrel
