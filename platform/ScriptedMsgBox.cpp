#include "platform/ScriptedMsgBox.h"

namespace ondrel {

ScriptedMsgBox::ScriptedMsgBox() {
    m_previous = setMsgBoxHandler([this](const MsgBoxRequest& r) { return answer(r); });
}

ScriptedMsgBox::~ScriptedMsgBox() {
    setMsgBoxHandler(std::move(m_previous));
}

void ScriptedMsgBox::clear() {
    m_answers.clear();
    m_shown.clear();
    m_unanswered = 0;
}

MsgAnswer ScriptedMsgBox::answer(const MsgBoxRequest& request) {
    m_shown.append(request);
    if (m_answers.empty()) {
        ++m_unanswered;
        return firstButton(request.buttons);
    }
    const MsgAnswer a = m_answers.front();
    m_answers.pop_front();
    return a;
}

} // namespace ondrel
