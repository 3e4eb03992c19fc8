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
    QApplication::setWindowIcon(programIcon());
    installQtMsgBoxHandler();
    installQtFileDialogHandler();
    installQtHelpHandler();
}

} // namespace ondrel
