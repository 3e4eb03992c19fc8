#pragma once

namespace ondrel {

enum class WindowState { Normal, Minimized, Maximized };

// What the settings object needs of the main window to place it, record its placement and show
// its panes again; all measures are twips. The main window implements it; tests script it.
class MainWindowInterface {
public:
    virtual ~MainWindowInterface() = default;

    virtual double Top() const = 0;
    virtual void setTop(double Top) = 0;
    virtual double Left() const = 0;
    virtual void setLeft(double Left) = 0;
    virtual double Height() const = 0;
    virtual void setHeight(double Height) = 0;
    virtual double Width() const = 0;
    virtual void setWidth(double Width) = 0;
    virtual WindowState windowState() const = 0;
    virtual void setWindowState(WindowState state) = 0;

    // Left edge of the splitter bar between the spec tree and the staging options.
    virtual double splitterLeft() const = 0;
    // Lays out the panes with the splitter at X.
    virtual void SizeControls(double X) = 0;

    virtual bool toolbarVisible() const = 0;
    virtual bool statusBarVisible() const = 0;
    virtual bool stageOptsVisible() const = 0;
    virtual void ShowToolbar() = 0;
    virtual void ShowStatusBar() = 0;
    virtual void ShowStageOpts() = 0;
};

} // namespace ondrel
