#include "ui/controls/QtMsgBox.h"

#include <QApplication>
#include <QMessageBox>

#include <utility>

namespace ondrel {

namespace {

QMessageBox::StandardButtons standardButtons(MsgButtons buttons) {
    switch (buttons) {
    case MsgButtons::OK:
        return QMessageBox::Ok;
    case MsgButtons::OKCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case MsgButtons::AbortRetryIgnore:
        return QMessageBox::Abort | QMessageBox::Retry | QMessageBox::Ignore;
    case MsgButtons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case MsgButtons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case MsgButtons::RetryCancel:
        return QMessageBox::Retry | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

QMessageBox::Icon messageIcon(MsgIcon icon) {
    switch (icon) {
    case MsgIcon::None:
        return QMessageBox::NoIcon;
    case MsgIcon::Critical:
        return QMessageBox::Critical;
    case MsgIcon::Question:
        return QMessageBox::Question;
    case MsgIcon::Exclamation:
        return QMessageBox::Warning;
    case MsgIcon::Information:
        return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

QMessageBox::StandardButton standardButton(MsgAnswer answer) {
    switch (answer) {
    case MsgAnswer::OK:
        return QMessageBox::Ok;
    case MsgAnswer::Cancel:
        return QMessageBox::Cancel;
    case MsgAnswer::Abort:
        return QMessageBox::Abort;
    case MsgAnswer::Retry:
        return QMessageBox::Retry;
    case MsgAnswer::Ignore:
        return QMessageBox::Ignore;
    case MsgAnswer::Yes:
        return QMessageBox::Yes;
    case MsgAnswer::No:
        return QMessageBox::No;
    }
    return QMessageBox::Ok;
}

MsgAnswer answerFor(QMessageBox::StandardButton button, MsgButtons buttons) {
    switch (button) {
    case QMessageBox::Ok:
        return MsgAnswer::OK;
    case QMessageBox::Cancel:
        return MsgAnswer::Cancel;
    case QMessageBox::Abort:
        return MsgAnswer::Abort;
    case QMessageBox::Retry:
        return MsgAnswer::Retry;
    case QMessageBox::Ignore:
        return MsgAnswer::Ignore;
    case QMessageBox::Yes:
        return MsgAnswer::Yes;
    case QMessageBox::No:
        return MsgAnswer::No;
    default:
        // Closed without a button (the box went away with its window): the safe answer where
        // the set has one, as the user would have pressed Escape.
        return standardButtons(buttons).testFlag(QMessageBox::Cancel) ? MsgAnswer::Cancel
                                                                      : firstButton(buttons);
    }
}

} // namespace

MsgAnswer showQtMsgBox(const MsgBoxRequest& request) {
    QWidget* parent = QApplication::activeModalWidget();
    if (!parent)
        parent = QApplication::activeWindow();
    QMessageBox box(messageIcon(request.icon), request.title,
                    QString(request.prompt).replace(QStringLiteral("\r\n"), QStringLiteral("\n")),
                    standardButtons(request.buttons), parent);
    // Prompts quote paths and file names, which are never markup.
    box.setTextFormat(Qt::PlainText);
    // Enter chooses the first button of the set, as the system's boxes do.
    box.setDefaultButton(standardButton(firstButton(request.buttons)));
    return answerFor(static_cast<QMessageBox::StandardButton>(box.exec()), request.buttons);
}

MsgBoxHandler installQtMsgBoxHandler() {
    return setMsgBoxHandler(showQtMsgBox);
}

} // namespace ondrel
