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
    void reachableByKeyboard() {
        DriveList drives;
        QVERIFY(drives.focusPolicy() & Qt::TabFocus);
        QVERIFY(drives.count() > 0);
        QVERIFY(drives.currentIndex() >= 0);
    }

    // A mount point, an entry's text or a path chooses a volume; anything that is no mounted
    // volume is error 68 and leaves the choice alone. "@tmp" stands for a fresh directory.
    void setDrive_data() {
        QTest::addColumn<QString>("drive");
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("expected"); // a path whose volume is chosen; "@tmp" as above
        QTest::newRow("root") << "/" << 0 << "/";
        QTest::newRow("a directory") << "@tmp" << 0 << "@tmp";
        QTest::newRow("trailing separator") << "@tmp/" << 0 << "@tmp";
        QTest::newRow("missing directory on a volume") << "@tmp/gone/deeper" << 0 << "@tmp";
        QTest::newRow("pseudo file system") << "/proc" << 68 << "";
        QTest::newRow("inside a pseudo file system") << "/proc/self" << 68 << "";
        QTest::newRow("relative") << "media/stick" << 68 << "";
        QTest::newRow("empty") << "" << 68 << "";
    }
    void setDrive() {
        QFETCH(QString, drive);
        QFETCH(int, error);
        QFETCH(QString, expected);
        QTemporaryDir tmp;
        drive.replace(QStringLiteral("@tmp"), tmp.path());
        expected.replace(QStringLiteral("@tmp"), tmp.path());

        DriveList drives;
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

        const Result<void> result = drives.setDrive(drive);
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
        const Result<void> again = drives.setDrive(drives.currentText());
        QVERIFY(again.ok());
        QCOMPARE(drives.nativeDrive(), want);
        QCOMPARE(changed.count(), before == drives.Drive() ? 0 : 1);
    }

    // A stored drive is a mount point: a directory that is no longer one (the disk was pulled)
    // is a drive that is not there.
    void setMountedDrive_data() {
        QTest::addColumn<QString>("drive");
        QTest::addColumn<int>("error");
        QTest::newRow("the root") << "/" << 0;
        QTest::newRow("a directory that is no mount point") << "@tmp" << 68;
        QTest::newRow("nothing there") << "/no/such/volume" << 68;
        QTest::newRow("pseudo file system") << "/proc" << 68;
    }
    void setMountedDrive() {
        QFETCH(QString, drive);
        QFETCH(int, error);
        QTemporaryDir tmp;
        drive.replace(QStringLiteral("@tmp"), tmp.path());
        DriveList drives;
        const Result<void> result = drives.setMountedDrive(drive);
        QCOMPARE(result.ok() ? 0 : result.error().number(), error);
        if (error == 0)
            QCOMPARE(drives.Drive(), drive);
    }

    // The user choosing another entry is a change; the entry shows its mount point.
    void userChoiceIsAChange() {
        DriveList drives;
        if (drives.count() < 2)
            QSKIP("one volume only");
        QSignalSpy changed(&drives, &DriveList::driveChanged);
        const int other = drives.currentIndex() == 0 ? 1 : 0;
        drives.setCurrentIndex(other);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().first().toString(), drives.Drive());
        QVERIFY(drives.currentText().startsWith(drives.Drive()));
    }
};

QTEST_MAIN(tst_DriveList)
#include "tst_DriveList.moc"
