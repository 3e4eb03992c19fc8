#pragma once

namespace ondrel {

// What the dialogs ask the main window to redraw after the user accepts their changes: the spec
// tree, the include-subdirectories row and the staging options.
class MainWindowViews {
public:
    virtual ~MainWindowViews() = default;
    virtual void UpdtSpecList() = 0;
    virtual void UpdtISD(bool InclSubDirs) = 0;
    virtual void UpdtStagePropsList() = 0;
};

} // namespace ondrel
