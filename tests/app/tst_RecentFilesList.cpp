#include "app/RecentFilesList.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace ondrel;

class tst_RecentFilesList : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void recordFile_data();
    void recordFile();
    void survivesTheOptionsFile();
};

namespace {

// The list as "name@dir" per visible entry, newest first.
QStringList shown(const RecentFilesList& list) {
    QStringList out;
    for (int i = 0; i < RecentFilesList::kEntries; ++i) {
        if (list.entry(i).visible())
            out << list.entry(i).fileName() + u'@' + list.entry(i).Tag;
    }
    return out;
}

} // namespace

void tst_RecentFilesList::recordFile_data() {
    QTest::addColumn<QStringList>("recorded"); // "name@dir" in the order opened
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("first file") << QStringList{"A.spc@/j/"} << QStringList{"A.spc@/j/"};
    QTest::newRow("a fifth file drops the oldest")
        << QStringList{"A@/1/", "B@/1/", "C@/1/", "D@/1/", "E@/1/"}
        << QStringList{"E@/1/", "D@/1/", "C@/1/", "B@/1/"};
    QTest::newRow("the oldest, in other case, moves to the top and keeps the new directory")
        << QStringList{"a.spc@/1/", "B@/1/", "C@/1/", "D@/1/", "A.SPC@/2/"}
        << QStringList{"A.SPC@/2/", "D@/1/", "C@/1/", "B@/1/"};
    QTest::newRow("a middle entry moves up, those after it stay")
        << QStringList{"A@/1/", "B@/1/", "C@/1/", "D@/1/", "C@/3/"}
        << QStringList{"C@/3/", "D@/1/", "B@/1/", "A@/1/"};
    QTest::newRow("the newest from another directory changes nothing")
        << QStringList{"A@/1/", "B@/1/", "B@/2/"} << QStringList{"B@/1/", "A@/1/"};
}

void tst_RecentFilesList::recordFile() {
    QFETCH(QStringList, recorded);
    RecentFilesList list;
    QVERIFY(!list.separatorVisible());
    for (const QString& r : recorded)
        list.recordFile(r.section(u'@', 0, 0), r.section(u'@', 1));
    QFETCH(QStringList, expected);
    QCOMPARE(shown(list), expected);
    QVERIFY(list.separatorVisible());
    QCOMPARE(list.entry(0).Caption.left(3), QStringLiteral("&1 "));
}

void tst_RecentFilesList::survivesTheOptionsFile() {
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("ONDREL.OPT"));
    QFile opt(file);
    QVERIFY(opt.open(QIODevice::WriteOnly));
    opt.write("[FSOptions]\r\nSaveSettings=False\r\n[MRUList]\r\nMRU0File=Old.spc\r\n"
              "MRU0Path=/old/\r\n");
    opt.close();

    RecentFilesList list;
    list.loadFrom(file);
    QCOMPARE(shown(list), QStringList{"Old.spc@/old/"});
    list.recordFile(QStringLiteral("Web.spc"), QStringLiteral("/jobs/"));
    list.saveTo(file);

    QVERIFY(opt.open(QIODevice::ReadOnly));
    QCOMPARE(opt.readAll(), QByteArray("[FSOptions]\r\nSaveSettings=False\r\n[MRUList]\r\n"
                                       "MRU0File=Web.spc\r\nMRU0Path=/jobs/\r\n"
                                       "MRU1File=Old.spc\r\nMRU1Path=/old/\r\n"
                                       "MRU2File=\r\nMRU2Path=\r\nMRU3File=\r\nMRU3Path=\r\n"));
    RecentFilesList again;
    again.loadFrom(file);
    QCOMPARE(shown(again), shown(list));
}

QTEST_GUILESS_MAIN(tst_RecentFilesList)
#include "tst_RecentFilesList.moc"
