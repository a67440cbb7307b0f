#include "resultcell.h"

#include "resultformats.h"

#include <QStringBuilder>
#include <QTableWidget>

#include <algorithm>

namespace VelmarGui {

namespace {

bool isSum(const QString& whole, const QString& text, const QString& unit)
{
    return whole.size() == text.size() + unit.size() && std::equal(text.begin(), text.end(), whole.begin()) &&
           std::equal(unit.begin(), unit.end(), whole.begin() + text.size());
}

bool isText(int role)
{
    return role == Qt::DisplayRole || role == Qt::EditRole;
}

} // namespace

ResultCell::ResultCell()
    : QTableWidgetItem(Type)
{
}

bool ResultCell::Replace(const QString& text)
{
    m_coordinate.clear();
    if (m_text == text)
        return false;
    m_text = text;
    return true;
}

bool ResultCell::Replace(const QString& text, const QString& unit)
{
    m_coordinate.clear();
    if (isSum(m_text, text, unit))
        return false;
    m_text = text % unit; // allocates once
    return true;
}

bool ResultCell::ReplaceByCoordinate(const QString& text)
{
    // Stations seldom move.
    if (!m_coordinate.isNull() && m_coordinate == text)
        return false;
    const bool isAnother = Replace(coordinateText(text));
    m_coordinate = text;
    return isAnother;
}

QVariant ResultCell::data(int role) const
{
    return isText(role) ? QVariant(m_text) : QTableWidgetItem::data(role);
}

void ResultCell::setData(int role, const QVariant& value)
{
    if (!isText(role)) {
        QTableWidgetItem::setData(role, value);
    } else if (Replace(value.toString()) && tableWidget() != nullptr) {
        QAbstractItemModel* const model = tableWidget()->model();
        const QModelIndex index = model->index(row(), column());
        emit model->dataChanged(index, index, {Qt::DisplayRole, Qt::EditRole});
    }
}

QTableWidgetItem* ResultCell::clone() const
{
    // A copy made by the constructor would forget its type.
    auto* const copy = new ResultCell;
    *copy = *this;
    return copy;
}

} // namespace VelmarGui
