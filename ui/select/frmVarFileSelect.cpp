#include "ui/select/frmVarFileSelect.h"

#include "platform/Help.h"
#include "platform/MsgBox.h"
#include "platform/SlotBarrier.h"
#include "ui/controls/DirList.h"
#include "ui/controls/DriveList.h"
#include "ui/controls/FileList.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/select/VarFileListModel.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace ondrel {

namespace {

// A combo box is named by its caption, the label whose buddy it is; the others get a name here.
template <typename T> T* named(T* widget, const char* name) {
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

template <typename T> T* named(T* widget, const char* name, const QString& accessibleName) {
    widget->setAccessibleName(accessibleName);
    return named(widget, name);
}

QPushButton* button(QWidget* parent, const char* name, const QString& caption,
                    const QString& accessibleName) {
    auto* b = named(new QPushButton(caption, parent), name, accessibleName);
    b->setAutoDefault(false);
    return b;
}

QLabel* buddyLabel(QWidget* parent, const QString& caption, QWidget* buddy) {
    auto* label = new QLabel(caption, parent);
    label->setBuddy(buddy);
    return label;
}

} // namespace

frmVarFileSelect::frmVarFileSelect(ProgramObjects& program, QWidget* parent)
    : QDialog(parent), m_program(program) {
    setObjectName(QStringLiteral("frmVarFileSelect"));
    setWindowTitle(QStringLiteral("Select Files For Source Path <various>"));
    build();
    Form_Load();
}

void frmVarFileSelect::build() {
    drvVarDrives = named(new DriveList(this), "drvVarDrives");
    dirVarDirs = named(new DirList(this), "dirVarDirs", QStringLiteral("Directories"));
    filVarFiles = named(new controls::FileList(this), "filVarFiles", QStringLiteral("Files"));
    // The count is what the label says: its text is its name.
    lblFileCount = named(new QLabel(this), "lblFileCount");
    lblFileCount->setAccessibleDescription(QStringLiteral("Number of files"));
    txtFileSelMask = named(new QLineEdit(this), "txtFileSelMask", QStringLiteral("File mask"));
    cmdGoMask = button(this, "cmdGoMask", QStringLiteral("&Go"), QStringLiteral("Apply mask"));
    chkShowArchive = named(new QCheckBox(QStringLiteral("A&rchive"), this), "chkShowArchive",
                           QStringLiteral("Show archive files"));
    chkShowHidden = named(new QCheckBox(QStringLiteral("&Hidden"), this), "chkShowHidden",
                          QStringLiteral("Show hidden files"));
    chkShowNormal = named(new QCheckBox(QStringLiteral("&Normal"), this), "chkShowNormal",
                          QStringLiteral("Show normal files"));
    chkShowRO = named(new QCheckBox(QStringLiteral("Read-&Only"), this), "chkShowRO",
                      QStringLiteral("Show read-only files"));
    chkShowSystem = named(new QCheckBox(QStringLiteral("S&ystem"), this), "chkShowSystem",
                          QStringLiteral("Show system files"));
    cmdAdd = button(this, "cmdAdd", QStringLiteral("&Add  >>"), QStringLiteral("Add"));
    cmdAdd->setToolTip(QStringLiteral("Adds the selected files; with Alt held, every file"));
    cmdRemove = button(this, "cmdRemove", QStringLiteral("<<  R&emove"), QStringLiteral("Remove"));
    cmdRemove->setToolTip(QStringLiteral("Removes the selected entries; with Alt held, all"));
    lstVarList = named(new QListView(this), "lstVarList", QStringLiteral("Selected files"));
    cmdLoadList =
        button(this, "cmdLoadList", QStringLiteral("&Load List..."), QStringLiteral("Load List"));
    cmdSaveList =
        button(this, "cmdSaveList", QStringLiteral("Save Lis&t..."), QStringLiteral("Save List"));
    cmdOK = button(this, "cmdOK", QStringLiteral("O&K"), QStringLiteral("OK"));
    cmdOK->setDefault(true);
    cmdCancel = button(this, "cmdCancel", QStringLiteral("&Cancel"), QStringLiteral("Cancel"));
    cmdHelp = button(this, "cmdHelp", QStringLiteral("Hel&p"), QStringLiteral("Help"));

    m_selection = new VarFileListModel(this);
    lstVarList->setModel(m_selection);
    lstVarList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    lstVarList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lstVarList->setUniformItemSizes(true);

    auto* show = new QGroupBox(QStringLiteral("Show"), this);
    auto* showLayout = new QGridLayout(show);
    showLayout->addWidget(chkShowArchive, 0, 0);
    showLayout->addWidget(chkShowHidden, 0, 1);
    showLayout->addWidget(chkShowNormal, 0, 2);
    showLayout->addWidget(chkShowRO, 1, 0);
    showLayout->addWidget(chkShowSystem, 1, 1);

    auto* mask = new QHBoxLayout;
    mask->addWidget(buddyLabel(this, QStringLiteral("&Mask:"), txtFileSelMask));
    mask->addWidget(txtFileSelMask, 1);
    mask->addWidget(cmdGoMask);

    auto* filesHeading = new QHBoxLayout;
    filesHeading->addWidget(buddyLabel(this, QStringLiteral("&Files:"), filVarFiles));
    filesHeading->addStretch(1);
    filesHeading->addWidget(lblFileCount);

    auto* moves = new QVBoxLayout;
    moves->addStretch(1);
    moves->addWidget(cmdAdd);
    moves->addWidget(cmdRemove);
    moves->addStretch(1);

    auto* listButtons = new QHBoxLayout;
    listButtons->addWidget(cmdLoadList);
    listButtons->addWidget(cmdSaveList);
    listButtons->addStretch(1);

    auto* grid = new QGridLayout;
    grid->addWidget(buddyLabel(this, QStringLiteral("Dri&ve:"), drvVarDrives), 0, 0);
    grid->addWidget(drvVarDrives, 1, 0);
    grid->addWidget(buddyLabel(this, QStringLiteral("&Directories:"), dirVarDirs), 2, 0);
    grid->addWidget(dirVarDirs, 3, 0, 3, 1);
    grid->addLayout(filesHeading, 0, 1);
    grid->addWidget(filVarFiles, 1, 1, 3, 1);
    grid->addLayout(mask, 4, 1);
    grid->addWidget(show, 5, 1);
    grid->addLayout(moves, 1, 2, 5, 1);
    grid->addWidget(buddyLabel(this, QStringLiteral("&Selected files:"), lstVarList), 0, 3);
    grid->addWidget(lstVarList, 1, 3, 4, 1);
    grid->addLayout(listButtons, 5, 3, Qt::AlignTop);
    grid->setRowStretch(3, 1);
    grid->setColumnStretch(0, 2);
    grid->setColumnStretch(1, 2);
    grid->setColumnStretch(3, 3);

    auto* dialogButtons = new QHBoxLayout;
    dialogButtons->addStretch(1);
    dialogButtons->addWidget(cmdOK);
    dialogButtons->addWidget(cmdCancel);
    dialogButtons->addWidget(cmdHelp);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid, 1);
    layout->addLayout(dialogButtons);

    // Tab goes down each column, left to right, then to the dialog's buttons.
    const QList<QWidget*> order = {
        drvVarDrives,  dirVarDirs,    filVarFiles, txtFileSelMask, cmdGoMask, chkShowArchive,
        chkShowHidden, chkShowNormal, chkShowRO,   chkShowSystem,  cmdAdd,    cmdRemove,
        lstVarList,    cmdLoadList,   cmdSaveList, cmdOK,          cmdCancel, cmdHelp};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);

    connect(drvVarDrives, &DriveList::driveChanged, this,
            guarded(QStringLiteral("drvVarDrives_Change"), this,
                    &frmVarFileSelect::drvVarDrives_Change));
    connect(
        dirVarDirs, &DirList::pathChanged, this,
        guarded(QStringLiteral("dirVarDirs_Change"), this, &frmVarFileSelect::dirVarDirs_Change));
    connect(filVarFiles, &controls::FileList::pathChanged, this,
            guarded(QStringLiteral("UpdateFileCount"), this, &frmVarFileSelect::UpdateFileCount));
    connect(filVarFiles, &controls::FileList::patternChanged, this,
            guarded(QStringLiteral("UpdateFileCount"), this, &frmVarFileSelect::UpdateFileCount));
    connect(filVarFiles, &controls::FileList::listChanged, this,
            guarded(QStringLiteral("UpdateFileCount"), this, &frmVarFileSelect::UpdateFileCount));
    connect(filVarFiles, &QAbstractItemView::doubleClicked, this,
            guarded(QStringLiteral("filVarFiles_DblClick"), this,
                    &frmVarFileSelect::filVarFiles_DblClick));
    connect(lstVarList, &QAbstractItemView::doubleClicked, this,
            guarded(QStringLiteral("lstVarList_DblClick"), this,
                    &frmVarFileSelect::lstVarList_DblClick));
    const std::pair<QCheckBox*, FileFilter> boxes[] = {{chkShowArchive, FileFilter::Archive},
                                                       {chkShowHidden, FileFilter::Hidden},
                                                       {chkShowNormal, FileFilter::Normal},
                                                       {chkShowRO, FileFilter::ReadOnly},
                                                       {chkShowSystem, FileFilter::System}};
    for (const auto& [box, which] : boxes) {
        connect(box, &QCheckBox::toggled, this,
                guarded(QStringLiteral("chkShow_Click"),
                        [this, box = box, which = which] { chkShow_Click(which, box); }));
    }
    connect(cmdGoMask, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdGoMask_Click"), this, &frmVarFileSelect::cmdGoMask_Click));
    connect(cmdAdd, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdAdd_Click"), this, &frmVarFileSelect::cmdAdd_Click));
    connect(cmdRemove, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdRemove_Click"), this, &frmVarFileSelect::cmdRemove_Click));
    connect(
        cmdSaveList, &QPushButton::clicked, this,
        guarded(QStringLiteral("cmdSaveList_Click"), this, &frmVarFileSelect::cmdSaveList_Click));
    connect(
        cmdLoadList, &QPushButton::clicked, this,
        guarded(QStringLiteral("cmdLoadList_Click"), this, &frmVarFileSelect::cmdLoadList_Click));
    connect(cmdOK, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdOK_Click"), this, &frmVarFileSelect::cmdOK_Click));
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(cmdHelp, &QPushButton::clicked, this, guarded(QStringLiteral("cmdHelp_Click"), [] {
                ShowHelp(kHelpContext, HelpCommand::Context);
            }));
    for (QObject* watched : {static_cast<QObject*>(txtFileSelMask), static_cast<QObject*>(cmdAdd),
                             static_cast<QObject*>(cmdRemove)})
        watched->installEventFilter(this);

    resize(820, 480);
}

void frmVarFileSelect::Form_Load() {
    const VarFileSelection& state = m_program.Selection;
    txtFileSelMask->setText(state.FileSelMask);
    if (!filVarFiles->setPattern(state.FileSelMask).ok())
        txtFileSelMask->setText(filVarFiles->Pattern());

    const std::pair<QCheckBox*, qint16> boxes[] = {{chkShowArchive, state.ShowArchive},
                                                   {chkShowHidden, state.ShowHidden},
                                                   {chkShowNormal, state.ShowNormal},
                                                   {chkShowRO, state.ShowRO},
                                                   {chkShowSystem, state.ShowSystem}};
    for (const auto& [box, value] : boxes) {
        // Set quietly, then run each box's handler once, ticked or not.
        {
            const QSignalBlocker quiet(box);
            box->setChecked(value == 1);
        }
        emit box->toggled(box->isChecked());
    }

    if (!state.VariousFiles.isEmpty() && !state.VariousFiles.constFirst().isEmpty())
        m_selection->addText(state.VariousFiles);

    // The default drive and path; while loading, a drive that cannot be opened is asked about
    // here, once per attempt, instead of by the drive list's own handler.
    m_loading = true;
    const QString drive = m_program.Settings->DefaultDrive();
    for (;;) {
        // A stored drive is a mount point: a disk that was pulled leaves only a directory there.
        Result<void> opened = drvVarDrives->setMountedDrive(drive);
        if (opened.ok())
            opened = dirVarDirs->setPath(m_program.Settings->DefaultPath());
        if (opened.ok())
            break;
        const MsgAnswer answer = MsgBox(
            QStringLiteral("Drive ") + drive +
                QStringLiteral(" is not currently mapped or is otherwise unavailable."),
            MsgButtons::RetryCancel, MsgIcon::Exclamation, QStringLiteral("Device Not Found"));
        if (answer != MsgAnswer::Retry) {
            // The dialog stays open where the lists could go: the drive list shows the drive of
            // the directory listed.
            (void)drvVarDrives->setDrive(dirVarDirs->Path());
            break;
        }
    }
    m_loading = false;
    // The file list follows the directory list, which it did already if the path was set.
    if (filVarFiles->nativePath() != dirVarDirs->nativePath())
        dirVarDirs_Change();
}

void frmVarFileSelect::drvVarDrives_Change(const QString& drive) {
    if (m_loading)
        return;
    const Result<void> opened = dirVarDirs->setPath(drive);
    if (opened.ok())
        return;
    if (opened.error().number() == ErrNo::DeviceUnavailable) {
        MsgBox(QStringLiteral("Drive ") + drive +
                   QStringLiteral(" is unavailable or is not ready."),
               MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Device Not Available"));
    } else {
        ShowErrorReport(opened.error(), QStringLiteral("drvVarDrives_Change"));
    }
    const QSignalBlocker quiet(drvVarDrives);
    (void)drvVarDrives->setDrive(dirVarDirs->Path());
}

void frmVarFileSelect::dirVarDirs_Change() {
    const Result<void> listed = filVarFiles->setPath(dirVarDirs->nativePath());
    if (!listed.ok())
        ShowErrorReport(listed.error(), QStringLiteral("dirVarDirs_Change"));
    UpdateFileCount();
}

void frmVarFileSelect::chkShow_Click(FileFilter which, QCheckBox* box) {
    filVarFiles->setFilter(which, box->isChecked());
    UpdateFileCount();
}

void frmVarFileSelect::UpdateFileCount() {
    lblFileCount->setText(QString::number(filVarFiles->count()));
}

void frmVarFileSelect::cmdGoMask_Click() {
    if (filVarFiles->setPattern(txtFileSelMask->text()).ok())
        return;
    MsgBox(QStringLiteral("The file mask generated an error.  Make sure it does not contain any of "
                          "the following characters:  \\ / : < > | anywhere in the mask, or ; in "
                          "the extension."),
           MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Error Entering File Mask"));
    txtFileSelMask->setText(filVarFiles->Pattern());
}

void frmVarFileSelect::cmdOK_Click() {
    VarFileSelection& state = m_program.Selection;
    state.FileSelMask = filVarFiles->Pattern();
    state.ShowArchive = chkShowArchive->isChecked() ? 1 : 0;
    state.ShowHidden = chkShowHidden->isChecked() ? 1 : 0;
    state.ShowNormal = chkShowNormal->isChecked() ? 1 : 0;
    state.ShowRO = chkShowRO->isChecked() ? 1 : 0;
    state.ShowSystem = chkShowSystem->isChecked() ? 1 : 0;
    state.VariousFiles = m_selection->list().toVariousFiles();
    accept();
}

bool frmVarFileSelect::eventFilter(QObject* watched, QEvent* event) {
    if (watched == txtFileSelMask) {
        // Enter applies the mask (on its release, as the key's press would press OK).
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
            const int key = static_cast<QKeyEvent*>(event)->key();
            if (key == Qt::Key_Return || key == Qt::Key_Enter) {
                if (event->type() == QEvent::KeyRelease)
                    runBehindBarrier(QStringLiteral("cmdGoMask_Click"),
                                     [this] { cmdGoMask_Click(); });
                return true;
            }
        }
        return false;
    }
    switch (event->type()) {
    case QEvent::MouseButtonRelease:
        m_altRelease = static_cast<QMouseEvent*>(event)->modifiers() & Qt::AltModifier;
        break;
    case QEvent::MouseButtonPress:
    case QEvent::KeyPress:
        m_altRelease = false;
        break;
    default:
        break;
    }
    return false;
}

} // namespace ondrel
