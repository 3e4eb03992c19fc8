#include "staging/StagingRun.h"

#include "app/Module1.h"
#include "app/clsOndrelApp.h"
#include "platform/Convert.h"
#include "platform/DirectoryHandles.h"
#include "platform/FileSystem.h"
#include "platform/NativePath.h"
#include "platform/NativeText.h"
#include "platform/Volumes.h"
#include "spec/clsSpecFile.h"
#include "staging/DirWalker.h"
#include "staging/RunCompletion.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"
#include "staging/StagingLog.h"

#include <QDir>
#include <QFile>
#include <QLocale>

namespace ondrel {

namespace {

// The general date-and-time form of the user's locale: short date and time with seconds.
QString generalDateTime(const QDateTime& when) {
    const QLocale locale = QLocale::system();
    QString timeFormat = locale.timeFormat(QLocale::LongFormat);
    timeFormat.remove(QStringLiteral(" t")).remove(QStringLiteral("t"));
    return locale.toString(when.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           locale.toString(when.time(), timeFormat.trimmed());
}

} // namespace

StagingRun::StagingRun(const clsSpecFile& spec, const clsOndrelApp& settings,
                       const QStringList& VariousFiles, StagingHost& host, StagingFileOps& ops,
                       StagingLog* log, const QString& programDirectory)
    : m_spec(spec), m_settings(settings), m_variousFiles(VariousFiles), m_host(host), m_ops(ops),
      m_log(log && log->isOpen() ? log : nullptr), m_programDirectory(programDirectory) {}

StagingRun::~StagingRun() = default;

void StagingRun::run() {
    Load();
    Activate();
    Unload();
}

bool StagingRun::showErrMsgs() const {
    return m_settings.ShowErrMsgs();
}

void StagingRun::log(const QString& line) {
    if (!logging())
        return;
    // The tabs are the log's own: they line up its values.
    const Result<void> written =
        m_log->writeLine(NativeText::display(line, NativeText::Tabs::Kept));
    if (!written.ok())
        logFailed(written.error());
}

void StagingRun::closeLog() {
    if (!m_log)
        return;
    const Result<void> closed = m_log->close();
    if (!closed.ok())
        logFailed(closed.error());
    m_log = nullptr;
}

void StagingRun::logFailed(const Error& error) {
    if (m_logFailed)
        return;
    m_logFailed = true;
    m_state.errorReported = true;
    // Asked whatever ShowErrMsgs says: the log cannot tell it, so nothing else would.
    m_host.ask(QStringLiteral("Unable to write the staging log ") +
                   NativeText::display(m_log->fileName()) + QStringLiteral(".  ") +
                   error.description(),
               MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Staging Log Error"));
}

void StagingRun::logError(const QString& text, const QByteArray& path) {
    m_state.errorReported = true;
    log(QStringLiteral("***") + text);
    m_host.reportFailure(NativeText::display(text), path);
}

MsgAnswer StagingRun::ask(const QByteArray& path, const QString& prompt, MsgButtons buttons,
                          MsgIcon icon, const QString& title) {
    if (path.isEmpty())
        return m_host.ask(prompt, buttons, icon, title);
    return m_host.askAbout(path, prompt, buttons, icon, title);
}

MsgAnswer StagingRun::reportError(const Error& error, const QString& stage, const QString& routine,
                                  MsgButtons buttons, const QByteArray& path) {
    logError(QStringLiteral("Error ") + QString::number(error.number()) + QStringLiteral(", ") +
                 error.description() + stage,
             path);
    if (!showErrMsgs())
        return MsgAnswer::OK;
    return ask(path, ErrorReportText(error), buttons, MsgIcon::None,
               routine + QStringLiteral(" Error"));
}

void StagingRun::addProblemFile(const QByteArray& path) {
    if (m_state.problemPaths.contains(path))
        return;
    m_state.problemPaths.insert(path);
    m_state.ProblemFiles += FileSystem::displayPath(path) + QStringLiteral("\r\n");
}

QByteArray StagingRun::nativePath(const QString& specPath) const {
    QString path = specPath;
    if (QDir::isRelativePath(path))
        path = QDir(m_spec.Path().isEmpty() ? QDir::currentPath() : m_spec.Path()).filePath(path);
    return NativePath::withoutTrailingSeparator(QFile::encodeName(path));
}

void StagingRun::addRoots() const {
    for (const auto& sp : m_spec.SPs()) {
        if (sp->Name() != QLatin1String("<various>"))
            DirectoryHandles::addRoot(nativePath(sp->Name()));
        for (const auto& fg : sp->FGs())
            for (const auto& dp : fg->DPs())
                DirectoryHandles::addRoot(nativePath(dp->Name()));
    }
}

void StagingRun::Load() {
    m_state = RunState();
    // The file system of the program's own directory is known to be usable.
    m_state.GoodDrives = {Volumes::mountPointOf(QFile::encodeName(m_programDirectory))};
    // A move's copies are watched on every drive from before its first write there.
    if (m_settings.DelSource())
        m_ops.watchWrites(m_state.GoodDrives.first());
    m_state.StartTime = QDateTime::currentDateTime();
    if (!m_log)
        return;

    struct OptionLine {
        const char* label;
        int tabs;
        QString value;
    };
    const OptionLine options[] = {
        {"Incl. files w/ Archive attribute:", 1, Convert::booleanText(m_settings.InclArc())},
        {"Incl. files w/ Hidden attribute:", 1, Convert::booleanText(m_settings.InclHid())},
        {"Incl. files w/ Read-Only attribute:", 1, Convert::booleanText(m_settings.InclRO())},
        {"Incl. files w/ System attribute:", 1, Convert::booleanText(m_settings.InclSys())},
        {"Move source files:", 3, Convert::booleanText(m_settings.DelSource())},
        {"Create directories:", 3, Convert::booleanText(m_settings.CreateDirs())},
        {"Overwrite existing files:", 2, OverwriteModeText(m_settings.Overwrite())},
        {"Reset Archive attribute:", 2, Convert::booleanText(m_settings.ResetArchive())},
    };
    // The header is written line by line; the first failure (a full disk) ends it, is reported
    // once, and the run goes on.
    auto write = [this](const QString& line) { m_log->writeLine(line).throwIfFailed(); };
    try {
        write(QStringLiteral("Staging started:  ") + generalDateTime(m_state.StartTime));
        write(QString());
        write(QStringLiteral("Staging Options:"));
        for (const OptionLine& option : options)
            write(QLatin1String(option.label) + QString(option.tabs, u'\t') + option.value);
        write(QString());
        m_log->flush().throwIfFailed();
    } catch (const Error& error) {
        reportError(error, QStringLiteral(" occurred while initiating the staging process."),
                    QStringLiteral("Form_Load"));
    }
}

void StagingRun::Activate() {
    m_host.setBusy(true);
    // The walk reaches each file through handles on the directories it is in; they are given
    // up when the walk ends.
    const DirectoryHandles::Scope handles;
    addRoots();
    DirWalker(*this).Activate();
}

void StagingRun::Unload() {
    RunCompletion(*this).Unload();
    m_host.setBusy(false);
}

} // namespace ondrel
