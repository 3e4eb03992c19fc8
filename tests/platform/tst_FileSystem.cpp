#include "platform/FileCopier.h"
#include "platform/FileSystem.h"

#include <QTemporaryDir>
#include <QtTest>

#include <map>
#include <memory>

#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <ftw.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace ondrel;

namespace {

using Names = QByteArrayList;
constexpr char kDosAttrib[] = "user.DOSATTRIB";

template <typename R> int errorOf(const R& r) {
    return r.ok() ? 0 : r.error().number();
}

Names names(const Result<std::vector<QByteArray>>& listed) {
    return listed.ok() ? Names(listed->begin(), listed->end()) : Names{"<error>"};
}

bool writeFile(const QByteArray& path, const QByteArray& content, mode_t mode = 0644) {
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const bool ok = fd >= 0 &&
                    ::write(fd, content.constData(), size_t(content.size())) == content.size() &&
                    ::fchmod(fd, mode) == 0;
    return fd >= 0 && ::close(fd) == 0 && ok;
}

QByteArray readFile(const QByteArray& path) {
    QFile file;
    const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC);
    const bool ok = fd >= 0 && file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    return ok ? file.readAll() : "<missing>";
}

QByteArray storedRaw(const QByteArray& path) {
    char buffer[256];
    const ssize_t n = ::getxattr(path.constData(), kDosAttrib, buffer, sizeof buffer);
    return n < 0 ? QByteArray("<none>") : QByteArray(buffer, n);
}

// Every name in dir with the content of its regular files: what a user would see changed.
std::map<QByteArray, QByteArray> snapshot(const QByteArray& dir) {
    std::map<QByteArray, QByteArray> entries;
    DIR* d = ::opendir(dir.constData());
    while (const dirent* e = d ? ::readdir(d) : nullptr) {
        const QByteArray path = dir + '/' + e->d_name;
        struct stat st {};
        if (qstrcmp(e->d_name, ".") && qstrcmp(e->d_name, "..") && ::lstat(path, &st) == 0)
            entries[e->d_name] = S_ISREG(st.st_mode) ? readFile(path) : "<not a file>";
    }
    if (d)
        ::closedir(d);
    return entries;
}

mode_t modeOf(const QByteArray& path) {
    struct stat st {};
    return ::stat(path.constData(), &st) == 0 ? st.st_mode & 07777 : 0;
}

bool setModified(const QByteArray& path, time_t seconds, long nanoseconds) {
    const struct timespec times[2] = {{seconds, 0}, {seconds, nanoseconds}};
    return ::utimensat(AT_FDCWD, path.constData(), times, 0) == 0;
}

} // namespace

class tst_FileSystem : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    QByteArray m_root;
    bool m_xattrs = false;

    QByteArray at(const QByteArray& relative) const { return m_root + '/' + relative; }
    QByteArray at(const char* relative) const { return at(QByteArray(relative)); }
    QByteArray at(const QString& relative) const { return at(QFile::encodeName(relative)); }

private Q_SLOTS:
    void initTestCase() {
        // Stored attributes need user extended attributes (tmpfs has them on newer kernels).
        QTemporaryDir probe;
        const QByteArray file = QFile::encodeName(probe.filePath("probe"));
        QVERIFY(writeFile(file, "x"));
        m_xattrs = ::setxattr(file.constData(), "user.probe", "1", 1, 0) == 0;
    }

    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        m_root = QFile::encodeName(m_dir->path());
    }

    void cleanup() {
        // QTemporaryDir leaves names that are not valid UTF-8 behind: QDir never sees them.
        const auto remove = [](const char* path, const struct stat*, int, FTW*) {
            return ::remove(path), 0;
        };
        ::nftw(m_root.constData(), remove, 16, FTW_DEPTH | FTW_PHYS);
        m_dir.reset();
    }

    void attributes_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("set");        // -1: never set
        QTest::addColumn<QByteArray>("raw"); // stored as it stands by another program
        QTest::addColumn<int>("expected");
        const QByteArray none;
        QTest::newRow("new file reads Archive") << "a.txt" << -1 << none << 32;
        QTest::newRow("dot name reads Hidden") << ".a" << -1 << none << 34;
        QTest::newRow("directory") << "dir" << -1 << none << 48;
        QTest::newRow("stored without Archive") << "a.txt" << 0 << none << 0;
        QTest::newRow("dot name, stored 0") << ".a" << 0 << none << 2;
        QTest::newRow("Hidden System Archive") << "a.txt" << 38 << none << 38;
        QTest::newRow("Read-Only Archive") << "a.txt" << 33 << none << 33;
        QTest::newRow("Read-Only Hidden System") << "a.txt" << 7 << none << 7;
        QTest::newRow("directory, Hidden") << "dir" << 2 << none << 18;
        QTest::newRow("text and NUL") << "a.txt" << -1 << QByteArray("0x22\0", 5) << 34;
        QTest::newRow("upper case, other bits") << "a.txt" << -1 << QByteArray("0X3E") << 38;
        QTest::newRow("no digits") << "a.txt" << -1 << QByteArray("0x") << 32;
        QTest::newRow("binary form") << "a.txt" << -1 << QByteArray("\0\0\x04\0\x22\0", 6) << 32;
        QTest::newRow("long record")
            << "a.txt" << -1 << QByteArray("0x4\0", 4) + QByteArray(300, '\x7f') << 4;
    }

    void attributes() {
        QFETCH(QString, name);
        QFETCH(int, set);
        QFETCH(QByteArray, raw);
        QFETCH(int, expected);
        if (((set >= 0 && (set & 38) != 32) || !raw.isNull()) && !m_xattrs)
            QSKIP("no user extended attributes where QTemporaryDir puts its files");
        const QByteArray path = at(name);
        QVERIFY(name == "dir" ? ::mkdir(path, 0755) == 0 : writeFile(path, "x"));
        if (!raw.isNull())
            QCOMPARE(::setxattr(path, kDosAttrib, raw.constData(), size_t(raw.size()), 0), 0);
        if (set >= 0) {
            QCOMPARE(errorOf(FileSystem::setAttributes(path, set)), 0);
            // Again, on what may now be read-only.
            QCOMPARE(errorOf(FileSystem::setAttributes(path, set)), 0);
            if (m_xattrs) // the text that Samba and Wine read
                QCOMPARE(storedRaw(path), "0x" + QByteArray::number(set & 38, 16));
        }
        QCOMPARE(FileSystem::getAttributes(path).value(), expected);
        QCOMPARE(FileSystem::status(path)->attributes, expected);
    }

    void readOnlyWriteBits_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("umask");
        QTest::addColumn<int>("readOnly");
        QTest::addColumn<int>("restored");
        QTest::newRow("0640") << 0640 << 022 << 0440 << 0640;
        QTest::newRow("0664, umask 022") << 0664 << 022 << 0444 << 0644;
        QTest::newRow("0775, umask 002") << 0775 << 002 << 0555 << 0775;
    }

    void readOnlyWriteBits() {
        QFETCH(int, mode);
        QFETCH(int, umask);
        QFETCH(int, readOnly);
        QFETCH(int, restored);
        QVERIFY(writeFile(at("f"), "x", mode_t(mode)));
        const mode_t oldMask = ::umask(mode_t(umask));
        const Result<void> set = FileSystem::setAttributes(at("f"), 1);
        const mode_t afterSet = modeOf(at("f"));
        const Result<void> cleared = FileSystem::setAttributes(at("f"), 32);
        ::umask(oldMask);
        QCOMPARE(errorOf(set) + errorOf(cleared), 0);
        QCOMPARE(int(afterSet), readOnly);
        QCOMPARE(int(modeOf(at("f"))), restored);
    }

    void statusFollowsLinks() {
        QVERIFY(writeFile(at("f.txt"), "hello"));
        QVERIFY(setModified(at("f.txt"), 1234567890, 999999999));
        QVERIFY(::symlink("f.txt", at("link")) == 0);
        const FileStatus s = FileSystem::status(at("link")).value();
        QCOMPARE(s.size, qint64(5));
        QCOMPARE(s.modified, qint64(1234567890)); // whole seconds, never rounded up
        QVERIFY(s.isRegular && !s.isDirectory && s.inode != 0 &&
                s.inode == FileSystem::status(at("f.txt"))->inode);
        QCOMPARE(FileSystem::fileLength(at("link")).value(), qint64(5));
        QCOMPARE(FileSystem::lastModified(at("link")).value(), qint64(1234567890));
    }

    // ASCII names are ordered without building their text; the order must still be the text's,
    // punctuation between the letters and mixed with names that are not ASCII included. Files and
    // directories are listed apart; a link to a directory is neither, and a copying thread's
    // directory of its own is not listed.
    void listingOrderIsTheTextOrder() {
        for (const char* name : {"gamma", "Beta", "alpha", "\xc3\xa9t\xc3\xa9", "bad\xff"})
            QVERIFY(::mkdir(at(name), 0755) == 0);
        QVERIFY(::mkdir(at(FileCopier::temporaryName("copies", ::getpid())), 0700) == 0);
        QVERIFY(::symlink("alpha", at("linked")) == 0);
        const Names created{"_x",       "[a",  "Zeta", "zeta", "a",    "A", "ab~",
                            "a.b",      "a_b", "aB",   "Ab",   "~",    "0", "\x5c",
                            "Ãrger", "`q",  "bÃ©",  "B",    "badÿ", "Z_"};
        for (const QByteArray& name : created)
            QVERIFY(writeFile(at(name.constData()), "x"));
        Names expected = created;
        std::sort(expected.begin(), expected.end(), [](const QByteArray& a, const QByteArray& b) {
            const int c =
                QString::compare(QString::fromUtf8(a), QString::fromUtf8(b), Qt::CaseInsensitive);
            return c != 0 ? c < 0 : a < b;
        });
        QCOMPARE(names(FileSystem::matchingFiles(m_root, "*")), expected);
        const Names dirs{"alpha", "bad\xff", "Beta", "gamma", "\xc3\xa9t\xc3\xa9"};
        QCOMPARE(names(FileSystem::subDirectories(m_root)), dirs);
    }

    void matchingFiles_data() {
        QTest::addColumn<QString>("masks");
        QTest::addColumn<Names>("expected");
        QTest::addColumn<int>("error");
        const Names all{".profile",    "A.txt",    "b.txt",  "bad\xff.txt", "c.TXT",
                        "data.tar.gz", "link.txt", "README", "\xc3\xb1.txt"};
        const Names txt{"A.txt", "b.txt", "bad\xff.txt", "c.TXT", "link.txt", "\xc3\xb1.txt"};
        // What a mask takes is tst_FileMask's; here, what the listing makes of it.
        QTest::newRow("*.* takes every file") << "*.*" << all << 0;
        QTest::newRow("*.TXT, any case") << "*.TXT" << txt << 0;
        QTest::newRow("vertical bar") << "*.txt|*.gz" << Names{} << 5;
    }

    void matchingFiles() {
        QFETCH(QString, masks);
        QFETCH(Names, expected);
        QFETCH(int, error);
        for (const QByteArray& name :
             Names{"b.txt", "A.txt", "c.TXT", "README", ".profile", "\xc3\xb1.txt", "bad\xff.txt",
                   "data.tar.gz", FileCopier::temporaryName("b.txt", 123)})
            QVERIFY(writeFile(at(name), name));
        QVERIFY(::symlink("b.txt", at("link.txt")) == 0);
        QVERIFY(::symlink("none.txt", at("dangling.txt")) == 0);
        QVERIFY(::symlink(".", at("dirlink.txt")) == 0);
        QVERIFY(::mkfifo(at("pipe.txt"), 0644) == 0);
        QVERIFY(::mkdir(at("dir.txt"), 0755) == 0);
        const Result<std::vector<QByteArray>> files = FileSystem::matchingFiles(m_root, masks);
        QCOMPARE(errorOf(files), error);
        if (files.ok())
            QCOMPARE(names(files), expected);
        // The "<various>" walk matches one name at a time, and must agree.
        for (const QByteArray& name : names(FileSystem::matchingFiles(m_root, "*")))
            QCOMPARE(FileSystem::matchesMask(name, masks), expected.contains(name));
    }

    void copyKeepsContentTimeAndMode() {
        QVERIFY(::mkdir(at("dst"), 0755) == 0);
        QByteArray content(3 * 1024 * 1024 + 123, Qt::Uninitialized);
        for (qsizetype i = 0; i < content.size(); ++i)
            content[i] = char(i * 7 + i / 4096);
        // A name of 255 bytes leaves the temporary file's name no room of its own.
        for (const QByteArray& name : {QByteArray("bad\xff.bin"), QByteArray(255, 'n')}) {
            QVERIFY(writeFile(at(name), content, 0640));
            QVERIFY(setModified(at(name), 1000000000, 500000000));
            QVERIFY(writeFile(at("dst/" + name), "old content"));
            const Result<CopiedFile> copied = FileSystem::copyFile(at(name), at("dst/" + name));
            QCOMPARE(errorOf(copied), 0);
            QVERIFY(readFile(at("dst/" + name)) == content);
            // The copy names the file that took the destination's name: a move relies on it.
            struct stat st {};
            QCOMPARE(::stat(at("dst/" + name), &st), 0);
            QVERIFY(copied->device == st.st_dev && copied->inode == st.st_ino);
            QCOMPARE(FileSystem::lastModified(at("dst/" + name)).value(), qint64(1000000000));
            QCOMPARE(int(modeOf(at("dst/" + name))), 0640);
        }
        // Listed byte for byte, and no temporary file left.
        const Names expected{"bad\xff.bin", QByteArray(255, 'n')};
        QCOMPARE(names(FileSystem::matchingFiles(at("dst"), "*.*")), expected);
        QCOMPARE(snapshot(at("dst")).size(), size_t(2));
    }

    // A sparse file stays sparse: its holes are not written out as zeros.
    void copyKeepsHoles_data() {
        QTest::addColumn<QList<qint64>>("data"); // offsets of 4 KiB blocks of data
        QTest::addColumn<qint64>("size");
        const qint64 mib = 1024 * 1024;
        QTest::newRow("hole in the middle") << QList<qint64>{0, 40 * mib} << 40 * mib + 4096;
        QTest::newRow("starts with a hole") << QList<qint64>{30 * mib} << 30 * mib + 4096;
        QTest::newRow("ends in a hole") << QList<qint64>{0} << 50 * mib;
        QTest::newRow("all hole") << QList<qint64>{} << 20 * mib;
    }

    void copyKeepsHoles() {
        QFETCH(QList<qint64>, data);
        QFETCH(qint64, size);
        {
            QFile file(QFile::decodeName(at("sparse")));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(size));
            for (const qint64 offset : data)
                QVERIFY(file.seek(offset) && file.write(QByteArray(4096, 'd')) == 4096);
        }
        struct stat source {};
        QCOMPARE(::stat(at("sparse"), &source), 0);
        if (source.st_blocks * 512 > 8 * 4096 * (data.size() + 1))
            QSKIP("this file system does not keep holes");
        QCOMPARE(errorOf(FileSystem::copyFile(at("sparse"), at("copy"))), 0);
        struct stat copy {};
        QCOMPARE(::stat(at("copy"), &copy), 0);
        QCOMPARE(copy.st_size, size);
        QVERIFY2(copy.st_blocks <= source.st_blocks + 16,
                 qPrintable(QString::number(copy.st_blocks)));
        QVERIFY(readFile(at("copy")) == readFile(at("sparse")));
    }

    void copyAttributes_data() {
        QTest::addColumn<int>("source"); // -1: nothing stored
        QTest::addColumn<int>("expected");
        QTest::addColumn<QByteArray>("stored");
        QTest::newRow("nothing stored") << -1 << 32 << QByteArray("<none>");
        QTest::newRow("stored without Archive") << 0 << 32 << QByteArray("0x20");
        QTest::newRow("Hidden and System") << 6 << 38 << QByteArray("0x26");
        QTest::newRow("Read-Only Hidden") << 3 << 35 << QByteArray("0x22");
    }

    void copyAttributes() {
        QFETCH(int, source);
        QFETCH(int, expected);
        QFETCH(QByteArray, stored);
        if (source >= 0 && !m_xattrs)
            QSKIP("no user extended attributes where QTemporaryDir puts its files");
        QVERIFY(writeFile(at("a"), "x"));
        if (source >= 0)
            QCOMPARE(errorOf(FileSystem::setAttributes(at("a"), source)), 0);
        QCOMPARE(errorOf(FileSystem::copyFile(at("a"), at("b"))), 0);
        QCOMPARE(FileSystem::getAttributes(at("b")).value(), expected);
        QCOMPARE(storedRaw(at("b")), stored);
    }

    void copyFailingMidwayKeepsOldDestination() {
        QVERIFY(writeFile(at("big"), QByteArray(1 << 20, 'b')));
        QVERIFY(writeFile(at("dest"), "old"));
        // A file size limit makes writing fail once the temporary file exists.
        struct rlimit old {};
        QVERIFY(::getrlimit(RLIMIT_FSIZE, &old) == 0);
        const struct rlimit small = {65536, old.rlim_max};
        const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
        QVERIFY(::setrlimit(RLIMIT_FSIZE, &small) == 0);
        const Result<CopiedFile> copied = FileSystem::copyFile(at("big"), at("dest"));
        ::setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);
        if (copied.ok())
            QSKIP("the file system shares extents: nothing was written that could fail");
        QCOMPARE(copied.error().number(), 61);
        QCOMPARE(readFile(at("dest")), QByteArray("old"));
        QCOMPARE(snapshot(m_root).size(), size_t(2));
    }

    void removeStaleTemporaries() {
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(0);
        QVERIFY(child > 0 && ::waitpid(child, nullptr, 0) == child);
        const QByteArray dead = FileCopier::temporaryName("a.txt", child);
        const QByteArray live = FileCopier::temporaryName("a.txt", ::getpid());
        const QByteArray wholeFile = ".ondrel~a.txt~Ab12Cd"; // WholeFile's own, no process id
        // A user's file that merely looks like a temporary of a process that is gone.
        QByteArray lookalike = dead;
        lookalike[lookalike.size() - 1] = lookalike.back() == 'A' ? 'B' : 'A';
        for (const QByteArray& name : {dead, live, wholeFile, lookalike, QByteArray("a.txt")})
            QVERIFY(writeFile(at(name), "x"));
        // A copying thread's directory of its own, left by the process that is gone, goes with
        // that process's temporaries in it; one holding anything else stays, with that.
        const QByteArray work = FileCopier::temporaryName("copies", child);
        const QByteArray otherWork = FileCopier::temporaryName("copies", child);
        QVERIFY(::mkdir(at(work).constData(), 0700) == 0 &&
                ::mkdir(at(otherWork).constData(), 0700) == 0);
        QVERIFY(writeFile(at(work + "/" + dead), "x") &&
                writeFile(at(otherWork + "/" + dead), "x"));
        QVERIFY(writeFile(at(otherWork + "/a.txt"), "x"));
        QVERIFY(FileSystem::isTemporaryName(dead) && !FileSystem::isTemporaryName(wholeFile));
        FileSystem::removeStaleTemporaries(m_root);
        const std::map<QByteArray, QByteArray> kept{{live, "x"},
                                                    {wholeFile, "x"},
                                                    {lookalike, "x"},
                                                    {"a.txt", "x"},
                                                    {otherWork, "<not a file>"}};
        QVERIFY(snapshot(m_root) == kept);
        QVERIFY((snapshot(at(otherWork)) == std::map<QByteArray, QByteArray>{{"a.txt", "x"}}));
    }

    void fileOperations_data() {
        QTest::addColumn<QString>("call"); // operation and path
        QTest::addColumn<int>("expected");
        QTest::newRow("delete") << "delete file" << 0;
        QTest::newRow("delete read-only") << "delete ro" << 70;
        QTest::newRow("delete missing") << "delete none" << 53;
        QTest::newRow("delete, directory missing") << "delete no/x" << 76;
        QTest::newRow("delete a directory") << "delete dir" << 75;
        QTest::newRow("make") << "make new" << 0;
        QTest::newRow("make existing") << "make dir" << 75;
        QTest::newRow("make over a file") << "make file" << 75;
        QTest::newRow("make, parent missing") << "make no/new" << 76;
        QTest::newRow("check") << "check dir" << 0;
        QTest::newRow("check a file") << "check file" << 76;
        QTest::newRow("check missing") << "check none" << 76;
        QTest::newRow("list missing") << "list none" << 76;
        QTest::newRow("list a file") << "list file" << 76;
        QTest::newRow("set Directory bit") << "set16 file" << 5;
        QTest::newRow("set negative") << "set-1 file" << 5;
        QTest::newRow("set, missing") << "set0 none" << 53;
        QTest::newRow("set, directory missing") << "set0 no/x" << 76;
        // A copy that fails changes nothing and leaves no temporary file behind.
        QTest::newRow("copy onto read-only") << "copy file ro" << 70;
        QTest::newRow("copy onto the source itself") << "copy file file" << 75;
        QTest::newRow("copy onto a hard link to it") << "copy file hard" << 75;
        QTest::newRow("copy onto a symbolic link to it") << "copy file link" << 75;
        QTest::newRow("copy missing source") << "copy none x" << 53;
        QTest::newRow("copy, source's directory missing") << "copy no/none x" << 53;
        QTest::newRow("copy, destination directory missing") << "copy file no/x" << 76;
        QTest::newRow("copy onto a directory") << "copy file dir" << 75;
        QTest::newRow("copy a directory") << "copy dir x" << 75;
        QTest::newRow("copy a fifo") << "copy fifo x" << 75;
        QTest::newRow("copy a kernel pseudo-file") << "copy pagemap x" << 75;
    }

    void fileOperations() {
        QFETCH(QString, call);
        QFETCH(int, expected);
        QVERIFY(writeFile(at("file"), "new") && writeFile(at("ro"), "old", 0444));
        QVERIFY(::mkdir(at("dir"), 0755) == 0 && ::link(at("file"), at("hard")) == 0);
        QVERIFY(::symlink("file", at("link")) == 0 && ::mkfifo(at("fifo"), 0644) == 0);
        QVERIFY(::symlink("/proc/self/pagemap", at("pagemap")) == 0);
        const auto before = snapshot(m_root);
        const QString operation = call.section(u' ', 0, 0);
        const QByteArray path = at(call.section(u' ', 1, 1));
        const auto run = [&] {
            if (operation == "copy")
                return errorOf(FileSystem::copyFile(path, at(call.section(u' ', 2))));
            if (operation == "delete")
                return errorOf(FileSystem::deleteFile(path));
            if (operation == "make")
                return errorOf(FileSystem::makeDirectory(path));
            if (operation == "check")
                return errorOf(FileSystem::checkDirectory(path));
            if (operation == "list") {
                const int files = errorOf(FileSystem::matchingFiles(path, "*.*"));
                return files == errorOf(FileSystem::subDirectories(path)) ? files : -1;
            }
            return errorOf(FileSystem::setAttributes(path, operation.mid(3).toInt()));
        };
        QCOMPARE(run(), expected);
        if (expected != 0)
            QVERIFY(snapshot(m_root) == before);
        else if (operation != "check")
            QCOMPARE(::access(path, F_OK) == 0, operation == "make");
    }
};

QTEST_GUILESS_MAIN(tst_FileSystem)
#include "tst_FileSystem.moc"
