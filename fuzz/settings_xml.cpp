// Settings texts: read, written and read again; and the roads on which the component and the driver send them.

#include "drivers/dfdevice.h"
#include "drivers/settingstext.h"
#include "fuzz/fuzzing.h"
#include "jobxml/df_settings.h"
#include "settingstext.h"

#include <QXmlStreamReader>

#include <cmath>

using JobXml::DF_Settings;

namespace {

/// Equal but for choices with names that nobody knows: they count as set when they are read, and are not written.
void requireSame(const DF_Settings& a, const DF_Settings& b)
{
    FUZZ_REQUIRE(a.IsBandwidthSet() == b.IsBandwidthSet());
    FUZZ_REQUIRE(a.GetBandwidth().GetValue() == b.GetBandwidth().GetValue());
    FUZZ_REQUIRE(a.IsAveragingSet() == b.IsAveragingSet());
    FUZZ_REQUIRE(a.GetAveraging() == b.GetAveraging());
    FUZZ_REQUIRE(a.GetDFMode() == b.GetDFMode());
    FUZZ_REQUIRE(a.GetDetail().HasData() == b.GetDetail().HasData());
    FUZZ_REQUIRE(a.GetDetail().IsQualityThresholdSet() == b.GetDetail().IsQualityThresholdSet());
    FUZZ_REQUIRE(a.GetDetail().GetQualityThreshold() == b.GetDetail().GetQualityThreshold());
    FUZZ_REQUIRE(a.GetDetail().IsLevelThresholdSet() == b.GetDetail().IsLevelThresholdSet());
    FUZZ_REQUIRE(a.GetDetail().GetLevelThreshold() == b.GetDetail().GetLevelThreshold());
    FUZZ_REQUIRE(a.IsFrequencyOffsetSet() == b.IsFrequencyOffsetSet());
    FUZZ_REQUIRE(a.GetFrequencyOffset() == b.GetFrequencyOffset());
    FUZZ_REQUIRE(a.GetWorkflow() == b.GetWorkflow());
    FUZZ_REQUIRE(a.GetLocateType() == b.GetLocateType());
    FUZZ_REQUIRE(a.GetActivity() == b.GetActivity());
    FUZZ_REQUIRE(a.GetActivityTrigger() == b.GetActivityTrigger());
}

bool isWellFormed(const QString& xml)
{
    QXmlStreamReader reader(xml);
    while (!reader.atEnd())
        reader.readNext();
    return !reader.hasError();
}

void requireRoundTrip(const QString& xml)
{
    DF_Settings settings;
    const bool isGood = settings.SetXmlString(xml);
    const QString written = settings.GetXmlString();
    if (!isGood) {
        FUZZ_REQUIRE(written == DF_Settings().GetXmlString());
        return;
    }
    FUZZ_REQUIRE(isWellFormed(xml) || xml.contains(QLatin1Char(':'))); // settings know no namespaces
    DF_Settings again;
    FUZZ_REQUIRE(again.SetXmlString(written));
    requireSame(settings, again);
    FUZZ_REQUIRE(again.GetXmlString() == written);
}

/// What the component does to a text on its way to the form and back leaves it as good as it was.
void requireFormRoads(const QString& xml)
{
    DF_Settings settings;
    const bool isGood = settings.SetXmlString(xml);
    const QString written = settings.GetXmlString();
    FUZZ_REQUIRE(VelmarGui::hasDetail(written) == settings.GetDetail().HasData());
    DF_Settings inForm;
    FUZZ_REQUIRE(inForm.SetXmlString(VelmarGui::toFormText(written)));
    DF_Settings expected = settings;
    if (settings.GetDetail().IsLevelThresholdSet())
        expected.GetDetail().SetLevelThreshold(std::trunc(settings.GetDetail().GetLevelThreshold()));
    requireSame(inForm, expected);
    FUZZ_REQUIRE(VelmarGui::fromFormText(written) == written);
    // Whatever the text is, cutting it about must work.
    static_cast<void>(VelmarGui::fromFormText(VelmarGui::toFormText(xml)));
    FUZZ_REQUIRE(isGood || written == QLatin1String("<DF_Settings/>"));
}

/// The driver takes the same texts, corrects the settings once, and then finds nothing more to correct.
void requireDriverRoad(const QString& xml)
{
    DF_Settings settings;
    const auto read = workbench::readSettingsText(xml);
    const bool isGood = std::holds_alternative<DF_Settings>(read);
    FUZZ_REQUIRE(isGood == settings.SetXmlString(xml));
    if (!isGood) {
        FUZZ_REQUIRE(!std::get<workbench::SettingsTextError>(read).reason.isEmpty());
        return;
    }
    const workbench::DfDevice device = workbench::standardDevice();
    const workbench::DfSettings corrected = device.corrected(workbench::settingsAfter({}, settings));
    const QString answer = workbench::textWithSettings(settings, corrected);
    const auto answered = workbench::readSettingsText(answer);
    FUZZ_REQUIRE(std::holds_alternative<DF_Settings>(answered));
    const workbench::DfSettings taken = workbench::settingsAfter(corrected, std::get<DF_Settings>(answered));
    FUZZ_REQUIRE(workbench::textWithSettings(settings, device.corrected(taken)) == answer);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString xml = fuzzing::text(fuzzing::bytes(data, size));
    requireRoundTrip(xml);
    requireFormRoads(xml);
    requireDriverRoad(xml);
    return 0;
}
