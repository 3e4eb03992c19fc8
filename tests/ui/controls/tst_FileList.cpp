#include "ui/controls/FileList.h"

#include "platform/FileSystem.h"

#include <QApplication>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

using namespace ondrel;
using controls::FileList;

namespace {

QStringList shown(const FileList& list) {
    QStringList names;
    for (int row = 0; row < list.count(); ++row)
        names.append(list.model()->index(row, 0).data().toString());
    return names;
}

} // namespace

class tst_FileList : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QByteArray m_root;
    bool m_storedAttributes = false;

    QByteArray at(const QByteArray& name) const { return m_root + '/' + name; }
    void make(const QByteArray& name, int attributes = -1) {
        const int fd = ::open(at(name).constData(), O_CREAT | O_WRONLY, 0644);
        QVERIFY(fd >= 0);
        ::close(fd);
        if (attributes >= 0)
            QVERIFY(FileSystem::setAttributes(at(name), attributes).ok());
    }

private Q_SLOTS:
    void initTestCase() {
        m_root = QFile::encodeName(m_dir.path());
        make("plain.txt", Attr::Normal);
        make("due.txt"); // nothing stored: due for archiving
        make(".profile");
        make("ro.DOC", Attr::ReadOnly);
        make("sys.dat", Attr::System | Attr::Archive);
        make("caf\xe9.txt"); // not valid UTF-8
        make("noext");
        QVERIFY(QDir(m_dir.path()).mkdir(QStringLiteral("sub.txt")));
        // Where nothing can be stored, Normal and System read as Archive.
        const Result<int> plain = FileSystem::getAttributes(at("plain.txt"));
        m_storedAttributes = plain.ok() && plain.value() == Attr::Normal;
    }

    // QTemporaryDir cannot see the name that is not UTF-8, so cannot remove it.
    void cleanupTestCase() { ::unlink(at("caf\xe9.txt").constData()); }

    // Which files a pattern and the five filters list, in list-box order (names as shown).
    void listsWhatMatches_data() {
        using F = FileFilter;
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QList<F>>("cleared");
        QTest::addColumn<QString>("expected");
        QTest::newRow("everything")
            << "*.*" << QList<F>{}
            << ".profile caf\\xE9.txt due.txt noext plain.txt ro.DOC sys.dat";
        QTest::newRow("masks, any case")
            << "*.TXT; *.doc" << QList<F>{} << "caf\\xE9.txt due.txt plain.txt ro.DOC";
        QTest::newRow("no hidden") << "*.*" << QList<F>{F::Hidden}
                                   << "caf\\xE9.txt due.txt noext plain.txt ro.DOC sys.dat";
        QTest::newRow("no read-only, no system") << "*.*" << QList<F>{F::ReadOnly, F::System}
                                                 << ".profile caf\\xE9.txt due.txt noext plain.txt";
        QTest::newRow("no archive") << "*.*" << QList<F>{F::Archive} << "plain.txt ro.DOC";
        QTest::newRow("no normal")
            << "*.*" << QList<F>{F::Normal} << ".profile caf\\xE9.txt due.txt noext ro.DOC sys.dat";
    }
    void listsWhatMatches() {
        QFETCH(QString, pattern);
        QFETCH(QList<FileFilter>, cleared);
        QFETCH(QString, expected);
        if (!m_storedAttributes && !cleared.isEmpty())
            QSKIP("no user extended attributes where QTemporaryDir puts its files");
        FileList list;
        QVERIFY(list.setPath(m_root).ok());
        QVERIFY(list.setPattern(pattern).ok());
        for (FileFilter which : cleared)
            list.setFilter(which, false);
        QCOMPARE(shown(list).join(QLatin1Char(' ')), expected);
    }

    // A trailing separator is dropped and the list opens on everything; a missing directory is
    // error 76 and leaves it as it was. A name that is not valid UTF-8 keeps its bytes.
    void setPath() {
        FileList list;
        QVERIFY(list.setPath(m_root + '/').ok());
        const Result<void> set = list.setPath(at("gone"));
        QCOMPARE(set.ok() ? 0 : set.error().number(), 76);
        QCOMPARE(list.nativePath(), m_root);
        QCOMPARE(list.count(), 7);
        QVERIFY(list.setPattern(QStringLiteral("caf*")).ok());
        QCOMPARE(list.count(), 1);
        QCOMPARE(list.filePath(0), at("caf\xe9.txt"));
    }

    void rejectsABadPatternAndKeepsItsOwn_data() {
        QTest::addColumn<QString>("pattern");
        for (const char* bad : {"a\\b", "*/x", "c:*", "<", ">", "a|b", "\"x\""})
            QTest::newRow(bad) << QString::fromLatin1(bad);
    }
    void rejectsABadPatternAndKeepsItsOwn() {
        QFETCH(QString, pattern);
        FileList list;
        QVERIFY(list.setPath(m_root).ok());
        QVERIFY(list.setPattern(QStringLiteral("*.txt")).ok());
        const int before = list.count();
        QSignalSpy changed(&list, &FileList::patternChanged);
        const Result<void> set = list.setPattern(pattern);
        QCOMPARE(set.ok() ? 0 : set.error().number(), 5);
        QCOMPARE(list.Pattern(), QStringLiteral("*.txt"));
        QCOMPARE(list.count(), before);
        QCOMPARE(changed.count(), 0);
    }

    // A file copied in or deleted while the list is shown appears or goes by itself; the files
    // the user had selected stay selected.
    void followsTheDisk() {
        FileList list;
        QVERIFY(list.setPath(m_root).ok());
        QSignalSpy changed(&list, &FileList::listChanged);
        const auto rowOf = [&](const char* name) { return int(shown(list).indexOf(name)); };
        list.selectionModel()->select(list.model()->index(rowOf("plain.txt"), 0),
                                      QItemSelectionModel::Select);
        make("arrived.txt");
        QTRY_VERIFY(rowOf("arrived.txt") >= 0);
        QVERIFY(changed.count() >= 1);
        QCOMPARE(list.selectedRows(), std::vector<int>{rowOf("plain.txt")});
        QVERIFY(::unlink(at("arrived.txt").constData()) == 0);
        QTRY_COMPARE(rowOf("arrived.txt"), -1);
        QCOMPARE(list.selectedRows(), std::vector<int>{rowOf("plain.txt")});
    }
};

QTEST_MAIN(tst_FileList)
#include "tst_FileList.moc"
