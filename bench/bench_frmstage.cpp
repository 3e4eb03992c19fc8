// Stages a spec file through the staging window, as the windowed program does, and closes the
// summary box as soon as it shows: the windowed counterpart of ondrel-stage for bench/run.
// Usage: bench_frmstage SPEC OPTIONS   (run it with QT_QPA_PLATFORM=offscreen)
// Exit status: 0 when every file was staged, 1 on problems, 2 on wrong usage.
#include "app/ScreenMetrics.h"
#include "app/clsOndrelApp.h"
#include "bench/SummaryCloser.h"
#include "platform/MsgBox.h"
#include "spec/clsSpecFile.h"
#include "staging/StagingFileOps.h"
#include "staging/frmStage.h"

#include <QApplication>
#include <QFileInfo>

#include <cstdio>

using namespace ondrel;

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 3) {
        std::fputs("usage: bench_frmstage SPEC OPTIONS\n", stderr);
        return 2;
    }
    // Any message box means the run did not go as a benchmark run should: report it and go on
    // with its first button, and fail at the end.
    bool asked = false;
    setMsgBoxHandler([&asked](const MsgBoxRequest& request) {
        asked = true;
        std::fprintf(stderr, "bench_frmstage: message box: %s: %s\n", qPrintable(request.title),
                     qPrintable(request.prompt));
        return firstButton(request.buttons);
    });

    const FixedScreen screen(9600, 7200);
    const QFileInfo specInfo(args[1]);
    clsOndrelApp settings(screen, specInfo.absolutePath());
    try {
        settings.ReadOPTFile(args[2]);
    } catch (const Error& error) {
        std::fprintf(stderr, "bench_frmstage: options file %s: %s\n", qPrintable(args[2]),
                     qPrintable(error.description()));
        return 2;
    }
    clsSpecFile spec;
    spec.setName(specInfo.fileName());
    spec.setPath(specInfo.absolutePath() + u'/');
    if (!spec.LoadSpecFile(specInfo.absoluteFilePath()))
        return 2;

    SummaryCloser closer;
    app.installEventFilter(&closer);
    DiskFileOps ops;
    const QStringList various{QString()};
    frmStage stage(spec, settings, various, ops, nullptr, settings.programDirectory());
    stage.exec();

    const RunState& state = stage.run().state();
    const bool problems = state.Cancelled || !state.ProblemFiles.isEmpty() || asked;
    if (closer.shown == 0)
        std::fputs("bench_frmstage: the summary box never showed\n", stderr);
    return problems || closer.shown == 0 ? 1 : 0;
}
