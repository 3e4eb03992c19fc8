// The windowed program: File Ondrel's main window and dialogs.
#include "app/ProgramDirectory.h"
#include "ui/main/ProgramSetup.h"
#include "ui/main/SubMain.h"

#include <QApplication>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    ondrel::prepareApplication();
    return ondrel::SubMain(ondrel::ProgramDirectory());
}
