// Opens the spec editor on large specs through the main window, as a user does, and times the
// opening (to the first paint of the page in front) and each page switch (to its repaint).
// Usage: bench_editor [ROUNDS]   (run it with QT_QPA_PLATFORM=offscreen)
// Prints one line per shape and step: "median SHAPE STEP SECONDS".
#include "app/ScreenMetrics.h"
#include "platform/ScriptedFileDialog.h"
#include "ui/controls/ProgramObjects.h"
#include "ui/editor/frmCESpecs.h"
#include "ui/main/SubMain.h"
#include "ui/main/frmMain.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <map>
#include <vector>

using namespace ondrel;

namespace {

struct Shape {
    const char* name;
    int sourcePaths, fileGroups, destinations; // per parent
};

// 5,000 destination paths, once as one long list and once spread over the tree.
const Shape kShapes[] = {{"1x1x5000", 1, 1, 5000}, {"50x10x10", 50, 10, 10}};

QByteArray specText(const Shape& shape) {
    QByteArray sources = "[SourcePaths]\r\n", isd = "[ISD]\r\n", rest;
    for (int i = 1; i <= shape.sourcePaths; ++i) {
        const QByteArray sp = "SP" + QByteArray::number(i);
        sources += sp + "=/srv/source" + QByteArray::number(i) + "\r\n";
        isd += sp + "=True\r\n";
        rest += "[" + sp + "FGs]\r\n";
        for (int j = 1; j <= shape.fileGroups; ++j)
            rest += "FG" + QByteArray::number(j) + "=*.F" + QByteArray::number(j) + "\r\n";
        for (int j = 1; j <= shape.fileGroups; ++j) {
            rest += "[" + sp + "FG" + QByteArray::number(j) + "DPs]\r\n";
            for (int k = 1; k <= shape.destinations; ++k)
                rest += "DP" + QByteArray::number(k) + "=/srv/stage/" + QByteArray::number(i) +
                        "/" + QByteArray::number(j) + "/" + QByteArray::number(k) + "\r\n";
        }
    }
    return sources + isd + rest;
}

// Waits until the widget has been painted again.
void painted(QWidget* widget) {
    widget->repaint();
    QApplication::processEvents();
}

double seconds(const QElapsedTimer& t) {
    return double(t.nsecsElapsed()) / 1e9;
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, atoi(argv[1])) : 7;
    QTemporaryDir dir;
    ProgramObjects objects(dir.path());
    std::unique_ptr<frmMain> main = createProgramObjects(objects, FixedScreen(9600, 7200));
    objects.Settings->ReadOPTFile();
    main->Show();

    std::map<std::string, std::vector<double>> times;
    for (const Shape& shape : kShapes) {
        const QString file = dir.filePath(QString::fromLatin1(shape.name) + ".spc");
        QFile out(file);
        if (!out.open(QIODevice::WriteOnly) || out.write(specText(shape)) < 0)
            return 2;
        out.close();
        {
            ScriptedFileDialog dialogs;
            dialogs.queue(file);
            main->mnuFileOpenSpecs_Click();
        }
        if (objects.Spec->SPs().Count() != shape.sourcePaths) {
            std::fprintf(stderr, "bench_editor: %s did not load\n", shape.name);
            return 1;
        }
        frmCESpecs& editor = *objects.CESpecs;
        for (int r = 0; r < rounds; ++r) {
            QElapsedTimer t;
            // The editor is modal: what follows runs once it is up, from its event loop.
            QTimer::singleShot(0, &editor, [&] {
                painted(&editor);
                times[std::string(shape.name) + " open"].push_back(seconds(t));
                // The last page, whose list is the longest, then the groups, then back.
                for (int page : {2, 1, 0}) {
                    QElapsedTimer s;
                    s.start();
                    editor.tdgCESpecs->setCurrentIndex(page);
                    painted(&editor);
                    times[std::string(shape.name) + " page" + std::to_string(page)].push_back(
                        seconds(s));
                }
                editor.cmdCancel_Click();
            });
            t.start();
            main->mnuEditSpecs_Click();
        }
    }
    for (auto& [step, values] : times) {
        std::sort(values.begin(), values.end());
        const std::string shape = step.substr(0, step.find(' '));
        std::printf("median %s %s %.4f\n", shape.c_str(), step.substr(step.find(' ') + 1).c_str(),
                    values[values.size() / 2]);
    }
    return 0;
}
