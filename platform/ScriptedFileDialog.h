#pragma once

#include "platform/FileDialog.h"

#include <QList>

#include <deque>

namespace ondrel {

// A file-dialog handler for tests: records every dialog asked for and answers with queued full
// paths; an empty path, or none queued, answers Cancel. The previous handler comes back when it
// goes out of scope.
class ScriptedFileDialog {
public:
    ScriptedFileDialog();
    ScriptedFileDialog(const ScriptedFileDialog&) = delete;
    ScriptedFileDialog& operator=(const ScriptedFileDialog&) = delete;

    void queue(const QString& fullPath) { m_answers.push_back(fullPath); }
    void queueCancel() { m_answers.push_back(QString()); }
    const QList<FileDialogRequest>& shown() const { return m_shown; }

private:
    Result<FileDialogChoice> answer(const FileDialogRequest& request);

    std::deque<QString> m_answers;
    QList<FileDialogRequest> m_shown;
    ScopedFileDialogHandler m_installed;
};

} // namespace ondrel
