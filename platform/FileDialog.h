#pragma once

#include "platform/Result.h"

#include <QString>

#include <functional>
#include <utility>

namespace ondrel {

// The two kinds of the common file dialog: choosing a file to read, or a name to write to.
enum class FileDialogKind { Open, Save };

// Whether an open-style dialog takes only a file that exists. The log file is chosen with an
// open-style dialog, yet it usually does not exist yet.
enum class FileExistence { MustExist, MayBeNew };

// What a command asks of the file dialog: the documented title, default extension ("*.spc"),
// filter ("Spec Files (*.spc)|*.spc": description and patterns separated by "|"), the file name
// offered and the directory the dialog opens in.
struct FileDialogRequest {
    FileDialogKind kind = FileDialogKind::Open;
    FileExistence existence = FileExistence::MustExist;
    QString title;
    QString defaultExt;
    QString filter;
    QString fileName;
    QString initDir;
};

// The file chosen: its full path and its bare name.
struct FileDialogChoice {
    QString FileName;
    QString FileTitle;
};

// Shows one file dialog; a Cancel is the error 32755 ("Cancel was selected."), which the
// commands take as a silent end.
using FileDialogHandler = std::function<Result<FileDialogChoice>(const FileDialogRequest&)>;

// Every file dialog of the system goes through this function, so that the windowed program and
// the tests can each answer it their own way.
Result<FileDialogChoice> ShowFileDialog(const FileDialogRequest& request);

// Installs the handler that answers ShowFileDialog and returns the previous one. An empty
// handler restores the fallback, which asks nobody and answers Cancel.
FileDialogHandler setFileDialogHandler(FileDialogHandler handler);

// The choice for a full path: the path itself and its last component.
FileDialogChoice fileDialogChoiceFor(const QString& fullPath);

// Installs a handler for as long as it lives and puts the previous one back afterwards.
class ScopedFileDialogHandler {
public:
    explicit ScopedFileDialogHandler(FileDialogHandler handler)
        : m_previous(setFileDialogHandler(std::move(handler))) {}
    ~ScopedFileDialogHandler() { setFileDialogHandler(std::move(m_previous)); }
    ScopedFileDialogHandler(const ScopedFileDialogHandler&) = delete;
    ScopedFileDialogHandler& operator=(const ScopedFileDialogHandler&) = delete;

private:
    FileDialogHandler m_previous;
};

} // namespace ondrel
