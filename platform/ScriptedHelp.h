#pragma once

#include "platform/Help.h"

#include <QList>

namespace ondrel {

// A help handler for tests: records every request instead of showing help. While it lives it
// replaces the program's handler; the old one comes back when it goes out of scope.
class ScriptedHelp {
public:
    ScriptedHelp();
    ~ScriptedHelp();
    ScriptedHelp(const ScriptedHelp&) = delete;
    ScriptedHelp& operator=(const ScriptedHelp&) = delete;

    const QList<HelpRequest>& requests() const { return m_requests; }
    void clear() { m_requests.clear(); }

private:
    QList<HelpRequest> m_requests;
    HelpHandler m_previous;
};

} // namespace ondrel
