#pragma once

#include "guicomponentbase/guicomponenttools.h"
#include "locatestatus.h"
#include "valueframework/valueclasses/valueobservermacros.h"
#include "ztbase/iobserver.h"

#include <QLatin1String>
#include <QObject>
#include <QPixmap>
#include <QPointer>
#include <QString>

class ClickLabel;
class QWidget;

namespace VelmarGui {

/// The status display of the DF stations and locate services: a lamp, four indicators for other components, and a
/// report that opens when the lamp is clicked.
///
/// The indicators are boolean values below the component root, published as globals under their own names:
/// "LocateDFConnectedIndicator", "LocateHRIConnectedIndicator", "LocateDFUsableIndicator" and
/// "LocateHRIUsableIndicator". They stay in the tree when the display goes.
class LocateStatusHandler final : public QObject, public GuiComponentTools, public IObserver
{
    Q_OBJECT
public:
    /// @p parent owns the lamp, not this object; the two may go in either order. @p pathPrefix is the folder of the
    /// driver's values, ending in "/". Touches no value yet.
    LocateStatusHandler(QWidget* parent, GuiComponentCommon* common, const QString& componentName,
                        const QString& pathPrefix);
    ~LocateStatusHandler() override;

    /// Binds the status texts and the frequency as far as they exist, creates and publishes the indicators, and
    /// evaluates once. A value that comes into being later is bound by the next call.
    void SetUpValues();

    /// The lamp; null when its parent has gone.
    [[nodiscard]] QWidget* GetLamp() const;

    void Update(Observable* source, TChangeCode code) override;

signals:
    /// Emitted by each evaluation for which both status texts are there: HRI usable, DF usable.
    void si_locateUsable(bool, bool);

private slots:
    void slot_open();

private:
    using BoolPtr = values::ValuePtr<values::BoolValue>;

    void LinkFrequency();
    void CreateIndicator(BoolPtr& indicator, QLatin1String name);
    void Evaluate();
    void EvaluateUsability();
    void ShowLamp(bool on);
    static void TellNotYetConnected();
    [[nodiscard]] bool CanLocateHri() const;
    [[nodiscard]] bool IsAnyUsable() const;

    QPointer<ClickLabel> m_pLamp;
    values::ValueObservingPtr<values::StringValue> m_locateStatus{this};
    values::ValueObservingPtr<values::StringValue> m_locateHriStatus{this};
    values::ValueObservingPtr<values::DoubleValue> m_frequency{this};
    BoolPtr m_dfConnected;
    BoolPtr m_hriConnected;
    BoolPtr m_dfUsable;
    BoolPtr m_hriUsable;
    LocateServiceStatus m_dfStatus;
    LocateServiceStatus m_hriStatus;
    FrequencyRanges m_hriRanges; ///< of the stations in m_hriStatus
    QPixmap m_lampOn;
    QPixmap m_lampOff;
    QString m_pathPrefix;
};

} // namespace VelmarGui
