#pragma once

#include <QString>

#include <array>

namespace ondrel {

// One entry of the File menu's recent-files list: the caption "&1 Web.spc" and, as its tag, the
// directory of that spec with its trailing separator.
struct RecentFile {
    QString Caption;
    QString Tag;

    // The spec's file name: the caption less its "&N " prefix.
    QString fileName() const { return Caption.mid(3); }
    // An entry is shown exactly when its caption names a file.
    bool visible() const { return Caption.size() >= 4; }
};

// The four most recently used spec files, newest first, as the File menu shows them and section
// "MRUList" of the options file keeps them. Only the file name identifies an entry: a like-named
// spec from another directory counts as the same one.
class RecentFilesList {
public:
    static constexpr int kEntries = 4;

    RecentFilesList();

    const RecentFile& entry(int Index) const { return m_entries[static_cast<size_t>(Index)]; }
    // The separator below the entries: shown once the first entry is, never hidden again.
    bool separatorVisible() const { return m_separatorVisible; }

    // Reads the list from section "MRUList" of the options file (a missing key reads as empty).
    void loadFrom(const QString& optionsFile);
    // Puts FileTitle (in directory FilePath) at the top: an entry of the same name moves up, or
    // the oldest entry drops out. Nothing changes when the newest entry already has that name.
    void recordFile(const QString& FileTitle, const QString& FilePath);
    // Writes all four entries, empty ones as empty values; other sections stay as they are.
    void saveTo(const QString& optionsFile) const;

private:
    void setEntry(int Index, const QString& FileTitle, const QString& FilePath);
    void applyVisibility();

    std::array<RecentFile, kEntries> m_entries;
    bool m_separatorVisible = false;
};

} // namespace ondrel
