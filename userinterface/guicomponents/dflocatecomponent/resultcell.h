#pragma once

#include <QString>
#include <QTableWidgetItem>

namespace VelmarGui {

/// A cell of the results table.
///
/// Its text can be replaced without telling the views, which takes a table with a cell at a time much longer than the
/// texts themselves. Whoever replaces it that way tells them afterwards, of many cells at once. In all else it is an
/// ordinary cell.
class ResultCell final : public QTableWidgetItem
{
public:
    enum
    {
        Type = QTableWidgetItem::UserType + 1
    };

    ResultCell();

    /// @name Replacing the text
    /// True when it is another one than before; the views have not been told. Nothing is built of a text that stays.
    /// @{
    bool Replace(const QString& text);
    /// By @p text with @p unit behind it.
    bool Replace(const QString& text, const QString& unit);
    /// By the coordinate that @p text is, see coordinateText().
    bool ReplaceByCoordinate(const QString& text);
    /// @}

    [[nodiscard]] const QString& Text() const { return m_text; }

    [[nodiscard]] QVariant data(int role) const override;
    void setData(int role, const QVariant& value) override;
    [[nodiscard]] QTableWidgetItem* clone() const override;

private:
    QString m_text;
    QString m_coordinate; ///< what the text was made of, null when it is no coordinate
};

} // namespace VelmarGui
