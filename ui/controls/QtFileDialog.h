#pragma once

#include "platform/FileDialog.h"

namespace ondrel {

// Answers ShowFileDialog with a QFileDialog over the window the user is working in.
Result<FileDialogChoice> showQtFileDialog(const FileDialogRequest& request);

// Makes showQtFileDialog answer every file dialog of the windowed program; returns the handler it
// replaces.
FileDialogHandler installQtFileDialogHandler();

// The dialog's name filters for a filter in the "Description (*.ext)|*.ext" form: the
// descriptions, which carry their patterns in brackets.
QStringList qtNameFilters(const QString& filter);

} // namespace ondrel
