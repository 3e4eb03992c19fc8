// The yardstick of the program's start-up: an empty Qt main window, linked with Qt alone, that
// ends at its first paint. Usage: bench_emptywindow [WIDTHxHEIGHT]   (the window's size in
// pixels; bench_startup prints the main window's, so that both paint as much)
#include "bench/FirstPaint.h"

#include <QApplication>
#include <QMainWindow>

#include <cstdio>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QMainWindow window;
    const QStringList args = QApplication::arguments();
    if (args.size() > 1) {
        const QStringList size = args[1].split(u'x');
        if (size.size() != 2) {
            std::fputs("usage: bench_emptywindow [WIDTHxHEIGHT]\n", stderr);
            return 2;
        }
        window.resize(size[0].toInt(), size[1].toInt());
    }
    // Watched as bench_startup watches the program's window, through the application.
    FirstPaintQuitter quitter;
    app.installEventFilter(&quitter);
    window.show();
    const int status = QApplication::exec();
    return quitter.painted() ? status : 1;
}
