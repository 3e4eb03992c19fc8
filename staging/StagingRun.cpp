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
#include "staging/TransferAhead.h"

#include <QDir>
#include <QFile>

#include <QLocale>

#include <algorithm>
#include <optional>
#include <thread>

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
    : m_context(spec, settings, VariousFiles, host, ops, log),
      m_programDirectory(programDirectory) {}

StagingRun::~StagingRun() = default;

void StagingRun::run() {
    Load();
    Activate();
    Unload();
}

void StagingRun::Load() {
    RunState& state = m_context.state();
    const clsOndrelApp& settings = m_context.settings();
    StagingLog* const log = m_context.logFile();
    state = RunState();
    // The file system of the program's own directory is known to be usable.
    state.GoodDrives = {Volumes::mountPointOf(QFile::encodeName(m_programDirectory))};
    // A move's copies are watched on every drive from before its first write there.
    if (settings.DelSource())
        m_context.ops().watchWrites(state.GoodDrives.first());
    state.StartTime = QDateTime::currentDateTime();
    if (!log)
        return;

    struct OptionLine {
        const char* label;
        int tabs;
        QString value;
    };
    const OptionLine options[] = {
        {"Incl. files w/ Archive attribute:", 1, Convert::booleanText(settings.InclArc())},
        {"Incl. files w/ Hidden attribute:", 1, Convert::booleanText(settings.InclHid())},
        {"Incl. files w/ Read-Only attribute:", 1, Convert::booleanText(settings.InclRO())},
        {"Incl. files w/ System attribute:", 1, Convert::booleanText(settings.InclSys())},
        {"Move source files:", 3, Convert::booleanText(settings.DelSource())},
        {"Create directories:", 3, Convert::booleanText(settings.CreateDirs())},
        {"Overwrite existing files:", 2, OverwriteModeText(settings.Overwrite())},
        {"Reset Archive attribute:", 2, Convert::booleanText(settings.ResetArchive())},
    };
    // The header is written line by line; the first failure (a full disk) ends it, is reported
    // once, and the run goes on.
    auto write = [log](const QString& line) { log->writeLine(line).throwIfFailed(); };
    try {
        write(QStringLiteral("Staging started:  ") + generalDateTime(state.StartTime));
        write(QString());
        write(QStringLiteral("Staging Options:"));
        for (const OptionLine& option : options)
            write(QLatin1String(option.label) + QString(option.tabs, u'\t') + option.value);
        write(QString());
        log->flush().throwIfFailed();
    } catch (const Error& error) {
        m_context.reportError(error,
                              QStringLiteral(" occurred while initiating the staging process."),
                              QStringLiteral("Form_Load"));
    }
}

void StagingRun::Activate() {
    m_context.host().setBusy(true);
    m_context.makePlan();
    // The walk reaches each file through handles on the directories it is in; they are given
    // up when the walk ends.
    const DirectoryHandles::Scope handles;
    m_context.plan().addRoots();
    std::optional<TransferAhead> ahead;
    if (copiesAhead()) {
        ahead.emplace(m_context.ops(), m_context.plan(), m_context.workers(),
                      m_context.settings().Overwrite());
        m_context.setAhead(&*ahead);
    }
    DirWalker(m_context).Activate();
    // Whatever was transferred and not reached is given up before the run goes on.
    m_context.setAhead(nullptr);
}

int StagingRun::defaultWorkers() {
    // Beyond 8 the run's own thread, which commits every copy in turn, is what sets the pace.
    return int(std::clamp(std::thread::hardware_concurrency(), 1u, 8u));
}

bool StagingRun::copiesAhead() const {
    // Copied ahead, a file could be read before the run has done what an earlier step does to
    // it (the Archive reset, a move's bookkeeping), or copied only to be left out by a filter.
    const clsOndrelApp& settings = m_context.settings();
    return m_context.workers() > 1 && m_context.ops().transfersAhead() && !settings.DelSource() &&
           !settings.ResetArchive() && settings.InclArc() && settings.InclHid() &&
           settings.InclRO() && settings.InclSys();
}

void StagingRun::Unload() {
    const RunSummary summary = RunCompletion(m_context).Unload();
    m_summaryTitle = summary.title;
    m_summaryText = summary.text;
    m_context.host().setBusy(false);
}

} // namespace ondrel
