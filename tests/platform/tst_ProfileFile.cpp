#include "platform/ProfileFile.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

class tst_ProfileFile : public QObject {
    Q_OBJECT

private:
    static QByteArray crlf(const char* lines) { return QByteArray(lines).replace("\n", "\r\n"); }

private Q_SLOTS:
    void reading_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("section");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("expected"); // by the system's reading rule
        auto row = [](const char* name, const char* file, const char* section, const char* key,
                      const char* expected) {
            QTest::newRow(name) << QString(file) << QString(section) << QString(key)
                                << QString(expected);
        };
        row("byte-order mark", "bom.ini", "Main", "Key", "bom");
        row("LF line ends", "lf-only.ini", "Main", "Key", "lf only");
        row("LF, second section", "lf-only.ini", "Other", "Key", "second");
        row("blank lines, padded", "blank-lines.ini", "Main", "Key", "padded value");
        row("section after comment", "blank-lines.ini", "Other", "Key", "second");
        row("first duplicate key wins", "duplicates.ini", "Main", "Key", "first");
        row("first duplicate section wins", "duplicates.ini", "MAIN", "key", "first");
        row("no section, no entry", "duplicates.ini", "", "Key", "");
        // Only the file's first byte-order mark is one; elsewhere those bytes are text.
        row("byte-order mark inside the file", "bom-inside.ini", "Main", "Key", "first");
        row("byte-order mark inside the file, no header", "bom-inside.ini", "Other", "Key", "");
        row("section name trimmed, case", "odd-lines.ini", "main", "KEY", "mixed case");
        row("empty value", "odd-lines.ini", "Main", "Empty", "");
        row("blanks only", "odd-lines.ini", "Main", "Blanks", "");
        row("line without =", "odd-lines.ini", "Main", "NoEquals", "");
        row("missing key", "odd-lines.ini", "Main", "Absent", "");
        row("missing section", "odd-lines.ini", "Absent", "Key", "");
    }

    void reading() {
        QFETCH(QString, file);
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, expected);
        const Result<ProfileFile> read = ProfileFile::read(ONDREL_TEST_DATA "/" + file);
        QVERIFY(read.ok());
        QCOMPARE(ReadProfileValue(read.value(), section, key), expected);
    }

    void readingRuleCutsAt254() {
        const QString v254(254, u'x');
        ProfileFile file;
        file.writeString("S", "exact", v254);
        file.writeString("S", "long", v254 + "yz");
        file.writeString("S", "padded", "  " + QString(260, u'p'));
        QCOMPARE(ReadProfileValue(file, "S", "exact"), v254);
        QCOMPARE(ReadProfileValue(file, "S", "long"), v254);
        // The file's blanks are gone before the buffer is filled.
        QCOMPARE(ReadProfileValue(ProfileFile::parse(file.toBytes()), "S", "padded"),
                 QString(254, u'p'));
        QCOMPARE(file.getString("S", "missing", " ", 255), QString(" "));
    }

    void writing_data() {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QStringList>("writes"); // section, key, value, ...
        QTest::addColumn<QByteArray>("after");

        QTest::newRow("empty file")
            << QByteArray() << QStringList{"A", "k1", "1", "B", "k1", "2", "A", "k2", "3"}
            << crlf("[A]\nk1=1\nk2=3\n[B]\nk1=2\n");
        QTest::newRow("replaced in place, first spelling kept for the section")
            << crlf("[opts]\nTop=1\nLeft=2\n") << QStringList{"Opts", "TOP", "9"}
            << crlf("[opts]\nTOP=9\nLeft=2\n");
        QTest::newRow("new key before trailing blank lines and comments")
            << crlf("[A]\nk1=1\n\n; note\n[B]\nx=y\n") << QStringList{"a", "k2", "2"}
            << crlf("[A]\nk1=1\nk2=2\n\n; note\n[B]\nx=y\n");
        QTest::newRow("LF file rewritten with CR LF, BOM kept")
            << QByteArray("\xEF\xBB\xBF[A]\nk=1\n") << QStringList{"B", "k", "2"}
            << QByteArray("\xEF\xBB\xBF[A]\r\nk=1\r\n[B]\r\nk=2\r\n");
        QTest::newRow("lines before the first section stay")
            << crlf("k=loose\n[A]\n") << QStringList{"A", "k", "1"} << crlf("k=loose\n[A]\nk=1\n");
        QTest::newRow("duplicate key: the first is replaced")
            << crlf("[A]\nk=1\nK=2\n") << QStringList{"A", "k", "3"} << crlf("[A]\nk=3\nK=2\n");
        QTest::newRow("key beginning with a byte-order mark replaced in place")
            << QByteArray("[A]\r\n\xEF\xBB\xBFk=1\r\n")
            << QStringList{"A", QChar(0xFEFF) + QString("k"), "2"}
            << QByteArray("[A]\r\n\xEF\xBB\xBFk=2\r\n");
        // As through the system's call, which takes a C string: otherwise a value with trailing
        // NULs loses one at each load and save and a saved file never settles.
        QTest::newRow("a value ends at its first NUL")
            << crlf("[A]\nk=1\n") << QStringList{"A", "k", QStringView(u"v\0\0", 3).toString(),
                                                 "A", "j", QStringView(u"x\0y", 3).toString()}
            << crlf("[A]\nk=v\nj=x\n");
    }

    void writing() {
        QFETCH(QByteArray, before);
        QFETCH(QStringList, writes);
        QFETCH(QByteArray, after);
        ProfileFile file = ProfileFile::parse(before);
        for (int i = 0; i + 2 < writes.size(); i += 3)
            file.writeString(writes[i], writes[i + 1], writes[i + 2]);
        QCOMPARE(file.toBytes(), after);
    }

    // A missing file reads as empty (the common case of a first start); a directory is an error.
    void disk() {
        QTemporaryDir dir;
        Result<ProfileFile> missing = ProfileFile::read(dir.filePath("none/such.ini"));
        QVERIFY(missing.ok() && missing->isEmpty());
        Result<ProfileFile> directory = ProfileFile::read(dir.path());
        QVERIFY(!directory.ok());
        QCOMPARE(directory.error().number(), 75);

        const QString name = dir.filePath("round.ini");
        ProfileFile file;
        file.writeString("Sec", "Path", "/home/ünïcode/dir");
        QVERIFY(file.write(name).ok());
        Result<ProfileFile> back = ProfileFile::read(name);
        QVERIFY(back.ok());
        QCOMPARE(ReadProfileValue(back.value(), "sec", "path"), QString("/home/ünïcode/dir"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"round.ini"});
    }
};

QTEST_GUILESS_MAIN(tst_ProfileFile)
#include "tst_ProfileFile.moc"
