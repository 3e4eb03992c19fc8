// The windowed program: File Ondrel's main window and dialogs.
#include "app/ProgramDirectory.h"
#include "ui/controls/QtFileDialog.h"
#include "ui/controls/QtMsgBox.h"
#include "ui/help/QtHelp.h"
#include "ui/main/MainIcons.h"
#include "ui/main/SubMain.h"

#include <QApplication>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("File Ondrel"));
    QApplication::setOrganizationName(QStringLiteral("FileOndrel"));
    QApplication::setApplicationVersion(QStringLiteral(ONDREL_VERSION));
    QApplication::setWindowIcon(ondrel::programIcon());
    ondrel::installQtMsgBoxHandler();
    ondrel::installQtFileDialogHandler();
    ondrel::installQtHelpHandler();
    return ondrel::SubMain(ondrel::ProgramDirectory());
}
