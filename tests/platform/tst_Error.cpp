#include "platform/Error.h"
#include "platform/MsgBox.h"
#include "platform/ScriptedMsgBox.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>

using namespace ondrel;

class tst_Error : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void errnoMapping_data() {
        QTest::addColumn<int>("errnoValue");
        QTest::addColumn<bool>("parentExists");
        QTest::addColumn<int>("number");

        QTest::newRow("ENOENT, directory there") << ENOENT << true << 53;
        QTest::newRow("ENOENT, directory missing") << ENOENT << false << 76;
        QTest::newRow("ENOTDIR") << ENOTDIR << true << 76;
        QTest::newRow("EACCES") << EACCES << true << 70;
        QTest::newRow("EPERM") << EPERM << true << 70;
        QTest::newRow("EROFS") << EROFS << true << 70;
        QTest::newRow("ETXTBSY") << ETXTBSY << true << 55;
        QTest::newRow("EBUSY") << EBUSY << true << 55;
        QTest::newRow("ENOSPC") << ENOSPC << true << 61;
        QTest::newRow("EDQUOT") << EDQUOT << true << 61;
        QTest::newRow("EFBIG") << EFBIG << true << 61;
        QTest::newRow("EIO") << EIO << true << 68;
        QTest::newRow("ENXIO") << ENXIO << true << 68;
        QTest::newRow("ENODEV") << ENODEV << true << 68;
        QTest::newRow("ENOMEDIUM") << ENOMEDIUM << true << 68;
        QTest::newRow("ESTALE") << ESTALE << true << 68;
        QTest::newRow("ENOTCONN") << ENOTCONN << true << 68;
        QTest::newRow("EEXIST") << EEXIST << true << 75;
        QTest::newRow("EINVAL") << EINVAL << true << 75;
    }

    void errnoMapping() {
        QFETCH(int, errnoValue);
        QFETCH(bool, parentExists);
        QFETCH(int, number);
        QTemporaryDir dir;
        const QString path = parentExists ? dir.filePath("file") : dir.filePath("gone/file");
        const Error e = Error::fromErrno(errnoValue, path, "Test");
        QCOMPARE(e.number(), number);
        QCOMPARE(e.description(), Error::standardDescription(number));
        QCOMPARE(e.source(), QString("Test"));
    }

    void descriptions() {
        QCOMPARE(Error(457).description(),
                 QString("This key is already associated with an element of this collection"));
        QCOMPARE(Error(32755).description(), QString("Cancel was selected."));
        QCOMPARE(Error(75).description(), QString("Path/File access error"));
    }

    void errorReport() {
        ScriptedMsgBox boxes;
        ShowErrorReport(Error(76), "MakeDirTree");
        QCOMPARE(boxes.shown().size(), 1);
        const MsgBoxRequest& box = boxes.shown().first();
        QCOMPARE(box.prompt, QString("Error 76 occurred.  Message as follows:\r\nPath not found"));
        QCOMPARE(box.title, QString("MakeDirTree Error"));
        QCOMPARE(box.buttons, MsgButtons::OK);
        QCOMPARE(box.icon, MsgIcon::None);
    }

    void scriptedAnswersInOrderThenFirstButton() {
        ScriptedMsgBox boxes;
        boxes.queue(MsgAnswer::Retry);
        boxes.queue(MsgAnswer::Ignore);
        QCOMPARE(MsgBox("a", MsgButtons::AbortRetryIgnore, MsgIcon::Exclamation, "t"),
                 MsgAnswer::Retry);
        QCOMPARE(MsgBox("b", MsgButtons::AbortRetryIgnore, MsgIcon::Exclamation, "t"),
                 MsgAnswer::Ignore);
        QCOMPARE(MsgBox("c", MsgButtons::YesNoCancel, MsgIcon::Question, "t"), MsgAnswer::Yes);
        QCOMPARE(boxes.unanswered(), 1);
        {
            ScriptedMsgBox inner;
            inner.queue(MsgAnswer::No);
            QCOMPARE(MsgBox("d", MsgButtons::YesNo, MsgIcon::Question, "t"), MsgAnswer::No);
        }
        // The outer handler is back once the inner one is gone.
        MsgBox("e", MsgButtons::OK, MsgIcon::None, "t");
        QCOMPARE(boxes.shown().size(), 4);
    }
};

QTEST_GUILESS_MAIN(tst_Error)
#include "tst_Error.moc"
