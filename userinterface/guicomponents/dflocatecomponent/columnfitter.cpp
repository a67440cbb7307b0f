#include "columnfitter.h"

#include <QEvent>
#include <QTableWidget>

#include <algorithm>
#include <cmath>
#include <limits>

namespace VelmarGui {

ColumnFitter::ColumnFitter(QTableWidget& table)
    : QObject(&table)
    , m_table(table)
    , m_metrics(table.font(), &table)
{
    table.installEventFilter(this);
}

void ColumnFitter::Fit(int row, int column, const QString& text)
{
    const double mostOfText = MostWidth(text);
    if (!std::isfinite(mostOfText)) {
        Widen(column, NeededWidth(row, column));
        return;
    }
    const double most = mostOfText + Surroundings(row, column, text);
    // A little wider than this text needs, so that the next one of its kind is known to fit.
    if (most > m_table.columnWidth(column))
        Widen(column, std::max(NeededWidth(row, column), static_cast<int>(std::ceil(most))));
}

bool ColumnFitter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        m_metrics = QFontMetricsF(m_table.font(), &m_table);
        m_widths.fill(0.0);
        m_surroundings.reset();
    }
    return QObject::eventFilter(watched, event);
}

int ColumnFitter::NeededWidth(int row, int column) const
{
    constexpr int gridLine = 1;
    return m_table.sizeHintForIndex(m_table.model()->index(row, column)).width() + gridLine;
}

void ColumnFitter::Widen(int column, int width)
{
    if (width > m_table.columnWidth(column))
        m_table.setColumnWidth(column, width);
}

/// Characters in a row stand no further apart than alone. Infinite for a text whose characters may combine or break the
/// line, and for one that may not be shown whole.
double ColumnFitter::MostWidth(const QString& text)
{
    constexpr int longestNumber = 40;
    if (text.size() > longestNumber)
        return std::numeric_limits<double>::infinity();
    constexpr double rounding = 1.0;
    double sum = rounding;
    for (const QChar character : text)
        sum += WidthOf(character);
    return sum;
}

double ColumnFitter::WidthOf(QChar character)
{
    const ushort code = character.unicode();
    if (code >= m_widths.size())
        return std::numeric_limits<double>::infinity();
    double& width = m_widths[code];
    if (width == 0.0)
        width = character.isPrint() ? m_metrics.horizontalAdvance(character) : std::numeric_limits<double>::infinity();
    return width;
}

/// The same for all texts, so the first one tells.
double ColumnFitter::Surroundings(int row, int column, const QString& text)
{
    if (!m_surroundings)
        m_surroundings = NeededWidth(row, column) - std::floor(m_metrics.horizontalAdvance(text));
    return *m_surroundings;
}

} // namespace VelmarGui
