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

    // Names as the log, the windows and the terminal show them, from their bytes and from their
    // text alike. Nothing that a reader may take for a line break, a terminal control or a
    // change of direction gets through; a shown name is shown the same again.
    void display_data() {
        QTest::addColumn<QByteArray>("native");
        QTest::addColumn<QString>("shown");
        QTest::newRow("plain") << QByteArray("/a/b c.txt") << "/a/b c.txt";
        QTest::newRow("UTF-8") << QByteArray("/\xc3\xa9/\xf0\x9f\x98\x80") << "/\u00e9/\U0001F600";
        QTest::newRow("invalid byte") << QByteArray("/a\xff") << "/a\\xFF";
        QTest::newRow("cut sequence") << QByteArray("/\xc3") << "/\\xC3";
        QTest::newRow("encoded surrogate") << QByteArray("\xed\xa0\x80") << "\\xED\\xA0\\x80";
        QTest::newRow("line breaks, tab") << QByteArray("a\r\nb\tc") << "a\\r\\nb\\tc";
        QTest::newRow("C0, DEL") << QByteArray("a\x01\x0b\x1b\x1e\x7f", 6)
                                 << "a\\x01\\x0B\\x1B\\x1E\\x7F";
        // A C1 control as a character, and the same byte alone, which is no UTF-8.
        QTest::newRow("NEL") << QByteArray("a\xc2\x85***Error") << "a\\u0085***Error";
        QTest::newRow("lone 0x85") << QByteArray("a\x85") << "a\\x85";
        QTest::newRow("CSI") << QByteArray("\xc2\x9b"
                                           "31m")
                             << "\\u009B31m";
        QTest::newRow("line, paragraph separators") << QByteArray("a\xe2\x80\xa8"
                                                                  "b\xe2\x80\xa9")
                                                    << "a\\u2028b\\u2029";
        QTest::newRow("right-to-left override")
            << QByteArray("x\xe2\x80\xaetxt.exe") << "x\\u202Etxt.exe";
        QTest::newRow("isolates, marks")
            << QByteArray("\xe2\x81\xa6\xe2\x81\xa9\xe2\x80\x8f") << "\\u2066\\u2069\\u200F";
        QTest::newRow("a written-out escape stays") << QByteArray("a\\nb") << "a\\nb";
    }
    void display() {
        QFETCH(QByteArray, native);
        QFETCH(QString, shown);
        QCOMPARE(NativeText::display(native), shown);
        QCOMPARE(NativeText::display(NativeText::toText(native)), shown);
        QCOMPARE(NativeText::display(shown), shown);
    }

    void displayKeepsTabsWhenAsked() {
        QCOMPARE(NativeText::display(u"Source Path:\t/a\tb\u2028", NativeText::Tabs::Kept),
                 QStringLiteral("Source Path:\t/a\tb\\u2028"));
    }
};

QTEST_APPLESS_MAIN(tst_NativeText)
#include "tst_NativeText.moc"
