#include "app/FileGroupMasks.h"

#include <QtTest>

using namespace ondrel;

class tst_FileGroupMasks : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void typed_data();
    void typed();
    void groupName_data();
    void groupName();
    void cellsOf_data();
    void cellsOf();
    void canOpen_data();
    void canOpen();
};

void tst_FileGroupMasks::typed_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("mask");
    QTest::newRow("lower case") << "readme.*"
                                << "README.*";
    QTest::newRow("every forbidden character") << "a\"b/c:d<e>f\\g|h"
                                               << "ABCDEFGH";
    QTest::newRow("only forbidden") << "\\:/"
                                    << "";
    QTest::newRow("wildcards, dot and semicolon") << "*.a;?.b"
                                                  << "*.A;?.B";
    QTest::newRow("spaces and digits kept") << "my file 2.txt"
                                            << "MY FILE 2.TXT";
    QTest::newRow("non-ASCII upper-cased") << QStringLiteral("été.*") << QStringLiteral("ÉTÉ.*");
}

void tst_FileGroupMasks::typed() {
    QFETCH(QString, text);
    QFETCH(QString, mask);
    QCOMPARE(FileGroupMasks::typed(text), mask);
}

void tst_FileGroupMasks::groupName_data() {
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QString>("name");
    QTest::newRow("two masks") << QStringList{"*.TXT", "README.*", "", "", ""} << "*.TXT;README.*";
    QTest::newRow("gap ends the name") << QStringList{"*.A", "", "*.C", "", ""} << "*.A";
    QTest::newRow("first cell empty") << QStringList{"", "*.B", "", "", ""} << "";
    QTest::newRow("all five") << QStringList{"A", "B", "C", "D", "E"} << "A;B;C;D;E";
    QTest::newRow("a cell holding ;") << QStringList{"*.A;*.B", "*.C", "", "", ""} << "*.A;*.B;*.C";
}

void tst_FileGroupMasks::groupName() {
    QFETCH(QStringList, cells);
    QFETCH(QString, name);
    QCOMPARE(FileGroupMasks::groupName(cells), name);
}

void tst_FileGroupMasks::cellsOf_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("cells");
    QTest::newRow("two masks") << "*.A;*.B" << QStringList{"*.A", "*.B", "", "", ""};
    QTest::newRow("one mask") << "*.*" << QStringList{"*.*", "", "", "", ""};
    QTest::newRow("more than five") << "A;B;C;D;E;F;G" << QStringList{"A", "B", "C", "D", "E"};
    QTest::newRow("empty") << "" << QStringList{"", "", "", "", ""};
    QTest::newRow("case kept") << "*.htm;*.html" << QStringList{"*.htm", "*.html", "", "", ""};
}

void tst_FileGroupMasks::cellsOf() {
    QFETCH(QString, name);
    QFETCH(QStringList, cells);
    QCOMPARE(FileGroupMasks::cellsOf(name), cells);
    if (cells.count(QString()) > 0)
        QCOMPARE(FileGroupMasks::groupName(cells), name);
}

void tst_FileGroupMasks::canOpen_data() {
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("opens");
    const QStringList empty{"", "", "", "", ""};
    const QStringList two{"*.A", "*.B", "", "", ""};
    QTest::newRow("first cell of an empty grid") << empty << 1 << true;
    QTest::newRow("second cell of an empty grid") << empty << 2 << false;
    QTest::newRow("cell after the last mask") << two << 3 << true;
    QTest::newRow("cell leaving a gap") << two << 4 << false;
    QTest::newRow("cell holding a mask") << two << 2 << true;
    QTest::newRow("lone mask past a gap") << QStringList{"", "", "", "*.D", ""} << 4 << true;
    QTest::newRow("row header") << two << 0 << false;
}

void tst_FileGroupMasks::canOpen() {
    QFETCH(QStringList, cells);
    QFETCH(int, column);
    QFETCH(bool, opens);
    QCOMPARE(FileGroupMasks::canOpen(cells, column), opens);
}

QTEST_APPLESS_MAIN(tst_FileGroupMasks)
#include "tst_FileGroupMasks.moc"
