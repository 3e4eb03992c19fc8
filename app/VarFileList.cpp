#include "app/VarFileList.h"

#include "platform/FileList.h"
#include "platform/NativeText.h"
#include "platform/WholeFile.h"

#include <algorithm>
#include <iterator>

namespace ondrel {

namespace {

using Entry = VarFileList::Entry;

// Where file names ignore case the list holds paths upper-cased, so that one file is listed
// once however it was spelt; elsewhere the case is part of the name.
Entry entryFor(const QString& text, QByteArray native) {
#ifdef Q_OS_WIN
    const QString upper = text.toUpper();
    return {NativeText::toNative(upper), upper};
#else
    return {std::move(native), text};
#endif
}

// List-box order: without regard to case; paths that differ only in case (different files
// here) keep a fixed order by their bytes.
bool listOrder(const Entry& a, const Entry& b) {
    const int c = a.text.compare(b.text, Qt::CaseInsensitive);
    return c != 0 ? c < 0 : a.native < b.native;
}

bool samePath(const Entry& a, const Entry& b) {
    return a.native == b.native;
}

} // namespace

qsizetype VarFileList::addNative(const std::vector<QByteArray>& paths) {
    std::vector<Entry> added;
    added.reserve(paths.size());
    for (const QByteArray& path : paths)
        added.push_back(entryFor(NativeText::toText(path), path));
    return merge(std::move(added));
}

qsizetype VarFileList::addText(const QStringList& paths) {
    std::vector<Entry> added;
    added.reserve(size_t(paths.size()));
    for (const QString& path : paths) {
        if (!path.isEmpty())
            added.push_back(entryFor(path, NativeText::toNative(path)));
    }
    return merge(std::move(added));
}

qsizetype VarFileList::merge(std::vector<Entry> added) {
    std::sort(added.begin(), added.end(), listOrder);
    added.erase(std::unique(added.begin(), added.end(), samePath), added.end());
    const qsizetype before = size();
    if (m_entries.empty()) {
        m_entries = std::move(added);
        return size();
    }
    std::vector<Entry> merged;
    merged.reserve(m_entries.size() + added.size());
    std::merge(std::make_move_iterator(m_entries.begin()), std::make_move_iterator(m_entries.end()),
               std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()),
               std::back_inserter(merged), listOrder);
    // Both halves were without duplicates, so a path listed twice now stands twice in a row.
    merged.erase(std::unique(merged.begin(), merged.end(), samePath), merged.end());
    m_entries = std::move(merged);
    return size() - before;
}

void VarFileList::removeRows(std::vector<qsizetype> rows) {
    std::sort(rows.begin(), rows.end());
    auto next = rows.begin();
    qsizetype row = 0;
    const auto end = std::remove_if(m_entries.begin(), m_entries.end(), [&](const Entry&) {
        const bool removed = next != rows.end() && *next == row;
        if (removed)
            ++next;
        ++row;
        return removed;
    });
    m_entries.erase(end, m_entries.end());
}

QStringList VarFileList::toVariousFiles() const {
    if (m_entries.empty())
        return QStringList{QString()};
    QStringList files;
    files.reserve(size());
    for (const Entry& entry : m_entries)
        files.append(entry.text); // shared, not copied
    return files;
}

Result<void> VarFileList::save(const QString& fileName) const {
    QByteArray bytes;
    for (const Entry& entry : m_entries) {
        const bool quoted = entry.native.contains(',');
        if (quoted)
            bytes += '"';
        bytes += entry.native;
        if (quoted)
            bytes += '"';
        bytes += "\r\n";
    }
    return WholeFile::write(fileName, bytes);
}

Result<qsizetype> VarFileList::load(const QString& fileName) {
    Result<QStringList> paths = FileList::read(fileName);
    if (!paths.ok())
        return paths.error();
    return addText(paths.value());
}

} // namespace ondrel
