// The windowed program's start-up, as main.cpp and SubMain run it, ending at the main window's
// first paint. Prints the window's size in pixels (WIDTHxHEIGHT) for bench_emptywindow.
// Usage: bench_startup PROGRAM_DIRECTORY   (where the options file is read from)
#include "bench/FirstPaint.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/controls/QtFileDialog.h"
#include "ui/controls/QtMsgBox.h"
#include "ui/main/MainIcons.h"
#include "ui/main/QtScreenMetrics.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QApplication>

#include <cstdio>

using namespace ondrel;

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fputs("usage: bench_startup PROGRAM_DIRECTORY\n", stderr);
        return 2;
    }
    QApplication::setApplicationName(QStringLiteral("File Ondrel"));
    QApplication::setOrganizationName(QStringLiteral("FileOndrel"));
    QApplication::setApplicationVersion(QStringLiteral(ONDREL_VERSION));
    QApplication::setWindowIcon(programIcon());
    installQtMsgBoxHandler();
    installQtFileDialogHandler();

    ProgramObjects program(QApplication::arguments().at(1));
    const std::unique_ptr<frmMain> main = createProgramObjects(program, primaryScreenMetrics());
    try {
        program.Settings->ReadOPTFile();
    } catch (const Error& error) {
        std::fprintf(stderr, "bench_startup: options file: %s\n", qPrintable(error.description()));
        return 2;
    }
    FirstPaintQuitter quitter;
    main->installEventFilter(&quitter);
    main->Show();
    const int status = QApplication::exec();
    std::printf("%dx%d\n", main->width(), main->height());
    return quitter.painted() ? status : 1;
}
