// Times staging from the main window against the headless stager's run, start-up excluded, in
// one process that is already up, the two taking turns.
// Usage: bench_windowstage SOURCE OUT OPTIONS [ROUNDS]   (run it with QT_QPA_PLATFORM=offscreen)
// Each run stages all of SOURCE with its subdirectories to a new directory: OUT/window-N and
// OUT/stager-N in round N. Prints each round, then "median window|stager SECONDS" and
// "median ratio R", the median of the rounds' window / stager, and the processor time (user and
// system) of each side: what the window adds, apart from the disk's waits.
//
// What is timed on each side is what follows the program's start-up and the spec's load:
// - the window: File > Stage Files (mnuFileStageFiles_Click) on the opened spec, without a log,
//   up to the summary box closing, accepted as soon as it shows;
// - the headless stager: what ondrel-stage's main does once its options are read and its spec is
//   loaded: its terminal host (the same TerminalHost, progress hidden and answers from the
//   command line, as under bench/run) and a StagingRun, run to its end and its summary printed.
// Timing both in one process measures the runs alone, where timing ondrel-stage and taking off
// a separately measured start-up would leave the difference of two noisy figures. Before each
// run, untimed, the file system is synced and the spec is loaded (the window opens it through
// its File > Open command).
#include "app/ScreenMetrics.h"
#include "bench/BenchTimes.h"
#include "bench/SummaryCloser.h"
#include "cli/TerminalHost.h"
#include "platform/MsgBox.h"
#include "platform/ScriptedFileDialog.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingRun.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/main/QtScreenMetrics.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <cstdio>
#include <ctime>
#include <unistd.h>

using namespace ondrel;

namespace {

// A spec staging all of source, with its subdirectories, to dest; returns its full name.
QString writeSpec(const QString& dir, const QString& name, const QString& source,
                  const QString& dest) {
    clsSpecFile spec;
    auto sp = spec.SPs().Add(source);
    sp->setInclSubDirs(true);
    sp->FGs().Add(QStringLiteral("*.*"))->DPs().Add(dest);
    spec.setPath(dir + u'/');
    spec.setName(name);
    spec.SaveSpecFile();
    return spec.Path() + spec.Name();
}

// The process's processor time so far, user and system, in seconds.
double cpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const QStringList args = QApplication::arguments();
    const int rounds = args.size() > 4 ? args[4].toInt() : 7;
    if (args.size() < 4 || args.size() > 5 || rounds < 1) {
        std::fputs("usage: bench_windowstage SOURCE OUT OPTIONS [ROUNDS]\n", stderr);
        return 2;
    }
    const QString source = QDir(args[1]).absolutePath();
    const QString out = QDir(args[2]).absolutePath();
    const QString options = args[3];
    // A message box means the run did not go as a benchmark run should.
    setMsgBoxHandler([](const MsgBoxRequest& r) {
        qFatal("bench_windowstage: message box: %s: %s", qPrintable(r.title), qPrintable(r.prompt));
        return MsgAnswer::OK;
    });
    QTemporaryDir scratch;

    ProgramObjects program(scratch.path());
    const std::unique_ptr<frmMain> main = createProgramObjects(program, primaryScreenMetrics());
    program.Settings->ReadOPTFile(options);
    if (program.Settings->CreateLog())
        qFatal("bench_windowstage: %s asks for a log", qPrintable(options));
    main->Show();
    QCoreApplication::processEvents();
    SummaryCloser closer;
    app.installEventFilter(&closer);

    const FixedScreen screen(9600, 7200);
    clsOndrelApp settings(screen, scratch.path());
    settings.ReadOPTFile(options);
    const QStringList various{QString()};

    std::vector<double> window, stager;
    std::vector<double> windowCpu, stagerCpu;
    QElapsedTimer timer;
    double cpuStart = 0;
    auto stageFromWindow = [&](int round) {
        ScriptedFileDialog dialog;
        dialog.queue(writeSpec(scratch.path(), QStringLiteral("window.spc"), source,
                               out + QStringLiteral("/window-%1").arg(round)));
        main->mnuFileOpenSpecs_Click();
        QCoreApplication::processEvents();
        const int summaries = closer.shown;
        ::sync();
        timer.start();
        cpuStart = cpuSeconds();
        main->mnuFileStageFiles_Click();
        window.push_back(timer.nsecsElapsed() / 1e9);
        windowCpu.push_back(cpuSeconds() - cpuStart);
        if (closer.shown != summaries + 1)
            qFatal("bench_windowstage: the window showed no summary");
    };
    auto stageHeadless = [&](int round) {
        clsSpecFile spec;
        if (!spec.LoadSpecFile(writeSpec(scratch.path(), QStringLiteral("stager.spc"), source,
                                         out + QStringLiteral("/stager-%1").arg(round))))
            qFatal("bench_windowstage: the spec did not load");
        ::sync();
        timer.start();
        cpuStart = cpuSeconds();
        TerminalHost host({}, TerminalHost::Asking::FromAnswers, TerminalHost::Progress::Hidden);
        DiskFileOps ops;
        StagingRun run(spec, settings, various, host, ops, nullptr, settings.programDirectory());
        run.setWorkers(StagingRun::defaultWorkers()); // as the stager's main does
        host.attach(run);
        {
            const ScopedMsgBoxHandler throughHost([&host](const MsgBoxRequest& request) {
                return host.ask(request.prompt, request.buttons, request.icon, request.title);
            });
            run.run();
        }
        stager.push_back(timer.nsecsElapsed() / 1e9);
        stagerCpu.push_back(cpuSeconds() - cpuStart);
        const RunState& state = run.state();
        if (state.Cancelled || !state.ProblemFiles.isEmpty())
            qFatal("bench_windowstage: the headless run had problems");
    };
    for (int r = 1; r <= rounds; ++r) {
        if (r % 2 == 1) {
            stageFromWindow(r);
            stageHeadless(r);
        } else {
            stageHeadless(r);
            stageFromWindow(r);
        }
        std::printf("round %d: window %.4f stager %.4f (processor %.4f, %.4f)\n", r, window.back(),
                    stager.back(), windowCpu.back(), stagerCpu.back());
        std::fflush(stdout);
    }
    std::printf("median window %.6f\nmedian stager %.6f\nmedian ratio %.4f\n", medianOf(window),
                medianOf(stager), medianRatio(window, stager));
    std::printf("median processor window %.6f\nmedian processor stager %.6f\n", medianOf(windowCpu),
                medianOf(stagerCpu));
    return 0;
}
