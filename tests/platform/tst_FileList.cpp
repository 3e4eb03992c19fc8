#include "platform/FileList.h"
#include "platform/NativeText.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

class tst_FileList : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void read_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("CR LF lines") << QByteArray("/a/one.txt\r\n/b/two.txt\r\n")
                                     << QStringList{"/a/one.txt", "/b/two.txt"};
        QTest::newRow("LF lines, no final line end")
            << QByteArray("/a/one.txt\n/b/two.txt") << QStringList{"/a/one.txt", "/b/two.txt"};
        QTest::newRow("lone CR") << QByteArray("/a\r/b\r") << QStringList{"/a", "/b"};
        QTest::newRow("commas split a line")
            << QByteArray("/a/x,/b/y, /c/z\r\n") << QStringList{"/a/x", "/b/y", "/c/z"};
        QTest::newRow("quoted item keeps its comma")
            << QByteArray("\"/a/one, two.txt\",/b\r\n") << QStringList{"/a/one, two.txt", "/b"};
        QTest::newRow("quoted item is not trimmed, so a blank makes it relative")
            << QByteArray("  \" /a/padded \"  \n") << QStringList{};
        QTest::newRow("quoted absolute item keeps inner blanks")
            << QByteArray("\"/a/b c \"\n") << QStringList{"/a/b c "};
        QTest::newRow("text after the closing quote is dropped")
            << QByteArray("\"/a/x\"junk,/b\n") << QStringList{"/a/x", "/b"};
        QTest::newRow("unclosed quote ends at the line end")
            << QByteArray("\"/a/x,y\n/b\n") << QStringList{"/a/x,y", "/b"};
        QTest::newRow("blanks around unquoted items trimmed")
            << QByteArray(" \t/a/x \t\r\n") << QStringList{"/a/x"};
        QTest::newRow("relative and empty items skipped")
            << QByteArray("\r\nrelative/x\r\n,,\r\nC:\\old\\style.txt\r\n/kept\r\n")
            << QStringList{"/kept"};
        QTest::newRow("repeat of the previous entry dropped")
            << QByteArray("/a\n/a\n/b\n/a\n") << QStringList{"/a", "/b", "/a"};
        QTest::newRow("repeat across a skipped item dropped")
            << QByteArray("/a\nskip\n/a\n") << QStringList{"/a"};
        QTest::newRow("case kept") << QByteArray("/Docs/A.txt\n/docs/a.txt\n")
                                   << QStringList{"/Docs/A.txt", "/docs/a.txt"};
        QTest::newRow("UTF-8 with byte-order mark")
            << QByteArray("\xEF\xBB\xBF/caf\xC3\xA9.txt\n") << QStringList{"/café.txt"};
        QTest::newRow("a name that is not UTF-8 keeps its bytes")
            << QByteArray("/caf\xE9.txt\n")
            << QStringList{NativeText::toText(QByteArray("/caf\xE9.txt"))};
        QTest::newRow("empty file") << QByteArray() << QStringList{};
    }

    void read() {
        QFETCH(QByteArray, content);
        QFETCH(QStringList, expected);
        QTemporaryDir dir;
        const QString name = dir.filePath("list.txt");
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        const Result<QStringList> list = FileList::read(name);
        QVERIFY(list.ok());
        QCOMPARE(list.value(), expected);
    }

    void missingFile() {
        QTemporaryDir dir;
        const Result<QStringList> list = FileList::read(dir.filePath("none.txt"));
        QVERIFY(!list.ok());
        QCOMPARE(list.error().number(), 53);
    }
};

QTEST_GUILESS_MAIN(tst_FileList)
#include "tst_FileList.moc"
