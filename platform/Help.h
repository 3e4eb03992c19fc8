#pragma once

namespace ondrel {

// Placeholder until the help seam lands.
enum class HelpCommand { Context = 1, Contents = 3, PartialKey = 261 };
inline void ShowHelp(int, HelpCommand) {}

} // namespace ondrel
