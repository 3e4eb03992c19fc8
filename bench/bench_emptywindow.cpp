// The yardstick of the program's start-up: an empty Qt main window, linked with Qt alone, that
// ends at its first paint. Usage: bench_emptywindow [WIDTHxHEIGHT [text]]   (the window's size
// in pixels; bench_startup prints the main window's, so that both paint as much). With "text",
// the window also shows one menu title and a status-bar text: the least a window that says
// anything pays, the fonts found and the first glyphs drawn, which the empty window never does.
#include "bench/FirstPaint.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <QStatusBar>

#include <cstdio>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QMainWindow window;
    const QStringList args = QApplication::arguments();
    const QStringList size = args.size() > 1 ? args[1].split(u'x') : QStringList();
    const bool text = args.size() > 2 && args[2] == QLatin1String("text");
    if (args.size() > 3 || (args.size() > 1 && size.size() != 2) || (args.size() > 2 && !text)) {
        std::fputs("usage: bench_emptywindow [WIDTHxHEIGHT [text]]\n", stderr);
        return 2;
    }
    if (!size.isEmpty())
        window.resize(size[0].toInt(), size[1].toInt());
    if (text) {
        window.menuBar()->addMenu(QStringLiteral("&File"));
        window.statusBar()->showMessage(QStringLiteral("Status"));
    }
    // Watched as bench_startup watches the program's window, through the application.
    FirstPaintQuitter quitter;
    app.installEventFilter(&quitter);
    window.show();
    const int status = QApplication::exec();
    return quitter.painted() ? status : 1;
}
