#include "platform/ProfileFile.h"

#include "platform/WholeFile.h"

#include <QStringDecoder>

#include <cerrno>

namespace ondrel {

namespace {

bool isBlank(QChar c) {
    return c == u' ' || c == u'\t';
}

QString trimBlanks(QStringView s) {
    qsizetype begin = 0;
    qsizetype end = s.size();
    while (begin < end && isBlank(s[begin]))
        ++begin;
    while (end > begin && isBlank(s[end - 1]))
        --end;
    return s.mid(begin, end - begin).toString();
}

QString foldKey(const QString& s) {
    return s.toCaseFolded();
}

} // namespace

Result<ProfileFile> ProfileFile::read(const QString& fileName) {
    Result<QByteArray> bytes = WholeFile::read(fileName);
    if (!bytes.ok()) {
        const int n = bytes.error().number();
        if (n == ErrNo::FileNotFound || n == ErrNo::PathNotFound)
            return ProfileFile();
        return bytes.error();
    }
    return parse(bytes.value());
}

ProfileFile ProfileFile::parse(const QByteArray& bytes) {
    ProfileFile file;
    QByteArrayView rest(bytes);
    if (rest.startsWith("\xEF\xBB\xBF")) {
        file.m_byteOrderMark = true;
        rest = rest.sliced(3);
    }
    // Only the file's first byte-order mark is one. QString::fromUtf8 would drop those bytes at
    // the start of any line, so a key beginning with U+FEFF would not read back and a line the
    // calls do not understand would not be kept as it was.
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                    QStringDecoder::Flag::ConvertInitialBom);
    Section* current = nullptr;
    while (!rest.isEmpty()) {
        qsizetype eol = rest.indexOf('\n');
        QByteArrayView raw = eol < 0 ? rest : rest.first(eol);
        rest = eol < 0 ? QByteArrayView() : rest.sliced(eol + 1);
        if (raw.endsWith('\r'))
            raw.chop(1);
        const QString text = decode(raw);
        const QString trimmed = trimBlanks(text);

        if (trimmed.startsWith(u'[')) {
            qsizetype close = trimmed.indexOf(u']');
            Section section;
            section.name = trimBlanks(QStringView(trimmed).mid(1, close < 0 ? -1 : close - 1));
            section.lines.push_back(Line{text, {}, {}});
            section.hasHeader = true;
            section.entriesEnd = 1;
            file.m_sections.push_back(std::move(section));
            // A later section of the same name is kept in the file but never found.
            const QString folded = foldKey(file.m_sections.back().name);
            if (!file.m_sectionIndex.contains(folded))
                file.m_sectionIndex.insert(folded, int(file.m_sections.size() - 1));
            current = &file.m_sections.back();
            continue;
        }
        if (!current) {
            file.m_sections.push_back(Section{});
            current = &file.m_sections.back();
        }
        const qsizetype eq = trimmed.indexOf(u'=');
        // Lines before the first section header belong to no section and are never found.
        if (eq > 0 && current->hasHeader) {
            Line line{text, trimBlanks(QStringView(trimmed).first(eq)),
                      trimBlanks(QStringView(trimmed).mid(eq + 1))};
            addEntry(*current, std::move(line), int(current->lines.size()));
        } else {
            current->lines.push_back(Line{text, {}, {}});
        }
    }
    return file;
}

void ProfileFile::addEntry(Section& section, Line line, int at) {
    const QString folded = foldKey(line.key);
    section.lines.insert(section.lines.begin() + at, std::move(line));
    // Only lines after the last entry (blank lines, comments) move, and none of them is indexed.
    if (!section.keyIndex.contains(folded))
        section.keyIndex.insert(folded, at);
    section.entriesEnd = at + 1;
}

ProfileFile::Section* ProfileFile::findSection(const QString& name) {
    const auto it = m_sectionIndex.constFind(foldKey(name));
    return it == m_sectionIndex.constEnd() ? nullptr : &m_sections[*it];
}

const ProfileFile::Section* ProfileFile::findSection(const QString& name) const {
    const auto it = m_sectionIndex.constFind(foldKey(name));
    return it == m_sectionIndex.constEnd() ? nullptr : &m_sections[*it];
}

std::optional<QString> ProfileFile::value(const QString& section, const QString& key) const {
    const Section* s = findSection(trimBlanks(section));
    if (!s)
        return std::nullopt;
    const auto it = s->keyIndex.constFind(foldKey(trimBlanks(key)));
    if (it == s->keyIndex.constEnd())
        return std::nullopt;
    return s->lines[*it].value;
}

QString ProfileFile::getString(const QString& section, const QString& key,
                               const QString& defaultValue, int bufferSize) const {
    QString result = value(section, key).value_or(defaultValue);
    const qsizetype room = qMax(0, bufferSize - 1);
    if (result.size() > room) {
        result.truncate(room);
        if (!result.isEmpty() && result.back().isHighSurrogate())
            result.chop(1);
    }
    return result;
}

void ProfileFile::writeString(const QString& section, const QString& key, const QString& value) {
    const QString sectionName = trimBlanks(section);
    const QString keyName = trimBlanks(key);
    Section* s = findSection(sectionName);
    if (!s) {
        Section fresh;
        fresh.name = sectionName;
        fresh.lines.push_back(Line{QLatin1Char('[') + sectionName + QLatin1Char(']'), {}, {}});
        fresh.hasHeader = true;
        fresh.entriesEnd = 1;
        m_sections.push_back(std::move(fresh));
        m_sectionIndex.insert(foldKey(sectionName), int(m_sections.size() - 1));
        s = &m_sections.back();
    }
    // The profile write call takes a C string, so a value ends at its first NUL. Written whole,
    // a value with trailing NULs would lose one of them at each load and save and never settle.
    const QString text = value.left(value.indexOf(QChar(u'\0')));
    Line line{keyName + QLatin1Char('=') + text, keyName, text};
    const auto it = s->keyIndex.constFind(foldKey(keyName));
    if (it != s->keyIndex.constEnd())
        s->lines[*it] = std::move(line);
    else
        addEntry(*s, std::move(line), s->entriesEnd);
}

QByteArray ProfileFile::toBytes() const {
    QByteArray out;
    if (m_byteOrderMark)
        out.append("\xEF\xBB\xBF");
    for (const Section& s : m_sections) {
        for (const Line& line : s.lines) {
            out.append(line.text.toUtf8());
            out.append("\r\n");
        }
    }
    return out;
}

Result<void> ProfileFile::write(const QString& fileName) const {
    return WholeFile::write(fileName, toBytes());
}

QString ReadProfileValue(const ProfileFile& file, const QString& section, const QString& key) {
    QString v = file.getString(section, key, QStringLiteral(" "), 255);
    qsizetype begin = 0;
    qsizetype end = v.size();
    while (begin < end && v[begin] == u' ')
        ++begin;
    while (end > begin && v[end - 1] == u' ')
        --end;
    v = v.mid(begin, end - begin);
    if (v.endsWith(QChar(u'\0')))
        v.chop(1);
    return v;
}

} // namespace ondrel
