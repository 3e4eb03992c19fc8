#include "app/FileGroupMasks.h"

#include <QtTest>

using namespace ondrel;

class tst_FileGroupMasks : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void typed_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("mask");
        QTest::newRow("lower case") << "readme.*"
                                    << "README.*";
        QTest::newRow("every forbidden character") << "a\"b/c:d<e>f\\g|h"
                                                   << "ABCDEFGH";
        QTest::newRow("wildcards, dot, semicolon, space") << "*.a;?.b c"
                                                          << "*.A;?.B C";
        QTest::newRow("non-ASCII") << QStringLiteral("été.*") << QStringLiteral("ÉTÉ.*");
    }
    void typed() {
        QFETCH(QString, text);
        QFETCH(QString, mask);
        QCOMPARE(FileGroupMasks::typed(text), mask);
    }

    // Cells to name and back: a gap ends the name.
    void namesAndCells_data() {
        QTest::addColumn<QStringList>("cells");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("cellsOfName");
        const QStringList none{"", "", "", "", ""};
        QTest::newRow("two masks") << QStringList{"*.A", "README.*", "", "", ""} << "*.A;README.*"
                                   << QStringList{"*.A", "README.*", "", "", ""};
        QTest::newRow("gap") << QStringList{"*.A", "", "*.C", "", ""} << "*.A"
                             << QStringList{"*.A", "", "", "", ""};
        QTest::newRow("first cell empty") << QStringList{"", "*.B", "", "", ""} << "" << none;
        QTest::newRow("a cell holding ;") << QStringList{"*.A;*.B", "", "", "", ""} << "*.A;*.B"
                                          << QStringList{"*.A", "*.B", "", "", ""};
    }
    void namesAndCells() {
        QFETCH(QStringList, cells);
        QFETCH(QString, name);
        QFETCH(QStringList, cellsOfName);
        QCOMPARE(FileGroupMasks::groupName(cells), name);
        QCOMPARE(FileGroupMasks::cellsOf(name), cellsOfName);
    }
    void aSixthMaskHasNoCell() {
        QCOMPARE(FileGroupMasks::cellsOf(QStringLiteral("A;B;C;D;E;F")),
                 (QStringList{"A", "B", "C", "D", "E"}));
    }

    void canOpen_data() {
        QTest::addColumn<QStringList>("cells");
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("opens");
        const QStringList two{"*.A", "*.B", "", "", ""};
        QTest::newRow("first of an empty grid") << QStringList{"", "", "", "", ""} << 1 << true;
        QTest::newRow("after the last mask") << two << 3 << true;
        QTest::newRow("leaving a gap") << two << 4 << false;
        QTest::newRow("holding a mask") << two << 2 << true;
        QTest::newRow("lone mask past a gap") << QStringList{"", "", "", "*.D", ""} << 4 << true;
        QTest::newRow("row header") << two << 0 << false;
    }
    void canOpen() {
        QFETCH(QStringList, cells);
        QFETCH(int, column);
        QFETCH(bool, opens);
        QCOMPARE(FileGroupMasks::canOpen(cells, column), opens);
    }
};

QTEST_APPLESS_MAIN(tst_FileGroupMasks)
#include "tst_FileGroupMasks.moc"
