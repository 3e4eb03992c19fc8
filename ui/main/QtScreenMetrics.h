#pragma once

#include "app/ScreenMetrics.h"

namespace ondrel {

// The primary screen's size in twips, read from Qt each time it is asked.
ScreenMetrics primaryScreenMetrics();

} // namespace ondrel
