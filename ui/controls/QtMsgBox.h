#pragma once

#include "platform/MsgBox.h"

namespace ondrel {

// Answers MsgBox with a QMessageBox over the window the user is working in: the text as plain
// text, the title, the button set and the icon asked for. Returns the button chosen.
MsgAnswer showQtMsgBox(const MsgBoxRequest& request);

// Makes showQtMsgBox answer every MsgBox of the windowed program; returns the handler it
// replaces.
MsgBoxHandler installQtMsgBoxHandler();

} // namespace ondrel
