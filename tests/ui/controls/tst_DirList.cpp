#include "platform/ScriptedMsgBox.h"
#include "ui/controls/DirList.h"
#include "ui/controls/DirListModel.h"

#include <QDialog>
#include <QFile>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace ondrel;

namespace {

void makeDir(const QByteArray& path) {
    QVERIFY2(::mkdir(path.constData(), 0755) == 0, path.constData());
}

// What the list shows, row by row.
QStringList rows(const DirList& list) {
    QStringList texts;
    for (int row = 0; row < list.model()->rowCount(); ++row)
        texts << list.model()->index(row, 0).data().toString();
    return texts;
}

} // namespace

class tst_DirList : public QObject {
    Q_OBJECT

    QTemporaryDir m_tmp;

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_tmp.isValid());
        for (const char* dir : {"/b", "/A", "/c", "/A/deeper"})
            makeDir(QFile::encodeName(m_tmp.path()) + dir);
        QFile file(m_tmp.filePath(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    // A directory opens; anything else is error 76 and leaves the list where it was.
    void setPath_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("opened"); // relative to the temporary directory
        QTest::newRow("directory") << "@/A" << 0 << "/A";
        QTest::newRow("trailing separator") << "@/A/" << 0 << "/A";
        QTest::newRow("dot dot") << "@/A/deeper/.." << 0 << "/A";
        QTest::newRow("relative to the current one") << "A" << 0 << "/A";
        QTest::newRow("missing") << "@/missing" << 76 << "";
        QTest::newRow("below a missing one") << "@/missing/deeper" << 76 << "";
        QTest::newRow("a file") << "@/file" << 76 << "";
        QTest::newRow("below a file") << "@/file/deeper" << 76 << "";
        QTest::newRow("empty") << "" << 76 << "";
    }
    void setPath() {
        QFETCH(QString, path);
        QFETCH(int, error);
        QFETCH(QString, opened);
        DirList list;
        const QString start = m_tmp.path();
        QVERIFY(list.setPath(start).ok());
        QSignalSpy changed(&list, &DirList::pathChanged);

        const Result<void> result = list.setPath(path.replace(QLatin1Char('@'), start));
        QCOMPARE(result.ok() ? 0 : result.error().number(), error);
        QCOMPARE(list.Path(), error ? start : start + opened);
        QCOMPARE(changed.count(), error ? 0 : 1);
    }

    // The list is named and reached by Tab. The open directories come first, from the drive's
    // root down, then the sub-directories in list-box order; Enter opens the chosen one,
    // Backspace goes up.
    void keyboardBrowsing() {
        // In a dialog, so that an Enter the list let through would press the default button.
        QDialog dialog;
        DirList list(&dialog);
        QPushButton ok(QStringLiteral("OK"), &dialog);
        ok.setDefault(true);
        connect(&ok, &QPushButton::clicked, &dialog, &QDialog::accept);
        dialog.show();
        QVERIFY(!list.accessibleName().isEmpty());
        QVERIFY(list.focusPolicy() & Qt::TabFocus);
        QVERIFY(list.setPath(m_tmp.path()).ok());
        const QStringList shown = rows(list);
        QCOMPARE(shown.mid(shown.size() - 4),
                 QStringList({m_tmp.path().section(QLatin1Char('/'), -1), "A", "b", "c"}));
        QCOMPARE(list.currentIndex().row(), shown.size() - 4);

        QSignalSpy changed(&list, &DirList::pathChanged);
        QTest::keyClick(&list, Qt::Key_Down);
        QTest::keyClick(&list, Qt::Key_Return);
        QCOMPARE(list.Path(), m_tmp.filePath(QStringLiteral("A")));
        QCOMPARE(rows(list).last(), QStringLiteral("deeper"));
        QTest::keyClick(&list, Qt::Key_Backspace);
        QCOMPARE(list.Path(), m_tmp.path());
        QCOMPARE(changed.count(), 2);
        QTest::qWait(200); // a default button's click would come by now
        QVERIFY(dialog.isVisible());
    }

    // A name that is not text shows escaped, as the staging window shows it; opening it, or a
    // name with a line break, is refused with a message and the path stays as it was.
    void namesThatAreNotText_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<bool>("usable");
        QTest::newRow("UTF-8") << QByteArray("caf\xC3\xA9") << "café" << true;
        QTest::newRow("Latin-1 byte") << QByteArray("caf\xE9") << "caf\\xE9" << false;
        QTest::newRow("cut UTF-8") << QByteArray("x\xC3") << "x\\xC3" << false;
        QTest::newRow("line break") << QByteArray("two\nlines") << "two\\nlines" << false;
        QTest::newRow("backslash is text") << QByteArray("a\\xE9") << "a\\xE9" << true;
    }
    void namesThatAreNotText() {
        QFETCH(QByteArray, name);
        QFETCH(QString, shown);
        QFETCH(bool, usable);
        QTemporaryDir tmp;
        const QByteArray dir = QFile::encodeName(tmp.path()) + '/' + name;
        makeDir(dir);
        DirList list;
        QVERIFY(list.setPath(tmp.path()).ok());
        const int row = int(rows(list).indexOf(shown));
        QVERIFY2(row >= 0, qPrintable(rows(list).join(QLatin1Char('|'))));

        ScriptedMsgBox boxes;
        list.setCurrentIndex(list.model()->index(row, 0));
        QTest::keyClick(&list, Qt::Key_Enter);
        QCOMPARE(list.nativePath(), usable ? dir : QFile::encodeName(tmp.path()));
        QCOMPARE(boxes.shown().size(), usable ? 0 : 1);
        if (!usable) {
            QCOMPARE(boxes.shown().first().title, QStringLiteral("Directory Name Not Usable"));
            QVERIFY(boxes.shown().first().prompt.contains(shown));
        }
    }

    // Directories made or removed while the list is shown appear and go; when the current one
    // goes, the list opens its parent.
    void followsTheDisk() {
        QTemporaryDir tmp;
        const QByteArray base = QFile::encodeName(tmp.path());
        makeDir(base + "/current");
        DirList list;
        QVERIFY(list.setPath(tmp.path() + QStringLiteral("/current")).ok());
        QSignalSpy changed(&list, &DirList::pathChanged);

        makeDir(base + "/current/made");
        QTRY_VERIFY(rows(list).contains(QStringLiteral("made")));
        QVERIFY(::rmdir(QByteArray(base + "/current/made").constData()) == 0);
        QTRY_VERIFY(!rows(list).contains(QStringLiteral("made")));

        QVERIFY(::rmdir(QByteArray(base + "/current").constData()) == 0);
        QTRY_COMPARE(list.Path(), tmp.path());
        QCOMPARE(changed.count(), 1);

        // Without a watcher's word, refresh shows what is there.
        list.blockSignals(true);
        makeDir(base + "/other");
        list.refresh();
        QVERIFY(rows(list).contains(QStringLiteral("other")));
    }

    // A directory of 10,000 sub-directories opens with all of them.
    void tenThousandSubDirectories() {
        QTemporaryDir tmp;
        const QByteArray base = QFile::encodeName(tmp.path());
        for (int i = 0; i < 10000; ++i)
            makeDir(base + "/d" + QByteArray::number(i));
        DirList list;
        list.show();
        QVERIFY(list.setPath(tmp.path()).ok());
        QCoreApplication::processEvents();
        auto* model = qobject_cast<DirListModel*>(list.model());
        QCOMPARE(model->rowCount() - model->openCount(), 10000);
        QTest::keyClick(&list, Qt::Key_End);
        QCOMPARE(list.currentIndex().data().toString(), QStringLiteral("d9999"));
    }
};

QTEST_MAIN(tst_DirList)
#include "tst_DirList.moc"
