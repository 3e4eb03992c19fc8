#include "ui/help/QtHelp.h"

#include "platform/MsgBox.h"
#include "ui/help/HelpCache.h"
#include "ui/help/HelpViewer.h"

#include <QApplication>
#include <QPointer>

namespace ondrel {

namespace {

QPointer<HelpViewer>& theViewer() {
    static QPointer<HelpViewer> viewer;
    return viewer;
}

} // namespace

HelpViewer* qtHelpViewer() {
    return theViewer();
}

void showQtHelp(const HelpRequest& request) {
    QPointer<HelpViewer>& viewer = theViewer();
    if (!viewer) {
        const Result<QString> collection = HelpCache::prepare(HelpCache::defaultDirectory());
        if (!collection) {
            ShowErrorReport(collection.error(), QStringLiteral("ShowHelp"));
            return;
        }
        viewer = new HelpViewer(*collection);
        // The window has no owner among the program's windows, so that it stays open beside
        // them; it goes when the program ends.
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, viewer, [] { delete theViewer(); });
    }
    viewer->showRequest(request);
}

HelpHandler installQtHelpHandler() {
    return setHelpHandler(showQtHelp);
}

} // namespace ondrel
