#include "jobxml/df_settings.h"

#include "faultpoints/faultpoint.h"
#include "numbers.h"
#include "settingsreader.h"

#include <QXmlStreamWriter>

namespace JobXml {

namespace {

const QString settingsElement = QStringLiteral("DF_Settings");
const QString bandwidthElement = QStringLiteral("Bandwidth");
const QString averagingElement = QStringLiteral("Averaging");
const QString dfModeElement = QStringLiteral("DFMode");
const QString detailElement = QStringLiteral("Detail");
const QString frequencyOffsetElement = QStringLiteral("FrequencyOffset");
const QString workflowElement = QStringLiteral("Workflow");
const QString locateTypeElement = QStringLiteral("LocateType");
const QString activityElement = QStringLiteral("Activity");
const QString activityTriggerElement = QStringLiteral("ActivityTrigger");

// What follows these characters of a mode's name is wording: "Normal" is "Norm".
constexpr int modeNameLength = 4;

// Room for all fields; a text that grows bit by bit is copied again and again.
constexpr int usualXmlLength = 512;

// The names stand in the order of the enumerations.

const QStringList& dfModes()
{
    static const QStringList names{QStringLiteral("Norm"), QStringLiteral("Cont"), QStringLiteral("Gate")};
    return names;
}

const QStringList& workflows()
{
    static const QStringList names{QStringLiteral("On request"), QStringLiteral("Continuous"),
                                   QStringLiteral("On trigger")};
    return names;
}

const QStringList& locateTypes()
{
    static const QStringList names{QStringLiteral("No locate"), QStringLiteral("Online"), QStringLiteral("History")};
    return names;
}

const QStringList& activities()
{
    static const QStringList names{QStringLiteral("No DF/Locate"), QStringLiteral("DF"),
                                   QStringLiteral("DF and locate")};
    return names;
}

const QStringList& activityTriggers()
{
    static const QStringList names{QStringLiteral("Manual"), QStringLiteral("Signal"), QStringLiteral("Schedule")};
    return names;
}

// "Unset" is -1 because that is the position of an unknown name; the text at an unknown position is empty.
template <typename Choice>
Choice fromName(const QStringList& names, const QString& name)
{
    return static_cast<Choice>(names.indexOf(name));
}

template <typename Choice>
QString toName(const QStringList& names, Choice choice)
{
    return names.value(choice);
}

template <typename Choice>
std::optional<Choice> known(const QStringList& names, Choice choice)
{
    return choice >= 0 && choice < names.size() ? std::optional(choice) : std::nullopt;
}

template <typename Choice>
Choice orUnset(const std::optional<Choice>& field)
{
    return field.value_or(static_cast<Choice>(-1));
}

void writeNumber(QXmlStreamWriter& xml, const QString& element, const std::optional<double>& field)
{
    if (field)
        xml.writeTextElement(element, toText(*field));
}

void writeName(QXmlStreamWriter& xml, const QString& element, const QString& name)
{
    if (!name.isEmpty())
        xml.writeTextElement(element, name);
}

} // namespace

QString DF_Settings::GetXmlString() const
{
    faults::mayRaise("DF_Settings::GetXmlString");
    QString text;
    text.reserve(usualXmlLength);
    QXmlStreamWriter xml(&text);
    xml.writeStartElement(settingsElement);
    writeNumber(xml, bandwidthElement, m_bandwidth.m_value);
    writeNumber(xml, averagingElement, m_averaging);
    writeName(xml, dfModeElement, DFModeToName(GetDFMode()));
    if (m_detail.HasData()) {
        xml.writeStartElement(detailElement);
        m_detail.WriteTo(xml);
        xml.writeEndElement();
    }
    writeNumber(xml, frequencyOffsetElement, m_frequencyOffset);
    writeName(xml, workflowElement, WorkflowToName(GetWorkflow()));
    writeName(xml, locateTypeElement, LocateTypeToName(GetLocateType()));
    writeName(xml, activityElement, toName(activities(), GetActivity()));
    writeName(xml, activityTriggerElement, ActivityTriggerToName(GetActivityTrigger()));
    xml.writeEndElement();
    return text;
}

bool DF_Settings::SetXmlString(const QString& xml)
{
    if (faults::failsByResult("DF_Settings::SetXmlString")) {
        *this = DF_Settings();
        return false;
    }
    DF_Settings read;
    SettingsReader reader(xml);
    if (reader.nextChild() && reader.name() == settingsElement)
        read.ReadChildren(reader);
    else
        reader.refuse(QStringLiteral("another root"));

    const bool good = reader.finish();
    *this = good ? read : DF_Settings();
    return good;
}

void DF_Settings::ReadChildren(SettingsReader& reader)
{
    bool detailRead = false;
    while (reader.nextChild()) {
        const QStringRef name = reader.name();
        if (name == bandwidthElement) {
            reader.readNumber(m_bandwidth.m_value);
        } else if (name == averagingElement) {
            reader.readNumber(m_averaging);
        } else if (name == dfModeElement) {
            reader.assign(m_dfMode, NameToDFMode(reader.readText()));
        } else if (name == detailElement) {
            if (detailRead)
                reader.refuse(QStringLiteral("given twice"));
            detailRead = true;
            m_detail.ReadChildren(reader);
        } else if (name == frequencyOffsetElement) {
            reader.readNumber(m_frequencyOffset);
        } else if (name == workflowElement) {
            reader.assign(m_workflow, NameToWorkflow(reader.readText()));
        } else if (name == locateTypeElement) {
            reader.assign(m_locateType, NameToLocateType(reader.readText()));
        } else if (name == activityElement) {
            reader.assign(m_activity, fromName<TActivity>(activities(), reader.readText()));
        } else if (name == activityTriggerElement) {
            reader.assign(m_activityTrigger, NameToActivityTrigger(reader.readText()));
        } else {
            reader.skip();
        }
    }
}

void DF_Settings::SetBandwidth(const Bandwidth& bandwidth)
{
    faults::mayRaise("DF_Settings::SetBandwidth");
    m_bandwidth = bandwidth;
}

const Bandwidth& DF_Settings::GetBandwidth() const
{
    faults::mayRaise("DF_Settings::GetBandwidth");
    return m_bandwidth;
}

bool DF_Settings::IsBandwidthSet() const
{
    return m_bandwidth.IsValueSet();
}

void DF_Settings::SetAveraging(double milliseconds)
{
    faults::mayRaise("DF_Settings::SetAveraging");
    m_averaging = finite(milliseconds, "DF_Settings::SetAveraging");
}

double DF_Settings::GetAveraging() const
{
    faults::mayRaise("DF_Settings::GetAveraging");
    return m_averaging.value_or(0.0);
}

bool DF_Settings::IsAveragingSet() const
{
    return m_averaging.has_value();
}

void DF_Settings::SetDFMode(TDFMode mode)
{
    faults::mayRaise("DF_Settings::SetDFMode");
    m_dfMode = known(dfModes(), mode);
}

DF_Settings::TDFMode DF_Settings::GetDFMode() const
{
    faults::mayRaise("DF_Settings::GetDFMode");
    return orUnset(m_dfMode);
}

bool DF_Settings::IsDFModeSet() const
{
    return m_dfMode.has_value();
}

DF_SettingsDetail& DF_Settings::GetDetail()
{
    faults::mayRaise("DF_Settings::GetDetail");
    return m_detail;
}

const DF_SettingsDetail& DF_Settings::GetDetail() const
{
    faults::mayRaise("DF_Settings::GetDetail");
    return m_detail;
}

void DF_Settings::SetFrequencyOffset(double hertz)
{
    faults::mayRaise("DF_Settings::SetFrequencyOffset");
    m_frequencyOffset = finite(hertz, "DF_Settings::SetFrequencyOffset");
}

double DF_Settings::GetFrequencyOffset() const
{
    faults::mayRaise("DF_Settings::GetFrequencyOffset");
    return m_frequencyOffset.value_or(0.0);
}

bool DF_Settings::IsFrequencyOffsetSet() const
{
    if (faults::failsByResult("DF_Settings::IsFrequencyOffsetSet"))
        return false;
    return m_frequencyOffset.has_value();
}

void DF_Settings::SetWorkflow(TWorkflow workflow)
{
    faults::mayRaise("DF_Settings::SetWorkflow");
    m_workflow = known(workflows(), workflow);
}

DF_Settings::TWorkflow DF_Settings::GetWorkflow() const
{
    faults::mayRaise("DF_Settings::GetWorkflow");
    return orUnset(m_workflow);
}

bool DF_Settings::IsWorkflowSet() const
{
    if (faults::failsByResult("DF_Settings::IsWorkflowSet"))
        return false;
    return m_workflow.has_value();
}

void DF_Settings::SetLocateType(TLocateType type)
{
    faults::mayRaise("DF_Settings::SetLocateType");
    m_locateType = known(locateTypes(), type);
}

DF_Settings::TLocateType DF_Settings::GetLocateType() const
{
    faults::mayRaise("DF_Settings::GetLocateType");
    return orUnset(m_locateType);
}

bool DF_Settings::IsLocateTypeSet() const
{
    if (faults::failsByResult("DF_Settings::IsLocateTypeSet"))
        return false;
    return m_locateType.has_value();
}

void DF_Settings::SetActivity(TActivity activity)
{
    faults::mayRaise("DF_Settings::SetActivity");
    m_activity = known(activities(), activity);
}

DF_Settings::TActivity DF_Settings::GetActivity() const
{
    faults::mayRaise("DF_Settings::GetActivity");
    return orUnset(m_activity);
}

bool DF_Settings::IsActivitySet() const
{
    if (faults::failsByResult("DF_Settings::IsActivitySet"))
        return false;
    return m_activity.has_value();
}

void DF_Settings::SetActivityTrigger(TActivityTrigger trigger)
{
    faults::mayRaise("DF_Settings::SetActivityTrigger");
    m_activityTrigger = known(activityTriggers(), trigger);
}

DF_Settings::TActivityTrigger DF_Settings::GetActivityTrigger() const
{
    faults::mayRaise("DF_Settings::GetActivityTrigger");
    return orUnset(m_activityTrigger);
}

bool DF_Settings::IsActivityTriggerSet() const
{
    if (faults::failsByResult("DF_Settings::IsActivityTriggerSet"))
        return false;
    return m_activityTrigger.has_value();
}

QString DF_Settings::DFModeToName(TDFMode mode)
{
    faults::mayRaise("DF_Settings::DFModeToName");
    return toName(dfModes(), mode);
}

DF_Settings::TDFMode DF_Settings::NameToDFMode(const QString& name)
{
    faults::mayRaise("DF_Settings::NameToDFMode");
    return fromName<TDFMode>(dfModes(), name.left(modeNameLength));
}

QString DF_Settings::WorkflowToName(TWorkflow workflow)
{
    faults::mayRaise("DF_Settings::WorkflowToName");
    return toName(workflows(), workflow);
}

DF_Settings::TWorkflow DF_Settings::NameToWorkflow(const QString& name)
{
    faults::mayRaise("DF_Settings::NameToWorkflow");
    return fromName<TWorkflow>(workflows(), name);
}

QString DF_Settings::LocateTypeToName(TLocateType type)
{
    faults::mayRaise("DF_Settings::LocateTypeToName");
    return toName(locateTypes(), type);
}

DF_Settings::TLocateType DF_Settings::NameToLocateType(const QString& name)
{
    faults::mayRaise("DF_Settings::NameToLocateType");
    return fromName<TLocateType>(locateTypes(), name);
}

QString DF_Settings::ActivityTriggerToName(TActivityTrigger trigger)
{
    faults::mayRaise("DF_Settings::ActivityTriggerToName");
    return toName(activityTriggers(), trigger);
}

DF_Settings::TActivityTrigger DF_Settings::NameToActivityTrigger(const QString& name)
{
    faults::mayRaise("DF_Settings::NameToActivityTrigger");
    return fromName<TActivityTrigger>(activityTriggers(), name);
}

QStringList DF_Settings::GetWorkflows()
{
    faults::mayRaise("DF_Settings::GetWorkflows");
    return workflows();
}

QStringList DF_Settings::GetLocateTypes()
{
    faults::mayRaise("DF_Settings::GetLocateTypes");
    return locateTypes();
}

QStringList DF_Settings::GetActivitys()
{
    faults::mayRaise("DF_Settings::GetActivitys");
    return activities();
}

QStringList DF_Settings::GetActivityTriggers()
{
    faults::mayRaise("DF_Settings::GetActivityTriggers");
    return activityTriggers();
}

} // namespace JobXml
