#include "platform/MsgBox.h"

#include <QTextStream>

#include <utility>

namespace ondrel {

namespace {

MsgAnswer answerOnStandardError(const MsgBoxRequest& request) {
    QTextStream err(stderr);
    err << request.title << ": " << request.prompt << Qt::endl;
    return firstButton(request.buttons);
}

MsgBoxHandler& currentHandler() {
    static MsgBoxHandler handler = answerOnStandardError;
    return handler;
}

} // namespace

MsgAnswer firstButton(MsgButtons buttons) {
    switch (buttons) {
    case MsgButtons::OK:
    case MsgButtons::OKCancel:
        return MsgAnswer::OK;
    case MsgButtons::AbortRetryIgnore:
        return MsgAnswer::Abort;
    case MsgButtons::YesNoCancel:
    case MsgButtons::YesNo:
        return MsgAnswer::Yes;
    case MsgButtons::RetryCancel:
        return MsgAnswer::Retry;
    }
    return MsgAnswer::OK;
}

MsgAnswer MsgBox(const QString& prompt, MsgButtons buttons, MsgIcon icon, const QString& title) {
    return currentHandler()(MsgBoxRequest{prompt, buttons, icon, title});
}

MsgBoxHandler setMsgBoxHandler(MsgBoxHandler handler) {
    if (!handler)
        handler = answerOnStandardError;
    return std::exchange(currentHandler(), std::move(handler));
}

QString ErrorReportText(const Error& error) {
    return QStringLiteral("Error ") + QString::number(error.number()) +
           QStringLiteral(" occurred.  Message as follows:\r\n") + error.description();
}

void ShowErrorReport(const Error& error, const QString& routine) {
    MsgBox(ErrorReportText(error), MsgButtons::OK, MsgIcon::None,
           routine + QStringLiteral(" Error"));
}

} // namespace ondrel
