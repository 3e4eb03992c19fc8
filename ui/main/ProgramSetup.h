#pragma once

namespace ondrel {

// What the windowed program sets up before its start: its name and version, its icon, and the
// message boxes, file dialogs and help window that serve the seams of the platform layer.
void prepareApplication();

} // namespace ondrel
