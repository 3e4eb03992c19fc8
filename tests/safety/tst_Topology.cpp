// The real stager on trees that go wrong in ordinary tools: a destination that is the source, a
// destination inside the source, link loops, fifos, names that are not text or hold line breaks,
// the longest names, empty and sparse files. Every run must end, lose nothing and copy every
// regular file byte for byte.

#include "StageProcess.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace safety;

class tst_Topology : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;

    QByteArray at(const QByteArray& relative) const {
        return QFile::encodeName(m_dir->path()) + '/' + relative;
    }

    // Stages src (sub-directories included) to the destinations (below the scratch directory,
    // or as written when asWritten); the log is read into m_log.
    Outcome run(const QList<QByteArray>& dests, const Options& options = {},
                bool asWritten = false) {
        QList<QByteArray> paths;
        for (const QByteArray& dest : dests)
            paths += asWritten ? dest : at(dest);
        if (!writeBytes(at("job.spc"), specText(at("src"), paths)) ||
            !writeBytes(at("job.opt"),
                        optionsText(Options{{"Overwrite", "2"}, {"CreateDirs", "True"}} + options)))
            qFatal("cannot write the job");
        const Outcome r = stage({"--batch", "--on-error=ignore", "--options", at("job.opt"),
                                 "--log", at("run.log"), at("job.spc")},
                                {}, 20000);
        m_log = readBytes(at("run.log")).value_or("<no log>");
        return r;
    }

    QByteArray m_log;

private Q_SLOTS:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }
    void cleanup() { removeTree(QFile::encodeName(m_dir->path())); }

    // The destination is the source directory, by its own path or through a link to it: no
    // file is truncated or deleted, each is a problem file with an error line in the log.
    void destinationIsSource_data() {
        QTest::addColumn<QByteArray>("dest");
        QTest::addColumn<QByteArray>("move");
        QTest::newRow("copy") << QByteArray("src") << QByteArray("False");
        QTest::newRow("move") << QByteArray("src") << QByteArray("True");
        QTest::newRow("move through a linked path") << QByteArray("link") << QByteArray("True");
    }

    void destinationIsSource() {
        QFETCH(QByteArray, dest);
        QFETCH(QByteArray, move);
        QVERIFY(writeBytes(at("src/a.txt"), "A"));
        QVERIFY(writeBytes(at("src/sub/b.txt"), "B"));
        QCOMPARE(::symlink(at("src").constData(), at("link").constData()), 0);

        const Outcome r = run({dest}, {{"DelSource", move}});
        QVERIFY(r.finished);
        QCOMPARE(r.code, 1);
        QCOMPARE(contentOf(at("src/a.txt")), QByteArray("A"));
        QCOMPARE(contentOf(at("src/sub/b.txt")), QByteArray("B"));
        QCOMPARE(filesBelow(at("src")), (QList<QByteArray>{"a.txt", "sub/b.txt"}));
        QVERIFY2(m_log.contains("***Error 75, "), m_log.constData());
        QVERIFY(r.out.contains("during staging:\n" + at("src")));
    }

    // A destination below the source is not walked into, however its path reaches it: a second
    // run does not copy the first run's copies again. A relative destination is taken from the
    // spec file's directory.
    void destinationInsideSource_data() {
        QTest::addColumn<QByteArray>("dest");
        QTest::addColumn<bool>("asWritten");
        QTest::newRow("by its path") << QByteArray("src/out") << false;
        QTest::newRow("through a link to the source") << QByteArray("alias/out") << false;
        QTest::newRow("relative to the spec file") << QByteArray("src/out") << true;
    }
    void destinationInsideSource() {
        QFETCH(QByteArray, dest);
        QFETCH(bool, asWritten);
        QVERIFY(writeBytes(at("src/a.txt"), "A"));
        QVERIFY(writeBytes(at("src/sub/b.txt"), "B"));
        QCOMPARE(::symlink("src", at("alias").constData()), 0);
        for (int pass = 1; pass <= 2; ++pass) {
            const Outcome r = run({dest}, {}, asWritten);
            QVERIFY(r.finished);
            QCOMPARE(r.code, 0);
            QCOMPARE(filesBelow(at("src")),
                     (QList<QByteArray>{"a.txt", "out/a.txt", "out/sub/b.txt", "sub/b.txt"}));
        }
    }

    // A link loop ends the walk (the link to a directory is not followed), a link to a file is
    // copied as the file, a fifo is never opened and the run goes on past it, saying so, as it
    // says so of a link that leads nowhere.
    void specialEntries() {
        QVERIFY(writeBytes(at("src/top.txt"), "top"));
        QVERIFY(writeBytes(at("src/dir/f.txt"), "f"));
        QCOMPARE(::symlink("..", at("src/dir/loop").constData()), 0);
        QCOMPARE(::symlink("top.txt", at("src/alias.txt").constData()), 0);
        QCOMPARE(::symlink("none", at("src/dangling").constData()), 0);
        QCOMPARE(::mkfifo(at("src/dir/pipe").constData(), 0644), 0);

        const Outcome r = run({"dst"});
        QVERIFY2(r.finished, "the run hung");
        QCOMPARE(r.code, 0);
        for (const QByteArray& skipped : {at("src/dir/pipe"), at("src/dangling")}) {
            const QByteArray text = skipped + " is not a regular file; it was not staged.";
            QVERIFY2(m_log.contains(">>>" + text), m_log.constData());
            QVERIFY2(r.err.contains(text), r.err.constData());
        }
        QCOMPARE(filesBelow(at("dst")), (QList<QByteArray>{"alias.txt", "dir/f.txt", "top.txt"}));
        QCOMPARE(contentOf(at("dst/alias.txt")), QByteArray("top"));
        struct stat status {};
        QCOMPARE(::lstat(at("dst/alias.txt").constData(), &status), 0);
        QVERIFY(S_ISREG(status.st_mode));
    }

    void names_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<qint64>("size");      // negative: sparse, a hole of that many bytes
        QTest::addColumn<QByteArray>("shown"); // the name as the log shows it

        QTest::newRow("not UTF-8")
            << QByteArray("caf\xe9.txt") << 5LL << QByteArray("caf\\xE9.txt");
        // Whatever a reader takes for a line break: a name holding one must not give the log a
        // line of its own (here, one that reads as an error).
        QTest::newRow("line break")
            << QByteArray("a\n***Error 99.txt") << 5LL << QByteArray("a\\n***Error 99.txt");
        QTest::newRow("carriage return")
            << QByteArray("a\r***Error 99.txt") << 5LL << QByteArray("a\\r***Error 99.txt");
        QTest::newRow("next line (NEL)") << QByteArray("a\xc2\x85***Error 99.txt") << 5LL
                                         << QByteArray("a\\u0085***Error 99.txt");
        QTest::newRow("line separator") << QByteArray("a\xe2\x80\xa8***Error 99.txt") << 5LL
                                        << QByteArray("a\\u2028***Error 99.txt");
        QTest::newRow("terminal control, right-to-left override")
            << QByteArray("\xc2\x9b"
                          "2J\xe2\x80\xaetxt.exe")
            << 5LL << QByteArray("\\u009B2J\\u202Etxt.exe");
        const QByteArray longest = QByteArray(251, 'n') + ".txt";
        QTest::newRow("255 bytes") << longest << 5000LL << longest;
        const QByteArray wide = QByteArray("x") + QString(127, QChar(0xe9)).toUtf8();
        QTest::newRow("255 bytes of UTF-8") << wide << 5000LL << wide;
        QTest::newRow("empty file") << QByteArray("empty.txt") << 0LL << QByteArray("empty.txt");
        QTest::newRow("sparse 100 MiB")
            << QByteArray("sparse.img") << -100LL * 1024 * 1024 << QByteArray("sparse.img");
    }

    // Copied byte for byte under the same name; the log shows the name escaped, one line per
    // entry, and a name cannot start a line of its own.
    void names() {
        QFETCH(QByteArray, name);
        QFETCH(qint64, size);
        QFETCH(QByteArray, shown);
        QCOMPARE(name.size() <= 255, true);
        QByteArray content;
        for (qint64 i = 0; i < size; ++i)
            content += char('a' + i % 23);
        QVERIFY(writeBytes(at("src/" + name), content));
        if (size < 0)
            QCOMPARE(::truncate(at("src/" + name).constData(), -size), 0);

        const Outcome r = run({"dst"});
        QVERIFY(r.finished);
        QCOMPARE(r.code, 0);
        QCOMPARE(filesBelow(at("dst")), QList<QByteArray>{name});
        const auto copy = readBytes(at("dst/" + name));
        QVERIFY(copy.has_value());
        QCOMPARE(copy->size(), size < 0 ? -size : size);
        QVERIFY(*copy == readBytes(at("src/" + name)));

        QVERIFY2(
            m_log.contains("Copying " + at("src/" + shown) + " to " + at("dst/" + shown) + "\r\n"),
            m_log.constData());
        // Split as the readers that split the most do: no line of a clean run is an error.
        const QStringList lines = QString::fromUtf8(m_log).split(
            QRegularExpression(QStringLiteral("[\\n\\r\\x{0085}\\x{2028}\\x{2029}\\v\\f]")));
        QCOMPARE(lines.filter(QRegularExpression(QStringLiteral("^\\*\\*\\*"))), QStringList());
        QCOMPARE(m_log.count('\n'), m_log.count("\r\n"));
        QCOMPARE(m_log.count('\r'), m_log.count("\r\n"));
    }
};

QTEST_GUILESS_MAIN(tst_Topology)
#include "tst_Topology.moc"
