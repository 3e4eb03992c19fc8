#include "platform/ScriptedHelp.h"

#include <utility>

namespace ondrel {

ScriptedHelp::ScriptedHelp() {
    m_previous = setHelpHandler([this](const HelpRequest& r) { m_requests.append(r); });
}

ScriptedHelp::~ScriptedHelp() {
    setHelpHandler(std::move(m_previous));
}

} // namespace ondrel
