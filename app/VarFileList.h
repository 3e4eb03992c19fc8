#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace ondrel {

// The files chosen in the individual file selection dialog, as its selection list shows them:
// sorted as a sorted list box sorts (without regard to case), each path once. Paths are kept
// as the file system spells them, so a name that is not valid UTF-8 is kept byte for byte.
// Adding many paths at once is one sort of the new ones and one merge, never an insert each.
class VarFileList {
public:
    struct Entry {
        QByteArray native; // the path as the file system spells it
        QString text;      // the same as VariousFiles holds it (see NativeText)
    };

    qsizetype size() const { return qsizetype(m_entries.size()); }
    bool isEmpty() const { return m_entries.empty(); }
    const Entry& at(qsizetype row) const { return m_entries[size_t(row)]; }

    // Adds full paths, dropping those already listed; gives how many were new.
    qsizetype addNative(const std::vector<QByteArray>& paths);
    // The same for paths held as text (VariousFiles, a list file).
    qsizetype addText(const QStringList& paths);

    // Removes the entries at rows (any order, each at most once).
    void removeRows(std::vector<qsizetype> rows);
    void clear() { m_entries.clear(); }

    // The list as the program-wide VariousFiles holds it: the paths in list order, or one empty
    // entry when there are none.
    QStringList toVariousFiles() const;

    // Writes one path per line (CR LF), in list order, creating or replacing the file. A path
    // holding a comma is put in double quotes, so that reading the file gives it back whole.
    Result<void> save(const QString& fileName) const;
    // Appends the full paths a list file holds (read as FileList reads it); gives how many were
    // new.
    Result<qsizetype> load(const QString& fileName);

private:
    qsizetype merge(std::vector<Entry> added);

    std::vector<Entry> m_entries;
};

} // namespace ondrel
