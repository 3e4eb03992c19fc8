#include "ui/controls/QtFileDialog.h"

#include <QApplication>
#include <QFileDialog>

namespace ondrel {

QStringList qtNameFilters(const QString& filter) {
    const QStringList parts = filter.split(u'|');
    QStringList names;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString description = parts[i];
        if (!description.contains(u'('))
            description += QStringLiteral(" (") + parts[i + 1].split(u';').join(u' ') + u')';
        names.append(description);
    }
    return names;
}

Result<FileDialogChoice> showQtFileDialog(const FileDialogRequest& request) {
    QFileDialog dialog(QApplication::activeWindow(), request.title, request.initDir);
    dialog.setObjectName(QStringLiteral("dlgCommonDialog"));
    const bool save = request.kind == FileDialogKind::Save;
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save || request.existence == FileExistence::MayBeNew
                           ? QFileDialog::AnyFile
                           : QFileDialog::ExistingFile);
    dialog.setNameFilters(qtNameFilters(request.filter));
    QString suffix = request.defaultExt;
    suffix.remove(QStringLiteral("*")).remove(u'.');
    dialog.setDefaultSuffix(suffix);
    if (!request.fileName.isEmpty())
        dialog.selectFile(request.fileName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return Error(ErrNo::CancelSelected, QStringLiteral("CommonDialog"));
    return fileDialogChoiceFor(dialog.selectedFiles().constFirst());
}

FileDialogHandler installQtFileDialogHandler() {
    return setFileDialogHandler(showQtFileDialog);
}

} // namespace ondrel
