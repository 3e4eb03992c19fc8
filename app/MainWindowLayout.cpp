#include "app/MainWindowLayout.h"

#include <algorithm>
#include <cmath>

namespace ondrel {

MainWindowLayout::Panes MainWindowLayout::SizeControls(double X, const Window& window) {
    Panes p;
    // Whole twips first, rounding half to even as the conversion does, then down to the grid.
    const long whole = std::lrint(X);
    const double x = static_cast<double>(whole / kGrid * kGrid);

    p.tree.left = 0;
    p.tree.width = x;
    p.treeCaption.width = p.tree.width;
    p.splitter.left = x;
    p.splitter.width = window.splitter.width;

    p.list.left = x + kGrid;
    p.list.width = window.outerWidth - (p.list.left + kRightMargin);
    const Columns columns = columnWidths(p.list.width, window);
    p.optionColumnWidth = columns.option;
    p.settingColumnWidth = columns.setting;
    p.listCaption.left = p.list.left + kCaptionIndent;
    p.listCaption.width = p.list.width - kGrid;

    p.tree.top =
        window.toolbarVisible ? window.toolbarHeight + window.titleHeight : window.titleHeight;
    p.list.top = p.tree.top;
    p.tree.height = window.innerHeight - (window.titleTop + window.titleHeight);
    p.list.height = p.tree.height;

    // The drag bar is made ready here, from the splitter as it stood before this layout, so that
    // a press on the splitter only has to show it.
    p.dragBar.left = p.splitter.left;
    p.dragBar.top = window.splitter.top;
    p.dragBar.width = static_cast<double>(static_cast<long>(window.splitter.width) / 2);
    p.dragBar.height = window.splitter.height - kDragBarShorter;

    p.splitter.top = window.titleTop;
    p.splitter.height = p.tree.height + window.titleHeight;
    return p;
}

MainWindowLayout::Columns MainWindowLayout::columnWidths(double listWidth, const Window& window) {
    const double shared = listWidth - kColumnReserve;
    const double needs = window.optionColumnNeeds + window.settingColumnNeeds;
    if (shared >= needs) {
        const double left = shared - needs;
        return {window.optionColumnNeeds + left * 0.75, window.settingColumnNeeds + left * 0.25};
    }
    // Too narrow for both: the reserve is given up, and the labels come first.
    const double room = std::max(shared, listWidth - window.listFrame);
    const double option = std::min(window.optionColumnNeeds, room);
    return {option, room - option};
}

double MainWindowLayout::dragPosition(double x, double windowWidth) {
    if (x < kSplitterMargin)
        return kSplitterMargin;
    if (x > windowWidth - kSplitterMargin)
        return windowWidth - kSplitterMargin;
    return x;
}

double MainWindowLayout::resizedSplitter(double storedSplitterLoc, double windowWidth) {
    return storedSplitterLoc > windowWidth - kSplitterMargin ? windowWidth - kSplitterMargin
                                                             : storedSplitterLoc;
}

} // namespace ondrel
