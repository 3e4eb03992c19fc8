#include "platform/FileMask.h"

#include <QtTest>

using namespace ondrel;

using Names = QByteArrayList;

class tst_FileMask : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void matches_data() {
        QTest::addColumn<QString>("masks");
        QTest::addColumn<Names>("taken"); // of allNames()
        QTest::addColumn<int>("error");
        QTest::newRow("* takes every name") << "*" << allNames() << 0;
        QTest::newRow("? is one character, not one byte")
            << "?.txt" << Names{"A.txt", "b.txt", "c.TXT", "\xc3\xb1.txt"} << 0;
        QTest::newRow("README.* takes README") << "README.*" << Names{"README"} << 0;
        QTest::newRow("masks, blanks, empty ones")
            << " *.GZ ; readme ;;" << Names{"data.tar.gz", "README"} << 0;
        QTest::newRow("Unicode case") << "\u00d1*" << Names{"\xc3\xb1.txt"} << 0;
        QTest::newRow("only the whole name") << "*.tar" << Names{} << 0;
        QTest::newRow("colon") << "c:*.txt" << Names{} << 5;
        QTest::newRow("slash") << "sub/*.txt" << Names{} << 5;
    }

    void matches() {
        QFETCH(QString, masks);
        QFETCH(Names, taken);
        QFETCH(int, error);
        const Result<FileMask> mask = FileMask::compile(masks);
        QCOMPARE(mask.ok() ? 0 : mask.error().number(), error);
        if (!mask.ok())
            return;
        for (const QByteArray& name : allNames())
            QVERIFY2(mask->matches(name) == taken.contains(name), name.constData());
    }

private:
    static Names allNames() {
        return {".profile",    "A.txt",    "b.txt",  "bad\xff.txt", "c.TXT",
                "data.tar.gz", "link.txt", "README", "\xc3\xb1.txt"};
    }
};

QTEST_GUILESS_MAIN(tst_FileMask)
#include "tst_FileMask.moc"
