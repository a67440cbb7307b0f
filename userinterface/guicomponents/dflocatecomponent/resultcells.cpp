#include "resultcells.h"

#include "resultcell.h"

#include <QSignalBlocker>
#include <QTableWidget>

namespace VelmarGui {

ResultCells::ResultCells(QTableWidget& table)
    : QObject(&table)
    , m_table(table)
{
    const QAbstractItemModel* const model = table.model();
    const auto note = [this] { ++m_changes; };
    // A cell that is set, taken or deleted by others is a change of data.
    connect(model, &QAbstractItemModel::dataChanged, this, note);
    connect(model, &QAbstractItemModel::rowsInserted, this, note);
    connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this, note);
    connect(model, &QAbstractItemModel::rowsRemoved, this, note);
    connect(model, &QAbstractItemModel::columnsInserted, this, note);
    connect(model, &QAbstractItemModel::columnsAboutToBeRemoved, this, note);
    connect(model, &QAbstractItemModel::columnsRemoved, this, note);
    connect(model, &QAbstractItemModel::layoutChanged, this, note);
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, note);
    connect(model, &QAbstractItemModel::modelReset, this, note);
}

ResultCell* ResultCells::At(int row, int column)
{
    if (m_known != m_changes) {
        m_rows = m_table.rowCount();
        m_columns = m_table.columnCount();
        m_cells.assign(static_cast<std::size_t>(m_rows) * static_cast<std::size_t>(m_columns), nullptr);
        m_known = m_changes;
    }
    if (row >= m_rows || column >= m_columns)
        return nullptr;
    ResultCell*& cell =
        m_cells[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) + static_cast<std::size_t>(column)];
    if (cell == nullptr)
        cell = Find(row, column);
    return cell;
}

ResultCell* ResultCells::Find(int row, int column)
{
    QTableWidgetItem* const item = m_table.item(row, column);
    if (item != nullptr && item->type() == ResultCell::Type)
        return static_cast<ResultCell*>(item);
    auto* const cell = new ResultCell;
    // It is told of once it has a text.
    const QSignalBlocker quiet(m_table.model());
    m_table.setItem(row, column, cell);
    return cell;
}

void ResultCells::Tell(const CellRange& changed)
{
    if (changed.IsEmpty())
        return;
    const bool areKnown = m_known == m_changes;
    const quint64 withThis = m_changes + 1;
    QAbstractItemModel* const model = m_table.model();
    emit model->dataChanged(model->index(changed.top, changed.left), model->index(changed.bottom, changed.right),
                            {Qt::DisplayRole, Qt::EditRole});
    // This change is no reason to look for the cells again; what others do when they are told of it is.
    if (areKnown && m_changes == withThis)
        m_known = withThis;
}

} // namespace VelmarGui
