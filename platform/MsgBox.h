#pragma once

#include "platform/Error.h"

#include <QString>

#include <functional>
#include <utility>

namespace ondrel {

// The standard button sets and icons of the system's message boxes.
enum class MsgButtons { OK, OKCancel, AbortRetryIgnore, YesNoCancel, YesNo, RetryCancel };
enum class MsgIcon { None, Critical, Question, Exclamation, Information };
enum class MsgAnswer { OK, Cancel, Abort, Retry, Ignore, Yes, No };

struct MsgBoxRequest {
    QString prompt;
    MsgButtons buttons = MsgButtons::OK;
    MsgIcon icon = MsgIcon::None;
    QString title;
};

// Shows one message box to the user and returns the button chosen.
using MsgBoxHandler = std::function<MsgAnswer(const MsgBoxRequest&)>;

// Every message box of the system goes through this one function, so that the windowed program,
// the headless stager and the tests can each answer it their own way.
MsgAnswer MsgBox(const QString& prompt, MsgButtons buttons, MsgIcon icon, const QString& title);

// Installs the handler that answers MsgBox; returns the previous one. An empty handler restores
// the fallback, which writes the box to standard error and answers with its first button.
MsgBoxHandler setMsgBoxHandler(MsgBoxHandler handler);

// Installs a handler for as long as it lives and puts the previous one back when it goes out of
// scope, so that a handler installed for one task never outlives it, even when that task throws.
class ScopedMsgBoxHandler {
public:
    explicit ScopedMsgBoxHandler(MsgBoxHandler handler)
        : m_previous(setMsgBoxHandler(std::move(handler))) {}
    ~ScopedMsgBoxHandler() { setMsgBoxHandler(std::move(m_previous)); }
    ScopedMsgBoxHandler(const ScopedMsgBoxHandler&) = delete;
    ScopedMsgBoxHandler& operator=(const ScopedMsgBoxHandler&) = delete;

private:
    MsgBoxHandler m_previous;
};

// The first button of a set: what the box answers when nobody can be asked.
MsgAnswer firstButton(MsgButtons buttons);

// The common error report: "Error N occurred.  Message as follows:" and the description, with
// the routine's name followed by " Error" as its title, OK button, no icon.
void ShowErrorReport(const Error& error, const QString& routine);
QString ErrorReportText(const Error& error);

} // namespace ondrel
