#pragma once

#include <QObject>

#include <algorithm>
#include <limits>
#include <vector>

class QTableWidget;

namespace VelmarGui {

class ResultCell;

/// The smallest range that holds all cells that were added.
struct CellRange
{
    int top = std::numeric_limits<int>::max();
    int left = std::numeric_limits<int>::max();
    int bottom = -1;
    int right = -1;

    void Add(int row, int column)
    {
        top = std::min(top, row);
        left = std::min(left, column);
        bottom = std::max(bottom, row);
        right = std::max(right, column);
    }
    [[nodiscard]] bool IsEmpty() const { return bottom < 0; }
};

/// The cells of the results table.
///
/// A table takes longer to find a cell than it takes to see that its text stays, so the cells are remembered until
/// somebody else changes the table. Belongs to the table.
class ResultCells final : public QObject
{
public:
    explicit ResultCells(QTableWidget& table);

    /// The cell in that place, which is made when there is none; nobody is told of a new one. Null when the table has
    /// no such place. Valid until the table changes.
    [[nodiscard]] ResultCell* At(int row, int column);

    /// Tells the views once of all cells that have changed: a table with thousands of cells that are told of one by one
    /// is busy with nothing else.
    void Tell(const CellRange& changed);

private:
    [[nodiscard]] ResultCell* Find(int row, int column);

    QTableWidget& m_table;
    std::vector<ResultCell*> m_cells; ///< row by row, null: not asked for yet
    int m_rows = 0;
    int m_columns = 0;
    quint64 m_changes = 1; ///< of the table, so far
    quint64 m_known = 0;   ///< the changes that the remembered cells know of
};

} // namespace VelmarGui
