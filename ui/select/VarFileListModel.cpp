#include "ui/select/VarFileListModel.h"

#include "platform/FileSystem.h"

namespace ondrel {

// Every change may move many rows at once, so the views are told to read the list anew.
template <typename Change> auto VarFileListModel::changed(Change change) {
    beginResetModel();
    auto result = change();
    endResetModel();
    return result;
}

qsizetype VarFileListModel::addNative(const std::vector<QByteArray>& paths) {
    return changed([&] { return m_list.addNative(paths); });
}

qsizetype VarFileListModel::addText(const QStringList& paths) {
    return changed([&] { return m_list.addText(paths); });
}

Result<qsizetype> VarFileListModel::load(const QString& fileName) {
    return changed([&] { return m_list.load(fileName); });
}

void VarFileListModel::removeRows(std::vector<qsizetype> rows) {
    changed([&] {
        m_list.removeRows(std::move(rows));
        return 0;
    });
}

void VarFileListModel::clear() {
    changed([&] {
        m_list.clear();
        return 0;
    });
}

int VarFileListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_list.size());
}

QVariant VarFileListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)
        return FileSystem::displayPath(m_list.at(index.row()).native);
    return {};
}

} // namespace ondrel
