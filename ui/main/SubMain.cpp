#include "ui/main/SubMain.h"

#include "platform/FileDialog.h"
#include "platform/MsgBox.h"
#include "platform/SlotBarrier.h"
#include "ui/controls/AccessibleComboBox.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/frmCESpecs.h"
#include "ui/main/QtScreenMetrics.h"
#include "ui/main/frmMain.h"

#include <QApplication>
#include <QFileInfo>

namespace ondrel {

std::unique_ptr<frmMain> createProgramObjects(ProgramObjects& program,
                                              const ScreenMetrics& screen) {
    installAccessibleComboBoxes();
    auto main = std::make_unique<frmMain>(program);
    program.CESpecs = new frmCESpecs(program, main.get());
    program.Settings = std::make_unique<clsOndrelApp>(screen, program.programDirectory);
    program.Spec = std::make_unique<clsSpecFile>();
    program.Selection = VarFileSelection();
    return main;
}

void OpenSpecFileNamed(frmMain& main, const QString& fileName) {
    const QFileInfo file(fileName);
    const ScopedFileDialogHandler named(
        [&file](const FileDialogRequest&) -> Result<FileDialogChoice> {
            // The dialog takes only a file that exists.
            if (!file.isFile())
                return Error(ErrNo::FileNotFound, QStringLiteral("frmMain"));
            return fileDialogChoiceFor(file.absoluteFilePath());
        });
    runBehindBarrier(QStringLiteral("mnuFileOpenSpecs_Click"),
                     [&main] { main.mnuFileOpenSpecs_Click(); });
}

int SubMain(const QString& programDirectory, const QString& specFile) {
    ProgramObjects program(programDirectory);
    const std::unique_ptr<frmMain> main = createProgramObjects(program, primaryScreenMetrics());
    // Start-up catches nothing else: a value of the options file that is no setting (Top=abc)
    // is its one failure, and it ends as the report of an unhandled error, never as a crash.
    try {
        program.Settings->ReadOPTFile();
    } catch (const Error& error) {
        MsgBox(QStringLiteral("Run-time error '%1':\r\n\r\n%2")
                   .arg(error.number())
                   .arg(error.description()),
               MsgButtons::OK, MsgIcon::Critical, QStringLiteral("File Ondrel"));
        return 1;
    }
    main->Show();
    if (!specFile.isEmpty())
        OpenSpecFileNamed(*main, specFile);
    return QApplication::exec();
}

} // namespace ondrel
