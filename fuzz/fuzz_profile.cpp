// The INI (profile) reader and writer: any bytes parse; writing the parsed file and parsing it
// again keeps every value; writes in memory read back the same before and after a round trip.
#include "fuzz/FuzzSupport.h"
#include "platform/ProfileFile.h"

#include <QHash>
#include <QPair>
#include <QStringDecoder>

#include <optional>
#include <vector>

using namespace ondrel;
using fuzz::require;

namespace {

struct Entry {
    QString section;
    QString key;
};

bool isBlank(QChar c) {
    return c == u' ' || c == u'\t';
}

QString trimBlanks(QStringView s) {
    while (!s.isEmpty() && isBlank(s.front()))
        s = s.sliced(1);
    while (!s.isEmpty() && isBlank(s.back()))
        s.chop(1);
    return s.toString();
}

// The section/key pairs that the input's lines name (at most limit of them): the queries to ask.
std::vector<Entry> entriesNamed(const QByteArray& bytes, std::size_t limit) {
    std::vector<Entry> entries;
    QString section;
    const QByteArray text = bytes.startsWith("\xEF\xBB\xBF") ? bytes.sliced(3) : bytes;
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                    QStringDecoder::Flag::ConvertInitialBom);
    for (const QByteArray& raw : text.split('\n')) {
        if (entries.size() >= limit)
            break;
        const QString line = trimBlanks(QString(decode(raw)));
        if (line.startsWith(u'[')) {
            const qsizetype close = line.indexOf(u']');
            section = trimBlanks(QStringView(line).mid(1, close < 0 ? -1 : close - 1));
            continue;
        }
        const qsizetype eq = line.indexOf(u'=');
        if (eq > 0)
            entries.push_back({section, trimBlanks(QStringView(line).first(eq))});
    }
    return entries;
}

using Folded = QPair<QString, QString>;

Folded folded(const Entry& e) {
    return {e.section.toCaseFolded(), e.key.toCaseFolded()};
}

void checkReads(const ProfileFile& file, const ProfileFile& again, const Entry& e) {
    const std::optional<QString> value = file.value(e.section, e.key);
    require(again.value(e.section, e.key) == value, "a value changed through toBytes and parse");
    const QString fallback = QStringLiteral("fallback");
    for (const int bufferSize : {0, 1, 2, 255}) {
        const QString got = file.getString(e.section, e.key, fallback, bufferSize);
        require(got.size() <= qMax(0, bufferSize - 1), "getString overran its buffer");
        require(value.value_or(fallback).startsWith(got), "getString is no prefix of the value");
    }
    const QString rule = ReadProfileValue(file, e.section, e.key);
    require(rule.size() <= 254, "ReadProfileValue longer than 254 characters");
    require(rule == ReadProfileValue(again, e.section, e.key),
            "ReadProfileValue changed through toBytes and parse");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input = fuzz::bytesOf(data, size);
    const ProfileFile file = ProfileFile::parse(input);
    const QByteArray text = file.toBytes();
    const ProfileFile again = ProfileFile::parse(text);
    require(again.toBytes() == text, "parse(toBytes()) of a parsed file wrote different bytes");

    std::vector<Entry> entries = entriesNamed(input, 64);
    entries.push_back({QStringLiteral("FSOptions"), QStringLiteral("Top")});
    entries.push_back({QStringLiteral("SourcePaths"), QStringLiteral("SP1")});
    for (const Entry& e : entries)
        checkReads(file, again, e);

    // Replace some of the entries and add a key to some sections: each entry then reads what was
    // written to it last, or what it held before, in memory and after a round trip.
    QHash<Folded, std::optional<QString>> expected;
    for (const Entry& e : entries)
        expected.insert(folded(e), file.value(e.section, e.key));
    ProfileFile edited = file;
    const std::size_t originals = entries.size();
    for (std::size_t i = 0; i < originals && i < 24; ++i) {
        Entry e = entries[i];
        if (i % 2 == 1)
            e.key = QStringLiteral("OndrelAdded") + QString::number(i);
        const QString v = QStringLiteral("written ") + QString::number(i);
        edited.writeString(e.section, e.key, v);
        expected.insert(folded(e), v);
        entries.push_back(e);
    }
    const ProfileFile reread = ProfileFile::parse(edited.toBytes());
    for (const Entry& e : entries) {
        const std::optional<QString> want = expected.value(folded(e));
        require(edited.value(e.section, e.key) == want, "a write did not read back in memory");
        require(reread.value(e.section, e.key) == want, "a write did not survive toBytes/parse");
    }
    return 0;
}
