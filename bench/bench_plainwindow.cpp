// The yardstick of the program's start-up: a main window built of plain Qt widgets of the kinds
// the program's window holds, linked with Qt alone, that ends at its first paint: a menu bar with
// four menus, a tool bar of 15 icons, a tree, a two-column list of 11 rows and a status bar with
// three panels. Usage: bench_plainwindow [WIDTHxHEIGHT [empty]]   (the window's size in pixels;
// bench_startup prints the main window's, so that both paint as much). With "empty", the window
// is an empty main window, which never looks up a font: shown beside the yardstick for scale.
#include "bench/FirstPaint.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QPixmap>
#include <QSplitter>
#include <QStatusBar>
#include <QToolBar>
#include <QTreeWidget>

#include <cstdio>

namespace {

void buildWidgets(QMainWindow& window) {
    for (const char* title : {"&File", "&Edit", "&View", "&Help"}) {
        QMenu* menu = window.menuBar()->addMenu(QString::fromLatin1(title));
        for (int i = 1; i <= 5; ++i)
            menu->addAction(QStringLiteral("Command &%1").arg(i));
    }

    // Fifteen icons of a 16- and a 32-pixel bitmap each, drawn here: the cheapest icons there
    // are, so that the yardstick pays for the tool bar and not for reading image files.
    QToolBar* bar = window.addToolBar(QStringLiteral("Toolbar"));
    bar->setIconSize(QSize(16, 16));
    for (int n = 0; n < 15; ++n) {
        QIcon icon;
        for (int size : {16, 32}) {
            QPixmap image(size, size);
            image.fill(QColor::fromHsv(n * 24, 160, 200));
            icon.addPixmap(image);
        }
        bar->addAction(icon, QStringLiteral("Button %1").arg(n + 1));
    }

    auto* panes = new QSplitter(&window);
    auto* tree = new QTreeWidget(panes);
    tree->setHeaderHidden(true);
    auto* root = new QTreeWidgetItem(tree, {QStringLiteral("<various>")});
    root->setIcon(0, bar->actions().constFirst()->icon());
    auto* list = new QTreeWidget(panes);
    list->setRootIsDecorated(false);
    list->setHeaderLabels({QStringLiteral("Option"), QStringLiteral("Setting")});
    for (int i = 1; i <= 11; ++i)
        new QTreeWidgetItem(list,
                            {QStringLiteral("Option number %1:").arg(i), QStringLiteral("Yes")});
    window.setCentralWidget(panes);

    window.statusBar()->addWidget(new QLabel(QStringLiteral("Status")), 1);
    window.statusBar()->addPermanentWidget(new QLabel(QStringLiteral("25/11/2026")));
    window.statusBar()->addPermanentWidget(new QLabel(QStringLiteral("10:30")));
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QMainWindow window;
    const QStringList args = QApplication::arguments();
    const QStringList size = args.size() > 1 ? args[1].split(u'x') : QStringList();
    const bool empty = args.size() > 2 && args[2] == QLatin1String("empty");
    if (args.size() > 3 || (args.size() > 1 && size.size() != 2) || (args.size() > 2 && !empty)) {
        std::fputs("usage: bench_plainwindow [WIDTHxHEIGHT [empty]]\n", stderr);
        return 2;
    }
    if (!size.isEmpty())
        window.resize(size[0].toInt(), size[1].toInt());
    if (!empty)
        buildWidgets(window);
    // Watched as bench_startup watches the program's window, through the application.
    FirstPaintQuitter quitter;
    app.installEventFilter(&quitter);
    window.show();
    const int status = QApplication::exec();
    return quitter.painted() ? status : 1;
}
