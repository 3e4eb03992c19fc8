#include "ui/controls/DirListModel.h"

#include "platform/FileSystem.h"
#include "platform/NativePath.h"

#include <QApplication>
#include <QStyle>

namespace ondrel {

DirListModel::DirListModel(QObject* parent)
    : QAbstractListModel(parent),
      m_openIcon(QApplication::style()->standardIcon(QStyle::SP_DirOpenIcon)),
      m_closedIcon(QApplication::style()->standardIcon(QStyle::SP_DirClosedIcon)) {}

bool DirListModel::isText(const QByteArray& name) {
    bool ascii = true;
    for (const char c : name) {
        if (uchar(c) < 0x20 || uchar(c) == 0x7F)
            return false;
        ascii = ascii && uchar(c) < 0x80;
    }
    // displayPath escapes exactly the bytes that are not UTF-8, where decoding would replace them.
    return ascii || FileSystem::displayPath(name) == QString::fromUtf8(name);
}

void DirListModel::show(const QByteArray& root, const QByteArray& dir,
                        const std::vector<QByteArray>& names) {
    beginResetModel();
    m_entries.clear();
    m_entries.reserve(names.size() + 8);
    m_entries.push_back({root, FileSystem::displayPath(root), 0, isText(root)});
    QByteArray path = root;
    for (const QByteArray& part : dir.mid(root.size()).split('/')) {
        if (part.isEmpty())
            continue;
        path = NativePath::join(path, part);
        m_entries.push_back({path, FileSystem::displayPath(part), int(m_entries.size()),
                             m_entries.back().usable && isText(part)});
    }
    m_openCount = int(m_entries.size());
    const bool dirUsable = m_entries.back().usable;
    for (const QByteArray& name : names)
        m_entries.push_back({NativePath::join(dir, name), FileSystem::displayPath(name),
                             m_openCount, dirUsable && isText(name)});
    endResetModel();
}

int DirListModel::rowOf(const QByteArray& path) const {
    for (size_t row = 0; row < m_entries.size(); ++row)
        if (m_entries[row].path == path)
            return int(row);
    return -1;
}

int DirListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_entries.size());
}

QVariant DirListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const Entry& e = entry(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return e.text;
    case Qt::DecorationRole:
        return index.row() < m_openCount ? m_openIcon : m_closedIcon;
    case Qt::ToolTipRole:
        return e.usable ? QVariant()
                        : QVariant(QStringLiteral("This name is not valid text and cannot be used "
                                                  "as a path."));
    case DepthRole:
        return e.depth;
    case UsableRole:
        return e.usable;
    default:
        return {};
    }
}

} // namespace ondrel
