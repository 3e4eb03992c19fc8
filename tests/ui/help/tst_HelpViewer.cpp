#include "ui/help/HelpCache.h"
#include "ui/help/HelpIndexPane.h"
#include "ui/help/HelpSearchPane.h"
#include "ui/help/HelpViewer.h"
#include "ui/help/QtHelp.h"

#include <QApplication>
#include <QDir>
#include <QHelpIndexWidget>
#include <QLineEdit>
#include <QListWidget>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextBrowser>
#include <QtTest>

#include <memory>

using namespace ondrel;

Q_DECLARE_METATYPE(ondrel::HelpCommand)
Q_DECLARE_METATYPE(ondrel::HelpViewer::Tab)

namespace {

QString pageOf(const QUrl& url) {
    return url.fileName();
}

QTextBrowser* browserOf(HelpViewer* viewer) {
    return viewer->findChild<QTextBrowser*>(QStringLiteral("txtHelpTopic"));
}

} // namespace

class tst_HelpViewer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_cache.isValid());
        const Result<QString> collection = HelpCache::prepare(m_cache.path());
        QVERIFY(collection.ok());
        m_collection = *collection;
    }

    void init() { m_viewer = std::make_unique<HelpViewer>(m_collection); }
    void cleanup() { m_viewer.reset(); }

    // Each help command opens the page and the tab the user asked for; a context number without
    // a topic of its own opens the contents rather than nothing.
    void requestShowsPageAndTab_data() {
        QTest::addColumn<int>("context");
        QTest::addColumn<HelpCommand>("command");
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("title");
        QTest::addColumn<HelpViewer::Tab>("tab");
        QTest::newRow("contents") << 0 << HelpCommand::Contents << "index.html"
                                  << "File Ondrel Help" << HelpViewer::Tab::Contents;
        QTest::newRow("keyword search") << 0 << HelpCommand::PartialKey << "index.html"
                                        << "File Ondrel Help" << HelpViewer::Tab::Index;
        QTest::newRow("main screen") << 5 << HelpCommand::Context << "mainscreen.html"
                                     << "The main screen" << HelpViewer::Tab::Contents;
        QTest::newRow("contents asked with a context")
            << 5 << HelpCommand::Contents << "index.html"
            << "File Ondrel Help" << HelpViewer::Tab::Contents;
        QTest::newRow("context without a topic") << 99 << HelpCommand::Context << "index.html"
                                                 << "File Ondrel Help" << HelpViewer::Tab::Contents;
    }
    void requestShowsPageAndTab() {
        QFETCH(int, context);
        QFETCH(HelpCommand, command);
        QFETCH(QString, page);
        QFETCH(QString, title);
        QFETCH(HelpViewer::Tab, tab);

        m_viewer->showRequest({context, command});
        QVERIFY(m_viewer->isVisible());
        QCOMPARE(m_viewer->windowTitle(), QStringLiteral("File Ondrel Help"));
        QCOMPARE(pageOf(m_viewer->currentPage()), page);
        // The page was read from the help, not just named.
        QCOMPARE(browserOf(m_viewer.get())->documentTitle(), title);
        QCOMPARE(m_viewer->currentTab(), tab);
        QWidget* expectedFocus = tab == HelpViewer::Tab::Index
                                     ? static_cast<QWidget*>(m_viewer->indexPane()->keywordField())
                                     : browserOf(m_viewer.get());
        QCOMPARE(m_viewer->focusWidget(), expectedFocus);
    }

    // The full-text search finds the topics that hold the word typed, and opens the chosen one at
    // that word.
    void searchFindsTopicsByWord_data() {
        QTest::addColumn<QString>("words");
        QTest::addColumn<QStringList>("titles");
        QTest::newRow("only on the main screen") << "splitter" << QStringList{"The main screen"};
        QTest::newRow("on two pages")
            << "restore" << QStringList{"Options: Staging Options", "Options: User Options"};
        QTest::newRow("nowhere") << "xylophone" << QStringList{};
    }
    void searchFindsTopicsByWord() {
        QFETCH(QString, words);
        QFETCH(QStringList, titles);

        m_viewer->showRequest({0, HelpCommand::Contents});
        HelpSearchPane* pane = m_viewer->searchPane();
        QSignalSpy finished(pane, &HelpSearchPane::searchFinished);
        pane->wordsField()->setText(words);
        QTest::keyClick(pane->wordsField(), Qt::Key_Return);
        QVERIFY(finished.wait(10000) || finished.count() == 1);

        QStringList found;
        for (int i = 0; i < pane->resultList()->count(); ++i)
            found.append(pane->resultList()->item(i)->text());
        found.sort();
        QCOMPARE(found, titles);
        if (titles.size() == 1) {
            Q_EMIT pane->resultList()->itemActivated(pane->resultList()->item(0));
            QCOMPARE(pageOf(m_viewer->currentPage()), QStringLiteral("mainscreen.html"));
            // The topic opens at the word found.
            QCOMPARE(browserOf(m_viewer.get())->textCursor().selectedText().toLower(), words);
        }
    }

    // A word typed in the index field and Enter open the topic of that word.
    void indexWordOpensTopic() {
        m_viewer->showRequest({0, HelpCommand::PartialKey});
        QHelpIndexWidget* list = m_viewer->indexPane()->keywordList();
        QTRY_VERIFY(list->model()->rowCount() > 0);
        QTest::keyClicks(m_viewer->indexPane()->keywordField(), QStringLiteral("splitt"));
        QTest::keyClick(m_viewer->indexPane()->keywordField(), Qt::Key_Return);
        QCOMPARE(m_viewer->currentPage().toString(QUrl::RemoveScheme | QUrl::RemoveAuthority),
                 QStringLiteral("/doc/mainscreen.html#splitter"));
    }

    // A keyboard user follows a link with Tab and Enter, goes back and forward with Alt+arrows
    // wherever the focus is, and closes the window with Escape or Ctrl+W.
    void keyboardFollowsLinksAndCloses_data() {
        QTest::addColumn<int>("closeKey");
        QTest::addColumn<Qt::KeyboardModifiers>("closeModifiers");
        QTest::newRow("Escape") << int(Qt::Key_Escape) << Qt::KeyboardModifiers();
        QTest::newRow("Ctrl+W") << int(Qt::Key_W) << Qt::KeyboardModifiers(Qt::ControlModifier);
    }
    void keyboardFollowsLinksAndCloses() {
        QFETCH(int, closeKey);
        QFETCH(Qt::KeyboardModifiers, closeModifiers);

        m_viewer->showRequest({0, HelpCommand::Contents});
        QVERIFY(QTest::qWaitForWindowActive(m_viewer.get()));
        QTextBrowser* browser = browserOf(m_viewer.get());
        QTest::keyClick(browser, Qt::Key_Tab);
        QTest::keyClick(browser, Qt::Key_Return);
        QCOMPARE(pageOf(m_viewer->currentPage()), QStringLiteral("mainscreen.html"));
        QWidget* contents = m_viewer->findChild<QWidget*>(QStringLiteral("tvwHelpContents"));
        contents->setFocus();
        QTest::keyClick(contents, Qt::Key_Left, Qt::AltModifier);
        QCOMPARE(pageOf(m_viewer->currentPage()), QStringLiteral("index.html"));
        QTest::keyClick(contents, Qt::Key_Right, Qt::AltModifier);
        QCOMPARE(pageOf(m_viewer->currentPage()), QStringLiteral("mainscreen.html"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(closeKey), closeModifiers);
        QVERIFY(!m_viewer->isVisible());
    }

    // Tab reaches every control of each tab, and each control it reaches tells a screen reader
    // what it is.
    void tabReachesNamedControls_data() {
        QTest::addColumn<HelpViewer::Tab>("tab");
        QTest::addColumn<QStringList>("controls");
        const QStringList always{"cmdHelpBack", "cmdHelpHome", "qt_tabwidget_tabbar",
                                 "txtHelpTopic"};
        QTest::newRow("Contents") << HelpViewer::Tab::Contents
                                  << always + QStringList{"tvwHelpContents"};
        QTest::newRow("Index") << HelpViewer::Tab::Index
                               << always + QStringList{"txtHelpIndexKeyword", "lstHelpIndex"};
        QTest::newRow("Search") << HelpViewer::Tab::Search
                                << always + QStringList{"txtHelpSearchWords", "cmdHelpSearch",
                                                        "lstHelpSearchResults"};
    }
    void tabReachesNamedControls() {
        QFETCH(HelpViewer::Tab, tab);
        QFETCH(QStringList, controls);

        m_viewer->showRequest({0, HelpCommand::Contents});
        m_viewer->showRequest({5, HelpCommand::Context}); // Back is enabled now
        m_viewer->findChild<QTabWidget*>()->setCurrentIndex(static_cast<int>(tab));
        QVERIFY(QTest::qWaitForWindowActive(m_viewer.get()));
        QWidget* home = m_viewer->findChild<QWidget*>(QStringLiteral("cmdHelpHome"));
        home->setFocus();
        QStringList reached;
        for (int i = 0; i < 50; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QWidget* focus = QApplication::focusWidget();
            QVERIFY(focus);
            reached.append(focus->objectName());
            if (focus == home)
                break;
        }
        for (const QString& control : controls)
            QVERIFY2(reached.contains(control), qPrintable(control));
    }

    // The program's help handler opens one window and turns that same window to each request.
    void qtHandlerReusesOneWindow() {
        ScopedHelpHandler handler(showQtHelp);
        ShowHelp(0, HelpCommand::Contents);
        HelpViewer* first = qtHelpViewer();
        QVERIFY(first && first->isVisible());
        first->close();
        ShowHelp(5, HelpCommand::Context);
        QCOMPARE(qtHelpViewer(), first);
        QVERIFY(first->isVisible());
        QCOMPARE(pageOf(first->currentPage()), QStringLiteral("mainscreen.html"));
        delete first;
    }

    // The help is written to the cache once; it is written again only when the files there are
    // not this program's help, and an index of other help is dropped with them.
    void cacheRewritesOnlyChangedHelp_data() {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<bool>("rewritten");
        QTest::newRow("unchanged") << "" << false;
        QTest::newRow("topics cut short") << "ondrel.qch" << true;
        QTest::newRow("stamp of other help") << "ondrel.stamp" << true;
        QTest::newRow("collection missing") << "-ondrel.qhc" << true;
    }
    void cacheRewritesOnlyChangedHelp() {
        QFETCH(QString, damage);
        QFETCH(bool, rewritten);

        QTemporaryDir dir;
        QVERIFY(HelpCache::prepare(dir.path()).ok());
        QDir(dir.path()).mkdir(QStringLiteral(".ondrel"));
        const QString topics = dir.filePath(QStringLiteral("ondrel.qch"));
        const QDateTime old = QDateTime::currentDateTime().addDays(-1);
        QFile topicsFile(topics);
        QVERIFY(topicsFile.open(QIODevice::ReadWrite));
        QVERIFY(topicsFile.setFileTime(old, QFileDevice::FileModificationTime));
        topicsFile.close();
        if (damage.startsWith('-')) {
            QVERIFY(QFile::remove(dir.filePath(damage.mid(1))));
        } else if (!damage.isEmpty()) {
            QFile file(dir.filePath(damage));
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.resize(file.size() / 2));
        }

        const Result<QString> collection = HelpCache::prepare(dir.path());
        QVERIFY(collection.ok());
        QCOMPARE(*collection, dir.filePath(QStringLiteral("ondrel.qhc")));
        QCOMPARE(QFileInfo(topics).lastModified() != old, rewritten);
        QCOMPARE(QFileInfo::exists(dir.filePath(QStringLiteral(".ondrel"))), !rewritten);
        QFile embedded(QStringLiteral(":/help/ondrel.qch"));
        QVERIFY(embedded.open(QIODevice::ReadOnly));
        QFile written(topics);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QVERIFY(written.readAll() == embedded.readAll());
        QVERIFY(QFileInfo::exists(*collection));
    }

private:
    QTemporaryDir m_cache;
    QString m_collection;
    std::unique_ptr<HelpViewer> m_viewer;
};

QTEST_MAIN(tst_HelpViewer)
#include "tst_HelpViewer.moc"
