// ondrel-stage: stages a spec file without a window.

#include "app/ProgramDirectory.h"
#include "app/ScreenMetrics.h"
#include "app/clsOndrelApp.h"
#include "cli/DryRunFileOps.h"
#include "cli/StageOptions.h"
#include "cli/TerminalHost.h"
#include "platform/FileList.h"
#include "platform/MsgBox.h"
#include "platform/WholeFile.h"
#include "spec/clsSpecFile.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingLog.h"
#include "staging/StagingRun.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>
#include <memory>
#include <optional>
#include <unistd.h>

using namespace ondrel;

namespace {

// Exit statuses.
constexpr int kCompleted = 0;
constexpr int kProblems = 1;
constexpr int kCancelled = 2;
constexpr int kUsage = 64;
constexpr int kSpecNotLoaded = 65;

void printError(const QString& text) {
    std::fputs((QStringLiteral("ondrel-stage: ") + TerminalHost::terminalText(text) + u'\n')
                   .toUtf8()
                   .constData(),
               stderr);
}

// The staging options: the named options file, or the program's own one when there is none.
// Only a file the user named has to exist. False (with the reason printed) when they cannot be
// used.
bool readOptions(clsOndrelApp& settings, const QString& named) {
    const QString file = named.isEmpty() ? settings.OptionsFile() : named;
    if (!named.isEmpty()) {
        const Result<QByteArray> readable = WholeFile::read(named);
        if (!readable.ok()) {
            printError(QStringLiteral("cannot read the options file ") + named +
                       QStringLiteral(": ") + readable.error().description());
            return false;
        }
    }
    try {
        settings.ReadOPTFile(file);
    } catch (const Error& error) {
        // The error's source names the line that would not convert ("CreateDirs=maybe").
        printError(QStringLiteral("error ") + QString::number(error.number()) +
                   QStringLiteral(" reading the options file ") + file + QStringLiteral(": ") +
                   (error.source().isEmpty() ? QString() : error.source() + QStringLiteral(": ")) +
                   error.description());
        return false;
    }
    return true;
}

// The individually selected files; without a list, the empty selection (one empty entry).
// Nothing (with the reason printed) when the list cannot be read.
std::optional<QStringList> readVarious(const QString& fileName) {
    if (fileName.isEmpty())
        return QStringList{QString()};
    Result<QStringList> list = FileList::read(fileName);
    if (!list.ok()) {
        printError(QStringLiteral("cannot read the file list ") + fileName + QStringLiteral(": ") +
                   list.error().description());
        return std::nullopt;
    }
    if (list->isEmpty())
        return QStringList{QString()};
    // A path listed twice would be staged twice.
    list->removeDuplicates();
    return std::move(list).value();
}

// The loader reports its own failure through a message box: here, a line on standard error.
bool loadSpec(clsSpecFile& spec, const QString& fileName) {
    const QFileInfo info(fileName);
    spec.setName(info.fileName());
    spec.setPath(info.absolutePath() + u'/');
    const ScopedMsgBoxHandler toTerminal([](const MsgBoxRequest& request) {
        std::fputs((request.title + QStringLiteral(": ") +
                    TerminalHost::terminalText(request.prompt) + u'\n')
                       .toUtf8()
                       .constData(),
                   stderr);
        return firstButton(request.buttons);
    });
    return spec.LoadSpecFile(info.absoluteFilePath());
}

bool openLog(StagingLog& log, const QString& fileName) {
    const Result<void> opened = log.open(fileName);
    if (!opened.ok())
        printError(QStringLiteral("cannot open the log file ") + fileName + QStringLiteral(": ") +
                   opened.error().description());
    return opened.ok();
}

// 0 only when nothing went wrong: any error the run reported (a line of the log, a box) counts,
// also one that left no problem file behind, such as a directory that could not be read.
int exitStatus(const RunState& state) {
    if (state.Cancelled)
        return kCancelled;
    if (state.errorReported || !state.ProblemFiles.isEmpty() || !state.UndeletedFiles.isEmpty())
        return kProblems;
    return kCompleted;
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const StageOptions options = StageOptions::parse(app.arguments().mid(1));
    if (!options.error.isEmpty()) {
        printError(options.error);
        std::fputs(StageOptions::usage().toUtf8().constData(), stderr);
        return kUsage;
    }
    if (options.action == StageOptions::Action::Help) {
        std::fputs(StageOptions::usage().toUtf8().constData(), stdout);
        return kCompleted;
    }
    if (options.action == StageOptions::Action::Version) {
        std::fputs("ondrel-stage " ONDREL_VERSION "\n", stdout);
        return kCompleted;
    }
    // Before anything is opened: from the moment the log exists, Ctrl-C cancels the run.
    TerminalHost::installInterruptHandlers();

    const FixedScreen screen(9600, 7200);
    clsOndrelApp settings(screen, ProgramDirectory());
    if (!readOptions(settings, options.optionsFile))
        return kUsage;
    const std::optional<QStringList> various = readVarious(options.variousFile);
    if (!various)
        return kUsage;
    clsSpecFile spec;
    if (!loadSpec(spec, options.specFile))
        return kSpecNotLoaded;

    StagingLog log;
    using LogChoice = StageOptions::LogChoice;
    // A dry run leaves the log of the last real run alone unless a log is asked for by name.
    if (options.log == LogChoice::File ||
        (options.log == LogChoice::FromOptions && settings.CreateLog() && !options.dryRun)) {
        const QString fileName =
            options.log == LogChoice::File ? options.logFile : QStringLiteral("Staging.log");
        if (!openLog(log, fileName))
            return kUsage;
    }

    const bool interactive = !options.batch && ::isatty(STDIN_FILENO);
    const bool showProgress = ::isatty(STDERR_FILENO) && !options.quiet;
    TerminalHost host(
        {options.overwriteAnswer, options.errorAnswer, options.questionAnswer},
        interactive ? TerminalHost::Asking::OnTerminal : TerminalHost::Asking::FromAnswers,
        showProgress ? TerminalHost::Progress::Shown : TerminalHost::Progress::Hidden);
    std::unique_ptr<StagingFileOps> ops;
    if (options.dryRun)
        ops =
            std::make_unique<DryRunFileOps>([&host](const QString& line) { host.printLine(line); });
    else
        ops = std::make_unique<DiskFileOps>();

    StagingRun run(spec, settings, *various, host, *ops, log.isOpen() ? &log : nullptr,
                   settings.programDirectory());
    run.setWorkers(options.jobs > 0 ? options.jobs : StagingRun::defaultWorkers());
    host.attach(run);
    // Any box the run shows outside the host's questions is asked the same way.
    {
        const ScopedMsgBoxHandler throughHost([&host](const MsgBoxRequest& request) {
            return host.ask(request.prompt, request.buttons, request.icon, request.title);
        });
        run.run();
    }
    if (options.dryRun)
        std::fputs("dry run: nothing was changed\n", stdout);
    return exitStatus(run.state());
}
