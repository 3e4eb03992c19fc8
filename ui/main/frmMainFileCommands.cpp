// The File menu: new, open, save, save as, stage and close, and the recent-files list below
// them, kept in section "MRUList" of the options file.
#include "ui/main/frmMain.h"

#include "platform/FileDialog.h"
#include "platform/MsgBox.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingLog.h"
#include "staging/frmStage.h"
#include "ui/controls/ProgramObjects.h"

#include <QAction>
#include <QLabel>

namespace ondrel {

namespace {

const QString kSpecFilter = QStringLiteral("Spec Files (*.spc)|*.spc");

// The command's own report of a failure: the common text under a title naming the task.
void reportCommandError(const Error& error, const QString& title) {
    MsgBox(ErrorReportText(error), MsgButtons::OK, MsgIcon::Exclamation, title);
}

QString withSeparator(const QString& dir) {
    return dir.endsWith(u'/') ? dir : dir + u'/';
}

} // namespace

void frmMain::mnuFileNewSpecs_Click() {
    clsSpecFile& current = spec();
    if (!current.NewSpecFile())
        return;
    current.SPs().Add(QStringLiteral("<various>"));
    ++intNewSpecCount;
    current.setName(QStringLiteral("Spec") + QString::number(intNewSpecCount) +
                    QStringLiteral(".spc"));
    current.setPath(withSeparator(m_program.programDirectory));
    lblSpecInfo[0]->setText(current.Name());
    UpdtSpecList();
    UpdtISD(current.SPs().Item(1)->InclSubDirs());
    m_program.Selection.clearFiles();
}

void frmMain::mnuFileOpenSpecs_Click() {
    FileDialogRequest request;
    request.kind = FileDialogKind::Open;
    request.title = QStringLiteral("Open Spec File");
    request.defaultExt = QStringLiteral("*.spc");
    request.filter = kSpecFilter;
    request.initDir = m_dialogInitDir;
    const Result<FileDialogChoice> chosen = ShowFileDialog(request);
    if (!chosen) {
        if (chosen.error().number() != ErrNo::CancelSelected)
            reportCommandError(chosen.error(), QStringLiteral("Error Opening Spec File"));
        return;
    }
    OpenSpecFile(chosen->FileTitle, chosen->FileName);
    m_program.Selection.clearFiles();
}

void frmMain::setPathFromFileName(const QString& FileName) {
    // The directory is what stands before the first occurrence of the name; a name that does not
    // occur in the path cannot be cut out of it.
    clsSpecFile& current = spec();
    const qsizetype at = FileName.indexOf(current.Name());
    if (at < 0 || current.Name().isEmpty())
        throw Error(ErrNo::InvalidCall, QStringLiteral("frmMain"));
    current.setPath(FileName.left(at));
}

void frmMain::OpenSpecFile(const QString& FileTitle, const QString& FileName) {
    try {
        clsSpecFile& current = spec();
        if (!current.LoadSpecFile(FileName))
            return;
        current.setName(FileTitle);
        lblSpecInfo[0]->setText(current.Name());
        setPathFromFileName(FileName);
        UpdtSpecList();
        UpdtISD(current.SPs().Item(1)->InclSubDirs());
        RefreshMRU(QStringLiteral("Open"), current.Name(), current.Path());
    } catch (const Error& error) {
        reportCommandError(error, QStringLiteral("Error Opening Spec File"));
    }
}

void frmMain::mnuFileMRU_Click(int Index) {
    const RecentFile& entry = m_recentFiles.entry(Index);
    const QString fileName = entry.fileName();
    OpenSpecFile(fileName, entry.Tag + fileName);
}

void frmMain::mnuFileSaveSpecs_Click() {
    clsSpecFile& current = spec();
    current.SaveSpecFile();
    RefreshMRU(QStringLiteral("Open"), current.Name(), current.Path());
}

void frmMain::mnuFileSaveSpecsAs_Click() {
    clsSpecFile& current = spec();
    FileDialogRequest request;
    request.kind = FileDialogKind::Save;
    request.title = QStringLiteral("Save Specs As . . .");
    request.defaultExt = QStringLiteral("*.spc");
    request.filter = kSpecFilter;
    request.fileName = current.Name();
    request.initDir = m_dialogInitDir;
    try {
        const FileDialogChoice chosen = ShowFileDialog(request).valueOrThrow();
        current.setName(chosen.FileTitle);
        lblSpecInfo[0]->setText(current.Name());
        setPathFromFileName(chosen.FileName);
        current.SaveSpecFile();
        RefreshMRU(QStringLiteral("Open"), current.Name(), current.Path());
    } catch (const Error& error) {
        if (error.number() != ErrNo::CancelSelected)
            reportCommandError(error, QStringLiteral("Error Saving Spec File"));
    }
}

void frmMain::mnuFileStageFiles_Click() {
    try {
        std::unique_ptr<StagingLog> log;
        if (settings().CreateLog()) {
            FileDialogRequest request;
            request.kind = FileDialogKind::Open;
            request.existence = FileExistence::MayBeNew;
            request.title = QStringLiteral("Specify the Staging Log Filename");
            request.defaultExt = QStringLiteral("*.log");
            request.filter = QStringLiteral("Log Files (*.log)|*.log");
            request.fileName = QStringLiteral("Staging.log");
            request.initDir = m_dialogInitDir;
            const FileDialogChoice chosen = ShowFileDialog(request).valueOrThrow();
            log = std::make_unique<StagingLog>();
            const Result<void> opened = log->open(chosen.FileName);
            opened.throwIfFailed();
        }
        DiskFileOps disk;
        frmStage stage(spec(), settings(), m_program.Selection.VariousFiles, disk, log.get(),
                       m_program.programDirectory, this);
        stage.exec();
    } catch (const Error& error) {
        if (error.number() != ErrNo::CancelSelected)
            reportCommandError(error, QStringLiteral("Error Saving Spec File"));
    }
}

void frmMain::mnuFileClose_Click() {
    close();
}

void frmMain::RefreshMRU(const QString& Action, const QString& FileTitle, const QString& FilePath) {
    try {
        if (Action == QLatin1String("Startup"))
            m_recentFiles.loadFrom(settings().OptionsFile());
        else
            m_recentFiles.recordFile(FileTitle, FilePath);
    } catch (const Error& error) {
        ShowErrorReport(error, QStringLiteral("RefreshMRU"));
    }
    showRecentFiles();
}

void frmMain::showRecentFiles() {
    for (int i = 0; i < RecentFilesList::kEntries; ++i) {
        const RecentFile& entry = m_recentFiles.entry(i);
        mnuFileMRU[i]->setText(entry.Caption);
        mnuFileMRU[i]->setData(entry.Tag);
        mnuFileMRU[i]->setVisible(entry.visible());
    }
    mnuFileBar5->setVisible(m_recentFiles.separatorVisible());
}

void frmMain::SaveMRU() {
    try {
        m_recentFiles.saveTo(settings().OptionsFile());
    } catch (const Error& error) {
        ShowErrorReport(error, QStringLiteral("SaveMRU"));
    }
}

} // namespace ondrel
