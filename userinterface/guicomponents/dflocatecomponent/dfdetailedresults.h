#pragma once

#include "ui_dflocatedetailedresultswidget.h"
#include "valueframework/valueclasses/valueobservermacros.h"

#include <QPointer>
#include <QString>
#include <QWidget>

#include <optional>

namespace VelmarGui {

class ColumnFitter;
class ResultCells;
struct CellRange;

/// The "DF/Locate detailed results" window: time, averaged location and locate type of the latest result, and a table
/// with one row for every DF station that took part.
///
/// A top-level window that reads the driver's result values and writes none. Values may be missing or go at any time;
/// their places then read "---" or keep their text. The selected cells can be copied (Ctrl+C or the table's menu) as
/// lines of texts separated by tabs.
class DFDetailedResults : public QWidget, public Ui::DFLocateDetailedResultsWidget, public IObserver
{
    Q_OBJECT
public:
    /// @p resultPrefix is the folder of the result values, ending in its separator. Values that are missing now are not
    /// looked for again, except those that are looked up at each fill.
    explicit DFDetailedResults(const QString& resultPrefix);

    /// Takes over the number of stations and fills the table. For the owner, when the list of stations has changed.
    void Refresh();

    /// A new result time fills the table, for as many rows as it has.
    void Update(Observable* source, TChangeCode code) override;

private:
    enum Column
    {
        NameColumn,
        FrequencyColumn,
        AzimuthColumn,
        LevelColumn,
        QualityColumn,
        LongitudeColumn,
        LatitudeColumn,
        ErrorColumn,
        ColumnCount
    };

    /// What all rows of one fill have in common.
    struct Common
    {
        QString nothing;                         ///< stands for what is not shown
        QString frequency;                       ///< as it is shown; empty: unknown
        int qualityThreshold;                    ///< percent
        const values::ValueSelection* longitude; ///< may be null
        const values::ValueSelection* latitude;  ///< may be null
    };

    template <typename T>
    [[nodiscard]] T* FindResult(QLatin1String name) const;
    void AddCopyAction();

    void Fill();
    void ShowTime(const QString& time);
    void ShowLocation();
    void ShowLocateType(bool hasTime);
    void FillTable();
    [[nodiscard]] Common ReadCommon();
    [[nodiscard]] QString ShownFrequency();
    void FillRow(int row, const Common& common, CellRange& changed);

    QString m_resultPrefix;
    values::ValuePtr<values::ValueSelection> m_selectedDf;
    values::ValuePtr<values::ValueSelection> m_azimuth;
    values::ValuePtr<values::ValueSelection> m_quality;
    values::ValuePtr<values::ValueSelection> m_level;
    values::ValuePtr<values::ValueSelection> m_errors;
    values::ValueObservingPtr<values::StringValue> m_frequency{this};
    values::ValueObservingPtr<values::StringValue> m_resultTime{this};
    QPointer<QTableWidget> m_table;   ///< the form's table, as long as it exists
    ColumnFitter* m_fitter = nullptr; ///< belongs to the table
    ResultCells* m_cells = nullptr;   ///< belongs to the table
    QString m_fromHistoryPath;
    std::optional<QString> m_shownTime; ///< as the driver wrote it
    QString m_writtenFrequency;         ///< as the driver wrote it
    QString m_shownFrequency;           ///< what is shown of it; empty: unknown
};

} // namespace VelmarGui
