#pragma once

#include "app/VarFileList.h"

#include <QAbstractListModel>

#include <vector>

namespace ondrel {

// The selection list of the file selection dialog as a list view shows it: the paths of a
// VarFileList, each as the staging window would show it.
class VarFileListModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    const VarFileList& list() const { return m_list; }

    qsizetype addNative(const std::vector<QByteArray>& paths);
    qsizetype addText(const QStringList& paths);
    Result<qsizetype> load(const QString& fileName);
    void removeRows(std::vector<qsizetype> rows);
    void clear();

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    template <typename Change> auto changed(Change change);

    VarFileList m_list;
};

} // namespace ondrel
