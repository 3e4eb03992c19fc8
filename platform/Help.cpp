#include "platform/Help.h"

#include <QTextStream>

#include <utility>

namespace ondrel {

namespace {

void reportOnStandardError(const HelpRequest& request) {
    QTextStream err(stderr);
    err << "Help: context " << request.context << ", command " << static_cast<int>(request.command)
        << " (no help viewer)" << Qt::endl;
}

HelpHandler& currentHandler() {
    static HelpHandler handler = reportOnStandardError;
    return handler;
}

} // namespace

void ShowHelp(int context, HelpCommand command) {
    currentHandler()(HelpRequest{context, command});
}

HelpHandler setHelpHandler(HelpHandler handler) {
    if (!handler)
        handler = reportOnStandardError;
    return std::exchange(currentHandler(), std::move(handler));
}

} // namespace ondrel
