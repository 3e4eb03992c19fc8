#include "ui/main/frmMain.h"

#include "app/Module1.h"
#include "platform/MsgBox.h"
#include "platform/SlotBarrier.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/main/MainIcons.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDate>
#include <QFrame>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>

namespace ondrel {

frmMain::frmMain(ProgramObjects& program) : m_program(program), m_placement(*this) {
    setObjectName(QStringLiteral("frmMain"));
    setWindowTitle(QStringLiteral("File Ondrel 3.0"));
    setWindowIcon(programIcon());
    program.MainForm = this;
    program.MainViews = this;
    program.MainPlacement = &m_placement;
    buildControls();
    buildMenus();
    buildToolBar();
    buildContextMenu();
}

frmMain::~frmMain() = default;

clsOndrelApp& frmMain::settings() const {
    return *m_program.Settings;
}

clsSpecFile& frmMain::spec() const {
    return *m_program.Spec;
}

void frmMain::buildControls() {
    // Everything below the menu bar and above the status bar is laid out by hand, in twips, from
    // the splitter position (frmMainLayout.cpp); the tool bar is part of it, so that the panes
    // move up when it is hidden.
    m_client = new QWidget(this);
    m_client->setObjectName(QStringLiteral("client"));
    setCentralWidget(m_client);

    tbrToolBar = new QToolBar(m_client);
    tbrToolBar->setObjectName(QStringLiteral("tbrToolBar"));
    tbrToolBar->setAccessibleName(QStringLiteral("Toolbar"));
    // Images of the size the bar was designed for, so that every button shows at the window's
    // first size; Qt draws them from the 32-pixel bitmaps on a screen of twice the density.
    const int image = scale().toPixels(MainWindowLayout::kToolbarImage);
    tbrToolBar->setIconSize(QSize(image, image));

    picTitles = new QWidget(m_client);
    picTitles->setObjectName(QStringLiteral("picTitles"));
    for (int i = 0; i < 2; ++i) {
        lblSpecInfo[i] = new QLabel(picTitles);
        lblSpecInfo[i]->setObjectName(QStringLiteral("lblSpecInfo(%1)").arg(i));
        QFont bold = lblSpecInfo[i]->font();
        bold.setBold(true);
        lblSpecInfo[i]->setFont(bold);
    }
    // The caption shows the open spec's name; with no accessible name of its own, that name is
    // what a screen reader reads.
    lblSpecInfo[0]->setAccessibleDescription(QStringLiteral("Spec file"));
    lblSpecInfo[1]->setText(QStringLiteral("Staging Options"));
    picTitles->setFixedHeight(lblSpecInfo[0]->sizeHint().height() + 6);

    tvwSpecs = new QTreeWidget(m_client);
    tvwSpecs->setObjectName(QStringLiteral("tvwSpecs"));
    tvwSpecs->setAccessibleName(QStringLiteral("Spec tree"));
    tvwSpecs->setHeaderHidden(true);
    tvwSpecs->setSelectionMode(QAbstractItemView::SingleSelection);
    tvwSpecs->viewport()->installEventFilter(this);
    // The splitter may be dropped on the tree (frmMainLayout.cpp); nothing else is.
    tvwSpecs->viewport()->setAcceptDrops(true);
    tvwSpecs->installEventFilter(this);
    // A click runs the node click even on the node already selected; a move by the keyboard
    // changes the current node without a click.
    connect(tvwSpecs, &QTreeWidget::itemClicked, this,
            guarded(QStringLiteral("tvwSpecs_NodeClick"),
                    [this](QTreeWidgetItem* node) { tvwSpecs_NodeClick(node); }));
    connect(tvwSpecs, &QTreeWidget::currentItemChanged, this,
            guarded(QStringLiteral("tvwSpecs_NodeClick"),
                    [this](QTreeWidgetItem* current) { tvwSpecs_NodeClick(current); }));

    lvwSPProps = new QTreeWidget(m_client);
    lvwSPProps->setObjectName(QStringLiteral("lvwSPProps"));
    lvwSPProps->setAccessibleName(QStringLiteral("Staging options"));
    lvwSPProps->setRootIsDecorated(false);
    lvwSPProps->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lvwSPProps->setSelectionBehavior(QAbstractItemView::SelectRows);
    lvwSPProps->header()->setStretchLastSection(false);

    imgSplitter = new QWidget(m_client);
    imgSplitter->setObjectName(QStringLiteral("imgSplitter"));
    imgSplitter->setAccessibleName(QStringLiteral("Splitter"));
    imgSplitter->setAccessibleDescription(
        QStringLiteral("Left and Right arrow keys move the border between the panes"));
    imgSplitter->setCursor(Qt::SplitHCursor);
    imgSplitter->setFocusPolicy(Qt::TabFocus);
    imgSplitter->installEventFilter(this);

    picSplitter = new QFrame(m_client);
    picSplitter->setObjectName(QStringLiteral("picSplitter"));
    picSplitter->setFrameShape(QFrame::NoFrame);
    picSplitter->setAutoFillBackground(true);
    picSplitter->setBackgroundRole(QPalette::Dark);
    picSplitter->hide();

    setTabOrder(tvwSpecs, imgSplitter);
    setTabOrder(imgSplitter, lvwSPProps);

    // The status bar: a text panel "Status" and the date and time, which it keeps current itself.
    statusBar()->setObjectName(QStringLiteral("sbStatusBar"));
    statusBar()->setAccessibleName(QStringLiteral("Status bar"));
    auto* status = new QLabel(QStringLiteral("Status"), statusBar());
    status->setObjectName(QStringLiteral("Status"));
    statusBar()->addWidget(status, 1);
    m_statusDate = new QLabel(statusBar());
    m_statusDate->setObjectName(QStringLiteral("Date"));
    m_statusDate->setAccessibleDescription(QStringLiteral("Date"));
    m_statusTime = new QLabel(statusBar());
    m_statusTime->setObjectName(QStringLiteral("Time"));
    m_statusTime->setAccessibleDescription(QStringLiteral("Time"));
    statusBar()->addPermanentWidget(m_statusDate);
    statusBar()->addPermanentWidget(m_statusTime);
    auto updateClock = [this] {
        const QLocale locale = QLocale::system();
        const QDateTime now = QDateTime::currentDateTime();
        m_statusDate->setText(locale.toString(now.date(), QLocale::ShortFormat));
        m_statusTime->setText(locale.toString(now.time(), QLocale::ShortFormat));
    };
    updateClock();
    auto* clock = new QTimer(this);
    clock->setInterval(1000);
    connect(clock, &QTimer::timeout, this, updateClock);
    clock->start();
}

void frmMain::Show() {
    if (!m_loaded) {
        m_loaded = true;
        Form_Load();
    }
    show();
}

void frmMain::Form_Load() {
    bFormLoaded = false;
    settings().LocateMainScreen(m_placement);
    setMinimumWidth(scale().toPixels(MainWindowLayout::kMinWindowWidth));
    if (settings().ShowStageOpts())
        ShowStageOpts();
    else
        HideStageOpts();
    if (settings().ShowToolbar())
        ShowToolbar();
    else
        HideToolbar();
    bFormLoaded = true;
    SizeControls(settings().SplitterLoc());
    m_dialogInitDir = m_program.programDirectory;
    RefreshMRU(QStringLiteral("Startup"), QString(), QString());

    lvwSPProps->setHeaderLabels({QStringLiteral("Option"), QStringLiteral("Setting")});
    static const std::pair<const char*, const char*> kRows[] = {
        {"Create a Staging Log:", "CreateLog"},
        {"Show error messages:", "ShowErrMsgs"},
        {"Include subdirectories:", "InclSubDirs"},
        {"Incl. files w/ Archive attribute:", "InclArc"},
        {"Incl. files w/ Hidden attribute:", "InclHid"},
        {"Incl. files w/ Read-Only attribute:", "InclRO"},
        {"Incl. files w/ System attribute:", "InclSys"},
        {"Move source files:", "DelSource"},
        {"Create directories:", "CreateDirs"},
        {"Overwrite existing files:", "Overwrite"},
        {"Reset Archive attribute:", "ResetArchive"},
    };
    lvwSPProps->clear();
    for (const auto& [label, key] : kRows) {
        auto* row = new QTreeWidgetItem(lvwSPProps, {QString::fromLatin1(label), QString()});
        row->setData(0, Qt::UserRole, QString::fromLatin1(key));
        // The column is narrow at the window's first size: the whole label shows on hover.
        row->setToolTip(0, row->text(0));
    }
    UpdtStagePropsList();
    mnuFileNewSpecs_Click();
}

void frmMain::closeEvent(QCloseEvent* event) {
    bool Cancel = false;
    Form_Unload(Cancel);
    if (Cancel)
        event->ignore();
    else
        event->accept();
}

void frmMain::Form_Unload(bool& Cancel) {
    clsSpecFile& current = spec();
    if (current.Dirty()) {
        const MsgAnswer answer =
            MsgBox(QStringLiteral("Save changes to ") + current.Name() + u'?',
                   MsgButtons::YesNoCancel, MsgIcon::Question, QStringLiteral("Save Spec File?"));
        if (answer == MsgAnswer::Cancel) {
            Cancel = true;
            return;
        }
        if (answer == MsgAnswer::Yes) {
            current.SaveSpecFile();
            RefreshMRU(QStringLiteral("Save"), current.Name(), current.Path());
        }
    }
    // The other windows go first, the most recently opened first.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (auto it = windows.crbegin(); it != windows.crend(); ++it) {
        if (*it != this && (*it)->isVisible())
            (*it)->close();
    }
    SaveMRU();
    settings().setLeft(static_cast<qint32>(std::lround(m_placement.Left())));
    settings().setTop(static_cast<qint32>(std::lround(m_placement.Top())));
    settings().WriteOPTFile();
}

} // namespace ondrel
