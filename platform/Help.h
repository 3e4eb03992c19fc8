#pragma once

#include <functional>
#include <utility>

namespace ondrel {

// What the user asked the help for. The values are those the program's windows pass with a help
// context number, so a request reads the same wherever it is recorded or logged.
enum class HelpCommand {
    Context = 1,      // the topic of the context number
    Contents = 3,     // the contents page
    PartialKey = 261, // the keyword index, ready for the user to type a word
};

struct HelpRequest {
    int context = 0;
    HelpCommand command = HelpCommand::Contents;

    friend bool operator==(const HelpRequest&, const HelpRequest&) = default;
};

// Opens the help for one request. Handlers never fail: help that cannot be shown is not an error
// the user has to answer.
using HelpHandler = std::function<void(const HelpRequest&)>;

// Every help request of the system goes through this one function, so that the windowed program
// opens its help window, the headless stager stays silent and tests record what was asked.
void ShowHelp(int context, HelpCommand command);

// Installs the handler that serves ShowHelp; returns the previous one. An empty handler restores
// the fallback, which writes one line naming the request to standard error and shows nothing.
HelpHandler setHelpHandler(HelpHandler handler);

// Installs a handler for as long as it lives and puts the previous one back when it goes out of
// scope, so that a handler installed for one task never outlives it, even when that task throws.
class ScopedHelpHandler {
public:
    explicit ScopedHelpHandler(HelpHandler handler)
        : m_previous(setHelpHandler(std::move(handler))) {}
    ~ScopedHelpHandler() { setHelpHandler(std::move(m_previous)); }
    ScopedHelpHandler(const ScopedHelpHandler&) = delete;
    ScopedHelpHandler& operator=(const ScopedHelpHandler&) = delete;

private:
    HelpHandler m_previous;
};

} // namespace ondrel
