#include "platform/NativeText.h"

#include <QtTest>

using namespace ondrel;

class tst_NativeText : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void roundTrip_data() {
        QTest::addColumn<QByteArray>("native");
        QTest::addColumn<QString>("text");
        QTest::newRow("ascii") << QByteArray("/home/ann/a.txt")
                               << QStringLiteral("/home/ann/a.txt");
        QTest::newRow("utf-8") << QByteArray("/h/\xc3\xa9t\xc3\xa9") << QStringLiteral("/h/été");
        QTest::newRow("astral") << QByteArray("/\xf0\x9f\x98\x80") << QStringLiteral("/😀");
        QTest::newRow("latin-1 byte")
            << QByteArray("/h/caf\xe9.txt") << QStringLiteral("/h/caf") + QChar(0xDCE9) + ".txt";
        QTest::newRow("cut sequence") << QByteArray("/\xc3") << QStringLiteral("/") + QChar(0xDCC3);
        QTest::newRow("overlong slash")
            << QByteArray("/\xc0\xaf") << QStringLiteral("/") + QChar(0xDCC0) + QChar(0xDCAF);
        QTest::newRow("encoded surrogate")
            << QByteArray("\xed\xb3\xa9") << QString(QChar(0xDCED)) + QChar(0xDCB3) + QChar(0xDCA9);
        QTest::newRow("byte-order mark, after an odd byte")
            << QByteArray("\xef\xbb\xbf"
                          "a\xff\xef\xbb\xbf")
            << QString(QChar(0xFEFF)) + u'a' + QChar(0xDCFF) + QChar(0xFEFF);
        QTest::newRow("mixed") << QByteArray("\xff\xc3\xa9\xfe")
                               << QString(QChar(0xDCFF)) + QStringLiteral("é") + QChar(0xDCFE);
    }
    void roundTrip() {
        QFETCH(QByteArray, native);
        QFETCH(QString, text);
        QCOMPARE(NativeText::toText(native), text);
        QCOMPARE(NativeText::toNative(text), native);
    }
};

QTEST_APPLESS_MAIN(tst_NativeText)
#include "tst_NativeText.moc"
