// Times loading and saving spec files of growing size, to show that the cost grows linearly with
// the number of entries. Usage: bench_specfile [DIRECTORY]
#include "bench/BenchSpecs.h"
#include "platform/MsgBox.h"
#include "spec/clsSpecFile.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

using namespace ondrel;

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QTemporaryDir scratch;
    const QString dir = argc > 1 ? QString::fromLocal8Bit(argv[1]) : scratch.path();
    setMsgBoxHandler([](const MsgBoxRequest& r) {
        qFatal("unexpected message: %s", qPrintable(r.prompt));
        return MsgAnswer::OK;
    });
    QTextStream out(stdout);
    out << "destinations  save ms  load ms  load us/entry\n";
    for (int n : {12500, 25000, 50000, 100000, 200000}) {
        clsSpecFile spec;
        buildBenchSpec(spec, n);
        spec.setPath(dir + QStringLiteral("/"));
        spec.setName(QStringLiteral("bench%1.spc").arg(n));
        QElapsedTimer timer;
        timer.start();
        spec.SaveSpecFile();
        const qint64 saveMs = timer.elapsed();
        clsSpecFile loaded;
        timer.restart();
        if (!loaded.LoadSpecFile(spec.Path() + spec.Name()))
            return 1;
        const qint64 loadNs = timer.nsecsElapsed();
        out << qSetFieldWidth(12) << n << qSetFieldWidth(9) << saveMs << loadNs / 1000000
            << qSetFieldWidth(15) << double(loadNs) / 1000.0 / n << qSetFieldWidth(0) << "\n";
        out.flush();
    }
    return 0;
}
