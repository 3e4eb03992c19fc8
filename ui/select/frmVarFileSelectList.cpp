// The selection list of frmVarFileSelect: adding and removing files, and the list's text file.
#include "ui/select/frmVarFileSelect.h"

#include "platform/FileDialog.h"
#include "platform/MsgBox.h"
#include "ui/controls/FileList.h"
#include "ui/select/VarFileListModel.h"

#include <QListView>

#include <utility>

namespace ondrel {

namespace {

// Saving and loading a list report under one title, as the spec file commands do.
void reportListError(const Error& error) {
    MsgBox(ErrorReportText(error), MsgButtons::OK, MsgIcon::Exclamation,
           QStringLiteral("Error Saving Spec File"));
}

// Asks for a list file; false when the user cancelled or the dialog failed (reported).
bool askForListFile(FileDialogKind kind, const QString& title, QString& fileName) {
    FileDialogRequest request;
    request.kind = kind;
    request.existence =
        kind == FileDialogKind::Open ? FileExistence::MustExist : FileExistence::MayBeNew;
    request.title = title;
    request.defaultExt = QStringLiteral("*.txt");
    request.filter = QStringLiteral("Text Files (*.txt)|*.txt");
    const Result<FileDialogChoice> chosen = ShowFileDialog(request);
    if (!chosen.ok()) {
        if (chosen.error().number() != ErrNo::CancelSelected)
            reportListError(chosen.error());
        return false;
    }
    fileName = chosen->FileName;
    return true;
}

} // namespace

void frmVarFileSelect::addSelectedFiles() {
    std::vector<QByteArray> paths;
    const std::vector<int> rows = filVarFiles->selectedRows();
    paths.reserve(rows.size());
    for (int row : rows)
        paths.push_back(filVarFiles->filePath(row));
    m_selection->addNative(paths);
}

void frmVarFileSelect::cmdAdd_Click() {
    // With Alt held on the mouse's release, every file of the directory.
    if (std::exchange(m_altRelease, false))
        filVarFiles->selectAll();
    addSelectedFiles();
}

void frmVarFileSelect::filVarFiles_DblClick() {
    addSelectedFiles();
}

void frmVarFileSelect::cmdRemove_Click() {
    if (std::exchange(m_altRelease, false)) {
        m_selection->clear();
        return;
    }
    std::vector<qsizetype> rows;
    for (const QModelIndex& index : lstVarList->selectionModel()->selectedIndexes())
        rows.push_back(index.row());
    m_selection->removeRows(std::move(rows));
}

void frmVarFileSelect::lstVarList_DblClick(const QModelIndex& index) {
    if (index.isValid())
        m_selection->removeRows({index.row()});
}

void frmVarFileSelect::cmdSaveList_Click() {
    QString fileName;
    if (!askForListFile(FileDialogKind::Save, QStringLiteral("Save File List"), fileName))
        return;
    const Result<void> saved = m_selection->list().save(fileName);
    if (!saved.ok())
        reportListError(saved.error());
}

void frmVarFileSelect::cmdLoadList_Click() {
    QString fileName;
    if (!askForListFile(FileDialogKind::Open, QStringLiteral("Load File List"), fileName))
        return;
    const Result<qsizetype> loaded = m_selection->load(fileName);
    if (!loaded.ok())
        reportListError(loaded.error());
}

} // namespace ondrel
