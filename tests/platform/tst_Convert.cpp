#include "platform/Convert.h"

#include <QtTest>

using namespace ondrel;

class tst_Convert : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void toBoolean_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("expected"); // 0 false, 1 true, otherwise the error number

        QTest::newRow("True") << "True" << 1;
        QTest::newRow("false, lower case") << "false" << 0;
        QTest::newRow("TRUE") << "TRUE" << 1;
        QTest::newRow("zero") << "0" << 0;
        QTest::newRow("minus one") << "-1" << 1;
        QTest::newRow("fraction") << "0.5" << 1;
        QTest::newRow("yes") << "yes" << 13;
        QTest::newRow("maybe") << "maybe" << 13;
        QTest::newRow("True with suffix") << "Truex" << 13;
    }

    void toBoolean() {
        QFETCH(QString, text);
        QFETCH(int, expected);
        const Result<bool> r = Convert::toBoolean(text);
        if (expected > 1) {
            QVERIFY(!r.ok());
            QCOMPARE(r.error().number(), expected);
        } else {
            QVERIFY(r.ok());
            QCOMPARE(int(r.value()), expected);
        }
    }

    void toLong_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("expected");
        QTest::addColumn<int>("error");

        QTest::newRow("plain") << "848" << qint64(848) << 0;
        QTest::newRow("negative") << "-1200" << qint64(-1200) << 0;
        QTest::newRow("half to even, down") << "2000.5" << qint64(2000) << 0;
        QTest::newRow("half to even, up") << "2001.5" << qint64(2002) << 0;
        QTest::newRow("fraction") << "3.7" << qint64(4) << 0;
        QTest::newRow("exponent") << "1e3" << qint64(1000) << 0;
        QTest::newRow("largest") << "2147483647" << qint64(2147483647) << 0;
        QTest::newRow("overflow") << "2147483648" << qint64(0) << 6;
        QTest::newRow("huge") << "1e400" << qint64(0) << 6;
        QTest::newRow("letters") << "abc" << qint64(0) << 13;
        QTest::newRow("number then letters") << "12px" << qint64(0) << 13;
        QTest::newRow("True is no number") << "True" << qint64(0) << 13;
    }

    void toLong() {
        QFETCH(QString, text);
        QFETCH(qint64, expected);
        QFETCH(int, error);
        const Result<qint32> r = Convert::toLong(text);
        QCOMPARE(r.ok() ? 0 : r.error().number(), error);
        if (r.ok())
            QCOMPARE(qint64(r.value()), expected);
    }

    void toIntegerRange() {
        QCOMPARE(Convert::toInteger("32767").value(), qint16(32767));
        QCOMPARE(Convert::toInteger("-32768").value(), qint16(-32768));
        QCOMPARE(Convert::toInteger("32768").error().number(), 6);
        QCOMPARE(Convert::toInteger("7").value(), qint16(7));
    }
};

QTEST_GUILESS_MAIN(tst_Convert)
#include "tst_Convert.moc"
