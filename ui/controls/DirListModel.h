#pragma once

#include <QAbstractListModel>
#include <QByteArray>
#include <QIcon>
#include <QString>

#include <vector>

namespace ondrel {

// The rows of a directory list: the open directories from the drive's root down to the current
// directory, each one level deeper than the one before, then the current directory's
// sub-directories one level deeper still. Names are shown as the staging window shows them, so
// a name that is not valid text appears with its odd bytes as \xNN and is marked unusable.
class DirListModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { DepthRole = Qt::UserRole, UsableRole };

    struct Entry {
        QByteArray path; // native, full
        QString text;    // as shown
        int depth = 0;
        bool usable = true; // the whole path is text a spec file can hold
    };

    explicit DirListModel(QObject* parent = nullptr);

    // Shows dir, which lies at or below root, with its sub-directories names.
    void show(const QByteArray& root, const QByteArray& dir, const std::vector<QByteArray>& names);

    const Entry& entry(int row) const { return m_entries[size_t(row)]; }
    // The open directories come first; the current directory is the last of them.
    int openCount() const { return m_openCount; }
    int currentRow() const { return m_openCount - 1; }
    int rowOf(const QByteArray& path) const;

    // Whether a name can be written as text as it stands: valid UTF-8 without control characters.
    static bool isText(const QByteArray& name);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    std::vector<Entry> m_entries;
    int m_openCount = 0;
    QIcon m_openIcon;
    QIcon m_closedIcon;
};

} // namespace ondrel
