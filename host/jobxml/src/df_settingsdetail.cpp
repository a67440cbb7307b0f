#include "jobxml/df_settingsdetail.h"

#include "faultpoints/faultpoint.h"
#include "numbers.h"
#include "settingsreader.h"

#include <QXmlStreamWriter>

namespace JobXml {

namespace {
const QString qualityThresholdElement = QStringLiteral("QualityThreshold");
const QString levelThresholdElement = QStringLiteral("LevelThreshold");
} // namespace

bool DF_SettingsDetail::HasData() const
{
    if (faults::failsByResult("DF_SettingsDetail::HasData"))
        return false;
    return IsQualityThresholdSet() || IsLevelThresholdSet();
}

void DF_SettingsDetail::SetQualityThreshold(int percent)
{
    faults::mayRaise("DF_SettingsDetail::SetQualityThreshold");
    m_qualityThreshold = percent;
}

int DF_SettingsDetail::GetQualityThreshold() const
{
    faults::mayRaise("DF_SettingsDetail::GetQualityThreshold");
    return m_qualityThreshold.value_or(0);
}

bool DF_SettingsDetail::IsQualityThresholdSet() const
{
    return m_qualityThreshold.has_value();
}

void DF_SettingsDetail::SetLevelThreshold(double level)
{
    faults::mayRaise("DF_SettingsDetail::SetLevelThreshold");
    m_levelThreshold = finite(level, "DF_SettingsDetail::SetLevelThreshold");
}

double DF_SettingsDetail::GetLevelThreshold() const
{
    faults::mayRaise("DF_SettingsDetail::GetLevelThreshold");
    return m_levelThreshold.value_or(0.0);
}

bool DF_SettingsDetail::IsLevelThresholdSet() const
{
    return m_levelThreshold.has_value();
}

void DF_SettingsDetail::ReadChildren(SettingsReader& reader)
{
    while (reader.nextChild()) {
        const QStringRef name = reader.name();
        if (name == qualityThresholdElement)
            reader.readNumber(m_qualityThreshold);
        else if (name == levelThresholdElement)
            reader.readNumber(m_levelThreshold);
        else
            reader.skip();
    }
}

void DF_SettingsDetail::WriteTo(QXmlStreamWriter& xml) const
{
    if (m_qualityThreshold)
        xml.writeTextElement(qualityThresholdElement, toText(*m_qualityThreshold));
    if (m_levelThreshold)
        xml.writeTextElement(levelThresholdElement, toText(*m_levelThreshold));
}

} // namespace JobXml
