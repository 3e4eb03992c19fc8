#include "platform/ScriptedFileDialog.h"

namespace ondrel {

ScriptedFileDialog::ScriptedFileDialog()
    : m_installed([this](const FileDialogRequest& r) { return answer(r); }) {}

Result<FileDialogChoice> ScriptedFileDialog::answer(const FileDialogRequest& request) {
    m_shown.append(request);
    QString path;
    if (!m_answers.empty()) {
        path = m_answers.front();
        m_answers.pop_front();
    }
    if (path.isEmpty())
        return Error(ErrNo::CancelSelected, QStringLiteral("CommonDialog"));
    return fileDialogChoiceFor(path);
}

} // namespace ondrel
