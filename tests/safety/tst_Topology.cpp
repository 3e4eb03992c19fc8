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

    // Stages src (sub-directories included) to dest (below the scratch directory, or as written
    // when asWritten); the log is read into m_log. A run that hung or crashed has code -1.
    Outcome run(const QByteArray& dest, const Options& options = {}, bool asWritten = false) {
        if (!writeBytes(at("job.spc"), specText(at("src"), {asWritten ? dest : at(dest)})) ||
            !writeBytes(at("job.opt"),
                        optionsText(Options{{"Overwrite", "2"}, {"CreateDirs", "True"}} + options)))
            qFatal("cannot write the job");
        Outcome r = stage({"--batch", "--on-error=ignore", "--options", at("job.opt"), "--log",
                           at("run.log"), at("job.spc")},
                          {}, 20000);
        m_log = readBytes(at("run.log")).value_or("<no log>");
        if (!r.finished)
            r.code = -1;
        return r;
    }

    QByteArray m_log;

private Q_SLOTS:
    void init() { m_dir = std::make_unique<QTemporaryDir>(); }
    void cleanup() { removeTree(QFile::encodeName(m_dir->path())); }

    // The destination is the source directory, by its own path or through a link to it: no file
    // is truncated or deleted, each is a problem file with an error line in the log. A destination
    // below the source is not walked into, however its path reaches it: a second run does not
    // copy the first run's copies again. A relative destination is taken from the spec file's
    // directory.
    void destinationInSource_data() {
        QTest::addColumn<QString>("dest");
        QTest::addColumn<bool>("asWritten");
        QTest::addColumn<QByteArray>("move"); // DelSource
        QTest::newRow("the source, copied") << "src" << false << QByteArray("False");
        QTest::newRow("the source, moved") << "src" << false << QByteArray("True");
        QTest::newRow("the source through a link, moved") << "alias" << false << QByteArray("True");
        QTest::newRow("below it") << "src/out" << false << QByteArray("False");
        QTest::newRow("below it through a link") << "alias/out" << false << QByteArray("False");
        QTest::newRow("below it, by a relative path") << "src/out" << true << QByteArray("False");
    }
    void destinationInSource() {
        QFETCH(QString, dest);
        QFETCH(bool, asWritten);
        QFETCH(QByteArray, move);
        const bool below = dest.endsWith("/out");
        QVERIFY(writeBytes(at("src/a.txt"), "A") && writeBytes(at("src/sub/b.txt"), "B"));
        QCOMPARE(::symlink("src", at("alias").constData()), 0);
        for (int pass = 1; pass <= 2; ++pass) {
            const Outcome r = run(dest.toUtf8(), {{"DelSource", move}}, asWritten);
            QCOMPARE(r.code, below ? 0 : 1);
            QCOMPARE(filesBelow(at("src")),
                     (below ? QByteArrayList{"a.txt", "out/a.txt", "out/sub/b.txt", "sub/b.txt"}
                            : QByteArrayList{"a.txt", "sub/b.txt"}));
            QCOMPARE(contentOf(at("src/a.txt")) + contentOf(at("src/sub/b.txt")), "AB");
            QCOMPARE(m_log.contains("***Error 75, "), !below);
            QCOMPARE(r.out.contains("during staging:\n" + at("src")), !below);
        }
    }

    // A link loop ends the walk (the link to a directory is not followed), a link to a file is
    // copied as the file, a fifo is never opened and the run goes on past it, saying so, as it
    // says so of a link that leads nowhere.
    void specialEntries() {
        QVERIFY(writeBytes(at("src/top.txt"), "top") && writeBytes(at("src/dir/f.txt"), "f"));
        QCOMPARE(::symlink("..", at("src/dir/loop").constData()), 0);
        QCOMPARE(::symlink("top.txt", at("src/alias.txt").constData()), 0);
        QCOMPARE(::symlink("none", at("src/dangling").constData()), 0);
        QCOMPARE(::mkfifo(at("src/dir/pipe").constData(), 0644), 0);

        const Outcome r = run("dst");
        QCOMPARE(r.code, 0);
        for (const QByteArray& skipped : {at("src/dir/pipe"), at("src/dangling")}) {
            const QByteArray text = skipped + " is not a regular file; it was not staged.";
            QVERIFY2(m_log.contains(">>>" + text), m_log.constData());
            QVERIFY2(r.err.contains(text), r.err.constData());
        }
        QCOMPARE(filesBelow(at("dst")), (QList<QByteArray>{"alias.txt", "dir/f.txt", "top.txt"}));
        QCOMPARE(contentOf(at("dst/alias.txt")), QByteArray("top"));
        struct stat status {};
        QVERIFY(::lstat(at("dst/alias.txt").constData(), &status) == 0 && S_ISREG(status.st_mode));
    }

    void names_data() {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<qint64>("size");      // negative: sparse, a hole of that many bytes
        QTest::addColumn<QByteArray>("shown"); // the name as the log shows it
        const auto row = [](const char* tag, const QByteArray& name, qint64 size,
                            const QByteArray& shown = {}) {
            QTest::newRow(tag) << name << size << (shown.isEmpty() ? name : shown);
        };
        row("not UTF-8", "caf\xe9.txt", 5, "caf\\xE9.txt");
        // Whatever a reader takes for a line break: a name holding one must not give the log a
        // line of its own (here, one that reads as an error).
        const QList<QPair<QByteArray, QByteArray>> breaks{
            {"\n", "\\n"}, {"\r", "\\r"}, {"\xc2\x85", "\\u0085"}, {"\xe2\x80\xa8", "\\u2028"}};
        for (const auto& [raw, shown] : breaks)
            row("line break " + shown, "a" + raw + "***Error 99.txt", 5,
                "a" + shown + "***Error 99.txt");
        row("terminal control, right-to-left override", "\u009B2J\u202Etxt.exe", 5,
            "\\u009B2J\\u202Etxt.exe");
        row("255 bytes", QByteArray(251, 'n') + ".txt", 5000);
        row("255 bytes of UTF-8", "x" + QString(127, QChar(0xe9)).toUtf8(), 5000);
        row("empty file", "empty.txt", 0);
        row("sparse 100 MiB", "sparse.img", -100LL * 1024 * 1024);
    }

    // Copied byte for byte under the same name; the log shows the name escaped, one line per
    // entry, and a name cannot start a line of its own.
    void names() {
        QFETCH(QByteArray, name);
        QFETCH(qint64, size);
        QFETCH(QByteArray, shown);
        const QByteArray content = QByteArray("abcdefghijklmnopqrstuvw").repeated(size / 23 + 1);
        QVERIFY(writeBytes(at("src/" + name), content.left(size)));
        if (size < 0)
            QCOMPARE(::truncate(at("src/" + name).constData(), -size), 0);

        const Outcome r = run("dst");
        QCOMPARE(r.code, 0);
        QCOMPARE(filesBelow(at("dst")), QList<QByteArray>{name});
        const QByteArray copy = contentOf(at("dst/" + name));
        QCOMPARE(copy.size(), qAbs(size));
        QVERIFY(copy == contentOf(at("src/" + name)));

        QVERIFY2(
            m_log.contains("Copying " + at("src/" + shown) + " to " + at("dst/" + shown) + "\r\n"),
            m_log.constData());
        // Split as the readers that split the most do: no line of a clean run is an error, and
        // every line ends in \r\n.
        const QStringList lines = QString::fromUtf8(m_log).split(
            QRegularExpression(QStringLiteral("[\\n\\r\\x{0085}\\x{2028}\\x{2029}\\v\\f]")));
        QCOMPARE(lines.filter(QRegularExpression(QStringLiteral("^\\*\\*\\*"))), QStringList());
        QCOMPARE(m_log.count('\n') + m_log.count('\r'), 2 * m_log.count("\r\n"));
    }
};

QTEST_GUILESS_MAIN(tst_Topology)
#include "tst_Topology.moc"
