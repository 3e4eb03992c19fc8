// Loaded into the installed ondrel with LD_PRELOAD by scripts/check-package: once the program
// has started (and opened the spec named on its command line), it reports on standard output
// what the user would see, opens Help, Contents as the menu does, reports the help viewer's
// contents, then closes the program with File, Close. Message boxes are reported and answered
// with their first button. The program itself holds no test code and takes no option for this.
#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QMessageBox>
#include <QTextBrowser>
#include <QThread>
#include <QTimer>
#include <QTreeView>
#include <QTreeWidget>

#include <cstdio>

namespace {

void report(const QString& what, const QString& text) {
    std::printf("%s: %s\n", qPrintable(what), qPrintable(QString(text).replace(u'\n', u' ')));
    std::fflush(stdout);
}

QWidget* topLevel(const QString& name) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == name && widget->isVisible())
            return widget;
    }
    return nullptr;
}

class Driver : public QObject {
public:
    Driver() {
        m_waited.start();
        connect(&m_tick, &QTimer::timeout, this, [this] { step(); });
        m_tick.start(50);
    }

private:
    void step() {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            report(QStringLiteral("box"), box->windowTitle() + QStringLiteral(": ") + box->text());
            box->buttons().value(0)->click();
            return;
        }
        // Start only in the program's own event loop, not in one a box ran before it.
        if (QThread::currentThread()->loopLevel() != 1)
            return;
        if (m_step == 0)
            reportMainWindow();
        else if (m_step == 1)
            reportHelp();
    }

    void reportMainWindow() {
        QWidget* main = topLevel(QStringLiteral("frmMain"));
        if (!main)
            return;
        report(QStringLiteral("spec"),
               main->findChild<QLabel*>(QStringLiteral("lblSpecInfo(0)"))->text());
        auto* tree = main->findChild<QTreeWidget*>(QStringLiteral("tvwSpecs"));
        for (int i = 0; i < tree->topLevelItemCount(); ++i)
            report(QStringLiteral("source path"), tree->topLevelItem(i)->text(0));
        report(QStringLiteral("recent file"),
               main->findChild<QAction*>(QStringLiteral("mnuFileMRU(0)"))->text());
        main->findChild<QAction*>(QStringLiteral("mnuHelpContents"))->trigger();
        m_step = 1;
        m_waited.restart();
    }

    void reportHelp() {
        QWidget* help = topLevel(QStringLiteral("frmHelp"));
        auto* contents =
            help ? help->findChild<QTreeView*>(QStringLiteral("tvwHelpContents")) : nullptr;
        const int topics = contents && contents->model() ? contents->model()->rowCount() : 0;
        // The contents are read from the help collection in the background.
        if (topics == 0 && m_waited.elapsed() < 30000)
            return;
        for (int i = 0; i < topics; ++i)
            report(QStringLiteral("help contents"),
                   contents->model()->index(i, 0).data().toString());
        if (auto* page =
                help ? help->findChild<QTextBrowser*>(QStringLiteral("txtHelpTopic")) : nullptr)
            report(QStringLiteral("help page"), page->documentTitle());
        if (help)
            help->close();
        m_step = 2;
        m_tick.stop();
        QWidget* main = topLevel(QStringLiteral("frmMain"));
        main->findChild<QAction*>(QStringLiteral("mnuFileClose"))->trigger();
    }

    QTimer m_tick;
    QElapsedTimer m_waited;
    int m_step = 0;
};

void startDriver() {
    if (qobject_cast<QApplication*>(QCoreApplication::instance()))
        new Driver();
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(startDriver)
