#include "ui/main/ProgramSetup.h"

#include "ui/controls/QtFileDialog.h"
#include "ui/controls/QtMsgBox.h"
#include "ui/help/QtHelp.h"
#include "ui/main/MainIcons.h"

#include <QApplication>

namespace ondrel {

void prepareApplication() {
    QApplication::setApplicationName(QStringLiteral("File Ondrel"));
    QApplication::setOrganizationName(QStringLiteral("FileOndrel"));
    QApplication::setApplicationVersion(QStringLiteral(ONDREL_VERSION));
    // The desktop entry's name, by which a Wayland desktop finds the program's icon and menu entry.
    QApplication::setDesktopFileName(QStringLiteral(ONDREL_APP_ID));
    QApplication::setWindowIcon(programIcon());
    installQtMsgBoxHandler();
    installQtFileDialogHandler();
    installQtHelpHandler();
}

} // namespace ondrel
