#include "platform/Volumes.h"
#include "ui/controls/DriveList.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

class tst_DriveList : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // A mount point, an entry's text or a path chooses a volume; anything that is no mounted
    // volume is error 68 and leaves the choice alone. A drive set as mounted (a stored one) must
    // be a mount point: a directory that is no longer one (the disk was pulled) is not there.
    // "@tmp" stands for a fresh directory.
    void setDrive_data() {
        QTest::addColumn<QString>("drive");
        QTest::addColumn<bool>("mounted");
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("expected"); // a path whose volume is chosen; "@tmp" as above
        QTest::newRow("root") << "/" << false << 0 << "/";
        QTest::newRow("a directory") << "@tmp" << false << 0 << "@tmp";
        QTest::newRow("trailing separator") << "@tmp/" << false << 0 << "@tmp";
        QTest::newRow("missing directory on a volume")
            << "@tmp/gone/deeper" << false << 0 << "@tmp";
        QTest::newRow("pseudo file system") << "/proc" << false << 68 << "";
        QTest::newRow("inside a pseudo file system") << "/proc/self" << false << 68 << "";
        QTest::newRow("relative") << "media/stick" << false << 68 << "";
        QTest::newRow("empty") << "" << false << 68 << "";
        QTest::newRow("mounted: the root") << "/" << true << 0 << "/";
        QTest::newRow("mounted: no mount point") << "@tmp" << true << 68 << "";
        QTest::newRow("mounted: nothing there") << "/no/such/volume" << true << 68 << "";
        QTest::newRow("mounted: pseudo file system") << "/proc" << true << 68 << "";
    }
    void setDrive() {
        QFETCH(QString, drive);
        QFETCH(bool, mounted);
        QFETCH(int, error);
        QFETCH(QString, expected);
        QTemporaryDir tmp;
        drive.replace(QStringLiteral("@tmp"), tmp.path());
        expected.replace(QStringLiteral("@tmp"), tmp.path());

        DriveList drives;
        QVERIFY(drives.focusPolicy() & Qt::TabFocus);
        QVERIFY(drives.currentIndex() >= 0);
        // Start somewhere else than the expected volume where there is another, so that the
        // change signal can be seen.
        const QByteArray want = Volumes::mountPointOf(QFile::encodeName(expected));
        for (int i = 0; i < drives.count() && error == 0; ++i)
            if (drives.itemData(i).toByteArray() != want) {
                drives.setCurrentIndex(i);
                break;
            }
        const QString before = drives.Drive();
        QSignalSpy changed(&drives, &DriveList::driveChanged);

        const Result<void> result =
            mounted ? drives.setMountedDrive(drive) : drives.setDrive(drive);
        QCOMPARE(result.ok() ? 0 : result.error().number(), error);
        if (error != 0) {
            QCOMPARE(drives.Drive(), before);
            QCOMPARE(changed.count(), 0);
            QVERIFY(result.error().description().size() > 0);
            return;
        }
        QCOMPARE(drives.nativeDrive(), want);
        QCOMPARE(drives.itemData(drives.currentIndex()).toByteArray(), want);
        QCOMPARE(changed.count(), before == drives.Drive() ? 0 : 1);

        // Choosing an entry by its text, as shown, gives the same drive without a change.
        QVERIFY(drives.setDrive(drives.currentText()).ok());
        QCOMPARE(drives.nativeDrive(), want);
        QCOMPARE(changed.count(), before == drives.Drive() ? 0 : 1);
    }

    // The user choosing another entry is a change; the entry shows its mount point.
    void userChoiceIsAChange() {
        DriveList drives;
        if (drives.count() < 2)
            QSKIP("one volume only");
        QSignalSpy changed(&drives, &DriveList::driveChanged);
        drives.setCurrentIndex(drives.currentIndex() == 0 ? 1 : 0);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toString(), drives.Drive());
        QVERIFY(drives.currentText().startsWith(drives.Drive()));
    }
};

QTEST_MAIN(tst_DriveList)
#include "tst_DriveList.moc"
