#include "ui/options/frmFSOptions.h"

#include "platform/Help.h"
#include "platform/SlotBarrier.h"
#include "ui/controls/DirList.h"
#include "ui/controls/DriveList.h"
#include "ui/controls/MainWindowViews.h"
#include "ui/controls/ProgramObjects.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace ondrel {

namespace {

enum class Place { UserOptions, StagingOptions, Attributes };

// The check boxes, in the order OK stores them.
struct Flag {
    const char* name;
    const char* caption;
    Place place;
    bool (clsOndrelApp::*get)() const;
    void (clsOndrelApp::*set)(bool);
};

const std::array<Flag, 11> kFlags = {{
    {"chkResetArchive", "Reset Archive a&ttribute", Place::StagingOptions,
     &clsOndrelApp::ResetArchive, &clsOndrelApp::setResetArchive},
    {"chkConfirmMsgs", "Show confirmation &messages", Place::UserOptions,
     &clsOndrelApp::ShowConfirmMsgs, &clsOndrelApp::setShowConfirmMsgs},
    {"chkSaveSettings", "Save settings on e&xit", Place::UserOptions, &clsOndrelApp::SaveSettings,
     &clsOndrelApp::setSaveSettings},
    {"chkCreateDirs", "Create &directories if they don't exist", Place::StagingOptions,
     &clsOndrelApp::CreateDirs, &clsOndrelApp::setCreateDirs},
    {"chkCreateLog", "Create a Staging &Log", Place::StagingOptions, &clsOndrelApp::CreateLog,
     &clsOndrelApp::setCreateLog},
    {"chkShowErrMsgs", "Show &error messages during staging", Place::StagingOptions,
     &clsOndrelApp::ShowErrMsgs, &clsOndrelApp::setShowErrMsgs},
    {"chkDelSource", "Delete &files from source directory", Place::StagingOptions,
     &clsOndrelApp::DelSource, &clsOndrelApp::setDelSource},
    {"chkInclArc", "Archi&ve", Place::Attributes, &clsOndrelApp::InclArc,
     &clsOndrelApp::setInclArc},
    {"chkInclHid", "H&idden", Place::Attributes, &clsOndrelApp::InclHid, &clsOndrelApp::setInclHid},
    {"chkInclRO", "Read-Onl&y", Place::Attributes, &clsOndrelApp::InclRO, &clsOndrelApp::setInclRO},
    {"chkInclSys", "Syste&m", Place::Attributes, &clsOndrelApp::InclSys, &clsOndrelApp::setInclSys},
}};

// The overwrite modes' buttons, by mode.
const std::array<const char*, 4> kOverwriteCaptions = {"Only if they are &older", "&Prompt",
                                                       "&Always", "&Never"};

} // namespace

frmFSOptions::frmFSOptions(ProgramObjects& program, QWidget* parent)
    : QDialog(parent), m_program(program) {
    setObjectName(QStringLiteral("frmFSOptions"));
    setWindowTitle(QStringLiteral("File Ondrel Options"));

    tdgOptions = new QTabWidget(this);
    tdgOptions->setObjectName(QStringLiteral("tdgOptions"));
    tdgOptions->setAccessibleName(QStringLiteral("Option pages"));
    tdgOptions->addTab(buildUserOptions(), QStringLiteral("&User Options"));
    tdgOptions->addTab(buildStagingOptions(), QStringLiteral("&Staging Options"));
    tdgOptions->tabBar()->installEventFilter(this);

    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(QStringLiteral("&Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    cmdHelp = new QPushButton(QStringLiteral("&Help"), this);
    cmdHelp->setObjectName(QStringLiteral("cmdHelp"));
    cmdRestoreDefaults = new QPushButton(QStringLiteral("&Restore Defaults"), this);
    cmdRestoreDefaults->setObjectName(QStringLiteral("cmdRestoreDefaults"));
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);
    buttons->addButton(cmdRestoreDefaults, QDialogButtonBox::ResetRole);
    buttons->addButton(cmdHelp, QDialogButtonBox::HelpRole);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tdgOptions, 1);
    layout->addWidget(buttons);

    connect(cmdOK, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdOK_Click"), this, &frmFSOptions::cmdOK_Click));
    connect(cmdCancel, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdCancel_Click"), this, &frmFSOptions::cmdCancel_Click));
    connect(cmdHelp, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdHelp_Click"), this, &frmFSOptions::cmdHelp_Click));
    connect(cmdRestoreDefaults, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdRestoreDefaults_Click"), this,
                    &frmFSOptions::cmdRestoreDefaults_Click));
    connect(drvDefPath, &DriveList::driveChanged, this,
            guarded(QStringLiteral("drvDefPath_Change"), this, &frmFSOptions::drvDefPath_Change));
    connect(dirDefPath, &DirList::pathChanged, this,
            guarded(QStringLiteral("dirDefPath_Change"), this, &frmFSOptions::dirDefPath_Change));

    Form_Load();
}

QCheckBox* frmFSOptions::addCheckBox(const char* name, const QString& caption, QWidget* parent) {
    auto* box = new QCheckBox(caption, parent);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

QWidget* frmFSOptions::buildUserOptions() {
    auto* page = new QWidget(tdgOptions);
    auto* layout = new QVBoxLayout(page);
    for (size_t i = 0; i < kFlags.size(); ++i) {
        if (kFlags[i].place == Place::UserOptions) {
            m_checkBoxes[i] =
                addCheckBox(kFlags[i].name, QString::fromUtf8(kFlags[i].caption), page);
            layout->addWidget(m_checkBoxes[i]);
        }
    }
    auto* fraDefPath = new QGroupBox(QStringLiteral("Default Path"), page);
    fraDefPath->setObjectName(QStringLiteral("fraDefPath"));
    drvDefPath = new DriveList(fraDefPath);
    drvDefPath->setObjectName(QStringLiteral("drvDefPath"));
    dirDefPath = new DirList(fraDefPath);
    dirDefPath->setObjectName(QStringLiteral("dirDefPath"));
    dirDefPath->setAccessibleName(QStringLiteral("Default directory"));
    txtDefPath = new QLineEdit(fraDefPath);
    txtDefPath->setObjectName(QStringLiteral("txtDefPath"));
    txtDefPath->setAccessibleName(QStringLiteral("Default path"));
    auto* drive = new QLabel(QStringLiteral("Dri&ve:"), fraDefPath);
    drive->setBuddy(drvDefPath);
    auto* directory = new QLabel(QStringLiteral("Direc&tory:"), fraDefPath);
    directory->setBuddy(dirDefPath);
    auto* path = new QLabel(QStringLiteral("P&ath:"), fraDefPath);
    path->setBuddy(txtDefPath);
    auto* frame = new QVBoxLayout(fraDefPath);
    for (QWidget* w : {static_cast<QWidget*>(drive), static_cast<QWidget*>(drvDefPath),
                       static_cast<QWidget*>(directory), static_cast<QWidget*>(dirDefPath),
                       static_cast<QWidget*>(path), static_cast<QWidget*>(txtDefPath)})
        frame->addWidget(w, w == dirDefPath ? 1 : 0);
    layout->addWidget(fraDefPath, 1);
    return page;
}

QWidget* frmFSOptions::buildStagingOptions() {
    auto* page = new QWidget(tdgOptions);
    auto* layout = new QVBoxLayout(page);

    auto* fraOverwrite = new QGroupBox(QStringLiteral("Overwrite Existing Files:"), page);
    fraOverwrite->setObjectName(QStringLiteral("fraOverwrite"));
    auto* overwrite = new QVBoxLayout(fraOverwrite);
    m_overwriteGroup = new QButtonGroup(this);
    for (int mode = 0; mode < 4; ++mode) {
        auto* button =
            new QRadioButton(QString::fromUtf8(kOverwriteCaptions[size_t(mode)]), fraOverwrite);
        button->setObjectName(QStringLiteral("optOverwrite(%1)").arg(mode));
        m_overwriteGroup->addButton(button, mode);
        overwrite->addWidget(button);
        optOverwrite[size_t(mode)] = button;
    }
    // The mode follows the buttons' state, however a button came to be checked: a click, the
    // keyboard, or a screen reader's action, which checks it without a click.
    connect(m_overwriteGroup, &QButtonGroup::idToggled, this, [this](int mode, bool checked) {
        if (checked)
            m_overwriteIndex = mode;
    });
    layout->addWidget(fraOverwrite);

    auto* fraInclAttribs = new QGroupBox(QStringLiteral("Include Files With Attributes:"), page);
    fraInclAttribs->setObjectName(QStringLiteral("fraInclAttribs"));
    auto* attributes = new QHBoxLayout(fraInclAttribs);
    for (size_t i = 0; i < kFlags.size(); ++i) {
        if (kFlags[i].place == Place::StagingOptions) {
            m_checkBoxes[i] =
                addCheckBox(kFlags[i].name, QString::fromUtf8(kFlags[i].caption), page);
            layout->addWidget(m_checkBoxes[i]);
        } else if (kFlags[i].place == Place::Attributes) {
            m_checkBoxes[i] =
                addCheckBox(kFlags[i].name, QString::fromUtf8(kFlags[i].caption), fraInclAttribs);
            attributes->addWidget(m_checkBoxes[i]);
        }
    }
    layout->addWidget(fraInclAttribs);
    layout->addStretch(1);
    return page;
}

void frmFSOptions::Form_Load() {
    const clsOndrelApp& settings = *m_program.Settings;
    m_overwriteIndex = settings.Overwrite();
    // A mode no button stands for (the options file does not check the range) selects none.
    m_overwriteGroup->setExclusive(false);
    for (int mode = 0; mode < 4; ++mode)
        optOverwrite[size_t(mode)]->setChecked(mode == m_overwriteIndex);
    m_overwriteGroup->setExclusive(true);
    for (size_t i = 0; i < kFlags.size(); ++i)
        m_checkBoxes[i]->setChecked((settings.*kFlags[i].get)());
}

void frmFSOptions::cmdOK_Click() {
    clsOndrelApp& settings = *m_program.Settings;
    if (txtDefPath->text() != settings.DefaultPath()) {
        // Drive names keep their case here: a mount point's case is part of its name.
        settings.setDefaultDrive(drvDefPath->Drive());
        settings.setDefaultPath(txtDefPath->text());
        (void)showDefaultPath();
    }
    for (size_t i = 0; i < kFlags.size(); ++i)
        (settings.*kFlags[i].set)(m_checkBoxes[i]->isChecked());
    settings.setOverwrite(qint16(m_overwriteIndex));
    m_program.MainViews->UpdtStagePropsList();
    accept();
}

void frmFSOptions::cmdHelp_Click() {
    ShowHelp(21 + tdgOptions->currentIndex(), HelpCommand::Context);
}

void frmFSOptions::cmdRestoreDefaults_Click() {
    clsOndrelApp& settings = *m_program.Settings;
    settings.RestoreDefaults(*m_program.MainPlacement);
    settings.LocateMainScreen(*m_program.MainPlacement);
    Form_Load();
}

} // namespace ondrel
