#include "staging/frmStage.h"

#include "platform/FileSystem.h"
#include "platform/NativeText.h"
#include "platform/SlotBarrier.h"
#include "staging/frmStageInfo.h"

#include <QApplication>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>
#include <QShowEvent>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace ondrel {

namespace {

// The window keeps its width whatever the paths are: a long path is shortened in its middle,
// where it says least (the drive and the file name stay).
constexpr int kWindowWidth = 520;

// How often a run lets the window serve the user (20 times a second): often enough that Cancel
// answers at once and the labels move smoothly, rarely enough that a run of small files pays
// nothing for it.
constexpr qint64 kYieldIntervalMs = 50;

QLabel* addLine(QGridLayout* grid, const QString& caption, const char* name) {
    const int row = grid->rowCount();
    auto* captionLabel = new QLabel(caption);
    auto* value = new QLabel;
    value->setObjectName(QLatin1String(name));
    // Paths are shown as they are: a file named "<b>x" is not markup.
    value->setTextFormat(Qt::PlainText);
    // The text is elided to the label's width; it must never widen the window.
    value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    value->setMinimumWidth(1);
    // A screen reader reads the value, whole, as the label's name (applyPending), and the
    // caption as what it is.
    value->setAccessibleDescription(QString(caption).remove(u':'));
    grid->addWidget(captionLabel, row, 0);
    grid->addWidget(value, row, 1);
    return value;
}

// A tool tip is taken as markup when it looks like markup; the full path must show as it is.
QString plainToolTip(const QString& text) {
    return QStringLiteral("<p style='white-space:pre'>") + text.toHtmlEscaped() +
           QStringLiteral("</p>");
}

} // namespace

frmStage::frmStage(const clsSpecFile& spec, const clsOndrelApp& settings,
                   const QStringList& VariousFiles, StagingFileOps& ops, StagingLog* log,
                   const QString& programDirectory, QWidget* parent)
    : QDialog(parent), m_run(spec, settings, VariousFiles, *this, ops, log, programDirectory) {
    m_run.setWorkers(StagingRun::defaultWorkers());
    setObjectName(QStringLiteral("frmStage"));
    setWindowTitle(QStringLiteral("Staging Files"));
    setModal(true);

    auto* grid = new QGridLayout;
    grid->setColumnStretch(1, 1);
    lblSP = addLine(grid, QStringLiteral("Source Path:"), "lblSP");
    lblFG = addLine(grid, QStringLiteral("File Group:"), "lblFG");
    lblCurDir = addLine(grid, QStringLiteral("Directory:"), "lblCurDir");
    lblSourceFile = addLine(grid, QStringLiteral("Copying:"), "lblSourceFile");
    lblDestFile = addLine(grid, QStringLiteral("To:"), "lblDestFile");
    m_lineLabels = {lblSP, lblFG, lblCurDir, lblSourceFile, lblDestFile};

    pbrProgress = new QProgressBar;
    pbrProgress->setObjectName(QStringLiteral("pbrProgress"));
    // The bar measures one directory at a time; a percentage would suggest the whole run.
    pbrProgress->setTextVisible(false);
    pbrProgress->setAccessibleName(QStringLiteral("Progress in this directory"));
    pbrProgress->setRange(0, 1);
    pbrProgress->setValue(0);

    lblCopiedCount = new QLabel;
    lblCopiedCount->setObjectName(QStringLiteral("lblCopiedCount"));
    cmdCancel = new QPushButton(QStringLiteral("Cancel"));
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    cmdCancel->setAutoDefault(false);
    connect(cmdCancel, &QPushButton::clicked, this,
            guarded(QStringLiteral("cmdCancel_Click"), this, &frmStage::cmdCancel_Click));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(lblCopiedCount, 1);
    buttons->addWidget(cmdCancel);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(6);
    layout->addWidget(pbrProgress);
    layout->addSpacing(6);
    layout->addLayout(buttons);

    setFixedSize(kWindowWidth, sizeHint().height());
    // Lay the labels out now, so that what the run shows before the window appears is elided
    // to the right width too.
    layout->activate();

    m_run.Load();
}

frmStage::~frmStage() {
    setBusy(false);
}

void frmStage::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (m_activated)
        return;
    m_activated = true;
    // Queued, so that the window is on screen before the walk takes over.
    QTimer::singleShot(0, this, &frmStage::Form_Activate);
}

void frmStage::Form_Activate() {
    if (m_unloaded)
        return;
    m_walking = true;
    m_run.Activate();
    m_walking = false;
    applyPending();
    accept();
}

void frmStage::done(int result) {
    if (m_walking) {
        m_run.Cancel();
        return;
    }
    if (!m_unloaded) {
        m_unloaded = true;
        m_run.Unload();
    }
    QDialog::done(result);
}

void frmStage::cmdCancel_Click() {
    m_run.Cancel();
}

MsgAnswer frmStage::ask(const QString& prompt, MsgButtons buttons, MsgIcon icon,
                        const QString& title) {
    // The question is about what the window shows, so show it first; and the user answers
    // with the ordinary pointer.
    applyPending();
    const bool wasBusy = m_busy;
    setBusy(false);
    // The prompt's lines are the run's; what they quote (a name from the spec file) may hold
    // anything, and is shown as the log shows it.
    QStringList lines = prompt.split(QStringLiteral("\r\n"));
    for (QString& line : lines)
        line = NativeText::display(line);
    const MsgAnswer answer = MsgBox(lines.join(QStringLiteral("\r\n")), buttons, icon, title);
    setBusy(wasBusy);
    return answer;
}

void frmStage::setLine(Line line, const QString& text) {
    m_pendingText[line] = text;
    m_lineIsPath[line] = false;
    m_textChanged[line] = true;
}

void frmStage::setPathLine(Line line, const QByteArray& path) {
    m_pendingPath[line] = path;
    m_lineIsPath[line] = true;
    m_textChanged[line] = true;
}

void frmStage::showSourcePath(const QString& text) {
    setLine(SourcePath, text);
}
void frmStage::showFileGroup(const QString& text) {
    setLine(FileGroup, text);
}
void frmStage::showDirectory(const QString& text) {
    setLine(Directory, text);
}
void frmStage::showSourceFile(const QByteArray& path) {
    setPathLine(SourceFile, path);
}
void frmStage::showDestFile(const QByteArray& path) {
    setPathLine(DestFile, path);
}

void frmStage::setProgressRange(int count) {
    m_progressMax = count;
    m_progressValue = 0;
    m_progressChanged = true;
}

void frmStage::advanceProgress() {
    ++m_progressValue;
    m_progressChanged = true;
}

void frmStage::showCopiedCount(int count) {
    m_copiedCount = count;
    m_copiedChanged = true;
}

void frmStage::yield() {
    if (m_sinceYield.isValid() && m_sinceYield.elapsed() < kYieldIntervalMs)
        return;
    applyPending();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    m_sinceYield.start();
}

void frmStage::applyPending() {
    for (int line = 0; line < LineCount; ++line) {
        if (!m_textChanged[line])
            continue;
        m_textChanged[line] = false;
        QLabel* label = m_lineLabels[line];
        // A name from the spec file may hold anything, as a file name may.
        m_pendingText[line] = m_lineIsPath[line] ? FileSystem::displayPath(m_pendingPath[line])
                                                 : NativeText::display(m_pendingText[line]);
        const QString& text = m_pendingText[line];
        const QString shown =
            label->fontMetrics().elidedText(text, Qt::ElideMiddle, label->contentsRect().width());
        label->setText(shown);
        label->setToolTip(shown == text ? QString() : plainToolTip(text));
        label->setAccessibleName(text);
    }
    if (m_progressChanged) {
        m_progressChanged = false;
        // An empty directory has nothing to measure; a range of 0..0 would show a busy bar.
        const int maximum = std::max(m_progressMax, 1);
        pbrProgress->setRange(0, maximum);
        pbrProgress->setValue(std::clamp(m_progressValue, 0, maximum));
    }
    if (m_copiedChanged) {
        m_copiedChanged = false;
        lblCopiedCount->setText(
            QStringLiteral("Files copied: %1").arg(QLocale::system().toString(m_copiedCount)));
    }
}

void frmStage::setBusy(bool busy) {
    if (busy == m_busy)
        return;
    m_busy = busy;
    // The pointer tells that the run is working while the Cancel button stays usable.
    if (busy)
        QApplication::setOverrideCursor(Qt::BusyCursor);
    else
        QApplication::restoreOverrideCursor();
}

void frmStage::showSummary(const QString& title, const QString& text) {
    applyPending();
    // The work is done; the user reads the summary with the ordinary pointer.
    setBusy(false);
    frmStageInfo info(title, text, this);
    info.exec();
}

} // namespace ondrel
