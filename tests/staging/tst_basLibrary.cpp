#include "StagingFixture.h"

#include "staging/basLibrary.h"

#include <QtTest>

using namespace ondrel;
using namespace ondrel::test;

class tst_basLibrary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void replace_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("find");
        QTest::addColumn<QString>("with");
        QTest::addColumn<int>("partial");
        QTest::addColumn<int>("firstOnly");
        QTest::addColumn<QString>("result");

        QTest::newRow("touching a word char, whole words") << "A-B"
                                                           << "B"
                                                           << "C" << 0 << 1 << "A-B";
        QTest::newRow("touching, partial words") << "A-B"
                                                 << "B"
                                                 << "C" << 1 << 1 << "A-C";
        QTest::newRow("whole word alone") << "a b a"
                                          << "a"
                                          << "x" << 0 << 0 << "x b x";
        QTest::newRow("first only") << "a b a"
                                    << "a"
                                    << "x" << 0 << 1 << "x b a";
        QTest::newRow("True counts as all") << "aaa"
                                            << "a"
                                            << "b" << 1 << -1 << "bbb";
        QTest::newRow("replacement holds the text") << "ab"
                                                    << "a"
                                                    << "aa" << 1 << 0 << "aab";
        QTest::newRow("drive letters") << "CDE"
                                       << "D"
                                       << "" << 1 << 0 << "CE";
        QTest::newRow("case matters") << "abc"
                                      << "B"
                                      << "x" << 1 << 0 << "abc";
        QTest::newRow("mixed: skip inner, replace last") << "xa a"
                                                         << "a"
                                                         << "b" << 0 << 0 << "xa b";
    }

    void replace() {
        QFETCH(QString, text);
        QFETCH(QString, find);
        QFETCH(QString, with);
        QFETCH(int, partial);
        QFETCH(int, firstOnly);
        QFETCH(QString, result);
        QCOMPARE(basLibrary::Replace(text, find, with, qint16(partial), qint16(firstOnly)), result);
    }

    void makeDirTree() {
        StagingFixture f;
        const QByteArray deep = QFile::encodeName(f.path("a/b/c/"));
        QDir().mkpath(f.path("a"));
        QVERIFY(basLibrary::MakeDirTree(deep, f.ops, f.host, true));
        QVERIFY(QFileInfo(f.path("a/b/c")).isDir());
        QVERIFY(basLibrary::MakeDirTree(deep, f.ops, f.host, true));
        // A file in the way: the level after it cannot be made.
        f.file("x");
        QVERIFY(!basLibrary::MakeDirTree(QFile::encodeName(f.path("x/y/z")), f.ops, f.host, true));
        QCOMPARE(f.host.titles(), QStringList{"MakeDirTree Error"});
        QVERIFY(
            f.host.questions.first().prompt.startsWith("Error 76 occurred.  Message as follows:"));
        QVERIFY(!basLibrary::MakeDirTree(QFile::encodeName(f.path("x/y/z")), f.ops, f.host, false));
        QCOMPARE(f.host.questions.size(), 1);
    }

    void yesNo() {
        QCOMPARE(basLibrary::YesNo(true), QString("Yes"));
        QCOMPARE(basLibrary::YesNo(false), QString("No"));
    }
};

QTEST_GUILESS_MAIN(tst_basLibrary)
#include "tst_basLibrary.moc"
