#pragma once

#include "platform/Help.h"

namespace ondrel {

class HelpViewer;

// Serves a help request with the program's help window: opens it on first use, and turns the
// same window to each later request and brings it to the front. When the help cannot be
// prepared, the user is told why with the common error report.
void showQtHelp(const HelpRequest& request);

// Makes showQtHelp serve every ShowHelp of the windowed program; returns the handler it replaces.
HelpHandler installQtHelpHandler();

// The help window, once a request has opened it; null before.
HelpViewer* qtHelpViewer();

} // namespace ondrel
