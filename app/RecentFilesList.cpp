#include "app/RecentFilesList.h"

#include "platform/ProfileFile.h"

namespace ondrel {

namespace {

const QString kSection = QStringLiteral("MRUList");

QString fileKey(int i) {
    return QStringLiteral("MRU%1File").arg(i);
}

QString pathKey(int i) {
    return QStringLiteral("MRU%1Path").arg(i);
}

} // namespace

RecentFilesList::RecentFilesList() {
    for (int i = 0; i < kEntries; ++i)
        setEntry(i, QString(), QString());
}

void RecentFilesList::setEntry(int Index, const QString& FileTitle, const QString& FilePath) {
    RecentFile& e = m_entries[static_cast<size_t>(Index)];
    e.Caption = u'&' + QString::number(Index + 1) + u' ' + FileTitle;
    e.Tag = FilePath;
}

void RecentFilesList::applyVisibility() {
    if (m_entries[0].visible())
        m_separatorVisible = true;
}

void RecentFilesList::loadFrom(const QString& optionsFile) {
    const Result<ProfileFile> read = ProfileFile::read(optionsFile);
    const ProfileFile file = read.ok() ? read.value() : ProfileFile();
    for (int i = 0; i < kEntries; ++i)
        setEntry(i, ReadProfileValue(file, kSection, fileKey(i)),
                 ReadProfileValue(file, kSection, pathKey(i)));
    applyVisibility();
}

void RecentFilesList::recordFile(const QString& FileTitle, const QString& FilePath) {
    if (m_entries[0].visible()) {
        int found = -1;
        for (int i = 0; i < kEntries && found < 0; ++i) {
            if (m_entries[static_cast<size_t>(i)].fileName().compare(FileTitle,
                                                                     Qt::CaseInsensitive) == 0)
                found = i;
        }
        // Already the newest: even its directory stays as it was.
        if (found == 0)
            return;
        for (int j = found > 0 ? found : kEntries - 1; j >= 1; --j) {
            const RecentFile& older = m_entries[static_cast<size_t>(j - 1)];
            setEntry(j, older.fileName(), older.Tag);
        }
    }
    setEntry(0, FileTitle, FilePath);
    applyVisibility();
}

void RecentFilesList::saveTo(const QString& optionsFile) const {
    // Like the options themselves, the list is kept only where it can be: a file that cannot be
    // read or written leaves it as it was.
    const Result<ProfileFile> read = ProfileFile::read(optionsFile);
    if (!read.ok())
        return;
    ProfileFile file = read.value();
    for (int i = 0; i < kEntries; ++i) {
        const RecentFile& e = m_entries[static_cast<size_t>(i)];
        file.writeString(kSection, fileKey(i), e.fileName());
        file.writeString(kSection, pathKey(i), e.Tag);
    }
    (void)file.write(optionsFile);
}

} // namespace ondrel
