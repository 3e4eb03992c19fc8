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
using Tab = HelpViewer::Tab;

Q_DECLARE_METATYPE(ondrel::HelpCommand)
Q_DECLARE_METATYPE(ondrel::HelpViewer::Tab)

class tst_HelpViewer : public QObject {
    Q_OBJECT

    QString page() const { return m_viewer->currentPage().fileName(); }
    QTextBrowser* browser() const { return m_viewer->findChild<QTextBrowser*>("txtHelpTopic"); }
    static QByteArray bytesOf(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

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
        QTest::addColumn<Tab>("tab");
        using enum HelpCommand;
        QTest::newRow("contents") << 0 << Contents << "index.html" << Tab::Contents;
        QTest::newRow("keyword search") << 0 << PartialKey << "index.html" << Tab::Index;
        QTest::newRow("main screen") << 5 << Context << "mainscreen.html" << Tab::Contents;
        QTest::newRow("contents with a context") << 5 << Contents << "index.html" << Tab::Contents;
        QTest::newRow("context without a topic") << 99 << Context << "index.html" << Tab::Contents;
    }
    void requestShowsPageAndTab() {
        QFETCH(int, context);
        QFETCH(HelpCommand, command);
        QFETCH(QString, page);
        QFETCH(Tab, tab);

        m_viewer->showRequest({context, command});
        QVERIFY(m_viewer->isVisible());
        QCOMPARE(m_viewer->windowTitle(), "File Ondrel Help");
        QCOMPARE(this->page(), page);
        // The page was read from the help, not just named.
        QCOMPARE(browser()->documentTitle(),
                 page == "index.html" ? "File Ondrel Help" : "The main screen");
        QCOMPARE(m_viewer->currentTab(), tab);
        QCOMPARE(m_viewer->focusWidget(), tab == Tab::Index ? m_viewer->indexPane()->keywordField()
                                                            : static_cast<QWidget*>(browser()));
        if (tab == Tab::Index) {
            // A word typed in the index field and Enter open the topic of that word.
            QTRY_VERIFY(m_viewer->indexPane()->keywordList()->model()->rowCount() > 0);
            QTest::keyClicks(m_viewer->focusWidget(), "splitt");
            QTest::keyClick(m_viewer->focusWidget(), Qt::Key_Return);
            QCOMPARE(m_viewer->currentPage().toString(QUrl::RemoveScheme | QUrl::RemoveAuthority),
                     "/doc/mainscreen.html#splitter");
        }
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
        for (const QListWidgetItem* item : pane->resultList()->findItems("*", Qt::MatchWildcard))
            found.append(item->text());
        found.sort();
        QCOMPARE(found, titles);
        if (titles.size() == 1) {
            Q_EMIT pane->resultList()->itemActivated(pane->resultList()->item(0));
            QCOMPARE(page(), "mainscreen.html");
            // The topic opens at the word found.
            QCOMPARE(browser()->textCursor().selectedText().toLower(), words);
        }
    }

    // A keyboard user follows a link with Tab and Enter, goes back and forward with Alt+arrows
    // wherever the focus is, and closes the window with Escape or Ctrl+W.
    void keyboardFollowsLinksAndCloses_data() {
        QTest::addColumn<QKeyCombination>("close");
        QTest::newRow("Escape") << QKeyCombination(Qt::Key_Escape);
        QTest::newRow("Ctrl+W") << QKeyCombination(Qt::ControlModifier, Qt::Key_W);
    }
    void keyboardFollowsLinksAndCloses() {
        QFETCH(QKeyCombination, close);

        m_viewer->showRequest({0, HelpCommand::Contents});
        QVERIFY(QTest::qWaitForWindowActive(m_viewer.get()));
        QTest::keyClick(browser(), Qt::Key_Tab);
        QTest::keyClick(browser(), Qt::Key_Return);
        QCOMPARE(page(), "mainscreen.html");
        QWidget* contents = m_viewer->findChild<QWidget*>("tvwHelpContents");
        contents->setFocus();
        QTest::keyClick(contents, Qt::Key_Left, Qt::AltModifier);
        QCOMPARE(page(), "index.html");
        QTest::keyClick(contents, Qt::Key_Right, Qt::AltModifier);
        QCOMPARE(page(), "mainscreen.html");
        QTest::keyClick(QApplication::focusWidget(), close.key(), close.keyboardModifiers());
        QVERIFY(!m_viewer->isVisible());
    }

    // Tab reaches every control of each tab (what a screen reader hears of them is checked with
    // the other windows', in tst_AccessibleNames).
    void tabReachesEveryControl_data() {
        QTest::addColumn<Tab>("tab");
        QTest::addColumn<QStringList>("controls");
        const QStringList always{"cmdHelpBack", "cmdHelpHome", "qt_tabwidget_tabbar",
                                 "txtHelpTopic"};
        QTest::newRow("Contents") << Tab::Contents << always + QStringList{"tvwHelpContents"};
        QTest::newRow("Index") << Tab::Index
                               << always + QStringList{"txtHelpIndexKeyword", "lstHelpIndex"};
        QTest::newRow("Search") << Tab::Search
                                << always + QStringList{"txtHelpSearchWords", "cmdHelpSearch",
                                                        "lstHelpSearchResults"};
    }
    void tabReachesEveryControl() {
        QFETCH(Tab, tab);
        QFETCH(QStringList, controls);

        m_viewer->showRequest({0, HelpCommand::Contents});
        m_viewer->showRequest({5, HelpCommand::Context}); // Back is enabled now
        m_viewer->findChild<QTabWidget*>()->setCurrentIndex(static_cast<int>(tab));
        QVERIFY(QTest::qWaitForWindowActive(m_viewer.get()));
        QWidget* home = m_viewer->findChild<QWidget*>("cmdHelpHome");
        home->setFocus();
        QStringList reached;
        for (QWidget* focus = nullptr; focus != home && reached.size() < 50;) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QVERIFY((focus = QApplication::focusWidget()));
            reached.append(focus->objectName());
        }
        for (const QString& control : controls)
            QVERIFY2(reached.contains(control), qPrintable(control));
    }

    // The program's help handler opens one window and turns that same window to each request.
    void qtHandlerReusesOneWindow() {
        ScopedHelpHandler handler(showQtHelp);
        ShowHelp(0, HelpCommand::Contents);
        std::unique_ptr<HelpViewer> first(qtHelpViewer());
        QVERIFY(first && first->isVisible());
        first->close();
        ShowHelp(5, HelpCommand::Context);
        QCOMPARE(qtHelpViewer(), first.get());
        QVERIFY(first->isVisible());
        QCOMPARE(first->currentPage().fileName(), "mainscreen.html");
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
        QVERIFY(QDir(dir.path()).mkdir(".ondrel"));
        const QString topics = dir.filePath("ondrel.qch");
        const QDateTime old = QDateTime::currentDateTime().addDays(-1);
        QFile topicsFile(topics);
        QVERIFY(topicsFile.open(QIODevice::ReadWrite) &&
                topicsFile.setFileTime(old, QFileDevice::FileModificationTime));
        topicsFile.close();
        const QString damaged = dir.filePath(QString(damage).remove(u'-'));
        if (damage.startsWith(u'-'))
            QVERIFY(QFile::remove(damaged));
        else if (!damage.isEmpty())
            QVERIFY(QFile::resize(damaged, QFileInfo(damaged).size() / 2));

        const Result<QString> collection = HelpCache::prepare(dir.path());
        QVERIFY(collection.ok());
        QCOMPARE(*collection, dir.filePath("ondrel.qhc"));
        QVERIFY(QFileInfo::exists(*collection));
        QCOMPARE(QFileInfo(topics).lastModified() != old, rewritten);
        QCOMPARE(QFileInfo::exists(dir.filePath(".ondrel")), !rewritten);
        const QByteArray embedded = bytesOf(":/help/ondrel.qch");
        QVERIFY(!embedded.isEmpty() && bytesOf(topics) == embedded);
    }

private:
    QTemporaryDir m_cache;
    QString m_collection;
    std::unique_ptr<HelpViewer> m_viewer;
};

QTEST_MAIN(tst_HelpViewer)
#include "tst_HelpViewer.moc"
