#pragma once

#include "app/MainWindowInterface.h"
#include "ui/main/TwipsScale.h"

namespace ondrel {

class frmMain;

// The main window as the settings object places it: position and size in twips, converted
// through the screen's DPI, the window state, the splitter and the three panes.
class MainWindowPlacement : public MainWindowInterface {
public:
    explicit MainWindowPlacement(frmMain& window) : m_window(window) {}

    double Top() const override;
    void setTop(double Top) override;
    double Left() const override;
    void setLeft(double Left) override;
    double Height() const override;
    void setHeight(double Height) override;
    double Width() const override;
    void setWidth(double Width) override;
    WindowState windowState() const override;
    void setWindowState(WindowState state) override;

    double splitterLeft() const override;
    void SizeControls(double X) override;

    bool toolbarVisible() const override;
    bool statusBarVisible() const override;
    bool stageOptsVisible() const override;
    void ShowToolbar() override;
    void ShowStatusBar() override;
    void ShowStageOpts() override;

private:
    TwipsScale scale() const;

    frmMain& m_window;
};

} // namespace ondrel
