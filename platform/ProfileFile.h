#pragma once

#include "platform/Result.h"

#include <QHash>
#include <QString>

#include <optional>
#include <vector>

namespace ondrel {

// One INI file held in memory, with the semantics of the classic profile-string calls: sections
// and keys found without regard to case, a new section appended at the end of the file, a new key
// at the end of its section, an existing key replaced where it stands. A spec or options file is
// parsed once and written once, however many entries pass through it; lines the calls do not
// understand (comments, blank lines) are kept as they were.
class ProfileFile {
public:
    ProfileFile() = default;

    // Parses the file; a file that does not exist reads as an empty one, as the profile calls
    // treat it. Any other failure to read (a directory, no permission) is returned.
    static Result<ProfileFile> read(const QString& fileName);

    // Accepts CR LF or LF line ends, blank lines and a UTF-8 byte-order mark.
    static ProfileFile parse(const QByteArray& bytes);

    // The value of section/key with spaces and tabs around it removed, as the profile read call
    // hands it out, or nothing when there is no such entry.
    std::optional<QString> value(const QString& section, const QString& key) const;

    // The profile read call: the value, or defaultValue when the entry is missing, copied into a
    // buffer of bufferSize characters (so at most bufferSize - 1 of them arrive).
    QString getString(const QString& section, const QString& key, const QString& defaultValue,
                      int bufferSize) const;

    // The profile write call, on the copy in memory. Like the system's call, which takes a C
    // string, it writes a value only up to its first NUL.
    void writeString(const QString& section, const QString& key, const QString& value);

    // The whole file as text with CR LF line ends.
    QByteArray toBytes() const;
    Result<void> write(const QString& fileName) const;

    bool isEmpty() const { return m_sections.empty(); }

private:
    struct Line {
        QString text; // as read, or "key=value" as written
        QString key;  // empty for lines that are not entries
        QString value;
    };
    struct Section {
        QString name;                 // empty for the lines before the first section
        std::vector<Line> lines;      // the header line comes first for a real section
        QHash<QString, int> keyIndex; // folded key -> its first line
        int entriesEnd = 0;           // one past the last entry line (or the header)
        bool hasHeader = false;
    };

    Section* findSection(const QString& name);
    const Section* findSection(const QString& name) const;
    static void addEntry(Section& section, Line line, int at);

    std::vector<Section> m_sections;
    QHash<QString, int> m_sectionIndex; // folded name -> its first section
    bool m_byteOrderMark = false;
};

// The system's reading rule for one INI value: the profile read with the default " " and a
// buffer of 255 characters, spaces trimmed and a trailing NUL dropped. A missing key, or one
// whose value is only spaces, reads as the empty string.
QString ReadProfileValue(const ProfileFile& file, const QString& section, const QString& key);

} // namespace ondrel
