#include "platform/FileDialog.h"

namespace ondrel {

namespace {

Result<FileDialogChoice> answerCancel(const FileDialogRequest&) {
    return Error(ErrNo::CancelSelected, QStringLiteral("CommonDialog"));
}

FileDialogHandler& currentHandler() {
    static FileDialogHandler handler = answerCancel;
    return handler;
}

} // namespace

Result<FileDialogChoice> ShowFileDialog(const FileDialogRequest& request) {
    return currentHandler()(request);
}

FileDialogHandler setFileDialogHandler(FileDialogHandler handler) {
    if (!handler)
        handler = answerCancel;
    return std::exchange(currentHandler(), std::move(handler));
}

FileDialogChoice fileDialogChoiceFor(const QString& fullPath) {
    const qsizetype slash = fullPath.lastIndexOf(u'/');
    return FileDialogChoice{fullPath, fullPath.mid(slash + 1)};
}

} // namespace ondrel
