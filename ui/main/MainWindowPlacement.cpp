#include "ui/main/MainWindowPlacement.h"

#include "ui/main/frmMain.h"

#include <QStatusBar>
#include <QToolBar>

namespace ondrel {

// Position and size are those of the window as the program sets them (move and resize), so
// that what is stored is what the next start applies, whatever frame the desktop draws.

TwipsScale MainWindowPlacement::scale() const {
    return TwipsScale::of(&m_window);
}

double MainWindowPlacement::Top() const {
    return scale().toTwips(m_window.y());
}

void MainWindowPlacement::setTop(double Top) {
    m_window.move(m_window.x(), scale().toPixels(Top));
}

double MainWindowPlacement::Left() const {
    return scale().toTwips(m_window.x());
}

void MainWindowPlacement::setLeft(double Left) {
    m_window.move(scale().toPixels(Left), m_window.y());
}

double MainWindowPlacement::Height() const {
    return scale().toTwips(m_window.height());
}

void MainWindowPlacement::setHeight(double Height) {
    m_window.resize(m_window.width(), scale().toPixels(Height));
}

double MainWindowPlacement::Width() const {
    return scale().toTwips(m_window.width());
}

void MainWindowPlacement::setWidth(double Width) {
    m_window.resize(scale().toPixels(Width), m_window.height());
}

WindowState MainWindowPlacement::windowState() const {
    const Qt::WindowStates state = m_window.windowState();
    if (state & Qt::WindowMinimized)
        return WindowState::Minimized;
    if (state & Qt::WindowMaximized)
        return WindowState::Maximized;
    return WindowState::Normal;
}

void MainWindowPlacement::setWindowState(WindowState state) {
    Qt::WindowStates s = m_window.windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized);
    if (state == WindowState::Minimized)
        s |= Qt::WindowMinimized;
    else if (state == WindowState::Maximized)
        s |= Qt::WindowMaximized;
    m_window.setWindowState(s);
}

double MainWindowPlacement::splitterLeft() const {
    return m_window.splitterLeft();
}

void MainWindowPlacement::SizeControls(double X) {
    m_window.SizeControls(X);
}

bool MainWindowPlacement::toolbarVisible() const {
    const QToolBar* bar = m_window.findChild<QToolBar*>(QStringLiteral("tbrToolBar"));
    return bar != nullptr && !bar->isHidden();
}

bool MainWindowPlacement::statusBarVisible() const {
    return !m_window.statusBar()->isHidden();
}

bool MainWindowPlacement::stageOptsVisible() const {
    const QWidget* list = m_window.findChild<QWidget*>(QStringLiteral("lvwSPProps"));
    return list != nullptr && !list->isHidden();
}

void MainWindowPlacement::ShowToolbar() {
    m_window.ShowToolbar();
}

void MainWindowPlacement::ShowStatusBar() {
    m_window.ShowStatusBar();
}

void MainWindowPlacement::ShowStageOpts() {
    m_window.ShowStageOpts();
}

} // namespace ondrel
