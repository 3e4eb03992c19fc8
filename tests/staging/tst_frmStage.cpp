#include "staging/frmStage.h"
#include "staging/frmStageInfo.h"

#include "StagingFixture.h"
#include "app/ScreenMetrics.h"
#include "app/clsOndrelApp.h"
#include "platform/ScriptedMsgBox.h"
#include "spec/clsSpecFile.h"
#include "staging/StagingFileOps.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QThread>
#include <QTimer>
#include <QtTest>

#include "tests/ui/WhenModal.h"

#include <functional>

using namespace ondrel;

namespace {

const FixedScreen kScreen(9600, 7200);

// One source directory with two files, staged by "*.*" to one destination.
struct Job {
    QTemporaryDir root;
    QString source = root.filePath(QStringLiteral("src"));
    QString destination = root.filePath(QStringLiteral("dst"));
    clsOndrelApp settings{kScreen, root.path()};
    clsSpecFile spec;
    QStringList various{QString()};
    test::HookedDiskOps ops;
    ScriptedMsgBox boxes;

    Job() {
        QDir(root.path()).mkpath(QStringLiteral("src"));
        QDir(root.path()).mkpath(QStringLiteral("dst"));
        write(QStringLiteral("a.txt"), "alpha");
        write(QStringLiteral("b.txt"), "bravo");
        auto sp = spec.SPs().Add(source);
        sp->FGs().Add(QStringLiteral("*.*"))->DPs().Add(destination);
    }
    void write(const QString& name, const QByteArray& content) {
        QFile file(source + QLatin1Char('/') + name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QByteArray copied(const QString& name) const {
        QFile file(destination + QLatin1Char('/') + name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }
};

} // namespace

class tst_frmStage : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void showsWhatTheRunReports_data() {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("text");
        const QString longPath = QStringLiteral("/mnt/archive/") +
                                 QStringLiteral("very long directory name/").repeated(12) +
                                 QStringLiteral("final-name.txt");
        const char* labels[] = {"lblSP", "lblFG", "lblCurDir", "lblSourceFile", "lblDestFile"};
        for (const char* label : labels) {
            QTest::addRow("%s long path", label) << label << longPath;
            QTest::addRow("%s short, markup-like", label)
                << label << QStringLiteral("/tmp/<b>x</b>");
        }
    }
    void showsWhatTheRunReports() {
        QFETCH(QString, label);
        QFETCH(QString, text);
        Job job;
        frmStage stage(job.spec, job.settings, job.various, job.ops, nullptr, job.root.path());
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
        QVERIFY(onScreen.startsWith(QStringLiteral("/mnt/archive/")));
        QVERIFY(onScreen.endsWith(QStringLiteral("final-name.txt")));
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
        frmStage stage(job.spec, job.settings, job.various, job.ops, nullptr, job.root.path());
        for (int call : calls) {
            if (call < 0)
                stage.advanceProgress();
            else
                stage.setProgressRange(call);
        }
        stage.yield();
        auto* bar = stage.findChild<QProgressBar*>(QStringLiteral("pbrProgress"));
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->maximum(), maximum);
        QCOMPARE(bar->value(), value);
    }

    void yieldServesEventsOnlyAfterItsInterval() {
        Job job;
        frmStage stage(job.spec, job.settings, job.various, job.ops, nullptr, job.root.path());
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
        const QString head = QStringLiteral("Start Date/Time:\tMonday, Mar 3 2025  09:15:02 AM\r\n"
                                            "End Date/Time:\tMonday, Mar 3 2025  09:15:04 AM\r\n"
                                            "Staging completed.\r\n\r\n"
                                            "The following files encountered problems during "
                                            "staging:\r\n");
        QTest::newRow("no problems")
            << QStringLiteral("Staging Complete!")
            << head + QStringLiteral("NONE\r\n# of Files Copied:\t2\r\n") << false;
        QString many;
        for (int i = 0; i < 3000; ++i)
            many += QStringLiteral("/data/in/file%1.dat\r\n").arg(i);
        QTest::newRow("thousands of problem files")
            << QStringLiteral("Staging Aborted!")
            << head + many +
                   QStringLiteral("# of Files Deleted:\t0\r\n# of Files Copied:\t1,234\r\n")
            << true;
    }
    void summaryWindow() {
        QFETCH(QString, title);
        QFETCH(QString, text);
        QFETCH(bool, scrolls);
        frmStageInfo info(title, text);
        QString shownText;
        int scrollRange = -1;
        QList<int> valueColumns;
        QMetaObject::invokeMethod(
            &info,
            [&] {
                auto* box = info.findChild<QPlainTextEdit*>(QStringLiteral("txtInfo"));
                shownText = box->toPlainText();
                scrollRange = box->verticalScrollBar()->maximum();
                // Where each value after a TAB starts on screen.
                for (QTextBlock block = box->document()->begin(); block.isValid();
                     block = block.next()) {
                    const int tab = block.text().indexOf(QLatin1Char('\t'));
                    if (tab < 0)
                        continue;
                    QTextCursor cursor(block);
                    cursor.setPosition(block.position() + tab + 1);
                    valueColumns << box->cursorRect(cursor).left();
                }
                QTest::mouseClick(info.findChild<QPushButton*>(QStringLiteral("cmdOK")),
                                  Qt::LeftButton);
            },
            Qt::QueuedConnection);
        QCOMPARE(info.exec(), int(QDialog::Accepted));

        QCOMPARE(info.windowTitle(), title);
        QCOMPARE(info.findChild<QLabel*>(QStringLiteral("lblTitle"))->text(), title);
        QVERIFY(info.findChild<QLabel*>(QStringLiteral("lblTitle"))->font().bold());
        QCOMPARE(shownText, QString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
        QVERIFY(info.findChild<QPlainTextEdit*>(QStringLiteral("txtInfo"))->isReadOnly());
        QCOMPARE(scrollRange > 0, scrolls);
        QVERIFY(valueColumns.size() >= 3);
        for (int column : valueColumns)
            QCOMPARE(column, valueColumns.first());
    }

    // A whole run as the stage command starts it, left alone or stopped by the user while the
    // first file is being copied. A stopped run ends at once, but the window stays until the
    // walk has returned; either way the summary tells what happened.
    void wholeRun_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<int>("copied");
        QTest::newRow("left alone") << ""
                                    << "Staging Complete!"
                                    << "Staging completed." << 2;
        QTest::newRow("Cancel button") << "cancel"
                                       << "Staging Aborted!"
                                       << "Staging aborted." << 1;
        QTest::newRow("window close button") << "close"
                                             << "Staging Aborted!"
                                             << "Staging aborted." << 1;
        QTest::newRow("Escape key") << "escape"
                                    << "Staging Aborted!"
                                    << "Staging aborted." << 1;
    }
    void wholeRun() {
        QFETCH(QString, action);
        QFETCH(QString, title);
        QFETCH(QString, outcome);
        QFETCH(int, copied);
        Job job;
        frmStage stage(job.spec, job.settings, job.various, job.ops, nullptr, job.root.path());
        auto* cancel = stage.findChild<QPushButton*>(QStringLiteral("cmdCancel"));
        QCOMPARE(cancel->text(), QStringLiteral("Cancel"));
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
            summaryTitle = info->findChild<QLabel*>(QStringLiteral("lblTitle"))->text();
            summary = info->findChild<QPlainTextEdit*>(QStringLiteral("txtInfo"))->toPlainText();
            QTest::mouseClick(info->findChild<QPushButton*>(QStringLiteral("cmdOK")),
                              Qt::LeftButton);
        });
        stage.exec();

        QVERIFY(stayedOpen);
        QVERIFY(!stage.isVisible());
        QCOMPARE(stage.run().state().Cancelled, !action.isEmpty());
        QCOMPARE(summaryTitle, title);
        QVERIFY2(summary.contains(QLatin1Char('\n') + outcome + QLatin1Char('\n')),
                 qPrintable(summary));
        QVERIFY(summary.contains(QStringLiteral("\nNONE\n")));
        QVERIFY(summary.contains(QStringLiteral("# of Files Copied:\t%1").arg(copied)));
        const int onDisk = QDir(job.destination).entryList(QDir::Files).size();
        QCOMPARE(onDisk, copied);
        QCOMPARE(job.copied(QStringLiteral("a.txt")), QByteArray("alpha"));
        QCOMPARE(stage.findChild<QLabel*>(QStringLiteral("lblSP"))->text(), job.source);
        QCOMPARE(stage.findChild<QLabel*>(QStringLiteral("lblFG"))->text(), QStringLiteral("*.*"));
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(job.boxes.shown().size(), 0);
    }
};

QTEST_MAIN(tst_frmStage)
#include "tst_frmStage.moc"
