#pragma once

#include <QFontMetricsF>
#include <QObject>

#include <array>
#include <optional>

class QTableWidget;

namespace VelmarGui {

/// Widens the columns of a table so that their texts are seen whole: 12.5 is not 312.5. Never narrows one.
///
/// Laying out each text would take longer than all else that is done for a cell. Most texts are known to fit from the
/// widths of their characters alone, which they do not exceed. Belongs to the table.
class ColumnFitter final : public QObject
{
public:
    explicit ColumnFitter(QTableWidget& table);

    /// For @p text, which stands in the cell.
    void Fit(int row, int column, const QString& text);

    /// What is known of the font and the style of the table goes when they change.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    [[nodiscard]] int NeededWidth(int row, int column) const;
    void Widen(int column, int width);
    [[nodiscard]] double MostWidth(const QString& text);
    [[nodiscard]] double WidthOf(QChar character);
    [[nodiscard]] double Surroundings(int row, int column, const QString& text);

    QTableWidget& m_table;
    QFontMetricsF m_metrics;
    std::array<double, 256> m_widths{};   ///< by character; 0: not asked for yet
    std::optional<double> m_surroundings; ///< by how much a cell is wider than its text
};

} // namespace VelmarGui
