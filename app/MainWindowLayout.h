#pragma once

namespace ondrel {

// A rectangle in twips, in the main window's client coordinates.
struct TwipsRect {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const TwipsRect&, const TwipsRect&) = default;
};

// The main window's pane geometry in twips: the spec tree on the left, the staging options on the
// right, the splitter between them, under the tool bar and the title strip. Kept apart from the
// window so that every number can be checked without one.
class MainWindowLayout {
public:
    // Splitter positions are kept on a grid of this many twips.
    static constexpr int kGrid = 30;
    // The list ends this far short of the window's right edge.
    static constexpr int kRightMargin = 100;
    // The part of the list's width its two columns do not share.
    static constexpr int kColumnReserve = 650;
    // The list caption is indented this far into the list.
    static constexpr int kCaptionIndent = 10;
    // The drag bar is this much shorter than the splitter.
    static constexpr int kDragBarShorter = 20;
    // Least distance of the splitter from either edge of the window.
    static constexpr int kSplitterMargin = 1500;
    // Least width of the window.
    static constexpr int kMinWindowWidth = 3500;
    // With the options pane hidden, the splitter sits this far short of the window's width.
    static constexpr int kHiddenPaneOffset = 120;
    // The tool bar's images: 16 pixels on a screen of 96 dots per inch, more on a denser one.
    static constexpr int kToolbarImage = 240;

    // What the layout depends on besides the splitter position.
    struct Window {
        double outerWidth = 0;
        double innerHeight = 0;
        bool toolbarVisible = true;
        double toolbarHeight = 0;
        double titleTop = 0;
        double titleHeight = 0;
        // The splitter as the previous layout left it: the drag bar is made ready from it.
        TwipsRect splitter;
        // What the list's columns need to show their longest label and their longest value whole,
        // and what the list's frame takes of its width (0 when not known).
        double optionColumnNeeds = 0;
        double settingColumnNeeds = 0;
        double listFrame = 0;
    };

    struct Columns {
        double option = 0;
        double setting = 0;
    };

    struct Panes {
        TwipsRect tree;
        TwipsRect treeCaption; // lblSpecInfo(0): only its width is laid out
        TwipsRect splitter;    // imgSplitter
        TwipsRect dragBar;     // picSplitter
        TwipsRect list;
        TwipsRect listCaption; // lblSpecInfo(1): left and width
        double optionColumnWidth = 0;
        double settingColumnWidth = 0;
    };

    // Lays the panes out with the splitter at X (rounded, then down to the grid).
    static Panes SizeControls(double X, const Window& window);
    // The widths of the list's two columns for a list this wide: each gets what its longest text
    // needs, and the two shares (three quarters, one quarter) divide what is left of the list's
    // width less the reserve. A list too narrow for that gives up the reserve, up to its frame,
    // and shows the labels whole before the values.
    static Columns columnWidths(double listWidth, const Window& window);

    // Where a drag puts the bar for a mouse at x: never closer than the margin to either edge.
    static double dragPosition(double x, double windowWidth);
    // Where a resize puts the splitter for the stored position: moved left so that it stays the
    // margin away from the right edge (the stored position itself is kept).
    static double resizedSplitter(double storedSplitterLoc, double windowWidth);
    // The splitter position that lets the tree fill the window while the options are hidden.
    static double hiddenPaneSplitter(double windowWidth) { return windowWidth - kHiddenPaneOffset; }
};

} // namespace ondrel
