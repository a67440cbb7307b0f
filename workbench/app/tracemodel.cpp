#include "app/tracemodel.h"

#include "app/displaytext.h"

#include <algorithm>
#include <iterator>

namespace workbench {

namespace {

template <typename Entries>
void dropOldest(Entries& entries, std::size_t count)
{
    entries.erase(entries.begin(), std::next(entries.begin(), static_cast<std::ptrdiff_t>(count)));
}

} // namespace

TraceModel::TraceModel(QObject* parent)
    : QAbstractTableModel(parent)
{
}

void TraceModel::append(const TraceRecord& record, const QDateTime& time)
{
    if (!m_paused) {
        show({{time, record}});
        return;
    }
    m_heldBack.push_back({time, record});
    if (m_heldBack.size() > MaximumCount)
        m_heldBack.pop_front();
    emit heldBackCountChanged(heldBackCount());
}

void TraceModel::show(std::deque<Entry> entries)
{
    if (entries.empty())
        return;
    const std::size_t total = m_entries.size() + entries.size();
    const std::size_t excess = total > MaximumCount ? total - MaximumCount : 0;
    if (const std::size_t old = std::min(excess, m_entries.size()); old > 0) {
        beginRemoveRows({}, 0, static_cast<int>(old) - 1);
        dropOldest(m_entries, old);
        endRemoveRows();
    }
    const int first = rowCount();
    beginInsertRows({}, first, first + static_cast<int>(entries.size()) - 1);
    std::move(entries.begin(), entries.end(), std::back_inserter(m_entries));
    endInsertRows();
}

void TraceModel::clear()
{
    beginResetModel();
    m_entries.clear();
    m_heldBack.clear();
    endResetModel();
    emit heldBackCountChanged(0);
}

void TraceModel::setPaused(bool paused)
{
    if (paused == m_paused)
        return;
    m_paused = paused;
    if (!paused) {
        show(std::exchange(m_heldBack, {}));
        emit heldBackCountChanged(0);
    }
}

QString TraceModel::text(const Entry& entry, int column)
{
    switch (column) {
    case TimeColumn:
        return entry.time.toString(QStringLiteral("HH:mm:ss.zzz"));
    case TextColumn:
        return entry.record.text;
    case SourceColumn:
        return entry.record.sourceFile;
    case LineColumn:
        return QString::number(entry.record.line);
    default:
        return {};
    }
}

QString TraceModel::textOf(const QList<int>& rows) const
{
    QString lines;
    for (const int row : rows) {
        QStringList columns;
        for (int column = 0; column < ColumnCount; ++column)
            columns += text(m_entries[static_cast<std::size_t>(row)], column);
        lines += columns.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    return lines;
}

int TraceModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

int TraceModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TraceModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return beginningOf(text(m_entries[static_cast<std::size_t>(index.row())], index.column()));
    case Qt::ToolTipRole:
        return asToolTip(text(m_entries[static_cast<std::size_t>(index.row())], index.column()));
    case Qt::TextAlignmentRole:
        return index.column() == LineColumn ? int(Qt::AlignRight | Qt::AlignVCenter)
                                            : int(Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant TraceModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case TimeColumn:
        return tr("Time");
    case TextColumn:
        return tr("Text");
    case SourceColumn:
        return tr("Source");
    case LineColumn:
        return tr("Line");
    default:
        return {};
    }
}

} // namespace workbench
