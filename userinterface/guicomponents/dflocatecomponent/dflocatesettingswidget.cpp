#include "dflocatesettingswidget.h"

#include "commandtable.h"
#include "entryguard.h"
#include "hostcodes.h"
#include "settingstext.h"
#include "valuetools.h"
#include "whilealive.h"

#include "guicomponentbase/guicomponentcommon.h"
#include "jobxml/df_settings.h"
#include "kt270/pgxmlformular.h"
#include "kt270/pgxmlparser.h"
#include "kt270/pgxmlsheet.h"
#include "valuewidgets/vccomboboxclassic.h"
#include "ztbase/exceptions.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QPointer>

namespace VelmarGui {

namespace {

// Handed over as copies: the host may keep them for longer than it keeps this library loaded.
const QLatin1String sourceFile("userinterface/guicomponents/dflocatecomponent/dflocatesettingswidget");
const QLatin1String parameterSetName("DF_Settings");
const QLatin1String deviceReadyName("DfDeviceReady");
const QLatin1String bandwidthField("Bandwidth");
const QLatin1String averagingField("Averaging");
const QLatin1String bandwidthEnumeration("enumBandwidth");
const QLatin1String averagingEnumeration("enumAveraging");

constexpr int significantModeCharacters = 4;
constexpr int comparedModeCharacters = 3;

constexpr const char* extraValuesChangedSlot = "1ExtraValuesChanged(values::ValueBase*)";

/// What the settings form shows above its own fields, one combo box for each extra value.
struct ExtraCombo
{
    const char* objectName;
    const char* label;
    const char* field; ///< of the form, and the context of the label's translation
};

constexpr ExtraCombo extraCombos[] = {
    {"VCComboBoxWorkflow", QT_TRANSLATE_NOOP("comboWorkflow", "Request Mode"), "comboWorkflow"},
    {"VCComboBoxType", QT_TRANSLATE_NOOP("comboType", "Locate Type"), "comboType"},
    {"VCComboBoxActivity", QT_TRANSLATE_NOOP("comboActivity", "Locate Activity"), "comboActivity"},
    {"VCComboBoxActivityTrigger", QT_TRANSLATE_NOOP("comboActivityTrigger", "Locate Activity Trigger"),
     "comboActivityTrigger"},
};

/// runEntry() for a conversion of settings: a failure of the report library is traced with its own text.
template <typename Operation>
void runConversion(const char* entry, int line, Operation operation)
{
    runEntry(entry, sourceFile, line, [&] {
        try {
            operation();
        } catch (const ReportException& failure) {
            traceIfEnabled(QLatin1String("Exception in ") + QLatin1String(entry) + QLatin1Char(' ') +
                               QString::fromUtf8(failure.what()),
                           sourceFile, static_cast<unsigned short>(line));
        }
    });
}

/// Marks an exchange as running for its life, on every way out. The panel may be deleted meanwhile.
class Exchange
{
public:
    Exchange(QObject* panel, bool& busy)
        : m_panel(panel)
        , m_busy(busy)
    {
        m_busy = true;
    }
    ~Exchange()
    {
        if (m_panel)
            m_busy = false;
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

private:
    QPointer<QObject> m_panel;
    bool& m_busy;
};

/// The text value at @p path; null when there is none.
values::StringValue* textValue(const QString& path)
{
    return dynamic_cast<values::StringValue*>(values::Tree::Instance()->FindValue(path));
}

void selectText(const values::ValuePtr<values::ValueSelection>& selection, const QString& text)
{
    if (selection)
        selection->Select(text, nullptr);
}

/// Selects in @p to what is current in @p from.
void mirror(const values::ValuePtr<values::ValueSelection>& from, const values::ValuePtr<values::ValueSelection>& to)
{
    if (from)
        selectText(to, currentItemText(*from.get()));
}

/// Selects in @p to what @p names gives for the current item of @p from; nothing when it gives nothing.
void mirrorBy(const QHash<QString, QString>& names, const values::ValuePtr<values::ValueSelection>& from,
              const values::ValuePtr<values::ValueSelection>& to)
{
    const auto name = from ? names.constFind(currentItemText(*from.get())) : names.constEnd();
    if (name != names.constEnd())
        selectText(to, QString(*name)); // a copy: whoever hears of the selection may have the names collected anew
}

QStringList itemTexts(const values::ValueSelection& selection)
{
    QStringList texts;
    for (int i = 0; i < selection.GetItemCount(); ++i) {
        if (const values::SelectionItem* const item = selection.GetItem(i))
            texts << item->GetName();
    }
    return texts;
}

/// Selects the first mode whose text begins with @p name; without one, the mode stays as it is.
void selectMode(values::ValueSelection& mode, const QString& name)
{
    const QStringList texts = itemTexts(mode);
    for (const QString& text : texts) {
        if (text.left(significantModeCharacters) == name) {
            mode.Select(text, nullptr);
            return;
        }
    }
}

} // namespace

DFLocateSettingsWidget::DFLocateSettingsWidget(GuiComponentCommon* common, const QString& path)
    : GuiComponentTools(common, path)
    , m_handlerRoot(QString(path).replace(QLatin1String("Component"), QLatin1String("Handler")))
{
    setObjectName(QStringLiteral("DFLocateSettingsWidget"));
    const QString title = QCoreApplication::translate("DFLocateSettings", "Locate Settings");
    setWindowTitle(title);
    setToolTip(title);
    auto* const layout = new QGridLayout(this);
    layout->setObjectName(QStringLiteral("DFLocateSettingsLayout"));
    CreateInterfaceValues();
    values::LinkOrCreate(m_deviceReady, GetGlobalPath() + deviceReadyName);
    AddGlobalValue(m_deviceReady.get(), deviceReadyName, this, config::valueChangedSlot);
}

DFLocateSettingsWidget::~DFLocateSettingsWidget() = default;

/// The texts stay: the host may have given the panel a title of its own, and makes it anew in another language.
void DFLocateSettingsWidget::changeEvent(QEvent* event)
{
    QFrame::changeEvent(event);
}

// Creating and binding values

void DFLocateSettingsWidget::CreateInterfaceValues()
{
    runEntry("DFLocateSettingsWidget::CreateInterfaceValues", sourceFile, __LINE__,
             [this] { AddParameterSet(parameterSetName, this, SLOT(SettingsChanged(values::ValueBase*))); });
}

/// A setting that cannot be made does not keep the others from being made.
void DFLocateSettingsWidget::CreateConfigValues()
{
    for (const ConfigEntry& entry : ConfigTable) {
        const auto create = [&] { createConfigValue(entry, m_handlerRoot); };
        if (!whileAlive(this,
                        [&] { runEntry("DFLocateSettingsWidget::CreateConfigValues", sourceFile, __LINE__, create); }))
            return;
    }
}

void DFLocateSettingsWidget::sl_VTConnected()
{
    ConnectValues();
}

void DFLocateSettingsWidget::sl_Offline()
{
    whileAlive(
        this,
        [this] { runEntry("DFLocateSettingsWidget::sl_Offline", sourceFile, __LINE__, [this] { SetOffline(true); }); },
        [this] { CreateConfigValues(); }, [this] { ConnectValues(); });
}

void DFLocateSettingsWidget::ConnectValues()
{
    runEntry("DFLocateSettingsWidget::ConnectValues", sourceFile, __LINE__, [this] {
        const QString settingsPath = GetParameterPath() + parameterSetName;
        whileAlive(
            this,
            [&] {
                AddValue(textValue(settingsPath), this, SLOT(SettingsInDriverChanged(values::ValueBase*)));
                BindExtraValues();
            },
            [&] {
                BindConfigValues();
                const QString xml = GetXmlFromValues();
                UpdateParameterSet(parameterSetName, xml);
                const values::StringValue* const pgxml = textValue(settingsPath + QLatin1String("/PGXML"));
                LoadForm(pgxml != nullptr ? pgxml->GetValue() : QString(), xml);
            },
            [&] {
                values::LinkByPath(m_commands, m_handlerRoot + QLatin1String("Values/Commands"));
                ConnectDeviceValues();
            },
            [&] { SettingsInDriverChanged(textValue(settingsPath)); });
    });
}

void DFLocateSettingsWidget::BindExtraValues()
{
    std::size_t extra = 0;
    for (const ConfigEntry& entry : ConfigTable) {
        if (entry.interfaceName == nullptr)
            continue;
        const QString name = QString::fromLatin1(entry.interfaceName);
        SelectionPtr& value = m_extraValues.at(extra++);
        const bool alive = whileAlive(
            this, [&] { values::LinkOrCreate(value, GetComponentPath() + name); },
            [&] { AddValue(value.get(), this, extraValuesChangedSlot); },
            [&] { LinkValue(name, m_handlerRoot + QString::fromLatin1(entry.path), this, extraValuesChangedSlot); });
        if (!alive)
            return;
    }
}

void DFLocateSettingsWidget::BindConfigValues()
{
    for (const ConfigEntry& entry : ConfigTable)
        AddValue(bindConfigValue(entry, m_config, m_handlerRoot), this, entry.slot);
}

// The form

void DFLocateSettingsWidget::LoadForm(const QString& pgxml, const QString& xml)
{
    m_pForm.reset();
    if (!ParseForm(pgxml))
        return;
    whileAlive(
        m_pForm.get(), [this] { InsertExtraCombos(); }, [this] { BindForm(); },
        [this] { m_pForm->CreateGUI(!IsOffline()); }, [&] { ApplyXmlToForm(xml); },
        [this] {
            if (QWidget* const widget = m_pForm->GetWidget())
                layout()->addWidget(widget);
        },
        [this] { m_pForm->Show(); }, [this] { ConnectForm(); });
}

bool DFLocateSettingsWidget::ParseForm(const QString& pgxml)
{
    KT270::PgXmlParser parser;
    QString source = pgxml;
    if (!pgxml.isEmpty()) {
        m_pForm.reset(parser.ParsePGXML(pgxml));
    } else {
        source = GetPGXMLFilename(parameterSetName, QStringLiteral("FFP"));
        m_pForm.reset(parser.ParsePGXMLFile(source));
    }
    if (m_pForm == nullptr)
        traceIfEnabled(QStringLiteral("** LoadPgXml: Cannot load %1\n").arg(source), sourceFile, __LINE__);
    return m_pForm != nullptr;
}

void DFLocateSettingsWidget::InsertExtraCombos()
{
    for (const ExtraValue translated : {Activity, ActivityTrigger}) {
        if (m_extraValues[translated])
            m_extraValues[translated]->SetTranslationNamespace(QStringLiteral("PITResourceTypes"));
    }
    KT270::PgXmlSheet* const sheet = m_pForm->GetSheet();
    if (sheet == nullptr)
        return;
    int row = 1;
    for (std::size_t extra = Workflow; extra < ExtraValueCount; ++extra) {
        const ExtraCombo& description = extraCombos[extra];
        const QString label = QCoreApplication::translate(description.field, description.label);
        auto* const combo = new VCComboBoxClassic(sheet);
        combo->setObjectName(QString::fromLatin1(description.objectName));
        combo->setToolTip(label);
        combo->SetValueSelection(m_extraValues[extra].get());
        sheet->InsertWidget(label, QString::fromLatin1(description.field), combo, row++);
    }
}

void DFLocateSettingsWidget::BindForm()
{
    const bool alive = whileAlive(
        m_pForm.get(), [this] { m_pForm->CreateValueTree(); },
        [this] { m_pForm->InitVTValue(QStringLiteral("Detail/QualityThreshold"), m_config.quality.get()); },
        [this] { m_pForm->InitVTValue(QStringLiteral("Detail/LevelThreshold"), m_config.threshold.get()); },
        [this] { m_pForm->InitVTValue(QStringLiteral("DFMode"), m_config.mode.get()); },
        [this] { m_pForm->InitVTValue(bandwidthField, m_config.bandwidth.get()); },
        [this] { m_pForm->InitVTValue(averagingField, m_config.averageTime.get()); },
        [this] { m_pForm->InitVTValue(QStringLiteral("DFFrequencyOffset"), m_config.frequencyOffset.get()); });
    if (!alive)
        return;
    AddGlobalValue(m_config.frequencyOffset.get(), QStringLiteral("DFFrequencyOffset"), nullptr, nullptr);
    AddGlobalValue(m_config.span.get(), QStringLiteral("DFSpan"), nullptr, nullptr);
    if (m_config.mode)
        m_pForm->InitEnumeration(QStringLiteral("enumMode"), m_config.mode.get(), itemTexts(*m_config.mode.get()));
    m_pForm->InitEnumeration(bandwidthEnumeration, m_config.bandwidth.get());
    m_pForm->InitEnumeration(averagingEnumeration, m_config.averageTime.get());
}

/// Offline an edit reaches the values only when the host asks for the parameters; online at once.
void DFLocateSettingsWidget::ConnectForm()
{
    GuiComponentCommon* const common = GetCommon();
    if (IsOffline()) {
        connect(m_pForm.get(), SIGNAL(si_parametersModified()), common, SIGNAL(si_parametersModified()));
        connect(common, SIGNAL(si_parametersRequested()), this, SLOT(sl_parametersRequested()), Qt::UniqueConnection);
    } else {
        connect(m_pForm.get(), SIGNAL(si_parametersModified()), this, SLOT(sl_parametersModified()));
    }
    m_pForm->SetConfigObject(common, QStringLiteral("CfgDFLocateSettings"));
    connect(common, SIGNAL(si_propertiesChanged()), this, SLOT(sl_propertiesChanged()), Qt::UniqueConnection);
}

void DFLocateSettingsWidget::ApplyXmlToForm(const QString& xml)
{
    if (m_pForm == nullptr)
        return;
    runEntry("DFLocateSettingsWidget::ApplyXmlToForm", sourceFile, __LINE__, [&] {
        whileAlive(
            m_pForm.get(),
            [&] {
                m_pForm->EvaluateScript(hasDetail(xml) ? QStringLiteral("setOverwriteThreshold(true);")
                                                       : QStringLiteral("setOverwriteThreshold(false);"));
            },
            [&] { m_pForm->SetXmlString(toFormText(xml)); });
    });
}

void DFLocateSettingsWidget::WriteExtraValuesBack()
{
    for (const ConfigEntry& entry : ConfigTable) {
        if (entry.interfaceName == nullptr)
            continue;
        if (!whileAlive(this, [&] { WritebackValue(QString::fromLatin1(entry.interfaceName)); }))
            return;
    }
}

/// The form's settings, completed by the extra values. An edited text that is no settings text stays as it is.
QString DFLocateSettingsWidget::GetXmlFromForm(FormUse use)
{
    QString xml = fromFormText(m_pForm->GetXmlString());
    JobXml::DF_Settings settings;
    if (!settings.SetXmlString(xml) && use == FormUse::Edited)
        return xml;
    PutExtraValuesInto(settings);
    return settings.GetXmlString();
}

// Values to settings and back

QString DFLocateSettingsWidget::GetXmlFromValues()
{
    QString xml;
    runConversion("DFLocateSettingsWidget::GetXmlFromValues", __LINE__, [&] {
        JobXml::DF_Settings settings;
        JobXml::Bandwidth bandwidth;
        if (m_config.bandwidth)
            bandwidth.SetValue(m_config.bandwidth->GetCurrentValue());
        if (m_config.averageTime)
            settings.SetAveraging(m_config.averageTime->GetCurrentValue());
        if (m_config.bandwidth)
            settings.SetBandwidth(bandwidth);
        if (m_config.mode) {
            const QString mode = currentItemText(*m_config.mode.get()).left(significantModeCharacters);
            settings.SetDFMode(JobXml::DF_Settings::NameToDFMode(mode));
        }
        if (m_config.quality && m_config.quality->GetState() == OrdinaryState)
            settings.GetDetail().SetQualityThreshold(m_config.quality->GetValue());
        if (m_config.threshold && m_config.threshold->GetState() == OrdinaryState)
            settings.GetDetail().SetLevelThreshold(m_config.threshold->GetValue());
        if (m_config.frequencyOffset)
            settings.SetFrequencyOffset(m_config.frequencyOffset->GetValue());
        PutExtraValuesInto(settings);
        xml = settings.GetXmlString();
    });
    return xml;
}

/// All by name but the activity, whose keys are the numbers of the enumeration by construction.
void DFLocateSettingsWidget::PutExtraValuesInto(JobXml::DF_Settings& settings) const
{
    using JobXml::DF_Settings;
    if (m_extraValues[Workflow])
        settings.SetWorkflow(DF_Settings::NameToWorkflow(currentItemText(*m_extraValues[Workflow].get())));
    if (m_extraValues[LocateType])
        settings.SetLocateType(DF_Settings::NameToLocateType(currentItemText(*m_extraValues[LocateType].get())));
    if (m_extraValues[Activity])
        settings.SetActivity(static_cast<DF_Settings::TActivity>(m_extraValues[Activity]->GetCurrentKey()));
    if (m_extraValues[ActivityTrigger])
        settings.SetActivityTrigger(
            DF_Settings::NameToActivityTrigger(currentItemText(*m_extraValues[ActivityTrigger].get())));
}

/// Each group of settings stands alone: a failure in one does not keep the next from being set. A text that cannot be
/// read gives empty settings, and these are set.
void DFLocateSettingsWidget::SetValuesFromXml(const QString& xml)
{
    constexpr const char* entry = "DFLocateSettingsWidget::SetValuesFromXml";
    runConversion(entry, __LINE__, [&] {
        JobXml::DF_Settings settings;
        settings.SetXmlString(xml);
        whileAlive(
            this, [&] { runConversion(entry, __LINE__, [&] { SetMeasurementFrom(settings); }); },
            [&] { runConversion(entry, __LINE__, [&] { SetThresholdsFrom(settings); }); },
            [&] { runConversion(entry, __LINE__, [&] { SetExtraValuesFrom(settings); }); });
    });
}

void DFLocateSettingsWidget::SetMeasurementFrom(const JobXml::DF_Settings& settings)
{
    whileAlive(
        this,
        [&] {
            if (m_config.averageTime)
                m_config.averageTime->Select(settings.GetAveraging(), nullptr, true);
        },
        [&] {
            if (m_config.bandwidth)
                m_config.bandwidth->Select(settings.GetBandwidth().GetValue(), nullptr, true);
        },
        [&] {
            if (m_config.mode)
                selectMode(*m_config.mode.get(), JobXml::DF_Settings::DFModeToName(settings.GetDFMode()));
        });
}

void DFLocateSettingsWidget::SetThresholdsFrom(const JobXml::DF_Settings& settings)
{
    const JobXml::DF_SettingsDetail& detail = settings.GetDetail();
    whileAlive(
        this,
        [&] {
            if (m_config.overwriteThreshold)
                m_config.overwriteThreshold->SetValue(detail.HasData(), nullptr);
        },
        [&] {
            if (detail.HasData() && m_config.quality)
                m_config.quality->SetValue(detail.GetQualityThreshold(), nullptr);
        },
        [&] {
            if (detail.HasData() && m_config.threshold)
                m_config.threshold->SetValue(roundHalfUp(detail.GetLevelThreshold()), nullptr);
        });
}

/// An interface value is written back even when its list has no such item.
void DFLocateSettingsWidget::SetExtraValuesFrom(const JobXml::DF_Settings& settings)
{
    using JobXml::DF_Settings;
    const auto setAndWriteBack = [this](bool isSet, const char* name, auto select) {
        if (isSet)
            whileAlive(this, select, [&] { WritebackValue(QString::fromLatin1(name)); });
    };
    whileAlive(
        this,
        [&] {
            if (settings.IsFrequencyOffsetSet() && m_config.frequencyOffset)
                m_config.frequencyOffset->SetValue(settings.GetFrequencyOffset(), nullptr);
        },
        [&] {
            setAndWriteBack(settings.IsWorkflowSet(), "DFLocateWorkflow", [&] {
                selectText(m_config.workflow, DF_Settings::WorkflowToName(settings.GetWorkflow()));
            });
        },
        [&] {
            setAndWriteBack(settings.IsLocateTypeSet(), "DFLocateType", [&] {
                selectText(m_config.locateType, DF_Settings::LocateTypeToName(settings.GetLocateType()));
            });
        },
        [&] {
            setAndWriteBack(settings.IsActivitySet(), "DFLocateActivity", [&] {
                if (m_config.activity)
                    m_config.activity->Select(static_cast<int>(settings.GetActivity()), nullptr);
            });
        },
        [&] {
            setAndWriteBack(settings.IsActivityTriggerSet(), "DFLocateActivityTrigger", [&] {
                selectText(m_config.activityTrigger, DF_Settings::ActivityTriggerToName(settings.GetActivityTrigger()));
            });
        });
}

// The roads of a setting

void DFLocateSettingsWidget::SettingsChanged(values::ValueBase* pSettings)
{
    if (m_busy || pSettings == nullptr)
        return;
    runEntry("DFLocateSettingsWidget::SettingsChanged", sourceFile, __LINE__, [&] {
        const Exchange exchange(this, m_busy);
        TakeSettingsOver(pSettings->GetStringValue());
    });
}

void DFLocateSettingsWidget::SettingsInDriverChanged(values::ValueBase* pSettings)
{
    if (m_busy || pSettings == nullptr)
        return;
    runEntry("DFLocateSettingsWidget::SettingsInDriverChanged", sourceFile, __LINE__, [&] {
        const Exchange exchange(this, m_busy);
        const QString xml = pSettings->GetStringValue();
        if (!xml.isEmpty())
            TakeSettingsOver(xml);
    });
}

void DFLocateSettingsWidget::TakeSettingsOver(const QString& xml)
{
    whileAlive(
        this, [&] { ApplyXmlToForm(xml); }, [&] { SetValuesFromXml(xml); });
}

void DFLocateSettingsWidget::ValueChanged(values::ValueBase* pValue)
{
    runEntry("DFLocateSettingsWidget::ValueChanged", sourceFile, __LINE__, [&] {
        if (isBoundTo(m_deviceReady, pValue))
            ConnectDeviceValues();
        else
            whileAlive(
                this, [&] { MirrorDevice(pValue); }, [&] { PublishValues(); });
    });
}

void DFLocateSettingsWidget::MapViewChanged(values::ValueBase* /*pValue*/) {}

void DFLocateSettingsWidget::PublishValues()
{
    if (m_busy)
        return;
    const Exchange exchange(this, m_busy);
    const QString xml = GetXmlFromValues();
    whileAlive(
        this, [&] { UpdateParameterSet(parameterSetName, xml); }, [&] { ApplyXmlToForm(xml); },
        [&] { SendSettingsToDriver(xml); });
}

void DFLocateSettingsWidget::ExtraValuesChanged(values::ValueBase* /*pValue*/)
{
    if (m_pForm == nullptr)
        return;
    runEntry("DFLocateSettingsWidget::ExtraValuesChanged", sourceFile, __LINE__, [this] {
        // Offline, writing these values back is part of an exchange and must not start another one.
        if (IsOffline() && m_busy)
            return;
        if (KT270::PgXmlSheet* const sheet = m_pForm->GetSheet())
            sheet->setModified(true);
    });
}

void DFLocateSettingsWidget::OffsetValueChanged(values::ValueBase* pValue)
{
    if (m_pForm == nullptr)
        return;
    runEntry("DFLocateSettingsWidget::OffsetValueChanged", sourceFile, __LINE__,
             [&] { m_pForm->SetVTValue(pValue, nullptr, true); });
}

void DFLocateSettingsWidget::SpanValueChanged(values::ValueBase* pValue)
{
    if (!isBoundTo(m_config.span, pValue))
        return;
    runEntry("DFLocateSettingsWidget::SpanValueChanged", sourceFile, __LINE__, [this] {
        whileAlive(
            this,
            [this] {
                if (m_config.bandwidth)
                    m_config.bandwidth->SelectClosestValue(m_config.span->GetValue(), nullptr);
            },
            [this] {
                if (m_commands)
                    issueCommand(*m_commands.get(), StartSingleDfCommand);
            });
    });
}

void DFLocateSettingsWidget::sl_parametersModified()
{
    runEntry("DFLocateSettingsWidget::sl_parametersModified", sourceFile, __LINE__, [this] {
        try {
            TakeFormOver(FormUse::Edited);
        } catch (const ReportException& failure) {
            traceIfEnabled(QStringLiteral("ReportException %1: %2").arg(failure.GetPlace(), failure.GetMessage()),
                           sourceFile, __LINE__);
        }
    });
}

void DFLocateSettingsWidget::sl_parametersRequested()
{
    runConversion("DFLocateSettingsWidget::sl_parametersRequested", __LINE__,
                  [this] { TakeFormOver(FormUse::Requested); });
}

/// An edit reaches the driver as well; a request only asks for what is there.
void DFLocateSettingsWidget::TakeFormOver(FormUse use)
{
    if (m_busy || m_pForm == nullptr)
        return;
    const Exchange exchange(this, m_busy);
    if (!whileAlive(m_pForm.get(), [this] { WriteExtraValuesBack(); }))
        return;
    const QString xml = GetXmlFromForm(use);
    whileAlive(
        this, [&] { UpdateParameterSet(parameterSetName, xml); }, [&] { SetValuesFromXml(xml); },
        [&] {
            if (use == FormUse::Edited)
                SendSettingsToDriver(xml);
        });
}

void DFLocateSettingsWidget::SendSettingsToDriver(const QString& xml)
{
    const values::StringValue* const known = textValue(GetParameterPath() + parameterSetName);
    if (known != nullptr && known->GetValue() == xml)
        return;
    values::StringValue* const toDriver = textValue(GetParameterPath() + QLatin1String("DFLOCATE/ToDriver"));
    if (toDriver != nullptr && !xml.isEmpty())
        toDriver->SetValue(xml, nullptr);
}

void DFLocateSettingsWidget::sl_propertiesChanged()
{
    if (m_pForm == nullptr)
        return;
    runEntry("DFLocateSettingsWidget::sl_propertiesChanged", sourceFile, __LINE__, [this] {
        m_pForm->RestoreConfiguration();
        if (KT270::PgXmlSheet* const sheet = m_pForm->GetSheet())
            sheet->EnableInput(true, 0);
    });
}

void DFLocateSettingsWidget::sl_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode mode)
{
    constexpr int locked = 2;
    setEnabled(static_cast<int>(mode) != locked);
}

// The device

void DFLocateSettingsWidget::ConnectDeviceValues()
{
    BindDeviceValue(m_deviceBandwidth, QLatin1String("DeviceDfBandwidth"));
    BindDeviceValue(m_deviceAveraging, QLatin1String("DeviceDfAveraging"));
    BindDeviceValue(m_deviceMode, QLatin1String("DeviceDfMode"));
    whileAlive(
        this, [this] { TakeDeviceItems(m_deviceBandwidth, m_config.bandwidth, bandwidthField, bandwidthEnumeration); },
        [this] { TakeDeviceItems(m_deviceAveraging, m_config.averageTime, averagingField, averagingEnumeration); },
        [this] { MapModes(); });
}

void DFLocateSettingsWidget::BindDeviceValue(SelectionPtr& device, QLatin1String name)
{
    const values::ValueBase* const global = ConnectGlobalValue(name, this, config::valueChangedSlot);
    values::LinkByPath(device, global != nullptr ? global->GetPathName() : QString());
}

/// The setting offers what the device can do, and shows what it does.
void DFLocateSettingsWidget::TakeDeviceItems(const SelectionPtr& device, const SelectionPtr& setting,
                                             QLatin1String field, QLatin1String enumeration)
{
    if (!device || !setting)
        return;
    whileAlive(
        this,
        [&] {
            exchangeItems(*setting.get(), [&](values::ValueSelection& items) {
                items.DeleteItems(nullptr);
                items.AddItemsFrom(*device.get(), nullptr);
            });
        },
        [&] {
            if (m_pForm != nullptr)
                m_pForm->InitVTValue(field, setting.get());
        },
        [&] {
            if (m_pForm != nullptr)
                m_pForm->InitEnumeration(enumeration, setting.get());
        },
        [&] { mirror(device, setting); });
}

/// A setting and a device mode belong together when they begin alike, whatever their case.
void DFLocateSettingsWidget::MapModes()
{
    m_deviceModeByMode.clear();
    m_modeByDeviceMode.clear();
    if (!m_deviceMode || !m_config.mode)
        return;
    const auto beginning = [](const QString& text) { return text.left(comparedModeCharacters).toUpper(); };
    const QStringList modes = itemTexts(*m_config.mode.get());
    const QStringList deviceModes = itemTexts(*m_deviceMode.get());
    for (const QString& mode : modes) {
        for (const QString& deviceMode : deviceModes) {
            if (beginning(mode) == beginning(deviceMode)) {
                m_deviceModeByMode.insert(mode, deviceMode);
                m_modeByDeviceMode.insert(deviceMode, mode);
            }
        }
    }
}

/// Runs during an exchange, too: the device and its setting never show different things.
void DFLocateSettingsWidget::MirrorDevice(const values::ValueBase* changed)
{
    if (isBoundTo(m_deviceBandwidth, changed))
        mirror(m_deviceBandwidth, m_config.bandwidth);
    else if (isBoundTo(m_config.bandwidth, changed))
        mirror(m_config.bandwidth, m_deviceBandwidth);
    else if (isBoundTo(m_deviceAveraging, changed))
        mirror(m_deviceAveraging, m_config.averageTime);
    else if (isBoundTo(m_config.averageTime, changed))
        mirror(m_config.averageTime, m_deviceAveraging);
    else if (isBoundTo(m_deviceMode, changed))
        mirrorBy(m_modeByDeviceMode, m_deviceMode, m_config.mode);
    else if (isBoundTo(m_config.mode, changed))
        mirrorBy(m_deviceModeByMode, m_config.mode, m_deviceMode);
}

} // namespace VelmarGui
