#pragma once

namespace ondrel {

// Makes every combo box of the program name itself by its caption (its accessible name, or else
// the text of the label whose buddy it is) and read its current entry as its value and text.
// Qt's own combo boxes on Linux give the current entry as their name as well, so a screen
// reader says "<various>" or "/" and never "Source Path:" or "Drive:". Installed once, before
// the windows are built; installing again does nothing.
void installAccessibleComboBoxes();

} // namespace ondrel
