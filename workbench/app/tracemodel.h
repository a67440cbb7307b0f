#pragma once

#include "ztbase/errorhandler.h"

#include <QAbstractTableModel>
#include <QDateTime>

#include <deque>

namespace workbench {

/// The latest traces, one a row: time, text, source, line.
class TraceModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        TimeColumn,
        TextColumn,
        SourceColumn,
        LineColumn,
        ColumnCount
    };
    /// The oldest traces go when there are more than this.
    static constexpr int MaximumCount = 10000;

    explicit TraceModel(QObject* parent = nullptr);

    /// Adds a trace as the last one; while paused it is kept back.
    void append(const TraceRecord& record, const QDateTime& time);
    /// Forgets all traces, those that are held back too.
    void clear();
    /// While paused nothing moves; the traces that came meanwhile appear at the end of the pause.
    void setPaused(bool paused);
    /// How many traces have come during the pause.
    [[nodiscard]] int heldBackCount() const { return static_cast<int>(m_heldBack.size()); }

    /// The rows as lines of text with tabulators between the columns.
    [[nodiscard]] QString textOf(const QList<int>& rows) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

signals:
    void heldBackCountChanged(int count);

private:
    struct Entry
    {
        QDateTime time;
        TraceRecord record;
    };
    void show(std::deque<Entry> entries);
    [[nodiscard]] static QString text(const Entry& entry, int column);

    std::deque<Entry> m_entries;
    std::deque<Entry> m_heldBack;
    bool m_paused = false;
};

} // namespace workbench
