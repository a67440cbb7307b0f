#pragma once

#include "settingstable.h"

#include "guicomponentbase/guicomponenttools.h"
#include "guicomponentbase/ivelmarguiservice.h"

#include <QFrame>
#include <QHash>
#include <QString>

#include <array>
#include <memory>

namespace JobXml {
class DF_Settings;
}

namespace KT270 {
class PgXmlFormular;
}

namespace VelmarGui {

class GuiComponentCommon;

/// The settings panel of the component: keeps the DF/Locate settings as host values, shows them in a form, and keeps
/// values, form, the host's parameter set "DF_Settings" and the driver in step.
///
/// Settings travel as one DF_Settings XML text. While one exchange runs, further ones that its own writes would start
/// are dropped; only mirroring between a setting and the device's list of the same kind goes on. Every slot lets no
/// exception out: it leaves a trace, and the panel stays usable. Values, the form and the driver may be missing; what
/// needs them is then left undone. Whoever hears of a change of a value may delete the panel.
class DFLocateSettingsWidget : public QFrame, public GuiComponentTools
{
    Q_OBJECT
public:
    /// @p path is the component's folder in the value tree, ending in "/"; the settings lie in the folder of that name
    /// with "Handler" for every "Component".
    DFLocateSettingsWidget(GuiComponentCommon* common, const QString& path);
    ~DFLocateSettingsWidget() override;

    /// Binds to the values that exist, loads the form, and takes the driver's settings over. May be called again.
    void ConnectValues();

public slots:
    /// The driver's values are in the tree.
    void sl_VTConnected();
    /// There is no driver: creates the settings with their defaults, then connects.
    void sl_Offline();
    /// The host hands in a parameter set; @p pSettings holds its text.
    void SettingsChanged(values::ValueBase* pSettings);
    /// A setting, a list of the device or the device-ready flag has changed.
    void ValueChanged(values::ValueBase* pValue);
    /// Nothing in the panel depends on the map view.
    void MapViewChanged(values::ValueBase* pValue);
    /// The driver reports the settings it works with. An empty text changes nothing.
    void SettingsInDriverChanged(values::ValueBase*);
    /// One of the values that travel in every parameter set has changed.
    void ExtraValuesChanged(values::ValueBase*);
    void OffsetValueChanged(values::ValueBase*);
    /// Chooses the bandwidth closest to the span, and starts a DF.
    void SpanValueChanged(values::ValueBase*);
    /// The operator has edited the form.
    void sl_parametersModified();
    /// The host wants the parameter set reported; nothing is sent to the driver.
    void sl_parametersRequested();
    void sl_propertiesChanged();
    /// The panel can be used in every mode but the locked one.
    void sl_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode mode);

protected:
    void changeEvent(QEvent* event) override;

private:
    using SelectionPtr = values::ValuePtr<values::ValueSelection>;

    /// Why the settings are taken from the form: the operator has edited it, or the host has asked for them.
    enum class FormUse
    {
        Edited,
        Requested
    };

    /// The values that travel in every parameter set, in the order of their places in m_extraValues.
    enum ExtraValue : std::size_t
    {
        Workflow,
        LocateType,
        Activity,
        ActivityTrigger,
        ExtraValueCount
    };

    void CreateInterfaceValues();
    void CreateConfigValues();
    void BindExtraValues();
    void BindConfigValues();
    void LoadForm(const QString& pgxml, const QString& xml);
    [[nodiscard]] bool ParseForm(const QString& pgxml);
    void InsertExtraCombos();
    void BindForm();
    void ConnectForm();

    void ConnectDeviceValues();
    void BindDeviceValue(SelectionPtr& device, QLatin1String name);
    void TakeDeviceItems(const SelectionPtr& device, const SelectionPtr& setting, QLatin1String field,
                         QLatin1String enumeration);
    void MapModes();
    void MirrorDevice(const values::ValueBase* changed);
    void PublishValues();
    void TakeSettingsOver(const QString& xml);

    [[nodiscard]] QString GetXmlFromValues();
    void SetValuesFromXml(const QString& xml);
    void SetMeasurementFrom(const JobXml::DF_Settings& settings);
    void SetThresholdsFrom(const JobXml::DF_Settings& settings);
    void SetExtraValuesFrom(const JobXml::DF_Settings& settings);
    void PutExtraValuesInto(JobXml::DF_Settings& settings) const;
    void ApplyXmlToForm(const QString& xml);
    void WriteExtraValuesBack();
    [[nodiscard]] QString GetXmlFromForm(FormUse use);
    void TakeFormOver(FormUse use);
    void SendSettingsToDriver(const QString& xml);

    std::array<SelectionPtr, ExtraValueCount> m_extraValues;
    ConfigValues m_config;
    SelectionPtr m_deviceBandwidth;
    SelectionPtr m_deviceAveraging;
    SelectionPtr m_deviceMode;
    SelectionPtr m_commands;
    values::ValuePtr<values::BoolValue> m_deviceReady;
    QString m_handlerRoot;
    QHash<QString, QString> m_deviceModeByMode;
    QHash<QString, QString> m_modeByDeviceMode;
    std::unique_ptr<KT270::PgXmlFormular> m_pForm;
    bool m_busy = false;
};

} // namespace VelmarGui
