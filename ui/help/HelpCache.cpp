#include "ui/help/HelpCache.h"

#include "platform/WholeFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace ondrel {

namespace {

const QString kSource = QStringLiteral("HelpCache");
const QString kTopics = QStringLiteral("ondrel.qch");
const QString kCollection = QStringLiteral("ondrel.qhc");
// Names the help that the files were written from. The collection file cannot tell by itself:
// the help engine writes into it while it reads.
const QString kStamp = QStringLiteral("ondrel.stamp");
// Where the help engine keeps its full-text index, beside the collection file.
const QString kSearchIndex = QStringLiteral(".ondrel");

QByteArray embedded(const QString& name) {
    QFile file(QStringLiteral(":/help/") + name);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QByteArray stampOf(const QByteArray& topics, const QByteArray& collection) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(topics);
    hash.addData(collection);
    return hash.result().toHex();
}

bool holds(const QString& fileName, const QByteArray& bytes) {
    if (QFileInfo(fileName).size() != bytes.size())
        return false;
    const Result<QByteArray> onDisk = WholeFile::read(fileName);
    return onDisk && *onDisk == bytes;
}

} // namespace

QString HelpCache::defaultDirectory() {
    return QStandardPaths::writableLocation(QStandardPaths::CacheLocation) +
           QStringLiteral("/help");
}

Result<QString> HelpCache::prepare(const QString& directory) {
    const QByteArray topics = embedded(kTopics);
    const QByteArray collection = embedded(kCollection);
    if (topics.isEmpty() || collection.isEmpty())
        return Error(ErrNo::FileNotFound, kSource);

    const QDir dir(directory);
    const QString collectionFile = dir.filePath(kCollection);
    const QByteArray stamp = stampOf(topics, collection);
    if (holds(dir.filePath(kStamp), stamp) && holds(dir.filePath(kTopics), topics) &&
        QFileInfo::exists(collectionFile))
        return collectionFile;

    if (!QDir().mkpath(directory))
        return Error(ErrNo::PathNotFound, kSource);
    // The stamp is removed first and written last, so that help cut short by a crash is written
    // again next time.
    QFile::remove(dir.filePath(kStamp));
    if (Result<void> written = WholeFile::write(dir.filePath(kTopics), topics); !written)
        return written.error();
    if (Result<void> written = WholeFile::write(collectionFile, collection); !written)
        return written.error();
    // An index of other topics would find words that are no longer there.
    QDir(dir.filePath(kSearchIndex)).removeRecursively();
    if (Result<void> written = WholeFile::write(dir.filePath(kStamp), stamp); !written)
        return written.error();
    return collectionFile;
}

} // namespace ondrel
