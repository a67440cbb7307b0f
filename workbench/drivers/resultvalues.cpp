#include "drivers/resultvalues.h"

#include "drivers/geodesy.h"
#include "drivers/providedvalues.h"

#include <QPointer>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

using values::DoubleValue;
using values::IntValue;
using values::StringValue;
using values::ValueSelection;

QString fixed(double number, int decimals)
{
    return QString::number(number, 'f', decimals);
}

QString percentText(double percent)
{
    return QString::number(wholePercent(percent));
}

QString levelText(double level)
{
    return fixed(level, 1);
}

QString positionText(double degrees)
{
    return fixed(degrees, 6);
}

QString azimuthText(double azimuth)
{
    constexpr double stepsPerDegree = 10.0;
    // Rounded first: what is nearly 360 is shown as 0.
    return fixed(geodesy::normalizedAzimuth(std::round(azimuth * stepsPerDegree) / stepsPerDegree), 1);
}

std::optional<double> azimuthOf(const StationResult& station)
{
    return station.azimuth;
}

std::optional<double> qualityOf(const StationResult& station)
{
    return station.quality;
}

std::optional<double> levelOf(const StationResult& station)
{
    return station.level;
}

std::optional<double> latitudeOf(const StationResult& station)
{
    return station.position ? std::optional(station.position->latitude) : std::nullopt;
}

std::optional<double> longitudeOf(const StationResult& station)
{
    return station.position ? std::optional(station.position->longitude) : std::nullopt;
}

QString resultTimeText(const DfResult& result)
{
    if (!result.date.isValid() || !result.time.isValid())
        return {};
    return result.date.toString(QStringLiteral("yyyy-MM-dd")) + result.time.toString(QStringLiteral(" hh:mm:ss"));
}

} // namespace

ResultValues::ResultValues(ProvidedValues& provided, const QString& root, const std::vector<StationInfo>& stations)
{
    // Bound first: whoever is told of a first content may delete the value.
    const auto bindSelection = [&](values::ValuePtr<ValueSelection>& pointer, const char* name) {
        pointer.Assign(provided.provide<ValueSelection>(root + QLatin1String(name)));
        if (pointer)
            pointer->DeleteItems();
    };
    const auto bindText = [&](values::ValuePtr<StringValue>& pointer, const char* name) {
        pointer.Assign(provided.provide<StringValue>(root + QLatin1String(name)));
        if (pointer)
            pointer->SetValue(QString(), nullptr);
    };
    const auto bindAveragePosition = [&](values::ValuePtr<DoubleValue>& pointer, const char* name) {
        pointer.Assign(provided.provide<DoubleValue>(root + QLatin1String(name)));
        if (pointer)
            pointer->SetState(values::StateUnused, nullptr);
    };
    bindText(m_frequency, "Frequency");
    m_qualityThreshold.Assign(provided.provide<IntValue>(root + QLatin1String("QualityThreshold")));
    bindAveragePosition(m_averageLongitude, "AveragePositionLongitude");
    bindAveragePosition(m_averageLatitude, "AveragePositionLatitude");
    bindSelection(m_latitude, "DFLatitude");
    bindSelection(m_longitude, "DFLongitude");
    bindSelection(m_level, "Level");
    bindSelection(m_azimuth, "Azimuth");
    bindSelection(m_errors, "Errors");
    bindSelection(m_quality, "Quality");
    bindText(m_resultTime, "ResultTime");
    // A missing quality counts as 0 and would pass a threshold of 0: before the first result there is nothing to show.
    if (m_qualityThreshold)
        m_qualityThreshold->SetValue(1, nullptr);
    values::ValuePtr<ValueSelection> selectedDf; // its first content is no choice of anybody
    bindSelection(selectedDf, "SelectedDF");
    for (const StationInfo& station : stations) {
        if (selectedDf)
            selectedDf->AddItem(station.name, 0.0, station.id);
    }
    if (selectedDf)
        selectedDf->SelectIndex(0);
    m_selectedDf.Assign(selectedDf.get());
}

bool ResultValues::write(const DfResult& result, int qualityThreshold, const std::optional<GeoPosition>& fix)
{
    // Readers hang on this order: each finds what it needs already there when it is told, the display of errors, which
    // stands above that of times, last.
    static constexpr void (ResultValues::*steps[])(const Content&) = {
        &ResultValues::writeFrequency,       &ResultValues::writeQualityThreshold, &ResultValues::writeAverageLongitude,
        &ResultValues::writeAverageLatitude, &ResultValues::writeLatitudes,        &ResultValues::writeLongitudes,
        &ResultValues::writeLevels,          &ResultValues::writeStations,         &ResultValues::writeAzimuths,
        &ResultValues::writeErrors,          &ResultValues::writeQualities,        &ResultValues::writeResultTime,
        &ResultValues::announceErrors,
    };
    const QPointer<ResultValues> alive(this);
    const Content content{result, qualityThreshold, fix};
    for (const auto step : steps) {
        (this->*step)(content);
        if (!alive)
            return false;
    }
    return true;
}

void ResultValues::Update(Observable* changed, TChangeCode code)
{
    if (changed == m_selectedDf.get() && code == ChangeContent)
        followSelectedStation();
}

void ResultValues::writeFrequency(const Content& content)
{
    const std::optional<double>& frequency = content.result.frequency;
    if (m_frequency)
        m_frequency->SetValue(frequency ? fixed(*frequency, 0) : QString(), this);
}

void ResultValues::writeQualityThreshold(const Content& content)
{
    if (m_qualityThreshold)
        m_qualityThreshold->SetValue(content.qualityThreshold, this);
}

void ResultValues::writeAverageLongitude(const Content& content)
{
    writeCoordinate(m_averageLongitude, content.fix ? std::optional(content.fix->longitude) : std::nullopt);
}

void ResultValues::writeAverageLatitude(const Content& content)
{
    writeCoordinate(m_averageLatitude, content.fix ? std::optional(content.fix->latitude) : std::nullopt);
}

void ResultValues::writeLatitudes(const Content& content)
{
    writeNumbers(m_latitude, content.result, latitudeOf, positionText, {ChangeItems});
}

void ResultValues::writeLongitudes(const Content& content)
{
    writeNumbers(m_longitude, content.result, longitudeOf, positionText, {ChangeItems});
}

void ResultValues::writeLevels(const Content& content)
{
    writeNumbers(m_level, content.result, levelOf, levelText, {ChangeItems});
}

void ResultValues::writeStations(const Content& content)
{
    if (!m_selectedDf)
        return;
    const std::vector<StationResult>& stations = content.result.stations;
    const int key = selectedStation();
    const bool keepsKey = std::any_of(stations.begin(), stations.end(),
                                      [key](const StationResult& station) { return station.stationId == key; });
    std::vector<TChangeCode> codes{ChangeItems};
    if (!keepsKey)
        codes.push_back(ChangeContent);
    const values::ValueTransaction transaction = m_selectedDf->CreateTransaction(std::move(codes), this);
    m_selectedDf->DeleteItems(this);
    for (const StationResult& station : stations)
        m_selectedDf->AddItem(station.stationName, 0.0, station.stationId, this);
    if (keepsKey)
        m_selectedDf->Select(key, this);
    else
        m_selectedDf->SelectIndex(0, this);
}

void ResultValues::writeAzimuths(const Content& content)
{
    writeNumbers(m_azimuth, content.result, azimuthOf, azimuthText, {ChangeItems});
}

void ResultValues::writeErrors(const Content& content)
{
    if (!m_errors)
        return;
    const values::ValueTransaction transaction = m_errors->CreateTransaction({ChangeItems}, this);
    m_errors->DeleteItems(this);
    for (const StationResult& station : content.result.stations) {
        const int code = static_cast<int>(station.error);
        m_errors->AddItem(code == 0 ? QString() : QString::number(code), code, station.stationId, this);
    }
    m_errors->Select(selectedStation(), this);
}

void ResultValues::writeQualities(const Content& content)
{
    writeNumbers(m_quality, content.result, qualityOf, percentText, {ChangeItems, ChangeContent});
}

/// Announces every result once, also when two of them come within a second and when no time is known.
void ResultValues::writeResultTime(const Content& content)
{
    if (!m_resultTime)
        return;
    const values::ValueTransaction transaction = m_resultTime->CreateTransaction({ChangeContent, ChangeExternal}, this);
    m_resultTime->SetValue(resultTimeText(content.result), this);
}

void ResultValues::announceErrors(const Content& /*content*/)
{
    if (m_errors)
        m_errors->HasChanged(ChangeContent, this);
}

void ResultValues::writeCoordinate(const values::ValuePtr<DoubleValue>& coordinate, std::optional<double> degrees)
{
    const QPointer<ResultValues> alive(this);
    // Content first: whoever is told that it is in use finds it.
    if (coordinate && degrees)
        coordinate->SetValue(*degrees, this);
    if (alive && coordinate)
        coordinate->SetState(degrees ? values::StateOrdinary : values::StateUnused, this);
}

/// Gives @p selection one item for each station that has such a number (the item carries it unrounded), and the
/// selected station's as the current one.
void ResultValues::writeNumbers(const SelectionPtr& selection, const DfResult& result, NumberOf numberOf, TextOf textOf,
                                std::vector<TChangeCode> codes)
{
    if (!selection)
        return;
    const values::ValueTransaction transaction = selection->CreateTransaction(std::move(codes), this);
    selection->DeleteItems(this);
    for (const StationResult& station : result.stations) {
        if (const std::optional<double> number = numberOf(station))
            selection->AddItem(textOf(*number), *number, station.stationId, this);
    }
    selection->Select(selectedStation(), this);
}

/// Where the newly selected station has no item, no other station's may stay current: it would be taken for its own.
void ResultValues::followSelectedStation()
{
    const QPointer<ResultValues> alive(this);
    const int key = selectedStation();
    for (const SelectionPtr* selection : {&m_azimuth, &m_quality, &m_level, &m_errors, &m_latitude, &m_longitude}) {
        if (!*selection || (*selection)->GetCurrentKey() == ValueSelection::NoKey ||
            (*selection)->GetItemIndex(key) >= 0)
            continue;
        ValueSelection withoutCurrent;
        withoutCurrent.AddItemsFrom(*selection->get());
        (*selection)->Assign(withoutCurrent, this);
        if (!alive)
            return;
    }
}

int ResultValues::selectedStation() const
{
    return m_selectedDf ? m_selectedDf->GetCurrentKey() : static_cast<int>(ValueSelection::NoKey);
}

} // namespace workbench
