#pragma once

#include "platform/MsgBox.h"

#include <QList>

#include <deque>

namespace ondrel {

// A message-box handler for tests and unattended runs: records every box shown and answers with
// queued answers. While installed it replaces the program's handler; the old one comes back when
// it goes out of scope. With no answer queued, a box gets its first button.
class ScriptedMsgBox {
public:
    ScriptedMsgBox();
    ~ScriptedMsgBox();
    ScriptedMsgBox(const ScriptedMsgBox&) = delete;
    ScriptedMsgBox& operator=(const ScriptedMsgBox&) = delete;

    void queue(MsgAnswer answer) { m_answers.push_back(answer); }
    const QList<MsgBoxRequest>& shown() const { return m_shown; }
    int unanswered() const { return m_unanswered; }
    void clear();

private:
    MsgAnswer answer(const MsgBoxRequest& request);

    std::deque<MsgAnswer> m_answers;
    QList<MsgBoxRequest> m_shown;
    int m_unanswered = 0;
    MsgBoxHandler m_previous;
};

} // namespace ondrel
