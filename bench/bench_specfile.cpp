// Times loading and saving spec files of growing size, to show that the cost grows linearly with
// the number of entries. Usage: bench_specfile [DIRECTORY]
#include "platform/MsgBox.h"
#include "spec/clsSpecFile.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

using namespace ondrel;

namespace {

// A spec of `destinations` destination paths: 10 source paths of 10 file groups each.
void build(clsSpecFile& spec, int destinations) {
    const int perGroup = destinations / 100;
    for (int i = 0; i < 10; ++i) {
        auto sp = spec.SPs().Add(QStringLiteral("/projects/site%1").arg(i));
        sp->setInclSubDirs(i % 2 == 0);
        for (int j = 0; j < 10; ++j) {
            auto fg = sp->FGs().Add(QStringLiteral("*.t%1;*.u%1").arg(j));
            for (int k = 0; k < perGroup; ++k)
                fg->DPs().Add(
                    QStringLiteral("/stage/mirror%1/site%2/group%3").arg(k).arg(i).arg(j));
        }
    }
}

} // namespace

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
        build(spec, n);
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
