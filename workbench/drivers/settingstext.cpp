#include "drivers/settingstext.h"

#include "drivers/dfdevice.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

using JobXml::DF_Settings;

QString refusalReason(const QString& xml)
{
    if (xml.isEmpty())
        return QStringLiteral("it is empty");
    if (xml.size() > DF_Settings::MaxXmlLength)
        return QStringLiteral("it is longer than %1 characters").arg(DF_Settings::MaxXmlLength);
    QXmlStreamReader reader(xml);
    bool hasRoot = false;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::DTD)
            return QStringLiteral("it has a document type declaration");
        if (token == QXmlStreamReader::StartElement && !std::exchange(hasRoot, true) &&
            reader.name() != QLatin1String("DF_Settings"))
            return QStringLiteral("its root is \"%1\" instead of \"DF_Settings\"").arg(reader.name());
    }
    if (reader.hasError())
        return QStringLiteral("line %1: %2").arg(reader.lineNumber()).arg(reader.errorString());
    return QStringLiteral("it has an element twice, nested too deeply or with a bad number");
}

/// Moved into the range before it is rounded: the text may have any number.
int wholeLevel(double level)
{
    constexpr double half = 0.5;
    const double inRange = std::clamp<double>(level, lowestLevelThreshold, highestLevelThreshold);
    return static_cast<int>(std::floor(inRange + half));
}

DF_Settings::TDFMode modeForText(DfMode mode)
{
    switch (mode) {
    case DfMode::Continuous:
        return DF_Settings::DFModeCont;
    case DfMode::Gated:
        return DF_Settings::DFModeGate;
    case DfMode::Normal:
        break;
    }
    return DF_Settings::DFModeNorm;
}

} // namespace

std::variant<DF_Settings, SettingsTextError> readSettingsText(const QString& xml)
{
    DF_Settings text;
    if (!text.SetXmlString(xml))
        return SettingsTextError{refusalReason(xml)};
    return text;
}

DfSettings settingsAfter(const DfSettings& settings, const DF_Settings& text)
{
    const JobXml::DF_SettingsDetail& detail = text.GetDetail();
    DfSettings after = settings;
    if (text.IsBandwidthSet())
        after.bandwidth = text.GetBandwidth().GetValue();
    if (text.IsAveragingSet())
        after.averaging = text.GetAveraging();
    if (text.IsDFModeSet())
        after.mode = modeFromText(DF_Settings::DFModeToName(text.GetDFMode())).value_or(DfMode::Normal);
    after.qualityThreshold =
        detail.IsQualityThresholdSet() ? std::optional(detail.GetQualityThreshold()) : std::nullopt;
    after.levelThreshold =
        detail.IsLevelThresholdSet() ? std::optional(wholeLevel(detail.GetLevelThreshold())) : std::nullopt;
    if (text.IsFrequencyOffsetSet())
        after.frequencyOffset = text.GetFrequencyOffset();
    return after;
}

QString textWithSettings(DF_Settings text, const DfSettings& settings)
{
    JobXml::Bandwidth bandwidth;
    bandwidth.SetValue(settings.bandwidth);
    text.SetBandwidth(bandwidth);
    text.SetAveraging(settings.averaging);
    text.SetDFMode(modeForText(settings.mode));
    JobXml::DF_SettingsDetail detail;
    if (settings.qualityThreshold)
        detail.SetQualityThreshold(*settings.qualityThreshold);
    if (settings.levelThreshold)
        detail.SetLevelThreshold(*settings.levelThreshold);
    text.GetDetail() = detail;
    text.SetFrequencyOffset(settings.frequencyOffset);
    return text.GetXmlString();
}

} // namespace workbench
