#pragma once

#include <QChar>
#include <QString>
#include <QStringList>

namespace ondrel {

// The rules of the five mask cells in which the spec editor builds a file group's name: what a
// cell accepts as the user types, which cell may be opened, and how the cells become the group's
// name and the name becomes cells again. The editor's grid only shows the cells.
class FileGroupMasks {
public:
    // The mask cells, numbered 1 to CellCount as the grid's header shows them.
    static constexpr int CellCount = 5;

    // The characters a mask can never hold: " / : < > \ |. Everything else, the ";" included,
    // is accepted.
    static bool isForbidden(QChar c);

    // Text as it lands in a cell: upper-cased, forbidden characters dropped.
    static QString typed(const QString& text);

    // The group's name: the cells from the first up to the first empty one, joined with ";".
    // Empty when the first cell is.
    static QString groupName(const QStringList& cells);

    // The cells a group's name fills, one mask per cell in order: always CellCount entries,
    // masks beyond the last cell left out.
    static QStringList cellsOf(const QString& name);

    // Whether the cell editor may open on cell column (1-based): masks are entered from the
    // first cell on without gaps, so a cell opens when it holds a mask, when it is the first, or
    // when its left neighbour holds one.
    static bool canOpen(const QStringList& cells, int column);

    // The cell Enter moves to from column: the next one, and from the last back to the first.
    static int nextColumn(int column) { return column < CellCount ? column + 1 : 1; }
};

} // namespace ondrel
