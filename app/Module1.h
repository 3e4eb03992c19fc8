#pragma once

#include <QString>

namespace ondrel {

// Overwrite modes of a staging run.
namespace OverwriteMode {
inline constexpr qint16 IfOlder = 0;
inline constexpr qint16 Prompt = 1;
inline constexpr qint16 Always = 2;
inline constexpr qint16 Never = 3;
} // namespace OverwriteMode

// The text by which the options list and the staging log show an overwrite mode; empty for a
// value that is no mode.
QString OverwriteModeText(qint16 Mode);

// False until the main window has applied its stored placement; its resize handler records
// nothing before that, so the intermediate sizes of start-up are never stored.
inline bool bFormLoaded = false;

} // namespace ondrel
