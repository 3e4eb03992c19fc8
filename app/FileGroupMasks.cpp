#include "app/FileGroupMasks.h"

namespace ondrel {

bool FileGroupMasks::isForbidden(QChar c) {
    switch (c.unicode()) {
    case u'"':
    case u'/':
    case u':':
    case u'<':
    case u'>':
    case u'\\':
    case u'|':
        return true;
    default:
        return false;
    }
}

QString FileGroupMasks::typed(const QString& text) {
    QString kept;
    kept.reserve(text.size());
    for (QChar c : text) {
        if (!isForbidden(c))
            kept.append(c);
    }
    return kept.toUpper();
}

QString FileGroupMasks::groupName(const QStringList& cells) {
    QStringList masks;
    for (const QString& cell : cells.mid(0, CellCount)) {
        if (cell.isEmpty())
            break;
        masks.append(cell);
    }
    return masks.join(u';');
}

QStringList FileGroupMasks::cellsOf(const QString& name) {
    QStringList cells = name.isEmpty() ? QStringList() : name.split(u';').mid(0, CellCount);
    while (cells.size() < CellCount)
        cells.append(QString());
    return cells;
}

bool FileGroupMasks::canOpen(const QStringList& cells, int column) {
    if (column < 1 || column > CellCount)
        return false;
    return column == 1 || !cells.value(column - 1).isEmpty() || !cells.value(column - 2).isEmpty();
}

} // namespace ondrel
