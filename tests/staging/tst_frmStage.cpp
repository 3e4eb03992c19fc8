#include "staging/frmStage.h"
#include "staging/frmStageInfo.h"

#include "StagingFixture.h"
#include "platform/ScriptedMsgBox.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QThread>
#include <QtTest>

#include "tests/ui/WhenModal.h"

using namespace ondrel;

namespace {

// One source directory with two files, staged by "*.*" to one destination, and its window.
struct Job : test::StagingFixture {
    ScriptedMsgBox boxes;
    std::unique_ptr<frmStage> window;

    Job() {
        file("src/a.txt", "alpha");
        file("src/b.txt", "bravo");
        QDir().mkpath(path("dst"));
        group("src", "*.*", {"dst"});
        window = std::make_unique<frmStage>(spec, settings, various, ops, nullptr, dir.path());
    }
};

} // namespace

class tst_frmStage : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void showsWhatTheRunReports_data() {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("text");
        const QString longPath =
            "/mnt/archive/" + QString("very long directory name/").repeated(12) + "final-name.txt";
        for (const char* label : {"lblSP", "lblFG", "lblCurDir", "lblSourceFile", "lblDestFile"}) {
            QTest::addRow("%s long path", label) << label << longPath;
            QTest::addRow("%s short, markup-like", label) << label << QString("/tmp/<b>x</b>");
        }
    }
    void showsWhatTheRunReports() {
        QFETCH(QString, label);
        QFETCH(QString, text);
        Job job;
        frmStage& stage = *job.window;
        const int width = stage.width();
        auto* shown = stage.findChild<QLabel*>(label);
        QVERIFY(shown);

        if (label == "lblSP")
            stage.showSourcePath(text);
        else if (label == "lblFG")
            stage.showFileGroup(text);
        else if (label == "lblCurDir")
            stage.showDirectory(text);
        else if (label == "lblSourceFile")
            stage.showSourceFile(text.toUtf8());
        else
            stage.showDestFile(text.toUtf8());
        stage.yield(); // the window's first yield always serves the screen

        QCOMPARE(stage.width(), width);
        const QString onScreen = shown->text();
        if (shown->fontMetrics().horizontalAdvance(text) <= shown->contentsRect().width()) {
            QCOMPARE(onScreen, text);
            QCOMPARE(shown->toolTip(), QString());
            // Shown literally, every character of it: not taken for markup.
            QVERIFY(shown->sizeHint().width() >= shown->fontMetrics().horizontalAdvance(text));
            return;
        }
        // Shortened in the middle: where it starts and the file name stay, and all of it is in
        // the tool tip.
        QVERIFY2(onScreen.contains(QChar(0x2026)), qPrintable(onScreen));
        QVERIFY(onScreen.startsWith("/mnt/archive/") && onScreen.endsWith("final-name.txt"));
        QVERIFY(shown->fontMetrics().horizontalAdvance(onScreen) <= shown->contentsRect().width());
        QVERIFY(shown->toolTip().contains(text.toHtmlEscaped()));
    }

    void progressBar_data() {
        QTest::addColumn<QList<int>>("calls"); // a count starts a directory, -1 advances
        QTest::addColumn<int>("maximum");
        QTest::addColumn<int>("value");
        QTest::newRow("three of three") << QList<int>{3, -1, -1, -1} << 3 << 3;
        QTest::newRow("next directory starts empty") << QList<int>{5, -1, -1, 4} << 4 << 0;
        QTest::newRow("empty directory is not a busy bar") << QList<int>{0} << 1 << 0;
    }
    void progressBar() {
        QFETCH(QList<int>, calls);
        QFETCH(int, maximum);
        QFETCH(int, value);
        Job job;
        for (int call : calls)
            call < 0 ? job.window->advanceProgress() : job.window->setProgressRange(call);
        job.window->yield();
        auto* bar = job.window->findChild<QProgressBar*>("pbrProgress");
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->maximum(), maximum);
        QCOMPARE(bar->value(), value);
    }

    void yieldServesEventsOnlyAfterItsInterval() {
        Job job;
        frmStage& stage = *job.window;
        int served = 0;
        QMetaObject::invokeMethod(
            &stage, [&served] { ++served; }, Qt::QueuedConnection);
        QElapsedTimer clock;
        clock.start();
        stage.yield();
        QCOMPARE(served, 1);

        QMetaObject::invokeMethod(
            &stage, [&served] { ++served; }, Qt::QueuedConnection);
        stage.yield();
        if (clock.elapsed() >= 45)
            QSKIP("the machine is too busy to tell a quick second yield");
        QCOMPARE(served, 1);

        QThread::msleep(60);
        stage.yield();
        QCOMPARE(served, 2);
    }

    void summaryWindow_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("scrolls");
        const QString head = "Start Date/Time:\tMonday, Mar 3 2025  09:15:02 AM\r\n"
                             "End Date/Time:\tMonday, Mar 3 2025  09:15:04 AM\r\n"
                             "Staging completed.\r\n\r\n"
                             "The following files encountered problems during staging:\r\n";
        QTest::newRow("no problems")
            << "Staging Complete!" << head + "NONE\r\n# of Files Copied:\t2\r\n"
            << false;
        QString many;
        for (int i = 0; i < 3000; ++i)
            many += QString("/data/in/file%1.dat\r\n").arg(i);
        QTest::newRow("thousands of problem files")
            << "Staging Aborted!"
            << head + many + "# of Files Deleted:\t0\r\n# of Files Copied:\t1,234\r\n"
            << true;
    }
    void summaryWindow() {
        QFETCH(QString, title);
        QFETCH(QString, text);
        QFETCH(bool, scrolls);
        frmStageInfo info(title, text);
        auto* box = info.findChild<QPlainTextEdit*>("txtInfo");
        QString shownText;
        int scrollRange = -1;
        QList<int> valueColumns;
        QMetaObject::invokeMethod(
            &info,
            [&] {
                shownText = box->toPlainText();
                scrollRange = box->verticalScrollBar()->maximum();
                // Where each value after a TAB starts on screen.
                for (QTextBlock block = box->document()->begin(); block.isValid();
                     block = block.next()) {
                    const int tab = block.text().indexOf('\t');
                    if (tab < 0)
                        continue;
                    QTextCursor cursor(block);
                    cursor.setPosition(block.position() + tab + 1);
                    valueColumns << box->cursorRect(cursor).left();
                }
                QTest::mouseClick(info.findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
            },
            Qt::QueuedConnection);
        QCOMPARE(info.exec(), int(QDialog::Accepted));

        QCOMPARE(info.windowTitle(), title);
        QCOMPARE(info.findChild<QLabel*>("lblTitle")->text(), title);
        QVERIFY(info.findChild<QLabel*>("lblTitle")->font().bold());
        QCOMPARE(shownText, QString(text).replace("\r\n", "\n"));
        QVERIFY(box->isReadOnly());
        QCOMPARE(scrollRange > 0, scrolls);
        QVERIFY(valueColumns.size() >= 3);
        for (int column : valueColumns)
            QCOMPARE(column, valueColumns.first());
    }

    // A whole run as the stage command starts it, left alone or stopped by the user while the
    // first file is being copied. A stopped run ends at once, but the window stays until the
    // walk has returned; either way the summary tells what happened.
    void wholeRun_data() {
        QTest::addColumn<QString>("action"); // taken during the first copy
        QTest::newRow("left alone") << QString();
        QTest::newRow("Cancel button") << "cancel";
        QTest::newRow("window close button") << "close";
        QTest::newRow("Escape key") << "escape";
    }
    void wholeRun() {
        QFETCH(QString, action);
        const bool stopped = !action.isEmpty();
        Job job;
        frmStage& stage = *job.window;
        auto* cancel = stage.findChild<QPushButton*>("cmdCancel");
        QCOMPARE(cancel->text(), QString("Cancel"));
        bool stayedOpen = true;
        job.ops.onCopy = [&](const QByteArray&, const QByteArray&) {
            if (action == "cancel")
                QTest::mouseClick(cancel, Qt::LeftButton);
            else if (action == "close")
                stage.close();
            else if (action == "escape")
                QTest::keyClick(&stage, Qt::Key_Escape);
            stayedOpen = stayedOpen && stage.isVisible();
        };
        QString summaryTitle, summary; // as shown before OK was clicked
        whenModal<frmStageInfo>([&](frmStageInfo* info) {
            summaryTitle = info->findChild<QLabel*>("lblTitle")->text();
            summary = info->findChild<QPlainTextEdit*>("txtInfo")->toPlainText();
            QTest::mouseClick(info->findChild<QPushButton*>("cmdOK"), Qt::LeftButton);
        });
        stage.exec();

        QVERIFY(stayedOpen);
        QVERIFY(!stage.isVisible());
        QCOMPARE(stage.run().state().Cancelled, stopped);
        QCOMPARE(summaryTitle, QString(stopped ? "Staging Aborted!" : "Staging Complete!"));
        const QString outcome = stopped ? "\nStaging aborted.\n" : "\nStaging completed.\n";
        QVERIFY2(summary.contains(outcome), qPrintable(summary));
        QVERIFY(summary.contains("\nNONE\n"));
        const int copied = stopped ? 1 : 2;
        QVERIFY(summary.contains(QString("# of Files Copied:\t%1").arg(copied)));
        QCOMPARE(QDir(job.path("dst")).entryList(QDir::Files).size(), copied);
        QCOMPARE(job.read("dst/a.txt"), QByteArray("alpha"));
        QCOMPARE(stage.findChild<QLabel*>("lblSP")->text(), job.path("src"));
        QCOMPARE(stage.findChild<QLabel*>("lblFG")->text(), QString("*.*"));
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(job.boxes.shown().size(), 0);
    }
};

QTEST_MAIN(tst_frmStage)
#include "tst_frmStage.moc"
