#pragma once

#include "valueframework/valueclasses/valueobservermacros.h"

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QString>

class QLabel;
class QToolBar;
class QToolButton;
class VCComboBoxClassic;

namespace VelmarGui {

class DFDetailedResults;

/// Shows the latest DF result of the selected DF station on the locate toolbar: which station, its bearing (degrees
/// clockwise from true north), its quality (percent), and the local time of the result or the text of its error.
///
/// Its button opens the window with the results of all stations, which it owns and which may be deleted by others.
///
/// Not a widget: its widgets are children of the toolbar. The driver creates and writes the result values. Their
/// selections are parallel, with one item a station under the station's key; this object writes nothing but their
/// current key.
class DFDetailToolbar : public QObject, public IObserver
{
    Q_OBJECT
public:
    /// Adds the widgets to @p toolbar, which becomes the parent. @p toolbarPath is the folder of "Values/Result/",
    /// ending in its separator.
    DFDetailToolbar(QToolBar* toolbar, const QString& toolbarPath);
    ~DFDetailToolbar() override;

    void Update(Observable* source, TChangeCode code) override;

signals:
    /// A result has arrived and is shown. @p sTime is the text of the time label, which is an error text as long as the
    /// last error is not followed by a time. A selection that the driver does not have is null.
    void LocateResultArrived(values::ValueSelection* pDfName, values::ValueSelection* pAzimuth,
                             values::ValueSelection* pQuality, QString sTime, values::ValueSelection* pLongitude,
                             values::ValueSelection* pLatitude);

private slots:
    void SlotDetailedResults();

private:
    template <typename T>
    bool Link(values::ValueObservingPtr<T>& pointer, QLatin1String name);
    template <typename T>
    bool LinkMissing(values::ValueObservingPtr<T>& pointer, QLatin1String name);

    void AddStationCombo();
    [[nodiscard]] QLabel* AddResultLabel(const QString& objectName, const QString& toolTip, int width,
                                         Qt::Alignment horizontal);
    void AddDetailedResultsButton();

    void HandleContentChange(const Observable* source);
    enum class StationList
    {
        Unchanged,
        Changed
    };
    void ShowSelectedStation(StationList list);
    void ShowNewResult();
    void CopySelectedKey();
    void OpenWindow();
    void LinkMissingValues();

    void UpdateLabels();
    void UpdateTime();
    void UpdateError();
    void ColourButton();

    QToolBar* m_pToolBar;
    QString m_resultPath;
    QPointer<DFDetailedResults> m_pWindow;
    values::ValueObservingPtr<values::ValueSelection> m_selectedDf{this};
    values::ValueObservingPtr<values::ValueSelection> m_azimuth{this};
    values::ValueObservingPtr<values::ValueSelection> m_quality{this};
    values::ValueObservingPtr<values::ValueSelection> m_longitude{this};
    values::ValueObservingPtr<values::ValueSelection> m_latitude{this};
    values::ValueObservingPtr<values::IntValue> m_qualityThreshold{this};
    values::ValueObservingPtr<values::StringValue> m_resultTime{this};
    values::ValueObservingPtr<values::StringValue> m_frequency{this};
    values::ValueObservingPtr<values::ValueSelection> m_errors{this};
    QLabel* m_pTimeLabel = nullptr;
    QToolButton* m_pDetailedResultsButton = nullptr;
    QColor m_savedButtonColour;
    QLabel* m_pBearingLabel = nullptr;
    QLabel* m_pQualityLabel = nullptr;
    QLabel* m_pLeadingLabel = nullptr;
    VCComboBoxClassic* m_pStationCombo = nullptr;
};

} // namespace VelmarGui
