#include "ui/controls/FileList.h"

#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "platform/SlotBarrier.h"

#include <QAbstractListModel>
#include <QFile>
#include <QItemSelectionModel>
#include <QSet>

#include <algorithm>

namespace ondrel::controls {

namespace {

int attributeOf(FileFilter which) {
    switch (which) {
    case FileFilter::Archive:
        return Attr::Archive;
    case FileFilter::Hidden:
        return Attr::Hidden;
    case FileFilter::ReadOnly:
        return Attr::ReadOnly;
    case FileFilter::System:
        return Attr::System;
    case FileFilter::Normal:
        break;
    }
    return 0;
}

constexpr int kFilteredAttributes = Attr::Archive | Attr::Hidden | Attr::ReadOnly | Attr::System;

} // namespace

// The names listed, and each as shown.
class FileListModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    struct Entry {
        QByteArray name;
        QString shown;
    };

    void show(std::vector<Entry> entries) {
        beginResetModel();
        m_entries = std::move(entries);
        endResetModel();
    }
    const Entry& entry(int row) const { return m_entries[size_t(row)]; }

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : int(m_entries.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid() || index.row() >= rowCount())
            return {};
        if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
            return m_entries[size_t(index.row())].shown;
        return {};
    }

private:
    std::vector<Entry> m_entries;
};

FileList::FileList(QWidget* parent) : QListView(parent), m_model(new FileListModel(this)) {
    setModel(m_model);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setUniformItemSizes(true); // a directory of 100,000 files scrolls without measuring each

    // A burst of changes (a whole tree copied in) is listed once.
    m_changedOnDisk.setSingleShot(true);
    m_changedOnDisk.setInterval(100);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_changedOnDisk,
            qOverload<>(&QTimer::start));
    connect(&m_changedOnDisk, &QTimer::timeout, this,
            guarded(QStringLiteral("followDisk"), this, &FileList::followDisk));
}

QString FileList::Path() const {
    return FileSystem::displayPath(m_path);
}

Result<void> FileList::setPath(const QByteArray& dir) {
    const QByteArray path = NativePath::withoutTrailingSeparator(dir);
    Result<void> listed = list(path, m_pattern);
    if (!listed.ok())
        return listed;
    if (path != m_path) {
        m_path = path;
        if (!m_watcher.directories().isEmpty())
            m_watcher.removePaths(m_watcher.directories());
        m_watcher.addPath(QFile::decodeName(path));
        emit pathChanged(Path());
    }
    return {};
}

Result<void> FileList::setPattern(const QString& pattern) {
    if (!FileSystem::validMasks(pattern))
        return Error(5, QStringLiteral("FileList"));
    m_pattern = pattern;
    refresh();
    emit patternChanged(m_pattern);
    return {};
}

bool FileList::filter(FileFilter which) const {
    if (which == FileFilter::Normal)
        return m_normal;
    return (m_hiddenAttributes & attributeOf(which)) == 0;
}

void FileList::setFilter(FileFilter which, bool shown) {
    if (which == FileFilter::Normal)
        m_normal = shown;
    else if (shown)
        m_hiddenAttributes &= ~attributeOf(which);
    else
        m_hiddenAttributes |= attributeOf(which);
    refresh();
}

int FileList::count() const {
    return m_model->rowCount();
}

const QByteArray& FileList::fileName(int row) const {
    return m_model->entry(row).name;
}

QByteArray FileList::filePath(int row) const {
    return NativePath::join(m_path, fileName(row));
}

std::vector<int> FileList::selectedRows() const {
    std::vector<int> rows;
    for (const QModelIndex& index : selectionModel()->selectedIndexes())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void FileList::refresh() {
    if (m_path.isEmpty())
        return;
    // A directory that went away leaves the list empty rather than showing files that are gone.
    if (!list(m_path, m_pattern).ok())
        m_model->show({});
    emit listChanged();
}

void FileList::followDisk() {
    QSet<QByteArray> selected;
    for (const int row : selectedRows())
        selected.insert(fileName(row));
    refresh();
    for (int row = 0; row < count() && !selected.isEmpty(); ++row) {
        if (selected.contains(fileName(row)))
            selectionModel()->select(m_model->index(row), QItemSelectionModel::Select);
    }
}

Result<void> FileList::list(const QByteArray& dir, const QString& pattern) {
    Result<std::vector<QByteArray>> names = FileSystem::matchingFiles(dir, pattern);
    if (!names.ok())
        return names.error();
    const bool everyFile = m_normal && m_hiddenAttributes == 0;
    std::vector<FileListModel::Entry> entries;
    entries.reserve(names->size());
    for (QByteArray& name : names.value()) {
        if (!everyFile) {
            // A file that vanished since the listing is not shown.
            const Result<int> attributes = FileSystem::getAttributes(NativePath::join(dir, name));
            if (!attributes.ok())
                continue;
            const int filtered = attributes.value() & kFilteredAttributes;
            if ((filtered & m_hiddenAttributes) != 0 || (filtered == 0 && !m_normal))
                continue;
        }
        QString shown = FileSystem::displayPath(name);
        entries.push_back({std::move(name), std::move(shown)});
    }
    m_model->show(std::move(entries));
    return {};
}

} // namespace ondrel::controls
