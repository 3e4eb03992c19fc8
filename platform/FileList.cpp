#include "platform/FileList.h"

#include "platform/NativeText.h"
#include "platform/WholeFile.h"

namespace ondrel {

namespace {

bool isBlank(QChar c) {
    return c == u' ' || c == u'\t';
}

bool isLineEnd(QChar c) {
    return c == u'\n' || c == u'\r';
}

// Reads one item from text at pos and leaves pos on the delimiter that ended it (or the end).
QString readItem(const QString& text, qsizetype& pos) {
    const qsizetype size = text.size();
    while (pos < size && isBlank(text[pos]))
        ++pos;
    if (pos < size && text[pos] == u'"') {
        const qsizetype start = ++pos;
        while (pos < size && text[pos] != u'"' && !isLineEnd(text[pos]))
            ++pos;
        const QString item = text.mid(start, pos - start);
        // Whatever stands between the closing quote and the delimiter is not part of the item.
        while (pos < size && text[pos] != u',' && !isLineEnd(text[pos]))
            ++pos;
        return item;
    }
    const qsizetype start = pos;
    while (pos < size && text[pos] != u',' && !isLineEnd(text[pos]))
        ++pos;
    qsizetype end = pos;
    while (end > start && isBlank(text[end - 1]))
        --end;
    return text.mid(start, end - start);
}

} // namespace

Result<QStringList> FileList::read(const QString& fileName) {
    Result<QByteArray> bytes = WholeFile::read(fileName);
    if (!bytes.ok())
        return bytes.error();
    return parse(bytes.value());
}

QStringList FileList::parse(const QByteArray& bytes) {
    // A name that is not valid UTF-8 keeps its bytes, so the file it names is found again.
    QString text = NativeText::toText(bytes);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    QStringList items;
    qsizetype pos = 0;
    while (pos < text.size()) {
        const QString item = readItem(text, pos);
        if (isAbsolute(item) && (items.isEmpty() || items.constLast() != item))
            items.append(item);
        // Step over the delimiter; CR LF counts as one line end.
        if (pos < text.size() && text[pos] == u'\r' && pos + 1 < text.size() &&
            text[pos + 1] == u'\n')
            ++pos;
        ++pos;
    }
    return items;
}

bool FileList::isAbsolute(const QString& path) {
#ifdef Q_OS_WIN
    return (path.size() >= 3 && path[0].isLetter() && path[1] == u':' &&
            (path[2] == u'\\' || path[2] == u'/')) ||
           path.startsWith(QStringLiteral("\\\\"));
#else
    return path.startsWith(u'/');
#endif
}

} // namespace ondrel
