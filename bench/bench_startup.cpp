// The windowed program's start-up, as its main runs it (SubMain itself, with the program's
// message-box, file-dialog and help handlers), ending at the main window's first paint. Prints
// the window's size in pixels (WIDTHxHEIGHT) for bench_plainwindow.
// Usage: bench_startup PROGRAM_DIRECTORY   (where the options file is read from)
#include "bench/FirstPaint.h"
#include "ui/main/ProgramSetup.h"
#include "ui/main/SubMain.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fputs("usage: bench_startup PROGRAM_DIRECTORY\n", stderr);
        return 2;
    }
    ondrel::prepareApplication();

    FirstPaintQuitter quitter;
    app.installEventFilter(&quitter);
    const int status = ondrel::SubMain(QApplication::arguments().at(1));
    if (!quitter.painted()) {
        std::fprintf(stderr, "bench_startup: the main window was never painted (status %d)\n",
                     status);
        return 1;
    }
    std::printf("%dx%d\n", quitter.windowSize().width(), quitter.windowSize().height());
    return status;
}
