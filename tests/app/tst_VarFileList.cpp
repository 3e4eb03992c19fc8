#include "app/VarFileList.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <set>

using namespace ondrel;

namespace {

QStringList texts(const VarFileList& list) {
    QStringList out;
    for (qsizetype i = 0; i < list.size(); ++i)
        out.append(list.at(i).text);
    return out;
}

} // namespace

class tst_VarFileList : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Paths added in batches land sorted as a sorted list box sorts, each once; on POSIX two
    // paths that differ only in case are two files.
    void addsSortedWithoutDuplicates_data() {
        QTest::addColumn<QList<QStringList>>("batches");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("twice the same file")
            << QList<QStringList>{{"/d/a.txt"}, {"/d/a.txt"}} << QStringList{"/d/a.txt"};
        QTest::newRow("duplicates inside one batch")
            << QList<QStringList>{{"/d/b", "/d/a", "/d/b", "/d/a"}} << QStringList{"/d/a", "/d/b"};
        QTest::newRow("order ignores case")
            << QList<QStringList>{{"/d/b.txt", "/d/A.txt"}, {"/d/C.txt", "/d/a.TXT"}}
            << QStringList{"/d/A.txt", "/d/a.TXT", "/d/b.txt", "/d/C.txt"};
        QTest::newRow("case kept")
            << QList<QStringList>{{"/Home/Ann/Report.TXT"}} << QStringList{"/Home/Ann/Report.TXT"};
        QTest::newRow("merge interleaves")
            << QList<QStringList>{{"/a", "/c", "/e"}, {"/b", "/c", "/d", "/f"}}
            << QStringList{"/a", "/b", "/c", "/d", "/e", "/f"};
        QTest::newRow("empty entries skipped") << QList<QStringList>{{""}} << QStringList{};
    }
    void addsSortedWithoutDuplicates() {
        QFETCH(QList<QStringList>, batches);
        QFETCH(QStringList, expected);
        VarFileList list;
        for (const QStringList& batch : batches)
            list.addText(batch);
        QCOMPARE(texts(list), expected);
    }

    // Many batches of random paths against a plain set: nothing lost, nothing doubled.
    void mergesLikeASet() {
        VarFileList list;
        std::set<QString> reference;
        QRandomGenerator random(12);
        for (int batch = 0; batch < 40; ++batch) {
            std::vector<QByteArray> paths;
            for (int i = int(random.bounded(60)); i > 0; --i) {
                const QByteArray p = "/d/f" + QByteArray::number(random.bounded(300));
                paths.push_back(p);
                reference.insert(QString::fromLatin1(p));
            }
            list.addNative(paths);
            if (batch % 7 == 6 && list.size() > 3) {
                const QString gone = list.at(1).text;
                const QString gone2 = list.at(list.size() - 1).text;
                list.removeRows({list.size() - 1, 1});
                reference.erase(gone);
                reference.erase(gone2);
            }
        }
        QCOMPARE(list.size(), qsizetype(reference.size()));
        QStringList sorted(reference.begin(), reference.end());
        std::sort(sorted.begin(), sorted.end(), [](const QString& a, const QString& b) {
            return a.compare(b, Qt::CaseInsensitive) < 0;
        });
        QCOMPARE(texts(list), sorted);
    }

    // What a saved list holds, and that reading it gives the same list.
    void savesOnePathPerLine() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("list.txt"));
        VarFileList list;
        list.addNative({"/d/b.txt", "/d/one, two.txt", "/d/A.txt"});
        QVERIFY(list.save(file).ok());
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll(), QByteArray("/d/A.txt\r\n/d/b.txt\r\n\"/d/one, two.txt\"\r\n"));
        VarFileList read;
        QCOMPARE(read.load(file).value_or(-1), qsizetype(3));
        QCOMPARE(texts(read), texts(list));
        QCOMPARE(read.load(dir.filePath(QStringLiteral("none.txt"))).error().number(), 53);
    }
};

QTEST_APPLESS_MAIN(tst_VarFileList)
#include "tst_VarFileList.moc"
