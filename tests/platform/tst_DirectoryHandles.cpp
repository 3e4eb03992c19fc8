#include "platform/DirectoryHandles.h"
#include "platform/FileSystem.h"

#include <QtTest>

#include <sys/stat.h>

using namespace ondrel;

namespace {

bool writeFile(const QByteArray& path, const QByteArray& content) {
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray readFile(const QByteArray& path) {
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

} // namespace

// The file system reached through a run's directory handles must behave exactly as it does
// through whole paths, however many directories the run passes and whatever it makes on the way.
class tst_DirectoryHandles : public QObject {
    Q_OBJECT

    QTemporaryDir m_tmp;
    QByteArray at(const char* name) const { return QFile::encodeName(m_tmp.filePath(name)); }

private Q_SLOTS:
    // More directories than the run keeps handles on, each visited again and again: every copy,
    // look and listing lands in the right directory, and a directory listed twice lists the same.
    void manyDirectoriesInTurn() {
        constexpr int kDirs = 13;
        for (int d = 0; d < kDirs; ++d) {
            const QByteArray dir = at("d") + QByteArray::number(d);
            QVERIFY(FileSystem::makeDirectory(dir).ok());
            QVERIFY(writeFile(dir + "/src.txt", "from " + QByteArray::number(d)));
        }
        const DirectoryHandles::Scope handles;
        for (int pass = 0; pass < 3; ++pass) {
            for (int d = 0; d < kDirs; ++d) {
                const QByteArray from = at("d") + QByteArray::number(d);
                const QByteArray to = at("d") + QByteArray::number((d * 5 + pass) % kDirs);
                const QByteArray copy =
                    to + "/copy" + QByteArray::number(pass) + "-" + QByteArray::number(d) + ".txt";
                QVERIFY(FileSystem::copyFile(from + "/src.txt", copy).ok());
                QCOMPARE(readFile(copy), "from " + QByteArray::number(d));
                QVERIFY(FileSystem::status(copy).ok());
                const auto first = FileSystem::matchingFiles(from, QStringLiteral("*.txt"));
                const auto again = FileSystem::matchingFiles(from, QStringLiteral("*.txt"));
                QVERIFY(first.ok() && again.ok());
                QCOMPARE(*again, *first);
                QVERIFY(first->size() >= 1);
            }
        }
        for (int d = 0; d < kDirs; ++d) {
            const auto files =
                FileSystem::matchingFiles(at("d") + QByteArray::number(d), QStringLiteral("*"));
            QVERIFY(files.ok());
            QCOMPARE(files->size(), size_t(4)); // src.txt and one copy per pass
        }
    }

    // A directory missing when first asked about is found once it is made.
    void directoryMadeDuringTheRun() {
        const DirectoryHandles::Scope handles;
        QVERIFY(writeFile(at("made-src"), "content"));
        const QByteArray file = at("made/sub/f");
        QCOMPARE(FileSystem::status(file, StatusDetail::WithoutAttributes).error().number(), 76);
        QCOMPARE(FileSystem::copyFile(at("made-src"), file).error().number(), 76);
        QVERIFY(FileSystem::makeDirectory(at("made")).ok());
        QVERIFY(FileSystem::makeDirectory(at("made/sub")).ok());
        QVERIFY(FileSystem::copyFile(at("made-src"), file, DestinationHint::Missing).ok());
        QCOMPARE(readFile(file), QByteArray("content"));
        QVERIFY(FileSystem::deleteFile(file).ok());
        QCOMPARE(FileSystem::status(file).error().number(), 53);
    }

    // What happens to a directory between two runs is never hidden by a handle of the first.
    void directoryReplacedBetweenRuns() {
        QVERIFY(FileSystem::makeDirectory(at("swap")).ok());
        QVERIFY(writeFile(at("swap/old"), "old"));
        {
            const DirectoryHandles::Scope handles;
            QVERIFY(FileSystem::status(at("swap/old")).ok());
        }
        QVERIFY(::rename(at("swap").constData(), at("swapped").constData()) == 0);
        QVERIFY(FileSystem::makeDirectory(at("swap")).ok());
        const DirectoryHandles::Scope handles;
        QCOMPARE(FileSystem::status(at("swap/old")).error().number(), 53);
    }

    // A directory that may be entered but not listed is still written through its whole path.
    void directoryThatCannotBeRead() {
        if (::geteuid() == 0)
            QSKIP("root reads every directory");
        QVERIFY(FileSystem::makeDirectory(at("blind")).ok());
        QVERIFY(::chmod(at("blind").constData(), 0300) == 0);
        QVERIFY(writeFile(at("blind-src"), "seen"));
        const DirectoryHandles::Scope handles;
        QVERIFY(FileSystem::copyFile(at("blind-src"), at("blind/f")).ok());
        QCOMPARE(FileSystem::status(at("blind/f")).value().size, 4);
        QVERIFY(::chmod(at("blind").constData(), 0700) == 0);
    }
};

QTEST_GUILESS_MAIN(tst_DirectoryHandles)
#include "tst_DirectoryHandles.moc"
