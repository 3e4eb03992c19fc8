// The windowed program: File Ondrel's main window and dialogs.
#include "app/ProgramDirectory.h"
#include "ui/main/ProgramCommandLine.h"
#include "ui/main/ProgramSetup.h"
#include "ui/main/SubMain.h"

#include <QApplication>

#include <cstdio>

using namespace ondrel;

namespace {

// Bad command line, as with the stager.
constexpr int kUsage = 64;

QStringList argumentsOf(int argc, char* argv[]) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return arguments;
}

// --help and --version print and end before Qt looks for a display, so they work on any
// terminal. Anything else waits for Qt to take its own options off the line.
bool answeredWithoutWindow(const ProgramCommandLine& line) {
    if (line.action == ProgramCommandLine::Action::Help)
        std::fputs(ProgramCommandLine::usage().toLocal8Bit().constData(), stdout);
    else if (line.action == ProgramCommandLine::Action::Version)
        std::fputs("ondrel " ONDREL_VERSION "\n", stdout);
    return line.action != ProgramCommandLine::Action::Start;
}

} // namespace

int main(int argc, char* argv[]) {
    if (answeredWithoutWindow(ProgramCommandLine::parse(argumentsOf(argc, argv))))
        return 0;
    QApplication app(argc, argv);
    const ProgramCommandLine line = ProgramCommandLine::parse(app.arguments().mid(1));
    if (!line.error.isEmpty()) {
        std::fputs(("ondrel: " + line.error + "\nTry 'ondrel --help'.\n").toLocal8Bit().constData(),
                   stderr);
        return kUsage;
    }
    prepareApplication();
    return SubMain(ProgramDirectory(), line.specFile);
}
