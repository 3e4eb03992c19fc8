// Times opening a spec of 50,000 destination paths through the main window (the spec loaded and
// its tree drawn) against loading it alone, in one process, the two taking turns.
// Usage: bench_openspec [ROUNDS [SPEC]]   (run it with QT_QPA_PLATFORM=offscreen; without a
// spec, one is made in a scratch directory)
// Prints each round, then "median load|open|painted SECONDS": the load alone, the File Open
// command until it returns, and until the tree has been painted; then "median ratio R", the
// median of the rounds' painted / load.
#include "bench/BenchSpecs.h"
#include "bench/BenchTimes.h"
#include "platform/MsgBox.h"
#include "platform/ScriptedFileDialog.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/main/QtScreenMetrics.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>

using namespace ondrel;

namespace {

constexpr int kDestinations = 50000;

// Runs the event loop until the widget has been painted; false when no paint came in time.
class PaintWaiter : public QObject {
public:
    explicit PaintWaiter(QWidget* widget) { widget->installEventFilter(this); }

    bool wait() {
        if (!m_painted) {
            QTimer::singleShot(10000, &m_loop, [this] { m_loop.exit(1); });
            m_loop.exec();
        }
        return m_painted;
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && !m_painted) {
            m_painted = true;
            m_loop.exit(0);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    QEventLoop m_loop;
    bool m_painted = false;
};

// Whether the tree shows the whole spec as drawn after opening it: every node, collapsed, the
// first one selected.
bool treeIsComplete(const QTreeWidget& tree) {
    int nodes = 0;
    bool collapsed = true;
    for (QTreeWidgetItemIterator it(const_cast<QTreeWidget*>(&tree)); *it != nullptr; ++it) {
        ++nodes;
        collapsed = collapsed && !(*it)->isExpanded();
    }
    return nodes == 10 + 100 + kDestinations && collapsed &&
           tree.currentItem() == tree.topLevelItem(0);
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const QStringList args = QApplication::arguments();
    const int rounds = args.size() > 1 ? args[1].toInt() : 7;
    if (rounds < 1 || args.size() > 3) {
        std::fputs("usage: bench_openspec [ROUNDS [SPEC]]\n", stderr);
        return 2;
    }
    setMsgBoxHandler([](const MsgBoxRequest& r) {
        qFatal("bench_openspec: unexpected message box: %s", qPrintable(r.prompt));
        return MsgAnswer::OK;
    });
    QTemporaryDir scratch;
    QString specFile = args.size() > 2 ? args[2] : QString();
    if (specFile.isEmpty()) {
        clsSpecFile spec;
        buildBenchSpec(spec, kDestinations);
        spec.setPath(scratch.path() + u'/');
        spec.setName(QStringLiteral("open50000.spc"));
        spec.SaveSpecFile();
        specFile = spec.Path() + spec.Name();
    }

    ProgramObjects program(scratch.path());
    const std::unique_ptr<frmMain> main = createProgramObjects(program, primaryScreenMetrics());
    program.Settings->ReadOPTFile();
    auto* tree = main->findChild<QTreeWidget*>(QStringLiteral("tvwSpecs"));
    {
        PaintWaiter shown(tree->viewport());
        main->Show();
        if (!shown.wait())
            qFatal("bench_openspec: the main window was never painted");
    }

    std::vector<double> load, open, painted;
    QElapsedTimer timer;
    auto timeLoad = [&] {
        clsSpecFile spec;
        timer.start();
        if (!spec.LoadSpecFile(specFile))
            qFatal("bench_openspec: %s did not load", qPrintable(specFile));
        load.push_back(timer.nsecsElapsed() / 1e9);
    };
    // Each open starts from a new spec, as the program does: the spec and tree it replaces are
    // a single node.
    auto timeOpen = [&] {
        main->mnuFileNewSpecs_Click();
        QCoreApplication::processEvents();
        ScriptedFileDialog dialog;
        dialog.queue(specFile);
        PaintWaiter drawn(tree->viewport());
        timer.start();
        main->mnuFileOpenSpecs_Click();
        open.push_back(timer.nsecsElapsed() / 1e9);
        if (!drawn.wait())
            qFatal("bench_openspec: the tree was never painted");
        painted.push_back(timer.nsecsElapsed() / 1e9);
        if (!treeIsComplete(*tree))
            qFatal("bench_openspec: the tree does not show the spec as opened");
    };
    for (int r = 0; r < rounds; ++r) {
        if (r % 2 == 0) {
            timeLoad();
            timeOpen();
        } else {
            timeOpen();
            timeLoad();
        }
        std::printf("round %d: load %.4f open %.4f painted %.4f\n", r + 1, load.back(), open.back(),
                    painted.back());
        std::fflush(stdout);
    }
    std::printf("median load %.6f\nmedian open %.6f\nmedian painted %.6f\nmedian ratio %.4f\n",
                medianOf(load), medianOf(open), medianOf(painted), medianRatio(painted, load));
    return 0;
}
