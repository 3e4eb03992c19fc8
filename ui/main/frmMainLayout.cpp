// The panes' geometry: the layout for a splitter position, the resize handler and the splitter
// drag. The numbers are twips and come from MainWindowLayout; here they become pixels.
#include "ui/main/frmMain.h"

#include "app/Module1.h"
#include "platform/SlotBarrier.h"
#include "staging/basLibrary.h"
#include "ui/controls/ProgramObjects.h"

#include <QDropEvent>
#include <QFrame>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QMouseEvent>
#include <QStatusBar>
#include <QStyle>
#include <QToolBar>
#include <QTreeWidget>

#include <algorithm>

namespace ondrel {

namespace {

// The pixels the staging-options list's column needs to show its longest text whole: the widest
// of its header and of the texts its rows can hold (every label, every value a setting can show),
// with the margins the style puts around an item's text.
int columnNeeds(const QTreeWidget* list, int column) {
    QStringList texts;
    if (column == 0) {
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            texts.append(list->topLevelItem(i)->text(0));
    } else {
        texts = {basLibrary::YesNo(true), basLibrary::YesNo(false)};
        for (qint16 mode = 0; mode <= 3; ++mode)
            texts.append(OverwriteModeText(mode));
    }
    const QFontMetrics metrics = list->fontMetrics();
    const int margin = list->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, list) + 1;
    int needs = list->header()->isHidden() ? 0 : list->header()->sectionSizeHint(column);
    for (const QString& text : texts)
        needs = std::max(needs, metrics.horizontalAdvance(text) + 2 * margin);
    return needs;
}

// The type of a drag that carries one of the window's controls: its object name.
const QString kControlMimeType = QStringLiteral("application/x-ondrel-control");

} // namespace

double frmMain::splitterLeft() const {
    return m_splitterRect.left;
}

QSize frmMain::clientSize() const {
    // Worked out from the window rather than read from the client widget, whose geometry the
    // window's own layout sets only later, when it is shown.
    int height = this->height() - menuBar()->sizeHint().height();
    if (!statusBar()->isHidden())
        height -= statusBar()->sizeHint().height();
    return QSize(width(), std::max(0, height));
}

MainWindowLayout::Window frmMain::layoutInputs() const {
    const TwipsScale s = scale();
    MainWindowLayout::Window w;
    w.outerWidth = m_placement.Width();
    w.innerHeight = s.toTwips(clientSize().height());
    w.toolbarVisible = !tbrToolBar->isHidden();
    w.toolbarHeight = s.toTwips(tbrToolBar->sizeHint().height());
    w.titleTop = w.toolbarVisible ? w.toolbarHeight : 0;
    w.titleHeight = s.toTwips(picTitles->height());
    w.splitter = m_splitterRect;
    if (w.splitter.width <= 0)
        w.splitter.width = s.toTwips(6);
    w.optionColumnNeeds = s.toTwips(columnNeeds(lvwSPProps, 0));
    w.settingColumnNeeds = s.toTwips(columnNeeds(lvwSPProps, 1));
    w.listFrame = s.toTwips(2 * lvwSPProps->frameWidth());
    return w;
}

void frmMain::place(QWidget* widget, const TwipsRect& rect) const {
    const TwipsScale s = scale();
    widget->setGeometry(s.toPixels(rect.left), s.toPixels(rect.top),
                        std::max(0, s.toPixels(rect.width)), std::max(0, s.toPixels(rect.height)));
}

void frmMain::SizeControls(double X) {
    if (windowState() & Qt::WindowMinimized)
        return;
    const MainWindowLayout::Window window = layoutInputs();
    const MainWindowLayout::Panes p = MainWindowLayout::SizeControls(X, window);
    const TwipsScale s = scale();

    const int clientWidth = clientSize().width();
    tbrToolBar->setGeometry(0, 0, clientWidth, tbrToolBar->sizeHint().height());
    picTitles->setGeometry(0, s.toPixels(window.titleTop), clientWidth, picTitles->height());
    place(tvwSpecs, p.tree);
    lblSpecInfo[0]->setGeometry(s.toPixels(p.tree.left), 0, s.toPixels(p.treeCaption.width),
                                picTitles->height());
    place(lvwSPProps, p.list);
    lvwSPProps->setColumnWidth(0, std::max(0, s.toPixels(p.optionColumnWidth)));
    lvwSPProps->setColumnWidth(1, std::max(0, s.toPixels(p.settingColumnWidth)));
    lblSpecInfo[1]->setGeometry(s.toPixels(p.listCaption.left), 0,
                                std::max(0, s.toPixels(p.listCaption.width)), picTitles->height());
    place(picSplitter, p.dragBar);
    place(imgSplitter, p.splitter);
    m_splitterRect = p.splitter;
}

void frmMain::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    Form_Resize();
}

void frmMain::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange)
        Form_Resize();
}

void frmMain::Form_Resize() {
    if ((windowState() & Qt::WindowMinimized) || !bFormLoaded || !m_loaded)
        return;
    const double least = MainWindowLayout::kMinWindowWidth;
    if (m_placement.Width() < least)
        m_placement.setWidth(least);
    const double width = m_placement.Width();
    const qint32 stored = settings().SplitterLoc();
    m_splitterRect.left = MainWindowLayout::resizedSplitter(stored, width);
    // A maximised window keeps the size it had before, for the next start. A resize never moves
    // the stored splitter position: only a drag does, so that widening the window again, or
    // showing the options again, puts the splitter back where the user left it.
    if (!(windowState() & Qt::WindowMaximized))
        settings().StoreLocSize(m_placement);
    settings().setSplitterLoc(stored);
    if (!lvwSPProps->isHidden())
        SizeControls(m_splitterRect.left);
    else
        SizeControls(MainWindowLayout::hiddenPaneSplitter(width));
}

void frmMain::imgSplitter_MouseDown() {
    picSplitter->show();
    picSplitter->raise();
    bMoving = true;
}

void frmMain::imgSplitter_MouseMove(Qt::MouseButtons Button, double X) {
    (void)Button;
    if (!bMoving)
        return;
    const double at = MainWindowLayout::dragPosition(X + m_splitterRect.left, m_placement.Width());
    const TwipsScale s = scale();
    picSplitter->move(s.toPixels(at), picSplitter->y());
}

void frmMain::imgSplitter_MouseUp() {
    const double left = scale().toTwips(picSplitter->x());
    SizeControls(left);
    settings().setSplitterLoc(static_cast<qint32>(std::lround(left)));
    picSplitter->hide();
    bMoving = false;
}

void frmMain::tvwSpecs_DragDrop(QObject* Source, double X) {
    if (Source == imgSplitter)
        SizeControls(X);
}

bool frmMain::eventFilter(QObject* watched, QEvent* event) {
    if (watched == imgSplitter) {
        switch (event->type()) {
        case QEvent::MouseButtonPress:
            if (static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
                imgSplitter_MouseDown();
            return true;
        case QEvent::MouseMove: {
            const auto* mouse = static_cast<QMouseEvent*>(event);
            imgSplitter_MouseMove(mouse->buttons(), scale().toTwips(mouse->position().x()));
            return true;
        }
        case QEvent::MouseButtonRelease:
            if (bMoving)
                runBehindBarrier(QStringLiteral("imgSplitter_MouseUp"),
                                 [this] { imgSplitter_MouseUp(); });
            return true;
        case QEvent::KeyPress: {
            // From the keyboard, the arrow keys move the splitter by a few grid steps.
            const int key = static_cast<QKeyEvent*>(event)->key();
            if (key != Qt::Key_Left && key != Qt::Key_Right)
                return false;
            const double step = key == Qt::Key_Left ? -300 : 300;
            const double at =
                MainWindowLayout::dragPosition(m_splitterRect.left + step, m_placement.Width());
            SizeControls(at);
            settings().setSplitterLoc(static_cast<qint32>(std::lround(m_splitterRect.left)));
            return true;
        }
        default:
            return false;
        }
    }
    if (watched == tvwSpecs->viewport()) {
        // A drag names the control it carries by its name, in a type of this program's own.
        switch (event->type()) {
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop: {
            auto* drag = static_cast<QDropEvent*>(event);
            QObject* source = nullptr;
            if (drag->mimeData()->hasFormat(kControlMimeType)) {
                source = findChild<QObject*>(
                    QString::fromUtf8(drag->mimeData()->data(kControlMimeType)));
            }
            if (source == nullptr) {
                drag->ignore(); // the tree takes no other drops
                return true;
            }
            drag->acceptProposedAction();
            if (event->type() == QEvent::Drop) {
                const QPoint at = tvwSpecs->viewport()->mapTo(m_client, drag->position().toPoint());
                tvwSpecs_DragDrop(source, scale().toTwips(at.x()));
            }
            return true;
        }
        default:
            break;
        }
        // A right click opens the context menu for the node already selected; it does not
        // select the node under the mouse.
        if (event->type() == QEvent::MouseButtonPress ||
            event->type() == QEvent::MouseButtonDblClick) {
            return static_cast<QMouseEvent*>(event)->button() == Qt::RightButton;
        }
        if (event->type() == QEvent::MouseButtonRelease) {
            const auto* mouse = static_cast<QMouseEvent*>(event);
            if (mouse->button() == Qt::RightButton) {
                const QPoint at = mouse->position().toPoint();
                runBehindBarrier(QStringLiteral("tvwSpecs_MouseUp"),
                                 [this, at] { tvwSpecs_MouseUp(Qt::RightButton, at); });
                return true;
            }
        }
        if (event->type() == QEvent::ContextMenu) {
            // From the keyboard (the menu key or Shift+F10) the menu opens at the selected node.
            const auto* menu = static_cast<QContextMenuEvent*>(event);
            if (menu->reason() == QContextMenuEvent::Keyboard) {
                const QRect at = tvwSpecs->visualItemRect(tvwSpecs->currentItem());
                runBehindBarrier(QStringLiteral("tvwSpecs_MouseUp"),
                                 [this, at] { tvwSpecs_MouseUp(Qt::RightButton, at.center()); });
            }
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace ondrel
